"""What is told of models: data with the names of the tool's JSON."""

from __future__ import annotations

import json
import shlex
from html import escape
from typing import Any, ClassVar, Dict, List, Optional, Sequence, Set, SupportsIndex, Type, TypeVar, Union, overload


class Entry(Dict[str, Any]):
    """A dictionary whose members are attributes, too: entry.port is entry["port"]."""

    def __getattr__(self, name: str) -> Any:
        try:
            return self[name]
        except KeyError:
            if name in self._optional:
                return None
            raise AttributeError(f"{type(self).__name__} has no {name!r}; it has: {', '.join(self)}") from None

    def __dir__(self) -> List[str]:
        return [*super().__dir__(), *self]

    # Of a pandas frame with a row for each such entry; what else an entry has comes behind.
    _columns: ClassVar[Sequence[str]] = ()
    # Attributes that are None where the JSON has no such member.
    _optional: ClassVar[Sequence[str]] = ()

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
    _optional = ("port", "portName", "item", "domain", "ssid", "activity", "observed")

    @property
    def reference(self) -> str:
        return reference(self)

    def __repr__(self) -> str:
        name = f" {self['portName']!r}" if "portName" in self else ""
        return f"<{self.reference}{name}{', observed' if self.observed else ''}>"


class Block(Entry):
    """A block with its `outputs`, and what its `chart` has; None if it is none."""

    _columns = ("block", "eid", "outputs", "chart", "observed")
    _optional = ("chart",)

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
    _optional = ("port", "portName", "item", "domain", "ssid", "activity")

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


class Finding(Entry):
    """What `check` finds. `remedy` is the tool's command; `call` is the same in Python."""

    _columns = ("code", "name", "level", "kind", "line", "pointer", "text", "remedy")
    _optional = ("line", "pointer", "signal", "client")

    @property
    def call(self) -> str:
        words = shlex.split(self["remedy"]) if self["remedy"].startswith("kshmi ") else []
        if len(words) == 5 and words[3] in ("--mend", "--kinds"):
            return f"ks_hmi.{words[1]}({words[2]!r}, {words[3][2:]}={words[4]!r})"
        if words and words[-1] == "--confirm":
            meant = "all='*'" if words[3] == "--all" else repr(words[3])
            return f"ks_hmi.open({words[2]!r}).set({meant}, confirm=True), then save()"
        return str(self["remedy"])


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
    if "block" in member and ("observed" in member or member.get("kind") in ("signal", "port", "item")):
        return Place(member)
    return Finding(member) if "remedy" in member and "level" in member else with_entries(Entry(member))


EntryT = TypeVar("EntryT", bound=Entry)


def with_entries(entry: EntryT) -> EntryT:
    """Its lists can make frames, too."""
    for name, value in entry.items():
        if isinstance(value, list) and (not value or isinstance(value[0], Entry)):
            entry[name] = Entries(value)
    return entry


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


class Entries(List[T]):
    """A list of blocks, ports, signals, clients or findings that shows as a table and makes a frame; so do slices."""

    def __init__(self, entries: Sequence[T] = (), kind: Optional[Type[T]] = None) -> None:
        super().__init__(entries)
        self._kind = kind

    @overload
    def __getitem__(self, index: SupportsIndex) -> T: ...
    @overload
    def __getitem__(self, index: slice) -> "Entries[T]": ...

    def __getitem__(self, index: Union[SupportsIndex, slice]) -> Union[T, "Entries[T]"]:
        return Entries(super().__getitem__(index), self._kind) if isinstance(index, slice) else super().__getitem__(
            index)

    def _repr_html_(self) -> str:
        return table(self)

    def to_frame(self) -> Any:
        """A pandas frame with a row each; signals and clients are told by UUID and position."""
        import pandas
        kinds: Set[Type[Entry]] = {type(one) for one in self} or {self._kind or Entry}
        columns = [*kinds.pop()._columns] if len(kinds) == 1 else []
        rows = [one._row() for one in self]
        known = (*columns, "kind") if columns else ()
        others = dict.fromkeys(name for row in rows for name in row if name not in known)
        frame = pandas.DataFrame(rows, columns=[*columns, *others])
        return frame.astype({name: "Int64" for name in ("port", "ssid", "line") if name in frame})
