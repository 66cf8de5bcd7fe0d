"""Scenes: objects of 18 classes with groups of settings, references to each other, values and assets.

    >>> import vornath_data as vd
    >>> with vd.Scene() as scene:
    ...     program = scene.CameraProgram.add("camera pinhole { }")
    ...     camera = scene.Camera.add(program=program, value="{ focal_length = 0.05; }")
    ...     camera.general.near_distance = 0.25
    ...     print(camera.general.to_dict()["near_distance"], camera.program.text)
    0.25 camera pinhole { }
"""
from __future__ import annotations

import ctypes
import json
import operator
import os
import sys
import threading
import uuid
from collections.abc import Iterable, Iterator, Mapping, MutableSequence
from functools import lru_cache
from types import FrameType
from typing import TYPE_CHECKING, Any, Generic, NoReturn, TypeVar

from . import _check, _declarations, _tools, columns
from ._library import long, quick
from ._objects import SceneClasses
from ._records import Changes, GroupRecord, group_class, shown
from ._slotted import Slotted
from ._status import bytes_of, no_name, path_bytes, save_error, toolkit_error
from .catalogue import SCENE_DATA, Class, Slot, catalogue, snake_case
from .errors import ClosedError, ConcurrentUseError, NoSuchObject, TypeMismatch
from .values import Part, Value

if TYPE_CHECKING:
    import numpy

_valid = quick.vrdmValid
_NONE_IN_LIST = -(2**31)

T = TypeVar("T", bound="SceneObject")


class _Handle(ctypes.c_void_p):
    """A scene of the library, destroyed with its last reference. A call holds one as long as it runs, so
    that code of the collector, which may run while the call is made, cannot close the scene under it."""

    def __del__(self, destroy: Any = long.vrdmDestroyScene) -> None:
        if self.value:
            destroy(self.value)


class SceneObject:
    """An object of a scene: a program, an asset or an instance. Two objects are equal if they are the same
    slot of the same scene."""

    __slots__ = ("__weakref__", "_born", "_index", "_scene", "_seen")
    _class: Class

    def __init__(self, scene: Scene, index: int) -> None:
        self._scene = scene
        self._index = index
        self._born = scene._removals.get((self._class.number, index), 0)
        self._seen = -2

    def _check(self) -> None:
        """Raises NoSuchObject if the object is not in the scene any more."""
        scene = self._scene
        seen = scene._changes.count
        if self._seen != seen or seen < 0:
            scene._check(self._class.number, self._index, self._born)
            self._seen = seen

    def _call(self, function: Any, *arguments: Any) -> Any:
        """Calls a short function of the library for the object."""
        self._check()
        scene = self._scene
        # No other thread can close the scene between these lines and the call.
        pointer = scene._pointer
        if pointer is None:
            pointer = scene._refuse()
        return function(pointer, self._class.number, self._index, *arguments)

    @property
    def scene(self) -> Scene:
        """The scene of the object."""
        return self._scene

    @property
    def index(self) -> int:
        """The slot number, by which other objects refer to this one."""
        return self._index

    @property
    def class_name(self) -> str:
        """The name of the class, such as "Camera"."""
        return self._class.name

    @property
    def valid(self) -> bool:
        """Whether the object is still in the scene."""
        try:
            self._check()
        except NoSuchObject:
            return False
        return True

    def remove(self) -> None:
        """Removes the object and frees its slot. References to it are not changed."""
        self._scene._remove(self._class.number, self._index, self._born)

    def reference_count(self) -> int:
        """Returns how many reference slots lead to the object. Emitters of light groups and decals of
        decal lists are not counted."""
        return int(self._call(quick.vrdmCountReferences))

    def to_json(self) -> Any:
        """Returns the object in the JSON form of a scene, as Python objects."""
        return self._scene.get(f"{self._class.name}/{self._index}")

    if not TYPE_CHECKING:
        def __setattr__(self, name: str, thing: Any) -> None:
            if name[:1] != "_":
                self._refuse_name(name, ())
            object.__setattr__(self, name, thing)

        def __getattr__(self, name: str) -> Any:
            if name[:1] == "_":
                raise AttributeError(name)
            no_name(f"a {self._class.name} has no", name, self._names())

    def _refuse_name(self, name: str, names: Iterable[str]) -> NoReturn:
        """Refuses an assignment to what is no attribute, or cannot be assigned to."""
        if hasattr(type(self), name):
            raise AttributeError(f"{name!r} of a {self._class.name} cannot be assigned to")
        no_name(f"a {self._class.name} has no", name, [*names, *self._names()])

    def _names(self) -> list[str]:
        return [name for name in object.__dir__(self) if name[:1] != "_"]

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, SceneObject):
            return NotImplemented
        return (self._scene is other._scene and self._class is other._class
                and self._index == other._index and self._born == other._born)

    def __hash__(self) -> int:
        return hash((id(self._scene), self._class.number, self._index, self._born))

    def __index__(self) -> int:
        return self._index

    def _describe(self) -> str:
        return ""

    def __repr__(self) -> str:
        head = f"<{self._class.name} {self._index}"
        try:
            self._check()
            text = self._describe()
        except ClosedError:
            return head + " of a closed scene>"
        except NoSuchObject:
            text = "removed"
        except ConcurrentUseError:
            text = "in use"
        return f"{head}{': ' if text else ''}{text}>"

    def _repr_html_(self) -> str:
        from ._html import object_html
        return object_html(self)

    def __reduce__(self) -> NoReturn:
        raise TypeError("an object belongs to its scene; pickle the scene, or object.to_json()")

    def __copy__(self: T) -> T:
        return self

    def __deepcopy__(self, memo: object) -> NoReturn:
        raise TypeError("an object belongs to its scene; copy the scene")


