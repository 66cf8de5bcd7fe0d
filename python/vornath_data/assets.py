"""Assets: meshes, textures and material graphs, whose bytes are shared with NumPy without a copy.

The bytes of an asset do not change. An array over them is read-only and keeps them alive, also after the
asset is removed or its scene is closed. An array that is given to a scene is kept alive by the asset, and
must not be written to any more.

    >>> import numpy as np, vornath_data as vd
    >>> scene = vd.Scene()
    >>> mesh = scene.Mesh.add(positions=np.eye(3, dtype="f4"), triangles=[[0, 1, 2]])
    >>> mesh.positions.shape, mesh.triangles.tolist()
    ((3, 3), [[0, 1, 2]])
    >>> texture = scene.Texture.add(np.zeros((4, 8, 3), "u1"), format="SRGB8")
    >>> texture.width, texture.height, texture.pixels.shape
    (8, 4, (4, 8, 3))
"""
from __future__ import annotations

import atexit
import ctypes
import math
import uuid
from typing import TYPE_CHECKING, Any

import numpy

from . import _declarations
from ._layout import _Memory
from ._library import quick
from ._status import no_name
from .errors import OutOfRange, TypeMismatch
from .scene import SceneObject, _object_id

if TYPE_CHECKING:
    from .scene import Scene

Array = numpy.ndarray[Any, Any]

# Storage blocks.

_libc = ctypes.PyDLL(None)
_malloc, _free = _libc.malloc, _libc.free
_malloc.restype, _malloc.argtypes = ctypes.c_void_p, [ctypes.c_size_t]
_free.restype, _free.argtypes = None, [ctypes.c_void_p]
_Storage = _declarations.AssetStorage
_RELEASE = ctypes.CFUNCTYPE(None, ctypes.c_void_p)

# What the storage blocks that this process made need: by the block's address, the object that owns the
# bytes.
_kept: dict[int, Any] = {}
_ended = False


@_RELEASE
def _release(address: int) -> None:
    """Frees a block. The library calls this on whatever thread releases the last reference."""
    owner = _kept.pop(address, None)
    _free(address)
    del owner


def _end() -> None:
    """Leaves the living blocks to the C library: after the interpreter has ended, nothing can call back
    into it. The arrays stay as they are until the process ends."""
    global _ended
    _ended = True
    for address, owner in list(_kept.items()):
        ctypes.pythonapi.Py_IncRef(ctypes.py_object(owner))
        _Storage.from_address(address).release = ctypes.cast(_free, ctypes.c_void_p).value


atexit.register(_end)
ctypes.pythonapi.Py_IncRef.argtypes = [ctypes.py_object]
ctypes.pythonapi.Py_IncRef(ctypes.py_object(_release))  # Never freed: blocks may outlive this module.


def make_storage(owner: Any, address: int, size: int) -> int:
    """Returns a new storage block over bytes that `owner` keeps alive."""
    block: int | None = _malloc(ctypes.sizeof(_Storage))
    if not block:
        raise MemoryError("there is no memory for an asset")
    storage = _Storage.from_address(block)
    storage.size = size
    storage.references = 1
    storage.external = 0
    storage.data = address if size else block  # A slot whose data is null is free.
    if _ended:
        ctypes.pythonapi.Py_IncRef(ctypes.py_object(owner))
        storage.release = ctypes.cast(_free, ctypes.c_void_p).value
    else:
        storage.release = ctypes.cast(_release, ctypes.c_void_p).value
        _kept[block] = owner
    return block


class _StorageHandle:
    """A reference to a storage block."""

    __slots__ = ("address",)

    def __init__(self, address: int) -> None:
        self.address = address

    def __del__(self, release: Any = None) -> None:
        release_storage(self.address)


# The inline functions of asset_storage.h count atomically. ctypes has no atomic addition, and two threads
# of a host may share a block, so the library counts: a scene of our own holds one more reference.
class _Keeper:
    """A scene without other use, whose assets hold references to storage blocks."""

    __slots__ = ("scene",)


def release_storage(address: int) -> None:
    raise NotImplementedError
