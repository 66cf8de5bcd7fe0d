"""Checks, digests, compares or exports thousands of scene files on Dask, or runs any function of a scene or
of a path over them.

    python -m vornath_data.batch check 'scenes/**/*.vrnscene'
    python -m vornath_data.batch diff --reference box.vrnscene --json 'renders/*.vrnscene'
    python -m vornath_data.batch run my_module:my_function 'scenes/*.vrnscene' --timeout 60

The work runs in processes of this machine, or on the cluster of --scheduler ADDRESS, whose workers need
the package and the files. A file that is damaged, takes too long or ends the process is a row in the
result, and not the end of the run. The rows are in the order of the input.

The exit status is 0 if nothing was found, 1 if something was (an error in a file, a difference), and 2 if a
file could not be worked on.
"""
from __future__ import annotations

import argparse
import glob
import importlib
import inspect
import json
import math
import operator
import os
import pickle
import sys
import time
from collections import deque
from collections.abc import Callable, Iterable, Iterator, Sequence
from contextlib import contextmanager
from html import escape
from typing import Any, cast

from ._operations import DOCUMENT, ERROR, OPERATIONS, Document, FileRow, export_target, failed_row, unpack
from ._slotted import Slotted
from ._worker import run_chunk

__all__ = ["Row", "Table", "expand", "processes_of_this_machine", "run"]


def _plain(thing: Any, inside: tuple[int, ...] = ()) -> Any:
    """Returns a result as objects that JSON has: a key is a text, a NaN is "nan" as in a scene, and anything else
    its text."""
    if thing is None or isinstance(thing, (bool, int, str)):
        return thing
    if isinstance(thing, float):
        return thing if math.isfinite(thing) else str(float(thing))
    if isinstance(thing, (dict, list, tuple)):
        if id(thing) in inside or len(inside) == _DEEPEST:
            return "..."
        inside += (id(thing),)
        if isinstance(thing, dict):
            return {key if isinstance(key, str) else _text(key): _plain(one, inside) for key, one in thing.items()}
        return [_plain(one, inside) for one in thing]
    return _text(thing)


_DEEPEST = 200


def _text(thing: Any) -> str:
    try:
        return str(thing)
    except Exception as problem:
        return f"<{thing.__class__.__name__}: {problem.__class__.__name__}>"


def _json(thing: Any) -> str:
    try:
        return json.dumps(thing, allow_nan=False)
    except Exception:  # not only of json: a class may have a __str__ that raises
        return json.dumps(_plain(thing))


class Row(Slotted):
    """The outcome for one file.

    file: its path. ok: whether the function returned. result: what it returned. code, error: why it did
    not. seconds: how long it took. found: whether the result is an error in the file or a difference.
    """

    __slots__ = ("_result", "code", "error", "file", "found", "ok", "seconds")

    def __init__(self, file: str, ok: bool, seconds: float, result: Any = None, code: str = "",
                 error: str = "") -> None:
        self.file = file
        self.ok = ok
        self.seconds = seconds
        self._result = result
        self.code = code
        self.error = error
        self.found = isinstance(result, Document) and result.found

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Row):
            return NotImplemented
        mine, others = (one.to_dict() | {"seconds": one.seconds, "found": one.found} for one in (self, other))
        try:
            return mine == others
        except ValueError:  # Arrays of NumPy do not compare as a whole.
            return pickle.dumps(mine) == pickle.dumps(others)

    def __hash__(self) -> int:
        return hash((self.file, self.ok, self.seconds, self.code, self.error))

    @property
    def result(self) -> Any:
        """What the function returned."""
        if isinstance(self._result, Document):
            self._result = json.loads(self._result.text)
        return self._result

    def to_dict(self) -> dict[str, Any]:
        """Returns the row as a JSON object."""
        row: dict[str, Any] = {"file": self.file, "ok": self.ok, "seconds": round(self.seconds, 6)}
        if self.ok:
            row["result"] = self.result
        else:
            row["error"] = {"code": self.code, "message": self.error}
        return row

    def _words(self) -> str:
        if not self.ok:
            return f"{self.code}: {self.error.splitlines()[0] if self.error else ''}"
        result = self.result
        if isinstance(result, dict):
            if "issues" in result:
                issues = result["issues"]
                words = "valid" if result["valid"] else "not valid"
                kind = "warning" if result["valid"] else "error"
                first = next((one["code"] for one in issues["messages"] if one["severity"] == kind), "")
                return (f"{words}, {issues['errors']} errors, {issues['warnings']} warnings"
                        + (f" ({first})" if first else ""))
            for key in ("digest", "output"):
                if key in result and len(result) == 1:
                    return str(result[key])
            if "differences" in result:
                return "equal" if result["equal"] else f"{result['differences']} differences"
        return _json(result)

    def __repr__(self) -> str:
        return f"{self.file}: {self._words()}"


