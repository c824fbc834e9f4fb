"""What functions of this module are given, looked at before it goes to the compiled part."""

from __future__ import annotations

import inspect
import os
from functools import wraps
from numbers import Real
from operator import index
from typing import Any, Callable, Dict, List, Mapping, NoReturn, Tuple, TypeVar, cast

from ._errors import Error
from ._selection import is_reference, is_whole, utf8

Function = TypeVar("Function", bound=Callable[..., Any])

# What goes to the compiled part as it is; other numbers have their limits there.
_LIMITS: Dict[str, Tuple[int, int]] = {"ssid": (0, 2**32 - 1), "at": (1, 2**31 - 1), "number": (1, 2**31 - 1),
                                       "outputs": (0, 2**31 - 1), "numbers": (0, 2**31 - 1)}
_EXAMPLES = {"type": '"ks_scope_observer"', "below": '"Plant"', "activity": '"Child"', "decimation": "10",
             "until": "10.0", "step": "0.01", "timeout": "30.0", "values": '{"gain": 2.5}', "params": '{"max": 180}',
             "progress": "print", "log": "print", "ssid": "7", "match": '"path"', "numbers": "[2, 1]"}


def _refuse(name: str, value: object, wanted: str, example: str = "") -> NoReturn:
    example = _EXAMPLES.get(name, example)
    raise TypeError(f"{name}= is {value!r}; give {wanted}" + (f", as in {name}={example}" if example else ""))


def _text(name: str, value: Any) -> str:
    return utf8(name, value) if isinstance(value, str) else _refuse(name, value, "a text", '"speed"')


def _truth(name: str, value: Any) -> bool:
    is_truth = isinstance(value, bool) or type(value).__name__ in ("bool_", "bool")  # numpy's
    return bool(value) if is_truth else _refuse(name, value, "True or False")


def _whole(name: str, value: Any) -> int:
    if not is_whole(value):
        _refuse(name, value, "a whole number", "1")
    number = index(value)
    least, most = _LIMITS.get(name, (number, number))
    if not least <= number <= most:
        raise Error(f"{name}= is {number}; give a whole number from {least} to {most}")
    return number


def _number(name: str, value: Any) -> float:
    is_number = isinstance(value, Real) and not isinstance(value, bool)
    return float(value) if is_number else _refuse(name, value, "a number", "1.5")


def _path(name: str, value: Any) -> Any:
    is_path = isinstance(value, (str, os.PathLike))
    if is_path and isinstance(os.fspath(value), str):
        utf8(name, os.fspath(value))
    return value if is_path else _refuse(name, value, "a path", '"cruise.json"')


def _wholes(name: str, value: Any) -> List[int]:
    if isinstance(value, (str, bytes)) or not hasattr(value, "__iter__"):
        _refuse(name, value, "whole numbers")
    numbers = list(value)
    if not all(map(is_whole, numbers)):
        _refuse(name, numbers, "whole numbers")
    return [_whole(name, one) for one in numbers]


def _port(name: str, value: Any) -> Any:
    is_port = isinstance(value, str) or is_whole(value)
    if isinstance(value, str):
        utf8(name, value)
    return value if is_port else _refuse(name, value, "a port's number or name", '"speed"')


def _one_thing(name: str, value: Any) -> Any:
    is_one = isinstance(value, str) or is_reference(value) or (isinstance(value, (list, tuple)) and len(value) == 1)
    return value if is_one else _refuse(name, value, "a text, block, port or chart item", '"Plant/Engine"')


def _message_arguments(name: str, value: Any) -> Tuple[Any, ...]:
    if isinstance(value, (str, bytes)) or not hasattr(value, "__iter__"):
        _refuse(name, value, "texts and whole numbers", '(90, "C")')
    return tuple(utf8(name, one) if isinstance(one, str) else one for one in value)


def _named(name: str, value: Any) -> Mapping[str, Any]:
    is_named = isinstance(value, Mapping) and all(isinstance(one, str) for one in value)
    return cast(Mapping[str, Any], value) if is_named else _refuse(name, value, "a dictionary with names")


def _call(name: str, value: Any) -> Any:
    return value if callable(value) else _refuse(name, value, "a function")


_CHECKS: Dict[str, Callable[[str, Any], Any]] = {
    "str": _text, "bool": _truth, "int": _whole, "float": _number, "Path": _path, "Iterable[int]": _wholes,
    "Union[int, str]": _port, "Referable": _one_thing, "Sequence": _message_arguments, "Mapping": _named,
    "Callable": _call}


def _check_of(annotation: str) -> Tuple[Any, bool]:
    """What looks at such an argument, and whether it may be None."""
    is_optional = annotation.startswith("Optional[")
    kind = annotation[len("Optional["):-1] if is_optional else annotation
    return _CHECKS.get(kind) or _CHECKS.get(kind.split("[")[0]), is_optional


def checked(function: Function) -> Function:
    """Has arguments be what their types say: a TypeError names the one that is not, what it is, and what to give."""
    signature = inspect.signature(function)
    checks = {name: _check_of(str(one.annotation)) for name, one in signature.parameters.items()
              if one.kind is not one.VAR_POSITIONAL}

    @wraps(function)
    def call(*arguments: Any, **named: Any) -> Any:
        try:
            bound = signature.bind(*arguments, **named)
        except TypeError:
            return function(*arguments, **named)  # says it in Python's words
        for name, value in bound.arguments.items():
            check, is_optional = checks.get(name, (None, True))
            if check and not (is_optional and value is None):
                bound.arguments[name] = check(name, value)
        return function(*bound.args, **bound.kwargs)
    return cast(Function, call)
