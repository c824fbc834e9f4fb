"""What is told of models: data with the names of the tool's JSON."""

from __future__ import annotations

import json
from html import escape
from typing import (Any, Callable, ClassVar, Dict, Generic, Iterator, List, Sequence, Type, TypeVar, Union,
                    overload)


class Entry(Dict[str, Any]):
    """A dictionary whose members are attributes, too: entry.port is entry["port"]."""

    def __getattr__(self, name: str) -> Any:
        try:
            return self[name]
        except KeyError:
            raise AttributeError(f"{type(self).__name__} has no {name!r}; it has: {', '.join(self)}") from None

    def __dir__(self) -> List[str]:
        return [*super().__dir__(), *self]

    # Of a pandas frame with a row for each such entry; what else an entry has comes behind.
    _columns: ClassVar[Sequence[str]] = ()

    def _row(self) -> Dict[str, Any]:
        return dict(self)

    def _repr_html_(self) -> str:
        return table([self])


def reference(place: Dict[str, Any]) -> str:
    """What a port or chart item is called in selections."""
    if "port" in place:
        return f"{place['block']}:{place['port']}"
    return f"{place['block']}/{place['item']}" if place.get("item") else place["block"]


class Place(Entry):
    """An output port, or a chart with its states and data; `observed` tells whether a signal is on it."""

    _columns = ("block", "port", "portName", "observed")

    @property
    def reference(self) -> str:
        return reference(self)

    def __repr__(self) -> str:
        name = f" {self['portName']!r}" if "portName" in self else ""
        return f"<{self.reference}{name}{', observed' if self['observed'] else ''}>"


class Block(Entry):
    """A block with its `outputs`, and what its `chart` has if it is one."""

    _columns = ("block", "eid", "outputs", "chart", "observed")

    @property
    def path(self) -> str:
        return self["block"]

    def _row(self) -> Dict[str, Any]:
        items = [item["item"] for item in self["chart"]] if "chart" in self else None
        return {"block": self["block"], "eid": self["eid"], "outputs": [port["portName"] for port in self["outputs"]],
                "chart": items, "observed": self._observed()}

    def _observed(self) -> int:
        return sum(place["observed"] for place in [*self["outputs"], *self.get("chart", [])])

    @property
    def reference(self) -> str:
        return self["block"]

    def __repr__(self) -> str:
        return f"<Block {self['block']}: {counted(len(self['outputs']), 'output')}, {self._observed()} observed>"

    def _repr_html_(self) -> str:
        return f"<p>{escape(self['block'])}</p>" + table([*self["outputs"], *self.get("chart", [])])


class Signal(Entry):
    """A mark on a port or chart item, and its settings."""

    _columns = ("signal", "position", "block", "port", "portName", "item", "domain", "ssid", "activity", "name",
                "decimation", "maxPoints", "frameBased", "hidden", "buffered", "visualType", "excludedFromSave")

    def _row(self) -> Dict[str, Any]:
        return {**self, "signal": self.uuid, "position": self.position}

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

    _columns = ("client", "position", "type", "signal", "state", "deprecated", "sourceModel", "updateRate", "channel",
                "imaginary", "busLeaf", "params")

    def _row(self) -> Dict[str, Any]:
        return {**self, "client": self.uuid, "position": self.position, "signal": self["signal"]["uuid"]}

    @property
    def uuid(self) -> str:
        return self["client"]["uuid"]

    @property
    def position(self) -> int:
        """From 1."""
        return self["client"]["position"]

    def __repr__(self) -> str:
        signal = self["signal"]["position"]
        return f"<Client {self.position} {self['type']} of {f'signal {signal}' if signal else 'no signal here'}, " \
               f"{self['state']}>"


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
    """A model's blocks, ports, signals or clients as they are whenever one looks. Numbers count from 0, as in every
    sequence; a text finds a block by path, a port by reference, a signal or client by UUID."""

    def __init__(self, kind: Type[T], count: Callable[[], int], load_slice: Callable[[int, int], str],
                 find: Callable[[str], Union[int, T]], what: str = "") -> None:
        self._kind = kind
        self._what = what or kind.__name__.lower()
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
        """A pandas frame with a row each; signals and clients are told by UUID and position."""
        import pandas
        rows = [one._row() for one in self._all()]
        others = dict.fromkeys(name for row in rows for name in row if name not in (*self._kind._columns, "kind"))
        frame = pandas.DataFrame(rows, columns=[*self._kind._columns, *others])
        numbers = {name: "Int64" for name in ("port", "ssid") if name in frame}
        return frame.astype(numbers)
