"""What a change is: where, what it puts there, and in which form it can be chosen at run time."""

import hashlib
from dataclasses import dataclass, field

# Forms. EXPRESSION: another expression of the same type in its place. TRUTH: the same of a condition. SKIP: the
# statement is not executed. SWAP: `other` is the range of the statement that goes first. EXCHANGE: of the expression
# that stands in for this one, and this one for it. RETURN: a return instead of this one. ENTRY: a return in front of
# the first statement. PLAIN: only by compiling the changed text.
EXPRESSION, TRUTH, SKIP, SWAP, EXCHANGE, RETURN, ENTRY, PLAIN = (
    "expression", "truth", "skip", "swap", "exchange", "return", "entry", "plain")


@dataclass
class Change:
    file: str
    function: str
    kind: str
    form: str
    start: int
    end: int
    becomes: str
    line: int
    other: tuple = ()
    in_constexpr: bool = False
    demoted: int = -1  # start of the constant that must be one no longer for the change to take place at run time
    was_line: str = ""
    new_line: str = ""
    key: str = ""

    def as_told(self):
        head = f"{self.file}:{self.line}: {self.kind} in {self.function}"
        return f"{head}\n    - {self.was_line[:240]}\n    + {self.new_line[:240]}"


@dataclass
class Changes:
    """Those of one file, each one once."""

    source: object
    found: list = field(default_factory=list)
    demotions: dict = field(default_factory=dict)  # start of a constant: [(place, characters taken out, text put in)]
    _seen: set = field(default_factory=set)
    _told: dict = field(default_factory=dict)

    def add(self, context, kind, form, place, becomes, other=()):
        start, end = place
        if self.source.text[start:end] == becomes or (start, end, becomes) in self._seen:
            return
        self._seen.add((start, end, becomes))
        was, new = self.source.context(start, *self.in_text(place, becomes, other))
        told = (self.source.name, context.function, kind, was, new)
        self._told[told] = self._told.get(told, 0) + 1
        key = hashlib.sha1("\0".join((*told, str(self._told[told]))).encode("latin-1")).hexdigest()[:12]
        self.found.append(Change(self.source.name, context.function, kind, context.form or form, start, end, becomes,
                                 self.source.text.count("\n", 0, start) + 1, other, context.in_constexpr,
                                 context.demoted, was, new, key))

    def in_text(self, place, becomes, other):
        """The end of the change as a change of the text, and what stands there then."""
        if not other:
            return place[1], becomes
        text = self.source.text
        return other[1], text[other[0]:other[1]] + text[place[1]:other[0]] + text[place[0]:place[1]]


def plain_text(text, change):
    """The whole file with this change in it."""
    if change.other:
        first, second = text[change.start:change.end], text[change.other[0]:change.other[1]]
        return text[:change.start] + second + text[change.end:change.other[0]] + first + text[change.other[1]:]
    return text[:change.start] + change.becomes + text[change.end:]
