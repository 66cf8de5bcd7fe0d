"""Columns: one field of one group of all live objects as one NumPy array.

    >>> import vornath_data as vd
    >>> scene = vd.Scene()
    >>> for number in range(3):
    ...     shape = scene.Shape.add()
    >>> matrices = scene.Shape.column("Transformation", "matrix")
    >>> matrices.shape, matrices.dtype
    ((3, 4, 4), dtype('float32'))
    >>> matrices[:, 3, 0] = [1, 2, 3]       # move each shape along x
    >>> scene.Shape.set_column("Transformation", "matrix", matrices)
    >>> scene.Shape[2].transformation.matrix.w
    (3.0, 0.0, 0.0, 1.0)

A column of a float, an int, an enum or a bool has the shape (objects,); a bool is a NumPy bool, an enum its
code. Vectors and arrays add their dimensions, a matrix (a struct of equal vectors) two; any other struct is
structured, as Type.dtype says.
"""
from __future__ import annotations

import ctypes
from functools import partial
from typing import TYPE_CHECKING, Any, NoReturn

import numpy

from ._layout import _array_form, _rows, check_number, dtype_of, plain_array, store_numbers, type_leaf
from ._library import long, quick
from ._status import no_name, toolkit_error
from .errors import TypeMismatch
from .types import Type
from .values import Value

if TYPE_CHECKING:
    from .catalogue import Class, Group
    from .scene import Scene

Array = numpy.ndarray[Any, Any]


def _address(array: Array) -> int:
    """Returns the address of an array. NumPy's own way imports a module, which fails in a finaliser that runs
    last."""
    address: int = array.__array_interface__["data"][0]
    return address


def live_slots(scene: Scene, number: int) -> Array:
    """Returns the slots of the live objects of a class."""
    scene._live()
    known: Array | None = scene._lists.get(number)
    if known is not None:
        return known
    seen = scene._changes.count
    count, error = ctypes.c_uint64(), ctypes.c_void_p()
    with scene._exclusive(change=False) as pointer:
        slots = numpy.empty(quick.vrdmContainerSize(pointer, number), "<i4")
        status = quick.vrtkSceneLiveSlots(pointer, number, _address(slots), len(slots),
                                          ctypes.byref(count), ctypes.byref(error))
    if status:
        raise toolkit_error(status, error)
    slots = slots[:count.value]
    if scene._changes.count == seen:
        scene._lists[number] = slots
    return slots


def _find(entry: Class, group: str, field: str | None) -> tuple[Group, Type, int]:
    for info in entry.groups.values():
        if group in (info.name, info.attribute):
            break
    else:
        no_name(f"{entry.name} has no group", group, entry.groups)
    if not field:
        return info, info.type, 0
    found = info.type.field(field)
    return info, found.type, found.offset


def _shape(type: Type, raw: Array) -> Array:
    """Returns an array over rows of bytes, one row an object, as the plain form of the type."""
    count = len(raw)
    if type.kind == "struct":
        rows = _rows(type)
        lane = next(iter(type.fields.values())).type if rows else None
        if rows is None or lane is None or type.size != rows[0] * lane.size:
            whole: Array = numpy.ndarray((count,), dtype_of(type), raw)
            return whole
        _, _, base = _array_form(lane)
        return numpy.ndarray((count, *rows), base, raw, 0,
                             (type.size, lane.size, base.itemsize))
    shape, strides, base = _array_form(type)
    if strides is None:
        strides = tuple(base.itemsize for _ in shape)
    return numpy.ndarray((count, *shape), base, raw, 0, (type.size, *strides))


def plain(value: Value) -> Array:
    """Returns an array over one value in the form that it has in a column, without the first dimension."""
    raw = numpy.frombuffer(ctypes.string_at(value._block.address + 48, value.type.size), "u1")
    found: Array = _shape(value.type, raw.reshape(1, -1))[0]
    return found


def _slots_of(scene: Scene, entry: Class, slots: Any) -> Array:
    if slots is None:
        return live_slots(scene, entry.number)
    found = [scene._index_of(one, entry.name, f"{entry.name} column") for one in slots]
    return numpy.array(found, "<i4")


