"""Classes with slots that pickle and compare as Python people expect."""
from __future__ import annotations

from collections.abc import Iterable
from typing import Any, SupportsIndex


class Slotted:
    """A class with slots. Python itself pickles one with protocol 2 and later ones only."""

    __slots__ = ()

    def __reduce_ex__(self, protocol: SupportsIndex) -> Any:
        return object.__reduce_ex__(self, max(int(protocol), 2))


class Record(Slotted):
    """A class with slots whose objects are equal if their attributes are."""

    __slots__ = ()

    def _values(self) -> tuple[Any, ...]:
        names: Iterable[str] = type(self).__slots__
        return tuple(getattr(self, name) for name in names)

    def __eq__(self, other: object) -> bool:
        if type(other) is not type(self):
            return NotImplemented
        assert isinstance(other, Record)
        return self._values() == other._values()

    def __hash__(self) -> int:
        return hash(self._values())
