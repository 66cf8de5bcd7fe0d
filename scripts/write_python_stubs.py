#!/usr/bin/env python3
"""Writes python/vornath_data/_objects.pyi: the classes of objects with their groups, fields and slots, from
the catalogue of the library. Run it after a class, a group or a field has changed.

usage: scripts/write_python_stubs.py [--check]
       --check  writes nothing, and exits with status 1 if the file is out of step with the catalogue

Needs the built libraries; VORNATH_DATA_LIBRARY says where they are (the default is build/dev).
"""
import os
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TARGET = ROOT / "python/vornath_data/_objects.pyi"
os.environ.setdefault("VORNATH_DATA_LIBRARY",
                      os.pathsep.join(str(ROOT / "build/dev" / one) for one in ("src", "toolkit")))
sys.path.insert(0, str(ROOT / "python"))

from vornath_data._layout import is_text  # noqa: E402
from vornath_data._records import Fields, _class_name  # noqa: E402
from vornath_data.catalogue import catalogue  # noqa: E402

SCALARS = {"bool": "bool", "int": "int", "float": "float", "half": "float", "char": "int"}
HEAD = '''"""The classes of objects with their groups, fields and slots.

Written by scripts/write_python_stubs.py from the catalogue; do not edit."""
# fmt: off
from typing import Literal

from . import assets
from ._records import Elements, Fields, GroupRecord, PartRecord
from .scene import Instance, Objects, Program, ReferenceList
from .values import Value

'''


class Writer:
    def __init__(self):
        self.parts = {}  # class name: lines of a struct or a group
        self.order = []

    def add(self, name, lines):
        if name in self.parts:
            return
        self.parts[name] = lines
        self.order.append(name)

    def kind(self, type, name):
        """Returns the annotation of a field's type. `name` is that of the class to write for a struct."""
        if type.kind in SCALARS:
            return SCALARS[type.kind]
        if type.kind == "enum":
            return "str | int" if len(type.labels) > 12 else (
                f"Literal[{', '.join(repr(label) for label in type.labels)}] | int")
        if type.kind == "vector":
            return f"tuple[{', '.join([SCALARS[type.base]] * type.lanes)}]"
        if type.kind == "array":
            return "str" if is_text(type) else "Elements"
        if type.kind == "struct":
            self.struct(type, name, "PartRecord")
            return name
        raise SystemExit(f"a field of the type {type.text}")

    def struct(self, type, name, base):
        lines = []
        for label, field in type.fields.items():
            if hasattr(Fields, label):
                raise SystemExit(f"the field {label} has the name of a method of Fields")
            inner = name + "".join(part[:1].upper() + part[1:] for part in label.split("_"))
            lines.append(f"    {label}: {self.kind(field.type, inner)}")
        self.add(name, [f"class {name}({base}):", *(lines or ["    ..."]), ""])


def target(slot):
    if slot.single:
        return f"{slot.target} | None"
    return "ReferenceList"


def stub():
    writer = Writer()
    text = [HEAD]
    classes = []
    for entry in catalogue():
        base = {"program": "Program", "instance": "Instance"}.get(entry.kind, f"assets.{entry.name}")
        lines = [f"class {entry.name}({base}):"]
        for group in entry.groups.values():
            name = _class_name(entry.name, group.name)
            writer.struct(group.type, name, "GroupRecord")
            lines.append(f"    {group.attribute}: {name}")
        lines += [f"    {slot.attribute}: {target(slot)}" for slot in entry.slots.values()]
        if entry.has_value:
            lines.append("    value: Value | None")
        if len(lines) == 1:
            lines.append("    ...")
        classes += [*lines, ""]
    for name in writer.order:
        text.append("\n".join(writer.parts[name]))
    text.append("\n".join(classes))
    text += [f"_{entry.name} = {entry.name}" for entry in catalogue()]
    text.append("\nclass SceneClasses:")
    for entry in catalogue():
        text.append(f"    @property\n    def {entry.name}(self) -> Objects[_{entry.name}]: ...")
    return "\n".join(text).replace("\n\n\n", "\n\n") + "\n"


def main():
    text = stub()
    if "--check" in sys.argv[1:]:
        if not TARGET.exists() or TARGET.read_text() != text:
            sys.exit(f"{TARGET.relative_to(ROOT)} is out of step with the catalogue; "
                     "run scripts/write_python_stubs.py")
        return
    TARGET.write_text(text)


if __name__ == "__main__":
    main()
