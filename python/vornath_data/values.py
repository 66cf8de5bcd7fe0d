"""Values: self-describing blocks of bytes, typed by a Type, shared by reference count and copied on
write.

    >>> import vornath_data as vd
    >>> v = vd.Value(vd.Type("{ float @default=0.5 gloss; int[3] size; }"))
    >>> v["gloss"] = 0.75
    >>> v["size"][1] = 7
    >>> print(v)
    { gloss = 0.75; size = [ 0, 7, 0 ]; }
    >>> v == vd.Value.parse("{ gloss = 0.75; size = [ 0, 7, 0 ]; }")
    True
"""
from __future__ import annotations

import ctypes
from collections.abc import Iterator
from contextlib import contextmanager
from typing import Any, NoReturn, SupportsIndex

from . import _declarations
from ._layout import SCALARS, Array, Encoder, array_of, counted, merge_numbers, write_block
from ._library import long, quick
from ._status import bytes_of, no_name, nul_error, parse_error, real_number, take_string, value_error
from .errors import Error, TypeMismatch
from .types import Type

_HEADER = 48  # bytes before the first byte of a value
_View = _declarations.vrntValueView_t


class Block:
    """A reference to a block of the library. Methods that work with a block hold this object, so that
    another thread that writes to the value meanwhile takes nothing away from them."""

    __slots__ = ("address",)

    def __init__(self, address: int) -> None:
        self.address = address

    def share(self) -> Block:
        """Returns one more reference, so that writing to the block copies it first."""
        return Block(quick.vrntValueCopy(self.address))

    def __del__(self, destroy: Any = quick.vrntValueDestroy) -> None:
        try:
            address = self.address
        except AttributeError:  # The handler of a signal raised in __init__().
            return
        destroy(address)


class ForeignAddress(int):
    """A reference word with an address that a host manages. Nothing reads what is there."""

    __slots__ = ()

    def __new__(cls, address: int) -> ForeignAddress:
        if not 0 <= address < 2**63:
            raise ValueError("an address has 63 bits")
        return super().__new__(cls, address)

    def __repr__(self) -> str:
        return f"ForeignAddress({int(self):#x})"


