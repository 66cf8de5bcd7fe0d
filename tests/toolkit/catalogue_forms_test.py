"""The catalogue as JSON, against docs/catalogue.md, and as a JSON Schema, against documents of the form that
docs/scene_json.md describes. Needs the Debian package python3-jsonschema.

usage: catalogue_forms_test.py LIST_CATALOGUE SOURCE_FOLDER [SCENE.json...]
Each SCENE.json, a scene that the toolkit exported, must be valid by the schema.
"""
import copy
import json
import pathlib
import re
import subprocess
import sys
import unittest

import jsonschema

PROGRAM = sys.argv[1]
SOURCE = pathlib.Path(sys.argv[2])
EXPORTS = sys.argv[3:]
del sys.argv[1:]


def printed(form, *names):
    return subprocess.run([PROGRAM, form, *names], check=True, capture_output=True, text=True).stdout


CATALOGUE = json.loads(printed("json"))
SCHEMA = json.loads(printed("schema"))
VALIDATOR = jsonschema.Draft202012Validator(SCHEMA)
ID = "883ff973-e105-4b5b-982a-4d2cb87d48ca"
SHA256 = "0123456789abcdef" * 4

# A document of the form, with something of each kind.
SCENE = {
    "format": "vornath-scene", "formatVersion": 1, "sceneVersion": CATALOGUE["sceneVersion"], "id": ID,
    "scene": {"Raytracer": {"ray_epsilon": 1e-05}},
    "objects": {
        "MaterialProgram": [{"text": "…"}, {"text": {"base64": "/w=="}}],
        "Mesh": [{"id": ID, "desc": {"triangles": 12, "vertices": 24, "texcoordSets": 0, "flags": 3},
                  "bytes": {"file": f"box.assets/{SHA256}.bin", "size": 1234, "sha256": SHA256}}],
        "Texture": [{"id": ID, "desc": {"width": 1, "height": 1, "depth": 1, "format": "SRGB8", "layout": 77},
                     "bytes": {"base64": "AAAA", "size": 3, "sha256": SHA256}}],
        "MaterialGraph": [{"id": ID, "desc": {"binarySize": 2**64 - 1, "rootOffset": 0, "parameterOffset": 0},
                           "bytes": {"size": 0, "sha256": SHA256}}],
        "Camera": [
            {"groups": {"General": {"near_distance": 0.1},
                        "Transformation": {"matrix": {"x": [1.0, 0, 0.0, 0.0]}},
                        "Backplate": {"mode": "FIT_SIZE", "image": {"wrapmode": {"u": 17, "v": "CLAMP"},
                                                                     "border_spectrum": ["nan", "inf", "nan:7fc00001"]}}},
             "slots": {"program": 0, "backplate": None, "keyframes": {"word": -7}},
             "value": {"type": "{ float focal_length; }", "data": {"focal_length": 35.0}}},
            None,
            {"value": {"type": "{ float[]* s; }", "data": {"s": {"to": [1.0], "type": "float[1]", "shared": "1"}}}},
            {"value": None},
        ],
        "LightGroup": [{"slots": {"emitters": [{"Light": 0}, {"Shape": 3}, {"word": 9}, None]}}],
        "DecalList": [{"slots": {"decals": [{"front": 0}, {"back": 2}, None]}}],
        "Decal": [{"groups": {"Projection": {"clipping_box": {"min": ["-inf", -1.0, 0.5]}}}}],
        "KeyframeList": [{"slots": {"keyframes": [0, 1, None]}}],
        "Shape": [{"groups": {"Cut planes": {"cut": [True, False, True, True, True, "bool:00000001"]},
                              "Target": {"tag": [65] + [0] * 63, "custom_data": -2147483648}}}],
    },
}


def changed(place, value):
    """Returns the document with another value at a place; the value of a member that is not there is new."""
    document = copy.deepcopy(SCENE)
    inner = document
    for key in place[:-1]:
        inner = inner[key]
    inner[place[-1]] = value
    return document


