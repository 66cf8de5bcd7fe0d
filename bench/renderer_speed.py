#!/usr/bin/env python3
"""Measures vrn-render beside the path tracer of Debian's embree-tools on one thread.

Both render the measured box of the examples with a point for a lamp: the same mesh, camera, size, depth
and number of samples, and no end of paths by chance. Takes the time of the processor, not of the clock,
without what a program takes to start, from runs that alternate; prints the medians and their ratio.

usage: bench/renderer_speed.py [BUILD [RUNS]]
  BUILD  a build tree with vrn, vrn-render and build_scene; the default is build/release
  RUNS   of each program; the default is 5
"""
import csv
import json
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

SIDE = 256
SAMPLES = 64
DEPTH = 6
SOURCE = pathlib.Path(__file__).resolve().parent.parent


def used_by_children():
    times = os.times()
    return times.children_user + times.children_system


def seconds(command):
    """The time of the processor that a command takes."""
    before = used_by_children()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return used_by_children() - before


def write_mesh(folder):
    """Writes the box for the other program: an OBJ file and the options of its camera and its lamp."""
    colours = {"white": ".7 .7 .6", "green": ".15 .4 .1", "red": ".5 .06 .05", "light": ".78 .78 .78"}
    materials = "".join(f"newmtl {name}\nKd {colour}\nillum 4\nd 1\nNs 1\nNi 1\nKa 0 0 0\nKs 0 0 0\n\n"
                        for name, colour in colours.items())
    (folder / "box.mtl").write_text(materials)
    lines = ["mtllib box.mtl"]
    with open(SOURCE / "examples/cornell_box/data/cornell_box_geometry.csv") as table:
        rows = [row for row in csv.DictReader(table) if row["object"] != "light"]
    for first in range(0, len(rows), 4):
        lines.append("usemtl " + rows[first]["material"])
        for row in rows[first:first + 4]:
            lines.append("v " + " ".join(str(float(row[axis]) / 1000) for axis in "xyz"))
        lines.append(f"f {first + 1} {first + 2} {first + 3}\nf {first + 1} {first + 3} {first + 4}")
    (folder / "box.obj").write_text("\n".join(lines) + "\n")
    (folder / "box.ecs").write_text(
        "-i box.obj\n--pointlight 0.278 0.5 0.28 0.5 0.5 0.5\n"
        "-vp 0.278 0.273 -0.8\n-vi 0.278 0.273 0\n-vu 0 1 0\n-fov 39.3\n")


def write_scene(build, folder):
    """Writes the box as a scene with a point for a lamp, and without the mesh that shows the lamp."""
    vrn = build / "tools/vrn"
    subprocess.run([build / "examples/cornell_box/build_scene", folder / "box.vrnscene"], check=True,
                   stdout=subprocess.DEVNULL)
    subprocess.run([vrn, "export", folder / "box.vrnscene", "--full", "--inline", "-o", folder / "box.json"],
                   check=True)
    scene = json.loads((folder / "box.json").read_text())
    objects = scene["objects"]
    objects["LightProgram"][0]["text"] = "light point(spectrum emission)\n{\n    emit(emission);\n}\n"
    lamp = objects["Light"][0]
    lamp["groups"]["Transformation"]["matrix"]["w"] = [0.278, 0.5, 0.28, 1.0]
    lamp["slots"]["transformationGroup"] = None
    for shape in objects["Shape"]:
        shape["slots"]["lightGroup"] = None
    objects["Shape"][1] = None
    objects["LightGroup"] = []
    termination = objects["ImageTask"][0]["groups"]["Global illumination"]["russian_roulette_termination"]
    termination["start_depth"] = 1000
    (folder / "point.json").write_text(json.dumps(scene))
    subprocess.run([vrn, "build", folder / "point.json", "-o", folder / "point.vrnscene"], check=True)


def main():
    build = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else SOURCE / "build/release").resolve()
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    if shutil.which("pathtracer") is None:
        sys.exit("pathtracer was not found; apt-get install embree-tools")
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        write_mesh(folder)
        write_scene(build, folder)

        def theirs(samples):
            return ["pathtracer", "-c", folder / "box.ecs", "--size", str(SIDE), str(SIDE), "--spp", str(samples),
                    "--max-path-length", str(DEPTH), "--threads", "1", "-o", folder / "theirs.ppm"]

        def ours(samples, *more):
            return [build / "renderer/vrn-render", folder / "point.vrnscene", "-o", folder / "ours.png",
                    "--size", str(SIDE), "--samples", str(samples), "--bounces", str(DEPTH), "--quiet", *more]

        pixels = SIDE * SIDE
        rates = {"pathtracer": [], "vrn-render": []}
        for _ in range(runs):
            for label, command in (("pathtracer", theirs), ("vrn-render", lambda n: ours(n, "--threads", "1"))):
                start = seconds(command(1))
                rates[label].append(pixels * SAMPLES / (seconds(command(SAMPLES + 1)) - start) / 1e6)
        for label, found in rates.items():
            print(f"{label}: {statistics.median(found):.2f} million samples a second of the processor "
                  f"(from {min(found):.2f} to {max(found):.2f})")
        ratio = statistics.median(a / b for a, b in zip(rates["vrn-render"], rates["pathtracer"]))
        print(f"ratio: {ratio:.3f}")

        # The clock tells what a second processor gives, if both are idle; the time of the processors
        # tells what two threads cost each other, also if they are not.
        by_clock, by_processor = [], []
        for _ in range(runs):
            clock, used = [], []
            for threads in ("1", "2"):
                begin = time.monotonic()
                used.append(seconds(ours(2 * SAMPLES, "--threads", threads)))
                clock.append(time.monotonic() - begin)
            by_clock.append(clock[0] / clock[1])
            by_processor.append(2 * used[0] / used[1])
        print(f"two threads: {statistics.median(by_clock):.2f} times one by the clock (from "
              f"{min(by_clock):.2f} to {max(by_clock):.2f}), {statistics.median(by_processor):.2f} times by "
              f"the time of the processors")


if __name__ == "__main__":
    main()
