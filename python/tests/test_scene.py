"""Scenes, objects, groups, slots and the catalogue."""
import copy
import errno
import inspect
import json
import os
import pickle
import pydoc
import random

import pytest

import vornath_data as vd


def test_the_catalogue_has_what_the_library_tells():
    catalogue = vd.catalogue()
    assert len(catalogue) == 18 and "Camera" in catalogue
    near = catalogue.classes["Camera"].groups["General"].fields["near_distance"]
    assert (near.minimum, near.soft_maximum, near.offset, near.name) == (0.0, 1.0, 0, "Near Distance")
    assert near.maximum is None
    camera = catalogue["Camera"]
    assert (camera.kind, camera.has_value, camera.number) == ("instance", True, 8)
    assert [(slot.name, slot.kind, slot.target) for slot in camera.slots.values()] == [
        ("program", "required", "CameraProgram"), ("backplate", "optional", "Texture"),
        ("keyframes", "optional", "KeyframeList")]
    assert [one.kind for one in catalogue][:6] == ["program"] * 3 + ["asset"] * 3
    assert list(catalogue.scene.groups) == ["Cut planes", "Rasterizer", "Raytracer", "General"]
    with pytest.raises(vd.UnknownName, match="there is no class 'Camra'; did you mean 'Camera'"):
        catalogue.classes["Camra"]


def test_every_group_and_slot_of_every_class_is_an_attribute(scene):
    for entry in vd.catalogue():
        if entry.kind != "instance":
            continue
        thing = scene[entry.name].add()
        names = [group.attribute for group in entry.groups.values()]
        names += [slot.attribute for slot in entry.slots.values()]
        assert len(set(names)) == len(names)
        for name in names:
            assert name in dir(thing) and name.isidentifier()
            getattr(thing, name)
        for group in entry.groups.values():
            record = getattr(thing, group.attribute)
            assert thing.groups[group.name] is record
            for label in group.fields:
                assert getattr(record, label) == record[label]
                assert label in dir(record)


def test_every_field_keeps_what_is_written(scene):
    """Writes each field of each group what it has, and what its type has as other bytes."""
    for entry in vd.catalogue():
        if entry.kind != "instance":
            continue
        thing = scene[entry.name].add()
        for group in entry.groups.values():
            record = thing.groups[group.name]
            before = record.to_dict()
            for label, field in group.fields.items():
                other = another(before[label])
                setattr(record, label, other)
                assert record.to_dict()[label] == other, (entry.name, group.name, label)
                assert scene[entry.name][thing.index].groups[group.name].to_dict()[label] == other
                setattr(record, label, before[label])
            assert record.to_dict() == before
            assert field is not None


def another(thing):
    """Returns an object of the same form with other content."""
    if isinstance(thing, bool):
        return not thing
    if isinstance(thing, float):
        return 0.25 if thing != 0.25 else 0.5
    if isinstance(thing, int):
        return thing + 1
    if isinstance(thing, str):
        return thing if thing.isupper() else thing + "x"
    if isinstance(thing, dict):
        return {label: another(part) for label, part in thing.items()}
    return type(thing)(another(part) for part in thing)


def test_fields_are_written_through_at_once(scene):
    camera = scene.Camera.add()
    general, twin = camera.general, scene.Camera[0].general
    general.near_distance = 0.5
    assert twin.near_distance == 0.5
    twin.near_distance = 0.25
    assert general.near_distance == 0.25
    assert camera.groups["General"]["near_distance"] == 0.25
    camera.groups["General"]["near_distance"] = 1
    assert general.near_distance == 1.0


def test_structs_and_arrays_in_groups_are_written_through(scene):
    shape = scene.Shape.add()
    shape.transformation.matrix.w = (1, 2, 3, 1)
    assert scene.Shape[0].transformation.matrix.w == (1.0, 2.0, 3.0, 1.0)
    assert shape.transformation.matrix.x == (1.0, 0.0, 0.0, 0.0)
    shape.cut_planes.cut[2] = False
    assert list(scene.Shape[0].cut_planes.cut) == [True, True, False, True, True, True]
    shape.cut_planes.cut = [False] * 6
    assert shape.cut_planes.cut == [False] * 6
    with pytest.raises(vd.TypeMismatch):
        shape.cut_planes.cut = [False] * 5
    planes = scene.groups["Cut planes"]
    label = next(label for label, field in planes.type.fields.items() if field.type.kind == "array")
    assert len(planes[label]) == 6 and isinstance(planes[label][0].to_dict(), dict)
    inner = planes[label][1]
    name = next(name for name, part in inner.to_dict().items() if isinstance(part, bool))
    inner[name] = True
    assert planes[label][1][name] is True and planes[label][0][name] is False