class Table(Sequence[Row]):
    """The rows of a run, in the order of the input.

    failed: the rows without a result. found: those with an error in the file or a difference.
    """

    def __init__(self, rows: Iterable[Row]) -> None:
        self._rows: list[Row | FileRow] = list(rows)
        self._paths: Sequence[str] = ()

    @classmethod
    def _of(cls, paths: Sequence[str], rows: Iterable[FileRow]) -> Table:
        """Returns the table of rows as the workers send them; each becomes a Row when it is looked at."""
        self = cls(())
        self._paths = paths
        self._rows = list(rows)
        return self

    def _row(self, index: int) -> Row:
        row = self._rows[index]
        if not isinstance(row, Row):
            row = self._rows[index] = _row(self._paths[index], row)
        return row

    def __getitem__(self, index: Any) -> Any:
        if isinstance(index, slice):
            return [self._row(one) for one in range(*index.indices(len(self._rows)))]
        self._rows[index]  # Raises IndexError.
        return self._row(range(len(self._rows))[index])

    def __len__(self) -> int:
        return len(self._rows)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Table):
            return NotImplemented
        return list(self) == list(other)

    __hash__ = None  # type: ignore[assignment]

    def __iter__(self) -> Iterator[Row]:
        return map(self._row, range(len(self._rows)))

    @property
    def failed(self) -> list[Row]:
        """The rows of files that could not be worked on."""
        return [self._row(index) for index, row in enumerate(self._rows)
                if (not row.ok if isinstance(row, Row) else row[0] == ERROR)]

    @property
    def found(self) -> list[Row]:
        """The rows with an error in the file or a difference."""
        return [self._row(index) for index, row in enumerate(self._rows)
                if (row.ok and row.found if isinstance(row, Row) else row[0] == DOCUMENT and row[3])]

    @property
    def exit_status(self) -> int:
        """0: nothing found. 1: something found. 2: a file could not be worked on."""
        return 2 if self.failed else 1 if self.found else 0

    def to_json_lines(self) -> str:
        """Returns a JSON object for each row, one a line. Of a result that JSON has no form for, it has the text; a
        NaN and an infinity are "nan", "inf" and "-inf"."""
        return "".join(_json(row.to_dict()) + "\n" for row in self)

    def __str__(self) -> str:
        width = max((len(row.file) for row in self), default=0)
        lines = [f"{row.file:{width}}  {row.seconds * 1000:9.1f} ms  {row._words()}" for row in self]
        lines.append(f"{len(self._rows)} files: {len(self.failed)} failed, {len(self.found)} with findings")
        return "\n".join(lines)

    def _repr_html_(self) -> str:
        from ._html import _table
        return _table(("File", "ms", "Result"), (
            (_shown(row.file), f"{row.seconds * 1000:.1f}", _shown(row._words())) for row in self))


def expand(patterns: Iterable[str | os.PathLike[str]]) -> list[str]:
    """Returns the files of paths and globs (`**` goes into folders), each once, in the order of the
    patterns; the files of a glob by name. A path without a glob stays, whether it exists or not."""
    found: dict[str, None] = {}
    for pattern in patterns:
        text = os.fspath(pattern)
        if glob.has_magic(text) and not os.path.exists(text):
            for path in sorted(glob.glob(text, recursive=True)):
                if not os.path.isdir(path):
                    found[path] = None
        else:
            found[text] = None
    return list(found)


def _shown(text: str) -> str:
    """Returns a text as HTML that can be encoded, also where a name of a file is not UTF-8."""
    return escape(text.encode("utf-8", "backslashreplace").decode())


# In the client.

