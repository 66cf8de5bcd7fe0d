"""What a worker of Dask does: it keeps a process that runs the files, and notices when that hangs or ends."""
from __future__ import annotations

import contextlib
import fcntl
import os
import pickle
import selectors
import signal
import subprocess
import sys
import threading
import time
from typing import Any

from ._operations import INTERVAL, LENGTH, READY

PIPE = 1 << 20  # bytes of answers that a process can write before somebody reads them

class _Process:
    """The process of a worker that runs the files."""

    def __init__(self) -> None:
        self._child: subprocess.Popen[bytes] | None = None
        self._data = bytearray()

    def _start(self) -> subprocess.Popen[bytes]:
        folder = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
        paths = [folder, *filter(None, os.environ.get("PYTHONPATH", "").split(os.pathsep))]
        self._data.clear()
        child = subprocess.Popen([sys.executable, "-c",
                                  "from vornath_data._operations import serve; serve()"], stdin=subprocess.PIPE,
                                 stdout=subprocess.PIPE, bufsize=0,
                                 env={**os.environ, "PYTHONPATH": os.pathsep.join(dict.fromkeys(paths))})
        assert child.stdout is not None
        if hasattr(fcntl, "F_SETPIPE_SZ"):
            with contextlib.suppress(OSError):  # The system may limit it.
                fcntl.fcntl(child.stdout, fcntl.F_SETPIPE_SZ, PIPE)
        # The time of a file begins when the process has started.
        ready = b""
        while len(ready) < len(READY):
            data = child.stdout.read(len(READY) - len(ready))
            if not data:
                break  # It ended, which the first question shows.
            ready += data
        return child

    def run(self, work: bytes, paths: list[str], timeout: float | None) -> list[bytes | dict[str, Any]]:
        """Returns the rows of files."""
        rows: list[bytes | dict[str, Any]] = []
        careful = False
        while len(rows) < len(paths):
            child = self._child
            if child is None or child.poll() is not None:
                child = self._child = self._start()
            try:
                trouble = self._ask(child, work, paths, rows, timeout, careful)
            except BaseException:
                # What the process still sends belongs to files that nobody asks for any more.
                child.kill()
                child.wait()
                self._child = None
                raise
            if trouble is None:
                continue
            # Rows that the process has not sent are lost with it. The rest is run again, with an answer for
            # each file: then the first file without an answer is the one that makes trouble.
            if careful:
                rows.append(trouble)
            careful = not careful
        return rows

    def _ask(self, child: subprocess.Popen[bytes], work: bytes, paths: list[str],
             rows: list[bytes | dict[str, Any]], timeout: float | None, careful: bool) -> dict[str, Any] | None:
        """Adds the rows of the files that have none. Returns the row of a file that hangs or ended the
        process."""
        assert child.stdin is not None
        request = pickle.dumps((work, paths[len(rows):], careful))
        try:
            child.stdin.write(LENGTH.pack(len(request)) + request)
        except BrokenPipeError:
            return self._ended(child)
        while len(rows) < len(paths):
            start = time.perf_counter()
            row = self._answer(child, None if timeout is None else timeout + INTERVAL)
            if row is None:
                child.kill()
                child.wait()
                self._child = None
                return {"ok": False, "seconds": time.perf_counter() - start, "error": {
                    "code": "TIMEOUT", "message": f"it took longer than {timeout:g} s"}}
            if isinstance(row, dict):
                return row
            rows.append(row)
        return None

    def _answer(self, child: subprocess.Popen[bytes], timeout: float | None) -> bytes | dict[str, Any] | None:
        """Returns the next row as the process pickled it, for the client to read; a dict if the process has
        ended, or None if the time is over."""
        assert child.stdout is not None
        until = None if timeout is None else time.monotonic() + timeout
        with selectors.DefaultSelector() as selector:
            selector.register(child.stdout, selectors.EVENT_READ)
            while True:
                if len(self._data) >= LENGTH.size:
                    end = LENGTH.size + LENGTH.unpack_from(self._data)[0]
                    if len(self._data) >= end:
                        row = bytes(memoryview(self._data)[LENGTH.size:end])
                        del self._data[:end]
                        return row
                left = None if until is None else until - time.monotonic()
                if left is not None and left <= 0 or not selector.select(left):
                    return None
                data = os.read(child.stdout.fileno(), PIPE)
                if not data:
                    return self._ended(child)
                self._data += data

    def _ended(self, child: subprocess.Popen[bytes]) -> dict[str, Any]:
        status = child.wait()
        self._child = None
        words = (f"the process ended with the signal {signal.Signals(-status).name}" if status < 0 else
                 f"the process ended with the status {status}")
        return {"ok": False, "seconds": 0.0, "error": {"code": "PROCESS_ENDED", "message": words}}


_processes = threading.local()


def run_chunk(work: bytes, paths: list[str], timeout: float | None) -> list[bytes | dict[str, Any]]:
    """Runs some files in the process of this thread of a worker."""
    process: _Process | None = getattr(_processes, "process", None)
    if process is None:
        process = _processes.process = _Process()
    return process.run(work, paths, timeout)
