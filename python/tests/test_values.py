"""Values."""
import copy
import gc
import math
import pickle
import struct
import threading

import numpy as np
import pytest

import vornath_data as vd

KIND = vd.Type("{ float @default=0.5 gloss; int[3] size; float3[2] points; float[]* samples; "
               "enum { LOW; HIGH; } level; bool on; char[8] tag; half h; float[2,3] m; "
               "{ int a; void* any; } inner; int2 pair; }")


@pytest.fixture
def value():
    return vd.Value(KIND)


def test_a_new_value_has_the_defaults():
    made = vd.Value("{ float @default=0.5 gloss; enum { A; B; } @default=B : enum { A; B; } e; }")
    assert made.to_python() == {"gloss": 0.5, "e": "B"}
    assert vd.Value.zero("{ float @default=0.5 gloss; }")["gloss"] == 0.0


def test_parses_and_prints_the_librarys_text():
    made = vd.Value.parse("{ a=1;   b = [0.50, 1e5]; }")
    assert str(made) == "{ a = 1; b = [ 0.5, 100000.0 ]; }"
    assert made.text(multiline=True) != str(made)
    assert vd.Value.parse("0.1").text(exact=True) == "0x3dcccccd."
    with pytest.raises(vd.ParseError, match="Unable to parse value: .5.\nIllegal character: ."):
        vd.Value.parse(".5")


def test_a_text_that_begins_like_a_block_is_a_text():
    for text in ("vrntval", "vrntval\0" + "x" * 64):
        with pytest.raises(vd.ParseError):
            vd.Value.parse(text)


@pytest.mark.parametrize("text,expected", [
    ("true", True), ("-3", -3), ("0.5", 0.5), ("1.5h", 1.5), ("200c", 200), ("HIGH : enum { LOW; HIGH; }", "HIGH"),
    ("int2(1, 2)", (1, 2)), ("[ 1, 2, 3 ]", [1, 2, 3]), ("[ 1, 2, 3, 4, 5, 6 | 2, 3 ]", [[1, 2], [3, 4], [5, 6]]),
    ("[ 65c, 66c ]", b"AB"), ("{ a = { b = 1; }; }", {"a": {"b": 1}}), ("&1", {"to": 1}),
    ("$0x0000000000000000", None), ("[ : float ]", []), ("[ &1, $(0x0000000000000000:int) ]", [{"to": 1}, None]),
])
def test_becomes_python_objects(text, expected):
    assert vd.Value.parse(text).to_python() == expected


def test_reads_and_writes_parts_of_every_kind(value):
    value["gloss"] = 0.75
    value["size"] = [1, 2, 3]
    value["size"][-1] = 9
    value["points"][1] = (1, 2, 3)
    value["samples"] = [1.0, 2.0]
    value["level"] = "HIGH"
    value["on"] = True
    value["tag"] = "abc"
    value["h"] = 1.5
    value["m"] = [[1, 2], [3, 4], [5, 6]]
    value["inner"]["a"] = -1
    value["pair"] = (7, 8)
    assert value.to_python() == {
        "gloss": 0.75, "size": [1, 2, 9], "points": [(0, 0, 0), (1, 2, 3)], "samples": {"to": [1.0, 2.0]},
        "level": "HIGH", "on": True, "tag": b"abc\0\0\0\0\0", "h": 1.5, "m": [[1, 2], [3, 4], [5, 6]],
        "inner": {"a": -1, "any": None}, "pair": (7, 8)}
    assert value["m"][2][0] == 5.0 and value["m", 2, 0] == 5.0 and value["m/2/0"] == 5.0
    assert value["points"][1][2] == 3.0
    assert isinstance(value["samples"], vd.Value) and value["samples"][1] == 2.0


def test_memory_has_the_bytes_of_the_library(value):
    value["gloss"], value["on"], value["level"] = 1.0, True, "HIGH"
    raw = value.numpy().tobytes()
    offsets = {label: field.offset for label, field in KIND.fields.items()}
    assert struct.unpack_from("<f", raw, offsets["gloss"])[0] == 1.0
    assert struct.unpack_from("<I", raw, offsets["on"])[0] == 0xFFFFFFFF, "a true bool has all bits set"
    assert struct.unpack_from("<I", raw, offsets["level"])[0] == 1