def test_texts_in_groups_are_str(scene):
    shape = scene.Shape.add()
    shape.target.tag = "größe"
    assert shape.target.tag == "größe"
    shape.target.tag = "x" * 64
    assert shape.target.tag == "x" * 64
    with pytest.raises(vd.OutOfRange):
        shape.target.tag = "x" * 65
    assert shape.target.tag == "x" * 64


@pytest.mark.parametrize("write,error,words", [
    (lambda c: setattr(c.general, "near_distance", "x"), vd.TypeMismatch,
     "Camera/0/groups/General/near_distance: type array does not match type float"),
    (lambda c: setattr(c.general, "near_distance", 1e39), vd.OutOfRange, "range of float"),
    (lambda c: setattr(c.background, "active", 1), vd.TypeMismatch, "type int does not match type bool"),
    (lambda c: setattr(c.backplate, "mode", "FIT_SICE"), vd.UnknownName, "did you mean 'FIT_SIZE'"),
    (lambda c: setattr(c.backplate, "mode", 5), vd.OutOfRange, "5 is no code"),
    (lambda c: setattr(c.transformation.matrix, "x", (1, 2)), vd.TypeMismatch, ""),
    (lambda c: c.general.update(near=1), vd.UnknownName, "no field 'near'; did you mean"),
    (lambda c: setattr(c.general, "nothing", 1), AttributeError, "nothing"),
    (lambda c: setattr(c.general, "near_distanc", 0.5), vd.UnknownName,
     "Camera/0/groups/General has no field 'near_distanc'; did you mean 'near_distance'?"),
    (lambda c: setattr(c.general, "to_dict", 0.5), vd.UnknownName, "no field 'to_dict'"),
    (lambda c: c.general.__setitem__("near_distanc", 0.5), vd.UnknownName, "did you mean 'near_distance'"),
    (lambda c: setattr(c.transformation.matrix, "xx", (1, 2, 3, 4)), vd.UnknownName,
     "Camera/0/groups/Transformation/matrix has no field 'xx'; did you mean 'x'?"),
    (lambda c: setattr(c.transformation, "matrx", {}), vd.UnknownName, "did you mean 'matrix'"),
    (lambda c: c.groups.__setitem__("Genral", {}), vd.UnknownName, "did you mean 'General'"),
    (lambda c: c.slots.__setitem__("progam", None), vd.UnknownName, "did you mean 'program'"),
    (lambda c: setattr(c, "progam", None), vd.UnknownName, "did you mean 'program'"),
    (lambda c: setattr(c, "index", 3), AttributeError, "'index' of a Camera cannot be assigned to"),
    (lambda c: setattr(c.scene.groups, "raytracr", {}), vd.UnknownName, "did you mean 'Raytracer'"),
    (lambda c: setattr(c.scene.groups.raytracer, "ray_epsilo", 1.0), vd.UnknownName,
     "scene/Raytracer has no field 'ray_epsilo'; did you mean 'ray_epsilon'?"),
    (lambda c: c.general.nothing, vd.UnknownName, "has no field 'nothing'"),
    (lambda c: setattr(c, "genral", 1), vd.UnknownName, "did you mean 'general'"),
    (lambda c: c.genral, AttributeError, "did you mean 'general'"),
    (lambda c: c.groups["Genral"], vd.UnknownName, "did you mean 'General'"),
])
def test_refuses_what_does_not_fit_and_leaves_the_group(scene, write, error, words):
    camera = scene.Camera.add(program=scene.CameraProgram.add("x"))
    before = camera.groups.to_dict()
    with pytest.raises(error) as caught:
        write(camera)
    assert words in str(caught.value)
    assert camera.groups.to_dict() == before
    assert scene.Camera[0].groups.to_dict() == before


def test_a_group_is_a_mapping(scene):
    general = scene.Camera.add().general
    assert dict(general) == general.to_dict() == general
    assert list(general) == list(vd.catalogue()["Camera"].groups["General"].fields)
    assert "near_distance" in general and len(general) == 5
    general.update({"near_distance": 0.5}, shutter_open=0.25)
    assert (general.near_distance, general.shutter_open) == (0.5, 0.25)
    del general["near_distance"]
    assert general.near_distance == 0.0
    general.reset()
    assert general.shutter_open == 0.0
    assert pickle.loads(pickle.dumps(general)) == general.to_dict() == copy.deepcopy(general)
    with pytest.raises(TypeError):
        general.pop("near_distance")


