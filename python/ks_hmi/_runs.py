"""Recorded runs."""

from __future__ import annotations

from html import escape
from typing import TYPE_CHECKING, Any, Dict, Iterator, List, Optional, Sequence, Union

import numpy as np

from ._data import table
from ._errors import NotFound

if TYPE_CHECKING:
    from numpy.typing import NDArray


class Column:
    """One recorded signal, or one element of an array: `times` and `values`, one for each sample.

    Numbers and Booleans are a numpy array of float64, texts one of objects. `title`, `kind`, `unit`, `signal` (its UUID
    as a text: `model.signals[column.signal]` is the signal), `block`, `port`, `portName` and `element` say what it is;
    None or "" where the file does not. `items` has the names of an enumeration's values, as far as a database knows
    them.
    """

    def __init__(self, data: Dict[str, Any]) -> None:
        self.title: str = data["title"]
        self.kind: str = data["kind"]
        self.unit: str = data["unit"]
        self.items: Dict[int, str] = data["items"]
        self.signal: Optional[str] = data["signal"]
        self.block: Optional[str] = data["block"]
        self.port: Optional[int] = data["port"]
        self.portName: str = data["portName"]
        self.element: str = data["element"]
        self.times: NDArray[Any] = data["times"]
        values = data["values"]
        self.values: NDArray[Any] = np.array(values, dtype=object) if isinstance(values, list) else values

    def __len__(self) -> int:
        return len(self.times)

    def __repr__(self) -> str:
        unit = f" in {self.unit}" if self.unit else ""
        return f"<Column {self.title!r}: {len(self)} samples, {self.kind}{unit}>"

    def to_series(self) -> Any:
        """A pandas series over the time; the last sample of an event stands for it."""
        import pandas
        series = pandas.Series(self.values, index=pandas.Index(self.times, name="time"), name=self.title)
        return series[~series.index.duplicated(keep="last")]


class Run(Sequence[Column]):
    """A recorded run: its columns, by number from 0 or by title. Each has times of its own, as signals are kept at
    different rates; `start`, `stop`, `until`, `outcome`, `started` and `model` tell of the run."""

    def __init__(self, data: Dict[str, Any]) -> None:
        self.file: str = data["file"]
        self.number: int = data["number"]
        self.runCount: int = data["runCount"]
        self.model: Optional[str] = data["model"]
        self.started: Optional[str] = data["started"]
        self.start: Optional[float] = data["start"]
        self.stop: Optional[float] = data["stop"]
        self.until: Optional[float] = data["until"]
        self.outcome: Optional[str] = data["outcome"]
        self.message: str = data["message"]
        self.columns: List[Column] = [Column(column) for column in data["columns"]]
        self._by_title = {column.title: column for column in self.columns}

    @property
    def titles(self) -> List[str]:
        return [column.title for column in self.columns]

    def __len__(self) -> int:
        return len(self.columns)

    def __getitem__(self, key: Union[int, str, slice]) -> Any:
        if not isinstance(key, str):
            return self.columns[key]
        if key not in self._by_title:
            raise NotFound(f"there is no column {key!r}; there are: {', '.join(self.titles)}", "noMatch", self.file)
        return self._by_title[key]

    def __iter__(self) -> Iterator[Column]:
        return iter(self.columns)

    def __contains__(self, key: object) -> bool:
        return key in self._by_title if isinstance(key, str) else key in self.columns

    def to_frame(self) -> Any:
        """A pandas frame: a column each, a row for each time at which any has a sample, NaN where one has none."""
        import pandas
        if not self.columns:
            return pandas.DataFrame(index=pandas.Index([], name="time", dtype=float))
        frame = pandas.concat([column.to_series() for column in self.columns], axis=1).sort_index()
        frame.index.name = "time"
        return frame

    def _span(self) -> str:
        if self.start is None or self.stop is None:
            return ""
        return f", {self.start:g} to {self.stop:g} s"

    def __repr__(self) -> str:
        outcome = f", {self.outcome}" if self.outcome else ""
        return f"<Run {self.number} of {self.runCount} in {self.file}: {len(self)} columns{self._span()}{outcome}>"

    def _repr_html_(self) -> str:
        rows = [{"title": one.title, "kind": one.kind, "unit": one.unit, "block": one.block or "",
                 "port": one.port or "", "samples": len(one)} for one in self.columns]
        return f"<p>{escape(repr(self)[1:-1])}</p>{table(rows)}"
