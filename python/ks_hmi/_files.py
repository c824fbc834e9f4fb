"""Model files: opened, made, checked, compared."""

from __future__ import annotations

import os
from typing import Callable, Optional

from . import _native
from ._arguments import checked
from ._errors import Error
from ._model import Model
from ._reports import CarryReport, CheckReport, DiffReport, MergeReport, PageReport, PruneReport
from ._runs import Run
from ._selection import Path, Texts, path_of, texts


def _opened(make: Callable[[], _native.Model]) -> Model:
    try:
        return Model(make())
    except Error as error:
        if "is open already" not in error.text:
            raise
        raise Error(error.text.replace(". Close it first.", ""), error.code, error.file,
                    remedy="close() it first, or rename() it to have both open side by side") from None


@checked
def open(path: Path, dangling: bool = False) -> Model:
    """Opens a model file. `dangling` lets in signals whose block, port or chart item is gone, to be removed.

    The host has one model of a name at a time. Of two versions, `rename` the one that is open, and both can be looked
    at side by side; nothing of that is in its file unless it is saved."""
    return _opened(lambda: _native.openModel(os.fspath(path), dangling))


@checked
def new(path: Path, name: Optional[str] = None) -> Model:
    """A new model without blocks, to be saved at `path`; its name is the file's if none is given."""
    where = os.fspath(path)
    return _opened(lambda: _native.newModel(where, name or os.path.basename(where).split(".")[0]))


@checked
def import_model(source: Path, path: Path, name: Optional[str] = None, local_variables: Optional[bool] = None,
                 previous: Optional[Path] = None, update: bool = False) -> Model:
    """Makes a model of a system structure (.ssd, .ssp) or a unit (.fmu, modelDescription.xml), to be saved at `path`.
    Blocks keep the identifiers that they have in the `previous` version's file. With `update` that is the file at
    `path`, which `save` replaces; it must have no signals and clients. `import_report` of the model tells what was left
    out."""
    if update and previous is not None:
        raise Error("update= takes the file at the path as the version before; give it without previous=")
    return _opened(lambda: _native.importModel(os.fspath(source), os.fspath(path), name or "", local_variables,
                                               path_of(previous) or "", update))


@checked
def check(path: Path, mend: Texts = (), dry_run: bool = False) -> CheckReport:
    """Looks for what is wrong with a model file, or may go wrong; `mend` names kinds of findings to mend, or "all"."""
    return CheckReport(_native.check(os.fspath(path), texts(mend, "mend"), dry_run))


def sarif(*paths: Path) -> str:
    """What is wrong with model files as a log in SARIF 2.1.0, as code hosts read it."""
    return _native.sarif([os.fspath(path) for path in paths])


@checked
def prune(path: Path, kinds: Texts = (), dry_run: bool = False) -> PruneReport:
    """Removes what `check` finds: of these kinds, or "all"; without any, what nothing can come of any more."""
    return PruneReport(_native.prune(os.fspath(path), texts(kinds, "kinds"), dry_run))


@checked
def report(path: Path, output: Path, run: Optional[Path] = None, number: Optional[int] = None) -> PageReport:
    """Makes one HTML page of a model file: what is marked, who watches it, what is wrong; and what was recorded in a
    `run`, the file's last one or that `number`."""
    return PageReport(_native.report(os.fspath(path), os.fspath(output), path_of(run) or "", number))


@checked
def diff(before: Path, after: Path) -> DiffReport:
    """How two model files differ."""
    return DiffReport(_native.diff(os.fspath(before), os.fspath(after)))


@checked
def comparable(path: Path) -> str:
    """A model file as lines that are easy to compare."""
    return _native.comparable(os.fspath(path))


@checked
def merge(base: Optional[Path], ours: Path, theirs: Path, output: Path, dry_run: bool = False) -> MergeReport:
    """Brings together what two people changed in copies of the `base`, None when there is none, and saves it as
    `output`, which may be one of the three. Where both changed the same differently, ours stays, and is told."""
    return MergeReport(_native.merge(path_of(base) or os.devnull, os.fspath(ours),
                                     os.fspath(theirs), os.fspath(output), dry_run))


@checked
def carry(before: Path, after: Path, output: Optional[Path] = None, map: Optional[Path] = None,
          propose: Optional[Path] = None, match: Optional[str] = None, accept_guesses: bool = False,
          dry_run: bool = False) -> CarryReport:
    """Puts the marks of one version of a model on the next one, by names, and saves that as `output` (`after` if left
    out). What is ambiguous or lost is parked in the file; `propose` writes a map for it, to be edited and given as
    `map`. `match` "id" or "path" says what alone to go by."""
    return CarryReport(_native.carry(os.fspath(before), os.fspath(after), path_of(output) or "", path_of(map) or "",
                                     path_of(propose) or "", match or "", accept_guesses, dry_run))


@checked
def read_run(path: Path, number: Optional[int] = None) -> Run:
    """A run that was recorded: from a CSV file, or a database, where the last one is taken if no number is given."""
    return Run(_native.readRun(os.fspath(path), number, None))
