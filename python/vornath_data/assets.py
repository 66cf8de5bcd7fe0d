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

import ctypes
import math
import uuid
from collections.abc import Callable
from functools import partial
from typing import TYPE_CHECKING, Any, NoReturn, TypeVar

import numpy

from . import _declarations, _ending
from ._layout import _Memory, plain_array, store_numbers
from ._library import quick
from ._status import no_name, whole_number
from .errors import OutOfRange, TypeMismatch
from .scene import SceneObject, _object_id, asset_classes

if TYPE_CHECKING:
    from .scene import Scene

Array = numpy.ndarray[Any, Any]
A = TypeVar("A", bound="Asset")

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


@_RELEASE  # type: ignore[misc]
def _release(address: int) -> None:
    """Frees a block. The library calls this on whatever thread releases the last reference."""
    call = object()
    _ending.calls[call] = None
    owner = _kept.pop(address, None)
    _free(address)
    del owner
    del _ending.calls[call]  # the last line, so that no other thread runs between it and the return


_RELEASE_ADDRESS = ctypes.cast(_release, ctypes.c_void_p).value
_FREE_ADDRESS = ctypes.cast(_free, ctypes.c_void_p).value


def _end() -> Callable[[], bool]:
    """Leaves the living blocks to the C library: after the interpreter has ended, nothing can call back
    into it. The arrays stay as they are until the process ends."""
    ctypes.pythonapi.Py_IncRef(ctypes.py_object(_kept))
    releasing: list[int] = []
    for address in list(_kept):
        storage = _Storage.from_address(address)
        # No call stands between the lines of a test and a use of the block, so that it is not freed in between.
        if address in _kept:
            storage.release = _FREE_ADDRESS
            if not storage.references:  # Its release was called, and waits for the interpreter's lock.
                releasing += (address,)
    return lambda: any(address in _kept for address in releasing)


_ending.endings.append(_end)
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
    _kept[block] = owner
    storage.release = _FREE_ADDRESS if _ending.begun else _RELEASE_ADDRESS
    return block


class _StorageHandle:
    """A reference to a storage block."""

    __slots__ = ("address",)

    def __init__(self, address: int) -> None:
        self.address = address

    def __del__(self, release: Any = quick.vrtkStorageRelease) -> None:
        release(self.address)


def _contiguous(array: Array) -> Array:
    return array if array.flags.c_contiguous else numpy.ascontiguousarray(array)


def _raw(thing: Any) -> Array:
    """Returns bytes as an array: those of an object with a buffer, or a list of their numbers."""
    if isinstance(thing, (bytes, bytearray)):
        return numpy.frombuffer(thing, "u1")  # It holds the buffer, so that it cannot be resized.
    if isinstance(thing, (list, tuple)):
        try:
            return numpy.frombuffer(bytes(thing), "u1")
        except (TypeError, ValueError):
            raise TypeMismatch("the bytes of an asset: a list has numbers from 0 to 255") from None
    if not isinstance(thing, numpy.ndarray):
        try:
            memoryview(thing)
        except TypeError:
            if not hasattr(thing, "__array_interface__"):
                raise TypeMismatch(f"the bytes of an asset: a {thing.__class__.__name__} has none") from None
    array = plain_array(thing, "the bytes of an asset")
    # Elements of other kinds are texts, times or the addresses of Python objects.
    if array.dtype.hasobject or array.dtype.kind not in "biufcSV":
        raise TypeMismatch(f"the bytes of an asset: numbers are expected, not {array.dtype}")
    return array


def _owned(thing: Any, size: int | None = None) -> tuple[Any, int, int]:
    """Returns an owner, an address and a size for bytes, without a copy where they are contiguous."""
    array = _contiguous(_raw(thing))
    if size is not None and array.nbytes < size:
        raise TypeMismatch(f"the asset has {size} bytes, and {array.nbytes} were given")
    return array, array.ctypes.data, array.nbytes if size is None else size


