"""What was found, kept from run to run, and what was judged to make no difference."""

import json
import re
from collections import Counter


class Equivalents:
    """A checked-in list of entries {"file", "function", "kind", "was", "becomes", "reason"}; each text that is given
    must fit, with * for any text. `was` and `becomes` are the lines as a report tells them."""

    def __init__(self, path):
        self.entries = json.loads(path.read_text(encoding="latin-1")) if path.exists() else []
        self.used = Counter()

    def reason(self, change):
        told = {"file": change.file, "function": change.function, "kind": change.kind, "was": change.was_line,
                "becomes": change.new_line}
        for number, entry in enumerate(self.entries):
            if all(fits(told[name], entry[name]) for name in told if name in entry):
                self.used[number] += 1
                return entry["reason"]
        return None

    def unused(self):
        return [e for number, e in enumerate(self.entries) if number not in self.used]


def places(changes):
    """Where they are: each file once, with its functions. Lines would be others after the next change."""
    names = {}
    for change in changes:
        names.setdefault(change.file, set()).add(change.function.rpartition("::")[2])
    return "; ".join(f"`{file}` ({', '.join(f'`{name}`' for name in sorted(found))})"
                     for file, found in sorted(names.items()))


def fits(text, pattern):
    # Only * has a meaning: brackets and question marks are part of the language.
    return re.fullmatch(".*".join(map(re.escape, pattern.split("*"))), text) is not None


class Results:
    def __init__(self, path, equivalents):
        self.path, self.equivalents = path, equivalents
        kept = json.loads(path.read_text()) if path.exists() else {}
        self.outcomes, self.seconds = kept.get("outcomes", {}), kept.get("seconds", 0)

    def save(self, seconds):
        self.path.write_text(json.dumps({"outcomes": self.outcomes, "seconds": self.seconds + seconds}, indent=0))

    def put(self, change, outcome, by=""):
        self.outcomes[change.key] = {"outcome": outcome, "by": by}

    def of(self, change):
        return self.outcomes.get(change.key, {"outcome": "", "by": ""})

    def survivors(self, changes):
        return [c for c in changes if self.of(c)["outcome"] in ("survived", "unreached")]

    def without_difference(self, changes):
        """The reasons of those that make no difference, the most frequent first, each with its changes."""
        reasons = {}
        for change in self.survivors(changes):
            reason = self.equivalents.reason(change)
            if reason is not None:
                reasons.setdefault(reason, []).append(change)
        return sorted(reasons.items(), key=lambda item: (-len(item[1]), item[0]))

    def noticed_by(self):
        return Counter(result["by"] for result in self.outcomes.values() if result["outcome"] == "noticed")

    def noticed_by_others(self, changes, tests):
        found = [(change, self.of(change)) for change in changes]
        return [change for change, result in found if result["outcome"] == "noticed" and result["by"] not in tests]

    def noticed_near(self, changes):
        """The tests that noticed changes of a function: (file, function) to the most frequent ones."""
        near = {}
        for change in changes:
            if self.of(change)["outcome"] == "noticed":
                near.setdefault((change.file, change.function), Counter())[self.of(change)["by"]] += 1
        return near

    def figures(self, changes):
        count = Counter(self.of(c)["outcome"] for c in changes)
        alive = self.survivors(changes)
        equivalent = sum(self.equivalents.reason(c) is not None for c in alive)
        left = len(alive) - equivalent
        counted = count["noticed"] + left
        share = f"{100 * count['noticed'] / counted:.1f} %" if counted else "none yet"
        return (f"{len(changes)} changes are possible, {len(changes) - count['']} were tried; of these {count['compiler']} "
                f"do not compile, {equivalent} make no difference, {count['noticed']} were noticed, {left} survived: "
                f"{share} of those that count are noticed")

    def table(self, changes):
        """The figures by room."""
        lines = []
        for room in sorted({c.file.split("/")[0] for c in changes}):
            lines.append(f"  {room}: " + self.figures([c for c in changes if c.file.startswith(room + "/")]))
        return "\n".join(lines)
