"""How the bytes of a value become Python objects and NumPy dtypes, and back. A Layout belongs to a type
and is made once for it."""
from __future__ import annotations

import ctypes
import math
import struct
from collections.abc import Callable, Mapping
from functools import partial
from typing import TYPE_CHECKING, Any, NoReturn

import numpy
from numpy.ma import MaskedArray

from ._status import no_name, value_error
from .errors import OutOfRange, TypeMismatch

if TYPE_CHECKING:
    from .types import Type

Array = numpy.ndarray[Any, Any]

_CODES = {"char": "B", "half": "e", "bool": "i", "int": "i", "float": "f", "enum": "i"}
_DTYPES = {"char": "u1", "half": "<f2", "bool": "<i4", "int": "<i4", "float": "<f4", "enum": "<i4"}
_RANGES = {"char": (0, 255), "int": (-(2**31), 2**31 - 1), "enum": (-(2**31), 2**31 - 1)}
SCALARS = frozenset(_CODES)


def is_text(type: Type) -> bool:
    """Tells whether a type is an array of chars that contains a text."""
    return (type.kind == "array" and "string" in type.metadata and len(type.shape) == 1
            and type.element.kind == "char")


def counted(type: Type) -> int:
    """Returns the number of an array's elements. Raises TypeMismatch where the extents have a product that the
    library does not count to: its values have fewer bytes than their indices reach."""
    count = math.prod(type.shape)
    if count * type.element.size != type.size:
        raise TypeMismatch(f"the {type.stripped.text} has {count} elements, more than its {type.size} bytes contain")
    return count


class Layout:
    """The layout of a type."""

    __slots__ = ("_dtype", "_make", "has_references", "kind", "labels", "parts", "size", "struct")

    def __init__(self, type: Type) -> None:
        self.kind = type.kind
        self.size = type.size
        self.labels = type.labels
        writer = _Writer()
        expression = writer.part(type, 0)
        writer.pad(self.size)
        try:
            self.struct = struct.Struct("<" + "".join(writer.format))
        except struct.error:
            self.struct = struct.Struct("")
        if self.struct.size != self.size:
            raise TypeMismatch(f"the parts of the {type.stripped.text} do not lie in its {self.size} bytes")
        self.has_references = writer.has_references
        code = f"lambda t, source, offset: {expression}"
        self._make: Callable[..., Any] = eval(compile(code, f"<{type.text[:60]}>", "eval"),
                                              writer.names)
        self._dtype: numpy.dtype[Any] | None = None
        self.parts = type.fields

    def decode(self, buffer: Any, offset: int, source: Any) -> Any:
        """Returns the Python object at an offset of a buffer. `source` is called with the offset and the
        type of each reference."""
        return self._make(self.struct.unpack_from(buffer, offset), source, offset)

    def decode_at(self, data: bytes, source: Any, offset: int) -> Any:
        """Returns the Python object of bytes that lie at an offset of the whole."""
        return self._make(self.struct.unpack(data), source, offset)

    def make(self, numbers: tuple[Any, ...], source: Any, offset: int) -> Any:
        return self._make(numbers, source, offset)


_DEPTH = 40  # Python's compiler takes 200 nested brackets; structs that are deeper have a layout of their own.


def make_layout(type: Type) -> Layout:
    """Returns the layout of a type. Makes those of its parts first, from the innermost on, without recursion."""
    stack, found = [(type, 0)], [type]
    while stack:
        here, depth = stack.pop()
        if here.kind == "array":
            inner = [(here.element, 0)]
        else:
            inner = [(field.type, (depth + 1) % _DEPTH) for field in here.fields.values()]
        for part, at in inner:
            if part.kind in ("struct", "array"):
                stack.append((part, at))
                if not at:
                    found.append(part)
    for one in reversed(found):
        layout: Layout = one._kept("layout", partial(Layout, one))
    return layout


