"""Sends messages without a pause until standard input ends, and counts what became of each.

    load.py URL AT_A_TIME [DELAY]

Every message has a number of its own, which its recipient's name tells. They are posted to a paging server in this
process, which waits DELAY seconds (0) before it answers. Prints one line of counts, and a second one with the reasons of
failures. Status 0: every request was answered with success, and each posted exactly once.
"""

import collections
import itertools
import re
import sys
import threading
import urllib.error
import urllib.request
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

BODY = """<soap:Envelope xmlns:soap="http://schemas.xmlsoap.org/soap/envelope/"><soap:Body><SendStdMessage>\
<szURL>http://127.0.0.1:%d/cgi/cmd</szURL><szRecipientName>number%d</szRecipientName><szMessage>Test</szMessage>\
</SendStdMessage></soap:Body></soap:Envelope>"""
PATIENCE = 60  # seconds


class Pager(ThreadingHTTPServer):
    """Keeps the numbers that were posted, and answers each with its own."""

    request_queue_size = 128

    def __init__(self, delay):
        super().__init__(("127.0.0.1", 0), Command)
        self.delay, self.posted = delay, collections.Counter()
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def handle_error(self, *_):
        """The program went away."""


class Command(BaseHTTPRequestHandler):
    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"]))
        number = int(re.search(rb"name=number(\d+)", body)[1])
        self.server.posted[number] += 1
        threading.Event().wait(self.server.delay)
        self.send_response(200)
        self.end_headers()
        self.wfile.write(b"OK number%d.\r\n" % number)

    def log_message(self, *_):
        pass


def why_not(url, pager, number):
    """None when the request was answered with success, else the reason."""
    request = urllib.request.Request(url, (BODY % (pager.server_port, number)).encode(), {"Content-Type": "text/xml"})
    try:
        with urllib.request.urlopen(request, timeout=PATIENCE) as answer:
            text = answer.read().decode()
    except urllib.error.HTTPError as failure:
        return f"status {failure.code}"
    except OSError as failure:
        return str(failure)
    return None if f"<SendStdMessageResult>OK number{number}." in text else "answer " + " ".join(text.split())


def main(url, at_a_time, delay="0"):
    pager, numbers, ended = Pager(float(delay)), itertools.count(), threading.Event()
    outcomes = {}

    def send():
        while not ended.is_set():
            number = next(numbers)
            outcomes[number] = why_not(url, pager, number)

    clients = [threading.Thread(target=send) for _ in range(int(at_a_time))]
    for client in clients:
        client.start()
    sys.stdin.read()
    ended.set()
    for client in clients:
        client.join()
    return report(outcomes, pager.posted)


def report(outcomes, posted):
    failed = [number for number, reason in outcomes.items() if reason]
    lost = [number for number, reason in outcomes.items() if not reason and not posted[number]]
    twice = [number for number, count in posted.items() if count > 1]
    print(f"requests {len(outcomes)}, failed {len(failed)} (posted all the same "
          f"{sum(1 for number in failed if posted[number])}), answered but not posted {len(lost)}, posted twice {len(twice)}")
    if failed:
        print(dict(collections.Counter(outcomes[number] for number in failed)))
    return bool(failed or lost or twice)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
