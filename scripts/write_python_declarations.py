#!/usr/bin/env python3
"""Writes python/vornath_data/_declarations.py: the ctypes declarations of all C functions, structs and
constants of the public headers of vornath_data and vornath_toolkit. Run it after a header has changed.

usage: scripts/write_python_declarations.py [--check]
       --check  writes nothing, and exits with status 1 if the file is out of step with the headers
"""
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TARGET = ROOT / "python/vornath_data/_declarations.py"
FOLDERS = (ROOT / "include", ROOT / "toolkit/include")
HEADERS = ("vornath_data/vrnt.h", "vornath_data/vrdm.h", "vornath_data/asset_records.h",
           "vornath_toolkit/vrtk.h")
NAME = re.compile(r"(vrnt|vrtn|vrdm|vrtk)[A-Z]\w*$")

SCALARS = {
    "char": "c_char", "bool": "c_bool", "_Bool": "c_bool", "float": "c_float", "double": "c_double",
    "int32_t": "c_int32", "uint32_t": "c_uint32", "int64_t": "c_int64", "uint64_t": "c_uint64",
    "uint8_t": "c_uint8", "int": "c_int", "size_t": "c_size_t",
}


def preprocess():
    """Returns the headers as one text without comments and directives."""
    source = "".join(f"#include <{header}>\n" for header in HEADERS)
    command = [os.environ.get("CC", "cc"), "-E", "-P", "-x", "c", "-std=c11"]
    command += [f"-I{folder}" for folder in FOLDERS] + ["-"]
    return subprocess.run(command, input=source, text=True, capture_output=True, check=True).stdout


class Headers:
    """The declarations of the headers as lines of Python."""

    def __init__(self, text):
        self.structs = {}    # name: members as pairs of a name and a ctypes expression
        self.handles = set()  # names of incomplete structs
        self.callbacks = {}  # name: ctypes expression
        self.constants = {}
        self.functions = {}  # name: (result, arguments)
        text = re.sub(r"__attribute__\s*\(\(visibility\(\"default\"\)\)\)", "VISIBLE", text)
        for body in re.findall(r"enum\s*\w*\s*\{([^}]*)\}", text):
            self.read_enum(body)
        for body, name in re.findall(r"typedef struct \w+\s*\{(.*?)\}\s*(\w+)\s*;", text, re.S):
            self.structs[name] = body
        for name in re.findall(r"typedef struct \w+ (\w+)\s*;", text):
            if NAME.match(name):
                self.handles.add(name)
        for result, name, arguments in re.findall(
                r"typedef ([\w ]+?[\s*]*)\(\s*\*\s*(\w+)\s*\)\s*\(([^;]*)\)\s*;", text):
            if NAME.match(name):
                self.callbacks[name] = self.callback(result, arguments)
        known = {name: body for name, body in self.structs.items()
                 if NAME.match(name) or name == "AssetStorage"}
        self.structs = {}
        for name in known:
            self.structs[name] = None
        for name, body in known.items():
            self.structs[name] = self.read_members(body)
        for result, name, arguments in re.findall(
                r"VISIBLE\s+([\w ]+?[\s*]*?)\s*(\w+)\s*\(([^;{]*)\)\s*;", text):
            if not NAME.match(name):
                raise SystemExit(f"unexpected function: {name}")
            self.functions[name] = (self.kind(result), [self.argument(one) for one in
                                                        self.split(arguments)])
        # It takes the address of a string that the library made, not a text.
        self.functions["vrntDestroyString"] = ("None", ["c_void_p"])
        if len(self.functions) != text.count("VISIBLE"):
            raise SystemExit("a declaration was not understood")
        for folder in FOLDERS:
            for header in sorted(folder.rglob("*.h")):
                for name, value in re.findall(
                        r"^#define (V[A-Z]+_[A-Z_]+) (\d+|UINT64_MAX|UINT32_MAX)$",
                        header.read_text(), re.M):
                    self.constants[name] = {"UINT64_MAX": 2**64 - 1, "UINT32_MAX": 2**32 - 1}.get(
                        value) if value.startswith("U") else int(value)
        self.constants["VRDM_CLASS_SCENE_DATA"] = 2**32 - 1

    def read_enum(self, body):
        number = -1
        for entry in filter(None, (part.strip() for part in body.split(","))):
            name, _, value = (part.strip() for part in entry.partition("="))
            number = int(value, 0) if value else number + 1
            if name.startswith("VR"):
                self.constants[name] = number

    @staticmethod
    def split(arguments):
        """Returns the arguments of a list, which may contain types of functions."""
        parts, depth, part = [], 0, ""
        for character in arguments:
            depth += (character == "(") - (character == ")")
            if character == "," and not depth:
                parts.append(part)
                part = ""
            else:
                part += character
        parts.append(part)
        parts = [one.strip() for one in parts]
        return [] if parts in ([""], ["void"]) else parts

    def callback(self, result, arguments):
        kinds = [self.kind(result)] + [self.argument(one) for one in self.split(arguments)]
        return f"CFUNCTYPE({', '.join(kinds)})"

    def argument(self, text):
        function = re.match(r"(.+?)\(\s*\*\s*\w+\s*\)\s*\((.*)\)$", text)
        if function:
            return self.callback(function.group(1), function.group(2))
        array = re.match(r"(.*?)\w+\s*\[\s*\w*\s*\]$", text)
        if array:
            return self.kind(array.group(1) + "*")
        return self.kind(re.sub(r"\b\w+$", "", text) if not text.endswith("*") else text)

    def kind(self, text):
        """Returns the ctypes expression of a type. Handles and pointers to data are void pointers."""
        stars = text.count("*")
        name = re.sub(r"\b(const|struct|enum)\b|\*", "", text).strip()
        if name == "void" and not stars:
            return "None"
        if name == "char" and stars == 1 and "const" in text:
            return "c_char_p"
        if stars:
            return "c_void_p"
        if name in self.callbacks:
            return name
        if name in self.structs:
            return name
        return SCALARS[name]

    def read_members(self, body):
        members = []
        for line in filter(None, (part.strip() for part in body.split(";"))):
            function = re.match(r"(.+?)\(\s*\*\s*(\w+)\s*\)\s*\((.*)\)$", line)
            if function:
                members.append((function.group(2), "c_void_p"))
                continue
            kind, names = re.match(r"((?:const )?\w+\s*)(.*)$", line, re.S).groups()
            for name in names.split(","):
                size = re.search(r"\[(\w+)\]$", name)
                label = re.search(r"(\w+)\s*(?:\[\w+\])?$", name).group(1)
                expression = self.kind(kind + "*" * name.count("*"))
                if size:
                    number = size.group(1)
                    number = self.constants.get(number) or int(number)
                    expression = f"{expression} * {number}"
                members.append((label, expression))
        return members