class Json(unittest.TestCase):
    def test_has_each_class_with_its_number_kind_and_value_as_the_page_has_them(self):
        page = (SOURCE / "docs/catalogue.md").read_text()
        classes = {}
        for number, name, kind, value in re.findall(r"^## (\d+): (\w+)\n\nKind: (\w+)(.*)\.$", page, re.M):
            classes[name] = (int(number), kind, bool(value))
        self.assertEqual({name: (each["number"], each["kind"], each["hasValue"])
                          for name, each in CATALOGUE["classes"].items()}, classes)
        self.assertEqual(len(classes), 18)
        self.assertIn(f"version {CATALOGUE['sceneVersion']}.", page)

    def test_has_each_slot_as_the_page_has_it(self):
        holds = {"required": "one, required", "optional": "one, optional", "list": "list",
                 "decals": "list, coded: front and back", "emitters": "list, coded: lights and shapes"}
        page = (SOURCE / "docs/catalogue.md").read_text()
        listed = []
        for section in re.split(r"^## ", page, flags=re.M)[1:]:
            name = section.split("\n")[0].split(": ")[-1]
            listed += [(name, int(row[0]), *row[1:])
                       for row in re.findall(r"^\| (\d+) \| `(\w+)` \| ([^|]*) \| ([^|]*) \|$", section, re.M)]
        told = [(owner, slot["number"], name, holds[slot["kind"]], " or ".join(slot["targets"]))
                for owner, each in CATALOGUE["classes"].items() for name, slot in each["slots"].items()]
        self.assertEqual(told, listed)
        self.assertGreater(len(told), 20)

    def test_has_each_field_as_the_page_has_it(self):
        page = (SOURCE / "docs/catalogue.md").read_text()
        rows = 0
        sections = {name: each for name, each in CATALOGUE["classes"].items()}
        sections["The scene as a whole"] = CATALOGUE["scene"]
        for section in re.split(r"^## ", page, flags=re.M)[1:]:
            owner = sections[section.split("\n")[0].split(": ")[-1]]
            groups = re.split(r"^### Group \d+: ", section, flags=re.M)[1:]
            self.assertEqual(list(owner["groups"]), [group.split("\n")[0] for group in groups])
            if groups:
                self.assertIn(f"Its groups take {owner['groupsSize']} bytes.", section)
            for text, (name, group) in zip(groups, owner["groups"].items()):
                self.assertIn(f"{group['size']} bytes at {group['offset']}, aligned to {group['alignment']}.", text)
                listed = re.findall(r"^\| `([^`]+)` \| (\d+) \| (.*?) \| (.*?) \| (.*?) \| (.*?) \|(.*) \|$", text, re.M)
                self.assertEqual(len(listed), len(group["fields"]), name)
                for row, field in zip(listed, group["fields"]):
                    rows += 1
                    self.compare_field(row, field)
        self.assertGreater(rows, 400)

    def compare_field(self, row, field):
        path, offset, kind, default, limits, label, about = row
        self.assertEqual(re.sub(r"/(\d+)", r"[\1]", field["path"]).replace("/", "."), path)
        self.assertEqual(field["offset"], int(offset), path)
        self.assertEqual(field.get("label", ""), label, path)
        if field["kind"] == "scalar":
            self.assertEqual(field["type"], kind, path)
        if field["kind"] == "enum":
            names = re.findall(r"\b[A-Z][A-Za-z0-9_]*", re.sub(r'"[^"]*"', "", kind.replace("enum", "")))
            self.assertEqual([each["label"] for each in field["constructors"]], names, path)
            self.assertEqual([each["code"] for each in field["constructors"]], list(range(len(names))))
        for words in re.findall(r"@si_unit (\w+)", about):
            self.assertEqual(field["unit"], words)
        for words in re.findall(r"`@(hide|logscale)`", about):
            self.assertIn(words, field["flags"])
        for name, (low, high) in {"": ("min", "max"), "soft ": ("soft_min", "soft_max")}.items():
            found = [part for part in limits.split("; ") if part and part.startswith("soft") == bool(name)]
            for key, word in ((low, "from"), (high, "to")):
                value = re.search(rf"{word} `([^`]*)`", found[0]) if found else None
                self.assertEqual(key in field, value is not None, path)
                if value and field["kind"] == "scalar":
                    self.compare_number(field[key], value.group(1))
        if default.strip("`") and field["kind"] == "scalar":
            self.compare_number(field["default"], default.strip("`"))
        if default.strip("`") and field["kind"] == "enum":
            self.assertEqual(field["default"], default.strip("`"))

    def compare_number(self, told, text):
        if isinstance(told, bool):
            self.assertEqual(told, text == "true")
        else:
            self.assertEqual(float(told), float(text))

    def test_tells_units_texts_and_constructors(self):
        def field(owner, group, path):
            return next(each for each in owner["groups"][group]["fields"] if each["path"] == path)
        camera = CATALOGUE["classes"]["Camera"]
        self.assertEqual(field(camera, "General", "near_distance"),
                         {"path": "near_distance", "offset": 0, "size": 4, "kind": "scalar", "type": "float",
                          "default": 0.0, "min": 0.0, "soft_max": 1.0, "label": "Near Distance",
                          "description": "Near distance offset in meter."})
        self.assertEqual(field(camera, "Backplate", "image/wrapmode/u")["constructors"][1],
                         {"code": 1, "label": "BORDER", "name": "Border"})
        light = CATALOGUE["classes"]["Light"]
        self.assertEqual(field(light, "Visibility", "visible_to/reflection")["constructors"][0],
                         {"code": 0, "label": "FALSE", "name": "False", "description": "Not visible to interaction"})
        self.assertEqual(field(light, "Target", "tag")["flags"], ["string"])
        self.assertEqual(field(light, "Target", "tag")["extents"], [64])
        clipping = field(CATALOGUE["classes"]["Decal"], "Projection", "clipping_box/min")
        self.assertEqual(clipping["default"], ["-inf"] * 3)
        self.assertEqual(clipping["soft_max"], [0.5] * 3)
        task = CATALOGUE["classes"]["ImageTask"]
        self.assertEqual(field(task, "Rasterizer", "ambient_occlusion/edge_depth_threshold")["unit"], "m")
        self.assertEqual(field(task, "Realtime gi", "artistic_sky_sampling_probability")["metadata"],
                         {"default_quality": 0.1})

    def test_writes_one_class_or_group_for_a_filter(self):
        part = json.loads(printed("json", "Camera/General"))
        self.assertEqual(part["filter"], "Camera/General")
        self.assertEqual(list(part["classes"]), ["Camera"])
        self.assertNotIn("scene", part)
        self.assertEqual(part["classes"]["Camera"]["groups"]["General"],
                         CATALOGUE["classes"]["Camera"]["groups"]["General"])


