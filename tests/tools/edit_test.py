"""vrn set, export, build, patch and merge."""
import hashlib
import json
import os
import subprocess

from support import Case, VRN, main

NEAR = "Camera/0/groups/General/near_distance"


class Set(Case):
    def digest(self, name="box.vrnscene"):
        return self.good("digest", name).text.split()[0]

    def test_writes_a_value_into_the_file(self):
        self.good("set", "box.vrnscene", NEAR, "0.25")
        self.assertEqual(self.good("get", "box.vrnscene", NEAR).json(), 0.25)
        self.good("check", "--strict", "box.vrnscene")

    def test_takes_all_kinds_of_values(self):
        for address, text in [("Camera/0/groups/Backplate/mode", '"FIT_SIZE"'),
                              ("Camera/0/groups/Background/active", "false"),
                              ("Camera/0/groups/Transformation/matrix/w", "[0, 1, -2.5, 1]"),
                              ("Camera/0/groups/Transformation/matrix/w/0", "-3"),
                              ("Shape/3/slots/material", "2"), ("Camera/0/slots/backplate", "null"),
                              ("LightGroup/0/slots/emitters", '[{"Shape": 1}, null]'),
                              ("Camera/0/value/data/focal_length", "0.05"),
                              ("MaterialProgram/0/text", '"material black() { }"'),
                              ("scene/Raytracer/ray_epsilon", "0.001")]:
            self.good("set", "box.vrnscene", address, text)
            self.assertEqual(self.good("get", "box.vrnscene", address).json(), json.loads(text))

    def test_takes_a_string_for_a_field_that_holds_a_text(self):
        tag = "Shape/0/groups/Target/tag"
        for text in ("ground", "", "a\"b\\c\t", "\u00e4\u20ac\U0001f600", "x" * 64):
            for json_text in (json.dumps(text), json.dumps(text, ensure_ascii=False)):
                self.good("set", "box.vrnscene", tag, json_text)
                numbers = self.good("get", "box.vrnscene", tag).json()
                self.assertEqual(bytes(numbers).rstrip(b"\0").decode("utf-8"), text)
        for wrong in ('"' + "x" * 65 + '"', '"a"b"', '"\\x"', '"\\ud800"', '"\\u00g0"', '"', '"a\n"'):
            self.trouble("set", "box.vrnscene", tag, wrong)

    def test_writes_another_file_and_leaves_the_first(self):
        before = self.read("box.vrnscene")
        self.good("set", "box.vrnscene", NEAR, "0.25", "-o", "new.vrnscene")
        self.assertEqual(self.read("box.vrnscene"), before)
        self.assertEqual(self.good("get", "new.vrnscene", NEAR).json(), 0.25)

    def test_takes_a_negative_number_as_it_stands(self):
        self.good("set", "box.vrnscene", NEAR, "-1.5")
        self.assertEqual(self.good("get", "box.vrnscene", NEAR).json(), -1.5)

    def test_reads_the_value_from_standard_input(self):
        self.good("set", "box.vrnscene", NEAR, "-", stdin=b"0.75\n")
        self.assertEqual(self.good("get", "box.vrnscene", NEAR).json(), 0.75)

    def test_refuses_what_is_wrong_and_writes_nothing(self):
        before = self.read("box.vrnscene")
        for address, text in [("Camera/0/groups/General/near", "1"), ("Camera/7", "{}"), (NEAR, "x"),
                              (NEAR, '"a"'), (NEAR, "true"), (NEAR, "[1]"), (NEAR, "{"), (NEAR, ""),
                              (NEAR, "1 2"), (NEAR, "1e99"), ("Camera/0/groups/Backplate/mode", '"FIT"'),
                              ("Camera/0/groups/Transformation/matrix/x", "[1, 2]"),
                              ("Camera/0/groups/General", '{ "near": 1 }'), ("Shape/0/slots/mesh", '"a"'),
                              ("Shape/0/groups/Target/custom_data", "1.5"), ("id", '"x"')]:
            self.trouble("set", "box.vrnscene", address, text)
        self.assertEqual(self.read("box.vrnscene"), before)
        self.assertEqual(self.names(), ["box.vrnscene"])

    def test_suggests_near_labels(self):
        words = self.trouble("set", "box.vrnscene", "Camera/0/groups/Backplate/mode", '"FIT_SIZ"').words
        self.assertIn("FIT_SIZE", words)

    def test_enforces_limits_only_if_asked(self):
        red = "Camera/0/groups/Background/red"
        before = self.read("box.vrnscene")
        self.trouble("set", "--limits", "box.vrnscene", red, "1.5")
        self.assertEqual(self.read("box.vrnscene"), before)
        self.good("set", "--limits", "box.vrnscene", red, "1")
        self.good("set", "box.vrnscene", red, "1.5")

    def test_changes_nothing_else(self):
        self.good("set", "box.vrnscene", NEAR, "0.25", "-o", "new.vrnscene")
        result = self.found("diff", "box.vrnscene", "new.vrnscene")
        self.assertEqual(result.text.split(), [NEAR, "0.5", "->", "0.25"])
        self.good("set", "new.vrnscene", NEAR, "0.5")
        self.assertEqual(self.digest(), self.digest("new.vrnscene"))


