"""Types: descriptions of values, which the library makes from texts at run time.

    >>> import vornath_data as vd
    >>> gloss = vd.Type("{ float @default=0.5 @min=0.0 gloss; int[3] size; }")
    >>> gloss.kind, gloss.size
    ('struct', 16)
    >>> gloss.fields["gloss"].default
    0.5
    >>> gloss.fields["size"].offset
    4
"""
from __future__ import annotations

import ctypes
import weakref
from collections.abc import Callable, Iterator, Mapping
from typing import TYPE_CHECKING, Any, TypeVar

from ._declarations import vrntValueView_t
from ._library import long, quick
from ._slotted import Slotted
from ._status import Lookup, no_name, nul_error, parse_error, take_string, value_error
from .errors import TypeMismatch

if TYPE_CHECKING:
    import numpy

    from ._layout import Layout
    from .values import Value

_SCALARS = ("char", "half", "bool", "int", "float")
_NOT_CONCRETE = 2**64 - 1
_T = TypeVar("_T")


class _TypeHandle:
    """A reference to a type of the library. It alone has a __del__, so that no weak reference leads to a
    type whose handle is destroyed."""

    # ctypes takes the handle itself as an argument, and so keeps it alive during a call.
    __slots__ = ("_as_parameter_", "address")

    def __init__(self, address: int) -> None:
        self.address = self._as_parameter_ = address

    def __del__(self, destroy: Any = quick.vrntTypeDestroy) -> None:
        destroy(self.address)


class Metadata(Slotted, Mapping[str, Any]):
    """The annotations of a type: a mapping from keys to True (a flag), a str (a text) or a Python value.
    Keys are in byte order. value() returns an annotation as a Value."""

    __slots__ = ("_keys", "_type")

    def __init__(self, type: Type) -> None:
        self._type = type
        address = type._handle.address
        self._keys = {quick.vrntMetadataName(address, index).decode("utf-8", "replace"):
                      quick.vrntMetadataName(address, index)
                      for index in range(quick.vrntMetadataSize(address))}

    def __getitem__(self, key: str) -> Any:
        name = self._keys[key]
        address = self._type._handle.address
        kind = quick.vrntMetadataType(address, name)
        if kind == 0:
            return True
        if kind == 1:
            return quick.vrntMetadataString(address, name).decode("utf-8", "replace")
        return self.value(key).to_python()

    def value(self, key: str) -> Value:
        """Returns an annotation that is a value, as a Value. Raises KeyError for another one."""
        from .values import Value
        name = self._keys[key]
        if quick.vrntMetadataType(self._type._handle.address, name) != 2:
            raise KeyError(f"the annotation {key!r} is no value")
        return Value._own(quick.vrntMetadataValue(self._type._handle.address, name))

    def __iter__(self) -> Iterator[str]:
        return iter(self._keys)

    def __len__(self) -> int:
        return len(self._keys)

    def __contains__(self, key: object) -> bool:
        return key in self._keys

    def __repr__(self) -> str:
        return repr(dict(self))


