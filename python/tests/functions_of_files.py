"""Functions that the tests run over files. They stand in a module of their own, which processes import quickly."""
from __future__ import annotations

import os
import signal
import sys
import time
from typing import TYPE_CHECKING

if TYPE_CHECKING:
    import vornath_data as vd


def sleep_or_die(path):
    name = os.path.basename(path)
    if name.startswith("1"):
        time.sleep(60)
    if name.startswith("2"):
        os.kill(os.getpid(), signal.SIGSEGV)
    if name.startswith("4"):
        raise RuntimeError("four")
    print("talk on standard output")
    return {"name": name}


def cannot_be_sent_for_one(path):
    return (lambda: None) if path.endswith("1.vrnscene") else path


def near_distance(scene):
    return scene.Camera[0].general.near_distance


def camera_count(thing: vd.Scene):
    return len(thing.Camera)


def name_of_what_is_given(thing):
    return type(thing).__name__


def end_the_worker(path):
    """Ends the process that started this one."""
    if os.path.basename(path).startswith("2"):
        os.kill(os.getppid(), signal.SIGKILL)
    return os.path.basename(path)


class FailsWhenRead:
    def __reduce__(self):
        return eval, ("1/0",)


class HasNoText:
    def __repr__(self):
        raise ValueError("no text")


class HasNoMessage(Exception):
    def __str__(self):
        raise ValueError("no message")


def odd_results(path):
    name = os.path.basename(path)
    if name.startswith("1"):
        return FailsWhenRead()
    if name.startswith("2"):
        raise HasNoMessage
    if name.startswith("4"):
        return {(1, 2): [float("nan"), float("-inf")], "text": HasNoText()}
    loop = [name]
    loop.append(loop)
    return loop


def read_standard_input(path):
    return sys.stdin.read() + sys.stdin.read()


def change_folder(path):
    found = os.path.exists(path)
    os.chdir("/")
    return found


def leave_a_process(path):
    """Ends, and leaves a process that holds its files open."""
    if os.path.basename(path).startswith("1"):
        if os.fork() == 0:
            time.sleep(20)
            os._exit(0)
        os._exit(3)
    return 1
