"""What a model has, as sequences."""

from __future__ import annotations

from operator import index as whole
from typing import Any, Callable, Generic, Iterator, Sequence, SupportsIndex, Type, Union, overload

from ._data import Block, Entries, T, counted, load, table
from ._errors import Error, NotFound
from ._selection import is_whole, utf8


class Listing(Sequence[T], Generic[T]):
    """A model's blocks, ports, signals or clients as they are whenever one looks. Numbers count from 0, as in every
    sequence; a text finds a block by path, a port by reference, a signal or client by UUID or by the reference of what
    it is on, when it is alone there. `in` asks for the same, and also when there are several."""

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
    def __getitem__(self, index: Union[SupportsIndex, str]) -> T: ...
    @overload
    def __getitem__(self, index: slice) -> Entries[T]: ...

    def __getitem__(self, index: Union[SupportsIndex, str, slice]) -> Union[T, Entries[T]]:
        if isinstance(index, slice):
            return self._all()[index]
        if isinstance(index, str):
            found = self._found(index)
            if not isinstance(found, int):
                return found
            index = found
        if not is_whole(index):
            raise TypeError(f"{self._what}s[{index!r}]: give a number from 0, a slice as in [:10], or a text as in "
                            f"[{self._example()!r}]")
        count, position = len(self), whole(index)
        if not -count <= position < count:
            raise IndexError(f"there is no {self._what} {position}; there are {count}")
        position %= count
        return load(self._load_slice(position, position + 1))[0]

    def _found(self, text: str) -> Union[int, T]:
        try:
            return self._find(utf8(f"{self._what}s", text))
        except Error as error:
            if error.code != "noMatch":
                raise
            raise NotFound(error.text, error.code, remedy=error.remedy) from None

    def _example(self) -> str:
        return "Sensors/Speed" if self._kind is Block else "Sensors/Speed:1"

    def __contains__(self, one: object) -> bool:
        if not isinstance(one, str):
            return one in self._all()
        if not len(self):
            return False
        try:
            self._found(one)
        except NotFound:
            return False
        except Error:
            return True  # of which there are several
        return True

    def __iter__(self) -> Iterator[T]:
        return iter(self._all())

    def _all(self) -> Entries[T]:
        return Entries(load(self._load_slice(0, len(self))), self._kind)

    def __repr__(self) -> str:
        first = ", ".join(map(repr, load(self._load_slice(0, min(3, len(self))))))
        return f"<{counted(len(self), self._what)}: {first}{', ...' if len(self) > 3 else ''}>"

    def _repr_html_(self) -> str:
        return table(self._all())

    def to_frame(self) -> Any:
        """A pandas frame with a row each; signals and clients are told by UUID and position."""
        return self._all().to_frame()
