"""The end of the interpreter, for calls of the libraries that call back into Python.

A thread that still runs then is ended where it next takes the interpreter's lock. Inside a call of a library that
unwinds frames of C++, which ends the whole process. So the end waits until no call is inside a library, and none
begins afterwards on another thread."""
from __future__ import annotations

import atexit
import os
import threading
import time
from collections.abc import Callable
from typing import NoReturn

LONGEST = 1.0  # seconds to wait for calls: one that waits for this thread would never return

# The calls under way, each with an object of its own: setting and deleting one does not let another thread run.
calls: dict[object, None] = {}
# What ends the calls of a module: it returns a function that tells whether some are still under way.
endings: list[Callable[[], Callable[[], bool]]] = []
begun = False


def _end() -> None:
    global begun
    begun = True
    waiting = [ending() for ending in endings]
    until = time.monotonic() + LONGEST
    while (calls or any(one() for one in waiting)) and time.monotonic() < until:
        time.sleep(0.001)  # lets go of the interpreter's lock


def over() -> bool:
    """Tells whether this thread may make no such call any more. The main thread may: it is the one that ends the
    interpreter."""
    return begun and threading.current_thread() is not threading.main_thread()


def begin(call: object) -> None:
    """Notes a call that `del calls[call]` ends. After the end has begun, it holds other threads than the main
    one, which the interpreter ends meanwhile."""
    calls[call] = None
    if over():
        del calls[call]
        hold()


def hold() -> NoReturn:
    """Holds a thread until the interpreter ends it; not for ever, since something may wait for the thread."""
    time.sleep(60.0)
    raise RuntimeError("the interpreter has ended")


atexit.register(_end)
if hasattr(os, "register_at_fork"):
    os.register_at_fork(after_in_child=calls.clear)  # The threads of these calls are not in the child.