class Asset(SceneObject):
    """An object with a record and bytes."""

    __slots__ = ()
    _desc: type[ctypes.Structure]

    @property
    def id(self) -> uuid.UUID:
        """The random id."""
        return _object_id(self)

    @property
    def desc(self) -> dict[str, int]:
        """The record, by the names of its members."""
        desc = self._read()[0]
        return {name: getattr(desc, name) for name, _ in desc._fields_}

    @property
    def nbytes(self) -> int:
        """The number of bytes."""
        return int(self._bytes().nbytes)

    @property
    def bytes(self) -> Array:
        """The bytes as a read-only array, without a copy."""
        return self._bytes()

    def _read(self) -> tuple[Any, _StorageHandle, int, int]:
        """Returns the record, a reference to the bytes, their address and their size."""
        self._check()
        desc = self._desc()
        with self._scene._exclusive(change=False) as pointer:
            place = quick.vrdmGetAssetStorage(pointer, self._class.number, self._index,
                                              ctypes.byref(desc))
            block = ctypes.c_void_p.from_address(place).value
            assert block is not None
            handle = _StorageHandle(quick.vrtkStorageRetain(block))
        storage = _Storage.from_address(block)
        return desc, handle, storage.data, storage.size

    def _bytes(self) -> Array:
        _, handle, address, size = self._read()
        return numpy.asarray(_Memory(address, size, handle, False))

    @classmethod
    def _insert(cls: type[A], scene: Scene, desc: ctypes.Structure, owner: Any, address: int,
                size: int) -> A:
        """Adds an asset over bytes that `owner` keeps alive."""
        handle = _StorageHandle(make_storage(owner, address, size))
        storage = ctypes.c_void_p(handle.address)
        with scene._exclusive() as pointer:
            index = quick.vrdmAddAsset(pointer, cls._class.number, ctypes.byref(desc),
                                       ctypes.byref(storage))
        return cls(scene, index)

    def _update(self, desc: ctypes.Structure, address: int) -> None:
        self._check()
        with self._scene._exclusive() as pointer:
            quick.vrdmUpdateAsset(pointer, self._class.number, self._index, ctypes.byref(desc), address)