def test_an_assigned_group_has_the_defaults_of_a_new_object_in_what_is_left_out(scene):
    camera = scene.Camera.add()
    fresh = camera.backplate.to_dict()
    assert fresh["image"]["spectrum_texture"]["index"] == -1
    camera.backplate.brightness = 3.0
    camera.backplate.image.spectrum_texture.index = 7
    camera.backplate = {"visible_to_refraction": True}
    assert camera.backplate.to_dict() == {**fresh, "visible_to_refraction": True}


def test_the_settings_of_the_scene_are_groups(scene):
    scene.groups["Raytracer"]["ray_epsilon"] = 0.5
    assert scene.groups.raytracer.ray_epsilon == 0.5
    scene.groups.raytracer = {"ray_epsilon": 0.25}
    assert scene.groups["Raytracer"].ray_epsilon == 0.25
    assert len(scene.groups) == 4 and "cut_planes" in dir(scene.groups)
    with pytest.raises(vd.UnknownName):
        scene.groups.raytracr


def test_numpy_of_a_group(scene):
    import numpy
    camera = scene.Camera.add()
    assert camera.general.numpy()["time_end"] == 1.0
    assert numpy.asarray(camera.transformation.matrix).tolist() == numpy.eye(4).tolist()
    camera.transformation.matrix = numpy.diag([2, 2, 2, 1])
    assert camera.transformation.matrix.y == (0.0, 2.0, 0.0, 0.0)


def test_slots_lead_to_objects(filled):
    shape = filled.Shape[0]
    assert shape.material == filled.Material[0] and shape.material.program.text == "painted"
    assert shape.light_group is None and shape.slots["lightGroup"] is None
    shape.material = None
    assert shape.material is None
    shape.material = 0
    shape.slots["material"] = filled.Material[0]
    assert shape.material.index == 0
    assert list(shape.slots) == [slot for slot in vd.catalogue()["Shape"].slots]


def test_a_slot_with_the_name_of_a_group_tells_its_target(filled):
    camera = filled.Camera[0]
    camera.backplate_texture = filled.Texture[0]
    assert camera.slots["backplate"] == filled.Texture[0]
    assert camera.backplate.mode == "DISABLED"


@pytest.mark.parametrize("write,error", [
    (lambda s: setattr(s.Shape[0], "material", s.Camera[0]), vd.TypeMismatch),
    (lambda s: setattr(s.Shape[0], "material", 9), vd.NoSuchObject),
    (lambda s: setattr(s.Shape[0], "material", -1), vd.NoSuchObject),
    (lambda s: setattr(s.Shape[0], "material", True), vd.TypeMismatch),
    (lambda s: setattr(s.Shape[0], "material", "painted"), vd.TypeMismatch),
    (lambda s: setattr(s.Shape[0], "material", vd.Scene().Material.add()), vd.TypeMismatch),
    (lambda s: s.LightGroup[0].emitters.append(3), vd.TypeMismatch),
    (lambda s: s.LightGroup[0].emitters.append(s.Camera[0]), vd.TypeMismatch),
])
def test_a_slot_takes_only_objects_of_its_class_in_its_scene(filled, write, error):
    with pytest.raises(error):
        write(filled)
    assert filled.Shape[0].material == filled.Material[0] and len(filled.LightGroup[0].emitters) == 3


def test_lists_of_references_are_sequences(filled):
    emitters = filled.LightGroup[0].emitters
    lamp, shape = filled.Light[0], filled.Shape[0]
    assert list(emitters) == [shape, lamp, None] and emitters.words() == [0, ~0, -2**31]
    emitters.append(filled.Shape[2])
    del emitters[2]
    assert emitters == [shape, lamp, filled.Shape[2]] and emitters[-1].index == 2
    emitters[0:2] = [lamp]
    emitters.extend([lamp, shape])
    emitters.insert(0, None)
    assert emitters.words() == [-2**31, ~0, 2, ~0, 0]
    assert emitters.pop() == shape and lamp in emitters and len(emitters) == 4
    emitters.clear()
    assert len(emitters) == 0 and not emitters
    filled.LightGroup[0].emitters = [shape]
    assert filled.LightGroup[0].slots["emitters"] == [shape]
    textures = filled.Material[0].textures
    textures.append(None)
    assert textures.words() == [0, -1]


def test_decals_have_sides(filled):
    decal = filled.Decal.add(front_material=0, back_material=0)
    decals = filled.DecalList.add(decals=[vd.front(decal), vd.back(decal), None])
    assert decals.decals.words() == [~0, 0, -2**31]
    assert list(decals.decals) == [vd.front(decal), vd.back(decal), None]
    with pytest.raises(vd.TypeMismatch):
        decals.decals.append(decal)