@pytest.mark.parametrize("path,thing,error,words", [
    ("gloss", "x", vd.TypeMismatch, "gloss: type array does not match type float"),
    ("gloss", True, vd.TypeMismatch, "gloss: type bool does not match type float"),
    ("gloss", 1e39, vd.OutOfRange, "outside the range of float"),
    ("h", 1e6, vd.OutOfRange, "outside the range of half"),
    ("size", [1, 2], vd.TypeMismatch, "Expected array of size: 3 - provided array of size: 2"),
    ("size", [1, 2.5, 3], vd.TypeMismatch, "size/1: type float does not match type int"),
    ("size", [1, 2, 2**31], vd.OutOfRange, "outside the range of int"),
    ("level", "HIHG", vd.UnknownName, "did you mean 'HIGH'"),
    ("level", 2, vd.OutOfRange, "2 is no code"),
    ("on", 1, vd.TypeMismatch, "type int does not match type bool"),
    ("tag", "123456789", vd.OutOfRange, "does not fit into 8 bytes"),
    ("pair", (1, 2, 3), vd.TypeMismatch, ""),
    ("samples", 3, vd.TypeMismatch, ""),
    ("inner", {"b": 1}, vd.UnknownName, "no field 'b'"),
    ("inner", 5, vd.TypeMismatch, ""),
    ("nope", 5, vd.UnknownName, "the struct has no field 'nope'"),
])
def test_refuses_what_does_not_fit_and_writes_nothing(value, path, thing, error, words):
    before = value.copy()
    with pytest.raises(error) as caught:
        value[path] = thing
    assert words in str(caught.value)
    assert value == before


def test_errors_are_those_that_python_people_catch(value):
    with pytest.raises(TypeError):
        value["gloss"] = "x"
    with pytest.raises(KeyError):
        value["nope"]
    with pytest.raises(ValueError):
        value["gloss"] = 1e39
    with pytest.raises(IndexError):
        value["size"][3]
    with pytest.raises(IndexError):
        value["size"][-4]


def test_an_int_stands_for_a_float_and_numpy_scalars_for_numbers(value):
    value["gloss"] = 1
    assert value["gloss"] == 1.0
    value["gloss"] = np.float64(0.25)
    value["size"][0] = np.int64(5)
    value["on"] = np.bool_(True)
    value["gloss"] = np.float32(0.5)
    assert (value["gloss"], value["size"][0], value["on"]) == (0.5, 5, True)


def test_assigning_a_struct_sets_what_is_left_out_to_zero_and_update_leaves_it(value):
    value["inner"] = {"a": 4}
    value["inner"]["any"] = vd.Value.parse("1")
    value["inner"].update(a=5)
    assert value["inner"]["any"] == 1
    value["inner"] = {"a": 6}
    assert value["inner"]["any"] is None
    value.update(gloss=1.0, pair=(1, 1))
    assert value["gloss"] == 1.0 and value["inner"]["a"] == 6


def test_slices_read_and_write_elements(value):
    value["size"][1:] = [8, 9]
    assert value["size"][:] == [0, 8, 9] and list(value["size"]) == [0, 8, 9]
    with pytest.raises(ValueError):
        value["size"][1:] = [1]
    with pytest.raises(vd.TypeMismatch):
        value["size"][0:] = [1, 2, "x"]
    assert list(value["size"]) == [0, 8, 9]


def test_iterates_and_measures(value):
    assert list(value) == list(KIND.fields) and len(value) == len(KIND.fields)
    assert "gloss" in value and "nope" not in value
    assert len(value["size"]) == 3 and 0 in value["size"]
    assert dict(value["inner"].items()) == {"a": 0, "any": None}
    with pytest.raises(TypeError):
        len(vd.Value.parse("1"))
    with pytest.raises(TypeError):
        del value["gloss"]


def test_copies_share_until_one_is_written(value):
    twin = value.copy()
    assert twin._block.address == value._block.address
    twin["gloss"] = 0.875
    assert value["gloss"] == 0.5 and twin["gloss"] == 0.875
    assert twin._block.address != value._block.address
    address = twin._block.address
    twin["gloss"] = 0.625
    assert twin._block.address == address, "a value that nobody shares is written in place"


def test_copy_deepcopy_and_pickle_give_equal_values(value):
    value.update(samples=[1.0, 2.0], level="HIGH")
    value["inner"]["any"] = vd.Value.parse("{ deep = &[ 1, 2 ]; }")
    for twin in (copy.copy(value), copy.deepcopy(value), pickle.loads(pickle.dumps(value))):
        assert twin == value
        twin["gloss"] = 0.0
        assert value["gloss"] == 0.5
    part = pickle.loads(pickle.dumps(value["inner"]))
    assert isinstance(part, vd.Value) and part == value["inner"]


