#!/usr/bin/env python3
"""A mail server for the examples, on the loopback: what SMTP takes, POP3 hands out.

    mail_server.py [SMTP_PORT POP3_PORT]

Prints its SMTP and its POP3 port in one line and serves until it is ended. Everybody may send,
everybody may log in with the password "secret", and there is one mailbox; it begins with two mails.
"""
import socketserver
import sys
import threading

PASSWORD = "secret"
mailbox = [
    b"From: Ann <ann@mail.example>\r\nSubject: Lunch?\r\n\r\nAt one?\r\n",
    b"From: Tervane <tervane@mail.example>\r\nSubject: Tervane test\r\n\r\nSent before.\r\n",
]
lock = threading.Lock()


class Conversation(socketserver.StreamRequestHandler):
    greeting = goodbye = refusal = ""

    def say(self, *lines):
        self.wfile.write("".join(line + "\r\n" for line in lines).encode())

    def handle(self):
        self.say(self.greeting)
        for line in self.rfile:
            word, _, rest = line.decode("utf-8", "replace").strip().partition(" ")
            if word.upper() == "QUIT":
                return self.quit()
            getattr(self, "do_" + word.upper(), self.refuse)(rest)

    def quit(self):
        self.say(self.goodbye)

    def refuse(self, _):
        self.say(self.refusal)


class Smtp(Conversation):
    greeting, goodbye, refusal = "220 mail.example", "221 Bye", "500 What?"

    def accept(self, _):
        self.say("250 Fine")

    do_HELO = do_EHLO = do_MAIL = do_RCPT = accept

    def do_AUTH(self, _):
        for prompt in ("334 VXNlcm5hbWU6", "334 UGFzc3dvcmQ6"):
            self.say(prompt)
            self.rfile.readline()
        self.say("235 Welcome")

    def do_DATA(self, _):
        self.say("354 Go on")
        lines = []
        for line in self.rfile:
            if line == b".\r\n":
                break
            lines.append(line)
        with lock:
            mailbox.append(b"".join(lines))
        self.say("250 Taken")


class Pop(Conversation):
    greeting, goodbye, refusal = "+OK mail.example", "+OK Bye", "-ERR No"

    def setup(self):
        super().setup()
        self.deleted = set()
        with lock:
            self.mails = list(mailbox)

    def do_USER(self, _):
        self.say("+OK")

    def do_PASS(self, password):
        self.say("+OK" if password == PASSWORD else self.refusal)

    def do_STAT(self, _):
        self.say(f"+OK {len(self.mails)} {sum(map(len, self.mails))}")

    def do_RETR(self, number):
        lines = self.mails[int(number) - 1].decode().splitlines()
        self.say("+OK", *("." + line if line.startswith(".") else line for line in lines), ".")

    def do_DELE(self, number):
        self.deleted.add(self.mails[int(number) - 1])
        self.say("+OK")

    def quit(self):
        with lock:
            mailbox[:] = [mail for mail in mailbox if mail not in self.deleted]
        super().quit()


class Server(socketserver.ThreadingTCPServer):
    daemon_threads = True

    def handle_error(self, request, client_address):
        """Clients may hang up at any time; some only try whether the port is open."""


def start(*conversations, ports=None):
    """Starts a server for each, at ports that are free if none are given, and returns their ports."""
    servers = [Server(("127.0.0.1", port), conversation)
               for port, conversation in zip(ports or [0] * len(conversations), conversations)]
    for server in servers:
        threading.Thread(target=server.serve_forever, daemon=True).start()
    return [server.server_address[1] for server in servers]


if __name__ == "__main__":
    print(*start(Smtp, Pop, ports=[int(port) for port in sys.argv[1:]]), flush=True)
    threading.Event().wait()
