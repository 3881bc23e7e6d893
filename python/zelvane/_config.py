"""Settings files as mappings."""
from __future__ import annotations

import datetime
import os
from collections.abc import Iterator, Mapping, MutableMapping
from types import TracebackType
from typing import Union

from ._zelvane import File

FilePath = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

_FORMAT = "dd/mm/yyyy hh:nn:ss"


class Section(MutableMapping[str, str]):
    """The keys of one section. Names are found in any case and told in upper case, in ascending order.

    A section comes into being with its first key and lives in its Config: nothing is kept here.
    """

    def __init__(self, file: File, name: str) -> None:
        self._file = file
        self.name = name

    def __getitem__(self, key: str) -> str:
        value = self._file.read_str(self.name, key)
        if value is None:
            raise KeyError(key)
        return value

    def __setitem__(self, key: str, value: str) -> None:
        self._file.write_str(self.name, key, value)

    def __delitem__(self, key: str) -> None:
        if key not in self:
            raise KeyError(key)
        self._file.delete_key(self.name, key)

    def __contains__(self, key: object) -> bool:
        return isinstance(key, str) and self._file.has_key(self.name, key)

    def __iter__(self) -> Iterator[str]:
        return iter(self._file.keys(self.name))

    def __len__(self) -> int:
        return self._file.key_count(self.name)

    def __repr__(self) -> str:
        return f"Section({self.name!r}, {dict(self)!r})"

    def get_int(self, key: str, default: int = 0) -> int:
        """A signed 32-bit decimal number; the default for a missing key and for any other text."""
        value = self._file.read_int(self.name, key)
        return default if value is None else value

    def get_bool(self, key: str, default: bool = False) -> bool:
        """Numbers only: 0 is False, any other True. "yes", "true" and their like give the default."""
        value = self._file.read_bool(self.name, key)
        return default if value is None else value

    def get_float(self, key: str, default: float = 0.0) -> float:
        """A number with a decimal point, whatever the locale ("1.5", "2E3"); the default for any other text."""
        value = self._file.read_float(self.name, key)
        return default if value is None else value

    def get_datetime(
        self, key: str, default: datetime.datetime | None = None, format: str = _FORMAT
    ) -> datetime.datetime | None:
        """A date and time, as the format's runs of d, m, y, h, n (minutes) and s say; else the default."""
        value = self._file.read_datetime(self.name, key, format)
        return default if value is None else value

    def set_datetime(self, key: str, value: datetime.datetime, format: str = _FORMAT) -> None:
        """Writes a naive datetime. 29 February and 31 December of a leap year are written wrongly, as 1 February and
        1 January of that year: the product's programs read and write them so."""
        self._file.write_datetime(self.name, key, value, format)


class Config(MutableMapping[str, Section]):
    """A settings file of the product: a mapping of sections, each a mapping of keys to texts.

        with zelvane.Config("upscli.cfg") as config:
            config["RUNCOMMAND"]["DELAY"] = "30"
            print(config["SHUTSRV"].get_bool("POPUP"))

    Every line that is not changed stays byte for byte as it is. A change is saved, whole and durably, before it
    returns; with cached=True, save() and close() do that, and so does the end of a `with` block. Values are texts: use
    str(), or "1" and "0" for switches.

    path        the file. It must exist: FileNotFoundError, PermissionError ... otherwise
    read_only   refuses changes
    cached      keeps changes in memory until save()
    keep_case   new names are written as they are given, not in upper case (for ~/.zelvane and /etc/zelvane.conf)
    strict      True: a line that cannot be parsed raises ConfigError, which names it. False: reads what comes before
                that line; BEWARE, a save then drops what comes after it (kept once as NAME.lost)

    Texts are Latin-1 in the file: others raise UnicodeEncodeError. Brackets and line breaks, which would break the
    file, raise ValueError. Failed changes raise OSError or ConfigError, and stay in memory for the next save().
    """

    def __init__(
        self,
        path: FilePath,
        read_only: bool = False,
        cached: bool = False,
        *,
        keep_case: bool = False,
        strict: bool = True,
    ) -> None:
        self._file = File(path, read_only, cached, keep_case, strict)

    @property
    def path(self) -> str:
        """The file's name, as it was given."""
        return self._file.path

    @property
    def error_line(self) -> int:
        """With strict=False: the line, counted from 1, at which reading has stopped; 0 for a sound file."""
        return self._file.error_line

    def __getitem__(self, section: str) -> Section:
        if section not in self:
            raise KeyError(section)
        return Section(self._file, section)

    def __setitem__(self, section: str, keys: Mapping[str, str]) -> None:
        """Replaces the section's keys. Its comments stay."""
        new = dict(keys)  # may be the section itself
        self._file.erase_section(section)
        self.section(section).update(new)

    def __delitem__(self, section: str) -> None:
        if section not in self:
            raise KeyError(section)
        self._file.erase_section(section)

    def __contains__(self, section: object) -> bool:
        return isinstance(section, str) and self._file.has_section(section)

    def __iter__(self) -> Iterator[str]:
        return iter(self._file.sections())

    def __len__(self) -> int:
        return self._file.section_count()

    def __repr__(self) -> str:
        return f"Config({self.path!r})"

    def section(self, name: str) -> Section:
        """The section, whether or not it exists: its first key creates it."""
        return Section(self._file, name)

    def get_int(self, section: str, key: str, default: int = 0) -> int:
        """Same as section(section).get_int(key, default), also for a missing section."""
        return self.section(section).get_int(key, default)

    def get_bool(self, section: str, key: str, default: bool = False) -> bool:
        """Same as section(section).get_bool(key, default), also for a missing section."""
        return self.section(section).get_bool(key, default)

    def get_float(self, section: str, key: str, default: float = 0.0) -> float:
        """Same as section(section).get_float(key, default), also for a missing section."""
        return self.section(section).get_float(key, default)

    def get_datetime(
        self, section: str, key: str, default: datetime.datetime | None = None, format: str = _FORMAT
    ) -> datetime.datetime | None:
        """Same as section(section).get_datetime(key, default, format), also for a missing section."""
        return self.section(section).get_datetime(key, default, format)

    def save(self) -> None:
        """Saves the changes; OSError or ConfigError when they cannot be saved, and they stay for the next try."""
        self._file.save()

    def close(self) -> None:
        """Saves the changes and closes the file. Nothing can be read or changed afterwards."""
        self._file.close()

    def __enter__(self) -> Config:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        if kind is None:
            self.save()
        self.close()
