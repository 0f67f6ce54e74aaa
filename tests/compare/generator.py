"""Random requests: the same number gives the same request."""

from dataclasses import dataclass
import random

import replies
import values
from interface import ALL_ELEMENTS, METHODS, WRAPPED, WRAPPERS

XSI = 'xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"'
FOREIGN = ["note", "Header", "xszURL", "my.szMessage", "AnySzGroupName", "ResponseAction", "QueryUserX", "szURL3",
           "Body2"]
CLOSING = ["preQueryUser", "xAddGroup", "confirmmessage", "DeleteUserGroup", "bAddAndDeleteGroup"]
METHODS_OF_HTTP = ["GET", "GET", "PUT", "post", "POST ", "HEAD", ""]
# Names that a server takes for part of the command itself.
RESERVED = ["cmd", "subcmd", "modid", "adminusername", "AdminPassword", "CMD"]
DOCTYPES = ["<!DOCTYPE a>", '<!DOCTYPE Envelope [<!ENTITY e "text">]>', "<!DOCTYPE a [<!ATTLIST szURL nil CDATA 'x'>]>"]
DAMAGE = [b"<", b">", b"&", b"&x;", b"</a>", b"\xe9", b'"', b"]]>", b"\xc3\xa9"]
DECLARATIONS = [("", "utf-8")] * 4 + [
    ('<?xml version="1.0"?>\n', "utf-8"),
    ('<?xml version="1.0" encoding="UTF-8"?>\n', "utf-8"),
    ("<?xml version='1.0' encoding='utf-8' standalone='yes'?>", "utf-8"),
    ("\ufeff", "utf-8"),
    ('<?xml version="1.0" encoding="ISO-8859-1"?>\n', "latin-1"),
    ('<?xml version="1.0" encoding="iso-8859-1"?>', "latin-1"),
]
BROKEN_DECLARATIONS = [
    ('<?xml version="1.0" encoding="US-ASCII"?>', "utf-8"),
    ('<?xml version="1.0" encoding="UTF-16"?>', "utf-8"),
    ('<?xml version="1.0" encoding="windows-1252"?>', "latin-1"),
    ("", "latin-1"),
    ("", "utf-16"),
    (" \n<?xml version='1.0'?>", "utf-8"),
]


@dataclass
class Request:
    body: bytes
    environment: dict
    answers: list  # of the paging server, one for each post
    methods: list


