"""What is meant: references, patterns, UUIDs and positions, as they go to the compiled part."""

from __future__ import annotations

import os
from operator import index
from typing import Any, Dict, Iterable, List, Optional, Union

from ._data import Client, Entry, Signal
from ._errors import Error

Path = Union[str, "os.PathLike[str]"]
Referable = Union[str, Entry]
Texts = Union[str, Iterable[str]]
Calls = Union[str, int, Entry, Iterable[Union[str, int, Entry]]]


def is_whole(given: Any) -> bool:
    """Also numpy's numbers, but no truth, and no array."""
    return hasattr(given, "__index__") and not isinstance(given, bool) and not getattr(given, "ndim", 0)


def utf8(name: str, text: str) -> str:
    """A text of whole characters."""
    if not text.isascii():
        try:
            text.encode()
        except UnicodeEncodeError:
            raise Error(f"{name}= has {text!r}, in which half of a surrogate pair stands alone; give whole "
                        "characters") from None
    return text


def path_of(given: Optional[Path]) -> Optional[str]:
    return None if given is None else os.fspath(given)


def is_reference(given: object) -> bool:
    """Blocks, ports, chart items and signals know how they are called."""
    return isinstance(getattr(type(given), "reference", None), property)


def texts(given: Texts, name: str) -> List[str]:
    if isinstance(given, str):
        return [utf8(name, given)]
    if not isinstance(given, Iterable):
        raise TypeError(f"{name}= is {given!r}; give a text or a list of texts, as in {name}=[\"a\", \"b\"]")
    given = list(given)
    for one in given:
        if not isinstance(one, str):
            raise TypeError(f"{name}= has {one!r}; give texts, as in {name}=[\"a\", \"b\"]")
    return [utf8(name, one) for one in given]


def references_of(given: Iterable[Union[Referable, Iterable[Referable]]]) -> List[str]:
    references: List[str] = []
    for one in given:
        if isinstance(one, str):
            references.append(utf8("references", one))
        elif is_reference(one):
            references.append(one.reference)  # type: ignore[attr-defined]
        elif isinstance(one, Iterable) and not isinstance(one, (Entry, bytes)):
            references += references_of(one)
        else:
            raise TypeError(f"{one!r} is not a text, block, port, chart item or signal, nor a list of these; a "
                            "reference is like \"Sensors/Speed:valid\"")
    return references


def reference_of(given: Referable) -> str:
    references = references_of([given])
    if len(references) != 1:
        raise TypeError(f"{given!r} is not one thing but {len(references)}; give one after the other")
    return references[0]


def calls_of(given: Calls, name: str) -> List[str]:
    """UUIDs and positions, also of signals and clients of this module."""
    if isinstance(given, str):
        return [utf8(name, given)]
    if is_whole(given):
        return [str(index(given))]  # type: ignore[arg-type]
    if isinstance(given, (Signal, Client)):
        return [given.uuid]
    if isinstance(given, (bool, Entry)) or not isinstance(given, Iterable):
        raise TypeError(f"{name}= has {given!r}, which is not a UUID, position, signal or client; give it like "
                        f"{name}=[1, 2]")
    return [call for one in given for call in calls_of(one, name)]


def selection_of(references: Iterable[Any], all: Texts, except_: Texts, kinds: Texts, below: str,
               activity: Optional[str], ssid: Optional[int], others: bool = False) -> Dict[str, Any]:
    selection: Dict[str, Any] = {"references": references_of(references), "all": texts(all, "all"),
                                 "except": texts(except_, "except_"), "kinds": texts(kinds, "kinds"), "below": below,
                                 "activity": activity, "ssid": ssid}
    if not others and not any(selection[name] for name in ("references", "all", "except", "kinds", "below")):
        raise Error("nothing to work on; name a port, or give all=\"*\" or below=")
    return selection


def given(**settings: Any) -> Dict[str, Any]:
    return {name: value for name, value in settings.items() if value is not None}
