"""What is meant: references, patterns, UUIDs and positions, as they go to the compiled part."""

from __future__ import annotations

import os
from typing import Any, Dict, Iterable, List, Optional, Union

from ._data import Client, Entry, Signal
from ._errors import Error

Path = Union[str, "os.PathLike[str]"]
Referable = Union[str, Entry]
Texts = Union[str, Iterable[str]]
Calls = Union[str, int, Entry, Iterable[Union[str, int, Entry]]]


def texts(given: Texts) -> List[str]:
    if isinstance(given, str):
        return [given]
    if not isinstance(given, Iterable):
        raise TypeError(f"{given!r} is neither a text nor a list of texts")
    return [str(one) for one in given]


def references_of(given: Iterable[Union[Referable, Iterable[Referable]]]) -> List[str]:
    references: List[str] = []
    for one in given:
        if isinstance(one, str):
            references.append(one)
        elif isinstance(getattr(type(one), "reference", None), property):
            references.append(one.reference)  # type: ignore[attr-defined]
        elif isinstance(one, Iterable) and not isinstance(one, Entry):
            references += references_of(one)
        else:
            raise TypeError(f"{one!r} is not a text, block, port, chart item or signal, nor a list of these")
    return references


def reference_of(given: Referable) -> str:
    return references_of([given])[0]


def calls_of(given: Calls) -> List[str]:
    """UUIDs and positions, also of signals and clients of this module."""
    if isinstance(given, (str, int)):
        return [str(given)]
    if isinstance(given, (Signal, Client)):
        return [given.uuid]
    if isinstance(given, Entry):
        raise TypeError(f"{given!r} is not a signal or client")
    if not isinstance(given, Iterable):
        raise TypeError(f"{given!r} is not a UUID, position, signal or client, nor a list of these")
    return [call for one in given for call in calls_of(one)]


def selection_of(references: Iterable[Any], all: Texts, except_: Texts, kinds: Texts, below: str,
               activity: Optional[str], ssid: Optional[int], others: bool = False) -> Dict[str, Any]:
    selection: Dict[str, Any] = {"references": references_of(references), "all": texts(all),
                                 "except": texts(except_), "kinds": texts(kinds), "below": below,
                                 "activity": activity, "ssid": ssid}
    if not others and not any(selection[name] for name in ("references", "all", "except", "kinds", "below")):
        raise Error("nothing to work on; name a port, or give all=\"*\" or below=")
    return selection


def given(**settings: Any) -> Dict[str, Any]:
    return {name: value for name, value in settings.items() if value is not None}