class Generator:
    """One request. Shapes that releases are known to answer differently only with `all_shapes`.

    With `local`, no text can become another machine's address: for programs that take no proxy.
    """

    def __init__(self, seed, server, dead, all_shapes=False, local=False):
        self.random = random.Random(seed)
        self.server, self.dead, self.all_shapes, self.local = server, dead, all_shapes, local
        self.damaged = self.often(0.08) and not local
        broken = BROKEN_DECLARATIONS if self.often(0.04) else DECLARATIONS
        self.declaration, self.encoding = self.random.choice(broken)
        self.prefix = self.random.choice(["", "", "", "q:", "ns1:", "SOAP-ENV."])
        self.gap = self.random.choice(["", "", "\n", "\n      ", "\r\n\t", " "])
        self.share = self.random.choice([1, 1, 1, 1, 0.95, 0.8, 0.4, 0])  # of the elements that are there
        self.plain = self.often(0.5)  # only what a toolkit writes
        self.methods = []

    def often(self, share):
        return self.random.random() < share

    def request(self):
        body = self.envelope().encode(self.encoding, "replace")
        if self.damaged:
            body = self.damage(body)
        environment, body = self.environment(body)
        answers = [replies.answer(self.random, self.all_shapes) for _ in range(2)]
        return Request(body, environment, answers, self.methods)

    # What the web server hands over

    def environment(self, body):
        environment = {"REQUEST_METHOD": "POST", "CONTENT_LENGTH": str(len(body))}
        if self.often(0.03):
            environment["REQUEST_METHOD"] = self.random.choice(METHODS_OF_HTTP)
        elif self.often(0.03):
            environment["CONTENT_LENGTH"] = self.random.choice(
                ["0", "-5", "abc", "", "7", f" {len(body)}", f"+{len(body)}", f"{len(body)}abc", str(len(body) + 1),
                 str(len(body) // 2), str(len(body) - 1), "9223372036854775807", "99999999999999999999"])
            self.random.choice([environment.pop, environment.get])("CONTENT_LENGTH")
        elif self.often(0.01):
            del environment["REQUEST_METHOD"]
        elif self.often(0.01):
            body = body[:len(body) // 2] + b"\0" + body[len(body) // 2:]
            environment["CONTENT_LENGTH"] = str(len(body))
        return environment, body

    def damage(self, body):
        at = self.random.randrange(len(body) + 1)
        kind = self.random.randrange(5)
        if kind == 0:
            return body[:at]
        if kind == 1:  # a client that forgot to close what it opened
            return body[:body.rfind(b"</", 0, at) + 1].removesuffix(b"<")
        if kind == 2:
            return body[:at] + body[at + self.random.randint(1, 5):]
        if kind == 3:
            return body[:at] + self.random.choice(DAMAGE) + body[at:]
        return self.random.choice([b"", b"<", b"hello", b"<a/>", b"<a></b>", b" ", b"\n"])

    # The document

    def envelope(self):
        name = self.random.choice(["soap:Envelope", "SOAP-ENV:Envelope", "Envelope", "ENVELOPE", "e", "myenvelope"])
        count = 1 if self.local else self.random.choice([1] * 30 + [2] * 4 + [3, 0])
        body = self.gap.join(self.method() for _ in range(count))
        ending = f"</{name}>" + self.random.choice([""] * 40 + ["\n", "<!-- end -->", "trailing", "<a/>"])
        doctype = self.random.choice(DOCTYPES) if self.all_shapes and self.often(0.05) else ""
        header = f"<h:Header><id {XSI}>5</id></h:Header>" if self.often(0.1) else ""
        if self.often(0.05):
            ending = ""
        return f"{self.declaration}{doctype}<{name} {XSI}>{header}<Body>{body}</Body>{self.gap}{ending}"

    def method(self):
        name = self.random.choice(list(METHODS))
        self.methods.append(name)
        elements = self.gap.join(["", *self.elements(name), ""])
        spelling = "UnknownMethod" if self.often(0.02) else self.prefix + self.spelled(name)
        return f"<{spelling}{self.attributes(spelling, False)}>{elements}</{spelling}>"

    def elements(self, method):
        own = [e for e in METHODS[method] if e not in WRAPPED]
        chosen = [self.field(e) for e in ("szURL", "szAdminName", "szAdminPassword") if self.often(0.97)]
        chosen += [self.field(e) for e in own if self.often(self.share)]
        chosen += self.extras(method)
        if self.often(0.4) and not self.local:  # a cut address is followed by no recipient
            self.random.shuffle(chosen)
        if self.often(0.5):
            early = self.often(0.3) and not self.local  # what follows becomes the address
            at = self.random.randint(0, len(chosen)) if early else len(chosen)
            chosen.insert(at, self.field("szURL2"))
        return chosen

    def extras(self, method):
        """More wrappers, elements twice, and those of other methods."""
        extras = []
        if method == "SendStdMessage" and self.often(0.5):
            count = self.random.choice([1, 2, 3, 4, 5, 6, 9, 40, 300])
            extras += [self.field(self.random.choice(list(WRAPPERS))) for _ in range(count)]
        while not self.plain and self.often(0.4):
            extras.append(self.field(self.other(self.random.choice([METHODS[method], ALL_ELEMENTS, FOREIGN]))))
        if not self.plain and self.often(0.03):
            extras.append(self.field(self.random.choice(CLOSING)))
        return extras

    def other(self, pool):
        return self.random.choice([e for e in pool if not self.local or "szurl" not in e.lower()])

    def field(self, element):
        if element in ("szURL", "szURL2"):
            content = self.url(element)
        elif element in WRAPPERS and self.often(0.95):
            content = "".join(self.field(part) for part in WRAPPERS[element] if self.often(0.93))
        elif element == "szFieldName":
            content = self.field_name()
        elif not self.plain and self.often(0.01):
            content = self.field(self.other(ALL_ELEMENTS))
        else:
            content = self.value(element)
        spelling = self.prefix + self.spelled(element)
        attributes = self.attributes(content, element not in WRAPPERS)
        if content == "" and self.often(0.5):
            return f"<{spelling}{attributes}/>"
        return f"<{spelling}{attributes}>{content}</{spelling}>"

    def attributes(self, content, may_be_nil):
        if self.plain or self.often(0.88):
            return ""
        ends_nil = ' xsi:type="xsd:string" xsi:nil="true"', ' xsi:nil="true"', ' a="1" b="2" NIL="false"'
        holds_text = may_be_nil and not self.damaged and content.strip()[:1].isalnum()
        if self.all_shapes or holds_text:
            ends_nil += ' xsi:nil="true" xsi:type="xsd:string"', ' a="1" nil="0" b="2"'
        return self.random.choice((' xsi:type="xsd:string"', ' id="7" nilx="1"') + ends_nil)

    def spelled(self, name):
        if self.plain or self.often(0.9):
            return name
        return self.random.choice([name.lower(), name.upper(), name.swapcase(), "x" + name])

    # Values

    def value(self, element):
        if element in values.CHOICES and self.often(0.7):
            return self.random.choice(values.CHOICES[element])
        if self.plain or (element.startswith("szAdmin") and self.often(0.7)):
            return self.random.choice(["true", "false"]) if element.startswith("b") else f"v{element[-3:]} 1"
        return values.value(self.random, element, latin1=self.encoding == "latin-1", forged=self.all_shapes)

    def field_name(self):
        if self.all_shapes and self.often(0.05):
            return self.random.choice(RESERVED)
        return self.random.choice(["site", "ticket", "a b", "x=y", "", "Müller", "cmd2", "message", "jobid"])

    def url(self, element):
        path = "/second" if element == "szURL2" else "/first"
        live, dead = f"http://{self.server}{path}", f"http://{self.dead}{path}"
        turned = live.replace("/", "\\")
        if self.local or element == "szURL2" or self.often(0.88):
            odd = [dead, f"{live}?a=1", turned, f"x&#33;{live}", f"<![CDATA[{live}]]>"]
            return self.random.choice([live] * 12 + odd)
        return self.random.choice([dead] * 15 + [
            "", " ", "\n", f"HTTP://{self.server}/upper", f" {live}", f"http://user:secret@{self.server}{path}",
            f"{live}/%zz x", "file:///etc/hostname", "gopher://127.0.0.1:1/", "http://127.0.0.1:99999/", "http://",
            "://", self.server, f"{live}/ü", f"{live}\n", "http://pager.example/foreign"])