class Program(SceneObject):
    """A program: a source text."""

    __slots__ = ()

    @property
    def text(self) -> str:
        """The text. It does not change; add another program instead."""
        text: bytes = self._call(quick.vrdmGetProgramSource)  # a copy
        return text.decode("utf-8", "surrogateescape")

    @property
    def id(self) -> uuid.UUID:
        """The id: a hash of the text."""
        return _object_id(self)

    def _describe(self) -> str:
        text = self.text
        return repr(text if len(text) <= 60 else text[:57] + "...")


def _object_id(thing: SceneObject) -> uuid.UUID:
    thing._check()
    with thing._scene._exclusive(change=False) as pointer:
        address = quick.vrdmGetUniqueId(pointer, thing._class.number, thing._index)
        return uuid.UUID(bytes=ctypes.string_at(address, 16))


class Instance(SceneObject):
    """An object with groups, reference slots and, for some classes, a value. Its attributes are its groups
    and slots in snake case, and `value`."""

    __slots__ = ("_groups",)
    _attributes: Mapping[str, Any]

    def __init__(self, scene: Scene, index: int) -> None:
        super().__init__(scene, index)
        self._groups: dict[int, GroupRecord] = {}

    def _group(self, number: int) -> GroupRecord:
        found = self._groups.get(number)
        if found is None:
            info = self._class.groups[list(self._class.groups)[number]]
            found = group_class(info, self._class.number)(self._scene, self._index, self._born)
            self._groups[number] = found
        return found

    @property
    def groups(self) -> Groups:
        """The groups by their names in the catalogue: a mapping."""
        return Groups(self)

    @property
    def slots(self) -> Slots:
        """The reference slots by their names in the catalogue: a mapping of objects, None, or lists."""
        return Slots(self)

    def update(self, **things: Any) -> None:
        """Sets slots, groups and the value by their attribute names. A group takes a mapping of the fields
        to change."""
        for name, thing in things.items():
            entry = self._attributes.get(name)
            if entry == "group":
                getattr(self, name).update(thing)
            elif entry is not None:
                setattr(self, name, thing)
            else:
                no_name(f"a {self._class.name} has no", name, self._attributes)

    if not TYPE_CHECKING:  # so that a type checker sees what is misspelt
        def __setattr__(self, name: str, thing: Any) -> None:
            if name[:1] == "_" or name in self._attributes:
                object.__setattr__(self, name, thing)
            else:
                self._refuse_name(name, self._attributes)

        def __getattr__(self, name: str) -> Any:
            if name[:1] == "_":
                raise AttributeError(name)
            no_name(f"a {self._class.name} has no", name, self._attributes)

    def _describe(self) -> str:
        parts = []
        for slot in self._class.slots.values():
            if slot.single:
                target = self._get_single(slot)
                if target is not None:
                    parts.append(f"{slot.name} {target._index}")
            else:
                count = len(self._get_list(slot))
                if count:
                    parts.append(f"{count} {slot.name}")
        return ", ".join(parts)

    # Slots.

    def _get_single(self, slot: Slot) -> SceneObject | None:
        index = self._call(quick.vrdmGetReference, slot.index)
        return None if index < 0 else object_class(slot.target)(self._scene, index)

    def _set_single(self, slot: Slot, thing: Any) -> None:
        if thing is None:
            word = 2**32 - 1
        else:
            word = self._scene._index_of(thing, slot.target, f"{self._class.name}/{self._index}/slots/{slot.name}")
        self._call(quick.vrdmSetReference, slot.index, word)
        self._scene._changes.count += 1

    def _get_list(self, slot: Slot) -> ReferenceList:
        return ReferenceList(self, slot)

    # The value.

    def _get_value(self) -> Value | None:
        address = self._call(quick.vrdmGetInstanceValue)
        return Value._own(address) if address else None

    def _set_value(self, thing: Any) -> None:
        if isinstance(thing, str):
            thing = Value.parse(thing)
        elif isinstance(thing, Part):
            thing = thing.copy()
        if not isinstance(thing, Value):
            raise TypeMismatch(f"{self._class.name}/{self._index}/value: a Value or its text is expected, "
                               f"not {thing.__class__.__name__}")
        # The scene shares the block; a later write to the Value copies it.
        block = thing._block
        self._call(quick.vrdmSetInstanceValue, block.address)
        self._scene._changes.count += 1

    def update_texture_references(self) -> None:
        """Sets the list `textures` of a Light or a Material to the textures that its value names."""
        self._check()
        with self._scene._exclusive() as pointer:
            quick.vrdmUpdateTextureReferences(pointer, self._class.number, self._index)


class Groups(Mapping[str, GroupRecord]):
    """The groups of an object, by their names in the catalogue or in snake case."""

    __slots__ = ("_object",)

    def __init__(self, thing: Instance) -> None:
        self._object = thing

    def __getitem__(self, name: str) -> GroupRecord:
        groups = self._object._class.groups
        for info in groups.values():
            if name in (info.name, info.attribute):
                return self._object._group(info.index)
        no_name(f"a {self._object._class.name} has no group", name, groups)

    def __setitem__(self, name: str, thing: Any) -> None:
        group = self[name]
        group._write(group._type, 0, thing, "")

    def __iter__(self) -> Iterator[str]:
        return iter(self._object._class.groups)

    def __len__(self) -> int:
        return len(self._object._class.groups)

    def to_dict(self) -> dict[str, Any]:
        """Returns all groups as dicts."""
        return {name: group.to_dict() for name, group in self.items()}

    def __copy__(self) -> dict[str, Any]:
        return self.to_dict()

    def __deepcopy__(self, memo: object) -> dict[str, Any]:
        return self.to_dict()

    def __reduce__(self) -> tuple[object, ...]:
        return dict, (self.to_dict(),)

    def _ipython_key_completions_(self) -> list[str]:
        return list(self)

    def _repr_html_(self) -> str:
        from ._html import groups_html
        return groups_html(self)

    def __repr__(self) -> str:
        return shown(f"groups of {self._object!r}", lambda: repr(self.to_dict()))


