"""JSON, differences, digests and merging, over the toolkit."""
from __future__ import annotations

import ctypes
import json
import os
import sys
from collections.abc import Iterator
from typing import TYPE_CHECKING, Any

import numpy

from . import _declarations, _ending
from ._layout import plain_array
from ._library import long, quick
from ._objects import SceneClasses
from ._slotted import Record, Slotted
from ._status import bytes_of, path_bytes, save_error, size_limit, take_toolkit_string, toolkit_error
from .errors import JsonError, JsonMessage

if TYPE_CHECKING:
    from .scene import Scene

_NO_OFFSET = 2**64 - 1


def options_of(name: str, *members: Any) -> Any:
    """Returns a struct of options with its size and its members."""
    kind = getattr(_declarations, name)
    return kind(ctypes.sizeof(kind), *members)


def text_of(function: Any, *arguments: Any) -> str:
    """Calls a function of the toolkit that makes a string, and returns it."""
    text, error = ctypes.c_void_p(), ctypes.c_void_p()
    status = function(*arguments, ctypes.byref(text), ctypes.byref(error))
    if status:
        raise toolkit_error(status, error)
    return take_toolkit_string(text.value)


def _folder(path: str | os.PathLike[str] | None) -> bytes | None:
    return None if path is None else path_bytes(path)


# Files.

def write_file(path: str | os.PathLike[str], data: bytes | bytearray | memoryview | str, *,
               sync: bool = True) -> None:
    """Writes a file whole or not at all, as Scene.save() does: beside the target, which is then replaced.

    data: bytes, or a text that is written in UTF-8. sync: wait until the bytes are on the device. Raises
    SaveError; the file that was there before then stands as it was.
    """
    whole = data.encode() if isinstance(data, str) else bytes_of(data)
    options = options_of("vrtkSaveOptions", not sync)
    error = ctypes.c_void_p()
    status = long.vrtkFileSave(whole, len(whole), path_bytes(path), ctypes.byref(options), ctypes.byref(error))
    if status:
        raise save_error(status, error, path)


# JSON.

def _json_problem(status: int, error: ctypes.c_void_p, report: ctypes.c_void_p,
                  path: str | os.PathLike[str] | None = None) -> BaseException:
    problem = toolkit_error(status, error, path)
    messages = []
    truncated = False
    if report:
        truncated = bool(quick.vrtkJsonReportTruncated(report))
        for index in range(quick.vrtkJsonReportCount(report)):
            one = _declarations.vrtkJsonMessage.from_address(quick.vrtkJsonReportMessage(report, index))
            messages.append(JsonMessage(one.code.decode(), one.line, one.column,
                                        None if one.offset == _NO_OFFSET else one.offset,
                                        one.pointer.decode("utf-8", "replace"),
                                        one.message.decode("utf-8", "replace")))
        quick.vrtkJsonReportDestroy(report)
    if isinstance(problem, JsonError):
        problem.messages = tuple(messages)
        problem.truncated = truncated
    return problem


def export_json(scene: Scene, path: str | os.PathLike[str] | None, full: bool, inline: bool) -> str | None:
    """Writes the JSON form of a scene to a file, or returns it."""
    options = options_of("vrtkExportOptions", full, inline, None, None)
    error = ctypes.c_void_p()
    if path is None:
        text, size = ctypes.c_void_p(), ctypes.c_uint64()
        with scene._exclusive(change=False) as pointer:
            status = long.vrtkSceneExportString(pointer, ctypes.byref(options), ctypes.byref(text),
                                                ctypes.byref(size), ctypes.byref(error))
        if status:
            raise toolkit_error(status, error)
        try:
            return ctypes.string_at(text.value or 0, size.value).decode("utf-8", "replace")
        finally:
            quick.vrtkStringDestroy(text)
    with scene._exclusive(change=False) as pointer:
        status = long.vrtkSceneExportFile(pointer, path_bytes(path), ctypes.byref(options),
                                          ctypes.byref(error))
    if status:
        raise save_error(status, error, path)
    return None


def build_scene(source: Any, asset_folder: str | os.PathLike[str] | None, max_memory: int,
                max_messages: int) -> int:
    """Returns the handle of the scene of a JSON document, its file, or Python objects of that form."""
    options = options_of("vrtkBuildOptions", _folder(asset_folder), size_limit("max_memory", max_memory),
                         size_limit("max_messages", max_messages))
    scene, report, error = ctypes.c_void_p(), ctypes.c_void_p(), ctypes.c_void_p()
    results = (ctypes.byref(options), ctypes.byref(scene), ctypes.byref(report), ctypes.byref(error))
    if isinstance(source, os.PathLike):
        status = long.vrtkSceneBuildFile(path_bytes(source), *results)
    else:
        data = json_bytes(source)
        status = long.vrtkSceneBuild(data, len(data), *results)
    if status:
        raise _json_problem(status, error, report, source if isinstance(source, os.PathLike) else None)
    assert scene.value is not None
    return scene.value