class Schema(unittest.TestCase):
    def test_is_a_schema_of_the_draft(self):
        for names in ([], ["Camera"], ["Camera/General"], ["scene"], ["scene/Raytracer"]):
            jsonschema.Draft202012Validator.check_schema(json.loads(printed("schema", *names)))

    def test_has_only_references_that_lead_somewhere(self):
        for names in ([], ["Camera"], ["Shape/General"], ["scene"]):
            schema = json.loads(printed("schema", *names))
            targets = set(re.findall(r'"\$ref": "#/\$defs/(\w+)"', json.dumps(schema)))
            self.assertLessEqual(targets, set(schema["$defs"]))

    def test_takes_documents_of_the_form(self):
        for document in (SCENE, {"format": "vornath-scene", "formatVersion": 1},
                         {"format": "vornath-scene", "formatVersion": 1, "objects": {"Camera": []}}):
            errors = [f"{error.json_path}: {error.message}" for error in VALIDATOR.iter_errors(document)]
            self.assertEqual(errors, [])

    def test_takes_what_the_toolkit_exported(self):
        for path in EXPORTS:
            document = json.loads(pathlib.Path(path).read_text())
            errors = [f"{error.json_path}: {error.message}" for error in VALIDATOR.iter_errors(document)]
            self.assertEqual(errors, [], path)

    def test_takes_the_default_of_every_field(self):
        def put(inner, parts, value):
            for part in parts[:-1]:
                inner = inner.setdefault(part, {})
            inner[parts[-1]] = value
        for owner in list(CATALOGUE["classes"].values()) + [CATALOGUE["scene"]]:
            if owner is not CATALOGUE["scene"] and owner["kind"] != "instance":
                continue
            groups = {}
            for name, group in owner["groups"].items():
                groups[name] = {}
                for field in group["fields"]:
                    if "/" not in field["path"]:
                        put(groups[name], field["path"].split("/"), field["default"])
            document = {"format": "vornath-scene", "formatVersion": 1}
            if owner is CATALOGUE["scene"]:
                document["scene"] = groups
            else:
                name = next(name for name, each in CATALOGUE["classes"].items() if each is owner)
                document["objects"] = {name: [{"groups": groups}] if groups else []}
            errors = [f"{error.json_path}: {error.message}" for error in VALIDATOR.iter_errors(document)]
            self.assertEqual(errors, [])

    def test_refuses_every_number_outside_of_its_limits(self):
        checked = 0
        for name, owner in CATALOGUE["classes"].items():
            for group_name, group in owner["groups"].items():
                for field in group["fields"]:
                    if field["kind"] != "scalar" or field["path"].split("/")[-2:-1] == ["0"]:
                        continue
                    for key, step in (("min", -1), ("max", 1)):
                        if not isinstance(field.get(key), (int, float)) or isinstance(field.get(key), bool):
                            continue
                        inner = value = {}
                        parts = field["path"].split("/")
                        for part in parts[:-1]:
                            inner[part] = {}
                            inner = inner[part]
                        document = {"format": "vornath-scene", "formatVersion": 1,
                                    "objects": {name: [{"groups": {group_name: value}}]}}
                        inner[parts[-1]] = field[key]
                        self.assertTrue(VALIDATOR.is_valid(document), (name, group_name, field["path"], key))
                        inner[parts[-1]] = field[key] + step
                        self.assertFalse(VALIDATOR.is_valid(document), (name, group_name, field["path"], key))
                        checked += 1
        self.assertGreater(checked, 100)

    def test_refuses_a_document_that_breaks_a_name(self):
        for place in (["colour"], ["scene", "Fog"], ["scene", "Raytracer", "epsilon"], ["objects", "Fog"],
                      ["objects", "Camera", 0, "name"], ["objects", "Camera", 0, "groups", "Lens"],
                      ["objects", "Camera", 0, "groups", "General", "near"], ["objects", "Camera", 0, "slots", "plate"],
                      ["objects", "Camera", 0, "value", "kind"], ["objects", "Mesh", 0, "name"],
                      ["objects", "Mesh", 0, "desc", "faces"], ["objects", "Mesh", 0, "bytes", "name"],
                      ["objects", "Shape", 0, "value"], ["objects", "MaterialProgram", 0, "groups"],
                      ["objects", "Camera", 0, "groups", "Transformation", "matrix", "v"]):
            self.assertFalse(VALIDATOR.is_valid(changed(place, {})), place)

    def test_refuses_a_document_that_breaks_a_kind_an_enum_or_a_limit(self):
        camera = ["objects", "Camera", 0]
        general = camera + ["groups", "General", "near_distance"]
        backplate = camera + ["groups", "Backplate"]
        shape = ["objects", "Shape", 0, "groups"]
        for place, value in (
                (["format"], "scene"), (["formatVersion"], 2), (["sceneVersion"], CATALOGUE["sceneVersion"] + 1),
                (["id"], "1"), (["scene"], []), (["objects"], []), (["objects", "Camera"], {}), (camera, 7),
                (general, "0.1"), (general, True), (general, None), (general, -1.0), (general, "nan"), (general, 1e300),
                (general, "-inf"), (backplate + ["mode"], "FIT"), (backplate + ["mode"], 1), (backplate + ["mode"], True),
                (backplate + ["mode"], 1.5), (backplate + ["visible_to_reflection"], 1),
                (backplate + ["visible_to_reflection"], "true"),
                (backplate + ["image", "border_spectrum"], [0.0, 0.0]),
                (backplate + ["image", "border_spectrum"], [0.0] * 4), (backplate + ["image", "border_spectrum"], 0.0),
                (backplate + ["image", "border_spectrum"], ["nan:7FC00001", 0.0, 0.0]),
                (shape + ["Target", "tag"], [256] + [0] * 63), (shape + ["Target", "tag"], [-1] + [0] * 63),
                (shape + ["Target", "tag"], "tag"), (shape + ["Target", "custom_data"], 2**31),
                (shape + ["Target", "custom_data"], 0.5), (shape + ["Cut planes", "cut"], [True] * 5),
                (camera + ["slots", "program"], -1), (camera + ["slots", "program"], "0"),
                (camera + ["slots", "program"], [0]), (camera + ["slots", "program"], 2**31),
                (camera + ["slots", "program"], {}),
                (camera + ["value"], {"type": "float"}), (camera + ["value"], {"data": 1.0}), (camera + ["value"], 1.0),
                (["objects", "LightGroup", 0, "slots", "emitters"], [0]),
                (["objects", "LightGroup", 0, "slots", "emitters"], [{"Camera": 0}]),
                (["objects", "LightGroup", 0, "slots", "emitters"], [{"Light": 0, "Shape": 0}]),
                (["objects", "LightGroup", 0, "slots", "emitters"], [{}]),
                (["objects", "LightGroup", 0, "slots", "emitters"], [{"Light": -1}]),
                (["objects", "DecalList", 0, "slots", "decals"], [{"Light": 0}]),
                (["objects", "KeyframeList", 0, "slots", "keyframes"], 0),
                (["objects", "Mesh", 0, "desc", "triangles"], -1), (["objects", "Mesh", 0, "desc", "triangles"], "12"),
                (["objects", "Texture", 0, "desc", "format"], "RGB99"),
                (["objects", "Mesh", 0, "bytes", "sha256"], "00"), (["objects", "Texture", 0, "bytes", "base64"], "A?"),
                (["objects", "MaterialProgram", 0, "text"], 7), (["objects", "MaterialProgram", 0], {}),
                (["objects", "Mesh", 0], {}), (["objects", "Texture", 0, "bytes", "file"], "a.bin")):
            self.assertFalse(VALIDATOR.is_valid(changed(place, value)), (place, value))

    def test_describes_one_object_for_a_class_and_one_group_for_a_group(self):
        camera = jsonschema.Draft202012Validator(json.loads(printed("schema", "Camera")))
        for each in SCENE["objects"]["Camera"]:
            self.assertTrue(camera.is_valid(each))
        self.assertFalse(camera.is_valid({"groups": {"General": {"near": 1.0}}}))
        general = jsonschema.Draft202012Validator(json.loads(printed("schema", "Camera/General")))
        self.assertTrue(general.is_valid({"near_distance": 0.5}))
        self.assertFalse(general.is_valid({"near_distance": -0.5}))
        scene = jsonschema.Draft202012Validator(json.loads(printed("schema", "scene")))
        self.assertTrue(scene.is_valid(SCENE["scene"]))
        self.assertFalse(scene.is_valid({"Raytracer": {"ray_epsilon": "small"}}))


if __name__ == "__main__":
    unittest.main()
