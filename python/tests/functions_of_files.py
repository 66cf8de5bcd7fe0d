"""Functions that the tests run over files. They stand in a module of their own, which processes import quickly."""
from __future__ import annotations

import os
import signal
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
