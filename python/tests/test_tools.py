"""JSON, differences, digests, merging, limits and the forms of the catalogue."""
import json
import pickle
import re

import numpy as np
import pytest
from conftest import ROOT

import vornath_data as vd
from vornath_data import limits


def test_a_scene_comes_back_from_json(filled, tmp_path):
    document = filled.to_json()
    assert document["format"] == "vornath-scene" and document["objects"]["Shape"][1] is None
    assert document["objects"]["Camera"][0]["groups"] == {"General": {"near_distance": 0.25}}
    for source in (document, json.dumps(document), json.dumps(document).encode()):
        again = vd.Scene.from_json(source)
        assert again.digest(ids=True) == filled.digest(ids=True) and filled.equivalent(again)
    filled.to_json(tmp_path / "box.json")
    assert sorted(one.name for one in tmp_path.iterdir()) == ["box.assets", "box.json"]
    assert vd.Scene.from_json(tmp_path / "box.json").digest() == filled.digest()
    assert filled.to_json_text() == filled.copy().to_json_text()
    assert len(filled.to_json_text(full=True)) > len(filled.to_json_text())


def test_what_is_wrong_with_a_document_is_told_at_once(filled):
    document = filled.to_json()
    document["objects"]["Camera"][0]["groups"]["General"]["near_distanc"] = 1.0
    document["objects"]["Shape"][0]["slots"]["material"] = "first"
    with pytest.raises(vd.JsonError) as caught:
        vd.Scene.from_json(document)
    messages = caught.value.messages
    assert len(messages) == 2
    assert messages[0].pointer == "/objects/Camera/0/groups/General/near_distanc"
    assert "near_distance" in messages[0].message and messages[0].line == 1 and messages[0].column > 1
    assert messages[1].pointer == "/objects/Shape/0/slots/material"
    with pytest.raises(vd.JsonError):
        vd.Scene.from_json("{")
    with pytest.raises(vd.FileError):
        import pathlib
        vd.Scene.from_json(pathlib.Path("none.json"))


def test_addresses_read_and_write(filled):
    assert filled.get("Camera/0/groups/General/near_distance") == 0.25
    assert filled.get_bytes("MaterialProgram/0/text") == b"painted"
    assert len(filled.get_bytes("Mesh/0/bytes")) == filled.Mesh[0].nbytes
    camera = filled.Camera[0]
    assert camera.general.near_distance == 0.25
    filled.set("Camera/0/groups/General/near_distance", 0.5)
    assert camera.general.near_distance == 0.5, "what was read before is read again"
    with pytest.raises(vd.JsonError):
        filled.set("Camera/0/groups/General/near_distance", -1.0, limits=True)
    with pytest.raises(vd.UnknownName, match="near_distance"):
        filled.get("Camera/0/groups/General/near_distanc")
    shape = filled.Shape[2]
    filled.set("Shape/2", None)
    assert not shape.valid and shape.class_name == "Shape"
    assert filled.Camera[0].to_json()["groups"]["General"]["near_distance"] == 0.5


def test_differences_have_addresses_and_both_sides(filled):
    other = filled.copy()
    assert not vd.diff(filled, other) and vd.diff(filled, other).equal and not vd.diff(filled, filled)
    other.Camera[0].general.near_distance = 0.5
    other.Shape[2].remove()
    found = vd.diff(filled, other)
    assert [(one.address, one.kind, one.old, one.new) for one in found] == [
        ("Camera/0/groups/General/near_distance", "changed", 0.25, 0.5), ("Shape/2", "removed", None, None)]
    assert str(found).startswith("Camera/0/groups/General/near_distance: 0.25 -> 0.5")
    assert vd.diff(filled, other, tolerance=0.5).found == 1
    assert len(vd.diff(filled, other, limit=1)) == 1 and vd.diff(filled, other, limit=1).found == 2
    assert json.loads(found.json)["differences"] == 2
    with pytest.raises(vd.ToolkitError):
        vd.diff(filled, other, tolerance=-1.0)