class Export(Case):
    def test_with_a_file_puts_the_bytes_of_assets_into_a_folder_beside_it(self):
        self.good("export", "box.vrnscene", "-o", "box.json")
        self.assertEqual(self.names(), ["box.assets", "box.json", "box.vrnscene"])
        document = json.loads(self.read("box.json"))
        for mesh in document["objects"]["Mesh"]:
            with open(self.path(mesh["bytes"]["file"]), "rb") as file:
                content = file.read()
            self.assertEqual(hashlib.sha256(content).hexdigest(), mesh["bytes"]["sha256"])
            self.assertEqual(len(content), mesh["bytes"]["size"])

    def test_on_standard_output_has_the_bytes_of_assets_in_it(self):
        document = self.good("export", "box.vrnscene").json()
        self.assertIn("base64", document["objects"]["Mesh"][0]["bytes"])
        self.assertEqual(self.names(), ["box.vrnscene"])
        self.assertEqual(self.good("export", "--inline", "box.vrnscene").json(), document)

    def test_leaves_bytes_out_if_asked(self):
        self.assertEqual(list(self.good("export", "--digests", "box.vrnscene")
                              .json()["objects"]["Mesh"][0]["bytes"]), ["size", "sha256"])
        self.good("export", "--digests", "box.vrnscene", "-o", "box.json")
        self.assertEqual(self.names(), ["box.json", "box.vrnscene"])
        self.trouble("export", "--digests", "--inline", "box.vrnscene")

    def test_leaves_defaults_out_unless_it_is_full(self):
        sparse = self.good("export", "box.vrnscene").json()["objects"]["Camera"][0]
        full = self.good("export", "--full", "box.vrnscene").json()["objects"]["Camera"][0]
        self.assertEqual(sparse["groups"]["General"], {"near_distance": 0.5})
        self.assertEqual(len(full["groups"]["General"]), 5)

    def test_is_the_same_on_every_run(self):
        self.assertEqual(self.good("export", "box.vrnscene").out,
                         self.good("export", "box.vrnscene").out)


class Build(Case):
    def test_makes_the_exported_scene_again(self):
        for options in (["--full"], [], ["--inline"]):
            self.good("export", "box.vrnscene", "-o", "copy.json", *options)
            self.good("build", "copy.json")
            self.good("diff", "--ids", "box.vrnscene", "copy.vrnscene")
            self.assertEqual(self.good("digest", "--ids", "box.vrnscene").text.split()[0],
                             self.good("digest", "--ids", "copy.vrnscene").text.split()[0])
            os.remove(self.path("copy.vrnscene"))

    def test_finds_assets_beside_the_document_from_any_folder(self):
        self.good("export", "box.vrnscene", "-o", "box.json")
        process = subprocess.run([VRN, "build", self.path("box.json"), "-o", self.path("x")], cwd="/",
                                 capture_output=True)
        self.assertEqual((process.returncode, process.stderr), (0, b""))

    def test_takes_a_pipe(self):
        exported = self.good("export", "box.vrnscene").out
        self.good("build", "-", "-o", "copy.vrnscene", stdin=exported)
        self.good("diff", "box.vrnscene", "copy.vrnscene")
        self.write("other.vrnscene", self.good("build", "-", stdin=exported).out)
        self.good("diff", "box.vrnscene", "other.vrnscene")

    def test_fills_in_what_is_left_out(self):
        self.write("small.json", '{ "format": "vornath-scene", "formatVersion": 1,'
                                 ' "objects": { "Shape": [ {}, null, {} ] } }')
        self.good("build", "small.json")
        self.assertEqual(self.good("info", "--json", "small.vrnscene").json()["info"]["objects"]["Shape"],
                         {"slots": 3, "live": 2})

    def test_tells_all_errors_with_their_places_and_writes_nothing(self):
        self.write("bad.json", '{\n  "format": "vornath-scene", "formatVersion": 1,\n  "objects": {\n'
                               '    "Camera": [ { "groups": { "General": { "near_distanc": 1 } } } ],\n'
                               '    "Shape": [ { "slots": { "material": "x" } } ]\n  }\n}\n')
        result = self.found("build", "bad.json")
        lines = result.words.splitlines()
        self.assertEqual(len(lines), 2, result.words)
        self.assertRegex(lines[0], r"^vrn build: bad.json: line 4, column \d+: "
                                   r"/objects/Camera/0/groups/General.*near_distance")
        self.assertRegex(lines[1], r"^vrn build: bad.json: line 5, column \d+: /objects/Shape/0/slots")
        self.assertEqual(self.names(), ["bad.json", "box.vrnscene"])

    def test_tells_errors_as_json_too(self):
        self.write("bad.json", '{ "format": "vornath-scene", "formatVersion": 1, "objcts": {} }')
        document = self.found("build", "--json", "bad.json").json()
        self.assertEqual((document["valid"], document["errors"]), (False, 1))
        self.assertEqual(document["messages"][0]["line"], 1)

    def test_stops_at_twenty_errors(self):
        self.write("bad.json", '{ "format": "vornath-scene", "formatVersion": 1, "objects": { "Shape": ['
                   + ",".join(['{ "x": 1 }'] * 50) + "] } }")
        self.assertLessEqual(len(self.found("build", "bad.json").words.splitlines()), 21)

    def test_of_any_text_exits_with_1_or_2_and_writes_nothing(self):
        for text in ("", "x", "[]", "null", "{", '"', '{"format":"other"}', "{}", "[" * 100000,
                     '{"format": "vornath-scene", "formatVersion": 9}', "\xff\xfe", "\0"):
            self.write("bad.json", text.encode("latin-1"))
            result = self.run_vrn("build", "bad.json")
            self.assertIn(result.code, (1, 2), text[:20])
            self.assertGreaterEqual(result.words.count("\n"), 1)
            self.assertEqual(self.names(), ["bad.json", "box.vrnscene"])

    def test_of_a_missing_file_or_a_folder_is_trouble(self):
        self.trouble("build", "missing.json")
        self.trouble("build", ".", "-o", "x")


