"""Signal instrumentation of Kestrel models, for scripts and notebooks.

>>> import ks_hmi
>>> with ks_hmi.open("cruise.json") as model:
...     model.mark(all="Sensors/*", except_="*:valid", decimation=10)
...     model.save()
<mark: 12 added>
"""

from __future__ import annotations

import atexit as _atexit
import sys as _sys

from . import _native, host
from ._data import Block, Client, Entries, Entry, Finding, Place, Signal
from ._errors import Error, HostError, HostWarning, ModelWarning, NotFound
from ._files import carry, check, comparable, diff, import_model, merge, new, open, prune, read_run, report, sarif
from ._listing import Listing
from ._model import Model
from ._reports import (CarryReport, ChangeReport, CheckReport, DiffReport, ImportReport, MergeReport, PageReport,
                       PruneReport, QueryReport, RecordReport, Report)
from ._runs import Column, Run
from ._values import Object, StructArray

__version__ = _native.version

__all__ = [
    "Block", "CarryReport", "ChangeReport", "CheckReport", "Client", "Column", "DiffReport", "Entries", "Entry",
    "Error", "Finding", "HostError", "HostWarning", "ImportReport", "Listing", "MergeReport", "Model",
    "ModelWarning", "NotFound", "Object", "PageReport", "Place", "PruneReport", "QueryReport", "RecordReport",
    "Report", "Run", "Signal", "StructArray", "carry", "check", "comparable", "diff", "host", "import_model",
    "merge", "new", "open", "prune", "read_run", "report", "sarif",
]


def _leave() -> None:
    alive = _native.leave()
    if alive:
        print("ks_hmi: these are still alive in the host:\n" + alive, file=_sys.stderr)


_atexit.register(_leave)
