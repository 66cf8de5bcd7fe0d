"""Groups of an object as Python objects.

A group keeps a copy of its bytes. A scene counts its changes: as long as the count is the one
that the group has seen, its copy is what the scene has, and reading a field is reading memory. A change is
made in the copy and handed to the scene with one call. The calls hold the interpreter's lock, and no other
Python thread can run between the last look at the count and the call, so a change that another thread made
meanwhile is noticed and not lost."""
from __future__ import annotations

import ctypes
import struct
from collections.abc import Callable, Iterable, Iterator, MutableMapping, Sequence
from functools import lru_cache
from typing import TYPE_CHECKING, Any

import numpy

from . import _declarations
from ._layout import _CODES, SCALARS, Array, Encoder, check_number, is_text
from ._library import quick, undeclared
from ._status import no_name
from .catalogue import SCENE_DATA
from .catalogue import Group as GroupInfo
from .errors import ConcurrentUseError, Error
from .types import Field, Type
from .values import Block, Value, _steps

if TYPE_CHECKING:
    from .scene import Scene

_get_value = quick.vrdmGetDataValue
_get_scene_value = quick.vrdmGetSceneDataValue
_destroy = quick.vrntValueDestroy
# Without a declared argument and result, whose conversion takes longer than the call.
_store = undeclared("vrtkSceneGroupSet")
# What a group is written to that was not read yet, as large as the largest one; nothing reads it.
_SCRATCH = bytearray()


def shown(name: str, write: Callable[[], str]) -> str:
    """Returns how a thing shows itself, or why it cannot be read now: printing does not fail."""
    try:
        return write()
    except Error as problem:
        return f"<{name}: {problem}>"


@lru_cache(maxsize=None)
def fresh_bytes(number: int, index: int) -> bytes:
    """Returns the bytes of a group in a new object."""
    scene = quick.vrdmCreateScene()
    if not scene:
        raise MemoryError
    try:
        if number == SCENE_DATA:
            block = Block(_get_scene_value(scene, index))
        else:
            block = Block(_get_value(scene, number, quick.vrdmCreateInstance(scene, number), index))
        return ctypes.string_at(block.address + 48, quick.vrntTypeSize(quick.vrntValueType(block.address)))
    finally:
        quick.vrdmDestroyScene(scene)


