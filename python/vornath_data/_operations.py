"""What batch runs for one file: functions that options make functions of a path, whose results are JSON;
and the process that runs them.

A worker of Dask has one such process. It gets files through its standard input and answers with their rows,
so that a file that takes too long or ends the process costs only its own row."""
from __future__ import annotations

import importlib
import inspect
import json
import os
import pickle
import struct
import sys
import time
import zlib
from collections.abc import Callable
from functools import lru_cache, partial
from typing import Any, BinaryIO

from ._slotted import Slotted

LENGTH = struct.Struct("<I")
HEAD = struct.Struct("<II")  # of an answer: its bytes, and the number of its rows
INTERVAL = 0.05  # seconds between answers: to answer for each file takes longer than to check a small one
# What a row begins with. Each goes on with the seconds; then come for a document its text and whether it is
# one that people look for, for a result the result, and for an error its code and its message.
DOCUMENT, RESULT, ERROR = 0, 1, 2
FileRow = tuple[Any, ...]
READY = b"ready\n"  # what the process writes when it has started


class Document(Slotted):
    """A result as a JSON text, which is read when somebody asks for it.

    found: whether it is one that people look for: errors in a file, or differences.
    """

    __slots__ = ("found", "text")

    def __init__(self, text: bytes | str, found: bool = False) -> None:
        self.text = text
        self.found = found


def check(*, max_memory: int = 0, max_messages: int = 100) -> Callable[[str], Document]:
    """Returns the function that returns the report of the check of a file as a JSON document."""
    from ._check import json_checker
    check_json = json_checker(max_memory, max_messages)

    def work(path: str) -> Document:
        text, valid = check_json(path)
        return Document(text, not valid)
    return work


def info() -> Callable[[str], Document]:
    """Returns the function that returns what a check learns of a file: its id, its objects, its bytes."""
    from ._check import json_checker
    check_json = json_checker(0, 1)

    def work(path: str) -> Document:
        text, valid = check_json(path)
        found = json.loads(text)
        return Document(json.dumps({"size": found["size"], "valid": valid, **found["info"]}), not valid)
    return work


def digest(*, ids: bool = False) -> Callable[[str], dict[str, Any]]:
    """Returns the function that returns the digest of a scene."""
    from .scene import Scene

    def work(path: str) -> dict[str, Any]:
        with Scene.open(path) as scene:
            return {"digest": scene.digest(ids=ids)}
    return work


@lru_cache(maxsize=2)
def _reference(path: str, modified: int) -> Any:
    from .scene import Scene
    return Scene.open(path)


def diff(*, reference: str, tolerance: float = 0.0, absolute: float = 0.0,
         limit: int = 100) -> Callable[[str], Document]:
    """Returns the function that returns the differences from a reference scene to the scene of a file."""
    from ._tools import diff as compare
    from .scene import Scene

    def work(path: str) -> Document:
        first = _reference(reference, os.stat(reference).st_mtime_ns)
        with Scene.open(path) as scene:
            found = compare(first, scene, tolerance=tolerance, absolute=absolute, limit=limit)
            return Document(found.json, not found.equal)
    return work


def export_target(path: str, output: str, root: str) -> str:
    """Returns the file in the folder `output` for the JSON form of a scene. Raises ValueError for a path that
    does not lie in `root`."""
    place = os.path.relpath(path, root)
    if place.split(os.sep)[0] == os.pardir:
        raise ValueError(f"{path} is not in the folder {root}, so that its place in {output} is not known; give the "
                         "root of all files")
    return os.path.join(output, os.path.splitext(place)[0] + ".json")


def export(*, output: str, root: str = ".", full: bool = False,
           inline: bool = False) -> Callable[[str], dict[str, Any]]:
    """Returns the function that writes the JSON form of a scene into the folder `output`, under its path from
    `root`."""
    from .scene import Scene

    def work(path: str) -> dict[str, Any]:
        target = export_target(path, output, root)
        os.makedirs(os.path.dirname(target) or ".", exist_ok=True)
        with Scene.open(path) as scene:
            scene.to_json(target, full=full, inline=inline)
        return {"output": target}
    return work


OPERATIONS: dict[str, Callable[..., Any]] = {
    "check": check, "info": info, "digest": digest, "diff": diff, "export": export}


