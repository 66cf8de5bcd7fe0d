#!/usr/bin/env python3
"""Measures how long vrn-convert takes for a .glb of a million triangles, beside tinygltf, which only loads it.

usage: scripts/convert_speed.py [--build FOLDER] [--rounds N]
  --build   a build with vrn-convert and load_gltf; the default is build/release
The last line is the median ratio of the two times, each of a whole process.
"""
import argparse
import array
import json
import math
import pathlib
import statistics
import struct
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
SIDE = 708  # vertices


def grid():
    """Returns a .glb of a curved sheet of 2 * (SIDE - 1)^2 triangles."""
    positions, normals, uvs, indices = (array.array(kind) for kind in "fffI")
    for j in range(SIDE):
        for i in range(SIDE):
            positions.extend((i / SIDE, math.sin(i * 0.05) * math.cos(j * 0.05) * 0.05, j / SIDE))
            normals.extend((0, 1, 0))
            uvs.extend((i / SIDE, j / SIDE))
    for j in range(SIDE - 1):
        for i in range(SIDE - 1):
            a = j * SIDE + i
            indices.extend((a, a + SIDE, a + 1, a + 1, a + SIDE, a + SIDE + 1))
    arrays = [indices, positions, normals, uvs]
    views, offset = [], 0
    for numbers in arrays:
        size = len(numbers) * 4
        views.append({"buffer": 0, "byteOffset": offset, "byteLength": size})
        offset += size
    kinds = [(5125, 1, "SCALAR"), (5126, 3, "VEC3"), (5126, 3, "VEC3"), (5126, 2, "VEC2")]
    accessors = [{"bufferView": i, "componentType": component, "count": len(arrays[i]) // lanes,
                  "type": kind} for i, (component, lanes, kind) in enumerate(kinds)]
    text = json.dumps({
        "asset": {"version": "2.0"}, "buffers": [{"byteLength": offset}], "bufferViews": views,
        "accessors": accessors, "nodes": [{"mesh": 0}],
        "meshes": [{"primitives": [{"indices": 0, "attributes": {
            "POSITION": 1, "NORMAL": 2, "TEXCOORD_0": 3}}]}]}).encode()
    text += b" " * (-len(text) % 4)
    body = b"".join(numbers.tobytes() for numbers in arrays)
    return (b"glTF" + struct.pack("<II", 2, 28 + len(text) + len(body)) +
            struct.pack("<I4s", len(text), b"JSON") + text +
            struct.pack("<I4s", len(body), b"BIN\0") + body)


def seconds(command):
    start = time.perf_counter()
    subprocess.run(command, check=True, capture_output=True)
    return time.perf_counter() - start


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build" / "release")
    parser.add_argument("--rounds", type=int, default=15)
    arguments = parser.parse_args()
    convert = arguments.build / "converter" / "vrn-convert"
    load = arguments.build / "converter" / "load_gltf"
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        file, scene = folder / "million.glb", folder / "million.vrnscene"
        file.write_bytes(grid())
        pairs = [(seconds([load, file]), seconds([convert, "--quiet", file, scene]))
                 for _ in range(arguments.rounds)]
    loads, converts = (statistics.median(times) for times in zip(*pairs))
    ratio = statistics.median(b / a for a, b in pairs)
    print(f"tinygltf loads in {loads:.3f} s, vrn-convert converts in {converts:.3f} s")
    print(f"{ratio:.2f} times as long")
    return 0


if __name__ == "__main__":
    sys.exit(main())