class Fields(MutableMapping[str, Any]):
    """A struct in a group: attributes and items are its fields, which are written through at once."""

    __slots__ = ()
    _type: Type
    _offset: int
    _group: GroupRecord

    if not TYPE_CHECKING:  # so that a type checker sees what is misspelt
        def __getattr__(self, name: str) -> Any:
            if name.startswith("__"):
                raise AttributeError(name)
            no_name(f"{self._where()} has no field", name, self._type.fields)

        def __setattr__(self, name: str, thing: Any) -> None:
            self[name] = thing

    def _path(self) -> str:
        """Returns the path in the group, with a slash at its end; nothing for the group itself."""
        return ""

    def _where(self) -> str:
        return f"{self._group._name()}/{self._path()}"[:-1]

    def __getitem__(self, label: str) -> Any:
        field = self._type.fields.get(label)
        if field is None:
            no_name(f"{self._where()} has no field", label, self._type.fields)
        return self._group._read(field.type, self._offset + field.offset)

    def __setitem__(self, label: str, thing: Any) -> None:
        field = self._type.fields.get(label)
        if field is None:
            no_name(f"{self._where()} has no field", label, self._type.fields)
        self._group._write(field.type, self._offset + field.offset, thing, self._path() + label)

    def __delitem__(self, label: str) -> None:
        """Resets a field to what a new object has."""
        field = self._type.fields.get(label)
        if field is None:
            no_name(f"{self._where()} has no field", label, self._type.fields)
        self._group._reset(self._offset + field.offset, field.type.size)

    def __iter__(self) -> Iterator[str]:
        return iter(self._type.fields)

    def __len__(self) -> int:
        return len(self._type.fields)

    def __contains__(self, label: object) -> bool:
        return label in self._type.fields

    def update(self, *things: Any, **fields: Any) -> None:
        """Writes the fields that are named with one change, and leaves the others as they are."""
        named: dict[str, Any] = {}
        for thing in things:
            named.update(thing)
        named.update(fields)
        self._group._write(self._type, self._offset, named, self._path()[:-1], keep=True)

    def reset(self) -> None:
        """Sets all fields to what a new object has."""
        self._group._reset(self._offset, self._type.size)

    clear = reset

    def pop(self, *arguments: Any) -> Any:
        raise TypeError("the fields of a group cannot be removed; del resets one")

    popitem = pop

    def to_dict(self) -> dict[str, Any]:
        """Returns the fields as a dict: a struct is a dict, a vector a tuple, an array a list, a text a
        str, and an enum its label."""
        found: dict[str, Any] = self._type._layout.decode(self._group._bytes(), self._offset, None)
        return found

    def value(self) -> Value:
        """Returns a copy as a Value."""
        return self._group._value(self._type, self._offset)

    def numpy(self) -> Array:
        """Returns a read-only NumPy array of a copy of the bytes: structured as Type.dtype says."""
        return self.value().numpy()

    def __array__(self, dtype: Any = None, copy: bool | None = None) -> Array:
        from .columns import plain
        array = plain(self.value())
        return array if dtype is None else array.astype(dtype)

    @property
    def type(self) -> Type:
        """The annotated type."""
        return self._type

    def __eq__(self, other: object) -> bool:
        if isinstance(other, Fields):
            other = other.to_dict()
        if not isinstance(other, dict):
            return NotImplemented
        return self.to_dict() == other

    __hash__ = None  # type: ignore[assignment]

    def __copy__(self) -> dict[str, Any]:
        return self.to_dict()

    def __deepcopy__(self, memo: object) -> dict[str, Any]:
        return self.to_dict()

    def __reduce__(self) -> tuple[object, ...]:
        return dict, (self.to_dict(),)

    def __repr__(self) -> str:
        return shown(self._where(), lambda: f"{self._where()} {self.to_dict()!r}")

    def __dir__(self) -> list[str]:
        return sorted({*object.__dir__(self), *self._type.fields})

    def _ipython_key_completions_(self) -> list[str]:
        return list(self._type.fields)

    def _repr_html_(self) -> str:
        from ._html import fields_html
        return fields_html(self)


class Changes:
    """Counts the changes of a scene: -1 while it is in use or closed. Apart from the scene, since Python finds
    the attributes of a class with a __getattr__ slowly."""

    __slots__ = ("count",)

    def __init__(self) -> None:
        self.count = 0


class _Copy:
    """A copy of the bytes of a group.

    seen: the count of the scene's changes when it was made. buffer: the bytes, in a value that `block` holds.
    arguments: what hands them to the scene; given as one tuple, so that the call makes no object, and the
    collector runs no code between the last look at the count and the call.
    """

    __slots__ = ("arguments", "block", "born", "buffer", "changes", "index", "scene", "seen")
    arguments: tuple[Any]
    buffer: Any

    def __init__(self, scene: Scene, index: int, born: int) -> None:
        self.scene = scene
        self.changes = scene._changes
        self.index = index
        self.born = born
        self.seen = -2
        self.block: Block | None = None
        self.buffer = _SCRATCH