def test_sharing_of_references_survives_pickling():
    shared = vd.Value.parse("[ 1, 2 ]")
    value = vd.Value("{ int[]* a; int[]* b; }", {"a": shared, "b": shared})
    twin = pickle.loads(pickle.dumps(value))
    assert twin.numpy()["a"] == twin.numpy()["b"] != 0


def test_compares_by_content():
    one, two = vd.Value.parse("{ a = 1; b = &2.0; }"), vd.Value.parse("{ a = 1; b = &2.0; }")
    assert one == two and not one != two
    assert one["b"] == 2.0 and one != vd.Value.parse("{ a = 1; }")
    assert one.difference(vd.Value.parse("{ a = 2; b = &2.0; }")) == ".a: 1 != 2"
    assert one.difference(two) is None
    assert vd.Value.parse("1.0").equals(vd.Value.parse("1.25"), tolerance=0.5)
    assert vd.Value.parse("NaN") != vd.Value.parse("NaN")
    with pytest.raises(TypeError):
        hash(one)


def test_a_value_that_is_made_to_refer_to_itself_refers_to_what_it_was():
    value = vd.Value("{ int a; void* self; }", {"a": 1})
    value["self"] = value
    assert value["self"]["a"] == 1 and value["self"]["self"] is None
    value["a"] = 2
    assert value["self"]["a"] == 1


def test_no_cycle_can_be_made():
    a, b = vd.Value("{ void* to; }"), vd.Value("{ void* to; }")
    a["to"], b["to"] = b, a
    a["to"] = b
    assert str(a).count("{") == 4 and a == a.copy()


def test_references_are_checked_against_their_type():
    value = vd.Value("{ float[]* x; }")
    with pytest.raises(vd.TypeMismatch):
        value["x"] = vd.Value.parse("[ 1, 2 ]")
    value["x"] = vd.Value.parse("[ 1.0 ]")
    value["x"] = np.arange(4, dtype="f4")
    assert value["x"].to_python() == [0, 1, 2, 3]
    value["x"] = None
    assert value["x"] is None


def test_a_foreign_address_is_kept_and_never_followed():
    value = vd.Value("{ float* x; }", {"x": vd.ForeignAddress(0x1234)})
    assert value["x"] == 0x1234 and isinstance(value["x"], vd.ForeignAddress)
    assert value.to_python() == {"x": 0x1234}
    assert vd.Value.parse("$0x0000000000001234").to_python() == 0x1234
    assert "0000000000001234" in str(value) and pickle.loads(pickle.dumps(value)) == value
    with pytest.raises(ValueError):
        vd.ForeignAddress(2**63)


def test_arrays_are_views_without_a_copy(value):
    value["size"] = [1, 2, 3]
    array = value["size"].numpy()
    assert array.ctypes.data == value._block.address + 48 + KIND.fields["size"].offset
    assert not array.flags.writeable and not array.flags.owndata
    with pytest.raises(ValueError):
        array[0] = 1
    with pytest.raises(ValueError):
        array.flags.writeable = True


def test_an_array_shows_the_value_as_it_was(value):
    array = value["size"].numpy()
    value["size"][0] = 5
    assert array.tolist() == [0, 0, 0] and value["size"].numpy().tolist() == [5, 0, 0]
    del value
    gc.collect()
    assert array.tolist() == [0, 0, 0]


def test_arrays_have_the_strides_of_memory(value):
    value["points"] = [(1, 2, 3), (4, 5, 6)]
    assert value["points"].numpy().strides == (16, 4)
    assert value["points"].numpy().tolist() == [[1, 2, 3], [4, 5, 6]]
    value["m"] = np.arange(6).reshape(3, 2)
    assert value["m"].numpy().shape == (3, 2) and value["m"].numpy()[2, 0] == 4
    assert np.asarray(value["m"]).dtype == "float32"


def test_arrays_of_structs_are_structured():
    value = vd.Value.parse("[ { a = 1; b = 0.5; }, { a = 2; b = 1.5; } ]")
    array = value.numpy()
    assert array["a"].tolist() == [1, 2] and array["b"].tolist() == [0.5, 1.5]