def get_column(scene: Scene, entry: Class, group: str, field: str | None, slots: Any) -> Array:
    """Returns a column."""
    info, type, offset = _find(entry, group, field)
    chosen = _slots_of(scene, entry, slots)
    raw = numpy.empty((len(chosen), type.size), "u1")
    error = ctypes.c_void_p()
    with scene._exclusive(change=False) as pointer:
        status = long.vrtkSceneColumnGet(pointer, entry.number, info.index, offset, type.size,
                                         _address(chosen), len(chosen), _address(raw), 0,
                                         ctypes.byref(error))
    if status:
        raise toolkit_error(status, error)
    array = _shape(type, raw)
    if array.dtype.names is None and type_leaf(type) == "bool":
        flags: Array = array != 0
        return flags
    return array


def set_column(scene: Scene, entry: Class, group: str, field: str | None, values: Any, slots: Any) -> None:
    """Writes a column."""
    info, type, offset = _find(entry, group, field)
    chosen = _slots_of(scene, entry, slots)
    where = f"{entry.name}/{info.name}" + (f"/{field}" if field else "")
    raw = _bytes_of(type, values, len(chosen), where)
    error = ctypes.c_void_p()
    with scene._exclusive(fields=True) as pointer:
        status = long.vrtkSceneColumnSet(pointer, entry.number, info.index, offset, type.size,
                                         _address(chosen), len(chosen), _address(raw), 0,
                                         ctypes.byref(error))
    if status:
        raise toolkit_error(status, error)


def _bytes_of(type: Type, values: Any, count: int, where: str) -> Array:
    """Returns the bytes of a column of objects or of one object for all."""
    if type.kind == "struct" and isinstance(values, (dict, Value)):
        one = Value(type, values)
        return numpy.tile(numpy.frombuffer(ctypes.string_at(one._block.address + 48, type.size), "u1"),
                          (count, 1))
    kind = type_leaf(type)
    if kind == "struct" and _rows(type):
        kind = next(iter(type.fields.values())).type.base
    if kind == "enum":
        values = _codes(type, values, where)
    array = plain_array(values, where)
    if (array.dtype == {"float": "<f4", "int": "<i4", "half": "<f2"}.get(kind) and array.flags.c_contiguous
            and array.nbytes == count * type.size and array.shape[:1] == (count,)):
        target = _shape(type, numpy.empty((0, type.size), "u1"))
        if target.dtype.names is None and array.shape[1:] == target.shape[1:]:
            return array  # The bytes of the column as they stand.
    raw = numpy.zeros((count, type.size), "u1")
    target = _shape(type, raw)
    if target.dtype.names is not None:
        if array.dtype != target.dtype or array.shape not in ((), target.shape):
            raise TypeMismatch(f"{where}: an array of the dtype and the shape of the column is expected, "
                               f"not {array.dtype} {array.shape}")
        for name in target.dtype.names:
            target[name] = array[name]
        return raw
    if array.shape not in (target.shape, target.shape[1:]):
        raise TypeMismatch(f"{where}: the shape {target.shape} or {target.shape[1:]} is expected, "
                           f"not {array.shape}")
    if array.dtype.kind == "O":
        raise TypeMismatch(f"{where}: an array of numbers is expected")
    store_numbers(target, array, kind, where, partial(_fail, type, array, where))
    return raw


def _fail(type: Type, array: Array, where: str) -> NoReturn:
    raise TypeMismatch(f"{where}: the {type.stripped.text} does not take the dtype {array.dtype}")


def _codes(type: Type, values: Any, where: str) -> Any:
    """Returns the codes of labels."""
    leaf = type
    while leaf.kind == "array":
        leaf = leaf.element
    if isinstance(values, str):
        return check_number(leaf, "enum", values, where)
    array = plain_array(values, where)
    if array.dtype.kind in "UO":
        return numpy.array([check_number(leaf, "enum", one, where) for one in array.ravel().tolist()],
                           "<i4").reshape(array.shape)
    if array.dtype.kind in "iu" and array.size and (array.min() < 0 or array.max() >= len(leaf.labels)):
        check_number(leaf, "enum", int(array.min() if array.min() < 0 else array.max()), where)
    return array


__all__ = ["get_column", "live_slots", "set_column"]