def load(work: dict[str, Any]) -> Callable[[str], Any]:
    """Returns the function that a description of work names."""
    if work["kind"] == "operation":
        made: Callable[[str], Any] = OPERATIONS[work["name"]](**work["options"])
        return made
    if work["kind"] == "import":
        for folder in work["path"]:
            if folder not in sys.path:
                sys.path.append(folder)
        module, _, name = work["name"].partition(":")
        function: Any = importlib.import_module(module)
        for part in name.split("."):
            function = getattr(function, part)
    else:
        function = pickle.loads(work["function"])
    wanted: bool | None = work["scene"]
    if takes_scene(function) if wanted is None else wanted:
        return partial(_with_scene, function)
    of_path: Callable[[str], Any] = function
    return of_path


def takes_scene(function: Callable[..., Any]) -> bool:
    """Tells whether the first parameter of a function is a scene: by its annotation, or else its name."""
    try:
        first = next(iter(inspect.signature(function).parameters.values()))
    except (StopIteration, TypeError, ValueError):
        return False
    if first.annotation is first.empty:
        return first.name == "scene"
    name = first.annotation if isinstance(first.annotation, str) else getattr(first.annotation, "__name__", "")
    return name.rpartition(".")[2] == "Scene"


def _with_scene(function: Callable[[Any], Any], path: str) -> Any:
    from .scene import Scene
    with Scene.open(path) as scene:
        return function(scene)


def failed_row(problem: BaseException, seconds: float = 0.0) -> FileRow:
    """Returns the row of an exception."""
    name = problem.__class__.__name__
    try:
        code: Any = getattr(problem, "code", None)
        words = str(problem)
    except Exception as other:
        code, words = None, f"the message cannot be read: {other.__class__.__name__}"
    return ERROR, seconds, code if code and isinstance(code, str) else name, words


def run_one(function: Callable[[str], Any], path: str) -> FileRow:
    """Returns the row of a file, with a result as a pickle of its own: one that cannot be sent, or cannot be
    read where it arrives, costs no other row."""
    start = time.perf_counter()
    try:
        result = function(path)
        seconds = time.perf_counter() - start
        if result.__class__ is Document:
            return DOCUMENT, seconds, result.text, result.found
        return RESULT, seconds, pickle.dumps(result)
    except Exception as problem:
        return failed_row(problem, time.perf_counter() - start)


def _fail(problem: Exception, path: str) -> None:
    """Stands for a function that cannot be loaded."""
    raise problem


def pack(rows: list[FileRow]) -> bytes:
    """Returns rows as bytes. The documents of many files are much alike, so that they take little time to
    compress, and less than the processes between here and the client would take to pass them on."""
    return zlib.compress(pickle.dumps(rows), 1)


def unpack(data: bytes) -> list[FileRow]:
    """Returns the rows of bytes that pack() made, with their results."""
    rows: list[FileRow] = pickle.loads(zlib.decompress(data))
    for number, row in enumerate(rows):
        if row[0] == RESULT:
            try:
                rows[number] = RESULT, row[1], pickle.loads(row[2])
            except (Exception, SystemExit) as problem:
                rows[number] = failed_row(problem, row[1])
    return rows


def _read(stream: BinaryIO) -> Any:
    head = stream.read(LENGTH.size)
    if len(head) < LENGTH.size:
        raise EOFError
    return pickle.loads(stream.read(LENGTH.unpack(head)[0]))


def serve() -> None:
    """Runs files as they come, until there are no more."""
    answers = os.fdopen(os.dup(1), "wb")
    questions = os.fdopen(os.dup(0), "rb")
    os.dup2(2, 1)  # What a function prints goes to standard error.
    nothing = os.open(os.devnull, os.O_RDONLY)
    os.dup2(nothing, 0)  # A function that reads standard input finds nothing there.
    os.close(nothing)
    answers.write(READY)
    answers.flush()
    loaded: dict[bytes, Callable[[str], Any]] = {}

    def send(rows: list[FileRow]) -> None:
        data = pack(rows)
        answers.write(HEAD.pack(len(data), len(rows)) + data)
        answers.flush()

    while True:
        try:
            key, paths, careful = _read(questions)
        except EOFError:
            return
        if key not in loaded:
            try:
                loaded[key] = load(pickle.loads(key))
            except Exception as problem:
                loaded[key] = partial(_fail, problem)
            send([])  # The time of the first file begins when the function is loaded.
        function = loaded[key]
        waiting: list[FileRow] = []
        sent = time.monotonic()
        for path in paths:
            waiting.append(run_one(function, path))
            now = time.monotonic()
            if careful or now - sent > INTERVAL:
                send(waiting)
                waiting = []
                sent = now
        if waiting:
            send(waiting)