def test_values_are_shared_with_the_scene_and_written_by_assignment(filled):
    material = filled.Material[0]
    value = material.value
    value["gloss"] = 0.75
    assert material.value["gloss"] == 0.5
    material.value = value
    assert material.value["gloss"] == 0.75
    value["gloss"] = 0.0
    assert material.value["gloss"] == 0.75
    material.value = "{ gloss = 1.0; }"
    assert material.value["gloss"] == 1.0
    with pytest.raises(vd.TypeMismatch):
        material.value = 5
    assert filled.Camera.add().value is None
    assert not hasattr(filled.Shape[0], "value")


def test_iterates_over_live_objects_and_indexes_by_slot(filled):
    assert [shape.index for shape in filled.Shape] == [0, 2]
    assert len(filled.Shape) == 2 and filled.Shape.slot_count == 3 and filled.Shape.indices() == [0, 2]
    assert filled.Shape[2] in filled.Shape and 2 in filled.Shape and 1 not in filled.Shape
    for wrong in (1, 3, -1, 2**40):
        with pytest.raises(vd.NoSuchObject):
            filled.Shape[wrong]
    assert filled.Shape.get(1) is None and filled.Shape.get(2) == filled.Shape[2]
    assert [thing.class_name for thing in filled][:2] == ["CameraProgram", "MaterialProgram"]
    assert len(filled) == len(list(filled))


def test_removing_while_iterating_skips_what_is_gone(filled):
    for shape in filled.Shape:
        filled.Shape[2].remove() if shape.index == 0 else pytest.fail("a removed shape")
    assert len(filled.Shape) == 1


def test_an_object_that_was_removed_is_not_the_one_that_took_its_slot(filled):
    shape = filled.Shape[2]
    general = shape.general
    shape.remove()
    assert not shape.valid and "removed" in repr(shape)
    for use in (lambda: shape.material, lambda: general.edge_radius, lambda: shape.remove(),
                lambda: setattr(general, "edge_radius", 1.0), lambda: shape.reference_count()):
        with pytest.raises(vd.NoSuchObject, match="Shape 2 is not in the scene any more"):
            use()
    filled.Shape.add()
    again = filled.Shape.add()
    assert again.index == 2 and again != shape and not shape.valid
    with pytest.raises(vd.NoSuchObject):
        shape.material


def test_objects_compare_by_scene_and_slot(filled):
    assert filled.Shape[0] == filled.Shape[0] and len({filled.Shape[0], filled.Shape[0]}) == 1
    assert filled.Shape[0] != filled.Shape[2] and filled.Shape[0] != filled.Material[0]
    assert filled.copy().Shape[0] != filled.Shape[0]
    with pytest.raises(TypeError):
        pickle.dumps(filled.Shape[0])


def test_an_addition_that_fails_leaves_nothing(scene):
    with pytest.raises(vd.UnknownName, match="did you mean 'general'"):
        scene.Camera.add(genral={})
    with pytest.raises(vd.TypeMismatch):
        scene.Camera.add(general={"near_distance": "x"})
    assert len(scene.Camera) == 0


def test_programs_have_texts_and_ids(scene):
    one, two = scene.LightProgram.add("lämp"), scene.LightProgram.add("lämp")
    assert one.text == "lämp" and one.id == two.id and one != two
    with pytest.raises(vd.TypeMismatch):
        scene.LightProgram.add("a\0b")
    with pytest.raises(vd.UnknownName):
        scene.LightProgam


def test_counts_references(filled):
    assert filled.Material[0].reference_count() == 2
    assert filled.Texture[0].reference_count() == 1


def test_saves_and_opens(filled, tmp_path):
    path = tmp_path / "büchse.vrnscene"
    filled.save(path)
    again = vd.Scene.open(path)
    assert again.id == filled.id == vd.Scene.open(str(path)).id
    assert path.stat().st_size == len(filled.to_bytes()) == len(again.to_bytes())
    assert [shape.index for shape in again.Shape] == [0, 2]
    assert again.Camera[0].general.near_distance == 0.25
    assert again.Light[0].value == filled.Light[0].value
    assert vd.Scene.open(path, trust=True).id == filled.id
    assert os.listdir(tmp_path) == ["büchse.vrnscene"]


