"""All C functions, structs and constants of both libraries, as ctypes has them.

The functions trust their caller, as C functions do: a wrong handle or a wrong index ends the process, or
worse. The rest of the package offers what they do with checks. Their documentation stands in the headers
vornath_data/vrnt.h, vornath_data/vrdm.h and vornath_toolkit/vrtk.h.

    >>> from vornath_data import capi
    >>> capi.vrdmObjectTypeCount()
    18
    >>> capi.VRDM_CLASS_CAMERA
    8

Each function releases the interpreter's lock while it runs.
"""
from __future__ import annotations

from typing import Any

from . import _declarations
from ._library import long

_STRUCTS = [name for name, thing in vars(_declarations).items()
            if name[0] != "_" and isinstance(thing, type) and thing.__module__ == _declarations.__name__]


def __getattr__(name: str) -> Any:
    if name in _declarations.FUNCTIONS:
        return getattr(long, name)
    if name in _declarations.CONSTANTS:
        return _declarations.CONSTANTS[name]
    if name in _STRUCTS or name in ("vrntReadFn", "vrntWriteFn", "vrtkWriteFunction"):
        return getattr(_declarations, name)
    raise AttributeError(f"the C interface has no {name}")


def __dir__() -> list[str]:
    return sorted([*_declarations.FUNCTIONS, *_declarations.CONSTANTS, *_STRUCTS])