class Field(Slotted):
    """A field of a struct.

    label: its name. type: its annotated Type. offset: bytes from the start of the struct. index: its
    place among the fields.
    """

    __slots__ = ("_parent", "index", "label", "offset", "type")

    def __init__(self, label: str, type: Type, offset: int, index: int, parent: Type) -> None:
        self.label = label
        self.type = type
        self.offset = offset
        self.index = index
        self._parent = parent

    def _annotation(self, key: str) -> Any:
        """Returns a value among the annotations, if it fits the type, as the library asks for defaults."""
        metadata = self.type.metadata
        if key not in metadata:
            return None
        if quick.vrntMetadataType(self.type._handle.address, key.encode()) != 2:
            return None
        value = metadata.value(key)
        return value.to_python() if value.type.is_subtype(self.type) else None

    @property
    def default(self) -> Any:
        """The default of the field, as a Python object: that of the struct, which may override that of
        the field."""
        return self._parent.default().to_python()[self.label]

    @property
    def minimum(self) -> Any:
        """The annotation @min, or None."""
        return self._annotation("min")

    @property
    def maximum(self) -> Any:
        """The annotation @max, or None."""
        return self._annotation("max")

    @property
    def soft_minimum(self) -> Any:
        """The annotation @soft_min, where a slider begins, or None."""
        return self._annotation("soft_min")

    @property
    def soft_maximum(self) -> Any:
        """The annotation @soft_max, where a slider ends, or None."""
        return self._annotation("soft_max")

    @property
    def unit(self) -> str | None:
        """The unit, such as "m", or None."""
        unit = self.type.metadata.get("si_unit")
        return unit if isinstance(unit, str) else None

    @property
    def name(self) -> str:
        """The name to show: the annotation @name, or else the label."""
        name = self.type.metadata.get("name")
        return name if isinstance(name, str) else self.label

    @property
    def description(self) -> str:
        """The annotation @desc, or an empty text."""
        text = self.type.metadata.get("desc")
        return text if isinstance(text, str) else ""

    @property
    def fields(self) -> Mapping[str, Field]:
        """The fields of the field's type, if that is a struct."""
        return self.type.fields

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Field):
            return NotImplemented
        return (self.label, self.offset, self.index, self.type, self._parent) == (
            other.label, other.offset, other.index, other.type, other._parent)

    def __hash__(self) -> int:
        return hash((self.label, self.offset, self.type))

    def __repr__(self) -> str:
        return f"<Field {self.label!r} at {self.offset}: {self.type.stripped.text}>"


