"""Models that are open."""

from __future__ import annotations

import json
import os
from typing import Any, Callable, Iterable, Mapping, Optional, Union

import numpy as np

from . import _native
from ._arguments import checked
from ._data import Block, Client, Entry, Place, Signal, counted, load
from ._errors import Error
from ._listing import Listing
from ._reports import ChangeReport, CheckReport, ImportReport, QueryReport, RecordReport
from ._runs import Run
from ._selection import Calls, Path, Referable, Texts, calls_of, given, path_of, selection_of, texts
from ._structure import Structure
from ._values import Object


class Model(Structure):
    """A model file that is open. Made by `open`, `new` and `import_model`; changes are in the file once it is saved.

    What is meant is said the same everywhere, as in the tool: references ("Sensors/Speed:1", "Sensors/Speed:valid",
    "Control/Mode/Engaged"; blocks, ports and signals of this module do as well), `all` patterns, less `except_`
    patterns, only some `kinds` ("port", "chart", "state", "datum"), only at and `below` a path; of charts an `activity`
    ("Self", "Child", "Leaf", "Data") or an `ssid`. Signals and clients can be meant by UUID or position from 1.
    """

    def __init__(self, held: _native.Model) -> None:
        self._held = held

    # ---- what there is

    @property
    def name(self) -> str:
        return _native.name(self._held)

    @property
    def path(self) -> str:
        """Of the file."""
        return _native.path(self._held)

    @property
    def origin(self) -> Optional[Entry]:
        """Where the model was imported from."""
        return load(_native.origin(self._held))

    @property
    def import_report(self) -> Optional[ImportReport]:
        """What the import that made this model has taken and left out; None of a model that was opened."""
        text = _native.importReport(self._held)
        return ImportReport(text) if text else None

    @property
    def blocks(self) -> Listing[Block]:
        held = self._held
        return Listing(Block, lambda: _native.blockCount(held), lambda a, b: _native.blocks(held, a, b),
                       lambda path: load(_native.blockCalled(held, path)))

    @property
    def ports(self) -> Listing[Place]:
        """The output ports of all blocks, block after block."""
        held = self._held
        return Listing(Place, lambda: _native.portCount(held), lambda a, b: _native.ports(held, a, b),
                       lambda reference: load(_native.portCalled(held, reference)), "port")

    @property
    def signals(self) -> Listing[Signal]:
        held = self._held
        return Listing(Signal, lambda: _native.signalCount(held), lambda a, b: _native.signals(held, a, b),
                       lambda call: _native.signalNumber(held, call))

    @property
    def clients(self) -> Listing[Client]:
        held = self._held
        return Listing(Client, lambda: _native.clientCount(held), lambda a, b: _native.clients(held, a, b),
                       lambda call: _native.clientNumber(held, call))

    def __getitem__(self, path: str) -> Block:
        """The block at that path."""
        return self.blocks[path]

    @property
    def signal_set(self) -> Object:
        """The set of signals as the host's scripts have it: a "Kestrel.HMI.InstrumentedSignals"."""
        return _native.signalSet(self._held)

    @property
    def client_set(self) -> Object:
        """The same of clients: a "Kestrel.HMI.StreamingClients"."""
        return _native.clientSet(self._held)

    @property
    def is_open(self) -> bool:
        return self._held.isOpen

    def text(self) -> str:
        """What `save` would write."""
        return _native.text(self._held)

    # ---- what is observed

    @checked
    def mark(self, *references: Union[Referable, Iterable[Referable]], all: Texts = (), except_: Texts = (),
             kinds: Texts = (), below: str = "", activity: Optional[str] = None, ssid: Optional[int] = None,
             name: Optional[str] = None, decimation: Optional[int] = None, max_points: Optional[int] = None,
             frame_based: Optional[bool] = None, hidden: Optional[bool] = None, buffered: Optional[bool] = None,
             excluded_from_save: Optional[bool] = None, visual_type: Optional[str] = None, again: bool = False,
             skip_marked: bool = False) -> ChangeReport:
        """Marks ports and chart items as signals: all that is meant, or nothing.

        What is marked already stays as it is; with settings that is refused, unless `skip_marked`. `again` adds a
        further signal where one is.
        """
        settings = given(name=name, decimation=decimation, max_points=max_points, frame_based=frame_based,
                         hidden=hidden, buffered=buffered, excluded_from_save=excluded_from_save,
                         visual_type=visual_type)
        selection = selection_of(references, all, except_, kinds, below, activity, ssid)
        return ChangeReport(_native.mark(self._held, selection, settings, again, skip_marked))

    @checked
    def unmark(self, *references: Union[Referable, Iterable[Referable]], all: Texts = (), except_: Texts = (),
               kinds: Texts = (), below: str = "", activity: Optional[str] = None, ssid: Optional[int] = None,
               signals: Calls = (), dangling: bool = False) -> ChangeReport:
        """Removes signals; `dangling` those whose block, port or chart item is gone."""
        calls = calls_of(signals, "signals")
        selection = selection_of(references, all, except_, kinds, below, activity, ssid, bool(calls) or dangling)
        return ChangeReport(_native.unmark(self._held, selection, calls, dangling))

    @checked
    def set(self, *references: Union[Referable, Iterable[Referable]], all: Texts = (), except_: Texts = (),
            kinds: Texts = (), below: str = "", activity: Optional[str] = None, ssid: Optional[int] = None,
            signals: Calls = (), name: Optional[str] = None, decimation: Optional[int] = None,
            max_points: Optional[int] = None, frame_based: Optional[bool] = None, hidden: Optional[bool] = None,
            buffered: Optional[bool] = None, excluded_from_save: Optional[bool] = None,
            visual_type: Optional[str] = None, confirm: bool = False) -> ChangeReport:
        """Changes the settings of signals in place. `confirm` says that what they are on is what was meant."""
        settings = given(name=name, decimation=decimation, max_points=max_points, frame_based=frame_based,
                         hidden=hidden, buffered=buffered, excluded_from_save=excluded_from_save,
                         visual_type=visual_type)
        calls = calls_of(signals, "signals")
        selection = selection_of(references, all, except_, kinds, below, activity, ssid, bool(calls))
        return ChangeReport(_native.set(self._held, selection, calls, settings, confirm))

    @checked
    def query(self, *references: Union[Referable, Iterable[Referable]], all: Texts = (), except_: Texts = (),
              kinds: Texts = (), below: str = "", activity: Optional[str] = None,
              ssid: Optional[int] = None) -> QueryReport:
        """Tells whether ports and chart items are observed."""
        selection = selection_of(references, all, except_, kinds, below, activity, ssid)
        return QueryReport(_native.query(self._held, selection))

    # ---- who watches

    @checked
    def observe(self, *references: Union[Referable, Iterable[Referable]], type: str, all: Texts = (),
                except_: Texts = (), kinds: Texts = (), below: str = "", activity: Optional[str] = None,
                ssid: Optional[int] = None, signals: Calls = (),
                params: Optional[Mapping[str, Any]] = None, update_rate: Optional[int] = None,
                channel: Optional[int] = None, imaginary: Optional[bool] = None,
                bus_leaf: Optional[str] = None) -> ChangeReport:
        """Has a client of that observer type watch each marked port and chart item that is meant."""
        calls = calls_of(signals, "signals")
        selection = selection_of(references, all, except_, kinds, below, activity, ssid, bool(calls))
        settings = given(type=type, params=_json_of(params), update_rate=update_rate,
                         channel=channel, imaginary=imaginary, bus_leaf=bus_leaf)
        return ChangeReport(_native.observe(self._held, selection, calls, settings))

    @checked
    def unobserve(self, *references: Union[Referable, Iterable[Referable]], all: Texts = (), except_: Texts = (),
                  kinds: Texts = (), below: str = "", activity: Optional[str] = None, ssid: Optional[int] = None,
                  clients: Calls = (), types: Texts = (), states: Texts = (), unused: bool = False) -> ChangeReport:
        """Removes clients: of signals, by UUID or position, or in a state ("watching", "dangling", "elsewhere",
        "foreign", "deprecated"); with `types` only those. `unused`, given alone, has the host drop what it does not
        need: clients of deprecated kinds and those whose signal is gone."""
        who = {"clients": calls_of(clients, "clients"), "types": texts(types, "types"),
               "states": texts(states, "states")}
        selection = selection_of(references, all, except_, kinds, below, activity, ssid, any(who.values()) or unused)
        if unused:
            if any(selection.values()) or any(who.values()):
                raise Error("unused= asks the host about all clients; give it alone")
            return ChangeReport(_native.dropUnused(self._held))
        return ChangeReport(_native.unobserve(self._held, selection, who))

    @checked
    def set_clients(self, *references: Union[Referable, Iterable[Referable]], all: Texts = (), except_: Texts = (),
                    kinds: Texts = (), below: str = "", activity: Optional[str] = None, ssid: Optional[int] = None,
                    clients: Calls = (), types: Texts = (), states: Texts = (),
                    new_type: Optional[str] = None, params: Optional[Mapping[str, Any]] = None,
                    update_rate: Optional[int] = None, channel: Optional[int] = None,
                    imaginary: Optional[bool] = None, bus_leaf: Optional[str] = None) -> ChangeReport:
        """Changes the settings of clients in place; who is meant, as in `unobserve`."""
        who = {"clients": calls_of(clients, "clients"), "types": texts(types, "types"),
               "states": texts(states, "states")}
        selection = selection_of(references, all, except_, kinds, below, activity, ssid, any(who.values()))
        settings = given(type=new_type, params=_json_of(params), update_rate=update_rate,
                         channel=channel, imaginary=imaginary, bus_leaf=bus_leaf)
        return ChangeReport(_native.setClients(self._held, selection, who, settings))

    # ---- files and runs

    def check(self) -> CheckReport:
        """Looks for what is wrong, or may go wrong, with what `save` would write."""
        return CheckReport(_native.checkModel(self._held))

    def save(self) -> None:
        """Writes the file, as a whole or not at all. Refused when somebody else has changed it since."""
        _native.save(self._held)

    @checked
    def save_as(self, path: Path, replace: bool = False) -> None:
        """Writes into another file, as a whole or not at all, which is the model's file from then on. Refused when it
        is there already, unless told to replace it."""
        _native.saveAs(self._held, os.fspath(path), replace)

    def close(self) -> None:
        """Lets go of the model; what was not saved is lost."""
        self._held.close()

    def __enter__(self) -> "Model":
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()

    @checked
    def record(self, output: Path, unit: Optional[Path] = None, until: Optional[float] = None,
               step: Optional[float] = None, values: Optional[Mapping[str, object]] = None,
               inputs: Optional[Path] = None, timeout: Optional[float] = None, replace: bool = False,
               progress: Optional[Callable[[float, float, float], None]] = None,
               log: Optional[Callable[[float, str, str, str], None]] = None) -> RecordReport:
        """Runs the unit that the model was imported from, in a process of its own, and keeps what is observed.

        A unit is a program: run none that you would not start yourself. `values` are start values by variable. `output`
        is a database for .db, .sqlite and .sqlite3, else CSV; `read_run` reads it. `progress` is told the simulated
        time, where it ends, and the seconds that have passed: five times a second, and when the run is over; `log` of
        each of the unit's messages the simulated time, the level ("information", "warning", "error"), the category and
        the text.
        """
        start = None if values is None else [(name, _start_value(value)) for name, value in values.items()]
        options = given(output=os.fspath(output), unit=path_of(unit), until=until, step=step, values=start,
                        inputs=path_of(inputs), timeout=timeout, replace=replace, progress=progress, log=log)
        return RecordReport(_native.record(self._held, options))

    @checked
    def read_run(self, path: Path, number: Optional[int] = None) -> Run:
        """A recorded run, each column with the signal that it is of."""
        return Run(_native.readRun(os.fspath(path), number, self._held))

    # ---- how it is shown

    def __repr__(self) -> str:
        if not self.is_open:
            return "<Model, closed>"
        counts = ", ".join(counted(count, what) for count, what in (
            (len(self.blocks), "block"), (len(self.signals), "signal"), (len(self.clients), "client")))
        return f"<Model {self.name!r} of {self.path}: {counts}>"

    def _repr_html_(self) -> str:
        from html import escape
        if not self.is_open:
            return "<p>Model, closed</p>"
        return f"<p>{escape(repr(self)[1:-1])}</p>{self.signals._repr_html_()}"


def _start_value(value: object) -> str:
    return str(value).lower() if isinstance(value, (bool, np.bool_)) else str(value)


def _json_of(params: Optional[Mapping[str, Any]]) -> Optional[str]:
    def plain(value: Any) -> Any:
        if isinstance(value, (np.ndarray, np.generic)):
            return value.tolist()
        raise TypeError(f"params= has {value!r}; give texts, numbers, truths, and lists and dictionaries of these, as "
                        "in params={\"max\": 180}")
    return None if params is None else json.dumps(params, default=plain)
