"""The limits of annotated types, the choices of enums, and descriptions.

    >>> import vornath_data as vd
    >>> from vornath_data import limits
    >>> gloss = vd.Type("{ float @default=0.5 @max=1.0 @min=0.0 gloss; }")
    >>> value = vd.Value(gloss, {"gloss": 2.5})
    >>> [(one.path, one.message) for one in limits.outside(value, gloss)]
    [('gloss', '2.5 is above the maximum, 1.0')]
    >>> limits.clamp(value, gloss)["gloss"]
    1.0
"""
from __future__ import annotations

import ctypes
import json
from typing import Any, NamedTuple

from . import _declarations
from ._library import long, quick
from ._status import toolkit_error
from ._tools import text_of
from .errors import Error, TypeMismatch
from .types import Type
from .values import Block, Part, Value, require_value


class Bounds(NamedTuple):
    """The merged limits of a type: values of the type, in which each leaf has the limit of that leaf."""

    default: Value
    min: Value
    max: Value
    soft_min: Value
    soft_max: Value


class Outside(NamedTuple):
    """A leaf outside its limits. path: such as "matrix/x/0". offset: bytes in the value. message: words."""

    path: str
    offset: int
    message: str


class Choice(NamedTuple):
    """A constructor of an enum. code: what a value contains. label: its name in the type. name: the name
    to show. description: its annotation @desc. fields: those of the constructor as the text of a struct, or
    empty."""

    code: int
    label: str
    name: str
    description: str
    fields: str


def _problem(status: int, error: ctypes.c_void_p) -> BaseException:
    problem = toolkit_error(status, error)
    if getattr(problem, "code", "") in ("VALUE_TYPE", "INVALID_ARGUMENT") and isinstance(problem, Error):
        return TypeMismatch(str(problem))
    return problem


def bounds(type: Type | str) -> Bounds:
    """Returns the limits of a type, merged with those of its parts. Raises TypeMismatch for a type without
    values."""
    type = Type(type)
    made = _declarations.vrtkBounds(ctypes.sizeof(_declarations.vrtkBounds))
    error = ctypes.c_void_p()
    status = long.vrtkValueBounds(type._handle.address, ctypes.byref(made), ctypes.byref(error))
    if status:
        raise _problem(status, error)
    return Bounds(*(Value._own(getattr(made, name))
                    for name in ("defaultValue", "min", "max", "softMin", "softMax")))


def _whole(value: Value | Part) -> Value:
    require_value(value)
    return value.copy()


def clamp(value: Value | Part, type: Type | str) -> Value:
    """Returns a copy of a value with each leaf drawn into the limits of an annotated type: a number below
    its minimum becomes the minimum, one above its maximum the maximum, a NaN or a code without a label the
    default. Raises TypeMismatch for a value of another type."""
    type = Type(type)
    block = _whole(value)._block.share()
    handle, error = ctypes.c_void_p(quick.vrntValueCopy(block.address)), ctypes.c_void_p()
    status = long.vrtkValueClamp(type._handle.address, ctypes.byref(handle), None, ctypes.byref(error))
    made = Value._hold(Block(handle.value or 0))
    if status:
        raise _problem(status, error)
    return made


def outside(value: Value | Part, type: Type | str) -> list[Outside]:
    """Returns the leaves of a value that are outside the limits of an annotated type, in the order of
    their offsets. Raises TypeMismatch for a value of another type."""
    type = Type(type)
    block = _whole(value)._block.share()
    found, error = ctypes.c_void_p(), ctypes.c_void_p()
    status = long.vrtkValueCheck(type._handle.address, block.address, ctypes.byref(found),
                                 ctypes.byref(error))
    if status:
        raise _problem(status, error)
    try:
        leaves = []
        for index in range(quick.vrtkOutsideCount(found)):
            one = _declarations.vrtkOutside.from_address(quick.vrtkOutsideAt(found, index))
            leaves.append(Outside(one.path.decode(), one.offset, one.message.decode("utf-8", "replace")))
        return leaves
    finally:
        quick.vrtkOutsideListDestroy(found)


def choices(type: Type | str) -> list[Choice]:
    """Returns the constructors of an enum with their annotations. Raises TypeMismatch for another type."""
    found, error = ctypes.c_void_p(), ctypes.c_void_p()
    status = long.vrtkEnumChoicesOf(Type(type)._handle, ctypes.byref(found), ctypes.byref(error))
    if status:
        raise _problem(status, error)
    try:
        made = []
        for code in range(quick.vrtkEnumChoiceCount(found)):
            one = _declarations.vrtkEnumChoice.from_address(quick.vrtkEnumChoiceAt(found, code))
            made.append(Choice(one.code, *(getattr(one, name).decode("utf-8", "replace")
                                           for name in ("label", "name", "description", "fields"))))
        return made
    finally:
        quick.vrtkEnumChoicesDestroy(found)


def describe(thing: Type | Value | Part, type: Type | str | None = None, *, as_json: bool = False) -> Any:
    """Returns a description of a type or a value: its text, its size, and its parts with their offsets and
    limits, as a text, or as Python objects.

    type: the annotated type of a value, which adds defaults and limits.
    """
    form = 1 if as_json else 0
    if isinstance(thing, Type):
        text = text_of(long.vrtkTypeDescribe, thing._handle.address, form)
    else:
        block = _whole(thing)._block.share()
        annotated = None if type is None else Type(type)
        text = text_of(long.vrtkValueDescribe, block.address,
                       None if annotated is None else annotated._handle.address, form)
    return json.loads(text) if as_json else text


__all__ = ["Bounds", "Choice", "Outside", "bounds", "choices", "clamp", "describe", "outside"]
