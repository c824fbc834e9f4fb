"""What operations tell: reports with the names of the tool's JSON."""

from __future__ import annotations

from html import escape
from typing import Any, Dict, Iterator, List, Optional

from ._data import Entries, Entry, Finding, Place, counted, load, table


class Report:
    """What an operation has done or found: the tool's JSON, read when it is first looked at. Its members are
    attributes; report["member"] and report.data do as well."""

    def __init__(self, text: str) -> None:
        self._text = text
        self._data: Optional[Entry] = None

    @property
    def data(self) -> Entry:
        if self._data is None:
            self._data = load(self._text)
        return self._data

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        return getattr(self.data, name)

    def __getitem__(self, name: str) -> Any:
        return self.data[name]

    def __dir__(self) -> List[str]:
        return [*super().__dir__(), *self.data]

    @property
    def text(self) -> str:
        """The JSON itself."""
        return self._text

    def _counts(self) -> Dict[str, int]:
        return {name: len(value) for name, value in self.data.items() if isinstance(value, list)}

    def __repr__(self) -> str:
        counts = ", ".join(f"{count} {name}" for name, count in self._counts().items() if count)
        return f"<{self.data['command']}: {counts or 'nothing'}>"

    def _repr_html_(self) -> str:
        parts = [f"<p>{escape(repr(self)[1:-1])}</p>"]
        for name, value in self.data.items():
            if isinstance(value, list) and value and isinstance(value[0], dict):
                parts.append(f"<p>{escape(name)}</p>" + table(value))
        return "".join(parts)


class ChangeReport(Report):
    """What was `added`, `changed`, `removed`, `skipped` and left `unchanged`: signals and clients, and of changes to
    the structure blocks, ports, chart items and the model. True when anything changed."""

    def __bool__(self) -> bool:
        return any(self.data[name] for name in ("added", "changed", "removed"))


class FileReport(Report):
    """Of one file: what the JSON tells of it is here, too."""

    def __getitem__(self, name: str) -> Any:
        return self.data[name] if name in self.data else self.data["files"][0][name]

    def __getattr__(self, name: str) -> Any:
        if not name.startswith("_") and name in self.data["files"][0]:
            return self[name]
        return super().__getattr__(name)

    def __dir__(self) -> List[str]:
        return [*super().__dir__(), *self.data["files"][0]]


class QueryReport(FileReport):
    """The `answers`. True when there is one, and all are observed: as the tool's own exit code."""

    @property
    def answers(self) -> Entries[Place]:
        return Entries(self["answers"], Place)

    def __bool__(self) -> bool:
        return bool(self.answers) and all(answer["observed"] for answer in self.answers)

    def __len__(self) -> int:
        return len(self.answers)

    def __iter__(self) -> Iterator[Place]:
        return iter(self.answers)

    def _repr_html_(self) -> str:
        return f"<p>{escape(repr(self)[1:-1])}</p>" + table(self.answers)

    def __repr__(self) -> str:
        return f"<query: {counted(len(self), 'answer')}, {len(self.observed)} observed>"

    @property
    def observed(self) -> Entries[Place]:
        """The answers that are."""
        return Entries([answer for answer in self.answers if answer["observed"]], Place)


class CheckReport(FileReport):
    """The `findings`, and what was `settled`. True when there is no error among them."""

    def __bool__(self) -> bool:
        return self.data["errors"] == 0

    @property
    def findings(self) -> Entries[Finding]:
        return Entries(self["findings"], Finding)

    @property
    def settled(self) -> List[Entry]:
        return self["settled"]

    def __repr__(self) -> str:
        data = self.data
        counts = [counted(data[level + "s"], level) for level in ("error", "warning", "note")]
        return f"<check: {', '.join(counts)}>"

    def _repr_html_(self) -> str:
        return f"<p>{escape(repr(self)[1:-1])}</p>" + table(self.findings)


class ImportReport(Report):
    """What was imported, and what was left out, `dropped`, or taken with `warnings`: of each a `text`, the `count` and
    the `names`. True when nothing was left out."""

    def __bool__(self) -> bool:
        return not self.data["dropped"]

    def __repr__(self) -> str:
        data = self.data
        dropped = ", ".join(f"{note['count']} {note['text']}" for note in data["dropped"])
        return f"<import: {counted(data['blocks'], 'block')}, {counted(data['ports'], 'port')}" \
               f"{'; left out: ' if dropped else ''}{dropped}>"


class PruneReport(Report):
    """What was `settled`, by removing it. True when anything was."""

    def __bool__(self) -> bool:
        return bool(self.data["settled"])

    def __repr__(self) -> str:
        return f"<prune: {counted(len(self.data['settled']), 'removal')}>"


class MergeReport(Report):
    """How many `signals` and `clients` there are now, and the `conflicts`. True when there are none of these."""

    def __bool__(self) -> bool:
        return not self.data["conflicts"]

    def __repr__(self) -> str:
        data = self.data
        return f"<merge: {counted(data['signals'], 'signal')}, {counted(data['clients'], 'client')}, " \
               f"{counted(len(data['conflicts']), 'conflict')}>"


class PageReport(Report):
    """The `file` of a page, its `bytes`, and what is on it. True when there is no error among what is wrong."""

    def __bool__(self) -> bool:
        return self.data["errors"] == 0

    def __repr__(self) -> str:
        data = self.data
        return f"<report: {data['file']}, {counted(data['blocks'], 'block')}, {counted(data['signals'], 'signal')}, " \
               f"{counted(data['clients'], 'client')}>"


class DiffReport(Report):
    """How two files differ: `blocks`, `signals`, `clients`. True when they do."""

    def __bool__(self) -> bool:
        return not self.data["same"]

    def __repr__(self) -> str:
        parts = []
        for kind in ("blocks", "signals", "clients"):
            lists = {name: value for name, value in self.data[kind].items() if isinstance(value, list) and value}
            parts += [f"{kind} {name} {len(value)}" for name, value in lists.items()]
        return f"<diff: {', '.join(parts) or ('same' if self.data['same'] else 'name or order')}>"


class CarryReport(Report):
    """What became of the marks, and the `counts`. True when none was lost or is ambiguous."""

    def __bool__(self) -> bool:
        return not self.data["skipped"]

    def __repr__(self) -> str:
        counts = ", ".join(f"{count} {fate}" for fate, count in self.data["counts"].items() if count)
        return f"<carry: {counts or 'no marks'}>"


class RecordReport(Report):
    """How a recording went: its `outcome`, `samples` and `columns`. True when it went to its end."""

    def __bool__(self) -> bool:
        return self.data["outcome"] == "done"

    def __repr__(self) -> str:
        data = self.data
        return f"<record: {data['outcome']} at t = {data['stop']:g}, {counted(data['samples'], 'sample')} of " \
               f"{counted(len(data['columns']), 'column')} in {data['file']}>"
