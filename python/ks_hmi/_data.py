"""What is told of models: data with the names of the tool's JSON."""

from __future__ import annotations

import json
from html import escape
from typing import Any, Callable, Dict, Generic, Iterator, List, Optional, Sequence, TypeVar, Union, overload


class Entry(Dict[str, Any]):
    """A dictionary whose members are attributes, too: entry.port is entry["port"]."""

    def __getattr__(self, name: str) -> Any:
        try:
            return self[name]
        except KeyError:
            raise AttributeError(f"{type(self).__name__} has no {name!r}; it has: {', '.join(self)}") from None

    def __dir__(self) -> List[str]:
        return [*super().__dir__(), *self]

    def _repr_html_(self) -> str:
        return table([self])


def reference(place: Dict[str, Any]) -> str:
    """What a port or chart item is called in selections."""
    if "port" in place:
        return f"{place['block']}:{place['port']}"
    return f"{place['block']}/{place['item']}" if place.get("item") else place["block"]


class Place(Entry):
    """An output port, or a chart with its states and data; `observed` tells whether a signal is on it."""

    @property
    def reference(self) -> str:
        return reference(self)

    def __repr__(self) -> str:
        name = f" {self['portName']!r}" if "portName" in self else ""
        return f"<{self.reference}{name}{', observed' if self['observed'] else ''}>"


class Block(Entry):
    """A block with its `outputs`, and what its `chart` has if it is one."""

    @property
    def path(self) -> str:
        return self["block"]

    @property
    def reference(self) -> str:
        return self["block"]

    def __repr__(self) -> str:
        observed = sum(place["observed"] for place in [*self["outputs"], *self.get("chart", [])])
        return f"<Block {self['block']}: {counted(len(self['outputs']), 'output')}, {observed} observed>"

    def _repr_html_(self) -> str:
        return f"<p>{escape(self['block'])}</p>" + table([*self["outputs"], *self.get("chart", [])])


class Signal(Entry):
    """A mark on a port or chart item, and its settings."""

    @property
    def uuid(self) -> str:
        return self["signal"]["uuid"]

    @property
    def position(self) -> int:
        """From 1, as everywhere outside Python's own sequences."""
        return self["signal"]["position"]

    @property
    def reference(self) -> str:
        return reference(self)

    def __repr__(self) -> str:
        return f"<Signal {self.position} {self['name']!r} on {self.reference}>"


class Client(Entry):
    """Who watches a signal."""

    @property
    def uuid(self) -> str:
        return self["client"]["uuid"]

    @property
    def position(self) -> int:
        """From 1."""
        return self["client"]["position"]

    def __repr__(self) -> str:
        return f"<Client {self.position} {self['type']} of signal {self['signal']['position']}, {self['state']}>"


def counted(count: int, what: str) -> str:
    return f"{count} {what}{'' if count == 1 else 's'}"


def typed(member: Dict[str, Any]) -> Entry:
    """The class that fits what a JSON object has."""
    if "eid" in member and "outputs" in member:
        return Block(member)
    if "client" in member and "type" in member:
        return Client(member)
    if "signal" in member and "decimation" in member:
        return Signal(member)
    if "block" in member and "observed" in member:
        return Place(member)
    return Entry(member)


def load(text: str) -> Any:
    return json.loads(text, object_hook=typed)


def shown(value: Any) -> str:
    if value is None:
        return ""
    if isinstance(value, bool):
        return "yes" if value else "no"
    if isinstance(value, dict) and "position" in value:
        return str(value["position"])
    return json.dumps(value, ensure_ascii=False) if isinstance(value, (dict, list)) else str(value)


