"""Serves random requests by two programs and prints where they differ; called by script/compare."""

import argparse
from collections import Counter
import multiprocessing
import os
from pathlib import Path
import re
import sys
import tempfile
import time
from xml.parsers import expat

from generator import Generator
from pager import Pager
from program import Site
from resident import ResidentSite, can_be_sent, without_pieces

BYTES_BEFORE, BYTES_AFTER = 60, 120  # shown of a difference
worker = None  # of this process


class Worker:
    """Both programs in their sites, and the paging server of both: they take turns."""

    def __init__(self, directory, options):
        self.options, self.pager = options, Pager()
        self.old = Site(directory / "old", options.old, self.pager)
        self.is_resident = options.new.endswith("soapd")
        self.new = (ResidentSite if self.is_resident else Site)(directory / "new", options.new, self.pager)

    def request(self, seed):
        addresses = self.pager.address, self.pager.dead_address
        return Generator(seed, *addresses, self.options.all_shapes, local=self.is_resident).request()

    def serve(self, request):
        """Both results."""
        results = self.old.serve(request), self.new.serve(request)
        return map(without_pieces, results) if self.is_resident else results


def start_worker(directory, options):
    global worker
    worker = Worker(Path(directory) / str(os.getpid()), options)


def compare(seed):
    """(seed, what was reached, the differences as text)"""
    request = worker.request(seed)
    if worker.is_resident and not can_be_sent(request):
        return seed, ["not sent"], []
    old, new = worker.serve(request)
    found = [(name + " differs", excerpts(getattr(old, name), getattr(new, name))) for name in old.differences(new)]
    if not is_document(new.output):
        found.append(("the new answer is no XML document", [repr(new.output)]))
    if found:
        keep(worker.options.directory / str(seed), request, old, new)
    return seed, reached(request, old), found


def is_document(output):
    """Whether an answer is one well-formed document, or nothing at all."""
    body = output.partition(b"\n\n")[2]
    try:
        return not body or expat.ParserCreate().Parse(body, True) == 1
    except expat.ExpatError:
        return False


def reached(request, run):
    """What a request has covered, by the old program's answer."""
    fault = re.search(rb"<faultstring>(2012|[^<]{0,60})", run.output)
    if fault:
        answer = "fault " + fault[1].decode("ascii", "backslashreplace")
    else:
        answer = "response" if b":Envelope>" in run.output else "no answer"
    targets = [post.partition(b"\r\n")[0].partition(b"/second")[1].decode() for post in run.posts]
    posts = {(): "none", ("",): "to szURL", ("/second",): "to szURL2 alone", ("", "/second"): "to szURL, then szURL2"}
    methods = [f"method {name}" for name in request.methods[:1]] or ["method (none)"]
    return methods + [f"answer: {answer}", f"posts: {posts.get(tuple(targets), 'other')}", f"status: {run.status}"]


def as_bytes(value):
    if isinstance(value, list):  # of posts; their heads behind their lines, because the lines explain the length
        parts = (post.partition(b"\r\n\r\n") for post in value)
        return b"".join(body.replace(b"&", b"\n&") + b"\n" + head + b"\n" for head, _, body in parts)
    return value if isinstance(value, bytes) else str(value).encode()


def excerpts(old, new):
    """Both results around the first byte that differs."""
    old, new = as_bytes(old), as_bytes(new)
    at = len(os.path.commonprefix([old, new]))
    begin = max(at - BYTES_BEFORE, 0)
    return [f"byte {at}", *(f"{name} {text[begin:at + BYTES_AFTER]!r}" for name, text in (("old", old), ("new", new)))]


def keep(directory, request, old, new):
    """Leaves the request and both programs' results as files."""
    directory.mkdir(parents=True, exist_ok=True)
    (directory / "request.xml").write_bytes(request.body)
    (directory / "environment").write_text("".join(f"{name}={value}\n" for name, value in request.environment.items()))
    for number, answer in enumerate(request.answers, 1):
        (directory / f"answer.{number}").write_bytes(answer)
    for name, run in (("old", old), ("new", new)):
        for part in ("status", "output", "errors", "posts", "log"):
            (directory / f"{part}.{name}").write_bytes(as_bytes(getattr(run, part)))


def parse_options():
    parser = argparse.ArgumentParser(prog="script/compare")
    parser.add_argument("old", metavar="OLD_PROGRAM")
    parser.add_argument("new", metavar="NEW_PROGRAM")
    parser.add_argument("count", metavar="COUNT", type=int, nargs="?", default=1000)
    parser.add_argument("seed", metavar="SEED", type=int, nargs="?", default=int(time.time()) % 1000000 * 100000)
    parser.add_argument("--all-shapes", action="store_true")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--directory", type=Path, required=True)
    return parser.parse_args()


def main():
    options = parse_options()
    counts, differences, begin = Counter(), 0, time.monotonic()
    with tempfile.TemporaryDirectory(prefix="compare.") as directory:
        pool = multiprocessing.Pool(options.jobs, start_worker, (directory, options))
        try:
            seeds = range(options.seed, options.seed + options.count)
            for seed, what, found in pool.imap(compare, seeds, chunksize=4):
                counts.update(what)
                differences += bool(found)
                for name, lines in found:
                    print(f"seed {seed} ({what[0]}): {name}", *lines, sep="\n    ", flush=True)
        finally:
            pool.close()
            pool.join()  # so that the workers end what they have started
    for what, count in sorted(counts.items()):
        print(f"{count:7} {what}")
    rate = options.count / (time.monotonic() - begin)
    print(f"{options.count} requests compared, {differences} differences "
          f"(seeds from {options.seed}, {rate:.0f} requests a second)")
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main())