def test_numpy_arrays_are_written_in_the_type_of_the_value(value):
    value["m"] = np.arange(6, dtype="i8").reshape(3, 2)
    value["size"] = np.array([1, 2, 3], dtype="u1")
    assert value["m"].to_python() == [[0, 1], [2, 3], [4, 5]]
    for wrong, error in ((np.zeros((2, 3)), vd.TypeMismatch), (np.array(["a"]), vd.TypeMismatch),
                         (np.full((3, 2), 1e39), vd.OutOfRange)):
        with pytest.raises(error):
            value["m"] = wrong
    with pytest.raises(vd.OutOfRange):
        value["size"] = np.array([0, 0, 2**40])
    with pytest.raises(vd.TypeMismatch):
        value["size"] = np.array([0.0, 1.0, 2.0])
    assert value["size"].to_python() == [1, 2, 3]
    flags = vd.Value("bool[2]", np.array([True, False]))
    assert flags.numpy().tolist() == [-1, 0] and flags.to_python() == [True, False]


def test_infinities_and_nans_are_numbers():
    value = vd.Value("float[3]", np.array([np.inf, -np.inf, np.nan]))
    assert value[0] == math.inf and math.isnan(value[2])


def test_edit_writes_an_array_at_the_end_of_the_block(value):
    twin = value.copy()
    with value["m"].edit() as array:
        array[1, 1] = 9
        assert value["m"][1][1] == 0
    assert value["m"][1][1] == 9 and twin["m"][1][1] == 0
    array[0, 0] = 5
    assert value["m"][0][0] == 0, "an array that is kept does not lead into the value"
    with pytest.raises(ZeroDivisionError), value["m"].edit() as array:
        array[...] = 1
        raise ZeroDivisionError
    assert value["m"][0][0] == 0
    with pytest.raises(vd.TypeMismatch), value.edit():
        pass


def test_coerces_by_label():
    value = vd.Value.parse("{ b = 2.0; a = 1; gone = 3; }")
    result = vd.coerce(value, "{ int a; float b; float @default=0.5 c; }")
    assert result.to_python() == {"a": 1, "b": 2.0, "c": 0.5}
    assert value.coerce("{ float a; }")["a"] == 0.0, "numbers are not converted"


def test_specialization_removes_marked_fields():
    kind = vd.Type("{ int a; float @no_specialize b; }")
    assert str(vd.Value(kind, {"a": 1}).specialized(kind)) == "{ a = 1; }"
    with pytest.raises(vd.TypeMismatch):
        vd.Value.parse("1").specialized(kind)


def test_streams_are_checked_before_they_are_read():
    data = vd.Value.parse("{ a = [ 1, 2 ]; b = &{ c = 1.0; }; }").to_bytes()
    assert vd.Value.from_bytes(data).to_bytes() == data or vd.Value.from_bytes(data) == vd.Value.from_bytes(data)
    for end in range(len(data)):
        with pytest.raises(vd.CheckError):
            vd.Value.from_bytes(data[:end])
    with pytest.raises(vd.CheckError):
        vd.Value.from_bytes(data + b"\0")


def test_no_damaged_stream_does_harm():
    data = bytearray(vd.Value.parse("{ a = [ 1, 2 ]; b = &{ c = 1.0; }; }").to_bytes())
    for place in range(len(data)):
        for bits in (0x01, 0x80, 0xFF):
            damaged = bytearray(data)
            damaged[place] ^= bits
            try:
                made = vd.Value.from_bytes(bytes(damaged))
            except vd.CheckError:
                continue
            made.to_python()
            made == made.copy()


def test_a_code_without_a_label_is_a_number_and_prints_no_reason():
    value = vd.Value("{ enum { A; B; } e; }")
    with value.edit() as array:
        array["e"] = 7
    assert value["e"] == 7
    with pytest.raises(vd.Error, match="Enum code out of range: 7"):
        str(value)
    assert "out of range" in repr(value)
    assert value.difference(vd.Value("{ enum { A; B; } e; }")) == "the values differ"