def write(headers):
    lines = ['"""The C declarations of vornath_data and vornath_toolkit for ctypes.',
             "",
             "Written by scripts/write_python_declarations.py from the public headers; do not edit.",
             'Handles and pointers to data are void pointers."""',
             "# fmt: off",
             "# mypy: ignore-errors",
             "from ctypes import (CFUNCTYPE, Structure, c_bool, c_char, c_char_p, c_double, c_float, c_int32,",
             "                    c_uint8, c_uint32, c_uint64, c_void_p)",
             ""]
    for name, kind in sorted(headers.callbacks.items()):
        lines.append(f"{name} = {kind}")
    for name, members in headers.structs.items():
        lines += ["", "", f"class {name}(Structure):", "    _fields_ = ["]
        lines += [f'        ("{label}", {kind}),' for label, kind in members]
        lines += ["    ]"]
    lines += ["", "", "CONSTANTS = {"]
    lines += [f'    "{name}": {value},' for name, value in headers.constants.items()]
    lines += ["}", "", "# A function's name, the type of its result, and those of its arguments.", "FUNCTIONS = {"]
    for name, (result, arguments) in sorted(headers.functions.items()):
        joined = "".join(f"{one}, " for one in arguments).strip()
        lines.append(f'    "{name}": ({result}, ({joined})),')
    lines += ["}", ""]
    return "\n".join(lines)


def main():
    text = write(Headers(preprocess()))
    if "--check" in sys.argv[1:]:
        if not TARGET.exists() or TARGET.read_text() != text:
            sys.exit(f"{TARGET.relative_to(ROOT)} is out of step with the headers; "
                     "run scripts/write_python_declarations.py")
        return
    TARGET.write_text(text)


if __name__ == "__main__":
    main()