def table(rows: Sequence[Dict[str, Any]], most: int = 60) -> str:
    """An HTML table, a row each and a column for each name."""
    names: Dict[str, None] = {}
    for row in rows[:most]:
        names.update(dict.fromkeys(row))
    head = "".join(f"<th>{escape(name)}</th>" for name in names)
    body = "".join(
        "<tr>" + "".join(f"<td>{escape(shown(row.get(name)))}</td>" for name in names) + "</tr>" for row in rows[:most])
    more = f"<p>... and {len(rows) - most} more</p>" if len(rows) > most else ""
    return f"<table><thead><tr>{head}</tr></thead><tbody>{body}</tbody></table>{more}"


T = TypeVar("T", bound=Entry)


class Listing(Sequence[T], Generic[T]):
    """A model's blocks, signals or clients as they are whenever one looks. Numbers count from 0, as in every sequence;
    a text finds a block by path, a signal or client by UUID."""

    def __init__(self, what: str, count: Callable[[], int], load_slice: Callable[[int, int], str],
                 find: Callable[[str], Union[int, T]]) -> None:
        self._what = what
        self._count = count
        self._load_slice = load_slice
        self._find = find

    def __len__(self) -> int:
        return self._count()

    @overload
    def __getitem__(self, index: Union[int, str]) -> T: ...
    @overload
    def __getitem__(self, index: slice) -> List[T]: ...

    def __getitem__(self, index: Union[int, str, slice]) -> Union[T, List[T]]:
        if isinstance(index, slice):
            return self._all()[index]
        if isinstance(index, str):
            found = self._find(index)
            if not isinstance(found, int):
                return found
            index = found
        count = len(self)
        position = index + count if index < 0 else index
        if not 0 <= position < count:
            raise IndexError(f"there is no {self._what} {index}; there are {count}")
        return load(self._load_slice(position, position + 1))[0]

    def __iter__(self) -> Iterator[T]:
        return iter(self._all())

    def _all(self) -> List[T]:
        return load(self._load_slice(0, len(self)))

    def __repr__(self) -> str:
        first = ", ".join(map(repr, load(self._load_slice(0, min(3, len(self))))))
        return f"<{counted(len(self), self._what)}: {first}{', ...' if len(self) > 3 else ''}>"

    def _repr_html_(self) -> str:
        return table(self._all())

    def to_frame(self) -> Any:
        """A pandas frame with a row each."""
        import pandas
        return pandas.DataFrame([dict(one) for one in self._all()])


class Report:
    """What an operation has done or found: the tool's JSON, read when it is first looked at. Its members are
    attributes; report["member"] and report.data do as well."""

    LISTS = ("added", "changed", "removed", "skipped", "unchanged")

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
    """`added`, `changed`, `removed`, `skipped` and `unchanged` signals and clients. True when anything changed."""

    def __bool__(self) -> bool:
        return any(self.data[name] for name in ("added", "changed", "removed"))


class QueryReport(Report):
    """The `answers`. True when there is one, and all are observed: as the tool's own exit code."""

    def __bool__(self) -> bool:
        return bool(self.data["answers"]) and all(answer["observed"] for answer in self.data["answers"])

    def __len__(self) -> int:
        return len(self.data["answers"])

    def __iter__(self) -> Iterator[Place]:
        return iter(self.data["answers"])

    @property
    def observed(self) -> List[Place]:
        """The answers that are."""
        return [answer for answer in self.data["answers"] if answer["observed"]]


class CheckReport(Report):
    """The `findings`, and what was `settled`. True when there is no error among them."""

    def __bool__(self) -> bool:
        return self.data["errors"] == 0

    @property
    def findings(self) -> List[Entry]:
        return self.data["files"][0]["findings"]

    @property
    def settled(self) -> List[Entry]:
        return self.data["files"][0]["settled"]

    def __repr__(self) -> str:
        data = self.data
        counts = [counted(data[level + "s"], level) for level in ("error", "warning", "note")]
        return f"<check: {', '.join(counts)}>"

    def _repr_html_(self) -> str:
        return f"<p>{escape(repr(self)[1:-1])}</p>" + table(self.findings)


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
