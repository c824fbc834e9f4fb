"""The host: calling it by name, what there is to call, and functions of it that are written in Python.

>>> from ks_hmi import host
>>> host.classes()
['Kestrel.HMI.InstrumentedSignals', ...]
>>> signals = host.new("Kestrel.HMI.InstrumentedSignals")
>>> host.call("isequal", {"a": 1}, {"a": 1})
True

Values: numbers are float, larger arrays numpy's, texts str, structs `StructArray`, objects `Object`; ints are given as
doubles, and refused where no double holds them.
"""

from __future__ import annotations

from typing import Any, Callable, List, Optional, Sequence, Union

from . import _native
from ._arguments import checked
from ._data import Entry, load
from ._errors import Error, HostError, HostWarning
from ._selection import utf8
from ._values import Method, Object, StructArray, described

__all__ = ["Class", "Function", "HostError", "HostWarning", "Method", "Namespace", "Object", "StructArray", "call",
           "classes", "describe", "function", "functions", "namespaces", "new", "warn"]


@checked
def call(name: str, *arguments: Any, outputs: int = 1) -> Any:
    """Calls a host function, a constructor or a static method by its name; with more than one of the `outputs` they
    come as a tuple. What the host does not give is None."""
    return _native.callByName(name, arguments, outputs)


@checked
def new(class_name: str, *arguments: Any) -> Object:
    """An object of that class, by its full name."""
    if class_name not in classes():
        raise Error(f"there is no class {class_name!r}; there are: {', '.join(classes())}")
    return _native.callMember(class_name, arguments, 1)


def namespaces() -> List[str]:
    return _native.namespaceNames()


def classes() -> List[str]:
    return _native.classNames()


def functions() -> List[str]:
    return _native.functionNames()


def describe(name: Union[str, Object]) -> Entry:
    """What the host says of a class, by name or of an object, or of a function: properties, methods, inputs, outputs, a
    sentence for each."""
    if isinstance(name, Object):
        name = name._held.className
    if isinstance(name, str):
        utf8("name", name)
    else:
        raise TypeError(f"name= is {name!r}; give the name of a class or function, or an object")
    for description in (_native.describeClass(name), _native.describeFunction(name)):
        if description != "null":
            return load(description)
    raise Error(f"there is no class or function {name!r}")


class Function:
    """A function of the host that is written in Python, until `end()` or the end of a `with`; then the name means again
    what it meant before."""

    def __init__(self, name: str, function: Callable[..., Any], outputs: Optional[int]) -> None:
        self.name = name
        self.function = function
        self._held = _native.registerFunction(name, function, outputs)

    def end(self) -> None:
        self._held.end()

    def __call__(self, *arguments: Any, **named: Any) -> Any:
        return self.function(*arguments, **named)

    def __enter__(self) -> "Function":
        return self

    def __exit__(self, *exception: object) -> None:
        self.end()

    def __repr__(self) -> str:
        return f"<host function {self.name!r} in Python: {self.function!r}>"


@checked
def function(name: str, outputs: Optional[int] = None) -> Callable[[Callable[..., Any]], Function]:
    """Makes a Python function one of the host, in front of whatever has that name; the function gets the inputs, and
    returns its output, or a tuple of them, of which a caller gets as many as it asks for. With `outputs=1` a tuple is a
    value as any other, a cell array. What it raises is a failure of the call. For use as a decorator:

    >>> @host.function("twice", outputs=1)
    ... def twice(number):
    ...     return 2 * number
    """
    return lambda made: Function(name, made, outputs)


@checked
def warn(text: str, identifier: str = "python:warning", arguments: Sequence[Union[int, str]] = ()) -> None:
    """Has the host warn, as its own functions do."""
    catalogue, _, key = identifier.rpartition(":")
    _native.warn(catalogue or "python", key, text, tuple(arguments))


class Namespace:
    """What has names below this one: host.Kestrel.HMI.InstrumentedSignals is a class."""

    def __init__(self, name: str) -> None:
        self._name = name

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        return _found(f"{self._name}.{name}")

    def __dir__(self) -> List[str]:
        start = self._name + "."
        return sorted({one[len(start):].split(".")[0] for one in _names() if one.startswith(start)})

    def __repr__(self) -> str:
        return f"<host namespace {self._name}: {', '.join(dir(self))}>"


class Class:
    """A class of the host; called, it makes an object. Static methods are attributes."""

    def __init__(self, name: str) -> None:
        self._name = name
        self.__doc__ = self.description["sentence"]

    @property
    def description(self) -> Entry:
        return describe(self._name)

    def __call__(self, *arguments: Any) -> Object:
        return new(self._name, *arguments)

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        if name not in dir(self):
            raise AttributeError(f"{self._name} has no static method {name!r}")
        return lambda *arguments, outputs=1: _native.callMember(f"{self._name}.{name}", arguments, outputs)

    def __dir__(self) -> List[str]:
        return [one["name"] for one in self.description["methods"] if one["static"]]

    def __repr__(self) -> str:
        return f"<host class {self._name}: {described(self.description['constructor'])}>"


def _names() -> List[str]:
    return [*_native.namespaceNames(), *_native.classNames()]


def _found(name: str) -> Any:
    if name in _native.classNames():
        return Class(name)
    if any((one + ".").startswith(name + ".") for one in _names()):
        return Namespace(name)
    raise AttributeError(f"the host has neither a namespace nor a class {name!r}")


def __getattr__(name: str) -> Any:
    if name.startswith("_"):
        raise AttributeError(name)
    return _found(name)


def __dir__() -> List[str]:
    return sorted({*__all__, *(name.split(".")[0] for name in _names())})
