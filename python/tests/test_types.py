"""Types."""
import copy
import gc
import pickle
import threading

import numpy
import pytest

import vornath_data as vd


def test_a_type_has_the_size_alignment_and_canonical_text_of_the_library():
    kind = vd.Type("{ float  x; int[3] n; double_ : int; }".replace("double_ : int", "bool b"))
    assert kind.text == "{ float x; int[3] n; bool b; }"
    assert (kind.size, kind.alignment, kind.kind) == (20, 4, "struct")


@pytest.mark.parametrize("text,kind", [
    ("bool", "bool"), ("int", "int"), ("float", "float"), ("half", "half"), ("char", "char"),
    ("float3", "vector"), ("{ int x; }", "struct"), ("int[2,3]", "array"), ("float[]*", "reference"),
    ("void*", "reference"), ("enum { A; }", "enum"), ("((int) => float)", "function"),
])
def test_tells_the_kind(text, kind):
    assert vd.Type(text).kind == kind


def test_a_spectrum_is_a_struct():
    assert vd.spectrum_type().kind == "struct"
    assert list(vd.spectrum_type().fields) == ["encoding", "spectrum"]


def test_fields_have_offsets_and_annotations():
    kind = vd.Type('{ bool b; float @default=0.5 @desc="How" @max=1.0 @min=0.0 @name="Gloss" '
                   '@si_unit="m" @soft_max=0.75 @soft_min=0.25 gloss; }')
    gloss = kind.fields["gloss"]
    assert (gloss.offset, gloss.index, gloss.default, gloss.minimum, gloss.maximum) == (4, 1, 0.5, 0.0, 1.0)
    assert (gloss.soft_minimum, gloss.soft_maximum) == (0.25, 0.75)
    assert (gloss.name, gloss.description, gloss.unit) == ("Gloss", "How", "m")
    assert (kind.fields["b"].name, kind.fields["b"].unit, kind.fields["b"].minimum) == ("b", None, None)


def test_an_outer_default_overrides_that_of_a_field():
    kind = vd.Type("{ { float @default=1.0 x; } @default={ x = 2.0; } frame; }")
    assert kind.fields["frame"].default == {"x": 2.0}


def test_a_default_of_another_type_is_no_default():
    assert vd.Type("{ float @default=1 x; }").fields["x"].default == 0.0
    assert vd.Type("{ float @min=1 x; }").fields["x"].minimum is None


def test_finds_a_field_by_its_path():
    field = vd.Type("{ int a; { float b; float c; } inner; }").field("inner/c")
    assert (field.label, field.offset) == ("c", 8)
    with pytest.raises(vd.UnknownName, match="has no field 'iner'; did you mean 'inner'"):
        vd.Type("{ int a; { float b; } inner; }").field("iner.b")


def test_a_text_that_is_no_type_raises_the_librarys_words():
    with pytest.raises(vd.ParseError) as caught:
        vd.Type("float[")
    assert str(caught.value) == 'Unable to parse type: float[.\nsyntax error, unexpected END, expecting ] or "," or INT'


def test_a_text_with_a_nul_character_is_refused():
    with pytest.raises(vd.ParseError):
        vd.Type("int\0[2]")


def test_equal_types_are_one_object():
    assert vd.Type("{ int  x; }") is vd.Type("{ int x; }")
    assert hash(vd.Type("int")) == hash(vd.Type("int"))
    assert vd.Type("int") != vd.Type("float")
    assert vd.Type("int") != "int"


def test_types_with_values_among_their_annotations_are_equal_by_their_texts():
    one, two = vd.Type("{ float @min = 0.0  x; }"), vd.Type("{ float  @min=0.0 x; }")
    assert one == two and hash(one) == hash(two)


def test_relates_types_as_the_library_does():
    assert vd.Type("float[3]") <= vd.Type("float[]")
    assert vd.Type("enum { A; }").is_subtype("int")
    assert vd.Type("int").mismatch("float") == "type int does not match type float"
    assert vd.Type("float[3]").mismatch("float[]") is None
    assert vd.Type("float @min=0.0").is_equal("float")


def test_strips_metadata():
    assert vd.Type('{ float @min=0.0 x; } @name="X"').stripped is vd.Type("{ float x; }")


def test_metadata_is_a_mapping_of_flags_texts_and_values():
    metadata = vd.Type('int @hide @name="N" @min=3').metadata
    assert dict(metadata) == {"hide": True, "min": 3, "name": "N"}
    assert "hide" in metadata and "max" not in metadata and metadata.get("max") is None
    assert metadata.value("min") == vd.Value("int", 3)
    with pytest.raises(KeyError):
        metadata.value("name")


