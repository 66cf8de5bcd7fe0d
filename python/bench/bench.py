#!/usr/bin/env python3
"""Measures the Python package beside yardsticks in the same run, and prints ratios.

usage: python/bench/bench.py [--json]
"""
import ctypes
import gc
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time
import timeit

import numpy as np

import vornath_data as vd
from vornath_data import capi


def best(function, number, rounds=15):
    """Returns the seconds of one call: the best of several rounds."""
    return min(timeit.repeat(function, number=number, repeat=rounds)) / number


def empty_function():
    """Returns a C function that does nothing, of a library that is compiled for it."""
    folder = tempfile.mkdtemp()
    try:
        source, library = os.path.join(folder, "empty.c"), os.path.join(folder, "empty.so")
        with open(source, "w", encoding="ascii") as file:
            file.write("void empty(void) {}\n")
        subprocess.run(["cc", "-O2", "-shared", "-fPIC", source, "-o", library], check=True)
        function = ctypes.CDLL(library).empty
    finally:
        shutil.rmtree(folder)
    function.argtypes, function.restype = [], None
    return function


def import_seconds(code):
    """Returns the seconds that a statement takes in a new interpreter, compiled before: the best of several."""
    environment = {**os.environ, "PYTHONPYCACHEPREFIX": os.path.join(tempfile.gettempdir(), "bench_pycache")}
    environment.pop("PYTHONDONTWRITEBYTECODE", None)

    def once():
        command = f"import time; a = time.process_time(); {code}; print(time.process_time() - a)"
        return float(subprocess.run([sys.executable, "-c", command], capture_output=True, text=True,
                                    check=True, env=environment).stdout)
    return min(once() for _ in range(9))


def main():
    gc.disable()
    rows = []

    def row(name, seconds, yardstick, aim):
        rows.append({"name": name, "seconds": seconds, "yardstick": yardstick, "ratio": seconds / yardstick,
                     "aim": aim})

    scene = vd.Scene()
    general = scene.Camera.add().general
    empty = best(empty_function(), 4_000, 300)
    nothing = best(lambda: None, 4_000, 300)
    row("get a field", best(lambda: general.near_distance, 4_000, 300) - nothing, empty, 6)

    def set_field():
        general.near_distance = 0.25

    row("set a field", best(set_field, 4_000, 300) - nothing, empty, 6)

    handle = ctypes.c_void_p(scene._handle.value)

    def get_value():
        capi.vrntValueDestroy(capi.vrdmGetDataValue(handle, 8, 0, 1))

    yardstick = best(lambda: get_value(), 30_000)
    row("group as dict", best(general.to_dict, 30_000), yardstick, 10)
    row("group as dict, just opened", best(lambda: scene.Camera[0].general.to_dict(), 10_000), yardstick, None)

    large = vd.Scene()
    for _ in range(100_000):
        large.Shape.add()
    matrices = large.Shape.column("Transformation", "matrix")
    other = np.empty_like(matrices)
    hot = best(lambda: ctypes.memmove(other.ctypes.data, matrices.ctypes.data, matrices.nbytes), 20)

    # The column walks through all objects, whose bytes no cache holds; so does this copy.
    flood = np.zeros(64 << 20, "u1")

    def cold_copy():
        flood[:] = 1
        start = time.perf_counter()
        ctypes.memmove(other.ctypes.data, matrices.ctypes.data, matrices.nbytes)
        return time.perf_counter() - start

    memcpy = min(cold_copy() for _ in range(15))

    def in_and_out():
        large.Shape.set_column("Transformation", "matrix", large.Shape.column("Transformation", "matrix"))

    row("column out", best(lambda: large.Shape.column("Transformation", "matrix"), 1, 45), memcpy, None)
    row("column in", best(lambda: large.Shape.set_column("Transformation", "matrix", matrices), 1, 45),
        memcpy, None)
    row("column in and out", best(in_and_out, 1, 45), memcpy, 20)
    row("... beside a cached memcpy", best(in_and_out, 1, 45), hot, None)

    layout = vd.MeshLayout(triangles=1_000_000, vertices=500_000)
    start = time.perf_counter()
    mesh = scene.Mesh.add(layout)
    seconds = time.perf_counter() - start
    same = mesh.positions.ctypes.data == layout.positions.ctypes.data
    rows.append({"name": "mesh of a million triangles", "seconds": seconds, "yardstick": None,
                 "ratio": None, "aim": "no copy: " + ("addresses equal" if same else "COPIED")})

    numpy_seconds = import_seconds("import numpy")
    row("import beside NumPy", import_seconds("import numpy; import vornath_data") - numpy_seconds,
        numpy_seconds, 0.5)

    if "--json" in sys.argv[1:]:
        print(json.dumps(rows, indent=1))
        return
    for one in rows:
        ratio = "" if one["ratio"] is None else f"{one['ratio']:7.2f}"
        print(f"{one['name']:28} {one['seconds'] * 1e6:12.3f} us {ratio:>8} aim {one['aim']}")


if __name__ == "__main__":
    main()