def plain_json(thing: Any) -> Any:
    """Returns numbers and arrays of NumPy as JSON has them."""
    if isinstance(thing, (numpy.generic, numpy.ndarray)) and thing.dtype.kind in "biuf":
        return plain_array(thing, "JSON").tolist()
    raise TypeError(f"a {thing.__class__.__name__} is not in the JSON form of a scene")


def json_bytes(source: Any) -> bytes:
    """Returns a JSON text of a text, bytes or Python objects."""
    if isinstance(source, (bytes, bytearray, memoryview)):
        return bytes(source)
    if isinstance(source, str):
        return source.encode()
    return json.dumps(source, default=plain_json).encode()


def get_json(scene: Scene, address: str) -> str:
    """Returns what an address names, as JSON."""
    with scene._exclusive(change=False) as pointer:
        return text_of(long.vrtkSceneGet, pointer, _address(address))


def _address(address: str) -> bytes:
    if "\0" in address:
        raise ValueError("an address contains no NUL character")
    return address.encode()


def get_bytes(scene: Scene, address: str) -> bytes:
    """Returns a copy of the bytes that an address names."""
    data, size, error = ctypes.c_void_p(), ctypes.c_uint64(), ctypes.c_void_p()
    with scene._exclusive(change=False) as pointer:
        status = long.vrtkSceneGetBytes(pointer, _address(address), ctypes.byref(data), ctypes.byref(size),
                                        ctypes.byref(error))
        if status:
            raise toolkit_error(status, error)
        return ctypes.string_at(data.value or 0, size.value) if size.value else b""


def set_json(scene: Scene, address: str, text: str, limits: bool,
             asset_folder: str | os.PathLike[str] | None) -> None:
    """Replaces what an address names."""
    options = options_of("vrtkSetOptions", limits, _folder(asset_folder))
    error = ctypes.c_void_p()
    if "\0" in text:
        raise JsonError("a JSON text contains no NUL character")
    data = text.encode()
    with scene._exclusive() as pointer:
        status = long.vrtkSceneSet(pointer, _address(address), data, ctypes.byref(options),
                                   ctypes.byref(error))
    if status:
        raise toolkit_error(status, error)


def apply_patch(scene: Scene, patch: Any, limits: bool, asset_folder: str | os.PathLike[str] | None) -> int:
    """Returns the handle of a new scene."""
    options = options_of("vrtkSetOptions", limits, _folder(asset_folder))
    data = json_bytes(patch)
    made, report, error = ctypes.c_void_p(), ctypes.c_void_p(), ctypes.c_void_p()
    with scene._exclusive(change=False) as pointer:
        status = long.vrtkScenePatch(pointer, data, len(data), ctypes.byref(options), ctypes.byref(made),
                                     ctypes.byref(report), ctypes.byref(error))
    if status:
        raise _json_problem(status, error, report)
    assert made.value is not None
    return made.value


# Differences.

class Difference(Slotted):
    """A difference between two scenes.

    address: a path in the JSON form, such as "Camera/0/groups/General/near_distance". kind: "changed",
    "removed" (only the first scene has it) or "added". old, new: what stands there, as Python objects of
    the JSON form; None where there is nothing, and for a whole object.
    """

    __slots__ = ("address", "kind", "new", "new_text", "old", "old_text")

    def __init__(self, address: str, kind: str, old: str | None, new: str | None) -> None:
        self.address = address
        self.kind = kind
        self.old_text = old
        self.new_text = new
        self.old = None if old is None else json.loads(old)
        self.new = None if new is None else json.loads(new)

    def __repr__(self) -> str:
        if self.kind == "changed":
            return f"{self.address}: {self.old_text} -> {self.new_text}"
        text = self.old_text if self.kind == "removed" else self.new_text
        return f"{self.address}: {self.kind}" + (f" {text}" if text is not None else "")

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Difference):
            return NotImplemented
        return repr(self) == repr(other)

    def __hash__(self) -> int:
        return hash(repr(self))


