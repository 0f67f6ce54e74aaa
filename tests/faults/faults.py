"""Runs a program again and again while one allocation after the other fails; see script/faults."""

import argparse
import os
from pathlib import Path
import signal
import socket
import sys
import tempfile
from types import SimpleNamespace
from xml.parsers import expat

sys.path.insert(0, str(Path(__file__).parent.parent / "compare"))
from pager import Pager  # pylint: disable=wrong-import-position
from program import Site  # pylint: disable=wrong-import-position

HEADER = b"Content-type: text/xml\n\n"
LAST = b"POST /last HTTP/1.0\r\nContent-Length: 0\r\n\r\n"
ANSWER = b"HTTP/1.0 200 OK\r\nContent-Length: 14\r\n\r\nOK job 1.1 on\n"
URL = "<szURL>http://{address}/cmd</szURL>"
REQUESTS = {
    "SendStdMessage": "<SendStdMessage>" + URL + "<szRecipientName>night</szRecipientName><szMessage>Pump 4 &amp; 5\n"
                      "are hot</szMessage><szSender>ops</szSender></SendStdMessage>",
    "AddGroup": "<AddGroup>" + URL + "<szAdminName>adm</szAdminName><szAdminPassword>pw</szAdminPassword>"
                "<szGroupName>Ops</szGroupName><szDescription>of the night</szDescription></AddGroup>",
    "a fault": "<DeleteGroup>" + URL + "</DeleteGroup>",
}


class Runner(Site):
    """A site for a program whose allocations fail."""

    def __init__(self, directory, program, library, pager):
        super().__init__(directory, program, pager)
        self.library = library
        self._write("config/servers", f"http://{pager.address}/cmd\n")

    def run(self, request, **environment):
        """Exit status, output and posts."""
        self.pager.begin([ANSWER])
        method = request.format(address=self.pager.address)
        body = f"<?xml version='1.0'?><Envelope><Body>{method}</Body></Envelope>".encode()
        variables = {"REQUEST_METHOD": "POST", "CONTENT_LENGTH": str(len(body)), "LD_PRELOAD": str(self.library)}
        status, output, _ = self._run(SimpleNamespace(body=body, environment=variables | environment))
        return status, output, self._take_posts()

    def _take_posts(self):
        """What was posted, without connections over which nothing came. The pager takes one after the other: once it
        answers this one, it has taken all of the program's."""
        host, port = self.pager.address.split(":")
        with socket.create_connection((host, int(port))) as last:
            last.sendall(LAST)
            while last.recv(1 << 16):
                pass
        return [post for post in self.pager.posts if post not in (b"", LAST)]

    def allocations(self, request):
        count = self.directory / "count"
        self.run(request, FAIL_COUNT=str(count))
        return int(count.read_text())


def problem(output, posts, whole_output, whole_posts, status):
    """What is wrong with a run; empty when nothing is."""
    if status == -signal.SIGABRT and not output and not posts:
        return ""  # not even an exception could be made: that needs memory, too
    if status == "hangs" or status < 0:
        return f"status {status}"
    if posts and posts != whole_posts:
        return "posted in part, or twice"
    if output == HEADER[:len(output)]:
        return ""  # nothing, or no more than a part of the header
    if not output.startswith(HEADER):
        return "no header"
    document = output[len(HEADER):]
    try:
        expat.ParserCreate().Parse(document, True)
    except expat.ExpatError as error:
        return f"no document: {error}"
    if b"Result></" in document:
        return "an empty success"
    if document == whole_output[len(HEADER):] and posts != whole_posts:
        return "success without a post"
    return ""


def try_all(runner, name, request, every):
    """The number of runs and of faulty ones."""
    _, whole_output, whole_posts = runner.run(request)
    total = runner.allocations(request)
    runs, faulty, answered = 0, 0, 0
    for number in range(1, total + 1, every):
        for how in ({}, {"FAIL_ON": "1"}):
            status, output, posts = runner.run(request, FAIL_AT=str(number), **how)
            wrong = problem(output, posts, whole_output, whole_posts, status)
            runs += 1
            answered += len(output) > len(HEADER)
            if wrong:
                faulty += 1
                print(f"{name}: allocation {number}{' and all behind it' if how else ''} failing: {wrong}")
                print("   ", output[-300:], posts, flush=True)
    print(f"{name}: {total} allocations, {runs} runs, {answered} answered, {faulty} faulty", flush=True)
    return faulty


def main():
    parser = argparse.ArgumentParser(prog="script/faults")
    parser.add_argument("--library", required=True)
    parser.add_argument("--every", type=int, default=1)
    parser.add_argument("program")
    arguments = parser.parse_args()
    faulty = 0
    with tempfile.TemporaryDirectory(prefix="quorbel-faults-") as directory:
        runner = Runner(directory, arguments.program, os.path.abspath(arguments.library), Pager())
        for name, request in REQUESTS.items():
            faulty += try_all(runner, name, request, arguments.every)
    sys.exit(1 if faulty else 0)


main()