class Mesh(Asset):
    """A mesh of triangles.

    The bytes are 32-bit words in blocks: 3 indices for each triangle; a word for each triangle and each of
    the flags 1 and 2; 9 floats for each vertex: position (m), normal and tangent; and for each set of
    texture coordinates 2 floats for each vertex.
    """

    __slots__ = ()
    _desc = _declarations.vrdmMeshDesc

    @classmethod
    def _add(cls, scene: Scene, data: Any = None, **parts: Any) -> Mesh:
        """Adds a mesh: add(positions=, triangles=, normals=, tangents=, texcoords=), with arrays of shape
        (vertices, 3), (triangles, 3), (vertices, 3), (vertices, 3) and (sets, vertices, 2); add(layout)
        of a MeshLayout; or add(data, triangles=, vertices=, texcoord_sets=, flags=) with bytes.

        Nothing is copied for a MeshLayout, for bytes that are contiguous, and for arrays that lie as in a
        mesh in one array.
        """
        if isinstance(data, MeshLayout):
            layout = data
            return cls._insert(scene, layout._record(), layout._array, layout._array.ctypes.data,
                               layout._array.nbytes)
        if data is not None:
            counts = _counts(parts)
            layout = MeshLayout.__new__(MeshLayout)
            layout._count(*counts)
            owner, address, size = _owned(data, 4 * layout._words)
            return cls._insert(scene, layout._record(), owner, address, size)
        layout, owner, address = _assemble(**parts)
        return cls._insert(scene, layout._record(), owner, address, 4 * layout._words)

    def replace(self, data: Any = None, **parts: Any) -> None:
        """Replaces the record and the bytes, which are copied; the id and the references stay. Takes what
        scene.Mesh.add() takes."""
        if isinstance(data, MeshLayout):
            layout, owner, address = data, data._array, data._array.ctypes.data
        elif data is not None:
            layout = MeshLayout.__new__(MeshLayout)
            layout._count(*_counts(parts))
            owner, address, _ = _owned(data, 4 * layout._words)
        else:
            layout, owner, address = _assemble(**parts)
        self._update(layout._record(), address)
        del owner

    def _layout(self) -> MeshLayout:
        desc, handle, address, size = self._read()
        layout = MeshLayout.__new__(MeshLayout)
        layout._count(desc.triangles, desc.vertices, desc.texcoordSets or 1, desc.flags)
        if 4 * layout._words > size:
            raise TypeMismatch(f"the mesh has {size} bytes, and its record asks for {4 * layout._words}")
        raw = numpy.asarray(_Memory(address, size, handle, False))
        layout._array = numpy.ndarray((layout._words,), "<u4", raw)
        return layout

    @property
    def triangle_count(self) -> int:
        """The number of triangles."""
        return self.desc["triangles"]

    @property
    def vertex_count(self) -> int:
        """The number of vertices."""
        return self.desc["vertices"]

    @property
    def triangles(self) -> Array:
        """The vertices of each triangle: a view of shape (triangles, 3), uint32."""
        return self._layout().triangles

    @property
    def positions(self) -> Array:
        """The positions in metres: a view of shape (vertices, 3), float32."""
        return self._layout().positions

    @property
    def normals(self) -> Array:
        """The normals: a view of shape (vertices, 3), float32."""
        return self._layout().normals

    @property
    def tangents(self) -> Array:
        """The directions in which u increases: a view of shape (vertices, 3), float32."""
        return self._layout().tangents

    @property
    def texcoords(self) -> Array:
        """The texture coordinates: a view of shape (sets, vertices, 2), float32."""
        return self._layout().texcoords

    @property
    def triangle_words(self) -> Array:
        """The words of the flags: a view of shape (flags, triangles), uint32."""
        return self._layout().triangle_words

    def _describe(self) -> str:
        desc = self.desc
        return f"{desc['triangles']} triangles, {desc['vertices']} vertices"


def _counts(parts: dict[str, Any]) -> tuple[int, int, int, int]:
    unknown = set(parts) - {"triangles", "vertices", "texcoord_sets", "flags"}
    if unknown:
        no_name("the record of a mesh has no", unknown.pop(),
                ("triangles", "vertices", "texcoord_sets", "flags"))
    if "triangles" not in parts or "vertices" not in parts:
        raise TypeError("a mesh of bytes needs the numbers of its triangles and vertices")
    return (parts["triangles"], parts["vertices"], parts.get("texcoord_sets", 1), parts.get("flags", 0))


