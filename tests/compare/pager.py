"""A paging server for one program at a time."""

import socket
import threading


class Pager:
    """Listens on a free port of 127.0.0.1; keeps what arrives and answers what it is given."""

    def __init__(self):
        self.listener = socket.create_server(("127.0.0.1", 0))
        # Bound but not listening: connections to it are refused, and no other program takes the port.
        self.unused = socket.socket()
        self.unused.bind(("127.0.0.1", 0))
        self.posts, self.answers = [], []
        threading.Thread(target=self._serve, daemon=True).start()

    @property
    def address(self):
        return "127.0.0.1:%d" % self.listener.getsockname()[1]

    @property
    def dead_address(self):
        return "127.0.0.1:%d" % self.unused.getsockname()[1]

    def begin(self, answers):
        """Forgets the posts so far. The last answer serves all further posts."""
        self.posts, self.answers = [], list(answers)

    def _serve(self):
        while True:
            connection, _ = self.listener.accept()
            with connection:
                connection.settimeout(20)
                try:
                    self._answer(connection)
                except OSError:
                    pass  # the program went away

    def _answer(self, connection):
        self.posts.append(_read_post(connection))
        connection.sendall(self.answers[min(len(self.posts), len(self.answers)) - 1])


def _read_post(connection):
    """Head and body as they came, whole or cut off."""
    received = b""
    while not _is_complete(received):
        piece = connection.recv(1 << 16)
        if not piece:
            break
        received += piece
    return received


def _is_complete(received):
    head, separator, body = received.partition(b"\r\n\r\n")
    if not separator:
        return False
    for line in head.lower().split(b"\r\n"):
        if line.startswith(b"content-length:"):
            return len(body) >= int(line.partition(b":")[2])
    return True
