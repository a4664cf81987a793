#!/usr/bin/env python3
"""Name servers whose answers the tests rely on: dns_server.py FIRST SECOND

Serves UDP port 53 of both addresses. What a question gets is decided by the first label of its name
(see BEHAVIOURS), separately for each server; names that are not listed have the address 10.1.0.1.
Prints "ready" when both listen.
"""
import socket
import struct
import sys
import threading
import time

ADDRESS, ALIAS, TEXT = 1, 5, 16
NAME_IN_QUESTION = b"\xc0\x0c"


def record(kind, data, owner=NAME_IN_QUESTION):
    return owner + struct.pack("!HHIH", kind, 1, 60, len(data)) + data


def address(text):
    return record(ADDRESS, socket.inet_aton(text))


def question_end(query):
    position = 12
    while query[position]:
        position += query[position] + 1
    return position + 5


def reply(query, *records, count=None):
    header = struct.pack("!HHHHH", 0x8180, 1, len(records) if count is None else count, 0, 0)
    return query[:2] + header + query[12:question_end(query)] + b"".join(records)


def silent(_query):
    return []


def empty(query):
    return [reply(query)]


def giving(*records):
    return lambda query: [reply(query, *records)]


def after(seconds, behaviour):
    def delayed(query):
        time.sleep(seconds)
        return behaviour(query)
    return delayed


def hostile(query):
    """Nothing here can be understood, and nothing may hurt."""
    loop = b"\xc0\x0c\0\1\0\1"
    return [b"\0", b"\xc0" * 999, query[:12], query[:12] + loop,
            query[:12] + b"\x3f" * 900, query[:12] + (b"\x3f" + b"n" * 63) * 14,
            bytes(60000), reply(query, b"x" * 3000, count=9)]


SEVEN = address("10.0.0.7")
SECOND_LABEL = b"\xc0\x12"  # of "chain.example"
CHAIN = [record(ALIAS, b"\5other" + SECOND_LABEL), record(TEXT, b"\2hi"), address("10.0.0.1"),
         address("10.0.0.2")]

# What the first and the second server do.
BEHAVIOURS = {
    "one": (silent, giving(SEVEN)),
    "late": (empty, after(0.2, giving(SEVEN))),
    "nobody": (empty, giving(record(TEXT, b"\2hi"))),
    "half": (empty, silent),
    "silent": (silent, silent),
    "chain": (silent, giving(*CHAIN)),
    "alias": (silent, giving(CHAIN[0])),
    "hostile": (hostile, after(0.3, giving(SEVEN))),
    "local": (giving(address("127.0.0.1")), silent),
    "two": (giving(address("127.0.0.1"), address("127.0.0.2")), silent),
}
DEFAULT = giving(address("10.1.0.1"))


def behaviour_for(query, index):
    end = question_end(query)
    if query[end - 4:end - 2] != struct.pack("!H", ADDRESS):
        return empty  # the system's resolver also asks for IPv6 addresses
    label = query[13:13 + query[12]].decode("latin-1")
    return BEHAVIOURS.get(label, (DEFAULT, DEFAULT))[index]


def answer(server, client, query, index):
    try:
        for datagram in behaviour_for(query, index)(query):
            server.sendto(datagram, client)
    except (IndexError, OSError) as problem:
        print(f"{client}: {problem}", file=sys.stderr)


def serve(server, index):
    while True:
        query, client = server.recvfrom(2000)
        threading.Thread(target=answer, args=(server, client, query, index), daemon=True).start()


def main():
    threads = []
    for index, own_address in enumerate(sys.argv[1:3]):
        server = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        server.bind((own_address, 53))
        threads.append(threading.Thread(target=serve, args=(server, index)))
        threads[-1].start()
    print("ready", flush=True)


if __name__ == "__main__":
    main()