class Patch(Case):
    def test_that_diff_made_gives_the_other_scene(self):
        self.good("set", "box.vrnscene", NEAR, "0.25", "-o", "b.vrnscene")
        self.good("set", "b.vrnscene", "Shape/3/slots/material", "2")
        self.good("set", "b.vrnscene", "Shape/5", "null")
        self.good("set", "b.vrnscene", "MaterialProgram/0/text", '"none"')
        self.write("change.json", self.found("diff", "--patch", "box.vrnscene", "b.vrnscene").out)
        self.assertEqual(self.good("patch", "box.vrnscene", "change.json", "-o", "c.vrnscene").text, "")
        self.good("diff", "b.vrnscene", "c.vrnscene")
        change = self.read("change.json")
        self.good("patch", "box.vrnscene", "-", "-o", "d.vrnscene", stdin=change)
        self.good("diff", "b.vrnscene", "d.vrnscene")

    def test_may_replace_its_own_file(self):
        self.write("change.json", json.dumps([{"op": "replace", "value": 0.125,
                                               "path": "/objects/" + NEAR}]))
        self.good("patch", "box.vrnscene", "change.json", "-o", "box.vrnscene")
        self.assertEqual(self.good("get", "box.vrnscene", NEAR).json(), 0.125)

    def test_that_does_not_fit_exits_with_1_and_writes_nothing(self):
        for patch in ([{"op": "replace", "path": "/objects/Camera/9", "value": {}}],
                      [{"op": "test", "path": "/objects/" + NEAR, "value": 7}],
                      [{"op": "replace", "path": "/objects/" + NEAR, "value": "x"}],
                      [{"op": "fly", "path": ""}], {"op": "add"}, 7):
            self.write("change.json", json.dumps(patch))
            result = self.found("patch", "box.vrnscene", "change.json", "-o", "out")
            self.assertRegex(result.words, r"^vrn patch: change.json: ")
            self.assertEqual(self.names(), ["box.vrnscene", "change.json"])
        self.write("change.json", "no JSON")
        self.found("patch", "box.vrnscene", "change.json", "-o", "out")

    def test_without_an_output_is_trouble(self):
        self.write("change.json", "[]")
        self.assertIn("--output", self.trouble("patch", "box.vrnscene", "change.json").words)


class Merge(Case):
    def test_imports_all_scenes_into_the_first(self):
        self.good("merge", "box.vrnscene", "box.vrnscene", "box.vrnscene", "-o", "all.vrnscene")
        objects = self.good("info", "--json", "all.vrnscene").json()["info"]["objects"]
        self.assertEqual(objects["Shape"]["live"], 24)
        self.assertEqual(objects["CameraProgram"]["live"], 1)
        self.assertEqual(self.good("get", "all.vrnscene", "Shape/11/slots/material").json(),
                         self.good("get", "box.vrnscene", "Shape/3/slots/material").json() + 4)
        self.good("check", "--strict", "all.vrnscene")

    def test_writes_the_renumbering_of_each(self):
        self.good("set", "box.vrnscene", "Shape/2", "null", "-o", "hole.vrnscene")
        self.good("merge", "box.vrnscene", "hole.vrnscene", "-o", "all.vrnscene", "--map", "map.json")
        entries = json.loads(self.read("map.json"))
        self.assertEqual([entry["file"] for entry in entries], ["hole.vrnscene"])
        self.assertEqual(entries[0]["slots"]["Shape"], [8, 9, None, 10, 11, 12, 13, 14])
        self.assertEqual(entries[0]["slots"]["CameraProgram"], [0])
        result = self.good("merge", "box.vrnscene", "hole.vrnscene", "-o", "all.vrnscene", "--map", "-")
        self.assertEqual(result.json(), entries)

    def test_without_an_output_or_a_second_scene_is_trouble(self):
        self.assertIn("--output", self.trouble("merge", "box.vrnscene", "box.vrnscene").words)
        self.trouble("merge", "box.vrnscene", "-o", "x")
        self.trouble("merge", "box.vrnscene", "box.vrnscene", "-o", "-", "--map", "-")


if __name__ == "__main__":
    main()