def _describe(function: str | Callable[..., Any], scene: bool | None,
              options: dict[str, Any]) -> dict[str, Any]:
    """Returns a description of the work that can be sent to other processes."""
    if isinstance(function, str) and function in OPERATIONS:
        if scene is not None:
            raise TypeError(f"{function} takes no option 'scene'")
        inspect.signature(OPERATIONS[function]).bind(**options)  # Raises TypeError.
        return {"kind": "operation", "name": function, "options": options}
    if options:
        raise TypeError(f"only {', '.join(OPERATIONS)} take options")
    here = [os.path.abspath(folder) for folder in sys.path]
    if isinstance(function, str):
        if ":" not in function:
            raise ValueError(f"a function is {', '.join(OPERATIONS)} or module:name, not {function!r}")
        return {"kind": "import", "name": function, "path": here, "scene": scene}
    module, name = getattr(function, "__module__", ""), getattr(function, "__qualname__", "")
    if module and module != "__main__" and name and "<" not in name:
        return {"kind": "import", "name": f"{module}:{name}", "path": here, "scene": scene}
    import cloudpickle
    return {"kind": "pickle", "function": cloudpickle.dumps(function), "scene": scene}


def run(function: str | Callable[..., Any],
        files: str | os.PathLike[str] | Iterable[str | os.PathLike[str]], *, scene: bool | None = None,
        scheduler: str | None = None, processes: int | None = None, timeout: float | None = None,
        progress: Callable[[int, int], None] | None = None, client: Any = None, **options: Any) -> Table:
    """Runs a function over files, and returns a Table with a row for each.

    function: "check", "info", "digest", "diff" or "export" with their options, "module:name", or a
    function of a scene or of a path, whose result can be pickled. scene: True for a function of a scene,
    which is opened with the check and closed afterwards; False for one of a path; by default, the first
    parameter decides: a scene is named `scene` or annotated as a Scene. files: paths and globs; a function of
    a path gets it absolute.
    scheduler: the address of a Dask scheduler; by default, processes of this machine are started.
    processes: how many; one for each core. client: a Dask client to use instead, such as that of
    processes_of_this_machine(). timeout: seconds for a file. progress: is called with the numbers of
    finished and of all files.

    Options: check(max_memory, max_messages); digest(ids); diff(reference, tolerance, absolute, limit);
    export(output, root, full, inline), which writes each file under its path from `root`, by default the folder
    that all have in common. Raises ValueError for an export that would leave `output` or write one file twice.
    """
    paths = expand([files] if isinstance(files, (str, os.PathLike)) else files)
    if processes is not None:
        processes = _checked_count(processes)
    if timeout is not None:
        timeout = _checked_timeout(timeout)
    work = _describe(function, scene, options)
    if not paths:
        return Table([])
    if work["kind"] == "operation":
        _complete(work["name"], work["options"], paths)
    if client is None and scheduler is None:
        with processes_of_this_machine(min(processes or _cores(), len(paths))) as made:
            return _run(made, work, paths, timeout, progress)
    if client is not None:
        return _run(client, work, paths, timeout, progress)
    _, distributed = _dask()
    with distributed.Client(scheduler) as made:
        return _run(made, work, paths, timeout, progress)


def _checked_count(count: int) -> int:
    number = operator.index(count)
    if number < 1:
        raise ValueError(f"the number of processes is 1 or more, not {number}")
    return number


def _checked_timeout(seconds: float) -> float:
    if isinstance(seconds, (str, bytes)):
        raise TypeError(f"a time is a number of seconds, not {seconds!r}")
    number = float(seconds)
    if not (math.isfinite(number) and number > 0):
        raise ValueError(f"the time for a file is a finite number of seconds above 0, not {number:g}")
    return number


def _complete(name: str, options: dict[str, Any], paths: list[str]) -> None:
    """Makes the paths among the options of an operation absolute, since a worker may be in another folder, and
    refuses an export that would write beside its folder, or write one file twice."""
    if name == "diff":
        options["reference"] = os.path.abspath(options["reference"])
    if name != "export":
        return
    options["output"] = os.path.abspath(options["output"])
    sources = [os.path.abspath(path) for path in paths]
    root = options.get("root")
    options["root"] = os.path.abspath(root) if root is not None else os.path.commonpath(
        [os.path.dirname(source) for source in sources])
    known: dict[str, str] = {}
    for source in sources:
        target = export_target(source, options["output"], options["root"])
        if known.setdefault(target, source) != source:
            raise ValueError(f"{known[target]} and {source} would both be written to {target}; export them to "
                             "different folders")