class Differences(Slotted):
    """The differences between two scenes, in the order of the JSON form: a sequence, and true if there is
    one.

    found: the number that was found, also where fewer are kept. json: the list as a JSON document.
    """

    __slots__ = ("_entries", "found", "json")

    def __init__(self, handle: ctypes.c_void_p) -> None:
        self.found = int(quick.vrtkDiffFound(handle))
        entries = []
        for index in range(quick.vrtkDiffCount(handle)):
            one = _declarations.vrtkDiffEntry.from_address(quick.vrtkDiffEntryAt(handle, index))
            entries.append(Difference(
                one.address.decode("utf-8", "replace"), quick.vrtkDiffKindName(one.kind).decode(),
                None if one.oldText is None else one.oldText.decode("utf-8", "replace"),
                None if one.newText is None else one.newText.decode("utf-8", "replace")))
        self._entries = tuple(entries)
        self.json = text_of(long.vrtkDiffJson, handle)

    @property
    def equal(self) -> bool:
        """Whether no difference was found."""
        return self.found == 0

    def __bool__(self) -> bool:
        return self.found > 0

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Differences):
            return NotImplemented
        return self.json == other.json

    def __hash__(self) -> int:
        return hash(self.json)

    def __len__(self) -> int:
        return len(self._entries)

    def __getitem__(self, index: Any) -> Any:
        return self._entries[index]

    def __iter__(self) -> Iterator[Difference]:
        return iter(self._entries)

    def __str__(self) -> str:
        return "\n".join(repr(one) for one in self._entries)

    def __repr__(self) -> str:
        return f"<Differences: {self.found}>"

    def _repr_html_(self) -> str:
        from ._html import differences_html
        return differences_html(self)


class _Both:
    """Takes two scenes, which may be one, in the order of their addresses."""

    __slots__ = ("_held",)

    def __init__(self, a: Scene, b: Scene) -> None:
        for one in (a, b):  # before either is taken
            if not isinstance(one, SceneClasses):
                raise TypeError(f"a Scene is expected, not {one.__class__.__name__}")
        self._held = (a, b)

    def __enter__(self) -> tuple[Any, Any]:
        a, b = self._held
        first = a._exclusive(change=False)
        first._frame = sys._getframe(1)  # The scenes are held longer than this call.
        pointer = first.__enter__()
        if a is b:
            self._held = (first, None)  # type: ignore[assignment]
            return pointer, pointer
        try:
            second = b._exclusive(change=False)
            second._frame = first._frame
            other = second.__enter__()
        except BaseException:
            first.__exit__()
            raise
        self._held = (first, second)  # type: ignore[assignment]
        return pointer, other

    def __exit__(self, *arguments: object) -> None:
        for one in self._held:
            if one is not None:
                one.__exit__()


def _diff_options(tolerance: float, absolute: float, limit: int, ids: bool) -> Any:
    return options_of("vrtkDiffOptions", tolerance, absolute, size_limit("limit", limit), ids)


def diff(a: Scene, b: Scene, *, tolerance: float = 0.0, absolute: float = 0.0, limit: int = 0,
         ids: bool = False) -> Differences:
    """Compares two scenes, and returns their differences by address.

    tolerance: floats are equal if they differ by no more than this times the larger magnitude. absolute: or
    by no more than this. limit: the differences to keep; 0 keeps all. ids: compare the ids of the scenes
    and their assets, too. Raises ToolkitError for a tolerance that is negative or not finite.
    """
    options = _diff_options(tolerance, absolute, limit, ids)
    found, error = ctypes.c_void_p(), ctypes.c_void_p()
    with _Both(a, b) as (first, second):
        status = long.vrtkSceneDiff(first, second, ctypes.byref(options), ctypes.byref(found),
                                    ctypes.byref(error))
    if status:
        raise toolkit_error(status, error)
    try:
        return Differences(found)
    finally:
        quick.vrtkDiffDestroy(found)


def make_patch(a: Scene, b: Scene, *, tolerance: float = 0.0, absolute: float = 0.0) -> list[dict[str, Any]]:
    """Returns the patch (RFC 6902) that leads from the full JSON form of one scene to that of another.
    Scene.patched() applies it."""
    options = _diff_options(tolerance, absolute, 0, False)
    with _Both(a, b) as (first, second):
        text = text_of(long.vrtkSceneDiffPatch, first, second, ctypes.byref(options))
    found: list[dict[str, Any]] = json.loads(text)
    return found


def equivalent(a: Scene, b: Scene) -> bool:
    """Tells whether two scenes have the same content in the same slots, as the library compares them: ids
    and free slots do not count, and a NaN in a group equals nothing."""
    result, error = ctypes.c_bool(), ctypes.c_void_p()
    with _Both(a, b) as (first, second):
        status = long.vrtkSceneEquivalent(first, second, ctypes.byref(result), ctypes.byref(error))
    if status:
        raise toolkit_error(status, error)
    return bool(result.value)


