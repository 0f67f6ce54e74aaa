"""Serves requests by the resident program, which web servers reach by SCGI."""

import contextlib
import multiprocessing.util
import re
import socket
import subprocess
import time

from program import PATIENCE, Site

# How a body came in pieces is the socket's doing.
PIECES = re.compile(rb"(TIME SOAP \[TRACE\] Data \[size=\d+\] read\n)+")


class ResidentSite(Site):
    """A site whose requests one worker after another serves, each many of them. The workers take no proxy."""

    def __init__(self, directory, program, pager):
        super().__init__(directory, program, pager)
        self.socket = str(self.directory / "soapd.sock")
        options = ["--site", self.directory, "--socket", self.socket, "--spare", "1", "--workers", "1"]
        self.process = subprocess.Popen(["quorbel-soap", *options], executable=self.program, env=self.environment,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        multiprocessing.util.Finalize(None, self._end, exitpriority=1)
        self._wait_for_socket()

    def _end(self):
        self.process.terminate()
        self.process.wait()

    def _wait_for_socket(self):
        for _ in range(200):
            try:
                return self._connect().close()
            except OSError:
                time.sleep(0.05)
        raise RuntimeError(f"{self.program} does not listen")

    def _connect(self):
        connection = socket.socket(socket.AF_UNIX)
        connection.settimeout(PATIENCE)
        connection.connect(self.socket)
        return connection

    def _run(self, request):
        """Without status and errors, which a client of the resident program does not see."""
        with self._connect() as connection:
            with contextlib.suppress(BrokenPipeError):  # answered without reading all
                connection.sendall(_header(request.environment))
                connection.sendall(request.body)
                connection.shutdown(socket.SHUT_WR)
            return _receive(connection)


def _receive(connection):
    output = b""
    try:
        while piece := connection.recv(1 << 16):
            output += piece
    except ConnectionResetError:
        pass  # all that was sent has been received
    except TimeoutError:
        return "hangs", output, None
    return None, output, None


def can_be_sent(request):
    """SCGI has no request without a length."""
    return "CONTENT_LENGTH" in request.environment


def without_pieces(run):
    run.log = PIECES.sub(b"Data read\n", run.log)
    return run


def _header(environment):
    names = ["CONTENT_LENGTH", *(name for name in environment if name != "CONTENT_LENGTH")]
    variables = [(name, environment[name]) for name in names] + [("SCGI", "1")]
    content = b"".join(f"{name}\0{value}\0".encode() for name, value in variables)
    return b"%d:%s," % (len(content), content)
