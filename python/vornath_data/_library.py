"""Finds and loads the shared libraries.

`long` has the functions that may take long: they release the interpreter's lock. `quick` has the same
functions with the lock held, so that no other Python thread runs meanwhile."""
from __future__ import annotations

import ctypes
import os
import pathlib
from typing import Any

from . import _declarations
from .errors import LibraryError

# The versions that this package is written for: the major versions of both libraries, and the least
# version of the toolkit.
DATA_NAME = "libvornath_data.so.1"
TOOLKIT_NAME = "libvornath_toolkit.so.1"
TOOLKIT_VERSION = (1, 0)
VARIABLE = "VORNATH_DATA_LIBRARY"


def _folders() -> tuple[list[pathlib.Path], bool]:
    """Returns the folders to search, and whether the system's loader may search, too."""
    named = os.environ.get(VARIABLE, "")
    if named:
        places = [pathlib.Path(one) for one in named.split(os.pathsep) if one]
        # The name of a library stands for its folder.
        return [place.parent if place.is_file() or ".so" in place.name and not place.is_dir() else place
                for place in places], False
    package = pathlib.Path(__file__).resolve().parent
    return [package / "lib", package], True


def _load(name: str) -> tuple[str, ctypes.CDLL]:
    """Loads one library, and returns where it was found."""
    folders, system = _folders()
    looked = []
    problems = []
    for folder in folders:
        place = folder / name
        looked.append(str(place))
        if not folder.is_dir():
            problems.append(f"{folder} is no folder")
        elif place.exists():
            try:
                return str(place), ctypes.CDLL(str(place))
            except OSError as problem:
                problems.append(f"{place} does not load: {problem}")
        else:
            stem = name.rpartition(".")[0]
            others = sorted(one.name for one in folder.glob(stem + ".*"))
            if others:
                problems.append(f"{folder} has another version: {', '.join(others)}")
    if system:
        looked.append(f"{name} by the system's loader")
        try:
            return name, ctypes.CDLL(name)
        except OSError as problem:
            if "cannot open shared object file" not in str(problem):
                problems.append(str(problem))
    else:
        looked.append(f"as {VARIABLE} says")
    lines = [f"vornath_data needs the library {name}, which was not found. Looked for:"]
    lines += [f"  {one}" for one in looked] + problems
    lines.append(f"Install the library, or set {VARIABLE} to the folders that contain it "
                 f"(several are joined with '{os.pathsep}').")
    raise LibraryError("\n".join(lines))


class Functions:
    """The functions of both libraries, declared when they are first used."""

    def __init__(self, libraries: tuple[ctypes.CDLL, ctypes.CDLL]) -> None:
        self._libraries = libraries

    def __getattr__(self, name: str) -> Any:
        arguments: Any
        try:
            result, arguments = _declarations.FUNCTIONS[name]
        except KeyError:
            raise AttributeError(name) from None
        function = self._libraries[name.startswith("vrtk")][name]  # a new object, not a shared one
        function.restype = result
        function.argtypes = arguments
        setattr(self, name, function)
        return function


def _missing(data: ctypes.CDLL, toolkit: ctypes.CDLL) -> list[str]:
    return [name for name in _declarations.FUNCTIONS
            if not hasattr(toolkit if name.startswith("vrtk") else data, name)]


def _start() -> tuple[str, str, Functions, Functions]:
    data_path, data = _load(DATA_NAME)
    toolkit_path, toolkit = _load(TOOLKIT_NAME)
    missing = _missing(data, toolkit)
    if missing:
        at = toolkit_path if missing[0].startswith("vrtk") else data_path
        raise LibraryError(
            f"{at} is of another version than this package: it has no {missing[0]}()"
            + (f" and lacks {len(missing) - 1} other functions" if len(missing) > 1 else "")
            + ". Install the package and the libraries of one version.")
    version_function = toolkit["vrtkVersion"]
    version_function.restype = ctypes.c_char_p
    version = version_function().decode()
    if not _fits(version):
        raise LibraryError(
            f"{toolkit_path} has the version {version}, and this package needs "
            f"{TOOLKIT_VERSION[0]}.{TOOLKIT_VERSION[1]} or a later {TOOLKIT_VERSION[0]}.x.")
    held = Functions((ctypes.PyDLL(data_path, handle=data._handle),
                      ctypes.PyDLL(toolkit_path, handle=toolkit._handle)))
    # Declared now: the code that relies on no other thread running must not declare one in between.
    for name in _declarations.FUNCTIONS:
        getattr(held, name)
    return data_path, toolkit_path, Functions((data, toolkit)), held


def _fits(version: str) -> bool:
    major, minor = (int(part) for part in version.split(".")[:2])
    return major == TOOLKIT_VERSION[0] and minor >= TOOLKIT_VERSION[1]


data_path, toolkit_path, long, quick = _start()


def undeclared(name: str) -> Any:
    """Returns a function that holds the interpreter's lock and converts nothing: it takes ctypes objects
    and numbers of 32 bits, and returns nothing."""
    function = quick._libraries[name.startswith("vrtk")][name]
    function.restype = None
    return function