class _Writer:
    """Writes the format of the struct module for a type, and the expression that makes a Python object
    of the tuple `t` of its numbers."""

    def __init__(self) -> None:
        self.format: list[str] = []
        self.names: dict[str, Any] = {}
        self.count = 0
        self.position = 0
        self.has_references = False

    def pad(self, offset: int) -> None:
        if offset > self.position:
            self.format.append(f"{offset - self.position}x")
            self.position = offset

    def take(self, number: int, code: str, size: int) -> tuple[int, int]:
        self.format.append(f"{number}{code}" if number != 1 else code)
        first = self.count
        self.count += number
        self.position += number * size
        return first, self.count

    def name(self, thing: Any) -> str:
        label = f"c{len(self.names)}"
        self.names[label] = thing
        return label

    def part(self, type: Type, offset: int, depth: int = 0) -> str:
        self.pad(offset)
        kind = type.kind
        if kind == "struct" and depth == _DEPTH:
            layout = type._layout
            first, _ = self.take(1, "s", type.size)
            self.format[-1] = f"{type.size}s"
            self.has_references = self.has_references or layout.has_references
            return f"{self.name(layout.decode_at)}(t[{first}], source, offset + {offset})"
        if kind in SCALARS:
            first, _ = self.take(1, _CODES[kind], type.size)
            if kind == "bool":
                return f"t[{first}] != 0"
            if kind == "enum":
                return f"{self.name(_labeller(type.labels))}(t[{first}])"
            return f"t[{first}]"
        if kind == "vector":
            base, lanes = type.base, type.lanes
            first, end = self.take(lanes, _CODES[base], struct.calcsize(_CODES[base]))
            self.pad(offset + type.size)
            if base == "bool":
                return f"tuple([x != 0 for x in t[{first}:{end}]])"
            return f"t[{first}:{end}]"
        if kind == "struct":
            parts = [f"{field.label!r}: {self.part(field.type, offset + field.offset, depth + 1)}"
                     for field in type.fields.values()]
            self.pad(offset + type.size)
            return "{" + ", ".join(parts) + "}"
        if kind == "array":
            return self.array(type, offset)
        if kind == "reference":
            self.has_references = True
            self.take(1, "Q", 8)
            return f"source(offset + {offset}, {self.name(type)})"
        first, end = self.take(2, "Q", 8)  # a function
        self.has_references = True
        return f"t[{first}:{end}]"

    def array(self, type: Type, offset: int) -> str:
        if not type.concrete:
            return "[]"
        if type.size == 0:
            return f"{self.name(_empty_lister(type))}()"
        shape, element = type.shape, type.element
        counted(type)
        first, _ = self.take(1, "s", type.size)
        self.format[-1] = f"{type.size}s"
        if element.kind == "char" and len(shape) == 1:
            return f"{self.name(_text)}(t[{first}])" if is_text(type) else f"t[{first}]"
        layout = element._layout
        self.has_references = self.has_references or layout.has_references

        return f"{self.name(_lister(layout, shape))}(t[{first}], source, offset + {offset})"


def _labeller(labels: tuple[str, ...]) -> Callable[[int], str | int]:
    """Returns the label of a code, or the code where it has none."""
    named = dict(enumerate(labels))
    return lambda code: named.get(code, code)


def _text(data: bytes) -> str:
    return data.partition(b"\0")[0].decode("utf-8", "surrogateescape")  # It is written back as it was.


_LISTS = 1 << 20  # of lists that are empty; those of a type with more would fill the memory


def _empty_lister(type: Type) -> Callable[[], list[Any]]:
    """Returns what makes the lists of an array without elements: as many as its last extents say."""
    whole: tuple[int, ...] = ()
    text = type.stripped.text
    while type.kind == "array":
        whole += type.shape[::-1]
        type = type.element

    def make(extents: tuple[int, ...]) -> list[Any]:
        return [make(extents[1:]) for _ in range(extents[0])] if extents[0] and len(extents) > 1 else []

    def read() -> list[Any]:
        if math.prod(whole[:whole.index(0)]) > _LISTS:
            raise OutOfRange(f"the {text} has no elements, and is too many empty lists")
        return make(whole)
    return read