def test_reading_one_value_from_many_threads(value):
    value.update(samples=np.arange(1000, dtype="f4"))
    problems = []

    def read():
        try:
            for _ in range(100):
                assert value["samples"].numpy().sum() == 499500
                assert value.copy() == value
                str(value)
        except BaseException as problem:
            problems.append(problem)

    threads = [threading.Thread(target=read) for _ in range(6)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not problems


def test_writing_and_reading_one_value_from_many_threads_reads_no_freed_memory():
    value = vd.Value("{ int a; float[100] x; }")
    problems = []

    def write():
        try:
            for number in range(300):
                value["a"] = number
                value["x"] = np.full(100, number, "f4")
        except BaseException as problem:
            problems.append(problem)

    def read():
        try:
            for _ in range(300):
                array = value["x"].numpy()
                assert (array == array[0]).all()
                str(value)
                value.to_python()
        except BaseException as problem:
            problems.append(problem)

    threads = [threading.Thread(target=work) for work in (write, read, read)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not problems


def test_shows_itself(value):
    assert repr(vd.Value.parse("{ a = 1; }")) == "Value('{ a = 1; }')"
    assert repr(vd.Value.parse("{ a = [ 1 ]; }")["a"]) == "Part('[ 1 ]')"
    assert len(repr(vd.Value("float[1000]"))) < 220


def test_numbers_convert():
    assert float(vd.Value.parse("0.5")) == 0.5 and int(vd.Value.parse("3")) == 3
    assert not vd.Value.parse("0") and vd.Value.parse("{ }")


@pytest.mark.parametrize("text,place", [
    ("{ a = 1; b }", (1, 12, 11)), ("1 2", (1, 3, 2)), ("{\n a = ;\n}", (2, 6, 7)), ("vrntval", (1, 1, 0))])
def test_an_error_of_a_text_has_its_line_its_column_and_its_offset_in_bytes(text, place):
    with pytest.raises(vd.ParseError, match="Unable to parse value") as caught:
        vd.Value.parse(text)
    assert (caught.value.line, caught.value.column, caught.value.offset) == place


# An array of 65536 times 65537 floats has 2**32 + 65536 elements, which 32 bits count as 65536.
@pytest.mark.parametrize("use", [
    lambda v: v[2], lambda v: v[2][0], lambda v: v[60000][5], lambda v: v[-1], lambda v: v.__setitem__((2, 0), 1.0),
    lambda v: v.__setitem__((60000, 5), 1.0), lambda v: v[:2], lambda v: list(v), lambda v: v.to_python(),
    lambda v: v.numpy(), lambda v: np.asarray(v), lambda v: v.edit().__enter__(), lambda v: v.type.dtype,
    lambda v: setattr(v, "value", [[1.0]]),
])
def test_an_array_with_more_elements_than_bytes_is_not_entered(use):
    made = vd.Value("float[65536,65537]")
    before = made.to_bytes()
    with pytest.raises(vd.TypeMismatch, match="has 4295032832 elements"):
        use(made)
    assert made.to_bytes() == before


def test_an_array_with_more_elements_than_bytes_is_not_entered_in_a_struct_of_a_file():
    made = vd.Value("{ int a; { float[2147483647,2147483647] b; } c; }", {"a": 3})
    with vd.Scene() as scene:
        scene.Material.add(program=scene.MaterialProgram.add("m"), value=made)
        data = scene.to_bytes()
    with vd.Scene.open(data) as scene:
        found = scene.Material[0].value
    assert found["a"] == 3
    for use in (lambda: found["c/b/0"], lambda: found["c/b"].numpy(), lambda: found.to_python(), found.numpy,
                lambda: found["c"].to_python(), lambda: found["c"].edit().__enter__()):
        with pytest.raises(vd.TypeMismatch, match="4611686014132420609 elements"):
            use()


def test_a_part_beyond_its_block_is_refused():
    """Whatever leads there, no place outside the bytes of the value is read or written."""
    from vornath_data.values import Part
    made = vd.Value("float[4]")
    for type, offset in (("float[4]", 4), ("float[5]", 0), ("float[4]", -4)):
        part = Part(made, vd.Type(type), offset)
        for use in (part.numpy, part.copy, lambda: part.update(), lambda: part.edit().__enter__(), part.to_python,
                    lambda: part[0], lambda: part.__setitem__(0, 1.0)):
            with pytest.raises(vd.TypeMismatch, match="does not lie in its 16 bytes"):
                use()


def test_edits_of_several_parts_all_count():
    made = vd.Value("{ float a; float[2] b; float[2] c; int d; }")
    kept = made.copy()
    with made["b"].edit() as b, made["c"].edit() as c:
        b[:] = 1
        c[:] = 2
        made["d"] = 3
    assert made.to_python() == {"a": 0.0, "b": [1, 1], "c": [2, 2], "d": 3}
    assert kept.to_python() == {"a": 0.0, "b": [0, 0], "c": [0, 0], "d": 0}
    first, second = made["b"].edit(), made["c"].edit()
    b, c = first.__enter__(), second.__enter__()
    b[0], c[0] = 5, 6
    first.__exit__(None, None, None)
    second.__exit__(None, None, None)
    assert made["b"].to_python() == [5, 1] and made["c"].to_python() == [6, 2]


def test_an_edit_of_the_whole_leaves_what_others_wrote():
    """An element that both wrote has what the edit gave it, and no mixture."""
    made = vd.Value("{ char[4] t; half[2] h; float3[2] p; enum { A; B; } e; bool o; { int x; float[2,2] m; } s; }")
    with made.edit() as array:
        array["h"][0] = 1.5
        array["p"]["lanes"][1] = 1, 2, 3
        array["s"]["x"] = 0x01000001
        made["h"][1] = 2.5
        made["t"] = b"abcd"
        made["p"][0] = 4, 5, 6
        made["e"] = "B"
        made["o"] = True
        made["s"]["x"] = 0x00020200
        made["s"]["m"] = [[1, 2], [3, 4]]
        array["t"][2] = ord("z")
    assert made.to_python() == {"t": b"abzd", "h": [1.5, 2.5], "p": [(4, 5, 6), (1, 2, 3)], "e": "B", "o": True,
                                "s": {"x": 0x01000001, "m": [[1, 2], [3, 4]]}}


@pytest.mark.parametrize("type,thing", [
    ("int", np.array([1, 2, 3])), ("enum { A; B; }", np.array([0, 1])), ("float", np.array([1.0, 2.0])),
    ("float", vd.Value("float[3]")), ("float", vd.Value("enum { A; B; }", "B")), ("float", vd.Value("{ float a; }")),
    ("float3", np.array(5.0)), ("float[3]", np.array(5.0)), ("float[2,2]", [np.array(5.0), np.array(5.0)]),
    ("float", 1j),
    ("int", vd.Value("float")), ("float", None), ("float3", 5), ("bool", np.array([True])),
])
def test_things_of_another_type_are_a_type_mismatch(type, thing):
    made = vd.Value("{ %s a; }" % type)
    for use in (lambda: made.__setitem__("a", thing), lambda: vd.Value(type, thing), lambda: made.update(a=thing)):
        with pytest.raises(vd.TypeMismatch):
            use()


def test_a_number_beyond_every_float_is_out_of_range(scene):
    camera = scene.Camera.add()
    made = vd.Value("{ float a; float3 b; float[2] c; half d; }")
    for use in (lambda: made.__setitem__("a", 10**400), lambda: made.__setitem__("b", (0, 0, 10**400)),
                lambda: made.__setitem__("c", [0, -10**400]), lambda: made.__setitem__("d", 10**400),
                lambda: setattr(camera.general, "near_distance", 10**400)):
        with pytest.raises(vd.OutOfRange):
            use()
    assert made == vd.Value(made.type)


def test_arguments_that_are_no_values_and_no_numbers_are_refused():
    from vornath_data import limits
    value = vd.Value("{ float a; float[3] b; }")
    for use in (lambda: vd.coerce(None, "int"), lambda: limits.clamp({}, "int"), lambda: limits.outside(None, "int"),
                lambda: limits.describe(None), lambda: limits.describe({}, "int"), lambda: value.equals(value, None),
                lambda: value.equals(value, "x"), lambda: value.difference({}), lambda: vd.blackbody_rgb("x"),
                lambda: vd.blackbody_rgb(None), lambda: vd.planck(500, None), lambda: vd.planck("x", 5000),
                lambda: vd.planck([500, "x"], 5000)):
        with pytest.raises(vd.TypeMismatch, match="expected"):
            use()
    for use in (lambda: value.type.field(None), lambda: value["b/--1"], lambda: value["b/\u00b2"],
                lambda: vd.catalogue_text("text", 5)):
        with pytest.raises(TypeError):
            use()
    for key in ("\u00b2/1", "a/--1", "--1.b"):
        with pytest.raises((vd.UnknownName, TypeError)):
            value[key]
    assert value["b/-1"] == 0.0


def test_an_array_of_empty_structs_takes_its_own_array():
    made = vd.Value("{ }[2]")
    assert vd.Value("{ }[2]", [{}, {}]) == made
    assert vd.Value("{ }[2]", made.numpy()) == made


@pytest.mark.parametrize("text", [
    "true", "[ true, false, true ]", "{ a = true; b = 3; c = B : enum { A; B; }; d = 1.5h; }",
    "[ { a = true; p = [ int3(1, 2, 3), int3(4, 5, 6) ]; }, { a = false; p = [ int3(7, 8, 9), int3(0, 0, -1) ]; } ]",
    "[ int3(1, 2, 3), int3(4, 5, 6) ]",
    "{ v = float3(1.0, 2.0, 3.0); w = bool2(true, false); m = [ 1.0, 2.0 | 2, 1 ]; }",
    "[ bool3(true, false, true) ]", "{ s = { s = { t = [ 65c, 0c ]; o = [ true, false ]; }; }; e = { }; }", "[ 1.5h ]",
    "{ r = $0x0000000000000000; i = 1; }", "[ B : enum { A; B; }, A : enum { A; B; } ]",
])
def test_a_type_takes_its_own_array(text):
    made = vd.Value.parse(text)
    assert vd.Value(made.type, made.numpy()) == made
    assert vd.Value(made.type, made.numpy().copy()) == made


def test_other_arrays_are_no_bools_and_no_references():
    made = vd.Value("{ bool[2] b; int* r; bool c; }", {"r": 5})
    for array in (np.array([0, 1], "i4"), np.array([0, -1], "i8"), np.array([0.0, 1.0])):
        with pytest.raises(vd.TypeMismatch):
            made["b"] = array
    with pytest.raises(vd.TypeMismatch, match="r: the word of a reference"):
        made.value = made.numpy()
    assert made["r"] == 5 and made["b"].to_python() == [False, False]


def test_a_long_linked_list_becomes_python_objects():
    made = vd.Value("{ int b; void* next; }", {"b": 0})
    for number in range(1, 5000):
        made = vd.Value(made.type, {"b": number, "next": made})
    found, count = made.to_python(), 0
    assert found["b"] == 4999
    while found["next"] is not None:
        found, count = found["next"]["to"], count + 1
    assert (count, found) == (4999, {"b": 0, "next": None})


@pytest.mark.parametrize("depth", [39, 40, 41, 81, 200, 300])
def test_deeply_nested_structs_become_python_objects(depth):
    text = "{ int p; { float3 v; char[3] t; int[2] s; int* r; } a; }"
    for number in range(depth):
        text = "{ char c; %s a; int b; }" % text
    made = vd.Value(text)
    place = "/".join(["a"] * (depth + 1))
    made[place] = {"v": (1, 2, 3), "t": b"xyz", "s": [7, 8], "r": 5}
    made["b"] = 9
    found = made.to_python()
    assert found["b"] == 9
    for _ in range(depth + 1):
        found = found["a"]
    assert found == {"v": (1, 2, 3), "t": b"xyz", "s": [7, 8], "r": {"to": 5}}
    with pytest.raises(vd.TypeMismatch, match="contains references"):
        made["a"].edit().__enter__()
    assert made["a"].numpy().dtype.itemsize == made["a"].type.size


@pytest.mark.parametrize("type,expected", [
    ("float[0,3]", [[], [], []]), ("float[3,0]", []), ("float[0]", []), ("float[2,0,2]", [[], []]),
    ("char[0,2]", [[], []]), ("{ int a; float[0,2] b; }", {"a": 0, "b": [[], []]}), ("float[0][2]", [[], []]),
])
def test_arrays_without_elements_have_their_lists(type, expected):
    made = vd.Value(type)
    assert made.to_python() == expected and vd.Value(type, expected) == made
    if isinstance(expected, list):
        assert len(made) == len(expected)


def test_an_array_of_countless_empty_lists_is_refused():
    with pytest.raises(vd.OutOfRange, match="too many empty lists"):
        vd.Value("float[0,2147483647]").to_python()


@pytest.mark.parametrize("type", ["int", "float", "half", "char", "bool", "enum { A; B; }", "float[1]", "int2"])
def test_an_address_is_no_number(type):
    address = vd.ForeignAddress(1)
    made = vd.Value("{ %s a; void* r; }" % type)
    for thing in (address, [address], [address, address]):
        with pytest.raises(vd.TypeMismatch):
            made["a"] = thing
    made["r"] = address
    assert made["r"] == address
