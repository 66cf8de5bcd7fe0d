"""What batch runs for one file: functions of a path and options that return JSON, and the process that
runs them.

A worker of Dask has one such process. It gets files through its standard input and answers one by one, so
that a file that takes too long or ends the process costs only its own row."""
from __future__ import annotations

import importlib
import os
import pickle
import struct
import sys
import time
import traceback
from collections.abc import Callable
from functools import lru_cache
from typing import Any, BinaryIO

LENGTH = struct.Struct("<I")
READY = b"ready\n"  # what the process writes when it has started


def check(path: str, *, max_memory: int = 0, max_messages: int = 100) -> dict[str, Any]:
    """Returns the report of the check as a JSON document."""
    from ._check import check as check_file
    return check_file(path, max_memory=max_memory, max_messages=max_messages).to_dict()


def info(path: str) -> dict[str, Any]:
    """Returns what a check learns of a file: its id, its objects, its bytes."""
    found = check(path, max_messages=1)
    return {"size": found["size"], "valid": found["valid"], **found["info"]}


def digest(path: str, *, ids: bool = False) -> dict[str, Any]:
    """Returns the digest of a scene."""
    from .scene import Scene
    with Scene.open(path) as scene:
        return {"digest": scene.digest(ids=ids)}


@lru_cache(maxsize=2)
def _reference(path: str, modified: int) -> Any:
    from .scene import Scene
    return Scene.open(path)


def diff(path: str, *, reference: str, tolerance: float = 0.0, absolute: float = 0.0,
         limit: int = 100) -> dict[str, Any]:
    """Returns the differences from a reference scene to the scene of a file."""
    import json

    from ._tools import diff as compare
    from .scene import Scene
    first = _reference(reference, os.stat(reference).st_mtime_ns)
    with Scene.open(path) as scene:
        found: dict[str, Any] = json.loads(compare(first, scene, tolerance=tolerance, absolute=absolute,
                                                   limit=limit).json)
        return found


def export(path: str, *, output: str, root: str = ".", full: bool = False,
           inline: bool = False) -> dict[str, Any]:
    """Writes the JSON form of a scene into the folder `output`, under its path from `root`."""
    from .scene import Scene
    target = os.path.join(output, os.path.splitext(os.path.relpath(path, root))[0] + ".json")
    os.makedirs(os.path.dirname(target) or ".", exist_ok=True)
    with Scene.open(path) as scene:
        scene.to_json(target, full=full, inline=inline)
    return {"output": target}


OPERATIONS: dict[str, Callable[..., Any]] = {
    "check": check, "info": info, "digest": digest, "diff": diff, "export": export}


def found_something(operation: str, result: Any) -> bool:
    """Tells whether a result is one that people look for: errors in a file, or differences."""
    if operation in ("check", "info"):
        return not result["valid"]
    return operation == "diff" and not result["equal"]


def load(work: dict[str, Any]) -> Callable[[str], Any]:
    """Returns the function that a description of work names."""
    if work["kind"] == "operation":
        operation, options = OPERATIONS[work["name"]], work["options"]
        return lambda path: operation(path, **options)
    if work["kind"] == "import":
        for folder in work["path"]:
            if folder not in sys.path:
                sys.path.append(folder)
        module, _, name = work["name"].partition(":")
        thing: Any = importlib.import_module(module)
        for part in name.split("."):
            thing = getattr(thing, part)
        function: Callable[[str], Any] = thing
        return function
    made: Callable[[str], Any] = pickle.loads(work["function"])
    return made


def run_one(function: Callable[[str], Any], path: str) -> dict[str, Any]:
    """Returns the row of a file, without its name."""
    start = time.perf_counter()
    try:
        row = {"ok": True, "result": function(path)}
    except Exception as problem:
        code = getattr(problem, "code", None) or problem.__class__.__name__
        row = {"ok": False, "error": {"code": str(code), "message": str(problem)}}
        if not hasattr(problem, "code"):
            row["error"]["traceback"] = traceback.format_exc()
    row["seconds"] = time.perf_counter() - start
    return row


def _read(stream: BinaryIO) -> Any:
    head = stream.read(LENGTH.size)
    if len(head) < LENGTH.size:
        raise EOFError
    return pickle.loads(stream.read(LENGTH.unpack(head)[0]))


def _serve() -> None:
    """Runs files as they come, until there are no more."""
    answers = os.fdopen(os.dup(1), "wb")
    os.dup2(2, 1)  # What a function prints goes to standard error.
    answers.write(READY)
    answers.flush()
    questions = sys.stdin.buffer
    loaded: dict[bytes, Callable[[str], Any]] = {}
    while True:
        try:
            key, paths = _read(questions)
        except EOFError:
            return
        for path in paths:
            row: dict[str, Any]
            try:
                if key not in loaded:
                    loaded[key] = load(pickle.loads(key))
                row = run_one(loaded[key], path)
                data = pickle.dumps(row)
            except Exception as problem:  # The function cannot be loaded, or its result not be sent.
                data = pickle.dumps({"ok": False, "seconds": 0.0, "error": {
                    "code": problem.__class__.__name__, "message": str(problem)}})
            answers.write(LENGTH.pack(len(data)) + data)
            answers.flush()


if __name__ == "__main__":
    _serve()