def _lister(layout: Layout, shape: tuple[int, ...]) -> Callable[..., list[Any]]:
    def read(data: bytes, source: Any, offset: int) -> list[Any]:
        size = layout.size
        items = [layout.make(numbers, source, offset + index * size)
                 for index, numbers in enumerate(layout.struct.iter_unpack(data))]
        for extent in shape[:-1]:
            items = [items[at:at + extent] for at in range(0, len(items), extent)]
        return items
    return read


# NumPy.

def dtype_of(type: Type) -> numpy.dtype[Any]:
    """Returns the dtype of a type, as Type.dtype describes it."""
    layout = type._layout
    if layout._dtype is None:
        layout._dtype = _make_dtype(type, in_array=False)
    return layout._dtype




def _make_dtype(type: Type, in_array: bool) -> numpy.dtype[Any]:
    kind = type.kind
    if kind in SCALARS:
        return numpy.dtype(_DTYPES[kind])
    if kind == "vector":
        lanes = numpy.dtype((_DTYPES[type.base], (type.lanes,)))
        if not in_array or lanes.itemsize == type.size:
            return lanes
        return numpy.dtype({"names": ["lanes"], "formats": [lanes], "offsets": [0],
                            "itemsize": type.size})
    if kind == "struct":
        fields = type.fields.values()
        return numpy.dtype({"names": [field.label for field in fields],
                            "formats": [_make_dtype(field.type, False) for field in fields],
                            "offsets": [field.offset for field in fields], "itemsize": type.size})
    if kind == "array":
        if not type.concrete:
            raise TypeMismatch(f"an unsized array has no dtype: {type.text}")
        counted(type)
        return numpy.dtype((_make_dtype(type.element, True), tuple(reversed(type.shape))))
    if kind == "reference":
        return numpy.dtype("<u8")
    return numpy.dtype(("<u8", (2,)))


def array_of(type: Type, owner: Any, address: int, offset: int = 0) -> numpy.ndarray[Any, Any]:
    """Returns a read-only array over the bytes of a part of a block. `owner` keeps the block alive."""
    if not type.concrete:
        raise TypeMismatch(f"an unsized array has no bytes: {type.text}")
    shape, strides, base = _array_form(type)
    raw = numpy.asarray(_Memory(address + offset, max(type.size, 1), owner, False))
    return numpy.ndarray(shape, base, raw, 0, strides)


def _array_form(type: Type) -> tuple[tuple[int, ...], tuple[int, ...] | None, numpy.dtype[Any]]:
    """Returns shape, strides and dtype of an array over a value of a type."""
    if type.kind == "vector":
        return (type.lanes,), None, numpy.dtype(_DTYPES[type.base])
    if type.kind == "array":
        element = type.element
        counted(type)
        shape, strides, base = _array_form(element)
        outer = tuple(reversed(type.shape))
        steps = []
        step = element.size
        for extent in reversed(outer):
            steps.append(step)
            step *= extent
        if strides is None:
            strides, inner = (), base.itemsize
            for extent in reversed(shape):
                strides = (inner, *strides)
                inner *= extent
        return outer + shape, tuple(reversed(steps)) + strides, base
    if type.kind in SCALARS:
        return (), None, numpy.dtype(_DTYPES[type.kind])
    return (), None, _make_dtype(type, False)


class _Memory:
    """Bytes that an owner keeps alive, for NumPy. The array keeps this object."""

    __slots__ = ("__array_interface__", "owner")

    def __init__(self, address: int, size: int, owner: Any, writeable: bool) -> None:
        self.owner = owner
        self.__array_interface__ = {"version": 3, "typestr": "|u1", "shape": (size,),
                                    "data": (address, not writeable)}


# From Python objects to bytes.

def type_text_of(thing: Any) -> str | None:
    """Returns the text of the type that a Python object has on its own, if it has one."""
    from .values import Part, Value
    if isinstance(thing, (Value, Part)):
        return thing.type.text
    if isinstance(thing, (bool, numpy.bool_)):
        return "bool"
    if _is_address(thing):
        return None
    if isinstance(thing, (int, numpy.integer)):
        return "int"
    if isinstance(thing, numpy.float16):
        return "half"
    if isinstance(thing, (float, numpy.floating)):
        return "float"
    if isinstance(thing, (str, bytes)):
        return f"char[{len(thing)}]"
    if thing is None:
        return "void*"
    if isinstance(thing, numpy.ndarray):
        element = {"f": "float", "i": "int", "u": "int", "b": "bool"}.get(thing.dtype.kind)
        if element and 1 <= thing.ndim <= 4:
            return f"{element}[{','.join(str(extent) for extent in reversed(thing.shape))}]"
        return None
    if isinstance(thing, (list, tuple)) and thing:
        first = type_text_of(thing[0])
        return f"{first}[{len(thing)}]" if first else None
    return None