def test_a_patch_leads_to_the_other_scene(filled):
    other = filled.copy()
    other.Camera[0].general.near_distance = 0.5
    patch = vd.make_patch(filled, other)
    assert len(patch) == 1 and patch[0]["path"] == "/objects/Camera/0/groups/General/near_distance"
    assert filled.patched(patch).digest() == other.digest() and filled.Camera[0].general.near_distance == 0.25
    with pytest.raises(vd.JsonError):
        filled.patched([{"op": "remove", "path": "/objects/Nothing"}])


def test_digests_are_equal_for_equal_content(filled):
    other = filled.copy()
    assert filled.digest() == other.digest() and filled.digest().startswith("sha256:") and len(filled.digest()) == 71
    other.Camera[0].general.near_distance = 0.5
    assert filled.digest() != other.digest()
    one, two = vd.Scene(), vd.Scene()
    assert one.digest() == two.digest() and one.digest(ids=True) != two.digest(ids=True)


def test_merging_tells_the_new_numbers_and_shares_the_bytes(filled):
    target = vd.Scene()
    target.Mesh.add(positions=np.zeros((3, 3)), triangles=[[0, 1, 2]])
    target.MaterialProgram.add("painted")
    general = target.Camera.add(value="{ }").general
    assert general.near_distance == 0.0
    found = target.merge(filled)
    assert found["Mesh"] == [1] and found["MaterialProgram"] == [0] and found["Shape"][1] is None
    assert found["Camera"] == [1]
    assert target.Mesh[1].bytes.ctypes.data == filled.Mesh[0].bytes.ctypes.data
    assert target.Shape[found["Shape"][2]].mesh.index == 1
    assert general.near_distance == 0.0 and target.Camera[1].general.near_distance == 0.25
    before = len(target)
    target.merge(target)
    assert len(target) > before


def test_a_merge_that_fails_leaves_the_scene(scene, filled):
    scene.Camera.add()
    before = len(filled)
    with pytest.raises(vd.ToolkitError) as caught:
        filled.merge(scene)
    assert caught.value.code == "SCENE_INCOMPLETE" and len(filled) == before


def test_dumps(filled):
    assert "Cameras" in filled.dump()


def test_typed_texts_are_read_leniently_and_errors_have_places():
    kind = vd.Type("{ float @default=0.5 gloss; enum { FIT_SIZE; MANUAL; } mode; }")
    value = vd.parse_value("{ mode = MANUAL; gloss = 1 }", kind)
    assert value.to_python() == {"gloss": 1.0, "mode": "MANUAL"}
    assert vd.parse_value("{ }", kind)["gloss"] == 0.5
    with pytest.raises(vd.ParseError) as caught:
        vd.parse_value("{ gloss = 1;\n  mod = MANUAL }", kind)
    assert "did you mean 'mode'" in str(caught.value)
    assert (caught.value.line, caught.value.column, caught.value.offset) == (2, 3, 15)


def test_strict_coercion_names_the_part_that_does_not_fit():
    value = vd.Value.parse("{ a = 1; b = 2.0; }")
    assert vd.coerce(value, "{ float b; }", lenient=False)["b"] == 2.0
    with pytest.raises(vd.TypeMismatch, match="a"):
        vd.coerce(value, "{ float a; }", lenient=False)


def test_limits_are_merged_told_and_applied():
    kind = vd.Type("{ float @default=0.5 @max=1.0 @min=0.0 gloss; int @soft_max=9 n; }")
    bounds = limits.bounds(kind)
    assert (bounds.default["gloss"], bounds.min["gloss"], bounds.max["gloss"]) == (0.5, 0.0, 1.0)
    assert bounds.soft_max["n"] == 9 and bounds.max["n"] == 2**31 - 1
    value = vd.Value(kind, {"gloss": 2.5, "n": 3})
    assert [(one.path, one.offset) for one in limits.outside(value, kind)] == [("gloss", 0)]
    clamped = limits.clamp(value, kind)
    assert clamped.to_python() == {"gloss": 1.0, "n": 3} and value["gloss"] == 2.5
    assert limits.outside(clamped, kind) == []
    for wrong in (lambda: limits.clamp(vd.Value.parse("1"), kind), lambda: limits.outside(vd.Value.parse("1"), kind),
                  lambda: limits.bounds("float[]")):
        with pytest.raises(vd.TypeMismatch):
            wrong()