class Slots(Mapping[str, Any]):
    """The reference slots of an object, by their names in the catalogue or in snake case."""

    __slots__ = ("_object",)

    def __init__(self, thing: Instance) -> None:
        self._object = thing

    def _slot(self, name: str) -> Slot:
        slots = self._object._class.slots
        for slot in slots.values():
            if name in (slot.name, slot.attribute, snake_case(slot.name)):
                return slot
        no_name(f"a {self._object._class.name} has no slot", name, slots)

    def __getitem__(self, name: str) -> Any:
        slot = self._slot(name)
        return self._object._get_single(slot) if slot.single else self._object._get_list(slot)

    def __setitem__(self, name: str, thing: Any) -> None:
        slot = self._slot(name)
        if slot.single:
            self._object._set_single(slot, thing)
        else:
            self._object._get_list(slot).assign(thing)

    def __iter__(self) -> Iterator[str]:
        return iter(self._object._class.slots)

    def __len__(self) -> int:
        return len(self._object._class.slots)

    def _ipython_key_completions_(self) -> list[str]:
        return list(self)

    def __repr__(self) -> str:
        return shown(f"slots of {self._object!r}", lambda: repr(
            {name: list(thing) if isinstance(thing, ReferenceList) else thing for name, thing in self.items()}))


class Side(Slotted):
    """An element of a decal list: a decal on one side of a surface.

    decal: the Decal. front: whether it is on the front, and not on the back.
    """

    __slots__ = ("decal", "front")

    def __init__(self, decal: Any, front: bool = True) -> None:
        self.decal = decal
        self.front = front

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Side):
            return NotImplemented
        return bool(self.decal == other.decal) and self.front == other.front

    def __hash__(self) -> int:
        return hash((self.decal, self.front))

    def __repr__(self) -> str:
        return f"{'front' if self.front else 'back'}({self.decal!r})"


def front(decal: Any) -> Side:
    """Returns a decal on the front, for DecalList.decals."""
    return Side(decal, True)


def back(decal: Any) -> Side:
    """Returns a decal on the back, for DecalList.decals."""
    return Side(decal, False)


class ReferenceList(MutableSequence[Any]):
    """A list of references. Changes are written through at once.

    The elements are objects, or None for no target. A list of emitters has lights and shapes; a list of
    decals has Side objects, and takes front(decal) and back(decal).
    """

    __slots__ = ("_object", "_slot")

    def __init__(self, thing: Instance, slot: Slot) -> None:
        self._object = thing
        self._slot = slot

    def words(self) -> list[int]:
        """Returns the words of the list as they are stored: indices, in lists of emitters and decals the
        complement of those of lights and of decals on the front."""
        thing = self._object
        thing._check()
        with thing._scene._exclusive(change=False) as pointer:
            return self._words(pointer)

    def _words(self, pointer: Any) -> list[int]:
        number, index, slot = self._object._class.number, self._object._index, self._slot.index
        count = quick.vrdmGetReferenceCount(pointer, number, index, slot)
        address = quick.vrdmGetReferenceList(pointer, number, index, slot)
        return list((ctypes.c_int32 * count).from_address(address)) if count > 0 and address else []

    def _splice(self, pointer: Any, start: int, stop: int, words: list[int]) -> None:
        """Replaces the words from `start` to `stop` in a scene that is taken."""
        number, index, slot = self._object._class.number, self._object._index, self._slot.index
        count = quick.vrdmGetReferenceCount(pointer, number, index, slot)
        size = count - (stop - start) + len(words)
        if size > count:
            quick.vrdmSetReferenceCount(pointer, number, index, slot, size)
        address = quick.vrdmModifyReferenceList(pointer, number, index, slot)
        if address:
            if size != count and stop < count:
                ctypes.memmove(address + 4 * (start + len(words)), address + 4 * stop, 4 * (count - stop))
            ctypes.memmove(address + 4 * start, (ctypes.c_int32 * len(words))(*words), 4 * len(words))
        if size < count:
            quick.vrdmSetReferenceCount(pointer, number, index, slot, size)

    def _taken(self, change: bool) -> _Exclusive:
        """Takes the scene. The lists of live objects stay as they are."""
        self._object._check()
        return self._object._scene._exclusive(change, fields=True)

    def _count(self, pointer: Any) -> int:
        thing = self._object
        return int(quick.vrdmGetReferenceCount(pointer, thing._class.number, thing._index, self._slot.index))

    def _place(self, pointer: Any, index: Any) -> int:
        count, place = self._count(pointer), operator.index(index)
        if not -count <= place < count:
            raise IndexError(f"{place} is outside the {count} elements")
        return place % count

    def _store(self, words: list[int]) -> None:
        with self._taken(True) as pointer:
            self._splice(pointer, 0, self._count(pointer), words)

    def _decode(self, word: int) -> Any:
        scene, kind = self._object._scene, self._slot.kind
        if kind == "list":
            return None if word < 0 else object_class(self._slot.target)(scene, word)
        if word == _NONE_IN_LIST:
            return None
        if kind == "emitters":
            return object_class("Shape" if word >= 0 else "Light")(scene, word if word >= 0 else ~word)
        decal = object_class("Decal")(scene, word if word >= 0 else ~word)
        return Side(decal, front=word < 0)

    def _encode(self, thing: Any) -> int:
        kind, scene = self._slot.kind, self._object._scene
        where = f"{self._object._class.name}/{self._object._index}/slots/{self._slot.name}"
        if thing is None:
            return -1 if kind == "list" else _NONE_IN_LIST
        if kind == "list":
            return scene._index_of(thing, self._slot.target, where)
        if kind == "emitters":
            if isinstance(thing, SceneObject) and thing._class.name == "Light":
                return ~scene._index_of(thing, "Light", where)
            if not isinstance(thing, SceneObject):
                raise TypeMismatch(f"{where}: a Light or a Shape is expected, not {thing!r}")
            return scene._index_of(thing, "Shape", where)
        if not isinstance(thing, Side):
            raise TypeMismatch(f"{where}: front(decal) or back(decal) is expected, not {thing!r}")
        index = scene._index_of(thing.decal, "Decal", where)
        return ~index if thing.front else index

    def assign(self, things: Iterable[Any]) -> None:
        """Replaces all elements."""
        self._store([self._encode(thing) for thing in things])

    def __getitem__(self, index: Any) -> Any:
        if isinstance(index, slice):
            return [self._decode(word) for word in self.words()[index]]
        thing = self._object
        with self._taken(False) as pointer:
            place = self._place(pointer, index)
            address = quick.vrdmGetReferenceList(pointer, thing._class.number, thing._index, self._slot.index)
            word = ctypes.c_int32.from_address(address + 4 * place).value
        return self._decode(word)

    def __setitem__(self, index: Any, thing: Any) -> None:
        if isinstance(index, slice):
            words = self.words()
            words[index] = [self._encode(one) for one in thing]
            self._store(words)
            return
        word = self._encode(thing)
        with self._taken(True) as pointer:
            place = self._place(pointer, index)
            self._splice(pointer, place, place + 1, [word])

    def __delitem__(self, index: Any) -> None:
        if isinstance(index, slice):
            words = self.words()
            del words[index]
            self._store(words)
            return
        with self._taken(True) as pointer:
            place = self._place(pointer, index)
            self._splice(pointer, place, place + 1, [])

    def insert(self, index: int, thing: Any) -> None:
        """Inserts an element."""
        word, place = self._encode(thing), operator.index(index)
        with self._taken(True) as pointer:
            count = self._count(pointer)
            place = min(max(place + count if place < 0 else place, 0), count)
            self._splice(pointer, place, place, [word])

    def append(self, thing: Any) -> None:
        """Adds an element at the end."""
        self.extend((thing,))

    def extend(self, things: Iterable[Any]) -> None:
        """Adds elements at the end."""
        added = [self._encode(thing) for thing in things]
        with self._taken(True) as pointer:
            count = self._count(pointer)
            self._splice(pointer, count, count, added)

    def clear(self) -> None:
        """Removes all elements."""
        self._store([])

    def __iter__(self) -> Iterator[Any]:
        return iter([self._decode(word) for word in self.words()])

    def __len__(self) -> int:
        return int(self._object._call(quick.vrdmGetReferenceCount, self._slot.index))

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, (ReferenceList, list, tuple)):
            return NotImplemented
        return list(self) == list(other)

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        return shown(f"{self._slot.name} of {self._object!r}", lambda: repr(list(self)))