def _dask() -> tuple[Any, Any]:
    try:
        return importlib.import_module("dask"), importlib.import_module("distributed")
    except ImportError as problem:
        raise ImportError("batch needs Dask: install python3-dask and python3-distributed") from problem


def _cores() -> int:
    return len(os.sched_getaffinity(0)) if hasattr(os, "sched_getaffinity") else 1


# No limits of memory, since the files are in processes that Dask does not see; and no profiles of what Dask's
# processes do, which take time.
_CONFIGURATION = {"distributed.worker.memory.terminate": False, "distributed.worker.memory.pause": False,
                  "distributed.worker.memory.spill": False, "distributed.worker.profile.enabled": False,
                  "distributed.admin.tick.interval": "1s"}


@contextmanager
def processes_of_this_machine(count: int | None = None) -> Iterator[Any]:
    """Starts processes of this machine, and gives a Dask client for `client` of run(). They end with the
    block. Starting them takes seconds, so that several runs should share them.

    count: how many; one for each core.
    """
    number = _cores() if count is None else _checked_count(count)
    dask, distributed = _dask()
    with dask.config.set(_CONFIGURATION):
        cluster = distributed.LocalCluster(n_workers=number, threads_per_worker=1, processes=True,
                                           dashboard_address=":0", silence_logs=50)
        try:
            with distributed.Client(cluster) as client:
                yield client
        finally:
            cluster.close()


# Chunks that each thread of a worker has, so that it does not wait for the next one, if they take little time:
# what waits behind a chunk goes to no other worker.
_AHEAD = 3
_SHORT = 0.5  # seconds
_LOOK = 0.5  # seconds between two looks at which workers there are
_WITHOUT_WORKERS = 60.0  # seconds after which a run ends that has no worker


class _Chunk:
    """Files for one call of a worker, from the number `start` of all.

    lost: how often its worker was lost. It is then run again: first with a worker for itself, since those that
    waited behind another chunk are lost with it, and then file by file.
    """

    __slots__ = ("files", "lost", "start")

    def __init__(self, start: int, files: list[str], lost: int = 0) -> None:
        self.start = start
        self.files = files
        self.lost = lost


def _run(client: Any, work: dict[str, Any], paths: list[str], timeout: float | None,
         progress: Callable[[int, int], None] | None) -> Table:
    """Runs work over files with the workers of a client."""
    folder = os.getcwd()
    # A function may go to another folder, and so may a worker be in another one.
    files = [path if path[:1] == "/" else os.path.join(folder, path) for path in paths]
    return Table._of(paths, _Run(client, pickle.dumps(work), files, timeout, progress).rows())