# Digests, print-outs, imports.

def digest(scene: Scene, ids: bool) -> str:
    """Returns the digest of a scene."""
    options = options_of("vrtkDigestOptions", ids)
    text, error = ctypes.create_string_buffer(65), ctypes.c_void_p()
    with scene._exclusive(change=False) as pointer:
        status = long.vrtkSceneDigest(pointer, ctypes.byref(options), text, ctypes.byref(error))
    if status:
        raise toolkit_error(status, error)
    return "sha256:" + text.value.decode()


def dump(scene: Scene) -> str:
    """Returns the library's own print-out."""
    pieces: list[bytes] = []

    @_declarations.vrtkWriteFunction  # type: ignore[misc]
    def write(address: int, size: int, context: object) -> int:
        if _ending.over():
            return 1  # It ends the print-out.
        pieces.append(ctypes.string_at(address, size))
        return 0

    error, call = ctypes.c_void_p(), object()
    with scene._exclusive(change=False) as pointer:
        _ending.begin(call)
        try:
            status = long.vrtkSceneDump(pointer, write, None, ctypes.byref(error))
        finally:
            del _ending.calls[call]
    if status:
        if _ending.over():
            _ending.hold()
        raise toolkit_error(status, error)
    return b"".join(pieces).decode("utf-8", "replace")


def merge(scene: Scene, source: Scene) -> dict[str, list[int | None]]:
    """Imports a scene into another, and returns which slot became which."""
    renumbering, error = ctypes.c_void_p(), ctypes.c_void_p()
    both: Any = _Both(scene, source)
    with both as (pointer, other):
        # The scene is changed: what its objects have seen is old.
        both._held[0]._change = True
        status = long.vrtkSceneImport(pointer, other, ctypes.byref(renumbering), ctypes.byref(error))
    if status:
        raise toolkit_error(status, error)
    try:
        found: dict[str, list[int | None]] = json.loads(text_of(long.vrtkRenumberingJson, renumbering))
        return found
    finally:
        quick.vrtkRenumberingDestroy(renumbering)


# The forms of the catalogue.

_FORMS = ("text", "json", "schema", "html", "markdown")


def catalogue_text(form: str = "text", part: str | None = None) -> str:
    """Returns the catalogue as "text", "json", "schema" (a JSON Schema of scenes in JSON), "html" (one
    page) or "markdown".

    part: a class such as "Camera", a group such as "Camera/General", or "scene". Raises UnknownName.
    """
    if form not in _FORMS:
        raise ValueError(f"a form is one of {', '.join(_FORMS)}, not {form!r}")
    return text_of(long.vrtkCatalogue, _FORMS.index(form), None if part is None else path_bytes(part))


class CatalogueChange(Record):
    """A change since a saved catalogue.

    code: a stable name such as "FIELD_REMOVED". breaking: whether an old file or host breaks. address:
    what changed. message: what was saved and what is there now.
    """

    __slots__ = ("address", "breaking", "code", "message")

    def __init__(self, code: str, breaking: bool, address: str, message: str) -> None:
        self.code = code
        self.breaking = breaking
        self.address = address
        self.message = message

    def __repr__(self) -> str:
        return f"{self.code} {self.address}: {self.message}"


def compare_catalogue(saved: Any) -> list[CatalogueChange]:
    """Returns what changed since a saved catalogue.

    saved: what catalogue_text("json") returned, or its Python objects. Raises JsonError.
    """
    data = json_bytes(saved)
    changes, error = ctypes.c_void_p(), ctypes.c_void_p()
    status = long.vrtkCatalogueCompare(data, len(data), ctypes.byref(changes), ctypes.byref(error))
    if status:
        raise toolkit_error(status, error)
    try:
        found = []
        for index in range(quick.vrtkCatalogueChangesCount(changes)):
            one = _declarations.vrtkCatalogueChange.from_address(
                quick.vrtkCatalogueChangesGet(changes, index))
            found.append(CatalogueChange(one.code.decode(), bool(one.breaking),
                                         one.address.decode("utf-8", "replace"),
                                         one.message.decode("utf-8", "replace")))
        return found
    finally:
        quick.vrtkCatalogueChangesDestroy(changes)


__all__ = ["CatalogueChange", "Difference", "Differences", "catalogue_text", "compare_catalogue", "diff",
           "equivalent", "make_patch", "write_file"]