class GroupRecord(Fields):
    """A group of an object."""

    __slots__ = ("__weakref__", "_copy")
    _info: GroupInfo
    _number: int
    _offset = 0
    _copy: _Copy

    def __init__(self, scene: Scene, index: int, born: int) -> None:
        _set_attribute(self, "_copy", _Copy(scene, index, born))

    @property
    def _group(self) -> GroupRecord:  # type: ignore[override]
        return self

    def _name(self) -> str:
        info = self._info
        return f"scene/{info.name}" if self._number == SCENE_DATA else (
            f"{info.owner}/{self._copy.index}/groups/{info.name}")

    def _refresh(self) -> None:
        """Reads the group from the scene."""
        copy, number, group = self._copy, self._number, self._info.index
        scene = copy.scene
        if copy.changes.count < 0:
            scene._live()
        seen = copy.changes.count  # before the scene is read: what changes afterwards is noticed
        if number != SCENE_DATA:
            scene._check(number, copy.index, copy.born)
        pointer = scene._pointer
        if pointer is None:
            pointer = scene._refuse()
        if number == SCENE_DATA:
            address = _get_scene_value(pointer, group)
        else:
            address = _get_value(pointer, number, copy.index, group)
        if copy.block is None:
            block = Block(address)
            buffer = (ctypes.c_char * self._type.size).from_address(address + 48)
            arguments = (ctypes.byref(_declarations.vrtkGroupPlace(
                pointer.value, address, number, copy.index, group)),)
            # The handler of a signal may raise at any call: all or nothing is kept.
            copy.arguments, copy.buffer, copy.block = arguments, buffer, block
        else:
            ctypes.memmove(copy.buffer, address + 48, self._type.size)
            _destroy(address)
        copy.seen = seen

    def _bytes(self) -> Any:
        """Returns the bytes of the group as the scene has them."""
        copy = self._copy
        if copy.seen != copy.changes.count:
            self._refresh()
        return copy.buffer

    def _read(self, type: Type, offset: int) -> Any:
        kind = type.kind
        if kind == "struct":
            return part_class(type)(self, offset)
        if kind == "array" and not is_text(type):
            return Elements(self, type, offset)
        return type._layout.decode(self._bytes(), offset, None)

    def _write(self, type: Type, offset: int, thing: Any, path: str, keep: bool = False) -> None:
        buffer = self._bytes()
        seen = self._copy.seen
        if isinstance(thing, Fields):
            thing = thing.to_dict()
        elif isinstance(thing, Elements):
            thing = thing.to_list()
        whole = bytes(buffer) if keep else fresh_bytes(self._number, self._info.index)
        encoder = Encoder(bytearray(whole[offset:offset + type.size]))
        encoder.put(type, 0, thing, f"{self._name()}/{path}" if path else self._name())
        self._commit(offset, bytes(encoder.buffer), seen)

    def _reset(self, offset: int, size: int) -> None:
        self._bytes()
        fresh = fresh_bytes(self._number, self._info.index)
        self._commit(offset, fresh[offset:offset + size], self._copy.seen)

    def _commit(self, offset: int, data: bytes, seen: int) -> None:
        """Writes bytes to the group, if nothing was changed since `seen`."""
        copy = self._copy
        changes = copy.changes
        if copy.seen != seen or changes.count != seen:
            self._conflict()
        copy.seen = -2  # If the handler of a signal raises, the bytes of the copy are not those of the scene.
        ctypes.memmove(ctypes.addressof(copy.buffer) + offset, data, len(data))
        if changes.count != seen:
            self._conflict()
        changes.count = copy.seen = seen + 1
        _store(*copy.arguments)

    def _conflict(self) -> None:
        copy = self._copy
        copy.seen = -2
        copy.scene._live()
        raise ConcurrentUseError(f"{self._name()}: the scene was changed while this field was written; "
                                 "one thread at a time may use a scene")

    def _value(self, type: Type, offset: int) -> Value:
        buffer = self._bytes()
        value = type.stripped.zero()
        ctypes.memmove(value._block.address + 48, ctypes.addressof(buffer) + offset, type.size)
        return value


_set_attribute = object.__setattr__