class _Run:
    """A run. It hands out the chunks itself and names the worker of each: Dask would run a chunk again whose
    worker ended, end other workers with it, and blame the chunks that wait there, too."""

    def __init__(self, client: Any, work: bytes, files: list[str], timeout: float | None,
                 progress: Callable[[int, int], None] | None) -> None:
        _, distributed = _dask()
        self._client = client
        self._given = work, timeout
        self._files = files
        self._progress = progress
        self._rows: list[FileRow | None] = [None] * len(files)
        self._done = 0
        size = max(1, min(512, len(files) // (max(1, sum(client.nthreads().values())) * 4)))
        # What to do, by how often it was lost.
        self._waiting: list[deque[_Chunk]] = [deque(
            _Chunk(start, files[start:start + size]) for start in range(0, len(files), size)), deque(), deque()]
        self._running: dict[Any, tuple[_Chunk, str]] = {}
        self._loads: dict[str, int] = {}  # how many chunks each worker has
        self._ahead = 1
        self._workers: dict[str, int] = {}
        self._answers = distributed.as_completed(loop=client.loop, with_results=True, raise_errors=False)

    def rows(self) -> list[FileRow]:
        """Runs all, and returns the rows."""
        looked = seen = time.monotonic()
        call: Any = None
        self._look()
        while self._done < len(self._files):
            self._hand_out()
            with self._answers.thread_condition:
                if not self._answers.has_ready():
                    self._answers.thread_condition.wait(0.1)
            for future, answers in self._answers.next_batch(block=False):
                if future in self._running:
                    self._take(future, answers)
            now = time.monotonic()
            if now - looked < _LOOK:
                continue
            looked = now
            self._look()
            if self._workers:
                seen, call = now, None
            elif self._client.status not in ("running", "connecting"):
                self._give_up("SCHEDULER_LOST", "the connection to the scheduler is lost")
            elif now - seen > _WITHOUT_WORKERS:
                self._give_up("NO_WORKER", f"there was no worker for {_WITHOUT_WORKERS:g} s")
            elif call is None:
                call = self._client.submit(int, pure=False)  # A cluster that adapts starts workers for it.
        return cast("list[FileRow]", self._rows)

    def _look(self) -> None:
        """Learns which workers there are, and takes back what those that are gone had."""
        known = self._client.scheduler_info()["workers"]
        self._workers = {address: one["nthreads"] for address, one in known.items()
                         if one.get("status", "running") == "running"}
        for future, (_, address) in list(self._running.items()):
            if address not in known:
                self._lose(future, "WORKER_LOST", f"the worker {address} ended while it had the file")

    def _hand_out(self) -> None:
        """Gives chunks to the workers that are free for them."""
        for level, waiting in enumerate(self._waiting):
            if not waiting:
                continue
            # Each worker gets its first chunk before any gets its second.
            for place in range(self._ahead if level == 0 else 1):
                for address, threads in self._workers.items():
                    room = (place + 1) * threads if level == 0 else 1
                    while waiting and self._loads.get(address, 0) < room:
                        self._submit(waiting.popleft(), address)
            if waiting or level == 0 and self._running:
                return  # What was lost before waits until nothing else can be lost with it.

    def _submit(self, chunk: _Chunk, address: str) -> None:
        work, timeout = self._given
        future = self._client.submit(run_chunk, work, chunk.files, timeout, pure=False, workers=[address])
        self._running[future] = chunk, address
        self._loads[address] = self._loads.get(address, 0) + 1
        self._answers.add(future)

    def _take(self, future: Any, answers: Any) -> None:
        """Takes what a worker returned."""
        if future.status == "finished" and isinstance(answers, list):
            rows = [row for piece in answers for row in unpack(piece)]
            self._ahead = _AHEAD if sum(row[1] for row in rows) < _SHORT else 1
            self._fill(self._free(future), rows)
            return
        problem = answers[1] if isinstance(answers, tuple) else answers
        if future.status == "error" and problem.__class__.__name__ != "KilledWorker":
            chunk = self._free(future)
            self._fill(chunk, [failed_row(problem)] * len(chunk.files))
        else:
            address = self._running[future][1]
            self._lose(future, "WORKER_LOST", f"the worker {address} ended while it had the file")

    def _free(self, future: Any) -> _Chunk:
        chunk, address = self._running.pop(future)
        self._loads[address] -= 1
        return chunk

    def _lose(self, future: Any, code: str, words: str) -> None:
        chunk = self._free(future)
        future.cancel()
        if chunk.lost == 0:
            self._waiting[1].append(_Chunk(chunk.start, chunk.files, 1))
        elif len(chunk.files) == 1:
            self._fill(chunk, [(ERROR, 0.0, code, words)])
        else:
            self._waiting[2].extend(_Chunk(chunk.start + number, [file], 2)
                                    for number, file in enumerate(chunk.files))

    def _give_up(self, code: str, words: str) -> None:
        self._rows = [(ERROR, 0.0, code, words) if row is None else row for row in self._rows]
        self._done = len(self._rows)

    def _fill(self, chunk: _Chunk, rows: list[FileRow]) -> None:
        self._rows[chunk.start:chunk.start + len(chunk.files)] = rows
        self._done += len(chunk.files)
        if self._progress is not None:
            self._progress(self._done, len(self._files))


def _row(path: str, row: FileRow) -> Row:
    if row[0] == DOCUMENT:
        return Row(path, True, row[1], Document(row[2], row[3]))
    if row[0] == ERROR:
        return Row(path, False, row[1], code=row[2], error=row[3])
    return Row(path, True, row[1], row[2])


# The command.

def _show_progress(done: int, total: int) -> None:
    filled = 30 * done // total
    sys.stderr.write(f"\r[{'#' * filled}{'.' * (30 - filled)}] {done}/{total}")
    if done == total:
        sys.stderr.write("\n")
    sys.stderr.flush()


def _count_of_text(text: str) -> int:
    try:
        return _checked_count(int(text))
    except ValueError:
        raise argparse.ArgumentTypeError(f"a whole number of 1 or more is expected, not {text!r}") from None


def _timeout_of_text(text: str) -> float:
    try:
        return _checked_timeout(float(text))
    except ValueError:
        raise argparse.ArgumentTypeError(f"a number of seconds above 0 is expected, not {text!r}") from None


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="python -m vornath_data.batch",
                                     description="Works on many scene files at once.")
    commands = parser.add_subparsers(dest="command", required=True, metavar="COMMAND")
    words = {"check": "check files", "info": "tell what is in files", "digest": "compute digests",
             "diff": "compare with a reference", "export": "write the JSON forms",
             "run": "run a function of a scene or of a path"}
    for name, text in words.items():
        command = commands.add_parser(name, help=text, description=text)
        if name == "run":
            command.add_argument("function", metavar="MODULE:FUNCTION")
            command.add_argument("--scene", action="store_true", default=None,
                                 help="the function takes a scene and not a path, also if its first parameter "
                                      "is not named scene")
        command.add_argument("files", nargs="+", metavar="FILE", help="a path or a glob; ** goes into folders")
        command.add_argument("--json", action="store_true", help="print a JSON object for each file")
        command.add_argument("--scheduler", metavar="ADDRESS", help="the address of a Dask scheduler")
        command.add_argument("--processes", type=_count_of_text, metavar="N", help="processes of this machine")
        command.add_argument("--timeout", type=_timeout_of_text, metavar="SECONDS", help="the limit for one file")
        command.add_argument("--quiet", action="store_true", help="show no progress")
        if name == "check":
            command.add_argument("--max-memory", type=int, default=0, metavar="BYTES")
            command.add_argument("--strict", action="store_true", help="warnings count as findings")
        elif name == "digest":
            command.add_argument("--ids", action="store_true", help="ids count, too")
        elif name == "diff":
            command.add_argument("--reference", required=True, metavar="FILE")
            command.add_argument("--tolerance", type=float, default=0.0, metavar="REL")
            command.add_argument("--abs", type=float, default=0.0, dest="absolute", metavar="ABS")
        elif name == "export":
            command.add_argument("--output", required=True, metavar="FOLDER")
            command.add_argument("--full", action="store_true", help="also what has its default")
            command.add_argument("--inline", action="store_true", help="the bytes of assets in base64")
    return parser


def _print(text: str) -> None:
    """Writes a text. The bytes of a name that is not UTF-8 stand as they are, and what the encoding of the output
    lacks is escaped."""
    encoding = sys.stdout.encoding or "utf-8"
    try:
        text.encode(encoding)
    except UnicodeEncodeError:
        try:
            data = text.encode(encoding, "surrogateescape")
        except UnicodeEncodeError:
            data = text.encode(encoding, "backslashreplace")
        sys.stdout.flush()
        sys.stdout.buffer.write(data)
    else:
        sys.stdout.write(text)


def main(arguments: Sequence[str] | None = None) -> int:
    """Runs the command, and returns its exit status."""
    chosen = _parser().parse_args(arguments)
    files = expand(chosen.files)
    if not files:
        print(f"batch {chosen.command}: no file matches {' '.join(chosen.files)}", file=sys.stderr)
        return 2
    options: dict[str, Any] = {}
    function = chosen.function if chosen.command == "run" else chosen.command
    if chosen.command == "check":
        options = {"max_memory": chosen.max_memory}
    elif chosen.command == "digest":
        options = {"ids": chosen.ids}
    elif chosen.command == "diff":
        options = {"reference": chosen.reference, "tolerance": chosen.tolerance,
                   "absolute": chosen.absolute}
    elif chosen.command == "run":
        options = {"scene": chosen.scene}
    elif chosen.command == "export":
        options = {"output": chosen.output, "full": chosen.full, "inline": chosen.inline}
    show = not chosen.quiet and sys.stderr.isatty()
    try:
        table = run(function, files,
                    scheduler=chosen.scheduler, processes=chosen.processes, timeout=chosen.timeout,
                    progress=_show_progress if show else None, **options)
    except (ImportError, ValueError, OSError) as problem:
        print(f"batch {chosen.command}: {problem}", file=sys.stderr)
        return 2
    if chosen.command == "check" and chosen.strict:
        for row in table:
            row.found = row.found or row.ok and row.result["issues"]["warnings"] > 0
    _print(table.to_json_lines() if chosen.json else f"{table}\n")
    return table.exit_status


if __name__ == "__main__":
    sys.exit(main())