# Classes of objects with properties for their groups and slots.

def _group_property(index: int, doc: str) -> property:
    def read(self: Instance) -> GroupRecord:
        found = self._groups.get(index)
        return found if found is not None else self._group(index)

    def write(self: Instance, thing: Any) -> None:
        group = self._group(index)
        group._write(group._type, 0, thing, "")

    return property(read, write, doc=doc)


def _slot_property(slot: Slot) -> property:
    doc = f"The reference slot {slot.name!r}: {slot.kind}, {slot.target}."
    if slot.single:
        def read(self: Instance) -> SceneObject | None:
            return self._get_single(slot)

        def write(self: Instance, thing: Any) -> None:
            self._set_single(slot, thing)

        return property(read, write, doc=doc)

    def read_list(self: Instance) -> ReferenceList:
        return self._get_list(slot)

    def write_list(self: Instance, things: Iterable[Any]) -> None:
        self._get_list(slot).assign(things)

    return property(read_list, write_list, doc=doc)


def _class_doc(entry: Class) -> str:
    """Returns the docstring of a class of instances: its groups, its slots and its value."""
    lines = [f"An object of the class {entry.name}.", ""]
    for group in entry.groups.values():
        lines.append(f"{group.attribute}: the group {group.name!r}: {', '.join(group.fields)}.")
    for slot in entry.slots.values():
        words = f"a {slot.target}{'' if slot.kind == 'required' else ' or None'}" if slot.single else (
            "a list of lights and shapes" if slot.kind == "emitters" else f"a list of {slot.target} objects")
        lines.append(f"{slot.attribute}: the reference slot {slot.name!r}: {words}.")
    if entry.has_value:
        lines.append("value: the parameters of its program, a Value.")
    return "\n".join(lines)


asset_classes: dict[str, type] = {}  # The module of assets fills it, which needs this one.


@lru_cache(maxsize=None)
def object_class(name: str) -> type[Any]:
    """Returns the Python class of a class of objects."""
    entry = catalogue().classes[name]
    if entry.kind == "program":
        return type(name, (Program,), {"__slots__": (), "_class": entry})
    if entry.kind == "asset":
        return type(name, (asset_classes[name],), {"__slots__": (), "_class": entry})
    attributes: dict[str, str] = {}
    names: dict[str, Any] = {"__slots__": (), "_class": entry, "__doc__": _class_doc(entry)}
    for group in entry.groups.values():
        names[group.attribute] = _group_property(group.index, group.description)
        attributes[group.attribute] = "group"
    for slot in entry.slots.values():
        names[slot.attribute] = _slot_property(slot)
        attributes[slot.attribute] = "slot"
    if entry.has_value:
        names["value"] = property(
            Instance._get_value, Instance._set_value,
            doc="The parameters of the program: a Value that shares its bytes with the scene, or None. "
                "Changing it does not change the scene; assign it again.")
        attributes["value"] = "value"
    names["_attributes"] = attributes
    return type(name, (Instance,), names)


