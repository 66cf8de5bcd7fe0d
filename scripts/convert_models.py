#!/usr/bin/env python3
"""Converts the test models of Debian's package assimp-testmodels, checks and renders each scene, and
writes the tables of docs/convert.md.

usage: scripts/convert_models.py [--build FOLDER] [--pictures FOLDER] [--only WORD] [--check]
  --build     the build with vrn-convert, vrn-render and vrn; the default is build/dev
  --pictures  keeps the pictures in this folder
  --only      only the files whose path contains the word; prints the results and writes nothing
  --check     exits with 1 if a file fails, and writes nothing
"""
import argparse
import concurrent.futures
import json
import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import zlib

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs" / "convert.md"
BEGIN = "<!-- models: scripts/convert_models.py writes what follows -->"
END = "<!-- end of models -->"
PACKAGE = "assimp-testmodels"

# Files that belong to others: images, buffers, materials, shaders and notes.
PARTS = {"png", "jpg", "tga", "bmp", "bin", "mtl", "txt", "md", "glsl", "vert", "frag", "material"}
RENDER_SECONDS = 120


def model_files():
    listed = subprocess.run(["dpkg", "-L", PACKAGE], capture_output=True, text=True, check=True)
    files = [pathlib.Path(line) for line in listed.stdout.splitlines() if "/models/" in line]
    return sorted(path for path in files if path.is_file())


def read_png(path):
    """Returns the rows of a PNG of 8 bits a channel as bytes, without their alpha."""
    data = path.read_bytes()
    at, packed, width, height, channels = 8, b"", 0, 0, 3
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        if kind == b"IHDR":
            width, height, _, colour = struct.unpack(">IIBB", body[:10])
            channels = {0: 1, 2: 3, 4: 2, 6: 4}[colour]
        elif kind == b"IDAT":
            packed += body
        at += 12 + size
    raw = zlib.decompress(packed)
    stride = width * channels
    rows, before = [], bytes(stride)
    for y in range(height):
        kind = raw[y * (stride + 1)]
        row = bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for x in range(stride):
            left = row[x - channels] if x >= channels else 0
            up = before[x]
            corner = before[x - channels] if x >= channels else 0
            if kind == 1:
                add = left
            elif kind == 2:
                add = up
            elif kind == 3:
                add = (left + up) // 2
            elif kind == 4:
                guess = left + up - corner
                near = [abs(guess - left), abs(guess - up), abs(guess - corner)]
                add = (left, up, corner)[near.index(min(near))]
            else:
                add = 0
            row[x] = (row[x] + add) & 255
        before = bytes(row)
        rows.append(b"".join(before[i:i + min(channels, 3)] for i in range(0, stride, channels)))
    return rows


def is_lit(path):
    """Whether a picture is not black: some of its pixels are brighter than 1/16."""
    return sum(1 for row in read_png(path) for byte in row if byte > 16) >= 3


class Run:
    def __init__(self, build, pictures):
        self.convert = build / "converter" / "vrn-convert"
        self.render = build / "renderer" / "vrn-render"
        self.vrn = build / "tools" / "vrn"
        self.pictures = pictures

    def attempt(self, path, folder, options):
        """Returns (kind, text, report): kind is ok, refused, black or failed."""
        scene, picture = folder / "model.vrnscene", folder / "model.png"
        done = subprocess.run(
            [self.convert, "--json", "--quiet", *options, path, scene],
            capture_output=True, text=True, errors="replace", check=False)
        if done.returncode == 2:
            lines = done.stderr.strip().splitlines()
            start = f"vrn convert: {path}: "
            if len(lines) != 1 or not lines[0].startswith(start):
                return "failed", f"exits with 2 and {len(lines)} lines", {}
            return "refused", lines[0][len(start):].replace(str(path), path.name), {}
        if done.returncode != 0:
            return "failed", f"exits with {done.returncode}: {done.stderr.strip()}", {}
        report = json.loads(done.stdout)
        checked = subprocess.run([self.vrn, "check", "--strict", scene], capture_output=True,
                                 text=True, check=False)
        if checked.returncode != 0:
            return "failed", "vrn check: " + " ".join(checked.stdout.split())[:200], report
        rendered = subprocess.run(
            [self.render, scene, "-o", picture, "--size", "96", "--samples", "8", "--quiet",
             "--time", "20", "--threads", "1"],
            capture_output=True, text=True, timeout=RENDER_SECONDS, check=False)
        if rendered.returncode != 0:
            return "failed", "vrn render: " + rendered.stderr.strip()[:200], report
        if self.pictures:
            name = "_".join(path.parts[5:]) + ".png"
            (self.pictures / name).write_bytes(picture.read_bytes())
        return ("ok" if is_lit(picture) else "black"), "", report

    def model(self, path):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            kind, text, report = self.attempt(path, folder, [])
            if kind == "black" and not report["addedCamera"]:
                # The file's own camera may see nothing.
                kind, text, report = self.attempt(path, folder, ["--frame"])
                if kind == "ok":
                    text = "seen with `--frame`; its own camera sees nothing that is lit"
            if kind == "black" and not report["addedLight"]:
                kind, text, report = self.attempt(path, folder, ["--frame", "--light"])
                if kind == "ok":
                    text = "seen with `--light`; its own lights do not reach what the camera sees"
            return path, kind, text, report