def refuse(type: Type, thing: Any, path: str) -> NoReturn:
    """Raises TypeMismatch with the library's reason, if the object has a type, or with Python's words."""
    from .types import Type as MakeType
    where = f"{path}: " if path else ""
    text = type_text_of(thing)
    reason = MakeType(text).mismatch(type) if text else None
    if reason is None:
        name = thing.__class__.__name__
        reason = f"a {name} was given, and the type {type.stripped.text} is expected"
    raise TypeMismatch(where + reason)


def plain_array(thing: Any, path: str) -> Array:
    """Returns an object as an array. Raises TypeMismatch for a masked one, whose mask nothing would keep."""
    if isinstance(thing, MaskedArray) or (isinstance(thing, (list, tuple))
                                          and any(isinstance(one, MaskedArray) for one in thing)):
        raise TypeMismatch(f"{path + ': ' if path else ''}a masked array has elements without a value; fill it first")
    try:
        return numpy.asarray(thing)
    except ValueError as problem:
        raise TypeMismatch(f"{path + ': ' if path else ''}{problem}") from None


def check_number(type: Type, kind: str, thing: Any, path: str) -> Any:
    """Returns a number or a label as the struct module packs it."""
    if isinstance(thing, numpy.ndarray):
        if plain_array(thing, path).ndim:
            refuse(type, thing, path)
        thing = thing != 0 if kind == "bool" and _are_flags(thing) else thing[()]
    if kind == "bool":
        if isinstance(thing, (bool, numpy.bool_)):
            return -1 if thing else 0
        refuse(type, thing, path)
    if kind == "enum":
        return _enum_code(type, thing, path)
    if isinstance(thing, (bool, numpy.bool_, str, bytes)) or _is_address(thing):
        refuse(type, thing, path)
    if kind in ("float", "half"):
        return _real(type, kind, thing, path)
    if isinstance(thing, float) or not hasattr(thing, "__index__"):
        refuse(type, thing, path)
    number = thing.__index__()
    low, high = _RANGES[kind]
    if not low <= number <= high:
        raise OutOfRange(f"{path + ': ' if path else ''}{number} is outside the range of {kind}, "
                         f"{low} to {high}")
    return number


def _real(type: Type, kind: str, thing: Any, path: str) -> float:
    if not isinstance(thing, float):
        if not (hasattr(thing, "__index__") or hasattr(thing, "__float__")):
            refuse(type, thing, path)
        try:
            thing = float(thing)
        except OverflowError:
            raise OutOfRange(f"{path + ': ' if path else ''}the number is outside the range of {kind}") from None
        except (TypeError, ValueError):
            refuse(type, thing, path)
    try:
        struct.pack("<" + _CODES[kind], thing)
    except OverflowError:
        raise OutOfRange(f"{path + ': ' if path else ''}{thing} is outside the range of {kind}") from None
    return float(thing)


def _enum_code(type: Type, thing: Any, path: str) -> int:
    from .values import Part, Value
    labels = type.labels
    if isinstance(thing, (Value, Part)):
        if not thing.type.is_subtype(type):
            refuse(type, thing, path)
        thing = thing.to_python()
    if isinstance(thing, str):
        if thing in labels:
            return labels.index(thing)
        no_name(f"{path + ': ' if path else ''}the enum has no label", thing, labels)
    if isinstance(thing, (bool, numpy.bool_, float)) or not hasattr(thing, "__index__") or _is_address(thing):
        refuse(type, thing, path)
    code = int(thing.__index__())
    if not 0 <= code < len(labels):
        raise OutOfRange(f"{path + ': ' if path else ''}{code} is no code of the enum, "
                         f"0 to {len(labels) - 1}")
    return code