class _Item:
    """What a Value and a Part have in common: access to a place in a value."""

    __slots__ = ()

    def _place(self) -> tuple[Value, Type, int]:
        """Returns the whole value, the type of the place, and its offset in bytes."""
        raise NotImplementedError

    @property
    def type(self) -> Type:
        """The type; that of a value has no metadata."""
        return self._place()[1]

    def _find(self, key: Any) -> tuple[Value, Type, int]:
        root, type, offset = self._place()
        if isinstance(key, str) and ("/" in key or "." in key):
            for part in key.replace("/", ".").split("."):
                type, offset = _step(type, offset, int(part) if part.removeprefix("-").isdecimal() else part)
            return root, type, offset
        if isinstance(key, tuple):
            for part in key:
                type, offset = _step(type, offset, part)
            return root, type, offset
        type, offset = _step(type, offset, key)
        return root, type, offset

    def __getitem__(self, key: Any) -> Any:
        """Returns a part. A scalar is a Python number, an enum its label, a vector a tuple, a reference a
        Value, a ForeignAddress or None; a struct or an array is a Part.

        key: a label, an index, a tuple of them, or a path such as "frame/up".
        """
        if isinstance(key, slice):
            return [self[index] for index in range(*key.indices(len(self)))]
        return _read(*self._find(key))

    def __setitem__(self, key: Any, thing: Any) -> None:
        """Writes a part through the library's write protocol: a block that others share is copied first.
        A struct takes a mapping; fields that are left out become their defaults, which are zeros.
        Raises TypeMismatch with the library's reason, OutOfRange or UnknownName, and writes nothing."""
        if isinstance(key, slice):
            places = range(*key.indices(len(self)))
            things = list(thing)
            if len(things) != len(places):
                raise ValueError(f"{len(places)} elements are expected, and {len(things)} were given")
            old = self._place()[0]._block.share()
            try:
                for index, one in zip(places, things):
                    self[index] = one
            except BaseException:
                self._place()[0]._block = old
                raise
            return
        root, type, offset = self._find(key)
        root._write(type, offset, thing, _path_text(key))

    def __delitem__(self, key: Any) -> None:
        raise TypeError("the parts of a value cannot be deleted; its type says which it has")

    def __len__(self) -> int:
        """The number of fields, elements or lanes."""
        type = self.type
        if type.kind == "struct":
            return len(type.fields)
        if type.kind == "array":
            return type.shape[-1]
        if type.kind == "vector":
            return type.lanes
        raise TypeError(f"the {type.text} has no parts")

    def __bool__(self) -> bool:
        if self.type.kind in SCALARS:
            return bool(self.to_python()) if self.type.kind != "enum" else True
        return True

    def __iter__(self) -> Iterator[Any]:
        """Iterates over the labels of a struct, or over the elements of an array or a vector."""
        type = self.type
        if type.kind == "struct":
            return iter(type.fields)
        return (self[index] for index in range(len(self)))

    def __contains__(self, thing: object) -> bool:
        if self.type.kind == "struct":
            return thing in self.type.fields
        return any(thing == item for item in self)

    def keys(self) -> Iterator[str]:
        """Returns the labels of a struct."""
        if self.type.kind != "struct":
            raise TypeError(f"a struct has keys, and not the {self.type.text}")
        return iter(self.type.fields)

    def items(self) -> Iterator[tuple[str, Any]]:
        """Returns the labels of a struct with their parts."""
        return ((label, self[label]) for label in self.keys())

    def update(self, *things: Any, **fields: Any) -> None:
        """Writes the fields that are named, and leaves the others as they are."""
        root, type, offset = self._place()
        named: dict[str, Any] = {}
        for thing in things:
            named.update(thing)
        named.update(fields)
        root._write(type, offset, named, "", keep=True)

    def to_python(self) -> Any:
        """Returns everything as Python objects: a struct is a dict, an array a list, a vector a tuple, an
        array of chars bytes, an enum its label, and a reference what it leads to, in a dict
        {"to": ...}, or None."""
        root, type, offset = self._place()
        # What references lead to is read afterwards, and not within: a linked list may be long.
        pending: list[tuple[dict[str, Any], Value]] = []
        found = root._decode(type, offset, pending)
        while pending:
            place, target = pending.pop()
            place["to"] = target._decode(target.type, 0, pending)
        return found

    def numpy(self) -> Array:
        """Returns a read-only NumPy array over the bytes, without a copy: of numbers for a scalar, a
        vector or an array of them, else structured as Type.dtype says. It shows the value as it is now,
        also after the value is changed or deleted. edit() returns one to write to."""
        root, type, offset = self._place()
        block = root._block.share()
        return array_of(type, block, block.address + _HEADER, offset)

    def __array__(self, dtype: Any = None, copy: bool | None = None) -> Array:
        array = self.numpy()
        return array if dtype is None or dtype == array.dtype else array.astype(dtype)

    @contextmanager
    def edit(self) -> Iterator[Array]:
        """Gives a NumPy array to write to, and writes the elements that were changed at the end of the block,
        unless that ends with an exception. Other writes to the value meanwhile stand.

            >>> import vornath_data as vd
            >>> v = vd.Value(vd.Type("float[3]"))
            >>> with v.edit() as array:
            ...     array[1:] = 5
            >>> print(v)
            [ 0.0, 5.0, 5.0 ]

        Raises TypeMismatch for a part with references or functions, whose words only the library counts.
        """
        root, type, offset = self._place()
        if type._layout.has_references:
            raise TypeMismatch(f"the {type.text} contains references; edit its other parts by their names")
        import numpy
        before = root._bytes(offset, type.size)
        buffer = bytearray(before)
        view = array_of(type, buffer, ctypes.addressof((ctypes.c_char * max(len(buffer), 1)).from_buffer(
            buffer if buffer else bytearray(1))))
        array: Array = numpy.ndarray(view.shape, view.dtype, buffer, 0, view.strides)
        yield array
        now = root._bytes(offset, type.size)
        if now != before:
            found = bytearray(now)
            merge_numbers(*(numpy.ndarray(array.shape, array.dtype, one, 0, array.strides)
                            for one in (found, before, bytes(buffer))))
            buffer = found
        root._block = write_block(root._block, offset, buffer)

    def text(self, *, exact: bool = False, multiline: bool = False) -> str:
        """Returns the text in the language that Value.parse() reads.

        exact: print the bits of scalar floats and halfs. multiline: print each field on a line.
        Raises Error for an enum code that has no label.
        """
        root, type, offset = self._place()
        block = root._block.share()
        view = _View(type._handle.address, offset)
        error = ctypes.c_void_p()
        address = long.vrntValueString(block.address, ctypes.byref(view),
                                       (1 if exact else 0) | (4 if multiline else 0),
                                       ctypes.byref(error))
        if error:
            raise value_error(error)
        return take_string(address)

    def __str__(self) -> str:
        return self.text()

    def copy(self) -> Value:
        """Returns a value of its own with the same content."""
        root, type, offset = self._place()
        if type.stripped is root.type and not offset:
            return Value._hold(root._block.share())
        view = _View(type._handle.address, offset)
        block = root._block
        error = ctypes.c_void_p()
        address = quick.vrntValueFromView(block.address, ctypes.byref(view), ctypes.byref(error))
        if error:
            raise value_error(error)
        return Value._own(address)

    def equals(self, other: _Item, tolerance: float = 0.0) -> bool:
        """Tells whether the types are equal and the values are, floats within a tolerance. A NaN is equal
        to nothing. References are followed."""
        return self._compare(other, tolerance, False)[0]

    def difference(self, other: _Item, tolerance: float = 0.0) -> str | None:
        """Returns the first difference in the library's words, such as ".a[2].b: 1 != 2"; None for equal
        values."""
        equal, reason = self._compare(other, tolerance, True)
        return None if equal else reason

    def _compare(self, other: _Item, tolerance: float, explain: bool) -> tuple[bool, str]:
        require_value(other)
        tolerance = real_number("tolerance", tolerance)
        root_a, type_a, offset_a = self._place()
        root_b, type_b, offset_b = other._place()
        if not type_a.is_equal(type_b):
            return False, type_a.mismatch(type_b) or type_b.mismatch(type_a) or "the types differ"
        a, b = root_a._block.share(), root_b._block.share()
        reason = ctypes.c_void_p()
        equal = long.vrntValueEqual(
            a.address, ctypes.byref(_View(type_a._handle.address, offset_a)), b.address,
            ctypes.byref(_View(type_b._handle.address, offset_b)), tolerance,
            ctypes.byref(reason) if explain and _codes_valid(self) and _codes_valid(other) else None)
        return bool(equal), take_string(reason.value) or "the values differ"

    def __eq__(self, other: object) -> bool:
        if isinstance(other, _Item):
            return self._compare(other, 0.0, False)[0]
        if isinstance(other, (dict, list, tuple, int, float, bool, str, bytes)):
            return bool(self.to_python() == (list(other) if isinstance(other, tuple)
                                             and self.type.kind == "array" else other))
        return NotImplemented

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        try:
            text = self.text()
        except Error as problem:
            text = f"<{problem}>"
        if len(text) > 200:
            text = text[:180] + " ..."
        return f"{self.__class__.__name__}({text!r})"

    def __dir__(self) -> list[str]:
        return sorted(object.__dir__(self))

    def _ipython_key_completions_(self) -> list[str]:
        return list(self.type.fields)

    def _repr_html_(self) -> str:
        from ._html import value_html
        return value_html(self)

    def __float__(self) -> float:
        return float(self.to_python())

    def __int__(self) -> int:
        return int(self.to_python())


