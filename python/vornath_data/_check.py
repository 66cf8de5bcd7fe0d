"""The check of scene files and its report.

    >>> import vornath_data as vd
    >>> report = vd.check(b"no scene")
    >>> report.valid, report.messages[0].code
    (False, 'FILE_HEADER')
"""
from __future__ import annotations

import ctypes
import json
import os
import uuid
from collections.abc import Callable, Iterator
from typing import TYPE_CHECKING, Any

from . import _declarations
from ._library import long, quick
from ._slotted import Record, Slotted
from ._status import path_bytes, size_limit, take_toolkit_string, toolkit_error
from .errors import CheckError, FileError

if TYPE_CHECKING:
    from .scene import Scene

_NO_OFFSET = 2**64 - 1


class Message(Record):
    """A message of a report.

    code: a stable name such as "FILE_TRUNCATED". severity: "error" or "warning". offset: bytes from the
    start of the file, or None. address: what it is about, such as "Camera/0/slots/program". message: what
    was found and what was expected.
    """

    __slots__ = ("address", "code", "message", "offset", "severity")

    def __init__(self, code: str, severity: str, offset: int | None, address: str, message: str) -> None:
        self.code = code
        self.severity = severity
        self.offset = offset
        self.address = address
        self.message = message

    def __repr__(self) -> str:
        place = f" {self.address}" if self.address else ""
        return f"{self.severity} {self.code}{place}: {self.message}"


class Report(Slotted):
    """The outcome of a check. It is true if there is no error, and iterates over its messages.

    valid: whether there is no error. errors, warnings: how many were found. truncated: whether more were
    found than there are messages. messages: the messages, in the order of the file. file: the path, or
    None. id, version, size, asset_bytes, value_bytes, value_blocks, open_memory: what was learned about
    the file, up to the first error; sizes in bytes. objects: for each class (slots, live objects).
    json: the report as a JSON document.
    """

    __slots__ = ("asset_bytes", "errors", "file", "id", "json", "messages", "objects", "open_memory", "size",
                 "truncated", "valid", "value_blocks", "value_bytes", "version", "warnings")

    def __init__(self, handle: ctypes.c_void_p, file: str | None) -> None:
        self.file = file
        self.valid = bool(quick.vrtkReportValid(handle))
        self.errors = int(quick.vrtkReportErrorCount(handle))
        self.warnings = int(quick.vrtkReportWarningCount(handle))
        self.truncated = bool(quick.vrtkReportTruncated(handle))
        messages = []
        for index in range(quick.vrtkReportMessageCount(handle)):
            one = _declarations.vrtkMessage.from_address(quick.vrtkReportMessage(handle, index))
            messages.append(Message(one.code.decode(), "error" if one.severity else "warning",
                                    None if one.offset == _NO_OFFSET else one.offset,
                                    one.address.decode("utf-8", "replace"),
                                    one.message.decode("utf-8", "replace")))
        self.messages = tuple(messages)
        info = _declarations.vrtkInfo.from_address(quick.vrtkReportInfo(handle))
        self.id = uuid.UUID(bytes=bytes(info.id))
        self.version = int(info.version)
        self.size = int(info.size)
        self.asset_bytes = int(info.assetBytes)
        self.value_bytes = int(info.valueBytes)
        self.value_blocks = int(info.valueBlocks)
        self.open_memory = int(info.openMemory)
        self.objects: dict[str, tuple[int, int]] = {}
        for number, name in _class_names():
            counts = quick.vrtkReportClass(handle, number)
            self.objects[name] = counts.slots, counts.live
        text, error = ctypes.c_void_p(), ctypes.c_void_p()
        status = quick.vrtkReportJson(handle, ctypes.byref(text), ctypes.byref(error))
        if status:
            raise toolkit_error(status, error)
        self.json = take_toolkit_string(text.value)

    def __bool__(self) -> bool:
        return self.valid

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Report):
            return NotImplemented
        return self.json == other.json

    def __hash__(self) -> int:
        return hash(self.json)

    def __iter__(self) -> Iterator[Message]:
        return iter(self.messages)

    def __len__(self) -> int:
        return len(self.messages)

    def to_dict(self) -> dict[str, Any]:
        """Returns the JSON document as Python objects."""
        found: dict[str, Any] = json.loads(self.json)
        return found

    def __repr__(self) -> str:
        words = "valid" if self.valid else "not valid"
        return f"<Report: {words}, {self.errors} errors, {self.warnings} warnings>"

    def __str__(self) -> str:
        return "\n".join(repr(message) for message in self.messages)

    def _repr_html_(self) -> str:
        from ._html import report_html
        return report_html(self)


_names: list[tuple[int, str]] = []


def _class_names() -> list[tuple[int, str]]:
    if not _names:
        _names.extend((number, quick.vrdmObjectName(number).decode())
                      for number in range(quick.vrdmObjectTypeCount()))
    return _names


