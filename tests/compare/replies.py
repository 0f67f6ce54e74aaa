"""What the paging server answers: whole HTTP answers, some of them broken."""

LINES = ["OK job 100001.1 queued", "Done.", "<b>&amp;</b> 'x' \"y\"", "a\tb", "", " ", "night  duty", "Müller", "日本語", "100%",
         "%s %d %n %5$s %%", "x" * 300, "é", "]]>", "  ", "0", "1,2;3|4"]
LINE_ENDS = ["\r\n", "\r\n", "\n", "\n", "\r\n\r\n"]
# No character of XML, or no character at all.
UNCLEAN = [b"\xff", b"\x00", b"\x1b[31m", b"\xed\xa0\x80", b"\xef\xbf\xbe", b"\xc3", b"\x7f", b"\r", b"\x08",
           b"\n11/21/2026 17:00:00 SOAP [ERROR] forged\n"]


def body(random, all_shapes):
    kind = random.random()
    if kind < 0.4:
        text = "Done." + random.choice(["\r\n", "\n", ""])
    elif kind < 0.45:
        text = ""
    else:
        end = random.choice(LINE_ENDS)
        count = 3000 if random.random() < 0.02 else random.randint(1, 8)
        text = end.join(random.choice(LINES) for _ in range(count)) + random.choice([end, ""])
    content = text.encode()
    if all_shapes and random.random() < 0.3:
        at = random.randint(0, len(content))
        content = content[:at] + random.choice(UNCLEAN) + content[at:]
    return content


def answer(random, all_shapes=False):
    """The bytes that the server sends before it closes the connection."""
    content = body(random, all_shapes)
    kind = random.random()
    head = b"HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\n"
    if kind < 0.70:
        return head + b"Content-Length: %d\r\n\r\n" % len(content) + content
    if kind < 0.80:
        return head + b"\r\n" + content
    if kind < 0.85:  # breaks off
        return head + b"Content-Length: %d\r\n\r\n" % (len(content) + random.randint(1, 1000)) + content
    if kind < 0.88:
        return b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n%x\r\n%s\r\n0\r\n\r\n" % (len(content), content) \
            if content else b""
    if kind < 0.92:
        return b"HTTP/1.0 500 Internal Server Error\r\nContent-Length: %d\r\n\r\n" % len(content) + content
    if kind < 0.94:
        return b"HTTP/1.0 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 0\r\n\r\n"
    if kind < 0.97:
        return b"HTTP/1.0 404 Not Found\r\nContent-Length: 9\r\n\r\nnot here\n"
    return random.choice([b"", b"", b"no HTTP at all\r\n", b"HTTP/1.0 204 No Content\r\n\r\n", b"HTTP/1.0 200"])
