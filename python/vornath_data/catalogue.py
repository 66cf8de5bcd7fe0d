"""The catalogue: the classes of objects with their groups, fields and reference slots, as the library
tells them.

    >>> import vornath_data as vd
    >>> near = vd.catalogue().classes["Camera"].groups["General"].fields["near_distance"]
    >>> near.minimum, near.default, near.name
    (0.0, 0.0, 'Near Distance')
"""
from __future__ import annotations

import keyword
import re
from collections.abc import Iterator, Mapping
from functools import lru_cache
from types import MappingProxyType
from typing import Any

from ._library import quick
from ._status import Lookup
from .types import Field, Type

SCENE_DATA = 2**32 - 1
KINDS = ("program", "asset", "instance")
SLOT_KINDS = {0: "required", 1: "optional", 2: "list", 3: "decals", 100: "emitters"}
EMITTER = 100


def snake_case(name: str) -> str:
    """Returns a name of the catalogue as a Python attribute: "Face culling" is face_culling."""
    text = re.sub(r"[^0-9A-Za-z]+", "_", name)
    text = re.sub(r"([a-z0-9])([A-Z])", r"\1_\2", text)
    text = re.sub(r"([A-Z]+)([A-Z][a-z])", r"\1_\2", text).lower()
    return text + "_" if keyword.iskeyword(text) else text


class Slot:
    """A reference slot of a class.

    name: as in the catalogue. attribute: its name in Python. index: its place. kind: "required",
    "optional" (one object), "list", "decals" (a list of decals with their sides) or "emitters" (a list of
    lights and shapes). target: the name of the class that it refers to, "emitter" for lights and shapes.
    """

    __slots__ = ("attribute", "index", "kind", "name", "owner", "target", "target_number")

    def __init__(self, owner: str, index: int, name: str, kind: str, target: str, target_number: int) -> None:
        self.owner = owner
        self.index = index
        self.name = name
        self.kind = kind
        self.target = target
        self.target_number = target_number
        self.attribute = snake_case(name)

    @property
    def single(self) -> bool:
        """Whether the slot holds one object, and not a list."""
        return self.kind in ("required", "optional")

    def __reduce__(self) -> tuple[object, ...]:
        return _entry, (self.owner, "slots", self.name)

    def __repr__(self) -> str:
        return f"<Slot {self.name!r}: {self.kind}, {self.target}>"


class Group:
    """A group of settings of a class.

    name: as in the catalogue. attribute: its name in Python. index: its place. type: its annotated
    struct. fields: its fields by label.
    """

    __slots__ = ("attribute", "index", "name", "owner", "type")

    def __init__(self, owner: str, index: int, name: str, type: Type) -> None:
        self.owner = owner
        self.index = index
        self.name = name
        self.type = type
        self.attribute = snake_case(name)

    @property
    def fields(self) -> Mapping[str, Field]:
        """The fields by label. Each has offset, default, minimum, maximum, unit, name and description."""
        return self.type.fields

    @property
    def size(self) -> int:
        """The bytes of the group."""
        return self.type.size

    @property
    def description(self) -> str:
        """The annotation @desc."""
        return str(self.type.metadata.get("desc", ""))

    def __reduce__(self) -> tuple[object, ...]:
        return _entry, (self.owner, "groups", self.name)

    def __repr__(self) -> str:
        return f"<Group {self.owner}/{self.name}: {', '.join(self.fields)}>"

    def _repr_html_(self) -> str:
        from ._html import group_info_html
        return group_info_html(self)


class Class:
    """A class of objects.

    name, number: as in the catalogue; the number is VRDM_CLASS_*. kind: "program", "asset" or "instance".
    groups, slots: by name. has_value: whether its objects have a value for their program.
    """

    __slots__ = ("groups", "has_value", "kind", "name", "number", "slots")
    name: str
    kind: str
    number: int

    def __init__(self, number: int) -> None:
        self.number = number
        scene = number == SCENE_DATA
        self.name = "scene" if scene else quick.vrdmObjectName(number).decode()
        self.kind = "scene" if scene else KINDS[quick.vrdmObjectClass(number)]
        self.groups: Mapping[str, Group] = Lookup(f"{self.name} has no group", {
            group.name: group for group in (
                Group(self.name, index, quick.vrdmFieldName(number, index).decode(),
                      Type._own(quick.vrdmFieldType(number, index)))
                for index in range(quick.vrdmFieldCount(number)))})
        slots = {}
        for index in range(quick.vrdmReferenceCount(number)):
            info = quick.vrdmReferenceType(number, index)
            target = "emitter" if info.targetClass == EMITTER else quick.vrdmObjectName(
                info.targetClass).decode()
            slots[info.name.decode()] = Slot(self.name, index, info.name.decode(), SLOT_KINDS[info.kind],
                                             target, info.targetClass)
        # Where a group has the same name, the slot's attribute tells its target, too.
        taken = {group.attribute for group in self.groups.values()}
        for slot in slots.values():
            if slot.attribute in taken:
                slot.attribute += "_" + snake_case(slot.target)
        self.slots: Mapping[str, Slot] = Lookup(f"{self.name} has no slot", slots)
        self.has_value = bool(quick.vrdmHasValue(number))

    def __reduce__(self) -> tuple[object, ...]:
        return _entry, (self.name,)

    def __repr__(self) -> str:
        return f"<Class {self.name}: {self.kind}>"

    def _repr_html_(self) -> str:
        from ._html import class_info_html
        return class_info_html(self)


class Catalogue:
    """All classes, and the settings of the whole scene.

    classes: by name. scene: the class-like entry of the settings of the whole scene.
    """

    def __init__(self) -> None:
        self.classes: Mapping[str, Class] = Lookup("there is no class", {
            entry.name: entry for entry in (Class(number)
                                            for number in range(quick.vrdmObjectTypeCount()))})
        self.scene = Class(SCENE_DATA)
        self.by_number: Mapping[int, Class] = MappingProxyType(
            {entry.number: entry for entry in self.classes.values()})

    def __reduce__(self) -> tuple[object, ...]:
        return catalogue, ()

    def __iter__(self) -> Iterator[Class]:
        return iter(self.classes.values())

    def __len__(self) -> int:
        return len(self.classes)

    def __contains__(self, name: object) -> bool:
        return name in self.classes

    def __getitem__(self, name: str) -> Class:
        return self.classes[name]

    def __repr__(self) -> str:
        return f"<Catalogue: {', '.join(self.classes)}>"

    def _repr_html_(self) -> str:
        from ._html import catalogue_html
        return catalogue_html(self)


def _entry(owner: str, part: str = "", name: str = "") -> Any:
    """Returns a class, or one of its groups or slots: what copies and pickles of them are."""
    entry = catalogue().scene if owner == "scene" else catalogue().classes[owner]
    return getattr(entry, part)[name] if part else entry


@lru_cache(maxsize=1)
def catalogue() -> Catalogue:
    """Returns the catalogue of the library, which is always the same object."""
    return Catalogue()


__all__ = ["Catalogue", "Class", "Group", "Slot", "catalogue"]