def _limits(max_memory: int, max_messages: int) -> Any:
    return _declarations.vrtkLimits(ctypes.sizeof(_declarations.vrtkLimits), size_limit("max_memory", max_memory),
                                    size_limit("max_messages", max_messages))


def _take(handle: ctypes.c_void_p, file: str | None) -> Report:
    try:
        return Report(handle, file)
    finally:
        quick.vrtkReportDestroy(handle)


def check(source: str | os.PathLike[str] | bytes, *, max_memory: int = 0, max_messages: int = 100) -> Report:
    """Checks a scene file, or its bytes, without reading it into a scene.

    max_memory: report a file that takes more bytes to read as an error; 0 for no limit. max_messages: the
    messages to keep; all are counted. Raises FileError for a file that cannot be read at all.
    """
    report, error = ctypes.c_void_p(), ctypes.c_void_p()
    limits = ctypes.byref(_limits(max_memory, max_messages))
    if isinstance(source, (bytes, bytearray, memoryview)):
        data = bytes(source)
        file = None
        status = long.vrtkCheckBytes(data, len(data), limits, ctypes.byref(report), ctypes.byref(error))
    else:
        file = os.fspath(source)
        status = long.vrtkCheckFile(path_bytes(source), limits, ctypes.byref(report), ctypes.byref(error))
    if status:
        raise toolkit_error(status, error, file)
    return _take(report, file)


def check_codes() -> dict[str, str]:
    """Returns the codes that messages of a report may have, with the severity of each, "error" or
    "warning"."""
    return {quick.vrtkCheckCode(index).decode(): "error" if quick.vrtkCheckCodeSeverity(index) else "warning"
            for index in range(quick.vrtkCheckCodeCount())}


def json_checker(max_memory: int, max_messages: int) -> Callable[[str], tuple[bytes, bool]]:
    """Returns a function that returns the report of a file as a JSON document, and whether the file is valid.
    For one thread, and many small files: what a call needs is made once, and the interpreter's lock is held."""
    report, text, error = ctypes.c_void_p(), ctypes.c_void_p(), ctypes.c_void_p()
    options = _limits(max_memory, max_messages)
    limits, to_report, to_text, to_error = map(ctypes.byref, (options, report, text, error))
    check_file, write, valid = quick.vrtkCheckFile, quick.vrtkReportJson, quick.vrtkReportValid
    destroy, free, string_at, encode = (
        quick.vrtkReportDestroy, quick.vrtkStringDestroy, ctypes.string_at, path_bytes)

    def check_json(path: str) -> tuple[bytes, bool]:
        report.value = text.value = error.value = None
        status = check_file(encode(path), limits, to_report, to_error)
        if status:
            raise toolkit_error(status, error, path)
        status = write(report, to_text, to_error)
        good = bool(valid(report))
        destroy(report)
        if status:
            raise toolkit_error(status, error)
        document = string_at(text.value or 0)
        free(text)
        return document, good

    return check_json


def open_scene(source: str | os.PathLike[str] | bytes, max_memory: int, max_messages: int,
               trust: bool) -> int:
    """Returns the handle of a scene that was read."""
    scene, report, error = ctypes.c_void_p(), ctypes.c_void_p(), ctypes.c_void_p()
    if trust and not isinstance(source, (bytes, bytearray, memoryview)):
        address: int | None = long.vrdmDeserialize(path_bytes(source))
        if not address:
            raise FileError(f"{os.fspath(source)}: it cannot be read, is no scene file, or has another "
                            "version", "FILE_UNREADABLE", os.fspath(source))
        return address
    limits = ctypes.byref(_limits(max_memory, max_messages))
    if isinstance(source, (bytes, bytearray, memoryview)):
        data = bytes(source)
        file = None
        status = long.vrtkSceneOpenBytes(data, len(data), limits, ctypes.byref(scene), ctypes.byref(report),
                                         ctypes.byref(error))
    else:
        file = os.fspath(source)
        status = long.vrtkSceneOpen(path_bytes(source), limits, ctypes.byref(scene), ctypes.byref(report),
                                    ctypes.byref(error))
    if not status:
        quick.vrtkReportDestroy(report)
        assert scene.value is not None
        return scene.value
    problem = toolkit_error(status, error, file)
    if report:
        made = _take(report, file)
        if isinstance(problem, CheckError):
            problem.report = made
    raise problem


def validate(scene: Scene, max_messages: int) -> Report:
    """Returns the report of a scene in memory."""
    report, error = ctypes.c_void_p(), ctypes.c_void_p()
    limits = _limits(0, max_messages)
    with scene._exclusive(change=False) as pointer:
        status = long.vrtkSceneValidate(pointer, ctypes.byref(limits), ctypes.byref(report),
                                        ctypes.byref(error))
    if status:
        raise toolkit_error(status, error)
    return _take(report, None)


__all__ = ["Message", "Report", "check", "check_codes"]