def test_choices_of_an_enum():
    found = limits.choices('enum { LOW @desc="Little" @name="Low quality"; HIGH; }')
    assert [(one.code, one.label, one.name, one.description) for one in found] == [
        (0, "LOW", "Low quality", "Little"), (1, "HIGH", "HIGH", "")]
    with pytest.raises(vd.TypeMismatch):
        limits.choices("int")


def test_describes_types_and_values():
    kind = vd.Type("{ float @default=0.5 gloss; }")
    assert limits.describe(kind, as_json=True)["size"] == 4 and "gloss" in limits.describe(kind)
    found = limits.describe(vd.Value(kind, {"gloss": 1.0}), kind, as_json=True)
    assert found["leaves"][0]["path"] == "gloss" and found["leaves"][0]["value"] == 1.0


def test_the_catalogue_in_its_forms():
    saved = json.loads(vd.catalogue_text("json"))
    assert vd.compare_catalogue(saved) == []
    assert vd.catalogue_text("text", "Camera/General") in vd.catalogue_text("text", "Camera/General")
    assert vd.catalogue_text("html").startswith("<!DOCTYPE html>") or "<html" in vd.catalogue_text("html")[:200]
    assert json.loads(vd.catalogue_text("schema"))["$schema"].endswith("2020-12/schema")
    with pytest.raises(vd.UnknownName, match="Camera"):
        vd.catalogue_text("text", "Camra")
    with pytest.raises(ValueError):
        vd.catalogue_text("pdf")
    with pytest.raises(vd.JsonError):
        vd.compare_catalogue("{}")


def test_a_removed_field_breaks():
    text = vd.catalogue_text("json")
    changes = vd.compare_catalogue(text.replace('"near_distance"', '"nearer_distance"'))
    assert any(one.breaking and "nearer_distance" in repr(one) for one in changes)


def test_the_codes_of_messages_are_those_of_the_document():
    codes = vd.check_codes()
    text = (ROOT / "docs/scene_check.md").read_text()
    rows = re.findall(r"^\| `([A-Z_]+)` \|", text, re.M)
    assert rows and set(rows) == set(codes) and set(codes.values()) == {"error", "warning"}
    assert codes["FILE_TRUNCATED"] == "error" and codes["SLOT_OUT_OF_RANGE"] == "warning"


def test_a_file_is_written_whole_or_not_at_all(tmp_path):
    path = tmp_path / "a.csv"
    vd.write_file(path, "größe", sync=False)
    vd.write_file(str(path), b"1,2", sync=False)
    assert path.read_bytes() == b"1,2" and list(tmp_path.iterdir()) == [path]
    with pytest.raises(vd.SaveError) as caught:
        vd.write_file(tmp_path / "none" / "a", b"")
    assert caught.value.code == "SAVE_NO_FOLDER"
    with pytest.raises(vd.SaveError):
        vd.write_file(tmp_path, b"")


def test_an_error_of_a_document_tells_whether_there_is_more():
    document = {"format": "vornath-scene", "formatVersion": 1, "sceneVersion": 173, "a": 1, "b": 2, "c": 3}
    for limit, truncated in ((2, True), (20, False)):
        with pytest.raises(vd.JsonError) as caught:
            vd.Scene.from_json(document, max_messages=limit)
        assert caught.value.truncated is truncated and len(caught.value.messages) == min(limit, 3)
        assert pickle.loads(pickle.dumps(caught.value)).truncated is truncated