class Value(_Item):
    """A value. `Value(type)` is the default value of a type, `Value(type, content)` one with content:
    a number, a str, a sequence, a mapping, a NumPy array or another value. Value.parse() reads a text.

    Copying is cheap: copies share their block until one of them is written to. Values may be read from
    any thread. They are not hashable, since they change.
    """

    __slots__ = ("__weakref__", "_block", "_type")
    _block: Block
    _type: Type | None

    def __init__(self, type: Type | str, content: Any = ...) -> None:
        if hasattr(self, "_block"):
            raise TypeError("the value exists already; make another one, or assign to its parts")
        type = type if isinstance(type, Type) else Type(type)
        type._require_concrete()
        error = ctypes.c_void_p()
        address = quick.vrntValueCreateDefault(type._handle.address, ctypes.byref(error))
        if not address:
            raise value_error(error)
        self._block = Block(address)
        self._type = None
        if content is not ...:
            self._write(type, 0, content, "", keep=True)

    @classmethod
    def _own(cls, address: int) -> Value:
        return cls._hold(Block(address))

    @classmethod
    def _hold(cls, block: Block) -> Value:
        self = object.__new__(cls)
        self._block = block
        self._type = None
        return self

    @classmethod
    def parse(cls, text: str) -> Value:
        """Returns the value of a text, such as "{ a = 1; b = [ 1.0, 2.0 ]; }". Raises ParseError."""
        if not isinstance(text, str):
            raise TypeError(f"a text is expected, not {text.__class__.__name__}")
        if "\0" in text:
            raise nul_error("a text of a value contains no NUL character", text)
        error = ctypes.c_void_p()
        # The library takes a text that begins with vrntval for a block, if a NUL follows.
        source = ctypes.c_char_p((" " + text if text.startswith("vrntval") else text).encode())
        address = long.vrntValueParse(source, ctypes.byref(error))
        if not address:
            raise parse_error(error, long.vrtkValueParse, long.vrntValueDestroy, text)
        return cls._own(address)

    @classmethod
    def zero(cls, type: Type | str) -> Value:
        """Returns the value of a type with all bytes zero."""
        return (type if isinstance(type, Type) else Type(type)).zero()

    @property
    def type(self) -> Type:
        """The type of the value, which has no metadata."""
        if self._type is None:
            block = self._block
            self._type = Type._borrow(quick.vrntValueType(block.address))
        return self._type

    def _place(self) -> tuple[Value, Type, int]:
        return self, self.type, 0

    def _decode(self, type: Type, offset: int, pending: list[tuple[dict[str, Any], Value]]) -> Any:
        """Returns a place as Python objects, and adds the references to follow, with the dict for each."""
        block = self._block

        def follow(at: int, kind: Type) -> Any:
            target = _target(block, kind, at)
            if not isinstance(target, Value):
                return target
            place: dict[str, Any] = {"to": None}
            pending.append((place, target))
            return place

        buffer = (ctypes.c_char * self.type.size).from_address(block.address + _HEADER)
        return type._layout.decode(buffer, offset, follow)

    def _bytes(self, offset: int, size: int) -> bytes:
        """Returns bytes of the value as it is now."""
        block = self._block
        return ctypes.string_at(block.address + _HEADER + offset, size)

    def _write(self, type: Type, offset: int, thing: Any, path: str, keep: bool = False) -> None:
        """Writes an object to a place. With `keep`, parts that the object does not name stay; else they
        become what the default of the type has."""
        old = self._block
        size = type.size
        if keep or type.kind not in ("struct", "array"):
            encoder = Encoder(bytearray(ctypes.string_at(old.address + _HEADER + offset, size)))
        else:
            default = Value(type)
            encoder = Encoder(bytearray(ctypes.string_at(default._block.address + _HEADER, size)))
            encoder.keep.append(default)
        encoder.put(type, 0, thing, path)
        self._block = write_block(old, offset, encoder.buffer)

    @property
    def value(self) -> Any:
        """The value as a Python object, as to_python() returns it."""
        return self.to_python()

    @value.setter
    def value(self, thing: Any) -> None:
        self._write(self.type, 0, thing, "")

    def coerce(self, type: Type | str, *, lenient: bool = True) -> Value:
        """Returns the value in another type: fields are matched by label, elements by index, enums by
        label; what does not fit becomes the default. See coerce()."""
        return coerce(self, type, lenient=lenient)

    def specialized(self, type: Type | str) -> Value:
        """Returns a copy without the fields that the annotated type of the value marks with
        @no_specialize. Raises TypeMismatch."""
        type = type if isinstance(type, Type) else Type(type)
        type._require_concrete()
        block = self._block
        error = ctypes.c_void_p()
        address = quick.vrntBuildSpecializationParameters(
            type._handle.address, block.address, ctypes.byref(error))
        if error:
            problem = value_error(error)
            raise TypeMismatch(str(problem)) if isinstance(problem, Error) else problem
        return Value._own(address)

    def to_bytes(self) -> bytes:
        """Returns the value with all that it refers to as a stream of bytes, as vrntValueSerialize()
        writes it. from_bytes() reads it."""
        pieces: list[bytes] = []

        @_declarations.vrntWriteFn  # type: ignore[misc]
        def write(address: int, size: int, user: object) -> None:
            pieces.append(ctypes.string_at(address, size))

        block = self._block.share()
        error = ctypes.c_void_p()
        long.vrntValueSerialize(block.address, write, None, ctypes.byref(error))
        if error:
            raise value_error(error)
        return b"".join(pieces)

    @classmethod
    def from_bytes(cls, data: bytes) -> Value:
        """Returns the value of a stream that to_bytes() wrote. The stream is checked before it is read.
        Raises CheckError for one that is damaged."""
        from ._streams import read_stream
        return read_stream(bytes_of(data))

    def __copy__(self) -> Value:
        return self.copy()

    def __deepcopy__(self, memo: object) -> Value:
        return self.copy()

    def __reduce__(self) -> tuple[object, ...]:
        return Value.from_bytes, (self.to_bytes(),)


