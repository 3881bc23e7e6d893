"""The library's failures as exceptions."""
from __future__ import annotations

_REASONS = {
    1: "the file cannot hold this section, key or value",
    2: "the file cannot be opened, read or written",
    3: "the name already exists",
    4: "a file cannot be copied to itself",
    5: "the file is closed",
    6: "the file is open for reading only",
    7: "expected an empty line, a comment, [section] or key = value",
}


class Error(Exception):
    """A failure of the library. Failures of the system are OSError."""


class ConfigError(Error):
    """A settings file cannot be parsed, or a change is refused.

    code: the library's number (7: a line that cannot be parsed; 6: read-only; 5: closed; 2: unknown reason)
    line: the first line that cannot be parsed, counted from 1; 0 when there is none
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
