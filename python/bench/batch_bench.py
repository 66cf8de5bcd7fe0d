#!/usr/bin/env python3
"""Measures vornath_data.batch beside one process in C for each core, which checks the same files.

usage: python/bench/batch_bench.py [FILES [SHAPES]]
       FILES   how many files, 10000 by default
       SHAPES  the shapes in each, with a material for each; 20 by default, which makes files of 10 KB
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import time

import vornath_data as vd
from vornath_data import _library, batch

ROOT = pathlib.Path(__file__).resolve().parents[2]


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 10_000
    shapes = int(sys.argv[2]) if len(sys.argv) > 2 else 20
    cores = len(os.sched_getaffinity(0))
    with tempfile.TemporaryDirectory() as folder:
        with vd.Scene() as scene:
            for _ in range(shapes):
                scene.Shape.add(material=scene.Material.add(value="{ gloss = 0.5; }"))
            data = scene.to_bytes()
        paths = [f"{folder}/{number:06}.vrnscene" for number in range(count)]
        for path in paths:
            pathlib.Path(path).write_bytes(data)
        program = f"{folder}/check_files"
        libraries = [os.path.dirname(os.path.abspath(one)) for one in (_library.data_path, _library.toolkit_path)]
        subprocess.run(["cc", "-O2", f"-I{ROOT}/include", f"-I{ROOT}/toolkit/include",
                        f"{ROOT}/python/bench/check_files.c", *(f"-L{one}" for one in libraries),
                        *(f"-Wl,-rpath,{one}" for one in libraries), "-lvornath_toolkit", "-lvornath_data",
                        "-o", program], check=True)

        def in_c():
            start = time.perf_counter()
            children = [subprocess.Popen([program], stdin=subprocess.PIPE, text=True) for _ in range(cores)]
            for number, child in enumerate(children):
                child.stdin.write("\n".join(paths[number::cores]) + "\n")
                child.stdin.close()
            for child in children:
                child.wait()
            return time.perf_counter() - start

        start = time.perf_counter()
        with batch.processes_of_this_machine(cores) as client:
            batch.run("info", paths[:cores * 2], client=client)
            begun = time.perf_counter() - start

            def on_dask():
                start = time.perf_counter()
                table = batch.run("check", paths, client=client)
                seconds = time.perf_counter() - start
                assert len(table) == count and not table.failed
                return seconds

            results = [(in_c(), on_dask()) for _ in range(5)]
        c, dask = (min(one) for one in zip(*results))
        print(f"{count} files of {len(data)} bytes on {cores} cores: C {c:.2f} s, Dask {dask:.2f} s, "
              f"{100 * c / dask:.0f} % (aim 80 %); the cluster starts in {begun:.2f} s")


if __name__ == "__main__":
    main()
