"""Runs a program for one request, in a site of its own."""

from dataclasses import asdict, dataclass
import os
from pathlib import Path
import re
import subprocess

# Anywhere in a line: an entry that was cut does not end its line.
TIME = re.compile(rb"\d\d/\d\d/\d{4} \d\d:\d\d:\d\d(?= SOAP \[)")
# An entry that is cut between a carriage return and its line feed: some releases write the return as \x0d.
CUT_LINE_END = re.compile(rb"(\r|\\x0d)\n?(?=TIME SOAP \[|\Z)")
PATIENCE = 60  # seconds
INI = """[main]

[SOAP]
writer=file
level=trace
filePath={site}/logs/soap_log.txt
autoAppend=1
bytesPerFiles=50000000

[Deliveries]
writer=file
level=debug
filePath={site}/logs/deliveries_log.txt
"""


@dataclass
class Run:
    status: object  # exit status, minus a signal's number, or "hangs"; None where nobody sees it
    output: bytes
    errors: bytes
    posts: list
    log: bytes

    def differences(self, other):
        """The parts that differ, of those that both sides know."""
        mine, theirs = asdict(self), asdict(other)
        return [name for name in mine if None not in (mine[name], theirs[name]) and mine[name] != theirs[name]]


class Site:
    """Configuration, logs and the directory of CGI programs, laid out as an operator has them."""

    def __init__(self, directory, program, pager):
        self.directory, self.program, self.pager = Path(directory), Path(program).resolve(), pager
        for folder in ("config", "logs", "spool", "web/cgi-bin"):
            (self.directory / folder).mkdir(parents=True)
        (self.directory / "web/config").symlink_to("../config")
        self._write("config/dir", f"spool_dir:\t\t{directory}/spool\nlog_dir:\t\t{directory}/logs\n")
        self._write("config/cvlogs.ini", INI.format(site=directory))

    @property
    def environment(self):
        """Addresses of no paging server, such as a szURL2 that went on capturing, reach the pager as a proxy: no
        request leaves this machine."""
        proxy = f"http://{self.pager.address}"
        return {"http_proxy": proxy, "https_proxy": proxy, "no_proxy": "127.0.0.1"}

    def _write(self, name, text):
        (self.directory / name).write_text(text)

    def serve(self, request):
        self.pager.begin(request.answers)
        status, output, errors = self._run(request)
        return Run(status, output, errors, self.pager.posts, self._take_log())

    def _run(self, request):
        body = self.directory / "body"
        body.write_bytes(request.body)
        with open(body, "rb") as standard_input:
            try:
                done = subprocess.run(["quorbel-soap"], executable=self.program,
                                      env={**self.environment, **request.environment},
                                      cwd=self.directory / "web/cgi-bin", stdin=standard_input,
                                      capture_output=True, timeout=PATIENCE, check=False)
            except subprocess.TimeoutExpired as stuck:
                return "hangs", stuck.stdout or b"", stuck.stderr or b""
        return done.returncode, done.stdout, done.stderr

    def _take_log(self):
        """The log's entries without their times; the next run begins with an empty log."""
        log = self.directory / "logs/soap_log.txt"
        if not log.exists():
            return b""
        text = log.read_bytes()
        os.remove(log)
        text = TIME.sub(b"TIME", text).replace(os.fsencode(self.directory), b"SITE")
        return CUT_LINE_END.sub(b"\r\n", text)
