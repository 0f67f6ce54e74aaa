"""Random contents of elements, written as XML."""

WORDS = ["night", "ops", "pager-7", "a/b_c.d", "x y", "0", "1", "100001.1", "Pump 4", "50%", "100%25", "a=b", "%s%n%d",
         "+49 (0)30", "*", "?q=1", "#", "\\", "'", '"', "~", "[x]", "99999999"]
FOREIGN = ["Müller", "é", "日本語", "😀", "ÿ", "ß=1", "naïve"]
LATIN1 = ["Müller", "é", "ÿ", "ß=1", "naïve"]
ENTITIES = ["&amp;", "&lt;", "&gt;", "&apos;", "&quot;", "&#39;", "&#65;", "&#233;", "&#x20AC;", "&#10;", "&#13;",
            "&#9;"]
BREAKS = ["\n", "\r\n", "\t", " ", "\n\n  "]
MARKUP = ["<![CDATA[a<b>&c]]>", "<![CDATA[]]>", "<!-- note -->", "<?pi data?>", "<![CDATA[ ]]>"]
BOOLEANS = ["true", "false", "True", "FALSE", "0", "1", "", "fals", "falsch", "fal", "00", "01", " 0", "0 ", "no", "yes",
            "f", "t", "10", "-1", "\n", "&#48;", "FaLsE"]
# Elements whose value decides about others.
CHOICES = {
    "szAuthen": ["", "sql", "SQL", "nt", "Nt", "sqlx", "windows", " sql", "nt\n", "s&#113;l", "sqlsqlsqlsql"],
    "szCarrier": ["Voice", "voice", "VOICE", "voices", "Voice ", "sms"],
}
# Around the widths of the records, and around what one value of a post can hold.
LENGTHS = [9, 10, 19, 20, 29, 30, 49, 50, 51, 99, 100, 101, 102, 255, 1023, 1024, 2047, 3330, 3333, 9990, 9999, 10001,
           70000]
# Looks like the beginning of a log entry.
FORGED = ["\n11/21/2026 17:00:00 SOAP [ERROR] forged\n", "\n01/01/1999 00:00:00 x"]


def number(random):
    return str(random.choice([0, 1, 2, 5, 9, 10, 60, 511, 512, 2147483647, -1, 3000000000]))


def long_text(random, words):
    length = random.choice(LENGTHS)
    filler = random.choice(["x", "x", "é", "ab "] + (["日"] if "日本語" in words else []))
    start = "y" * random.randrange(4)
    return (start + filler * length)[:length]


def text(random, latin1=False, forged=False):
    """Words, references, line breaks and sections in any mixture; now and then far too long."""
    words = LATIN1 if latin1 else FOREIGN
    kind = random.random()
    if kind < 0.5:
        return random.choice(WORDS[:9] + words[:1])
    if kind < 0.56:
        return random.choice(["", " ", "\n"])
    if kind < 0.61:
        return long_text(random, words)
    pieces = WORDS * 2 + words * 2 + ENTITIES + BREAKS + MARKUP + (FORGED if forged else [])
    return "".join(random.choice(pieces) for _ in range(random.randint(1, 6)))


def value(random, element, **shape):
    """What stands in `element`: a boolean or a number where one is expected, most of the time."""
    usual = random.random() < 0.9
    if element.startswith("b") and usual:
        return random.choice(BOOLEANS)
    if element.startswith("n") and usual:
        return number(random)
    return text(random, **shape)