@pytest.mark.parametrize("call", [vd.diff, vd.equivalent, vd.make_patch, lambda a, b: a.merge(b),
                                  lambda a, b: a.equivalent(b)])
@pytest.mark.parametrize("other", [None, "box.vrnscene", b"", 3])
def test_comparing_with_what_is_no_scene_leaves_the_scene_free(filled, call, other):
    with pytest.raises(TypeError, match="a Scene is expected"):
        call(filled, other)
    assert len(filled.Shape) == 2 and filled.Shape.add().valid


def test_comparing_with_a_closed_scene_leaves_the_other_free(filled):
    closed = vd.Scene()
    closed.close()
    for pair in ((filled, closed), (closed, filled)):
        with pytest.raises(vd.ClosedError):
            vd.diff(*pair)
        assert len(filled.Shape) == 2


def test_paths_with_nul_are_refused(filled, tmp_path):
    """C would cut them there, and write to or read from another file."""
    filled.save(tmp_path / "a")
    (tmp_path / "a.json").write_text(filled.to_json_text())
    bad = str(tmp_path / "a\0b")
    for use in (lambda: filled.save(bad), lambda: vd.Scene.open(bad), lambda: vd.Scene.open(bad, trust=True),
                lambda: vd.check(bad), lambda: vd.write_file(bad, b"x"), lambda: filled.to_json(bad),
                lambda: filled.save(bad.encode()), lambda: vd.Scene.from_json(tmp_path / "a.json\0b"),
                lambda: vd.Scene.from_json("{}", asset_folder=bad), lambda: vd.catalogue_text("json", part="Camera\0x"),
                lambda: filled.set("Shape/0", None, asset_folder=bad), lambda: filled.patched([], asset_folder=bad)):
        with pytest.raises(ValueError, match="embedded null byte"):
            use()
    assert sorted(one.name for one in tmp_path.iterdir()) == ["a", "a.json"] and vd.check(tmp_path / "a").valid


def test_limits_are_whole_numbers_of_64_bits(filled):
    data, document = filled.to_bytes(), filled.to_json_text()
    for wrong, error in ((-1, vd.OutOfRange), (2**64, vd.OutOfRange), (2**64 + 1, vd.OutOfRange),
                         (1.5, vd.TypeMismatch),
                         (None, vd.TypeMismatch), ("1", vd.TypeMismatch)):
        for use in (lambda: vd.check(data, max_memory=wrong), lambda: vd.check(data, max_messages=wrong),
                    lambda: vd.Scene.open(data, max_memory=wrong), lambda: vd.Scene.open(data, max_messages=wrong),
                    lambda: vd.Scene.from_json(document, max_memory=wrong),
                    lambda: vd.Scene.from_json(document, max_messages=wrong),
                    lambda: filled.validate(max_messages=wrong), lambda: vd.diff(filled, filled, limit=wrong)):
            with pytest.raises(error):
                use()
    assert vd.check(data, max_memory=2**64 - 1).valid


def test_a_number_is_no_bytes(tmp_path):
    for use in (lambda: vd.write_file(tmp_path / "x", 10), lambda: vd.Scene.from_bytes(5),
                lambda: vd.Value.from_bytes(5),
                lambda: vd.write_file(1, b"x"), lambda: vd.check(0)):
        with pytest.raises(TypeError):
            use()
    assert not list(tmp_path.iterdir())


def test_a_place_that_cannot_be_written_raises_save_error(filled, tmp_path):
    (tmp_path / "folder").mkdir()
    for place in (tmp_path / "folder", tmp_path / "missing" / "x", "/dev/full", "/dev/null"):
        for use in (lambda: filled.save(place), lambda: vd.write_file(place, b"x"), lambda: filled.to_json(place)):
            try:
                use()
            except vd.SaveError as problem:
                assert problem.code and str(place) in str(problem)
            else:
                raise AssertionError(place)
    assert [one.name for one in tmp_path.iterdir()] == ["folder"]
