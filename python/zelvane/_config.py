"""Settings files as mappings."""
from __future__ import annotations

import datetime
import os
from collections.abc import Iterator, Mapping, MutableMapping
from typing import NoReturn, Union

from ._zelvane import File

FilePath = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

_FORMAT = "dd/mm/yyyy hh:nn:ss"


class Section(MutableMapping[str, str]):
    """The keys of one section. Look-up ignores case; iteration gives upper case, in ascending order.

    The first key creates the section. The keys are in the Config, not here.
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

    def clear(self) -> None:
        self._file.replace_section(self.name, [])

    def get_int(self, key: str, default: int = 0) -> int:
        """A signed 32-bit decimal number; the default for a missing key or other text."""
        value = self._file.read_int(self.name, key)
        return default if value is None else value

    def get_bool(self, key: str, default: bool = False) -> bool:
        """A number: 0 is False, others are True. The default for a missing key or other text, also "yes" or "true"."""
        value = self._file.read_bool(self.name, key)
        return default if value is None else value

    def get_float(self, key: str, default: float = 0.0) -> float:
        """A number with a decimal point in every locale ("1.5", "2E3"); the default for a missing key or other text."""
        value = self._file.read_float(self.name, key)
        return default if value is None else value

    def get_datetime(
        self, key: str, default: datetime.datetime | None = None, format: str = _FORMAT
    ) -> datetime.datetime | None:
        """A date and time in the format (runs of d, m, y, h, n for minutes, s); otherwise the default."""
        value = self._file.read_datetime(self.name, key, format)
        return default if value is None else value

    def set_datetime(self, key: str, value: datetime.datetime, format: str = _FORMAT) -> None:
        """Writes a naive datetime. Kept for compatibility: 29 February and 31 December of a leap year are written as
        1 February and 1 January of that year."""
        self._file.write_datetime(self.name, key, value, format)


class Config(MutableMapping[str, Section]):
    """A settings file: a mapping of sections, each a mapping of keys to texts.

        with zelvane.Config("upscli.cfg") as config:
            config["RUNCOMMAND"]["DELAY"] = "30"
            print(config["SHUTSRV"].get_bool("POPUP"))

    Unchanged lines stay byte for byte. Each change is saved, atomic and durable, before it returns; with cached=True
    save(), close() and the end of a `with` block save all changes. Values are texts: use str(), "1" or "0".

    path        an existing file; otherwise FileNotFoundError, PermissionError ...
    read_only   refuses changes
    cached      keeps changes in memory until save()
    keep_case   writes new names as given, not in upper case (for ~/.zelvane and /etc/zelvane.conf)
    strict      True: a line that cannot be parsed raises ConfigError with its number. False: reads the lines before
                it; BEWARE: a save drops the lines after it (after a copy to NAME.lost)

    Texts are Latin-1 in the file; other characters raise UnicodeEncodeError. Brackets, line breaks, and blanks at the
    ends of a name raise ValueError; blanks at the ends of a value are lost in the file. A failed save raises OSError or
    ConfigError, and the changes stay in memory for the next save().
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
        """The file's name, as given."""
        return self._file.path

    @property
    def error_line(self) -> int:
        """With strict=False: the line, counted from 1, that cannot be parsed; 0 when there is none."""
        return self._file.error_line

    def __getitem__(self, section: str) -> Section:
        if section not in self:
            raise KeyError(section)
        return Section(self._file, section)

    def __setitem__(self, section: str, keys: Mapping[str, str]) -> None:
        """Replaces the section's keys in one save. Its comments stay. A bad name or value changes nothing."""
        self._file.replace_section(section, list(dict(keys).items()))

    def __delitem__(self, section: str) -> None:
        if section not in self:
            raise KeyError(section)
        self._file.replace_section(section, [])

    def __contains__(self, section: object) -> bool:
        return isinstance(section, str) and self._file.has_section(section)

    def __iter__(self) -> Iterator[str]:
        return iter(self._file.sections())

    def __len__(self) -> int:
        return self._file.section_count()

    def __repr__(self) -> str:
        return f"Config({self.path!r})"

    def clear(self) -> None:
        for section in self:
            self._file.replace_section(section, [])

    def section(self, name: str) -> Section:
        """The section, which need not exist: its first key creates it."""
        return Section(self._file, name)

    def get_int(self, section: str, key: str, default: int = 0) -> int:
        """Same as section(section).get_int(key, default)."""
        return self.section(section).get_int(key, default)

    def get_bool(self, section: str, key: str, default: bool = False) -> bool:
        """Same as section(section).get_bool(key, default)."""
        return self.section(section).get_bool(key, default)

    def get_float(self, section: str, key: str, default: float = 0.0) -> float:
        """Same as section(section).get_float(key, default)."""
        return self.section(section).get_float(key, default)

    def get_datetime(
        self, section: str, key: str, default: datetime.datetime | None = None, format: str = _FORMAT
    ) -> datetime.datetime | None:
        """Same as section(section).get_datetime(key, default, format)."""
        return self.section(section).get_datetime(key, default, format)

    def save(self) -> None:
        """Saves pending changes. OSError or ConfigError if they cannot be saved; they stay in memory."""
        self._file.save()

    def close(self) -> None:
        """Saves as save() does, then closes: ConfigError for every later use. A second close() does nothing."""
        self._file.close()

    def __enter__(self) -> Config:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __reduce__(self) -> NoReturn:
        raise TypeError("an open file cannot be copied or pickled")