class Type:
    """A type. `Type(text)` parses a text; types are immutable, hashable, and may be used from any thread.

    Two types are equal if their canonical texts are, metadata included. `a <= b` and a.is_subtype(b) tell
    whether a value of `a` may be used where `b` is expected; metadata does not count there.

    Raises ParseError for a text that is no type.
    """

    __slots__ = ("__weakref__", "_cache", "_handle")
    _living: weakref.WeakValueDictionary[int, Type] = weakref.WeakValueDictionary()

    _handle: _TypeHandle
    _cache: dict[str, Any]

    def __new__(cls, text: str | Type) -> Type:
        if isinstance(text, Type):
            return text
        if not isinstance(text, str):
            raise TypeError(f"a text is expected, not {type(text).__name__}")
        if "\0" in text:
            raise nul_error("a text of a type contains no NUL character", text)
        error = ctypes.c_void_p()
        address = long.vrntTypeParse(text.encode(), ctypes.byref(error))
        if not address:
            raise parse_error(error, long.vrtkTypeParse, long.vrntTypeDestroy, text)
        return cls._own(address)

    @classmethod
    def _own(cls, address: int) -> Type:
        """Returns the object of a type. Takes over a reference."""
        handle = _TypeHandle(address)
        known = cls._living.get(address)
        if known is not None:
            return known
        self = object.__new__(cls)
        self._handle = handle
        self._cache = {}
        return cls._living.setdefault(address, self)

    @classmethod
    def _borrow(cls, address: int) -> Type:
        """Returns the object of a type that something else keeps alive during the call."""
        known = cls._living.get(address)
        return known if known is not None else cls._own(quick.vrntTypeCopy(address))

    # What a type is.

    @property
    def text(self) -> str:
        """The canonical text. Type(text) is this type again."""
        return self._kept("text", lambda: str(quick.vrntTypeString(
            self._handle.address).decode("utf-8", "replace")))

    def _kept(self, name: str, make: Callable[[], _T]) -> _T:
        """Returns what was made for the type under a name, and makes it the first time."""
        try:
            found: _T = self._cache[name]
        except KeyError:
            found = self._cache.setdefault(name, make())
        return found

    @property
    def kind(self) -> str:
        """"bool", "int", "float", "half", "char" (a scalar), "vector", "struct", "array", "reference",
        "enum" or "function"."""
        return self._kept("kind", self._find_kind)

    def _find_kind(self) -> str:
        address = self._handle.address
        descriptor = quick.vrntTypeDescriptor(address)
        if descriptor:
            return ("", "struct", "array", "reference", "enum", "function")[descriptor]
        base = quick.vrntTypeBasetype(address)
        if base == 5:  # The library calls a spectrum a base type.
            return "struct"
        return "vector" if quick.vrntTypeVectorDimension(address) > 1 else _SCALARS[base]

    @property
    def base(self) -> str:
        """The scalar type of a scalar or a vector: "bool", "int", "float", "half" or "char"."""
        if self.kind not in (*_SCALARS, "vector"):
            raise TypeMismatch(f"a scalar or a vector has a base, and not the {self.text}")
        return _SCALARS[quick.vrntTypeBasetype(self._handle.address)]

    @property
    def lanes(self) -> int:
        """The number of lanes of a vector, 2 to 4; 1 for every other type."""
        return int(quick.vrntTypeVectorDimension(self._handle.address)) if self.kind == "vector" else 1

    @property
    def size(self) -> int:
        """The bytes of a value; 0 for a type that is not concrete, such as float[]."""
        try:
            size: int = self._cache["size"]
        except KeyError:
            size = self._cache["size"] = quick.vrntTypeSize(self._handle.address)
        return size

    @property
    def alignment(self) -> int:
        """The alignment of a value in bytes."""
        return int(quick.vrntTypeAlignment(self._handle.address))

    @property
    def concrete(self) -> bool:
        """Whether there are values of the type: no part of it is an unsized array or void."""
        return self._kept("concrete", self._find_concrete)

    def _find_concrete(self) -> bool:
        kind = self.kind
        if kind == "array":
            return -1 not in self.shape and self.size != _NOT_CONCRETE
        return self.size != _NOT_CONCRETE

    @property
    def shape(self) -> tuple[int, ...]:
        """The extents of an array, the fastest-running one first; -1 for those of an unsized array."""
        return self._kept("shape", self._find_shape)

    def _find_shape(self) -> tuple[int, ...]:
        if self.kind != "array":
            raise TypeMismatch(f"an array has a shape, and not the {self.text}")
        extents = (ctypes.c_int32 * quick.vrntTypeArrayDimension(self._handle.address))()
        quick.vrntTypeArrayShape(self._handle.address, extents)
        return tuple(extents)

    @property
    def element(self) -> Type:
        """The type of an array's elements."""
        if self.kind != "array":
            raise TypeMismatch(f"an array has elements, and not the {self.text}")
        return self._kept("element", lambda: Type._own(quick.vrntTypeElementType(self._handle.address)))

    @property
    def target(self) -> Type | None:
        """The type that a reference refers to; None for void*."""
        if self.kind != "reference":
            raise TypeMismatch(f"a reference has a target, and not the {self.text}")
        address = quick.vrntTypeReferencedType(self._handle.address)
        return Type._own(address) if address else None

    @property
    def fields(self) -> Mapping[str, Field]:
        """The fields of a struct by label, in order. Empty for other types."""
        return self._kept("fields", self._find_fields)

    def _find_fields(self) -> dict[str, Field]:
        if self.kind != "struct":
            return {}
        address = self._handle.address
        view = vrntValueView_t()
        fields = {}
        for index in range(quick.vrntTypeFieldCount(address)):
            label = quick.vrntTypeFieldLabel(address, index).decode()
            quick.vrntValueStructField(ctypes.byref(view), address, index)
            type = Type._own(quick.vrntTypeFieldType(address, index))
            fields[label] = Field(label, type, view.offset, index, self)
        return Lookup("the struct has no field", fields)

    @property
    def arguments(self) -> tuple[Type, ...]:
        """The types of a function's arguments. Empty for other types."""
        if self.kind != "function":
            return ()
        address = self._handle.address
        return tuple(Type._own(quick.vrntTypeFieldType(address, index))
                     for index in range(quick.vrntTypeFieldCount(address)))

    @property
    def labels(self) -> tuple[str, ...]:
        """The names of an enum's constructors; a value is the index of one. Empty for other types."""
        return self._kept("labels", self._find_labels)

    def _find_labels(self) -> tuple[str, ...]:
        if self.kind != "enum":
            return ()
        address = self._handle.address
        return tuple(quick.vrntTypeConstructorName(address, index).decode()
                     for index in range(quick.vrntTypeConstructorCount(address)))

    @property
    def metadata(self) -> Metadata:
        """The annotations of the type itself, not of its parts."""
        return self._kept("metadata", lambda: Metadata(self))

    @property
    def stripped(self) -> Type:
        """The type without metadata, its own and that of its parts: the type of a value."""
        return self._kept("stripped", lambda: Type._own(
            quick.vrntTypeStripMetadata(self._handle.address)))

    @property
    def universal(self) -> Type:
        """The type with each compact spectrum, { float3 spectrum; }, replaced by the universal one."""
        return Type._own(quick.vrntTypeToUniversalSpectrum(self._handle.address))

    def field(self, path: str) -> Field:
        """Returns a field by its path, such as "matrix.x" or "matrix/x", with its offset in the whole.
        Raises UnknownName."""
        if not isinstance(path, str):
            raise TypeError(f"a field is named by its path, not by {path!r}")
        offset = 0
        here: Type = self
        parent: Type = self
        found: Field | None = None
        for label in path.replace("/", ".").split("."):
            found = here.fields.get(label)
            if found is None:
                no_name(f"the {here.stripped.text} has no field", label, here.fields)
            offset += found.offset
            parent, here = here, found.type
        assert found is not None
        return Field(found.label, found.type, offset, found.index, parent)

    # Relations.

    def is_subtype(self, other: Type | str) -> bool:
        """Tells whether a value of this type may be used where `other` is expected."""
        return bool(quick.vrntTypeIsSubType(self._handle, Type(other)._handle))

    def mismatch(self, other: Type | str) -> str | None:
        """Returns why a value of this type may not be used where `other` is expected, in the library's
        words; None if it may."""
        error = ctypes.c_void_p()
        address = quick.vrntTypeCheckSubType(self._handle, Type(other)._handle,
                                             ctypes.byref(error))
        if error:
            raise value_error(error)
        return take_string(address) if address else None

    def is_equal(self, other: Type | str) -> bool:
        """Tells whether each type is a subtype of the other; metadata does not count."""
        return bool(quick.vrntTypeIsEqual(self._handle, Type(other)._handle))

    def __le__(self, other: Type) -> bool:
        return self.is_subtype(other) if isinstance(other, Type) else NotImplemented

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Type):
            return NotImplemented
        return self is other or self.text == other.text

    def __hash__(self) -> int:
        return hash(self.text)

    # Values and arrays.

    def default(self) -> Value:
        """Returns the default value: that of the annotations @default, else zeros."""
        from .values import Value
        return Value(self)

    def zero(self) -> Value:
        """Returns the value with all bytes zero."""
        from .values import Value
        self._require_concrete()
        error = ctypes.c_void_p()
        address = quick.vrntValueCreate(self._handle.address, ctypes.byref(error))
        if not address:
            raise value_error(error)
        return Value._own(address)

    def _require_concrete(self) -> None:
        if not self.concrete:
            raise TypeMismatch(f"there are no values of the type {self.text}: it is not concrete")

    @property
    def _layout(self) -> Layout:
        try:
            return self._cache["layout"]  # type: ignore[no-any-return]
        except KeyError:
            from ._layout import make_layout
            return make_layout(self)

    @property
    def dtype(self) -> numpy.dtype[Any]:
        """The NumPy dtype of a value, with the offsets and the padding that it has in memory.

        A bool is an int32, 0 or -1; an enum is an int32, its code; a reference is a uint64. A vector is
        a subarray; one of three lanes in an array is a struct with the field "lanes" and the size of
        four lanes. An array is a subarray with the last dimension first, since the first runs fastest.
        """
        from ._layout import dtype_of
        return dtype_of(self)

    def __copy__(self) -> Type:
        return self

    def __deepcopy__(self, memo: object) -> Type:
        return self

    def __reduce__(self) -> tuple[object, ...]:
        return Type, (self.text,)

    def __str__(self) -> str:
        return self.text

    def __repr__(self) -> str:
        return f"Type({self.text!r})"

    def _repr_html_(self) -> str:
        from ._html import type_html
        return type_html(self)


def coerce_type(type: Type | str) -> Type:
    return type if isinstance(type, Type) else Type(type)


def float_array(count: int) -> Type:
    """Returns the type float[count]."""
    if not 0 <= count < 2**31:
        raise ValueError("an array has 0 to 2147483647 elements")
    return Type._own(quick.vrtnTypeFloatArray(count))
