"""What the library's failures are raised as."""
from __future__ import annotations

_REASONS = {
    1: "a section, key or value cannot be written so",
    2: "the file cannot be opened, read or written",
    3: "the name is there already",
    4: "a file cannot be copied to itself",
    5: "the file is closed",
    6: "the file is open for reading only",
    7: "the line is no blank, comment, [section] or key",
}


class Error(Exception):
    """A call of the library has failed for a reason that is not the system's. The system's reasons are OSError."""


class ConfigError(Error):
    """A settings file cannot be read as it is, or a change is refused.

    code: the engine's number (7: a line that cannot be parsed; 6: read-only; 5: closed; 2: no reason known)
    line: the first line that the load could not take, counted from 1; 0 when there is none
    path: the file
    """

    def __init__(self, code: int, line: int, path: str) -> None:
        self.code = code
        self.line = line
        self.path = path
        super().__init__(code, line, path)

    def __str__(self) -> str:
        place = f"{self.path}:{self.line}" if self.line else self.path
        return f"{place}: {_REASONS.get(self.code, f'error {self.code}')}"
