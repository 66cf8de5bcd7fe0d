#!/usr/bin/env python3
"""Updates everything that follows from the tables of fields in include/vornath_data/catalogue/:
docs/catalogue.md, which the toolkit prints; the version and sizes in docs/scene_format.md; the version in
CHANGELOG.md; and the version in the scene files of the fuzz corpus. Run it after you change a class, a group
or a field.

If the layout of scene files has changed but their version has not, it writes nothing and fails:
increment kVersion in src/scene/scene_file.cpp first, and add a line to its history.

usage: scripts/write_catalogue.py [BUILD_FOLDER]     the default is build/dev
       scripts/write_catalogue.py --compare OLD NEW  compares two catalogue pages and writes nothing
"""
import pathlib
import re
import struct
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def read_page(text):
    """Returns the version, and the layout as pairs of a place and its description, in page order."""
    found = re.search(r"^Scene files: version (\d+)\.$", text, re.M)
    version = int(found.group(1)) if found else None
    layout = {}
    place = group = ""
    for line in text.splitlines():
        if heading := re.match(r"## (?:(\d+): )?(.*)", line):
            place = group = heading.group(2)
            layout[place] = heading.group(1)
        elif line.startswith("Kind: "):
            layout[f"{place}, kind"] = line[6:].rstrip(".")
        elif line.startswith("Its groups take "):
            layout[f"{place}, groups"] = line[16:].rstrip(".")
        elif slot := re.match(r"\| (\d+) \| `(\w+)` \| (.*) \|$", line):
            layout[f'{place}, slot "{slot.group(2)}"'] = f"slot {slot.group(1)}: {slot.group(3)}"
        elif heading := re.match(r"### Group \d+: (.*)", line):
            group = f'{place} "{heading.group(1)}"'
        elif size := re.match(r"\d+ bytes at \d+, aligned to \d+", line):
            layout[group] = size.group()
        elif field := re.match(r"\| `([^`]+)` \| (\d+) \| ([^|]*) \|", line):
            path, offset, kind = field.groups()
            # The order of constructors belongs to the layout; their labels do not.
            kind = re.sub(r' @\w+="[^"]*"', "", kind)
            layout[f"{group}: {path}"] = f"{kind} at {offset}"
    return version, layout


def layout_changes(old, new):
    changes = [f"{place}: {old[place]} before, {new.get(place, 'nothing')} now"
               for place in old if old[place] != new.get(place)]
    changes += [f"{place}: {new[place]}, nothing before" for place in new if place not in old]
    return changes


def check(old_text, new_text):
    """Exits with a list of the changes if the layout changed under the same version."""
    old_version, old = read_page(old_text)
    new_version, new = read_page(new_text)
    if not new_version:
        sys.exit("No version of scene files in the new page.")
    changes = layout_changes(old, new)
    if old_version and new_version < old_version:
        sys.exit(f"The version of scene files went back from {old_version} to {new_version}.")
    if changes and new_version == old_version:
        sys.exit("\n".join(
            [f"The layout of scene files has changed, and their version is still {new_version}:"]
            + [f"  {change}" for change in changes]
            + ["Increment kVersion in src/scene/scene_file.cpp, and add a line to its history."]))
    return new_version, changes


def instance_rows(page):
    """Returns the rows of docs/scene_format.md for the classes of instances."""
    rows = {}
    for section in re.split(r"^## ", page, flags=re.M)[1:]:
        title, body = section.split("\n", 1)
        if "Kind: instance" not in body:
            continue
        kinds = re.findall(r"^\| \d+ \| `\w+` \| ([^|]*) \|", body, re.M)
        singles = sum(kind.startswith("one, ") for kind in kinds)
        parts = [f"{singles} slot{'s' if singles > 1 else ''}"] if singles else []
        parts += ["list"] * (len(kinds) - singles)
        if size := re.search(r"^Its groups take (\d+) bytes", body, re.M):
            parts.append(f"groups {size.group(1)}")
        if "with a value" in body:
            parts.append("value")
        rows[title.split(": ")[1]] = "; ".join(parts)
    return rows


def header_rows(page):
    """Returns the rows of docs/scene_format.md for the scene-wide groups and the bytes behind them."""
    body = page.split("## The scene as a whole\n")[1]
    rows, end = [], 0
    groups = re.findall(r"### Group \d+: (.*?)\n.*?\n(\d+) bytes at (\d+),", body, re.S)
    for name, size, offset in groups:
        if int(offset) != end:
            rows.append(f"| {28 + end} | {int(offset) - end} | zero |")
        rows.append(f'| {28 + int(offset)} | {size} | "{name}" |')
        end = int(offset) + int(size)
    whole = int(re.search(r"Its groups take (\d+) bytes", body).group(1))
    if whole != end:
        rows.append(f"| {28 + end} | {whole - end} | zero |")
    classes = len(re.findall(r"^## \d+: ", page, re.M))
    rows.append(f"| {28 + whole} | | the sections of the {classes} classes |")
    return "\n".join(rows) + "\n"


def scene_format(text, page, version):
    word = " ".join(f"{byte:02x}" for byte in struct.pack("<I", version))
    text = re.sub(r"version, \d+ \|", f"version, {version} |", text)
    text = re.sub(r"(    00008  )(?:\w\w ){4}( *)version \d+", rf"\g<1>{word} \g<2>version {version}", text)
    text = re.sub(r"(the message names that version and )\d+", rf"\g<1>{version}", text)
    text = re.sub(r"(the scene's id \|\n)(?:\|.*\n)*", lambda found: found.group(1) + header_rows(page), text,
                  count=1)
    rows = "".join(f"| `{name}` | {parts} |\n" for name, parts in instance_rows(page).items())
    text = re.sub(r"(\| `MaterialGraph` \|.*\n)(?:\|.*\n)*", lambda found: found.group(1) + rows, text, count=1)
    return text


def write(path, text):
    if path.read_text() == text:
        print(f"{path.relative_to(ROOT)}: up to date")
        return
    path.write_text(text)
    print(f"{path.relative_to(ROOT)}: written")


def main(arguments):
    if arguments[:1] == ["--compare"]:
        _, changes = check(*(pathlib.Path(name).read_text() for name in arguments[1:3]))
        print("\n".join(changes) or "The layouts are the same.")
        return
    build = pathlib.Path(arguments[0]) if arguments else ROOT / "build/dev"
    subprocess.run(["cmake", "--build", str(build), "--target", "list_catalogue"], check=True,
                   stdout=subprocess.DEVNULL)
    page = subprocess.run([str(build / "examples/list_catalogue"), "markdown"], check=True,
                          capture_output=True, text=True).stdout
    catalogue = ROOT / "docs/catalogue.md"
    version, changes = check(catalogue.read_text(), page)
    for change in changes:
        print(change)

    write(catalogue, page)
    document = ROOT / "docs/scene_format.md"
    write(document, scene_format(document.read_text(), page, version))
    changelog = ROOT / "CHANGELOG.md"
    # The newest version of the library is the first section.
    write(changelog, re.sub(r"scene files of version \d+", f"scene files of version {version}",
                            changelog.read_text(), count=1))
    subprocess.run([sys.executable, str(ROOT / "scripts/raise_corpus_version.py")], check=True)


if __name__ == "__main__":
    main(sys.argv[1:])