class Objects(Generic[T]):
    """The objects of a class in a scene. Iterating gives the live ones; [slot] gives one by its number."""

    __slots__ = ("_class", "_kind", "_scene")

    def __init__(self, scene: Scene, entry: Class) -> None:
        self._scene = scene
        self._class = entry
        self._kind: type[T] = object_class(entry.name)

    @property
    def name(self) -> str:
        """The name of the class."""
        return self._class.name

    @property
    def slot_count(self) -> int:
        """The number of slots, free ones included."""
        return int(self._scene._call(quick.vrdmContainerSize, self._class.number))

    def indices(self) -> list[int]:
        """Returns the slot numbers of the live objects."""
        indices: list[int] = self._slots().tolist()
        return indices

    def _slots(self) -> Any:
        return columns.live_slots(self._scene, self._class.number)

    def __getitem__(self, index: int) -> T:
        """Returns the object in a slot. Raises NoSuchObject for a free one."""
        try:
            slot = operator.index(index)
        except TypeError:
            raise TypeError(f"{self._class.name} is indexed by slot number, not by {index!r}") from None
        if not (0 <= slot < 2**31 and self._scene._call(_valid, self._class.number, slot)):
            raise NoSuchObject(f"the scene has no {self._class.name} {index}")
        return self._kind(self._scene, slot)

    def get(self, index: int, default: Any = None) -> T | Any:
        """Returns the object in a slot, or a default for a free one."""
        try:
            return self[index]
        except NoSuchObject:
            return default

    def __delitem__(self, index: int) -> None:
        self[index].remove()

    def __iter__(self) -> Iterator[T]:
        kind, scene = self._kind, self._scene
        for index in self.indices():
            thing = kind(scene, index)
            if thing.valid:  # An earlier round may have removed it.
                yield thing

    def __len__(self) -> int:
        """The number of live objects."""
        return len(self._slots())

    def __bool__(self) -> bool:
        return len(self) > 0

    def __contains__(self, thing: object) -> bool:
        if isinstance(thing, SceneObject):
            return thing._scene is self._scene and thing._class is self._class and thing.valid
        if isinstance(thing, bool):
            return False
        try:
            slot = operator.index(thing)  # type: ignore[arg-type]
        except TypeError:
            return False
        return 0 <= slot < 2**31 and bool(self._scene._call(_valid, self._class.number, slot))

    def add(self, *arguments: Any, **things: Any) -> T:
        """Adds an object and returns it. The lowest free slot is used.

        Programs: add(text). Assets: see Mesh, Texture and MaterialGraph in vornath_data.assets.
        Instances: the attributes to set, such as add(program=0, general={"near_distance": 0.1}). If one
        is refused, the object is removed again.
        """
        scene, entry = self._scene, self._class
        if entry.kind == "program":
            return self._add_program(*arguments, **things)
        if entry.kind == "asset":
            return self._kind._add(scene, *arguments, **things)  # type: ignore[attr-defined,no-any-return]
        if arguments:
            raise TypeError(f"{entry.name}.add() takes the attributes to set by name")
        with scene._exclusive() as pointer:
            index = quick.vrdmCreateInstance(pointer, entry.number)
        thing = self._kind(scene, index)
        try:
            thing.update(**things)  # type: ignore[attr-defined]
        except BaseException:
            thing.remove()
            raise
        return thing

    def _add_program(self, text: str) -> T:
        if "\0" in text:
            raise TypeMismatch("the text of a program contains no NUL character")
        data = text.encode("utf-8", "surrogateescape")
        with self._scene._exclusive() as pointer:
            index = quick.vrdmAddProgram(pointer, self._class.number, data)
        return self._kind(self._scene, index)

    def column(self, group: str, field: str | None = None, slots: Any = None) -> numpy.ndarray[Any, Any]:
        """Returns one field of one group of all live objects as a NumPy array, a copy, in the order of
        their slots. See vornath_data.columns.

        group, field: names as in the catalogue; a path such as "matrix.x" leads into structs; None for the
        whole group. slots: only these objects.
        """
        return columns.get_column(self._scene, self._class, group, field, slots)

    def set_column(self, group: str, field: str | None, values: Any, slots: Any = None) -> None:
        """Writes one field of one group of all live objects from a NumPy array, or one value to all."""
        columns.set_column(self._scene, self._class, group, field, values, slots)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Objects):
            return NotImplemented
        return self._scene is other._scene and self._class is other._class

    def __hash__(self) -> int:
        return hash((id(self._scene), self._class.number))

    def __reduce__(self) -> NoReturn:
        raise TypeError("the objects of a class belong to their scene; pickle the scene")

    def __deepcopy__(self, memo: object) -> NoReturn:
        raise TypeError("the objects of a class belong to their scene; copy the scene")

    def __copy__(self) -> Objects[T]:
        return self

    def __repr__(self) -> str:
        if self._scene.closed:
            return f"<{self._class.name} objects of a closed scene>"
        return shown(f"{self._class.name} objects", lambda: f"<{len(self)} {self._class.name} objects>")

    def __dir__(self) -> list[str]:
        return sorted(object.__dir__(self))

    def _repr_html_(self) -> str:
        from ._html import objects_html
        return objects_html(self)