class Part(_Item):
    """A struct or an array in a value. It stays connected to the value: reading reads the value as it is,
    and writing writes to it."""

    __slots__ = ("_offset", "_root", "_type")

    def __init__(self, root: Value, type: Type, offset: int) -> None:
        self._root = root
        self._type = type
        self._offset = offset

    def _place(self) -> tuple[Value, Type, int]:
        root, type, offset = self._root, self._type, self._offset
        if not 0 <= offset <= root.type.size - type.size:  # a second wall around the block
            _outside(root.type, offset)
        return root, type, offset

    def __copy__(self) -> Value:
        return self.copy()

    def __deepcopy__(self, memo: object) -> Value:
        return self.copy()

    def __reduce__(self) -> tuple[object, ...]:
        return Value.from_bytes, (self.copy().to_bytes(),)


def _step(type: Type, offset: int, key: Any) -> tuple[Type, int]:
    """Returns the type and the offset of a part."""
    kind = type.kind
    if kind == "struct":
        if isinstance(key, str):
            field = type.fields.get(key)
            if field is None:
                no_name("the struct has no field", key, type.fields)
            if field.offset + field.type.size > type.size:
                _outside(type, key)
            return field.type, offset + field.offset
        raise TypeError(f"a field of a struct is named by its label, not by {key!r}")
    if not isinstance(key, (int, SupportsIndex)) or isinstance(key, bool):
        raise TypeError(f"the {type.text} has no part {key!r}")
    index = int(key.__index__())
    if kind == "array":
        count, inner, step = type._kept("steps", lambda: _steps(type))
        if not -count <= index < count:
            raise IndexError(f"{index} is outside the {count} elements")
        at = (index % count) * step
        if at + inner.size > type.size:
            _outside(type, index)
        return inner, offset + at
    if kind == "vector":
        lanes = type.lanes
        if not -lanes <= index < lanes:
            raise IndexError(f"{index} is outside the {lanes} lanes")
        scalar = type._kept("lane", lambda: Type(type.base))
        return scalar, offset + (index % lanes) * scalar.size
    raise TypeError(f"the {type.text} has no parts")