class Encoder:
    """Writes Python objects as the bytes of a type. `keep` holds what the reference words refer to until
    the bytes are in a value."""

    __slots__ = ("buffer", "keep")

    def __init__(self, buffer: bytearray) -> None:
        self.buffer = buffer
        self.keep: list[Any] = []

    def put(self, type: Type, offset: int, thing: Any, path: str = "") -> None:
        kind = type.kind
        if isinstance(thing, MaskedArray):
            plain_array(thing, path)
        if kind in SCALARS:
            struct.pack_into("<" + _CODES[kind], self.buffer, offset,
                             check_number(type, kind, _scalar_of(thing), path))
        elif kind == "reference":
            self.put_reference(type, offset, thing, path)
        elif self.put_value(type, offset, thing, path):
            pass
        elif kind == "vector":
            self.put_vector(type, offset, thing, path)
        elif kind == "struct":
            self.put_struct(type, offset, thing, path)
        elif kind == "array":
            self.put_array(type, offset, thing, path)
        else:
            refuse(type, thing, path)

    def put_value(self, type: Type, offset: int, thing: Any, path: str) -> bool:
        """Writes a Value or a Part, and returns whether the object is one."""
        from .values import Part, Value
        if isinstance(thing, Part):
            thing = thing.copy()
        if not isinstance(thing, Value):
            return False
        if not thing.type.is_subtype(type):
            refuse(type, thing, path)
        if thing.type is not type.stripped:
            thing = thing.coerce(type)
        block = thing._block.share()  # so that nothing is written to it meanwhile
        self.keep.append(block)
        self.buffer[offset:offset + type.size] = ctypes.string_at(block.address + 48, type.size)
        return True

    def put_vector(self, type: Type, offset: int, thing: Any, path: str) -> None:
        base, lanes = type.base, type.lanes
        if isinstance(thing, numpy.ndarray) and thing.dtype.names == ("lanes",) and not thing.ndim:
            thing = thing["lanes"]
        if base == "bool" and isinstance(thing, numpy.ndarray) and _are_flags(thing):
            thing = thing != 0
        if isinstance(thing, (str, bytes)) or _length(thing) != lanes:
            refuse(type, thing, path)
        from .types import Type as MakeType
        scalar = MakeType(base)
        numbers = [check_number(scalar, base, item, f"{path}/{lane}" if path else str(lane))
                   for lane, item in enumerate(thing)]
        struct.pack_into(f"<{lanes}{_CODES[base]}", self.buffer, offset, *numbers)

    def put_struct(self, type: Type, offset: int, thing: Any, path: str) -> None:
        """Writes the fields of a mapping. What the mapping does not name stays as it is in the buffer."""
        fields = type.fields
        if isinstance(thing, numpy.ndarray) and not thing.ndim:
            thing = thing[()]
        if isinstance(thing, numpy.void) and thing.dtype.names is not None:
            thing = {name: _from_numpy(fields[name].type, thing[name], f"{path}/{name}" if path else name)
                     if name in fields else thing[name] for name in thing.dtype.names}
        elif isinstance(thing, tuple) and not thing and not fields:
            thing = {}  # what an item of an array of empty structs is
        elif isinstance(thing, numpy.ndarray) and thing.ndim and _rows(type) == thing.shape:
            thing = dict(zip(fields, thing))
        if not isinstance(thing, Mapping):
            refuse(type, thing, path)
        for label, part in thing.items():
            field = fields.get(label)
            if field is None:
                no_name(f"{path + ': ' if path else ''}the struct has no field", label, fields)
            self.put(field.type, offset + field.offset, part, f"{path}/{label}" if path else str(label))

    def put_array(self, type: Type, offset: int, thing: Any, path: str) -> None:
        if not type.concrete:
            refuse(type, thing, path)
        shape, element = type.shape, type.element
        if isinstance(thing, (str, bytes, bytearray)) and element.kind == "char" and len(shape) == 1:
            data = thing.encode("utf-8", "surrogateescape") if isinstance(thing, str) else bytes(thing)
            if len(data) > shape[0] or (isinstance(thing, str) and b"\0" in data):
                raise OutOfRange(f"{path + ': ' if path else ''}a text of {len(data)} bytes does not fit "
                                 f"into {shape[0]} bytes" if len(data) > shape[0] else
                                 f"{path + ': ' if path else ''}a text contains no NUL character")
            self.buffer[offset:offset + shape[0]] = data.ljust(shape[0], b"\0")
            return
        if isinstance(thing, numpy.ndarray) and thing.dtype.names == ("lanes",) and element.kind == "vector":
            thing = thing["lanes"]
        if isinstance(thing, numpy.ndarray) or (element.kind in SCALARS and element.kind != "enum"
                                                and hasattr(thing, "__array_interface__")):
            if self.put_numpy(type, offset, plain_array(thing, path), path):
                return
        self.put_items(type, offset, thing, path, tuple(reversed(shape)), counted(type))

    def put_items(self, type: Type, offset: int, thing: Any, path: str, extents: tuple[int, ...],
                  count: int) -> None:
        if isinstance(thing, (str, bytes)) or _length(thing) != extents[0]:
            refuse(type, thing, path)
        element = type.element
        step = count // extents[0] if extents[0] else 0
        for index, item in enumerate(thing):
            at = offset + index * step * element.size
            inner = f"{path}/{index}" if path else str(index)
            if len(extents) > 1:
                self.put_items(type, at, item, inner, extents[1:], step)
            else:
                self.put(element, at, item, inner)

    def put_numpy(self, type: Type, offset: int, array: numpy.ndarray[Any, Any], path: str) -> bool:
        """Writes an array of numbers at once. Returns whether the type has such elements."""
        shape, strides, base = _array_form(type)
        if base.names is not None or type_leaf(type) in ("enum", "reference", "function"):
            return False
        if array.shape != shape:
            refuse(type, array, path)
        target: Array = numpy.ndarray(shape, base, self.buffer, offset, strides)
        store_numbers(target, array, type_leaf(type), path,
                      partial(refuse, type, array, path))
        return True

    def put_reference(self, type: Type, offset: int, thing: Any, path: str) -> None:
        from .values import ForeignAddress, Part, Value
        if thing is None:
            word = 0
        elif isinstance(thing, ForeignAddress):
            word = (int(thing) * 2 + 1) & (2**64 - 1)
        else:
            target = type.target
            if isinstance(thing, Part):
                thing = thing.copy()
            elif not isinstance(thing, Value):
                if target is None:
                    refuse(type, thing, path)
                thing = Value(_sized(target, thing), thing)
            if target is not None and not thing.type.is_subtype(target):
                refuse(target, thing, path)
            # A reference more, so that the block is shared: a value that is made to refer to itself
            # then becomes a copy.
            block = thing._block.share()
            self.keep.append(block)
            word = block.address + 48
        struct.pack_into("<Q", self.buffer, offset, word)


