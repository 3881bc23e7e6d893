"""The browse list as a tree of objects."""
from __future__ import annotations

import datetime
from collections.abc import Iterator
from dataclasses import dataclass, field
from types import TracebackType

from ._config import FilePath
from ._zelvane import Browse, root


@dataclass(eq=False)
class Unit:
    """A UPS unit of a computer. number: the programs' own."""

    id: int
    name: str
    number: int = 0
    computer: Computer | None = field(default=None, repr=False)


@dataclass(eq=False)
class Computer:
    """A computer with its dotted IPv4 address and its UPS units."""

    id: int
    name: str
    address: str
    group: Group | None = field(default=None, repr=False)
    units: list[Unit] = field(default_factory=list)


@dataclass(eq=False)
class Group:
    """A group with the groups and computers in it."""

    id: int
    name: str
    parent: Group | None = field(default=None, repr=False)
    groups: list[Group] = field(default_factory=list)
    computers: list[Computer] = field(default_factory=list)

    def walk(self) -> Iterator[Group]:
        """This group and all below it, each before its own."""
        rest = [self]
        while rest:
            group = rest.pop()
            yield group
            rest.extend(reversed(group.groups))


def _id(owner: Group | Computer | None) -> int:
    return -1 if owner is None else owner.id


class BrowseList:
    """The address book of the monitored network: groups hold groups and computers, computers hold UPS units.

        with zelvane.BrowseList() as network:
            site = network.add_group("Site A")
            tower = network.add_computer("tower", "10.0.0.7", site)
            network.add_unit("UPS 1", 1, tower)

    groups      the groups at the top: without a parent, with one that is missing, or the first of a circle
    computers   those without a group
    units       those without a computer

    Changed objects are written by edit(). Additions and edits stay in memory until save() or close() (the end of a
    `with` block); remove() saves at once. Saving replaces the file by what this object knows: what another program has
    written since it was opened is lost. A missing file is an empty list. OSError: the file cannot be read.
    Entries that the library cannot read (a missing field, a name of blanks) are left out.
    """

    def __init__(self, path: FilePath | None = None) -> None:
        """path: None stands for zelbrws.cfg in the installation root."""
        self._browse = _open(root() + "zelbrws.cfg" if path is None else path)
        self.reload()

    def reload(self) -> None:
        """Builds the tree anew from what this object knows; the file is not read again."""
        groups = {id: Group(id, name) for id, name, _ in self._browse.groups()}
        computers: dict[int, Computer] = {}
        self.groups: list[Group] = []
        self.computers: list[Computer] = []
        self.units: list[Unit] = []
        for id, _, parent in self._browse.groups():
            groups[id].parent = groups.get(parent)
            above = groups[id].parent
            (self.groups if above is None else above.groups).append(groups[id])
        self._break_circles(groups)
        for id, name, address, group in self._browse.computers():
            computers[id] = Computer(id, name, address, groups.get(group))
            (groups[group].computers if group in groups else self.computers).append(computers[id])
        for id, name, number, computer in self._browse.units():
            unit = Unit(id, name, number, computers.get(computer))
            (computers[computer].units if computer in computers else self.units).append(unit)

    def _break_circles(self, groups: dict[int, Group]) -> None:
        seen = {group.id for top in self.groups for group in top.walk()}
        for group in groups.values():
            if group.id in seen:
                continue
            if group.parent is not None:
                group.parent.groups.remove(group)
            group.parent = None
            self.groups.append(group)
            seen.update(below.id for below in group.walk())

    @property
    def changed(self) -> datetime.datetime | None:
        """When the list was last changed, as its programs have stamped it."""
        return self._browse.stamp()

    def add_group(self, name: str, parent: Group | None = None) -> Group:
        """Adds a group and gives it, with the smallest identifier that is free."""
        group = Group(self._browse.add_group((0, name, _id(parent))), name, parent)
        (self.groups if parent is None else parent.groups).append(group)
        return group

    def add_computer(self, name: str, address: str, group: Group | None = None) -> Computer:
        """Adds a computer and gives it."""
        if not address:
            raise ValueError("a computer without an address could not be read again")
        computer = Computer(self._browse.add_computer((0, name, address, _id(group))), name, address, group)
        (self.computers if group is None else group.computers).append(computer)
        return computer

    def add_unit(self, name: str, number: int, computer: Computer | None = None) -> Unit:
        """Adds a UPS unit and gives it. Without a computer its address is 127.0.0.1."""
        unit = Unit(self._browse.add_unit((0, name, number, _id(computer))), name, number, computer)
        (self.units if computer is None else computer.units).append(unit)
        return unit

    def edit(self, entry: Group | Computer | Unit) -> None:
        """Writes the entry's own fields and its owner. The lists of the tree stay as they are until reload()."""
        if isinstance(entry, Group):
            self._browse.edit_group((entry.id, entry.name, _id(entry.parent)))
        elif isinstance(entry, Computer):
            self._browse.edit_computer((entry.id, entry.name, entry.address, _id(entry.group)))
        else:
            self._browse.edit_unit((entry.id, entry.name, entry.number, _id(entry.computer)))

    def remove(self, entry: Group | Computer | Unit) -> None:
        """Removes the entry with all that belongs to it, at every depth, and saves. Objects got before are stale."""
        if isinstance(entry, Group):
            self._browse.remove_group(entry.id)
        elif isinstance(entry, Computer):
            self._browse.remove_computer(entry.id)
        else:
            self._browse.remove_unit(entry.id)
        self.reload()

    def save(self) -> None:
        """Saves the list and stamps it. Error when it cannot be written: the changes stay for the next try."""
        self._browse.save()

    def close(self) -> None:
        """Saves what is left. OSError when it cannot be written: the changes are lost."""
        self._browse.close()

    def __enter__(self) -> BrowseList:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        self.close()


def _open(path: FilePath) -> Browse:
    try:
        open(path, "rb").close()  # the library takes a file that it cannot read for an empty list
    except FileNotFoundError:
        pass
    return Browse(path)
