"""What goes wrong, and what the host warns of."""

from __future__ import annotations

import sys as _sys
import warnings as _warnings
from typing import Optional, Tuple, Union


class Error(Exception):
    """What cannot be done, and why.

    code      "request", "noMatch", "format", "model", "file", "inUse" or "host"
    text      what is wrong, one line
    file      the file that it is about, or ""
    line      where in the file, from 1, or None; column likewise
    pointer   JSON pointer into the file, or ""
    remedy    what can be done about it, or ""
    """

    def __init__(self, text: str, code: str = "request", file: str = "", line: Optional[int] = None,
                 column: Optional[int] = None, pointer: str = "", remedy: str = "") -> None:
        self.text = text
        self.code = code
        self.file = file
        self.line = line
        self.column = column
        self.pointer = pointer
        self.remedy = remedy
        super().__init__(text, code, file, line, column, pointer, remedy)

    def __str__(self) -> str:
        place = self.file
        for number in (self.line, self.column):
            if number is not None:
                place += f":{number}" if place else str(number)
        parts = [part for part in (place, self.pointer, self.text) if part]
        return ": ".join(parts) + (f" ({self.remedy})" if self.remedy else "")


class NotFound(Error, KeyError):
    """What a sequence, or a run, has not under that name; a KeyError, too."""


class HostError(Error):
    """A failure of the host: `identifier` ("catalogue:key") and `arguments` tell which one."""

    def __init__(self, text: str, catalogue: str = "", key: str = "",
                 arguments: Tuple[Union[int, str], ...] = ()) -> None:
        super().__init__(text, "host")
        self.catalogue = catalogue
        self.key = key
        self.arguments = arguments
        self.args = (text, catalogue, key, arguments)

    @property
    def identifier(self) -> str:
        return f"{self.catalogue}:{self.key}" if self.catalogue else self.key


class ModelWarning(UserWarning):
    """What is not as it was asked for, and no error."""


class HostWarning(UserWarning):
    """What the host warns of; `identifier` ("catalogue:key") and `arguments` tell which warning it is."""

    def __init__(self, text: str, identifier: str = "", arguments: Tuple[Union[int, str], ...] = ()) -> None:
        super().__init__(text)
        self.identifier = identifier
        self.arguments = arguments


def _warn(catalogue: str, key: str, text: str, arguments: Tuple[Union[int, str], ...]) -> None:
    warning = HostWarning(text, f"{catalogue}:{key}", arguments) if catalogue else ModelWarning(text)
    level, frame = 1, _sys._getframe()
    while frame.f_back and frame.f_globals.get("__package__") == __package__:  # it is about the line that calls us
        level, frame = level + 1, frame.f_back
    _warnings.warn(warning, stacklevel=level)
