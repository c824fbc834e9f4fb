"""Puts all changes of a file into its text at once, each behind the question whether it is the chosen one."""

import bisect
import re

from .changes import ENTRY, EXCHANGE, EXPRESSION, RETURN, SKIP, SWAP, TRUTH

MARK = re.compile(r"/\*([<>])(\d+)\*/")


def is_on(number, change):
    return f"::mutation::{'isOnAtRunTime' if change.in_constexpr else 'isOn'}({number})"


class Site:
    """A place in the text with the changes that concern it, and the places inside of it."""

    def __init__(self, start, end):
        self.start, self.end = start, end
        self.changes, self.first = [], []  # `first`: swaps of which this is the statement that comes second
        self.inner = []

    def text(self, original):
        inner = joined(original, self.start, self.end, self.inner)
        by_form = lambda *forms: [(n, c) for n, c in self.changes if c.form in forms]
        for number, change in by_form(EXPRESSION, EXCHANGE):
            other = change.becomes if self.start == change.start else original[change.start:change.end]
            inner = f"(/*<{number}*/{is_on(number, change)} ? ({other}) : /*>{number}*/({inner}))"
        if by_form(TRUTH):
            inner = f"static_cast<bool>({inner})"
        for number, change in by_form(TRUTH):
            inner = f"(/*<{number}*/{is_on(number, change)} ? {change.becomes} : /*>{number}*/{inner})"
        for number, change in by_form(RETURN):
            inner = f"/*<{number}*/if ({is_on(number, change)}) {change.becomes}/*>{number}*/ {inner}"
        for number, change in by_form(ENTRY):
            inner = f"/*<{number}*/ if ({is_on(number, change)}){change.becomes}/*>{number}*/ {inner}"
        skipped = [is_on(number, change) for number, change in by_form(SKIP) + self.first]
        if skipped:
            marks = "".join(f"/*<{n}*//*>{n}*/" for n, _ in by_form(SKIP))
            inner = f"{marks}if (!({' || '.join(skipped)})) {{ {inner} }}"
        for number, change in by_form(SWAP):
            second = original[change.other[0]:change.other[1]]
            inner = f"/*<{number}*/if ({is_on(number, change)}) {{ {second} }}/*>{number}*/ {inner}"
        if by_form(RETURN, SKIP) and not (by_form(SWAP) or self.first):
            inner = f"{{ {inner} }}"
        return inner


def joined(original, start, end, sites):
    parts, at = [], start
    for site in sites:
        parts += [original[at:site.start], site.text(original)]
        at = site.end
    return "".join(parts) + original[at:end]


def nested(sites):
    """The outermost sites, each with those inside of it."""
    top, stack = [], []
    for site in sorted(sites, key=lambda s: (s.start, -s.end)):
        while stack and stack[-1].end <= site.start:
            stack.pop()
        if stack and site.end > stack[-1].end:
            raise ValueError(f"changes overlap at {site.start} to {site.end}")
        (stack[-1].inner if stack else top).append(site)
        stack.append(site)
    return top


def rendered(original, numbered, demotions):
    """The text with all of `numbered` (number, change) in it, and the first line that includes the choice."""
    sites = {}
    at = lambda start, end: sites.setdefault((start, end), Site(start, end))
    for number, change in numbered:
        at(change.start, change.end).changes.append((number, change))
        if change.form == SWAP:
            at(*change.other).first.append((number, change))
        elif change.form == EXCHANGE:
            at(*change.other).changes.append((number, change))
    edits = [Edit(*edit) for start in {c.demoted for _, c in numbered} - {-1} for edit in demotions[start][1]]
    return '#include "mutation/mutating.h"\n' + joined(original, 0, len(original), nested([*sites.values(), *edits]))


class Edit(Site):
    """A constant that is no longer one of the compiler."""

    def __init__(self, start, length, becomes):
        super().__init__(start, start + length)
        self.becomes = becomes

    def text(self, original):
        return self.becomes


class Blame:
    """Which changes a place in the rendered text belongs to."""

    def __init__(self, text):
        self.line_starts = [0] + [m.end() for m in re.finditer("\n", text)]
        self.spans, open_at = [], {}
        for mark in MARK.finditer(text):
            if mark[1] == "<":
                open_at[mark[2]] = mark.start()
            else:
                self.spans.append((open_at[mark[2]], mark.end(), int(mark[2])))

    def of(self, line, column):
        """The innermost change there, else those of the line, else the nearest ones before."""
        place = self.line_starts[min(line, len(self.line_starts)) - 1] + column - 1
        around = [s for s in self.spans if s[0] <= place <= s[1]]
        if around:
            return {min(around, key=lambda s: s[1] - s[0])[2]}
        begin = self.line_starts[line - 1]
        end = self.line_starts[line] if line < len(self.line_starts) else begin + 10000
        near = {s[2] for s in self.spans if begin <= s[0] < end}
        if near:
            return near
        before = sorted(s[0] for s in self.spans)
        index = bisect.bisect_left(before, place)
        return {s[2] for s in self.spans if index and s[0] == before[index - 1]}