def _are_flags(array: Array) -> bool:
    """Tells whether an array has bools as numpy() of a value gives them."""
    return array.dtype == "<i4" and bool(((array == 0) | (array == -1)).all())


def _from_numpy(type: Type, thing: Any, path: str) -> Any:
    """Returns what a field of a structured array contains: a bool is 0 or -1 there, and a reference its word."""
    if type.kind == "bool" and isinstance(thing, numpy.int32) and thing in (0, -1):
        return thing != 0
    if type.kind == "reference" and isinstance(thing, numpy.uint64):
        if thing:
            raise TypeMismatch(f"{path}: the word of a reference does not keep what it leads to; assign a Value")
        return None
    return thing


def _is_address(thing: Any) -> bool:
    from .values import ForeignAddress
    return isinstance(thing, ForeignAddress)


def _length(thing: Any) -> int:
    """Returns the number of items of a sequence, or -1; an array without dimensions has none."""
    try:
        return len(thing)
    except TypeError:
        return -1


def _scalar_of(thing: Any) -> Any:
    """Returns what a Part contains."""
    from .values import Part, Value
    if isinstance(thing, (Part, Value)) and thing.type.kind in SCALARS and thing.type.kind != "enum":
        return thing.to_python()
    return thing


def _sized(type: Type, thing: Any) -> Type:
    """Returns the array type that an object needs, where the declared one is unsized."""
    from .types import Type as MakeType
    if type.kind != "array" or type.concrete or not hasattr(thing, "__len__"):
        return type
    if len(type.shape) == 1:
        return MakeType(f"{type.element.text}[{len(thing)}]")
    array = numpy.asarray(thing)
    extents = array.shape[:len(type.shape)]
    return MakeType(f"{type.element.text}[{','.join(str(one) for one in reversed(extents))}]")