class _Exclusive:
    """Takes the scene for itself as long as it is open: another use raises ConcurrentUseError."""

    __slots__ = ("_change", "_count", "_fields", "_frame", "_pointer", "_scene", "_thread")

    def __init__(self, scene: Scene, change: bool, fields: bool) -> None:
        self._frame: FrameType | None = sys._getframe(2)  # that of the with statement, behind Scene._exclusive()
        self._thread = threading.get_ident()
        self._scene = scene
        self._change = change
        self._fields = fields

    def __enter__(self) -> Any:
        scene = self._scene
        # No call stands between these lines: no other thread can take the scene in between.
        pointer = scene._pointer
        if pointer is None:
            pointer = scene._refuse()
        changes = scene._changes
        self._count = changes.count
        self._pointer = pointer
        scene._pointer = None
        changes.count = -1
        scene._user = self
        return pointer

    def interrupted(self) -> bool:
        """Tells whether the block ended without __exit__(): a handler of a signal may raise where that begins. Looks
        at the frames of the thread that took the scene, which alone may ask."""
        frame: FrameType | None = sys._getframe()
        while frame is not None and frame is not self._frame:
            frame = frame.f_back
        return frame is None

    def __exit__(self, *arguments: object) -> None:
        scene = self._scene
        if self._change and not self._fields:
            scene._lists.clear()
        # No call stands between these lines, at which a handler of a signal could raise.
        scene._user = None
        scene._changes.count = self._count + 1 if self._change else self._count
        scene._pointer = self._pointer
        self._frame = None