def _steps(type: Type) -> tuple[int, Type, int]:
    """Returns the number of an array's parts along its last dimension, their type, and the bytes of each."""
    *inner, count = type.shape
    elements = counted(type)
    part = Type(f"{type.element.text}[{','.join(map(str, inner))}]") if inner else type.element
    return count, part, elements // count * type.element.size if count > 0 else 0


def _outside(type: Type, key: object) -> NoReturn:
    raise TypeMismatch(f"the part {key!r} of the {type.stripped.text} does not lie in its {type.size} bytes")


def _read(root: Value, type: Type, offset: int) -> Any:
    kind = type.kind
    if kind in ("struct", "array"):
        return Part(root, type, offset)
    block = root._block
    if kind == "reference":
        return _target(block, type, offset)
    buffer = (ctypes.c_char * root.type.size).from_address(block.address + _HEADER)
    return type._layout.decode(buffer, offset, None)


def _target(block: Block, type: Type, offset: int) -> Value | ForeignAddress | None:
    """Returns what a reference leads to. An address of the host is never followed."""
    word = ctypes.c_uint64.from_address(block.address + _HEADER + offset).value
    if not word:
        return None
    if word & 1:
        return ForeignAddress(word >> 1)
    view = _View(type._handle.address, offset)
    return Value._own(quick.vrntValueDereference(block.address, ctypes.byref(view)))