def _path_to(type: Type, part: Type, at: int) -> str:
    """Returns the path from a type to a part of it at an offset, with a slash at its end."""
    words = []
    while type is not part:
        if type.kind == "struct":
            field = next(one for one in reversed(type.fields.values()) if one.offset <= at)
            words.append(field.label)
            type, at = field.type, at - field.offset
        else:
            _, type, step = _steps(type)
            words.append(str(at // step))
            at %= step
    return "".join(word + "/" for word in words)


class PartRecord(Fields):
    """A struct in a group."""

    __slots__ = ("_group", "_offset")

    def __init__(self, group: GroupRecord, offset: int) -> None:
        _set_attribute(self, "_group", group)
        _set_attribute(self, "_offset", offset)

    def _path(self) -> str:
        return _path_to(self._group._type, self._type, self._offset)


class Elements(Sequence[Any]):
    """An array in a group: elements are written through at once."""

    __slots__ = ("_group", "_offset", "_type")

    def __init__(self, group: GroupRecord, type: Type, offset: int) -> None:
        self._group = group
        self._type = type
        self._offset = offset

    def _path(self) -> str:
        return _path_to(self._group._type, self._type, self._offset)

    def _step(self, index: Any) -> tuple[Type, int]:
        from .values import _step
        return _step(self._type, self._offset, index)

    def __getitem__(self, index: Any) -> Any:
        if isinstance(index, slice):
            return [self[one] for one in range(*index.indices(len(self)))]
        return self._group._read(*self._step(index))

    def __setitem__(self, index: Any, thing: Any) -> None:
        if isinstance(index, slice):
            whole = self.to_list()
            before = len(whole)
            whole[index] = list(thing)
            if len(whole) != before:
                raise ValueError(f"the array keeps its {before} elements")
            self._group._write(self._type, self._offset, whole, self._path()[:-1])
            return
        type, offset = self._step(index)
        self._group._write(type, offset, thing, self._path() + str(index))

    def __len__(self) -> int:
        return self._type.shape[-1]

    def to_list(self) -> list[Any]:
        """Returns the elements as Python objects."""
        return list(self._type._layout.decode(self._group._bytes(), self._offset, None))

    def __array__(self, dtype: Any = None, copy: bool | None = None) -> Array:
        array = self._group._value(self._type, self._offset).numpy()
        return array if dtype is None else array.astype(dtype)

    def __copy__(self) -> list[Any]:
        return self.to_list()

    def __deepcopy__(self, memo: object) -> list[Any]:
        return self.to_list()

    def __reduce__(self) -> tuple[object, ...]:
        return list, (self.to_list(),)

    def __eq__(self, other: object) -> bool:
        if isinstance(other, Elements):
            return self.to_list() == other.to_list()
        if not isinstance(other, (list, tuple)):
            return NotImplemented
        return self.to_list() == list(other)

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        return shown(f"{self._group._name()}/{self._path()}"[:-1], lambda: repr(self.to_list()))


# Classes with a property for each field.

def _leaf_property(field: Field) -> property:
    """Returns the property of a scalar field of a group, at a fixed offset. _setter() makes what writes it."""
    type, offset, label = field.type, field.offset, field.label
    unpack = struct.Struct("<" + _CODES[type.kind]).unpack_from
    labels = dict(enumerate(type.labels))

    def refresh_and_read(self: GroupRecord) -> Any:
        return unpack(self._bytes(), offset)[0]

    if type.kind == "bool":
        def read(self: GroupRecord) -> Any:
            return unpack(self._bytes(), offset)[0] != 0
    elif type.kind == "enum":
        def read(self: GroupRecord) -> Any:
            code = unpack(self._bytes(), offset)[0]
            return labels.get(code, code)
    else:
        def read(self: GroupRecord) -> Any:
            copy = self._copy
            if copy.seen != copy.changes.count:
                return refresh_and_read(self)
            return unpack(copy.buffer, offset)[0]

    def write(self: GroupRecord, thing: Any) -> None:
        setattr(self, label, thing)

    return _property(field, read, write)


_EXACT = {"float": float, "int": int, "bool": bool}


def _setter(fields: Iterable[Field]) -> Callable[[GroupRecord, str, Any], None]:
    """Returns the __setattr__ of a group's class. It writes scalar fields itself: a property for each would
    be called by a __setattr__ that looks for misspelt names, and two calls take twice the time of one."""
    writers: dict[str, tuple[Any, Callable[..., None], int]] = {}
    types = {}
    for field in fields:
        kind = field.type.kind
        if kind in SCALARS:
            packer = struct.Struct("<" + _CODES[kind])
            writers[field.label] = _EXACT.get(kind), packer.pack_into, field.offset
            types[field.label] = field.type

    def check(self: GroupRecord, name: str, thing: Any) -> Any:
        type = types[name]
        return check_number(type, type.kind, _plain(thing), f"{self._name()}/{name}")

    def write(self: GroupRecord, name: str, thing: Any) -> None:
        try:
            exact, pack, offset = writers[name]
        except KeyError:
            self[name] = thing
            return
        if type(thing) is not exact:
            thing = check(self, name, thing)
        elif thing is True:
            thing = -1
        copy = self._copy
        seen = copy.seen
        try:
            pack(copy.buffer, offset, thing)
        except BaseException:
            copy.seen = -2  # The bytes of the copy are not what they were.
            check(self, name, thing)
            raise
        changes = copy.changes
        if changes.count != seen:
            _write_again(self, pack, offset, thing, seen)
            return
        changes.count = copy.seen = seen + 1
        _store(*copy.arguments)

    return write


def _write_again(self: GroupRecord, pack: Callable[..., None], offset: int, thing: Any, seen: int) -> None:
    """Writes a field to a group whose copy was made before the scene was changed."""
    copy = self._copy
    if copy.seen != seen:
        self._conflict()
    copy.seen = -2
    self._refresh()
    seen = copy.seen
    pack(copy.buffer, offset, thing)
    changes = copy.changes
    if copy.seen != seen or changes.count != seen:
        self._conflict()
    changes.count = copy.seen = seen + 1
    _store(*copy.arguments)


def _plain(thing: Any) -> Any:
    return thing[()] if isinstance(thing, numpy.ndarray) and thing.ndim == 0 else thing


def _other_property(field: Field) -> property:
    type, offset, label = field.type, field.offset, field.label

    def read(self: Fields) -> Any:
        return self._group._read(type, self._offset + offset)

    def write(self: Fields, thing: Any) -> None:
        self._group._write(type, self._offset + offset, thing, self._path() + label)

    return _property(field, read, write)


def _doc(field: Field) -> str:
    """Returns the docstring of a field: its type, its unit, what it is for, its default and its limits."""
    type = field.type
    words = {"struct": "struct", "enum": "one of " + ", ".join(map(repr, type.labels))}.get(
        type.kind, "text" if is_text(type) else type.stripped.text)
    if field.unit:
        words += f", in {field.unit}"
    parts = [f"{field.name} ({words}).", field.description]
    if type.kind != "struct":
        parts.append(f"Default: {field.default!r}.")
    for low, high, name in ((field.minimum, field.maximum, "Limits"),
                            (field.soft_minimum, field.soft_maximum, "Slider")):
        if low is not None or high is not None:
            ends = [f"from {low}" if low is not None else "", f"to {high}" if high is not None else ""]
            parts.append(f"{name}: {' '.join(filter(None, ends))}.")
    return " ".join(part if part[-1] in ".!?" else part + "." for part in filter(None, parts))


class _FieldProperty(property):
    """The property of a field, whose docstring is written when somebody asks for it."""

    field: Field

    def __getattribute__(self, name: str) -> Any:
        if name == "__doc__":
            return _doc(object.__getattribute__(self, "field"))
        return object.__getattribute__(self, name)


def _property(field: Field, read: Callable[[Any], Any], write: Callable[[Any, Any], None]) -> property:
    made = _FieldProperty(read, write)
    made.field = field
    return made


def _namespace(type: Type, root: bool) -> dict[str, Any]:
    names: dict[str, Any] = {"__slots__": (), "_type": type, "__doc__": str(type.metadata.get("desc", "")),
                             "__module__": __name__}
    for label, field in type.fields.items():
        if hasattr(Fields, label):
            continue  # It is reached as an item.
        if root and field.type.kind in SCALARS:
            names[label] = _leaf_property(field)
        else:
            names[label] = _other_property(field)
    if root:
        names["__setattr__"] = _setter(type.fields.values())
    return names


@lru_cache(maxsize=None)
def group_class(info: GroupInfo, number: int) -> type[GroupRecord]:
    """Returns the class of a group."""
    names = _namespace(info.type, root=True)
    _SCRATCH.extend(bytes(max(0, info.type.size - len(_SCRATCH))))
    names["_info"] = info
    names["_number"] = number
    return type(_class_name(info.owner, info.name), (GroupRecord,), names)


def _class_name(*words: str) -> str:
    return "".join(part[:1].upper() + part[1:] for word in words for part in word.split())


def part_class(struct_type: Type) -> type[PartRecord]:
    """Returns the class of a struct in a group."""
    made: type[PartRecord] = struct_type._kept("part_class", lambda: type(
        "Part", (PartRecord,), _namespace(struct_type, root=False)))
    return made
