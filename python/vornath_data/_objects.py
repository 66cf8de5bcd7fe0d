"""The classes of objects, made from the catalogue when they are first asked for. _objects.pyi has them for
type checkers."""
from __future__ import annotations

from typing import Any


class SceneClasses:
    """What a scene has of each class. Scene answers these attributes from the catalogue."""

    __slots__ = ()


def __getattr__(name: str) -> Any:
    if name[0] == "_":
        raise AttributeError(name)
    from .catalogue import catalogue
    from .scene import object_class
    if name in catalogue().classes:
        return object_class(name)
    raise AttributeError(name)