class Scene(SceneClasses):
    """A scene. `Scene()` is empty; Scene.open() reads a file. Close it with close() or a with block, or let
    Python do so when nothing refers to it any more.

    One thread at a time may use a scene: a use while another one runs raises ConcurrentUseError. The
    classes are attributes: scene.Camera, scene.Shape, ...
    """

    __slots__ = ("__weakref__", "_changes", "_groups", "_lists", "_open", "_pid", "_pointer", "_removals", "_user")

    def __init__(self) -> None:
        if hasattr(self, "_open"):  # Another scene in its place would leave its groups without theirs.
            raise TypeError("the scene exists already; make another one")
        address = quick.vrdmCreateScene()
        if not address:
            raise MemoryError("there is no memory for a scene")
        self._take(address)

    def _take(self, address: int) -> None:
        self._pointer: Any = _Handle(address)
        self._open = True
        self._changes = Changes()
        self._user: _Exclusive | None = None
        self._removals: dict[tuple[int, int], int] = {}
        self._groups: dict[int, GroupRecord] = {}
        self._lists: dict[int, Any] = {}  # the live slots of classes, until objects are added or removed
        self._pid = os.getpid()

    @classmethod
    def _own(cls, address: int) -> Scene:
        """Returns the object of a scene of the library, which it owns from now on."""
        self = object.__new__(cls)
        self._take(address)
        return self

    # Lifetime and use.

    @property
    def _handle(self) -> Any:
        """The scene of the library for calls of the C functions: its `value` is the address."""
        return self._pointer

    @property
    def closed(self) -> bool:
        """Whether the scene was closed."""
        return not self._open

    def close(self) -> None:
        """Destroys the scene. Arrays over the bytes of its assets stay valid. Does nothing for a closed
        scene. Any other use of it then raises ClosedError."""
        if not self._open:
            return
        # No call stands between these lines, so that one thread alone closes the scene.
        pointer = self._pointer
        if pointer is None:
            pointer = self._refuse()
        self._pointer = None
        self._open = False
        self._changes.count = -1
        self._groups.clear()
        self._removals.clear()
        del pointer  # the last reference, unless a call is just made

    def __enter__(self) -> Scene:
        self._live()
        return self

    def __exit__(self, *arguments: object) -> None:
        self.close()

    def _refuse(self) -> Any:
        """Raises ClosedError or ConcurrentUseError; returns the scene of the library, which is free again, if the call
        that had it was interrupted."""
        if self.closed:
            raise ClosedError("the scene is closed")
        if self._pid != os.getpid():
            raise ConcurrentUseError("another thread used the scene when this process was forked, so it may "
                                     "be half changed; open it again here")
        user = self._user
        if user is not None and user._thread == threading.get_ident():
            if user.interrupted():
                user.__exit__()
                return self._pointer
            raise ConcurrentUseError("the scene is used by a call of this thread that has not returned")
        raise ConcurrentUseError("another thread uses the scene; one thread at a time may use a scene")

    def _live(self) -> None:
        """Raises ClosedError or ConcurrentUseError if the scene cannot be used now."""
        if self._pointer is None:
            self._refuse()

    def _call(self, function: Any, *arguments: Any) -> Any:
        """Calls a short function of the library with the scene."""
        pointer = self._pointer
        if pointer is None:
            pointer = self._refuse()
        return function(pointer, *arguments)

    def _exclusive(self, change: bool = True, fields: bool = False) -> _Exclusive:
        """Takes the scene for a change, for a change of fields alone, or for reading."""
        return _Exclusive(self, change, fields)

    def _check(self, number: int, index: int, born: int) -> None:
        """Raises NoSuchObject for an object that is not in the scene any more."""
        pointer = self._pointer
        if pointer is None:
            pointer = self._refuse()
        live = _valid(pointer, number, index)
        if not live or self._removals.get((number, index), 0) != born:
            raise NoSuchObject(f"{catalogue().by_number[number].name} {index} is not in the scene any more")

    def _remove(self, number: int, index: int, born: int) -> None:
        self._check(number, index, born)
        with self._exclusive() as pointer:
            key = number, index
            try:
                quick.vrdmRemove(pointer, number, index)
            finally:  # also where the handler of a signal raises after the call
                self._removals[key] = self._removals.get(key, 0) + 1

    def _index_of(self, thing: Any, target: str, where: str) -> int:
        """Returns the slot number of an object to refer to."""
        if isinstance(thing, SceneObject):
            if thing._class.name != target:
                raise TypeMismatch(f"{where}: a {target} is expected, not a {thing._class.name}")
            if thing._scene is not self:
                raise TypeMismatch(f"{where}: the {target} is in another scene; merge() brings it here")
            thing._check()
            return thing._index
        if isinstance(thing, bool) or not hasattr(thing, "__index__"):
            raise TypeMismatch(f"{where}: a {target} or its slot number is expected, "
                               f"not {thing.__class__.__name__}")
        index = int(thing.__index__())
        entry = catalogue().classes[target]
        if not 0 <= index < 2**31 or not self._call(_valid, entry.number, index):
            raise NoSuchObject(f"{where}: the scene has no {target} {index}")
        return index

    # What is in it.

    @property
    def id(self) -> uuid.UUID:
        """The random id of the scene, which its file keeps."""
        with self._exclusive(change=False) as pointer:
            return uuid.UUID(bytes=ctypes.string_at(quick.vrdmSceneId(pointer), 16))

    @property
    def classes(self) -> Mapping[str, Objects[Any]]:
        """The objects of all classes, by the names of the classes."""
        return {name: self[name] for name in catalogue().classes}

    def __getitem__(self, name: str) -> Objects[Any]:
        """Returns the objects of a class by its name."""
        if not isinstance(name, str):
            raise TypeError(f"a scene is indexed by the name of a class, not by {name!r}")
        return Objects(self, catalogue().classes[name])

    if not TYPE_CHECKING:  # so that a type checker sees what is misspelt
        def __getattr__(self, name: str) -> Any:
            classes = catalogue().classes
            if name in classes:
                return Objects(self, classes[name])
            if name[:1] == "_":
                raise AttributeError(name)
            no_name("a scene has no", name, [*classes, *object.__dir__(self)])

    @property
    def groups(self) -> SceneGroups:
        """The settings of the whole scene: the groups "Cut planes", "Rasterizer", "Raytracer" and
        "General"."""
        return SceneGroups(self)

    def __iter__(self) -> Iterator[SceneObject]:
        """Iterates over all objects, class by class."""
        for name in catalogue().classes:
            yield from self[name]

    def __len__(self) -> int:
        """The number of live objects of all classes."""
        return sum(len(columns.live_slots(self, entry.number)) for entry in catalogue())

    def __bool__(self) -> bool:
        return True

    def __contains__(self, thing: object) -> bool:
        return isinstance(thing, SceneObject) and thing._scene is self and thing.valid

    # Files.

    @classmethod
    def open(cls, source: str | os.PathLike[str] | bytes, *, max_memory: int = 0,
             max_messages: int = 100, trust: bool = False) -> Scene:
        """Reads a scene file, or its bytes, after checking it: a damaged file raises CheckError with the
        report and reads nothing.

        max_memory: bytes that reading may take; 0 for no limit. max_messages: those that a report keeps.
        trust: read without the check. A damaged file may then end the process.
        Raises FileError for a file that is missing or unreadable.
        """
        return cls._own(_check.open_scene(source, max_memory, max_messages, trust))

    def save(self, path: str | os.PathLike[str], *, sync: bool = True) -> None:
        """Writes the scene to a file, whole or not at all.

        sync: wait until the bytes are on the device. Raises SaveError, and ToolkitError with the code
        SCENE_INCOMPLETE for a Camera, Light or Material without a value.
        """
        options = _declarations.vrtkSaveOptions(ctypes.sizeof(_declarations.vrtkSaveOptions), not sync)
        error = ctypes.c_void_p()
        with self._exclusive(change=False) as pointer:
            status = long.vrtkSceneSave(pointer, path_bytes(path), ctypes.byref(options),
                                        ctypes.byref(error))
        if status:
            raise save_error(status, error, path)

    def to_bytes(self) -> bytes:
        """Returns the bytes of the scene's file."""
        data, size, error = ctypes.c_void_p(), ctypes.c_uint64(), ctypes.c_void_p()
        with self._exclusive(change=False) as pointer:
            status = long.vrtkSceneSaveBytes(pointer, ctypes.byref(data), ctypes.byref(size),
                                             ctypes.byref(error))
        if status:
            raise toolkit_error(status, error)
        try:
            return ctypes.string_at(data.value or 0, size.value)
        finally:
            quick.vrtkBytesDestroy(data)

    @classmethod
    def from_bytes(cls, data: bytes) -> Scene:
        """Returns the scene of the bytes of a file, checked. Raises CheckError."""
        return cls.open(bytes_of(data))

    def copy(self) -> Scene:
        """Returns a scene with the same content, slots and ids. Raises ToolkitError for an object without
        its value."""
        return type(self).from_bytes(self.to_bytes())

    def __copy__(self) -> Scene:
        return self.copy()

    def __deepcopy__(self, memo: object) -> Scene:
        return self.copy()

    def __reduce__(self) -> tuple[object, ...]:
        return type(self).from_bytes, (self.to_bytes(),)

    def validate(self, *, max_messages: int = 100) -> Any:
        """Returns a Report with what a renderer may stumble over, such as references to objects that are
        not there."""
        return _check.validate(self, max_messages)

    # JSON, digests, merging.

    def to_json(self, path: str | os.PathLike[str] | None = None, *, full: bool = False,
                inline: bool | None = None) -> Any:
        """Returns the scene in its JSON form as Python objects, or writes it to a file.

        path: the file; the bytes of assets go into a folder beside it, unless they are inline. full: also
        what has its default. inline: the bytes of assets in base64; by default where no path is given.
        """
        text = _tools.export_json(self, path, full, path is None if inline is None else inline)
        return None if text is None else json.loads(text)

    def to_json_text(self, *, full: bool = False, inline: bool = True) -> str:
        """Returns the scene in its JSON form as a text: the same for the same content. Without `inline`, the
        bytes of assets are named by their digests only."""
        return _tools.export_json(self, None, full, inline) or ""

    @classmethod
    def from_json(cls, source: Any, *, asset_folder: str | os.PathLike[str] | None = None,
                  max_memory: int = 0, max_messages: int = 20) -> Scene:
        """Builds a scene of a JSON document: a text, bytes, Python objects of the form, or a pathlib.Path.

        asset_folder: where the files of assets are; by default the folder of the path. max_memory: bytes
        that the scene may take without its assets. Raises JsonError with all that is wrong, up to
        `max_messages`.
        """
        return cls._own(_tools.build_scene(source, asset_folder, max_memory, max_messages))

    def get(self, address: str) -> Any:
        """Returns what an address names, such as "Camera/0/groups/General/near_distance", as Python
        objects of the JSON form. Raises UnknownName."""
        return json.loads(_tools.get_json(self, address))

    def get_bytes(self, address: str) -> bytes:
        """Returns a copy of the bytes of an asset ("Mesh/0/bytes") or of a program ("LightProgram/0/text").
        Raises UnknownName."""
        return _tools.get_bytes(self, address)

    def set(self, address: str, thing: Any, *, limits: bool = False,
            asset_folder: str | os.PathLike[str] | None = None) -> None:
        """Replaces what an address names by Python objects of the JSON form; None for a whole object removes
        it.

        limits: refuse numbers outside the limits of their fields. Raises UnknownName, and JsonError with
        the reason; the scene is then as it was.
        """
        _tools.set_json(self, address, json.dumps(thing, default=_tools.plain_json), limits, asset_folder)
        parts = address.split("/")
        if thing is None and len(parts) == 2 and parts[0] in catalogue().classes and parts[1].isdigit():
            key = catalogue().classes[parts[0]].number, int(parts[1])
            self._removals[key] = self._removals.get(key, 0) + 1

    def patched(self, patch: Any, *, limits: bool = False,
                asset_folder: str | os.PathLike[str] | None = None) -> Scene:
        """Returns a new scene: this one with a patch (RFC 6902) applied to its full JSON form. Objects that
        it does not touch share their bytes with this scene. Raises JsonError."""
        return type(self)._own(_tools.apply_patch(self, patch, limits, asset_folder))

    def digest(self, *, ids: bool = False) -> str:
        """Returns "sha256:" and a digest of the content: equal for equal content, whatever wrote it.

        ids: the random ids of the scene and its assets count, too.
        """
        return _tools.digest(self, ids)

    def equivalent(self, other: Scene) -> bool:
        """Tells whether two scenes have the same content in the same slots, as the library compares them."""
        return _tools.equivalent(self, other)

    def merge(self, other: Scene) -> dict[str, list[int | None]]:
        """Adds the content of another scene, whose assets are then shared, and returns for each class which
        slot became which. The other scene stays as it is."""
        return _tools.merge(self, other)

    def dump(self) -> str:
        """Returns the library's own print-out for people, with all counters; it differs from run to run."""
        return _tools.dump(self)

    # Shown.

    def __repr__(self) -> str:
        if self.closed:
            return "<Scene, closed>"
        if self._pointer is None:
            return "<Scene, in use>"
        try:
            parts = [f"{len(objects)} {name}" for name, objects in self.classes.items() if objects]
            return f"<Scene {self.id}: {', '.join(parts) or 'empty'}>"
        except ConcurrentUseError:
            return "<Scene, in use>"

    def __dir__(self) -> list[str]:
        return sorted({*object.__dir__(self), *catalogue().classes})

    def _ipython_key_completions_(self) -> list[str]:
        return list(catalogue().classes)

    def _repr_html_(self) -> str:
        from ._html import scene_html
        return scene_html(self)