def short(path):
    return str(path).split("/models/", 1)[1]


def cell(text):
    return text.replace("|", "\\|").replace("<", "&lt;").replace("\n", " ")


def tables(results, version):
    models = [r for r in results if r[0].suffix.lower().lstrip(".") not in PARTS]
    parts = [r for r in results if r[0].suffix.lower().lstrip(".") in PARTS]
    lines = [f"The run converted the {len(results)} files of {PACKAGE} {version}: {len(models)} models, and "
             f"{len(parts)} files that belong to them (images, buffers, materials and notes), of which "
             f"{sum(1 for r in parts if r[1] == 'refused')} are refused as models and "
             f"{sum(1 for r in parts if r[1] == 'ok')} can be read as one.", "",
             "| Folder | Models | Rendered | Refused | Failed |", "|---|---|---|---|---|"]
    folders = sorted({short(r[0]).split("/")[0] for r in models}, key=str.lower)
    for folder in folders:
        inside = [r for r in models if short(r[0]).split("/")[0] == folder]
        count = [sum(1 for r in inside if r[1] == kind) for kind in ("ok", "refused")]
        lines.append(f"| {folder} | {len(inside)} | {count[0]} | {count[1]} | "
                     f"{len(inside) - sum(count)} |")
    count = [sum(1 for r in models if r[1] == kind) for kind in ("ok", "refused")]
    lines.append(f"| all | {len(models)} | {count[0]} | {count[1]} | {len(models) - sum(count)} |")
    lines += ["", "Each model that is refused, with the line that is printed behind its name:", "",
              "| Model | Line |", "|---|---|"]
    lines += [f"| {cell(short(r[0]))} | {cell(r[2])} |" for r in models if r[1] == "refused"]
    lines += ["", "Each model that is rendered:", "", "| Model | Triangles | Remark |", "|---|---|---|"]
    lines += [f"| {cell(short(r[0]))} | {r[3]['triangles']} | {cell(r[2])} |"
              for r in models if r[1] == "ok"]
    return lines


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build" / "dev")
    parser.add_argument("--pictures", type=pathlib.Path)
    parser.add_argument("--only", default="")
    parser.add_argument("--check", action="store_true")
    arguments = parser.parse_args()
    if arguments.pictures:
        arguments.pictures.mkdir(parents=True, exist_ok=True)
    files = [path for path in model_files() if arguments.only in str(path)]
    run = Run(arguments.build.resolve(), arguments.pictures)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(run.model, files))
    bad = [r for r in results if r[1] in ("failed", "black")]
    for path, kind, text, _ in results if arguments.only else bad:
        print(f"{kind}: {short(path)} {text}")
    if not arguments.only and not arguments.check:
        version = subprocess.run(["dpkg-query", "-W", "-f=${Version}", PACKAGE],
                                 capture_output=True, text=True, check=True).stdout
        page = PAGE.read_text(encoding="utf-8")
        before, _, rest = page.partition(BEGIN)
        _, _, after = rest.partition(END)
        body = "\n".join(tables(results, version))
        PAGE.write_text(f"{before}{BEGIN}\n\n{body}\n\n{END}{after}", encoding="utf-8")
    print(f"{len(results)} files, {sum(1 for r in results if r[1] == 'ok')} rendered, "
          f"{sum(1 for r in results if r[1] == 'refused')} refused, {len(bad)} failed")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
