"""Values of the host that Python has no class for."""

from __future__ import annotations

from html import escape
from typing import TYPE_CHECKING, Any, Dict, Iterable, Iterator, List, Optional, Sequence, Tuple, Union

import numpy as np

from . import _native
from ._data import Entry, load, table

if TYPE_CHECKING:
    from numpy.typing import NDArray


class StructArray(Sequence[Entry]):
    """A struct array of the host: elements with the same `fields`, in the host's order (first dimension fastest).

    `records()` gives a dictionary for each element, `columns()` a list for each field, numbers as numpy arrays, also
    where there is one element. Of that one, fields are attributes: struct.name. Made of records, it is N x 1.
    """

    def __init__(self, records: Iterable[Dict[str, Any]], fields: Optional[Sequence[str]] = None,
                 shape: Optional[Sequence[int]] = None) -> None:
        self._records = [Entry(record) for record in records]
        names = dict.fromkeys(name for record in self._records for name in record)
        self.fields: List[str] = list(names) if fields is None else list(fields)
        self.shape: Tuple[int, ...] = (len(self._records), 1) if shape is None else tuple(shape)
        if int(np.prod(self.shape)) != len(self._records):
            raise ValueError(f"{len(self._records)} records do not make a struct array of {self.shape}")
        for number, record in enumerate(self._records):
            if set(record) != set(self.fields):
                raise ValueError(f"record {number} has the fields {', '.join(record)}, not {', '.join(self.fields)}")

    def records(self) -> List[Entry]:
        return list(self._records)

    def columns(self) -> Dict[str, Union[NDArray[Any], List[Any]]]:
        return {name: _column([record[name] for record in self._records]) for name in self.fields}

    def to_frame(self) -> Any:
        """A pandas frame with a row for each element."""
        import pandas
        return pandas.DataFrame(self.columns(), columns=self.fields)

    def __len__(self) -> int:
        return len(self._records)

    def __getitem__(self, index: Any) -> Any:
        if isinstance(index, str):
            return self._only()[index]
        return self._records[index]

    def __iter__(self) -> Iterator[Entry]:
        return iter(self._records)

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_") or name not in self.fields:
            raise AttributeError(f"the struct has no field {name!r}; it has: {', '.join(self.__dict__['fields'])}")
        return self._only()[name]

    def __dir__(self) -> List[str]:
        return [*super().__dir__(), *self.fields]

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, StructArray):
            return NotImplemented
        return (self.fields, self.shape) == (other.fields, other.shape) and all(
            _is_same(one[name], two[name]) for one, two in zip(self, other) for name in self.fields)

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        if len(self) == 1:
            return f"StructArray([{dict(self._records[0])!r}])"
        return f"<StructArray {'x'.join(map(str, self.shape))}: {', '.join(self.fields)}>"

    def _repr_html_(self) -> str:
        return table([{name: value if isinstance(value, (str, int, float)) else repr(value)
                       for name, value in record.items()} for record in self._records])

    def _only(self) -> Entry:
        if len(self) != 1:
            raise AttributeError(f"the struct array has {len(self)} elements; take one, or columns()")
        return self._records[0]


def _column(values: List[Any]) -> Union[NDArray[Any], List[Any]]:
    if values and all(isinstance(value, (bool, float, np.generic)) for value in values):
        if len({np.asarray(value).dtype for value in values}) == 1:
            return np.array(values)
    return values


def _is_same(one: Any, other: Any) -> bool:
    if isinstance(one, np.ndarray) or isinstance(other, np.ndarray):
        return bool(np.array_equal(one, other))
    return bool(one == other)


def _cells(cells: List[Any], shape: Sequence[int]) -> NDArray[Any]:
    """A cell array that is no vector."""
    array = np.empty(len(cells), dtype=object)
    for number, cell in enumerate(cells):
        array[number] = cell
    return array.reshape(shape, order="F")


class Object:
    """An object of the host. Its properties are attributes, its methods are called: `signals.getUUID(1)`;
    `outputs=` says how many results a method is to give. What there is, `dir(object)` and `host.describe(object)`
    tell."""

    def __init__(self, held: _native.HeldValue) -> None:
        object.__setattr__(self, "_held", held)

    @property
    def _description(self) -> Entry:
        return load(_native.describeClass(self._held.className)) or Entry(properties=[], methods=[])

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        description = self._description
        if any(one["name"] == name for one in description["properties"]):
            return self._held.get(name)
        for method in description["methods"]:
            if method["name"] == name:
                return Method(self, method)
        raise AttributeError(f"{self._held.className} has no {name!r}; it has: {', '.join(self._names())}")

    def __setattr__(self, name: str, value: Any) -> None:
        self._held.set(name, value)

    def __dir__(self) -> List[str]:
        return [*super().__dir__(), *self._names()]

    def _names(self) -> List[str]:
        description = self._description
        return [one["name"] for one in [*description["properties"], *description["methods"]]]

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Object) and self._held.isSame(other._held)

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        return f"<{_native.HeldValue.display(self._held)}>"

    def _repr_html_(self) -> str:
        return f"<pre>{escape(self._held.display())}</pre>"


class Method:
    """A method of an object, to be called."""

    def __init__(self, owner: Object, description: Entry) -> None:
        self._owner = owner
        self._description = description
        self.__doc__ = described(description)

    def __call__(self, *arguments: Any, outputs: Optional[int] = None) -> Any:
        wanted = self._wanted() if outputs is None else outputs
        if self._description["static"]:
            return _native.callMember(f"{self._owner._held.className}.{self._description['name']}", arguments, wanted)
        return _native.callMember(self._description["name"], (self._owner, *arguments), wanted)

    def _wanted(self) -> int:
        return min(len(self._description["outputs"]), 1) if self._description["declared"] else 1

    def __repr__(self) -> str:
        return f"<method {described(self._description)}>"


def described(call: Dict[str, Any]) -> str:
    """ "add(set any, signal any) -> logical scalar: Adds a signal." """
    inputs = ", ".join(" ".join(filter(None, (one["name"], one["type"]))) for one in call["inputs"])
    outputs = ", ".join(" ".join(filter(None, (one["name"], one["type"]))) for one in call["outputs"])
    text = f"{call['name']}({inputs})" + (f" -> {outputs}" if outputs else "")
    return f"{text}: {call['sentence']}" if call["sentence"] else text