class SceneGroups(Mapping[str, GroupRecord]):
    """The settings of the whole scene, by their names in the catalogue; also as attributes in snake case:
    scene.groups.raytracer.ray_epsilon."""

    __slots__ = ("_scene",)
    _scene: Scene

    def __init__(self, scene: Scene) -> None:
        object.__setattr__(self, "_scene", scene)

    def _find(self, name: str) -> GroupRecord:
        scene: Scene = object.__getattribute__(self, "_scene")
        for info in catalogue().scene.groups.values():
            if name in (info.name, info.attribute):
                found = scene._groups.get(info.index)
                if found is None:
                    found = group_class(info, SCENE_DATA)(scene, -1, 0)
                    scene._groups[info.index] = found
                return found
        no_name("a scene has no group", name, catalogue().scene.groups)

    def __getitem__(self, name: str) -> GroupRecord:
        return self._find(name)

    def __setitem__(self, name: str, thing: Any) -> None:
        group = self._find(name)
        group._write(group._type, 0, thing, "")

    def __getattr__(self, name: str) -> GroupRecord:
        if name[:1] == "_":
            raise AttributeError(name)
        return self._find(name)

    def __setattr__(self, name: str, thing: Any) -> None:
        self[name] = thing

    def __iter__(self) -> Iterator[str]:
        return iter(catalogue().scene.groups)

    def __len__(self) -> int:
        return len(catalogue().scene.groups)

    def to_dict(self) -> dict[str, Any]:
        """Returns all groups as dicts."""
        return {name: group.to_dict() for name, group in self.items()}

    def __copy__(self) -> dict[str, Any]:
        return self.to_dict()

    def __deepcopy__(self, memo: object) -> dict[str, Any]:
        return self.to_dict()

    def __reduce__(self) -> tuple[object, ...]:
        return dict, (self.to_dict(),)

    def __dir__(self) -> list[str]:
        return sorted({*object.__dir__(self),
                       *(info.attribute for info in catalogue().scene.groups.values())})

    def _repr_html_(self) -> str:
        from ._html import groups_html
        return groups_html(self)

    def __repr__(self) -> str:
        return shown("groups of the scene", lambda: repr(self.to_dict()))


__all__ = ["Groups", "Instance", "Objects", "Program", "ReferenceList", "Scene", "SceneGroups", "SceneObject",
           "Side", "Slots", "back", "front"]