def _path_text(key: Any) -> str:
    return "/".join(str(part) for part in key) if isinstance(key, tuple) else str(key)


def _codes_valid(item: _Item) -> bool:
    """Tells whether the library can print all enum codes: a reason with another would throw."""
    try:
        item.text()
    except Error:
        return False
    return True


def require_value(thing: object) -> None:
    if not isinstance(thing, _Item):
        raise TypeMismatch(f"a Value is expected, not {thing.__class__.__name__}")


def parse_value(text: str, type: Type | str | None = None) -> Value:
    """Returns the value of a text that a person typed.

    Without a type, as Value.parse(). With one, fields that are left out have their defaults, labels of
    enums stand bare, and an int may stand for a float. Raises ParseError with line, column and offset.
    """
    if type is None:
        return Value.parse(text)
    from ._status import toolkit_error
    type = type if isinstance(type, Type) else Type(type)
    if "\0" in text:
        raise nul_error("a text of a value contains no NUL character", text)
    result, error = ctypes.c_void_p(), ctypes.c_void_p()
    status = long.vrtkValueParseAs(type._handle.address, text.encode(), ctypes.byref(result),
                                   ctypes.byref(error))
    if status:
        raise toolkit_error(status, error)
    assert result.value is not None
    return Value._own(result.value)


def coerce(value: Value | Part, type: Type | str, *, lenient: bool = True) -> Value:
    """Returns a value in another type. Starts from the default of the type and copies what fits: fields
    by label, elements by index, enums by label. Numbers are not converted, and references are not
    followed.

    lenient: False raises TypeMismatch for a part that has another type, instead of leaving its default.
    """
    type = type if isinstance(type, Type) else Type(type)
    type._require_concrete()
    require_value(value)
    whole = value.copy() if isinstance(value, Part) else value
    block = whole._block.share()
    error = ctypes.c_void_p()
    if not lenient:
        from ._status import toolkit_error
        result = ctypes.c_void_p()
        status = long.vrtkValueCoerce(type._handle.address, block.address, 0, ctypes.byref(result),
                                      ctypes.byref(error))
        if status:
            problem = toolkit_error(status, error)
            raise (TypeMismatch(str(problem)) if getattr(problem, "code", "") == "VALUE_TYPE" else problem)
        assert result.value is not None
        return Value._own(result.value)
    address = long.vrntCoerce(type._handle.address, block.address, ctypes.byref(error))
    if error:
        raise value_error(error)
    return Value._own(address)


__all__ = ["ForeignAddress", "Part", "Value", "coerce", "parse_value"]