def _rows(type: Type) -> tuple[int, int] | None:
    """Returns the shape of a struct of equal vectors, such as a matrix; None for another struct."""
    fields = list(type.fields.values())
    if not fields or any(field.type.kind != "vector" or field.type.stripped is not
                         fields[0].type.stripped for field in fields):
        return None
    return len(fields), fields[0].type.lanes


def type_leaf(type: Type) -> str:
    """Returns the kind of the numbers in a scalar, a vector or an array."""
    while type.kind == "array":
        type = type.element
    return type.base if type.kind == "vector" else type.kind


def store_numbers(target: numpy.ndarray[Any, Any], source: numpy.ndarray[Any, Any], kind: str, path: str,
                  fail: Callable[[], NoReturn]) -> None:
    """Copies numbers into an array of another type, and refuses those that do not fit."""
    where = f"{path}: " if path else ""
    allowed = {"float": "fiu", "half": "fiu", "int": "iu", "char": "iu", "enum": "iu", "bool": "b"}[kind]
    if kind == "bool" and _are_flags(source):
        source = source != 0
    if source.dtype.kind not in allowed:
        fail()
    if kind == "bool":
        target[...] = -source.astype("<i4")
        return
    if kind in _RANGES:
        low, high = _RANGES[kind]
        if source.size and not numpy.can_cast(source.dtype, target.dtype) and (
                source.min() < low or source.max() > high):
            raise OutOfRange(f"{where}a number is outside the range of {kind}, {low} to {high}")
        target[...] = source
        return
    if source.dtype.itemsize <= target.dtype.itemsize and source.dtype.kind == "f":
        target[...] = source
        return
    with numpy.errstate(over="ignore"):
        narrowed = source.astype(target.dtype)
    if numpy.isinf(narrowed).sum() != (numpy.isinf(source).sum() if source.dtype.kind == "f" else 0):
        raise OutOfRange(f"{where}a number is outside the range of {kind}")
    target[...] = narrowed


def merge_numbers(target: Array, old: Array, new: Array) -> None:
    """Copies the numbers of `new` that are others than in `old`, bit by bit."""
    if target.dtype.names is not None:
        for name in target.dtype.names:
            merge_numbers(target[name], old[name], new[name])
    else:
        bits = f"u{target.dtype.itemsize}"
        numpy.copyto(target, new, where=old.view(bits) != new.view(bits))


def write_block(block: Any, offset: int, data: bytes | bytearray) -> Any:
    """Writes bytes to a value by the write protocol. Returns the block that has the bytes afterwards: the
    same one if nobody shares it, else a copy. The block that was given stays as it was then."""
    from ._library import quick
    from .values import Block
    source = ctypes.create_string_buffer(bytes(data), max(len(data), 1))
    error = ctypes.c_void_p()
    handle = ctypes.c_void_p(block.address)
    write, size = quick.vrntValueWrite, len(data)
    reference, place = ctypes.byref(handle), ctypes.byref(error)
    count = ctypes.c_uint32.from_address(block.address + 40)
    # No other thread runs between looking at the count and the call. If nobody shares the block, it is
    # written in place; else the copy of the reference moves to a copy of the block.
    if count.value == 1:
        write(reference, offset, source, size, place)
        if error:
            raise value_error(error)
        return block
    handle.value = quick.vrntValueCopy(block.address)
    write(reference, offset, source, size, place)
    made = Block(handle.value or 0)
    if error:
        raise value_error(error)
    return made
