"""Reads streams of values that nobody has to trust.

The library reads a value stream as it stands. Scene files are checked before they are read, so a stream
is put into the place of the value in a small scene file, which is then opened with the check."""
from __future__ import annotations

import ctypes
from functools import lru_cache
from typing import TYPE_CHECKING

from ._library import long, quick
from ._status import toolkit_error
from .errors import CheckError

if TYPE_CHECKING:
    from .values import Value


@lru_cache(maxsize=1)
def _frame() -> tuple[bytes, bytes]:
    """Returns what stands before and behind the value in the file of a scene with one material."""
    from .values import Value
    value = Value.parse("{ marker_of_this_frame = 19088743; }")
    stream = value.to_bytes()
    scene = quick.vrdmCreateScene()
    if not scene:
        raise MemoryError
    try:
        index = quick.vrdmCreateInstance(scene, _material())
        quick.vrdmSetInstanceValue(scene, _material(), index, value._block.address)
        data, size, error = ctypes.c_void_p(), ctypes.c_uint64(), ctypes.c_void_p()
        status = long.vrtkSceneSaveBytes(scene, ctypes.byref(data), ctypes.byref(size),
                                         ctypes.byref(error))
        if status:
            raise toolkit_error(status, error)
        whole = ctypes.string_at(data.value or 0, size.value)
        quick.vrtkBytesDestroy(data)
    finally:
        quick.vrdmDestroyScene(scene)
    start = whole.index(b"marker_of_this_frame")
    # The stream begins where its own text of the type does.
    begin = start - stream.index(b"marker_of_this_frame")
    return whole[:begin], whole[begin + len(stream):]


@lru_cache(maxsize=1)
def _material() -> int:
    for number in range(quick.vrdmObjectTypeCount()):
        if quick.vrdmObjectName(number) == b"Material":
            return number
    raise LookupError("Material")


def read_stream(data: bytes) -> Value:
    """Returns the value of a stream. Raises CheckError for one that is damaged."""
    from .values import Value
    before, behind = _frame()
    file = before + data + behind
    scene, error = ctypes.c_void_p(), ctypes.c_void_p()
    status = long.vrtkSceneOpenBytes(file, len(file), None, ctypes.byref(scene), None,
                                     ctypes.byref(error))
    if status:
        problem = toolkit_error(status, error)
        if isinstance(problem, CheckError):
            raise CheckError(f"the bytes are no stream of a value: {problem}", problem.code)
        raise problem
    try:
        if (quick.vrdmContainerSize(scene, _material()) != 1
                or not quick.vrdmValid(scene, _material(), 0)):
            raise CheckError("the bytes are no stream of one value", "FILE_DAMAGED")
        return Value._own(quick.vrdmGetInstanceValue(scene, _material(), 0))
    finally:
        long.vrdmDestroyScene(scene)
