"""Finds every place where one token of a C++ source can be changed."""

from dataclasses import dataclass
import re

# Kind, what is found (in code without comments), and what stands there instead.
OPERATORS = [
    ("equal", r" == ", " != "),
    ("not equal", r" != ", " == "),
    ("less", r" < ", " <= "),
    ("greater", r" > ", " >= "),
    ("less or equal", r" <= ", " < "),
    ("greater or equal", r" >= ", " > "),
    ("and", r" && ", " || "),
    ("or", r" \|\| ", " && "),
    ("true", r"\btrue\b", "false"),
    ("false", r"\bfalse\b", "true"),
    ("plus", r" \+ (?![\"'])", " - "),
    ("minus", r" - ", " + "),
    ("not", r"(?<=[( ])!(?=[\w(])", ""),
    ("number", r"(?<![\w.\"'])(\d+)(?=[),;} \]])", lambda match: str(int(match[1]) + 1)),
    ("text", r'"((?:[^"\\]|\\.)+)"', lambda match: f'"{match[1]}x"'),
    ("table row", r"^ {4,}\{.*\},$", ""),
    ("table row", r"^ {4,}\{.*\},$", ""),  # twice, because it stands for most of what can go wrong in a table
]
# Enumerators too: their values are only names.
SKIPPED = re.compile(r"^\s*(#|static_assert|\w+ = \d+,)|^namespace|^using |^extern ")


@dataclass(frozen=True)
class Mutant:
    file: str
    line: int  # from 0
    kind: str
    before: str
    after: str


def without_comment(line):
    return re.split(r"(?:^|\s)//", line)[0]


def mutants_of_line(kind, pattern, replacement, line):
    code = without_comment(line)
    for match in re.finditer(pattern, code):
        changed = match.expand(replacement) if isinstance(replacement, str) else replacement(match)
        yield code[:match.start()] + changed + line[match.end():]


def mutants_of(kind_row, sources):
    """All mutants of one kind in {file: lines}."""
    kind, pattern, replacement = kind_row
    return [Mutant(file, number, kind, line, after)
            for file, lines in sources.items()
            for number, line in enumerate(lines) if not SKIPPED.match(line)
            for after in mutants_of_line(kind, pattern, replacement, line)]


def draw(random, sources):
    """Mutants without end, each kind as often as any other; none twice."""
    pools = [pool for row in OPERATORS if (pool := mutants_of(row, sources))]
    total = len({mutant for pool in pools for mutant in pool})
    seen = set()
    while len(seen) < total:
        mutant = random.choice(random.choice(pools))
        if mutant not in seen:
            seen.add(mutant)
            yield mutant
