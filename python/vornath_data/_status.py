"""Turns the error objects of both libraries into exceptions."""
from __future__ import annotations

import ctypes
import difflib
import os
from collections.abc import Iterable, Mapping
from typing import Any, NoReturn

from . import _declarations
from ._library import quick
from .errors import (
    CheckError,
    Error,
    FileError,
    JsonError,
    MissingFileError,
    OutOfRange,
    ParseError,
    SaveError,
    ToolkitError,
    TypeMismatch,
    UnknownName,
)

OUT_OF_MEMORY = 1  # VRNT_OUT_OF_MEMORY


def value_error(error: ctypes.c_void_p) -> Error | MemoryError:
    """Returns the exception of an error object of the vrnt functions, and destroys the object."""
    code = quick.vrntValuesErrorCode(error)
    message = quick.vrntValuesErrorMessage(error).decode("utf-8", "replace")
    quick.vrntValuesErrorDestroy(error)
    return MemoryError(message) if code == OUT_OF_MEMORY else Error(message)


def take_string(address: int | None) -> str:
    """Returns a string that a vrnt function made, and destroys it."""
    if not address:
        return ""
    try:
        return ctypes.string_at(address).decode("utf-8", "replace")
    finally:
        quick.vrntDestroyString(address)


def take_toolkit_string(address: int | None) -> str:
    """Returns a string that a toolkit function made, and destroys it."""
    if not address:
        return ""
    try:
        return ctypes.string_at(address).decode("utf-8", "replace")
    finally:
        quick.vrtkStringDestroy(address)


def toolkit_error(status: int, error: ctypes.c_void_p,
                  path: str | os.PathLike[str] | None = None) -> Error | MemoryError:
    """Returns the exception of a status and an error object of the toolkit, and destroys the object."""
    file = None if path is None else os.fspath(path)
    name_bytes = quick.vrtkStatusName(status)
    code = name_bytes.decode() if name_bytes else str(status)
    if error:
        message = quick.vrtkErrorMessage(error).decode("utf-8", "replace")
        place = _place(error)
        quick.vrtkErrorDestroy(error)
    else:
        message, place = code, (None, None, None)
    if code == "OUT_OF_MEMORY":
        return MemoryError(message)
    if code == "TEXT_INVALID":
        return ParseError(message, *place)
    if code in ("FILE_NO_SCENE", "FILE_VERSION", "FILE_DAMAGED", "FILE_TOO_LARGE"):
        return CheckError(message, code)
    if code == "FILE_MISSING":
        return MissingFileError(message, code, file)
    if code.startswith("FILE_"):
        return FileError(message, code, file)
    if code.startswith("SAVE_"):
        return SaveError(message, code, file)
    if code in ("JSON_INVALID", "PATCH_FAILED", "CATALOGUE_INVALID"):
        return JsonError(message, code)
    if code in ("ADDRESS_UNKNOWN", "CATALOGUE_UNKNOWN"):
        return UnknownName(message)
    return ToolkitError(message, code)


def save_error(status: int, error: ctypes.c_void_p, path: str | os.PathLike[str]) -> Error | MemoryError:
    """As toolkit_error(), for a call that writes a file: what is wrong with the file is why it is not saved."""
    problem = toolkit_error(status, error, path)
    if isinstance(problem, FileError):
        return SaveError(str(problem), problem.code, problem.filename)
    return problem


def _place(error: ctypes.c_void_p) -> tuple[int | None, int | None, int | None]:
    kind = getattr(_declarations, "vrtkTextPlace", None)
    if kind is None:
        return None, None, None
    place = kind()
    if not quick.vrtkErrorPlace(error, ctypes.byref(place)):
        return None, None, None
    return place.line, place.column, place.offset


def parse_error(error: ctypes.c_void_p, parse: Any, destroy: Any, text: str) -> ParseError | MemoryError:
    """Returns the exception of an error object of a text that did not parse, and destroys the object.
    `parse` is the function of the toolkit that tells the place."""
    problem = value_error(error)
    if isinstance(problem, MemoryError):
        return problem
    made, told = ctypes.c_void_p(), ctypes.c_void_p()
    status = parse(text.encode(), ctypes.byref(made), ctypes.byref(told))
    if not status:
        destroy(made)
        return ParseError(str(problem))
    found = toolkit_error(status, told)
    if not isinstance(found, ParseError):
        return ParseError(str(problem))
    return ParseError(str(problem), found.line, found.column, found.offset)


def nul_error(words: str, text: str) -> ParseError:
    """Returns the exception of a text with a NUL character."""
    before = text[:text.index("\0")]
    return ParseError(words, before.count("\n") + 1, len(before) - before.rfind("\n"), len(before.encode()))


def path_bytes(path: Any) -> bytes:
    """Returns a path for a C function, which would read it to the first NUL alone."""
    if isinstance(path, int):
        raise TypeError(f"a path is expected, not {path!r}")
    data = os.fsencode(path)
    if b"\0" in data:
        raise ValueError("embedded null byte")
    return data


def whole_number(name: str, thing: Any, low: int | None = None, high: int | None = None) -> int:
    """Returns an argument that is an integer. Raises TypeMismatch and OutOfRange for another one: the fields of C
    structs would take what is left of it."""
    if isinstance(thing, bool) or not hasattr(thing, "__index__"):
        raise TypeMismatch(f"{name}: an integer is expected, not {thing!r}")
    number = int(thing.__index__())
    if low is not None and high is not None and not low <= number <= high:
        raise OutOfRange(f"{name}: {number} is outside the range {low} to {high}")
    return number


def real_number(name: str, thing: Any) -> float:
    """Returns an argument that is a number."""
    if isinstance(thing, (str, bytes, bool)) or not (hasattr(thing, "__float__") or hasattr(thing, "__index__")):
        raise TypeMismatch(f"{name}: a number is expected, not {thing!r}")
    try:
        return float(thing)
    except OverflowError:
        raise OutOfRange(f"{name}: the number is outside the range of float") from None
    except (TypeError, ValueError):
        raise TypeMismatch(f"{name}: a number is expected, not {thing!r}") from None


def size_limit(name: str, thing: Any) -> int:
    """Returns a number of bytes or of things, which C counts with 64 bits."""
    return whole_number(name, thing, 0, 2**64 - 1)


def bytes_of(data: Any) -> bytes:
    """Returns the bytes of a buffer; bytes() of a number would be as many zeros."""
    return bytes(memoryview(data))


class Lookup(dict[str, Any]):
    """A dict that names the nearest key if one is missing."""

    def __init__(self, words: str, things: Mapping[str, Any]) -> None:
        super().__init__(things)
        self._words = words

    def __missing__(self, key: str) -> Any:
        raise UnknownName(f"{self._words} {key!r}{nearest(key, self)}")


def nearest(name: object, names: Iterable[str]) -> str:
    """Returns the end of a message: the nearest name, or nothing."""
    known, text = list(names), str(name)
    close = difflib.get_close_matches(text, known, 1)
    if not close and len(text) > 2:
        close = [one for one in known if text.lower() in one.lower()]
    return f"; did you mean {close[0]!r}?" if close else ""


def no_name(what: str, name: object, names: Iterable[str]) -> NoReturn:
    raise UnknownName(f"{what} {name!r}{nearest(name, names)}")