def test_copies_and_pickles(filled):
    for twin in (copy.copy(filled), copy.deepcopy(filled), pickle.loads(pickle.dumps(filled)), filled.copy()):
        assert twin.id == filled.id and len(twin) == len(filled)
        twin.Camera[0].general.near_distance = 0.75
        assert filled.Camera[0].general.near_distance == 0.25


def test_tells_why_a_file_cannot_be_opened(tmp_path):
    with pytest.raises(vd.FileError, match="there is no such file") as caught:
        vd.Scene.open(tmp_path / "none.vrnscene")
    assert caught.value.code == "FILE_MISSING" and isinstance(caught.value, OSError)
    with pytest.raises(vd.FileError) as caught:
        vd.Scene.open(tmp_path)
    assert caught.value.code == "FILE_IS_FOLDER"


def test_a_damaged_file_raises_the_report(filled, tmp_path):
    data = filled.to_bytes()
    (tmp_path / "cut.vrnscene").write_bytes(data[:-5])
    with pytest.raises(vd.CheckError) as caught:
        vd.Scene.open(tmp_path / "cut.vrnscene")
    report = caught.value.report
    assert caught.value.code == "FILE_DAMAGED" and not report and report.messages[0].code == "FILE_TRUNCATED"
    assert report.file == str(tmp_path / "cut.vrnscene")
    with pytest.raises(vd.CheckError) as caught:
        vd.Scene.open(b"no scene")
    assert caught.value.code == "FILE_NO_SCENE" and pickle.loads(pickle.dumps(caught.value)).code == "FILE_NO_SCENE"


def test_the_limit_of_memory_holds(filled):
    with pytest.raises(vd.CheckError) as caught:
        vd.Scene.open(filled.to_bytes(), max_memory=100)
    assert caught.value.code == "FILE_TOO_LARGE"


def test_saving_tells_why_it_fails_and_leaves_the_old_file(filled, tmp_path):
    path = tmp_path / "old.vrnscene"
    path.write_bytes(b"old")
    filled.Camera.add()
    with pytest.raises(vd.ToolkitError, match="Camera") as caught:
        filled.save(path)
    assert caught.value.code == "SCENE_INCOMPLETE" and path.read_bytes() == b"old"
    filled.Camera[1].remove()
    with pytest.raises(vd.SaveError) as caught:
        filled.save(tmp_path / "none" / "x.vrnscene")
    assert caught.value.code == "SAVE_NO_FOLDER"


def test_reports_have_messages_and_what_was_learned(filled):
    data = filled.to_bytes()
    report = vd.check(data)
    assert report and report.valid and report.errors == 0
    assert report.size == len(data) and report.id == filled.id
    assert report.objects["Shape"] == (3, 2) and report.objects["Mesh"] == (1, 1)
    document = json.loads(report.json)
    assert document["valid"] is True and document["info"]["objects"]["Shape"] == {"slots": 3, "live": 2}
    filled.Light[0].program = None
    warned = filled.validate()
    assert [(one.code, one.address, one.severity, one.offset) for one in warned] == [
        ("SLOT_REQUIRED_UNSET", "Light/0/slots/program", "warning", None)]
    assert vd.check(filled.to_bytes(), max_messages=0).warnings == 1
    with pytest.raises(ValueError):
        vd.check(data, max_memory=-1)


def test_shows_itself(filled):
    assert repr(filled).startswith(f"<Scene {filled.id}: 1 CameraProgram, 1 MaterialProgram")
    assert repr(filled.Shape) == "<2 Shape objects>"
    assert repr(filled.Shape[0]) == "<Shape 0: material 0, mesh 0>"
    assert "Camera" in dir(filled) and "save" in dir(filled)
    assert repr(filled.Camera[0].general).startswith("Camera/0/groups/General {'near_distance': 0.25")


def test_misspelt_members_of_programs_and_assets_are_refused(filled):
    for thing, name, nearest in ((filled.CameraProgram[0], "txt", "text"), (filled.Mesh[0], "positons", "positions"),
                                 (filled.Texture[0], "widht", "width")):
        with pytest.raises(vd.UnknownName, match=f"has no '{name}'; did you mean '{nearest}'"):
            setattr(thing, name, 1)
        with pytest.raises(AttributeError, match=f"'{nearest}' of a {thing.class_name} cannot be assigned to"):
            setattr(thing, nearest, 1)


def test_the_objects_of_a_class_are_equal_to_themselves(scene):
    assert scene.Camera == scene["Camera"] and hash(scene.Camera) == hash(scene["Camera"])
    assert scene.Camera != scene.Shape and scene.Camera != 1
    with vd.Scene() as other:
        assert scene.Camera != other.Camera


