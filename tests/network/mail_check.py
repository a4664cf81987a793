#!/usr/bin/env python3
"""Checks the messages that SmtpCtl has sent, without any code of ours: mail_check.py BOX

Each message of mailbox BOX is fetched and parsed, and must hold what its subject promises.
"""
import datetime
import email
import email.policy
import poplib
import sys
import time

PASSWORD = "s3cret"
TEXT = "Gr\u00fc\u00dfe, \u4e16\u754c \U0001f600\r\n.\r\n..x\r\n" + "z" * 10000
HTML = "<p>Gr\u00fc\u00dfe, \u4e16\u754c \U0001f600</p>\n.\n"
EXPECTED = {  # by subject: the content types in their order, and the contents
    "text": [("text/plain", TEXT)],
    "html": [("text/html", HTML)],
    "both": [("text/html", HTML), ("text/plain", TEXT)],
    "empty": [("text/plain", "")],
}


def fetch(box, wanted):
    """The raw messages of a mailbox, which must become as many as are wanted; it is emptied."""
    messages = []
    for _ in range(100):
        server = poplib.POP3("127.0.0.1", timeout=30)
        server._maxline = None  # lines may have any length
        poplib._MAXLINE = 1 << 30
        server.user(box)
        server.pass_(PASSWORD)
        for number in range(1, server.stat()[0] + 1):
            messages.append(b"\r\n".join(server.retr(number)[1]))
            server.dele(number)
        server.quit()
        if len(messages) >= wanted:
            return messages
        time.sleep(0.2)
    sys.exit(f"{box}: {len(messages)} of {wanted} messages came")


def contents(message):
    return [(part.get_content_type(), part.get_payload(decode=True).decode(part.get_content_charset()))
            for part in message.walk() if not part.is_multipart()]


def check(raw):
    """Compares what an independent parser finds with what was sent; returns its subject."""
    message = email.message_from_bytes(raw, policy=email.policy.default)
    subject = message["Subject"]
    assert contents(message) == EXPECTED[subject], (subject, contents(message))
    assert message["MIME-Version"] == "1-0", message["MIME-Version"]  # odd on purpose
    assert message["X-Mailer"] == "<AnonymousMailer>"
    # "-0000": UTC, from somewhere; the parser leaves the zone out.
    now = datetime.datetime.now(datetime.timezone.utc).replace(tzinfo=None)
    assert abs(message["Date"].datetime - now) < datetime.timedelta(minutes=10), message["Date"]
    # A multipart that calls itself base64 is odd on purpose; nothing else may be wrong.
    odd = {"InvalidMultipartContentTransferEncodingDefect"} if message.is_multipart() else set()
    defects = {type(defect).__name__ for part in message.walk() for defect in part.defects}
    assert defects == odd, (subject, defects)
    return subject


def main(box):
    sent = fetch(box, len(EXPECTED))
    assert {check(raw) for raw in sent} == set(EXPECTED)
    print(f"{len(sent)} messages hold what was sent")


main(*sys.argv[1:])
