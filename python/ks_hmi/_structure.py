"""What a model consists of, changed."""

from __future__ import annotations

from typing import Iterable, Optional, Union

from . import _native
from ._arguments import checked
from ._data import Block, load
from ._reports import ChangeReport
from ._selection import Referable, Texts, reference_of, texts


class Structure:
    """The part of `Model` that changes blocks, ports and charts. Signals and clients follow."""

    _held: _native.Model

    @checked
    def rename(self, name: str) -> ChangeReport:
        """Gives the model another name, also one that a block has; `rename_block` renames blocks. The file's name stays
        as it is."""
        return ChangeReport(_native.rename(self._held, name))

    @checked
    def add_block(self, path: str, outputs: Texts = (), chart: bool = False, eid: str = "") -> Block:
        """Adds a block with output ports of these names; parents need not be there. It gets an element identifier of
        its own when none is given."""
        return load(_native.addBlock(self._held, path, eid, texts(outputs, "outputs"), chart))

    @checked
    def remove_block(self, path: Referable, below: bool = False, unmark: bool = False) -> ChangeReport:
        """Removes a block: with `below` all that is below it, with `unmark` the signals on what goes."""
        return ChangeReport(_native.removeBlock(self._held, reference_of(path), below, unmark))

    @checked
    def rename_block(self, path: Referable, name: str) -> ChangeReport:
        """Gives a block or parent another name where it is."""
        return ChangeReport(_native.renameBlock(self._held, reference_of(path), name))

    @checked
    def move(self, path: Referable, new_path: str) -> ChangeReport:
        """Moves a block or parent, with all below it, to another path."""
        return ChangeReport(_native.move(self._held, reference_of(path), new_path))

    @checked
    def add_port(self, block: Referable, name: str, at: Optional[int] = None) -> ChangeReport:
        """Adds an output port, `at` that number or as the last one; those behind it move on."""
        return ChangeReport(_native.addPort(self._held, reference_of(block), name, at))

    @checked
    def remove_port(self, block: Referable, port: Union[int, str], unmark: bool = False) -> ChangeReport:
        """Removes an output port by number from 1 or name, with `unmark` its signals, too; those behind it move up."""
        return ChangeReport(_native.removePort(self._held, reference_of(block), str(port), unmark))

    @checked
    def rename_port(self, block: Referable, port: Union[int, str], name: str) -> ChangeReport:
        """Gives an output port another name; signals keep theirs."""
        return ChangeReport(_native.renamePort(self._held, reference_of(block), str(port), name))

    @checked
    def renumber(self, block: Referable, numbers: Iterable[int]) -> ChangeReport:
        """Gives output ports 1, 2, ... these new numbers, 0 for one that is deleted; further ports keep theirs."""
        return ChangeReport(_native.renumber(self._held, reference_of(block), list(numbers)))

    @checked
    def add_state(self, chart: Referable, path: str, ssid: Optional[int] = None) -> ChangeReport:
        """Adds a state by its path below the chart. The block becomes a chart if it is not one."""
        return ChangeReport(_native.addState(self._held, reference_of(chart), path, ssid))

    @checked
    def add_datum(self, chart: Referable, name: str, ssid: Optional[int] = None) -> ChangeReport:
        """Adds a datum. The block becomes a chart if it is not one."""
        return ChangeReport(_native.addDatum(self._held, reference_of(chart), name, ssid))

    @checked
    def remove_item(self, item: Referable, ssid: Optional[int] = None, below: bool = False,
                    unmark: bool = False) -> ChangeReport:
        """Removes a state or datum, "chart/State", or by the chart and `ssid`: with `below` the states below it, with
        `unmark` the signals on what goes."""
        return ChangeReport(_native.removeItem(self._held, reference_of(item), ssid, below, unmark))

    @checked
    def rename_item(self, item: Referable, name: str, ssid: Optional[int] = None) -> ChangeReport:
        """Gives a state or datum another name, without the states above it."""
        return ChangeReport(_native.renameItem(self._held, reference_of(item), name, ssid))