def test_help_tells_what_a_class_a_group_and_a_field_are(scene):
    camera = scene.Camera.add()
    text = pydoc.plain(pydoc.render_doc(camera))
    assert "An object of the class Camera." in text and "general: the group 'General': near_distance," in text
    assert "program: the reference slot 'program': a CameraProgram." in text
    assert "value: the parameters of its program, a Value." in text
    text = pydoc.plain(pydoc.render_doc(type(camera.general)))
    assert "General settings for a camera instance" in text
    near = inspect.getdoc(type(camera.general).near_distance)
    assert near.startswith("Near Distance (float). ") and "Default: 0.0. Limits: from 0.0." in near
    assert "one of 'DISABLED', 'FIT_SIZE'" in inspect.getdoc(type(camera.backplate).mode)
    for entry in vd.catalogue():
        for group in entry.groups.values():
            kind = type(getattr(scene[entry.name].add(), group.attribute))
            for label, field in group.fields.items():
                doc = inspect.getdoc(getattr(kind, label))
                assert field.name in doc and field.description.strip() in doc


def test_copies_and_pickles_are_equal_to_what_they_are_of(filled):
    camera, catalogue = filled.Camera[0], vd.catalogue()
    changed = filled.copy()
    changed.Camera[0].general.near_distance = 0.75
    things = [
        catalogue, catalogue["Camera"], catalogue["Camera"].groups["General"], catalogue["Camera"].slots["program"],
        catalogue.scene.groups["Raytracer"], catalogue["Camera"].groups["General"].fields["near_distance"],
        vd.Type("{ int @max=3 a; }"), camera.value, vd.Value.parse("{ a = { b = 1; }; }")["a"],
        vd.ForeignAddress(5), camera.general, camera.transformation.matrix, camera.groups, filled.groups,
        filled.Shape[0].cut_planes.cut, vd.MeshLayout(1, 3), vd.front(3), vd.check(filled.to_bytes()),
        vd.check(b"x").messages[0], vd.diff(filled, changed), vd.diff(filled, changed)[0]]
    for thing in things:
        for twin in (copy.copy(thing), copy.deepcopy(thing), pickle.loads(pickle.dumps(thing))):
            assert twin == thing, thing
    assert copy.copy(catalogue["Camera"]) is catalogue["Camera"]
    for twin in (copy.copy(filled), copy.deepcopy(filled), pickle.loads(pickle.dumps(filled))):
        assert twin is not filled and twin.equivalent(filled) and twin.digest(ids=True) == filled.digest(ids=True)
    assert vd.check(b"x") != vd.check(b"y" * 9) and vd.diff(filled, filled) != vd.diff(filled, changed)
    assert vd.MeshLayout(1, 3) != vd.MeshLayout(1, 4)


@pytest.mark.parametrize("index", ["x", slice(1, 2), None, 1.5])
def test_objects_are_indexed_by_slot_number_alone(scene, index):
    with pytest.raises(TypeError, match="Shape is indexed by slot number, not by"):
        scene.Shape[index]


def test_a_list_changes_as_a_list_of_python_does(scene):
    choices = random.Random(7)
    shapes = [scene.Shape.add() for _ in range(5)]
    things = [None, *shapes, scene.Light.add(value="{ }")]
    emitters, model = scene.LightGroup.add().emitters, []
    both = (emitters, model)
    for _ in range(2000):
        thing, index = choices.choice(things), choices.randrange(-12, 12)
        change = choices.choice((
            lambda one: one.append(thing), lambda one: one.insert(index, thing), lambda one: one.pop(),
            lambda one: one.extend([thing] * (index % 3)), lambda one: one.__setitem__(index, thing),
            lambda one: one.__delitem__(index), lambda one: one.remove(thing), lambda one: one[index],
            lambda one: one.pop(index), lambda one: one.reverse(), lambda one: one.__delitem__(slice(3, None)),
            lambda one: one.__setitem__(slice(1, index), [thing]), lambda one: one.index(thing)))
        outcomes = []
        for one in both:
            try:
                outcomes.append(change(one))
            except (IndexError, ValueError) as problem:
                outcomes.append(type(problem))
        assert outcomes[0] == outcomes[1] and list(emitters) == model and len(emitters) == len(model)
    again = vd.Scene.from_bytes(scene.to_bytes())
    assert again.LightGroup[0].emitters.words() == emitters.words()