class MeshLayout:
    """The words of a mesh in one array, with views of its parts to fill: triangles, positions, normals,
    tangents, texcoords, triangle_words. scene.Mesh.add(layout) shares the array without a copy.

        >>> import vornath_data as vd
        >>> layout = vd.MeshLayout(triangles=1, vertices=3)
        >>> layout.triangles[0] = 0, 1, 2
        >>> layout.positions[1, 0] = 1.0
        >>> mesh = vd.Scene().Mesh.add(layout)
        >>> mesh.positions.ctypes.data == layout.positions.ctypes.data
        True
    """

    _array: Array

    def __init__(self, triangles: int, vertices: int, texcoord_sets: int = 1, flags: int = 0) -> None:
        self._count(triangles, vertices, texcoord_sets, flags)
        self._array = numpy.zeros(self._words, "<u4")

    def _count(self, triangles: int, vertices: int, texcoord_sets: int, flags: int) -> None:
        self._triangles = whole_number("triangles", triangles, 0, 2**31 - 1)
        self._vertices = whole_number("vertices", vertices, 0, 2**31 - 1)
        self._sets = whole_number("texcoord_sets", texcoord_sets, 0, 2**31 - 1) or 1
        self._flags = whole_number("flags", flags, 0, 2**32 - 1)
        self._extra = (self._flags & 1) + (self._flags >> 1 & 1)
        self._first_vertex = (3 + self._extra) * self._triangles
        self._first_texcoord = self._first_vertex + 9 * self._vertices
        self._words = self._first_texcoord + 2 * self._vertices * self._sets

    def _record(self) -> ctypes.Structure:
        record: ctypes.Structure = _declarations.vrdmMeshDesc(self._triangles, self._vertices, self._sets,
                                                              self._flags)
        return record

    @property
    def words(self) -> Array:
        """All words, uint32: a view."""
        return self._array.view()

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, MeshLayout):
            return NotImplemented
        return (self._triangles, self._vertices, self._sets, self._flags) == (
            other._triangles, other._vertices, other._sets, other._flags) and bool(
            numpy.array_equal(self._array, other._array))

    __hash__ = None  # type: ignore[assignment]

    @property
    def triangles(self) -> Array:
        """The indices: shape (triangles, 3), uint32."""
        return self._array[:3 * self._triangles].reshape(self._triangles, 3)

    @property
    def triangle_words(self) -> Array:
        """A word for each triangle and set flag: shape (flags, triangles), uint32."""
        return self._array[3 * self._triangles:self._first_vertex].reshape(self._extra, self._triangles)

    def _vertex(self, first: int) -> Array:
        rows = self._array[self._first_vertex:self._first_texcoord].view("<f4").reshape(self._vertices, 9)
        return rows[:, first:first + 3]

    @property
    def positions(self) -> Array:
        """The positions in metres: shape (vertices, 3), float32."""
        return self._vertex(0)

    @property
    def normals(self) -> Array:
        """The normals: shape (vertices, 3), float32."""
        return self._vertex(3)

    @property
    def tangents(self) -> Array:
        """The tangents: shape (vertices, 3), float32."""
        return self._vertex(6)

    @property
    def texcoords(self) -> Array:
        """The texture coordinates: shape (sets, vertices, 2), float32."""
        return self._array[self._first_texcoord:].view("<f4").reshape(self._sets, self._vertices, 2)


def _assemble(positions: Any, triangles: Any, normals: Any = None, tangents: Any = None,
              texcoords: Any = None) -> tuple[MeshLayout, Any, int]:
    """Returns a mesh of arrays: its layout, the owner of its bytes and their address."""
    parts = {"positions": _numbers(positions, "positions", (None, 3)),
             "triangles": _indices(triangles)}
    count = len(parts["positions"])
    for name, thing in (("normals", normals), ("tangents", tangents)):
        if thing is not None:
            parts[name] = _numbers(thing, name, (count, 3))
    sets = 1
    if texcoords is not None:
        array = plain_array(texcoords, "texcoords")
        if array.ndim == 2:
            array = array[None]
        if array.ndim == 3 and not len(array):
            raise TypeMismatch("texcoords: one set or more is expected; leave them out for none")
        parts["texcoords"] = _numbers(array, "texcoords", (None, count, 2))
        sets = len(parts["texcoords"])
    corners = parts["triangles"]
    if corners.size and int(corners.max()) >= count:
        raise OutOfRange(f"triangles: the index {int(corners.max())} is outside the {count} vertices")
    layout = MeshLayout.__new__(MeshLayout)
    layout._count(len(corners), count, sets, 0)
    owner = _one_array(layout, parts)
    if owner is not None:
        return layout, owner, corners.ctypes.data
    layout._array = numpy.zeros(layout._words, "<u4")
    for name, array in parts.items():
        if name == "triangles":
            layout.triangles[...] = array
        else:
            store_numbers(getattr(layout, name), array, "float", name, partial(_no_numbers, array, name))
    return layout, layout._array, layout._array.ctypes.data


def _one_array(layout: MeshLayout, parts: dict[str, Array]) -> Any:
    """Returns the owner of the bytes if the parts lie as they do in a mesh, in one array that has room for
    the whole mesh."""
    if len(parts) < 5:
        return None  # The missing parts would be what happens to stand there.
    corners = parts["triangles"]
    owner = corners
    while isinstance(owner.base, numpy.ndarray):
        owner = owner.base
    start = corners.ctypes.data
    low, high = _bounds(owner)
    if start < low or start + 4 * layout._words > high:
        return None
    layout._array = numpy.ndarray((layout._words,), "<u4", numpy.asarray(
        _Memory(start, 4 * layout._words, owner, False)))
    for name, array in parts.items():
        there = getattr(layout, name)
        if (array.ctypes.data != there.ctypes.data or array.dtype != there.dtype
                or (array.size and array.strides != there.strides)):
            return None
    return owner


