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

from ._operations import ERROR, HEAD, INTERVAL, LENGTH, READY, FileRow, pack

PIPE = 1 << 20  # bytes of answers that a process can write before somebody reads them
LOOK = 1.0  # seconds between two looks at whether a process has ended that does not answer
LOADING = 60.0  # seconds that a function may take to load, if the time for a file is not longer


class _Process:
    """The process of a worker that runs the files."""

    def __init__(self) -> None:
        self._child: subprocess.Popen[bytes] | None = None
        self._data = bytearray()
        self._loaded: set[bytes] = set()

    def _start(self) -> subprocess.Popen[bytes]:
        folder = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
        paths = [folder, *filter(None, os.environ.get("PYTHONPATH", "").split(os.pathsep))]
        self._data.clear()
        self._loaded.clear()
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

    def run(self, work: bytes, paths: list[str], timeout: float | None) -> list[bytes]:
        """Returns the rows of files, in pieces as the process packed them, for the client to read."""
        pieces: list[bytes] = []
        done = 0
        careful = False
        while done < len(paths):
            child = self._child
            if child is None or child.poll() is not None:
                child = self._child = self._start()
            left = paths[done:]
            try:
                answered, trouble = self._ask(child, work, left, pieces, timeout, careful)
            except BaseException:
                # What the process still sends belongs to files that nobody asks for any more.
                child.kill()
                child.wait()
                self._child = None
                raise
            done += answered
            if trouble is None:
                continue
            if work not in self._loaded:  # The function cannot be loaded, for no file.
                pieces.append(pack([trouble] * (len(paths) - done)))
                break
            # Rows that the process has not sent are lost with it. The rest is run again, with an answer for
            # each file: then the first file without an answer is the one that makes trouble.
            if careful:
                pieces.append(pack([trouble]))
                done += 1
            careful = not careful
        return pieces

    def _ask(self, child: subprocess.Popen[bytes], work: bytes, paths: list[str], pieces: list[bytes],
             timeout: float | None, careful: bool) -> tuple[int, FileRow | None]:
        """Adds the pieces with the rows of files. Returns the number of rows, and the row of a file that hangs
        or ended the process."""
        assert child.stdin is not None
        answered = 0
        request = pickle.dumps((work, paths, careful))
        try:
            child.stdin.write(LENGTH.pack(len(request)) + request)
        except BrokenPipeError:
            return answered, self._ended(child)
        limit = timeout
        if work not in self._loaded and timeout is not None:
            limit = max(timeout, LOADING)
        while answered < len(paths):
            start = time.perf_counter()
            found = self._answer(child, None if limit is None else limit + INTERVAL)
            if found is None:
                child.kill()
                child.wait()
                self._child = None
                words = "it" if work in self._loaded else "to load the function"
                return answered, (ERROR, time.perf_counter() - start, "TIMEOUT",
                                  f"{words} took longer than {limit:g} s")
            rows, piece = found
            if isinstance(piece, tuple):
                return answered, piece
            if work not in self._loaded:  # The function is loaded, and the first file begins.
                self._loaded.add(work)
                limit = timeout
                continue
            answered += rows
            pieces.append(piece)
        return answered, None

    def _answer(self, child: subprocess.Popen[bytes],
                timeout: float | None) -> tuple[int, bytes | FileRow] | None:
        """Returns the next number of rows and the rows; the row of a file that ended the process; or None if
        the time is over."""
        assert child.stdout is not None
        until = None if timeout is None else time.monotonic() + timeout
        with selectors.DefaultSelector() as selector:
            selector.register(child.stdout, selectors.EVENT_READ)
            while True:
                if len(self._data) >= HEAD.size:
                    size, rows = HEAD.unpack_from(self._data)
                    end = HEAD.size + size
                    if len(self._data) >= end:
                        piece = bytes(memoryview(self._data)[HEAD.size:end])
                        del self._data[:end]
                        return rows, piece
                ended = child.poll() is not None
                left = LOOK if until is None else min(LOOK, until - time.monotonic())
                if not selector.select(max(left, 0.0)):
                    if ended:  # A process that it started may hold its standard output.
                        return 0, self._ended(child)
                    if left < LOOK:
                        return None
                    continue
                data = os.read(child.stdout.fileno(), PIPE)
                if not data:
                    return 0, self._ended(child)
                self._data += data

    def _ended(self, child: subprocess.Popen[bytes]) -> FileRow:
        status = child.wait()
        self._child = None
        words = (f"the process ended with the signal {signal.Signals(-status).name}" if status < 0 else
                 f"the process ended with the status {status}")
        return ERROR, 0.0, "PROCESS_ENDED", words


_processes = threading.local()


def run_chunk(work: bytes, paths: list[str], timeout: float | None) -> list[bytes]:
    """Runs some files in the process of this thread of a worker."""
    process: _Process | None = getattr(_processes, "process", None)
    if process is None:
        process = _processes.process = _Process()
    return process.run(work, paths, timeout)