def test_a_text_that_is_not_utf8_is_written_back_as_it_was(scene):
    target = scene.Shape.add().target
    target.tag = b"a\xff\xc3"
    before, text = target.value(), b"a\xff\xc3" + bytes(61)
    assert before["tag"].numpy().tobytes() == text
    assert target.tag == "a\udcff\udcc3"
    target.update(target.to_dict())
    assert target.value() == before and target.value()["tag"].numpy().tobytes() == text
    scene.Shape[0].target = target
    target.tag = target.tag
    assert target.value() == before and target.value()["tag"].numpy().tobytes() == text
    target._repr_html_().encode()
    repr(target).encode()


def test_errors_of_files_have_the_number_and_the_path(scene, tmp_path):
    missing = tmp_path / "none" / "x.vrnscene"
    for use in (vd.Scene.open, vd.check, vd.Scene.from_json, lambda path: vd.diff(scene, vd.Scene.open(path))):
        for kind in (FileNotFoundError, vd.FileError, OSError):
            with pytest.raises(kind) as caught:
                use(missing)
            assert (caught.value.errno, caught.value.filename) == (errno.ENOENT, str(missing))
            assert caught.value.code == "FILE_MISSING" and str(missing) in str(caught.value)
    with pytest.raises(vd.FileError) as caught:
        vd.Scene.open(tmp_path)
    assert caught.value.errno == errno.EISDIR and not isinstance(caught.value, FileNotFoundError)
    for use in (scene.save, scene.to_json, lambda path: vd.write_file(path, b"x")):
        with pytest.raises(vd.SaveError) as caught:
            use(missing)
        assert (caught.value.errno, caught.value.filename) == (errno.ENOENT, str(missing))
    for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
        twin = pickle.loads(pickle.dumps(caught.value, protocol))
        assert (type(twin), twin.errno, twin.filename, twin.code, str(twin)) == (
            vd.SaveError, errno.ENOENT, str(missing), "SAVE_NO_FOLDER", str(caught.value))


@pytest.mark.parametrize("protocol", range(pickle.HIGHEST_PROTOCOL + 1))
def test_all_that_a_host_keeps_pickles_with_every_protocol_and_equals_its_copies(filled, protocol):
    camera = filled.Camera[0]
    saved = vd.catalogue_text("json").replace('"near_distance"', '"nearest"')
    with vd.Scene() as other:
        differences = vd.diff(filled, other)
    kind = vd.Type("{ float @min=0.0 gloss; }")
    things = [kind, kind.fields["gloss"], kind.fields["gloss"].type.metadata, filled.validate(), vd.check(b"x"),
              vd.check(b"x").messages[0], differences, differences[0], vd.Side(3), vd.catalogue()["Camera"],
              camera.value, *vd.compare_catalogue(saved)[:2]]
    with pytest.raises(vd.JsonError) as caught:
        vd.Scene.from_json('{"format": 1}')
    things += caught.value.messages
    assert {vd.JsonMessage, vd.CatalogueChange} <= set(map(type, things))
    for thing in things:
        for twin in (pickle.loads(pickle.dumps(thing, protocol)), copy.copy(thing), copy.deepcopy(thing)):
            assert type(twin) is type(thing) and twin == thing and repr(twin) == repr(thing)
            assert isinstance(thing, (vd.Value, type(kind.metadata))) or hash(twin) == hash(thing)
    with pytest.raises(vd.CheckError) as caught:
        vd.Scene.open(b"x")
    twin = pickle.loads(pickle.dumps(caught.value, protocol))
    assert twin.report == caught.value.report and twin.report.messages == caught.value.report.messages
    assert pickle.loads(pickle.dumps(filled, protocol)).digest() == filled.digest()
    for wrong in (filled.Camera, camera):
        with pytest.raises(TypeError, match="scene"):
            pickle.dumps(wrong, protocol)


def test_names_that_do_not_exist_have_the_nearest_one(filled):
    with pytest.raises(vd.UnknownName, match="has no 'position'; did you mean 'positions'"):
        filled.Mesh[0].position
    with pytest.raises(vd.UnknownName, match="has no 'txt'; did you mean 'text'"):
        filled.CameraProgram[0].txt
    with pytest.raises(vd.UnknownName, match="has no field 'near'; did you mean 'near_distance'"):
        vd.catalogue().classes["Camera"].groups["General"].fields["near"]
    assert vd.catalogue().classes["Camera"].groups["General"].fields.get("near") is None
    for thing in (filled, filled.Camera[0], filled.Mesh[0], filled.CameraProgram[0], filled.groups,
                  filled.Camera[0].general):
        assert not hasattr(thing, "") and not hasattr(thing, "_other")
        with pytest.raises(AttributeError):
            setattr(thing, "", 1)
    for use in (lambda: filled.Camera.column("General", 5), lambda: filled.Camera.column(5)):
        with pytest.raises((TypeError, vd.UnknownName)):
            use()