def _bounds(array: Array) -> tuple[int, int]:
    if not array.flags.c_contiguous:
        return 0, 0
    return array.ctypes.data, array.ctypes.data + array.nbytes


def _numbers(thing: Any, name: str, shape: tuple[int | None, ...]) -> Array:
    array = plain_array(thing, name)
    if array.dtype.kind not in "fiu":
        _no_numbers(array, name)
    if array.ndim != len(shape) or any(want is not None and want != have
                                       for want, have in zip(shape, array.shape)):
        words = ", ".join("any number" if want is None else str(want) for want in shape)
        raise TypeMismatch(f"{name}: the shape ({words}) is expected, not {array.shape}")
    return array


def _no_numbers(array: Array, name: str) -> NoReturn:
    raise TypeMismatch(f"{name}: numbers are expected, not {array.dtype}")


def _indices(thing: Any) -> Array:
    array = plain_array(thing, "triangles")
    if array.size == 0:
        array = array.reshape(-1, 3).astype("<u4")
    if array.dtype.kind not in "iu":
        raise TypeMismatch(f"triangles: integers are expected, not {array.dtype}")
    if array.ndim == 1 and array.size % 3 == 0:
        array = array.reshape(-1, 3)
    if array.ndim != 2 or array.shape[1] != 3:
        raise TypeMismatch(f"triangles: the shape (any number, 3) is expected, not {array.shape}")
    if array.size and array.dtype.kind == "i" and int(array.min()) < 0:
        raise OutOfRange(f"triangles: {int(array.min())} is no index")
    return array


# Textures. A format is the number of channels and the type of each; None stands for blocks of 4 by 4 pixels,
# with the bytes of a block.

def _format_names() -> dict[str, int]:
    start = "VRNT_TEXTURE_FORMAT_"
    return {name[len(start):]: number for name, number in _declarations.CONSTANTS.items()
            if name.startswith(start)}


FORMATS = _format_names()
"""The codes of the texture formats by name."""

LAYOUTS = {"2D": 0, "LatLong": 1, "Cube": 2, "LatLongDirectX": 0x4001, "CubeDirectX": 0x4002,
           "2D-Mipmap": 0x8000, "LatLong-Mipmap": 0x8001, "Cube-Mipmap": 0x8002,
           "LatLongDirectX-Mipmap": 0xC001, "CubeDirectX-Mipmap": 0xC002, "2DSpectral": 0x10000,
           "2D-Array": 0x20000, "2D-ArrayMipmap": 0x28000}
"""The codes of the texture layouts by name."""

_MIPMAP = 0x8000
_CHANNELS = {"SL": 1, "SLA": 2, "SRGB": 3, "SRGBA": 4, "H": 1, "N": 3, "NH": 4, "X": 1, "XY": 2, "XYZ": 3,
             "XYZW": 4, "L": 1, "LA": 2, "RGB": 3, "RGBA": 4}
_BITS = {"8": "u1", "16": "<f2", "32": "<f4"}


def _pixel_form(format: int) -> tuple[int, str] | None:
    """Returns the channels and the dtype of a format of single pixels."""
    name = {number: name for name, number in FORMATS.items()}.get(format, "")
    kind = name.rstrip("0123456789")
    return (_CHANNELS[kind], _BITS[name[len(kind):]]) if kind in _CHANNELS else None


def _block_bytes(format: int) -> int:
    name = {number: name for name, number in FORMATS.items()}.get(format, "")
    return 8 if name in ("BC1", "BC1N", "BC1U", "BC4") else 16


