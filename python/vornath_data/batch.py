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
import itertools
import json
import os
import pickle
import sys
from collections.abc import Callable, Iterable, Iterator, Sequence
from contextlib import contextmanager
from typing import Any

from ._operations import DOCUMENT, ERROR, OPERATIONS, Document, FileRow, unpack
from ._worker import run_chunk

__all__ = ["Row", "Table", "expand", "processes_of_this_machine", "run"]


class Row:
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
        return json.dumps(result, default=str)

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
        """Returns a JSON object for each row, one a line."""
        return "".join(json.dumps(row.to_dict(), default=str) + "\n" for row in self)

    def __str__(self) -> str:
        width = max((len(row.file) for row in self), default=0)
        lines = [f"{row.file:{width}}  {row.seconds * 1000:9.1f} ms  {row._words()}" for row in self]
        lines.append(f"{len(self._rows)} files: {len(self.failed)} failed, {len(self.found)} with findings")
        return "\n".join(lines)

    def _repr_html_(self) -> str:
        from html import escape

        from ._html import _table
        return _table(("File", "ms", "Result"), (
            (escape(row.file), f"{row.seconds * 1000:.1f}", escape(row._words())) for row in self))


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
    parameter decides: a scene is named `scene` or annotated as a Scene. files: paths and globs.
    scheduler: the address of a Dask scheduler; by default, processes of this machine are started.
    processes: how many; one for each core. client: a Dask client to use instead, such as that of
    processes_of_this_machine(). timeout: seconds for a file. progress: is called with the numbers of
    finished and of all files.

    Options: check(max_memory, max_messages); digest(ids); diff(reference, tolerance, absolute, limit);
    export(output, root, full, inline).
    """
    paths = expand([files] if isinstance(files, (str, os.PathLike)) else files)
    work = _describe(function, scene, options)
    if not paths:
        return Table([])
    if client is None and scheduler is None:
        with processes_of_this_machine(min(processes or _cores(), len(paths))) as made:
            return _run(made, work, paths, timeout, progress)
    if client is not None:
        return _run(client, work, paths, timeout, progress)
    _, distributed = _dask()
    with distributed.Client(scheduler) as made:
        return _run(made, work, paths, timeout, progress)


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
    dask, distributed = _dask()
    with dask.config.set(_CONFIGURATION):
        cluster = distributed.LocalCluster(n_workers=count or _cores(), threads_per_worker=1, processes=True,
                                           dashboard_address=":0", silence_logs=50)
        try:
            with distributed.Client(cluster) as client:
                yield client
        finally:
            cluster.close()


def _run(client: Any, work: dict[str, Any], paths: list[str], timeout: float | None,
         progress: Callable[[int, int], None] | None) -> Table:
    """Runs work over files with the workers of a client."""
    _, distributed = _dask()
    count = max(1, sum(client.nthreads().values()))
    size = max(1, min(512, len(paths) // (count * 4)))
    chunks = [paths[start:start + size] for start in range(0, len(paths), size)]
    data = pickle.dumps(work)
    futures = client.map(run_chunk, [data] * len(chunks), chunks, [timeout] * len(chunks), pure=False)
    place = {future.key: number for number, future in enumerate(futures)}
    rows: list[list[FileRow]] = [[] for _ in chunks]
    done = 0
    for future, answers in distributed.as_completed(futures, with_results=True, raise_errors=False):
        number = place[future.key]
        chunk = chunks[number]
        if future.status == "finished":
            rows[number] = [row for piece in answers for row in unpack(piece)]
        else:  # The worker is lost.
            lost = future.exception()
            rows[number] = [(ERROR, 0.0, lost.__class__.__name__, str(lost))] * len(chunk)
        done += len(chunk)
        if progress is not None:
            progress(done, len(paths))
        future.release()
    return Table._of(paths, itertools.chain.from_iterable(rows))


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
        command.add_argument("--processes", type=int, metavar="N", help="processes of this machine")
        command.add_argument("--timeout", type=float, metavar="SECONDS", help="the limit for one file")
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
        options = {"reference": os.path.abspath(chosen.reference), "tolerance": chosen.tolerance,
                   "absolute": chosen.absolute}
    elif chosen.command == "run":
        options = {"scene": chosen.scene}
    elif chosen.command == "export":
        folders = [os.path.dirname(os.path.abspath(one)) for one in files]
        options = {"output": os.path.abspath(chosen.output), "root": os.path.commonpath(folders),
                   "full": chosen.full, "inline": chosen.inline}
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
    sys.stdout.write(table.to_json_lines() if chosen.json else f"{table}\n")
    return table.exit_status


if __name__ == "__main__":
    sys.exit(main())
