"""The errors that the package raises. All are subclasses of Error, and of the built-in exception that
people expect in the same place."""
from __future__ import annotations

import errno
import os
from typing import TYPE_CHECKING

from ._slotted import Record

if TYPE_CHECKING:
    from ._check import Report

__all__ = [
    "CheckError",
    "ClosedError",
    "ConcurrentUseError",
    "Error",
    "FileError",
    "JsonError",
    "JsonMessage",
    "LibraryError",
    "MissingFileError",
    "NoSuchObject",
    "OutOfRange",
    "ParseError",
    "SaveError",
    "ToolkitError",
    "TypeMismatch",
    "UnknownName",
]


class Error(Exception):
    """The base of all errors of this package."""


class LibraryError(Error, ImportError):
    """The libraries were not found, or have another version. The message tells what was looked for."""


class ClosedError(Error, ValueError):
    """A scene was used after it was closed."""


class ConcurrentUseError(Error, RuntimeError):
    """Two threads used one scene at the same time. A scene belongs to one thread at a time; share a
    lock, or give each thread a scene of its own."""


class NoSuchObject(Error, LookupError):
    """A slot has no live object: it never had one, or the object was removed."""


class UnknownName(Error, AttributeError, KeyError):
    """There is no class, group, slot, field, label or address of this name."""

    def __str__(self) -> str:
        return str(self.args[0]) if self.args else ""


class TypeMismatch(Error, TypeError):
    """A value does not have the type that is expected. The message is the library's reason."""


class OutOfRange(Error, ValueError, OverflowError):
    """A number is outside the range of its type."""


class ParseError(Error, ValueError):
    """A text is not a type or a value.

    line, column: 1 for the first, in characters; None where the library tells no place.
    offset: bytes from the start of the text, or None.
    """

    def __init__(self, message: str, line: int | None = None, column: int | None = None,
                 offset: int | None = None) -> None:
        super().__init__(message)
        self.line = line
        self.column = column
        self.offset = offset


class ToolkitError(Error):
    """A function of the toolkit failed.

    code: the name of the status, such as "SCENE_INCOMPLETE".
    """

    def __init__(self, message: str, code: str = "INTERNAL_ERROR") -> None:
        super().__init__(message)
        self.code = code

    def __reduce__(self) -> tuple[object, ...]:
        return type(self), (str(self), self.code)


# The number of the system for a code, where there is one for all its cases.
_NUMBERS = {"FILE_MISSING": errno.ENOENT, "FILE_IS_FOLDER": errno.EISDIR, "SAVE_NO_FOLDER": errno.ENOENT,
            "SAVE_DENIED": errno.EACCES, "SAVE_NO_SPACE": errno.ENOSPC, "SAVE_FAILED": errno.EIO}


class _PathError(ToolkitError, OSError):
    """code: the name of the status. errno: the number of the system that is nearest to it, or None. filename: the
    path, where it is known."""

    def __init__(self, message: str, code: str = "INTERNAL_ERROR", filename: str | None = None) -> None:
        super().__init__(message, code)
        number = _NUMBERS.get(code)
        if number is not None:
            self.errno = number
            self.strerror = os.strerror(number)
        self.filename = filename

    def __str__(self) -> str:
        return str(self.args[0])

    def __reduce__(self) -> tuple[object, ...]:
        return type(self), (str(self), self.code, self.filename)


class FileError(_PathError):
    """A file cannot be read: it is missing, unreadable, a folder, or no regular file."""


class MissingFileError(FileError, FileNotFoundError):
    """There is no such file."""


class SaveError(_PathError):
    """A file cannot be written. The file that was there before stands as it was."""


class CheckError(ToolkitError, ValueError):
    """A scene file is not safe to read.

    report: the Report of the check.
    """

    def __init__(self, message: str, code: str, report: Report | None = None) -> None:
        super().__init__(message, code)
        self.report = report

    def __reduce__(self) -> tuple[object, ...]:
        return type(self), (str(self), self.code, self.report)


class JsonMessage(Record):
    """What is wrong at one place of a JSON document.

    code: a stable name in capitals. line, column: 1 for the first, 0 if unknown. offset: bytes, or
    None. pointer: the place as a JSON pointer. message: what was found and what was expected.
    """

    __slots__ = ("code", "column", "line", "message", "offset", "pointer")

    def __init__(self, code: str, line: int, column: int, offset: int | None, pointer: str,
                 message: str) -> None:
        self.code = code
        self.line = line
        self.column = column
        self.offset = offset
        self.pointer = pointer
        self.message = message

    def __repr__(self) -> str:
        return f"{self.line}:{self.column}: {self.pointer}: {self.message}"


class JsonError(ToolkitError, ValueError):
    """A JSON document is not a scene, a value or a patch.

    messages: all that is wrong with it, up to the number that was asked for. truncated: whether there is
    more.
    """

    def __init__(self, message: str, code: str = "JSON_INVALID", messages: tuple[JsonMessage, ...] = (),
                 truncated: bool = False) -> None:
        super().__init__(message, code)
        self.messages = messages
        self.truncated = truncated

    def __reduce__(self) -> tuple[object, ...]:
        return type(self), (str(self), self.code, self.messages, self.truncated)