def _image_bytes(width: int, height: int, depth: int, format: int) -> int:
    form = _pixel_form(format)
    if form is not None:
        return width * height * depth * form[0] * numpy.dtype(form[1]).itemsize
    return -(-width // 4) * -(-height // 4) * depth * _block_bytes(format)


def _levels(width: int, height: int, layout: int) -> list[tuple[int, int]]:
    """Returns the widths and heights of the levels."""
    if not layout & _MIPMAP:
        return [(width, height)]
    count = int(math.log2(max(width, height, 1))) + 1
    return [(max(width >> level, 1), max(height >> level, 1)) for level in range(count)]


def _code(name: str | int, names: dict[str, int], what: str) -> int:
    if isinstance(name, str):
        if name not in names:
            no_name(f"there is no {what}", name, names)
        return names[name]
    if name not in names.values():
        raise OutOfRange(f"there is no {what} with the code {name}")
    return int(name)


class Texture(Asset):
    """A texture: pixels of a format, arranged in a layout."""

    __slots__ = ()
    _desc = _declarations.vrdmTextureDesc

    @classmethod
    def _add(cls, scene: Scene, pixels: Any, **record: Any) -> Texture:
        """Adds a texture: add(pixels, format="SRGB8", layout="2D"), with an array of shape
        (height, width, channels), (height, width) for one channel, or (depth, height, width, channels);
        or with bytes, and width=, height= and depth= beside them. Contiguous arrays in the dtype of the
        format are not copied."""
        desc, owner, address, size = cls._take_pixels(pixels, **record)
        return cls._insert(scene, desc, owner, address, size)

    @classmethod
    def _take_pixels(cls, pixels: Any, *, format: str | int, layout: str | int = "2D",
                     width: int | None = None, height: int | None = None,
                     depth: int | None = None) -> tuple[Any, Any, int, int]:
        code = _code(format, FORMATS, "texture format")
        layout_code = _code(layout, LAYOUTS, "texture layout")
        form = _pixel_form(code)
        given = {name: whole_number(name, extent, 1, 2**31 - 1)
                 for name, extent in (("width", width), ("height", height), ("depth", depth)) if extent is not None}
        if width is None or height is None:
            if form is None or layout_code & _MIPMAP:
                raise TypeError("bytes of blocks or of mipmap levels need width= and height=")
            array = plain_array(pixels, "pixels")
            channels, kind = form
            if array.dtype != numpy.dtype(kind):
                raise TypeMismatch(f"pixels: the format {format} has the dtype {numpy.dtype(kind)}, "
                                   f"and {array.dtype} was given")
            if channels == 1 and array.ndim == 2:
                array = array[..., None]
            if array.ndim not in (3, 4) or array.shape[-1] != channels:
                raise TypeMismatch(f"pixels: the shape (height, width, {channels}) is expected, "
                                   f"not {array.shape}")
            pixels = array
            extents = dict(zip(("depth", "height", "width"), (1, *array.shape)[-4:]))
            for name, extent in given.items():
                if extent != extents[name]:
                    raise TypeMismatch(f"{name}: the array has {extents[name]}, and {extent} was given")
            given = {name: whole_number(name, extent, 1, 2**31 - 1) for name, extent in extents.items()}
        width, height, depth = given["width"], given["height"], given.get("depth", 1)
        size = _texture_bytes(width, height, depth, code, layout_code)
        owner, address, size = _owned(pixels, size)
        return _declarations.vrdmTextureDesc(width, height, depth, code, layout_code), owner, address, size

    def replace(self, pixels: Any, **record: Any) -> None:
        """Replaces the record and the bytes, which are copied; the id and the references stay. Takes what
        scene.Texture.add() takes."""
        desc, owner, address, _ = self._take_pixels(pixels, **record)
        self._update(desc, address)
        del owner

    @property
    def width(self) -> int:
        """The width in pixels."""
        return self.desc["width"]

    @property
    def height(self) -> int:
        """The height in pixels."""
        return self.desc["height"]

    @property
    def depth(self) -> int:
        """The third extent: the faces of a cube map, the layers of an array."""
        return self.desc["depth"]

    @property
    def format(self) -> str:
        """The name of the format, such as "SRGB8"; "Unknown" for a code without a name."""
        code = self.desc["format"]
        return next((name for name, number in FORMATS.items() if number == code), "Unknown")

    @property
    def layout(self) -> str:
        """The name of the layout, such as "2D-Mipmap"; "Unknown" for a code without a name."""
        code = self.desc["layout"]
        return next((name for name, number in LAYOUTS.items() if number == code), "Unknown")

    @property
    def levels(self) -> tuple[Array, ...]:
        """The mipmap levels, the complete image first; each as `pixels` is."""
        desc, handle, address, size = self._read()
        form = _pixel_form(desc.format)
        raw = numpy.asarray(_Memory(address, size, handle, False))
        found, offset = [], 0
        for width, height in _levels(desc.width, desc.height, desc.layout):
            if form is not None:
                shape: tuple[int, ...] = (desc.depth, height, width, form[0])
                kind = numpy.dtype(form[1])
            else:
                shape = (desc.depth, -(-height // 4), -(-width // 4), _block_bytes(desc.format))
                kind = numpy.dtype("u1")
            step = math.prod(shape) * kind.itemsize
            if offset + step > size:
                raise TypeMismatch(f"the texture has {size} bytes, fewer than its record asks for")
            array: Array = numpy.ndarray(shape, kind, raw, offset)
            found.append(array[0] if desc.depth == 1 else array)
            offset += step
        return tuple(found)

    @property
    def pixels(self) -> Array:
        """The complete image as a view of shape (height, width, channels), or (depth, height, width,
        channels) for a depth above 1. For a block-compressed format, the blocks of 4 by 4 pixels:
        (rows of blocks, blocks in a row, bytes of a block)."""
        return self.levels[0]

    def _describe(self) -> str:
        return f"{self.width} x {self.height}, {self.format}, {self.layout}"


def _texture_bytes(width: int, height: int, depth: int, format: int, layout: int) -> int:
    return sum(_image_bytes(w, h, depth, format) for w, h in _levels(width, height, layout))


class MaterialGraph(Asset):
    """A material graph: bytes that the library does not interpret."""

    __slots__ = ()
    _desc = _declarations.vrdmMaterialGraphDesc

    @classmethod
    def _add(cls, scene: Scene, data: Any, *, root_offset: int = 0, parameter_offset: int = 0) -> MaterialGraph:
        """Adds a material graph: add(data, root_offset=, parameter_offset=). Contiguous bytes are not
        copied."""
        owner, address, size = _owned(data)
        desc = cls._record(size, root_offset, parameter_offset)
        return cls._insert(scene, desc, owner, address, size)

    def replace(self, data: Any, *, root_offset: int = 0, parameter_offset: int = 0) -> None:
        """Replaces the record and the bytes, which are copied; the id and the references stay."""
        owner, address, size = _owned(data)
        self._update(self._record(size, root_offset, parameter_offset), address)
        del owner

    @classmethod
    def _record(cls, size: int, root_offset: int, parameter_offset: int) -> Any:
        for name, offset in (("root_offset", root_offset), ("parameter_offset", parameter_offset)):
            if not 0 <= whole_number(name, offset) <= size:
                raise OutOfRange(f"{name}: {offset} is outside the {size} bytes of the graph")
        return cls._desc(size, root_offset, parameter_offset)

    @property
    def root_offset(self) -> int:
        """Where the root is, in bytes."""
        return self.desc["rootOffset"]

    @property
    def parameter_offset(self) -> int:
        """Where the parameters are, in bytes."""
        return self.desc["parameterOffset"]

    def _describe(self) -> str:
        return f"{self.nbytes} bytes"


asset_classes.update(Mesh=Mesh, Texture=Texture, MaterialGraph=MaterialGraph)

__all__ = ["FORMATS", "LAYOUTS", "Asset", "MaterialGraph", "Mesh", "MeshLayout", "Texture"]
