"""The browse list as a tree of objects."""
from __future__ import annotations

import datetime
from collections.abc import Iterator
from dataclasses import dataclass, field
from typing import NoReturn

from ._config import FilePath
from ._zelvane import Browse, root


@dataclass(eq=False)
class Unit:
    """A UPS unit of a computer. The programs define its number."""

    id: int
    name: str
    number: int = 0
    computer: Computer | None = field(default=None, repr=False)


@dataclass(eq=False)
class Computer:
    """A computer with its IPv4 address and its UPS units."""

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
        """This group and all groups below it, parents first."""
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

    groups      the top groups: without a parent, with a missing parent, or the first of a cycle
    computers   computers without a group
    units       units without a computer

    edit() stores a changed object. Additions and edits stay in memory until save() or close() (the end of a `with`
    block); remove() saves immediately. A save replaces the file: what another program has written since the list was
    opened is lost. A missing file is an empty list; OSError: the file cannot be read. Entries that the library cannot
    read (a missing field, a name of blanks) are omitted, as is everything after a line that cannot be parsed.
    One thread at a time may use the tree.
    """

    def __init__(self, path: FilePath | None = None) -> None:
        """path: None is zelbrws.cfg in the installation root."""
        self._browse = Browse(root() + "zelbrws.cfg" if path is None else path)
        self.reload()

    def reload(self) -> None:
        """Builds the tree again from memory; the file is not read again."""
        entries = self._browse.groups()
        groups = {id: Group(id, name) for id, name, _ in entries}
        computers: dict[int, Computer] = {}
        self.groups: list[Group] = []
        self.computers: list[Computer] = []
        self.units: list[Unit] = []
        for id, _, parent in entries:
            above = groups[id].parent = groups.get(parent)
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
            if group.id not in seen:
                assert group.parent is not None
                group.parent.groups.remove(group)
                group.parent = None
                self.groups.append(group)
                seen.update(below.id for below in group.walk())

    @property
    def changed(self) -> datetime.datetime | None:
        """The time of the last change, as the programs have stored it."""
        return self._browse.stamp()

    def add_group(self, name: str, parent: Group | None = None) -> Group:
        """Adds a group with the smallest free identifier and returns it."""
        group = Group(self._browse.add_group((0, name, _id(parent))), name, parent)
        (self.groups if parent is None else parent.groups).append(group)
        return group

    def add_computer(self, name: str, address: str, group: Group | None = None) -> Computer:
        """Adds a computer and returns it."""
        if not address:
            raise ValueError("address: a computer without one cannot be read back")
        computer = Computer(self._browse.add_computer((0, name, address, _id(group))), name, address, group)
        (self.computers if group is None else group.computers).append(computer)
        return computer

    def add_unit(self, name: str, number: int, computer: Computer | None = None) -> Unit:
        """Adds a UPS unit and returns it. Without a computer its address is 127.0.0.1."""
        unit = Unit(self._browse.add_unit((0, name, number, _id(computer))), name, number, computer)
        (self.units if computer is None else computer.units).append(unit)
        return unit

    def edit(self, entry: Group | Computer | Unit) -> None:
        """Stores the fields of the entry and its owner. The lists of the tree are unchanged until reload()."""
        if isinstance(entry, Group):
            self._browse.edit_group((entry.id, entry.name, _id(entry.parent)))
        elif isinstance(entry, Computer):
            self._browse.edit_computer((entry.id, entry.name, entry.address, _id(entry.group)))
        else:
            self._browse.edit_unit((entry.id, entry.name, entry.number, _id(entry.computer)))

    def remove(self, entry: Group | Computer | Unit) -> None:
        """Removes the entry and everything in it, at every depth, and saves. Builds the tree again."""
        if isinstance(entry, Group):
            self._browse.remove_group(entry.id)
        elif isinstance(entry, Computer):
            self._browse.remove_computer(entry.id)
        else:
            self._browse.remove_unit(entry.id)
        self.reload()

    def save(self) -> None:
        """Saves the list with the time of the change. Error if it cannot be written; the changes stay in memory."""
        self._browse.save()

    def close(self) -> None:
        """Saves pending changes. OSError if they cannot be written: they are lost."""
        self._browse.close()

    def __enter__(self) -> BrowseList:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __reduce__(self) -> NoReturn:
        raise TypeError("an open file cannot be copied or pickled")