def test_refuses_what_a_kind_does_not_have():
    for ask in (lambda t: t.element, lambda t: t.shape, lambda t: t.target, lambda t: t.base):
        with pytest.raises(vd.TypeMismatch):
            ask(vd.Type("{ int x; }"))
    assert vd.Type("void*").target is None
    assert vd.Type("int").fields == {} and vd.Type("int").labels == ()


def test_there_is_no_value_of_an_unsized_array():
    assert not vd.Type("float[]").concrete and vd.Type("float[]").shape == (-1,)
    for make in (vd.Value, vd.Value.zero):
        with pytest.raises(vd.TypeMismatch, match="not concrete"):
            make(vd.Type("float[]"))


def test_dtypes_have_the_offsets_and_the_padding_of_memory():
    kind = vd.Type("{ char c; half h; bool b; float3 v; float3[2] vs; int[2,3] m; enum { A; } e; void* r; "
                   "{ char c; float2 f; } inner; }")
    dtype = kind.dtype
    assert dtype.itemsize == kind.size
    assert {name: dtype.fields[name][1] for name in dtype.names} == {
        label: field.offset for label, field in kind.fields.items()}
    assert dtype["vs"].shape == (2,) and dtype["vs"].base.itemsize == 16
    assert dtype["m"].shape == (3, 2) and dtype["b"] == "<i4" and dtype["h"] == "<f2"
    assert dtype["inner"].fields["f"][1] == kind.fields["inner"].type.fields["f"].offset


def test_types_pickle_and_copy_as_themselves():
    kind = vd.Type("{ float @min=0.0 x; }")
    assert pickle.loads(pickle.dumps(kind)) == kind
    assert copy.copy(kind) is kind and copy.deepcopy([kind])[0] is kind


def test_types_go_when_nothing_refers_to_them():
    kind = vd.Type("{ float only_in_this_test_of_types; }")
    address = kind._handle.address
    assert address in vd.Type._living
    del kind
    gc.collect()
    assert address not in vd.Type._living


def test_many_threads_make_and_drop_the_same_types():
    problems = []

    def work(seed):
        try:
            for number in range(200):
                kind = vd.Type(f"{{ int a{number % 7}; float[{number % 5 + 1}] b; }}")
                assert kind.size == 4 + 4 * (number % 5 + 1)
                assert list(kind.fields)[1] == "b"
                assert vd.Value(kind).type is kind
        except BaseException as problem:
            problems.append(problem)

    threads = [threading.Thread(target=work, args=(seed,)) for seed in range(6)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not problems


def test_float_array_types():
    from vornath_data.types import float_array
    assert float_array(3) is vd.Type("float[3]")
    with pytest.raises(ValueError):
        float_array(-1)


def test_a_compact_spectrum_becomes_the_universal_one():
    assert vd.Type("{ { float3 spectrum; } colour; }").universal.fields["colour"].type.kind == "struct"
    assert vd.Type("{ float3 spectrum; }").universal == vd.spectrum_type()


def test_parameter_and_sampler_types_are_found_by_name():
    for name in ("colour", "float", "normal", "simple_colour", "simple_float", "simple_normal"):
        assert vd.material_parameter_name(vd.material_parameter_type(name)) == name
    for name in ("spectrum", "normal", "float", "spectrum_sphere"):
        assert vd.sampler_type(name).metadata["no_specialize"] is True
        assert vd.sampler_name(vd.sampler_type(name)) in ("spectrum", "normal", "float", "spectrum_sphere")
    assert vd.material_parameter_name("int") is None
    with pytest.raises(ValueError):
        vd.sampler_type("picture")
    assert isinstance(numpy.dtype("f4"), numpy.dtype)


@pytest.mark.parametrize("text,place", [
    ("flot", (1, 1, 0)), ("{ float a; int }", (1, 16, 15)), ("\nfloat[", (2, 7, 7)),
    ('{ char[4] @desc="größe" a; int }', (1, 32, 33)), ("int\0", (1, 4, 3)), ("\n\u00e4\0", (2, 2, 3))])
def test_an_error_of_a_text_has_its_line_its_column_and_its_offset_in_bytes(text, place):
    with pytest.raises(vd.ParseError) as caught:
        vd.Type(text)
    assert (caught.value.line, caught.value.column, caught.value.offset) == place


def test_fields_that_are_found_again_are_equal():
    kind = vd.Type("{ { float @default=0.5 x; int y; } a; int x; }")
    assert kind.field("a.x") == kind.field("a/x") and hash(kind.field("a.x")) == hash(kind.field("a/x"))
    assert kind.field("a.x") != kind.field("a.y") and kind.field("a.x") != kind.fields["x"]
    assert kind.field("x") == kind.fields["x"] and kind.fields["x"] != "x"
