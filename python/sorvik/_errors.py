# SPDX-License-Identifier: MIT
"""The exceptions of the package."""

from __future__ import annotations

import errno
import os
from typing import Any, Callable

_ERRNO_OF_TEXT = {os.strerror(number): number for number in errno.errorcode}


class Error(Exception):
    """The base of all exceptions of this package. `path` is what the failure is about, or ""."""

    def __init__(self, message: str, path: str = "") -> None:
        super().__init__(message, path)
        self.message = message
        self.path = path

    def __str__(self) -> str:
        return f"{self.path}: {self.message}" if self.path else self.message

    def __reduce__(self) -> tuple[Callable[..., Any], tuple[str, str]]:
        return type(self), (self.message, self.path)


class NotACard(Error):
    """The path exists, but no provider, or not the wanted one, supports it."""


class _FileError(Error, OSError):
    """`errno` is None if the system didn't say why."""

    def __init__(self, message: str, path: str = "") -> None:
        super().__init__(message, path)
        self.errno = _ERRNO_OF_TEXT.get(message)  # type: ignore[assignment]
        self.strerror = message
        self.filename = path


class Gone(_FileError, FileNotFoundError):
    """The path doesn't exist, such as that of a card that was removed."""


class Unreadable(_FileError):
    """The path exists and can't be read."""


class NoEntry(Error, LookupError):
    """The place has no entry with this key."""


class NoPicture(Error, LookupError):
    """The entry has no picture."""


class Aborted(Error):
    """The operation was aborted."""


class TimedOut(Error, TimeoutError):
    """The operation was aborted because it took longer than its timeout."""


class InvalidArgument(Error, ValueError):
    """An argument is invalid, such as an unknown provider."""


class JoinWarning(UserWarning):
    """A join list lacks something, such as a last part that is missing."""


# By the status of the C interface.
_ERROR_OF_STATUS: dict[int, type[Error]] = {
    1: InvalidArgument,
    3: NotACard,
    4: Gone,
    5: Unreadable,
    6: NoEntry,
    7: NoPicture,
    8: Aborted,
}


def error_of(status: int, message: str, path: str) -> Error:
    """Returns the exception for a status of the C interface."""
    return _ERROR_OF_STATUS.get(status, Error)(message, path)
