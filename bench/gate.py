#!/usr/bin/env python3
"""Compares rows of the benchmarks with their aims in aims.def. scripts/bench.sh --gate runs it.

usage: gate.py --filter
       gate.py [--column NAME] RESULT.json...
  --filter   prints a regular expression that matches the rows of aims.def and their yardsticks
  --column   also writes the figures into the column NAME, "Base" or "Now", of the tables of
             docs/performance.md

The results are the JSON output of several runs. A row's figure is the median of the ratios of the
runs; the ratio of a run is that of the least times, or for threads of the
medians. The exit status is 1 if a figure is more than 25 % above its aim, or if a row of aims.def was
not measured. A row whose optional yardstick is not installed is skipped.
"""

import json
import math
import pathlib
import re
import statistics
import sys

TOLERANCE = 1.25
GROWTH = "growth"
OPTIONAL = ("protobuf", "RapidJSON", "HDF5")
FOLDER = pathlib.Path(__file__).resolve().parent
DOCUMENT = FOLDER.parent / "docs" / "performance.md"
SETTING = re.compile(r"(iterations|repeats|threads|min_time):.*|(real|process|manual)_time")
UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def read_aims():
    """Returns (row, yardstick, aim) for each line of aims.def. The aim is None for SHOWN lines."""
    text = (FOLDER / "aims.def").read_text()
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.DOTALL)
    string = r'"([^"]*)"'
    found = []
    for kind, row, yardstick, ratio in re.findall(
            rf"(AIM|SHOWN)\(\s*{string},\s*{string}(?:,\s*([0-9.]+))?\s*\)", text):
        found.append((row, yardstick, float(ratio) if kind == "AIM" else None))
    return found


def print_filter():
    rows = dict.fromkeys(row for row, _, _ in read_aims())
    names = [re.sub(r"([][().*+?{}|^$\\])", r"\\\1", row.rstrip("*")) + ("" if row[-1] != "*" else ".*")
             for row in rows]
    print("^(" + "|".join(names) + ")(/.*)?$")


def read_times(path):
    """Returns the times of one run in ns: {name: time} and {name: {size: time}}.

    A time of the processor is the least of the repetitions, since whatever else the machine does only
    adds to it. A time that passes is their median: threads that do not meet are too fast.
    """
    repetitions = {}
    for run in json.loads(pathlib.Path(path).read_text())["benchmarks"]:
        if run.get("error_occurred"):
            sys.exit(f"gate.py: {run['name']}: {run['error_message']}")
        if run["run_type"] != "iteration":
            continue
        parts = run["run_name"].split("/")
        real = "real_time" in parts
        while SETTING.fullmatch(parts[-1]):
            parts.pop()
        time = run["real_time" if real else "cpu_time"] * UNITS[run["time_unit"]]
        if len(parts) > 1 and parts[-1].isdigit():
            key = "/".join(parts[:-1]), int(parts[-1])
        else:
            key = "/".join(parts), None
        repetitions.setdefault((*key, statistics.median if real else min), []).append(time)
    times, sizes = {}, {}
    for (name, size, reduce), all_times in repetitions.items():
        if size is None:
            times[name] = reduce(all_times)
        else:
            sizes.setdefault(name, {})[size] = reduce(all_times)
    return times, sizes


def readable(nanoseconds):
    for unit in ("ns", "us", "ms"):
        if nanoseconds < 1000:
            return f"{nanoseconds:.3g} {unit}" if nanoseconds < 100 else f"{nanoseconds:.0f} {unit}"
        nanoseconds /= 1000
    return f"{nanoseconds:.3g} s"


class Figure:
    """The result of a row: a ratio, or an exponent, with the time of the row."""

    def __init__(self, row, yardstick, aim):
        self.row, self.yardstick, self.aim = row, yardstick, aim
        self.values, self.times = [], []
        self.range = None  # of sizes, for growth

    def add(self, times, sizes):
        if self.yardstick == GROWTH:
            measured = sizes.get(self.row)
            if not measured or len(measured) < 2:
                return
            small, large = min(measured), max(measured)
            self.range = large / small
            self.values.append(math.log(measured[large] / measured[small]) / math.log(self.range))
            self.times.append(measured[large])
        elif self.row in times and f"{self.row}/{self.yardstick}" in times:
            self.values.append(times[self.row] / times[f"{self.row}/{self.yardstick}"])
            self.times.append(times[self.row])

    @property
    def value(self):
        return statistics.median(self.values)

    def limit(self):
        """The largest value that passes. For growth, the time at the larger size may be 25 % above."""
        if self.range:
            return self.aim + math.log(TOLERANCE) / math.log(self.range)
        return self.aim * TOLERANCE

    def verdict(self):
        if self.aim is None:
            return ""
        return "ok" if self.value <= self.limit() else "over"

    def aim_text(self):
        return "" if self.aim is None else f"{self.aim:g}"

    def text(self):
        return f"{self.value:.3g} ({readable(statistics.median(self.times))})"


def figures_of(aims, runs):
    figures, missing = [], []
    for row, yardstick, aim in aims:
        rows = [row]
        if row.endswith("*"):
            prefix = row[:-1]
            rows = sorted(name for name in runs[0][0] if name.startswith(prefix) and "/" not in name)
        for name in rows:
            figure = Figure(name, yardstick, aim)
            for times, sizes in runs:
                figure.add(times, sizes)
            if figure.values:
                figures.append(figure)
            else:
                missing.append((name, yardstick))
    return figures, missing


def write_column(column, figures):
    """Writes the figures and the aims into the tables of the document that have this column."""
    rest = {(figure.row, figure.yardstick): figure for figure in figures}
    lines = DOCUMENT.read_text().split("\n")
    header = None
    for i, line in enumerate(lines):
        if not line.startswith("|"):
            header = None
            continue
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if "Row" in cells and column in cells:
            header = cells
        elif header and (cells[0], cells[1]) in rest:
            figure = rest.pop((cells[0], cells[1]))
            cells[header.index(column)] = figure.text()
            cells[header.index("Aim")] = figure.aim_text()
            lines[i] = "| " + " | ".join(cells) + " |"
    DOCUMENT.write_text("\n".join(lines))
    for row, yardstick in rest:
        print(f"not in {DOCUMENT.name}: {row}, {yardstick}")


def main(arguments):
    if arguments == ["--filter"]:
        print_filter()
        return 0
    column = None
    if arguments[:1] == ["--column"]:
        column, arguments = arguments[1], arguments[2:]
    # A run may have several files, one for each program; their rows are different.
    runs = [read_times(path) for path in arguments]
    figures, missing = figures_of(read_aims(), runs)
    print("| Row | Yardstick | Ratio | Aim | |\n|---|---|---|---|---|")
    for figure in figures:
        print(f"| {figure.row} | {figure.yardstick} | {figure.text()} | {figure.aim_text()} |"
              f" {figure.verdict()} |")
    print()
    failed = [figure for figure in figures if figure.verdict() == "over"]
    for row, yardstick in missing:
        if yardstick.startswith(OPTIONAL) and any(row in times for times, _ in runs):
            print(f"skipped, since the yardstick is not installed: {row}, {yardstick}")
        else:
            print(f"not measured: {row}, {yardstick}")
            failed.append(row)
    print(f"{len(failed)} of {len(figures) + len(missing)} rows are over their aim"
          " by more than 25 % or were not measured" if failed else "all rows keep to their aims")
    if column:
        write_column(column, figures)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