def test_errors_name_the_whole_address(scene):
    shape = scene.Shape.add()
    matrix = shape.transformation.matrix
    where = "Shape/0/groups/Transformation/matrix"
    for use in (lambda: setattr(matrix, "x", (1, 2, 3)), lambda: matrix.__setitem__("x", (1, 2, 3)),
                lambda: matrix.update(x=(1, 2, 3))):
        with pytest.raises(vd.TypeMismatch, match=f"^{where}/x: "):
            use()
    with pytest.raises(vd.TypeMismatch, match=f"^{where}/w/2: "):
        matrix.w = (1, 2, "3", 4)
    for use in (lambda: matrix.q, lambda: setattr(matrix, "q", 1), lambda: matrix.__delitem__("q")):
        with pytest.raises(vd.UnknownName, match=f"^{where} has no field 'q'"):
            use()
    assert repr(matrix).startswith(where + " {")


def test_the_path_of_every_part_of_a_group_leads_to_it(scene):
    from vornath_data._records import Elements, Fields
    def walk(thing, path):
        found = 0
        parts = thing if isinstance(thing, Fields) else range(len(thing))
        for key in parts:
            inner = thing[key]
            if isinstance(inner, (Fields, Elements)):
                assert inner._path() == f"{path}{key}/"
                found += 1 + walk(inner, f"{path}{key}/")
        return found
    found = 0
    for entry in vd.catalogue():
        if entry.kind == "instance":
            for group in scene[entry.name].add().groups.values():
                found += walk(group, "")
    found += sum(walk(group, "") for group in scene.groups.values())
    assert found > 10


def test_printing_does_not_fail(filled):
    import threading
    camera, shape, group = filled.Camera[0], filled.Shape[0], filled.LightGroup[0]
    things = [camera, camera.general, shape.transformation.matrix, camera.groups, camera.slots, shape.slots,
              group.emitters, filled.groups, filled.groups.raytracer, filled.groups["Cut planes"], filled.Camera,
              filled.Mesh[0], filled.CameraProgram[0], filled]
    arrays = [one for one in (thing[label] for thing in (filled.groups["Cut planes"],) for label in thing)]
    things += arrays

    def show(words):
        for thing in things:
            assert repr(thing) and str(thing)
        assert words in repr(camera.general) and words in repr(group.emitters) and words in repr(filled.groups)

    show("")
    with filled._exclusive(change=False):
        show("has not returned")
        other = threading.Thread(target=show, args=("another thread",))
        other.start()
        other.join()
        assert repr(filled) == "<Scene, in use>"
    camera.remove()
    assert "not in the scene any more" in repr(camera.general) and "removed" in repr(camera)
    assert "not in the scene any more" in repr(camera.slots) and "not in the scene any more" in repr(camera.groups)
    filled.close()
    show("the scene is closed")
    assert repr(camera.general) == "<Camera/0/groups/General: the scene is closed>"


def test_numbers_of_numpy_are_slots_and_json(filled):
    import numpy as np
    assert np.int64(0) in filled.Camera and np.uint8(1) not in filled.Shape and np.int32(2) in filled.Shape
    assert 0.0 not in filled.Camera and np.float32(0) not in filled.Camera and np.array([0]) not in filled.Camera
    assert True not in filled.Shape and None not in filled.Shape and -1 not in filled.Shape
    filled.set("Camera/0/groups/General/near_distance", np.float32(0.75))
    filled.set("Camera/0/groups/General/shutter_open", np.array(0.125))
    assert filled.Camera[0].general.near_distance == 0.75 and filled.Camera[0].general.shutter_open == 0.125
    filled.set("Shape/0/groups/Transformation/matrix", {"w": np.array([1.0, 2.0, 3.0, 1.0])})
    assert filled.Shape[0].transformation.matrix.w == (1, 2, 3, 1)
    for wrong in (object(), np.array([1j]), np.datetime64("2026-01-01"), np.ma.array([1.0], mask=[True])):
        with pytest.raises(TypeError):
            filled.set("Camera/0/groups/General/near_distance", wrong)


def test_an_address_is_no_number_in_a_group(scene):
    camera = scene.Camera.add()
    for group, name in ((camera.general, "near_distance"), (camera.backplate, "mode")):
        before = group.to_dict()
        with pytest.raises(vd.TypeMismatch):
            setattr(group, name, vd.ForeignAddress(1))
        assert group.to_dict() == before
