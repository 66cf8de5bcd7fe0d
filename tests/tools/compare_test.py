"""vrn diff, digest and catalogue."""
import html.parser
import json

from support import Case, main

NEAR = "Camera/0/groups/General/near_distance"


class Diff(Case):
    def setUp(self):
        super().setUp()
        self.good("set", "box.vrnscene", NEAR, "0.25", "-o", "b.vrnscene")

    def test_of_equal_scenes_is_silent(self):
        self.assertEqual(self.good("diff", "box.vrnscene", "box.vrnscene").text, "")

    def test_prints_addresses_with_the_old_and_the_new(self):
        self.assertEqual(self.found("diff", "box.vrnscene", "b.vrnscene").text,
                         "  " + NEAR + "  0.5 -> 0.25\n")

    def test_prints_objects_of_one_side(self):
        self.good("set", "b.vrnscene", "Shape/2", "null")
        text = self.found("diff", "box.vrnscene", "b.vrnscene").text
        self.assertIn("- Shape/2\n", text)
        self.assertIn("+ Shape/2\n", self.found("diff", "b.vrnscene", "box.vrnscene").text)

    def test_prints_a_text_as_a_text(self):
        self.good("set", "b.vrnscene", NEAR, "0.5")
        self.good("set", "b.vrnscene", "Shape/0/groups/Target/tag", '"ground"')
        self.assertEqual(self.found("diff", "box.vrnscene", "b.vrnscene").text,
                         '  Shape/0/groups/Target/tag  "floor" -> "ground"\n')

    def test_takes_floats_within_a_tolerance_for_equal(self):
        self.good("diff", "--tolerance", "0.5", "box.vrnscene", "b.vrnscene")
        self.found("diff", "--tolerance", "0.49", "box.vrnscene", "b.vrnscene")
        self.good("diff", "--abs", "0.25", "box.vrnscene", "b.vrnscene")
        self.found("diff", "--abs", "0.2", "box.vrnscene", "b.vrnscene")
        self.good("diff", "--abs", "0.2", "--tolerance", "0.5", "box.vrnscene", "b.vrnscene")

    def test_as_json_lists_the_entries(self):
        document = self.found("diff", "--json", "box.vrnscene", "b.vrnscene").json()
        self.assertEqual((document["equal"], document["differences"]), (False, 1))
        self.assertEqual(document["entries"], [{"address": NEAR, "kind": "changed", "old": 0.5,
                                                "new": 0.25}])
        self.assertTrue(self.good("diff", "--json", "box.vrnscene", "box.vrnscene").json()["equal"])

    def test_that_is_quiet_only_exits(self):
        self.assertEqual(self.found("diff", "-q", "box.vrnscene", "b.vrnscene").text, "")
        self.good("diff", "-q", "box.vrnscene", "box.vrnscene")

    def test_as_a_patch_is_a_list_of_operations(self):
        patch = self.found("diff", "--patch", "box.vrnscene", "b.vrnscene").json()
        self.assertEqual([operation["path"] for operation in patch], ["/objects/" + NEAR])
        self.assertEqual(self.good("diff", "--patch", "box.vrnscene", "box.vrnscene").json(), [])

    def test_compares_assets_by_digest_and_ids_only_if_asked(self):
        self.good("export", "--inline", "box.vrnscene", "-o", "box.json")
        document = json.loads(self.read("box.json"))
        document["objects"]["Mesh"][0]["id"] = "00000000-0000-4000-8000-000000000001"
        self.write("box.json", json.dumps(document))
        self.good("build", "box.json", "-o", "c.vrnscene")
        self.good("diff", "box.vrnscene", "c.vrnscene")
        self.found("diff", "--ids", "box.vrnscene", "c.vrnscene")
        self.assertEqual(self.good("digest", "box.vrnscene").text.split()[0],
                         self.good("digest", "c.vrnscene").text.split()[0])
        self.assertNotEqual(self.good("digest", "--ids", "box.vrnscene").text.split()[0],
                            self.good("digest", "--ids", "c.vrnscene").text.split()[0])


class Digest(Case):
    def test_prints_a_line_for_each_file(self):
        self.write("b.vrnscene", self.read("box.vrnscene"))
        text = self.good("digest", "box.vrnscene", "b.vrnscene").text
        self.assertRegex(text, r"\Asha256:([0-9a-f]{64})  box.vrnscene\nsha256:\1  b.vrnscene\n\Z")

    def test_changes_with_the_content_and_not_with_free_slots(self):
        first = self.good("digest", "box.vrnscene").text.split()[0]
        self.good("set", "box.vrnscene", NEAR, "0.25")
        self.assertNotEqual(self.good("digest", "box.vrnscene").text.split()[0], first)
        self.good("set", "box.vrnscene", NEAR, "0.5")
        self.assertEqual(self.good("digest", "box.vrnscene").text.split()[0], first)

    def test_as_json_is_an_object_or_an_array_for_several_files(self):
        document = self.good("digest", "--json", "box.vrnscene").json()
        self.assertEqual(document["file"], "box.vrnscene")
        self.assertRegex(document["digest"], r"\Asha256:[0-9a-f]{64}\Z")
        self.assertEqual(self.good("digest", "--json", "box.vrnscene", "box.vrnscene").json(),
                         [document, document])


class Catalogue(Case):
    def test_prints_a_class_or_a_group(self):
        self.assertIn("near_distance", self.good("catalogue", "Camera/General").text)
        self.assertNotIn("near_distance", self.good("catalogue", "Camera/Background").text)
        self.assertIn("ray_epsilon", self.good("catalogue", "scene").text)

    def test_is_written_in_every_form(self):
        document = self.good("catalogue", "--format", "json").json()
        self.assertEqual(self.good("catalogue", "--json").json(), document)
        self.assertIn("$schema", self.good("catalogue", "--format", "schema").json())
        self.assertTrue(self.good("catalogue", "--format", "markdown").text.startswith("# "))
        page = self.good("catalogue", "--format", "html").text
        html.parser.HTMLParser().feed(page)
        self.assertIn("near_distance", page)
        self.good("catalogue", "--format", "html", "-o", "page.html")
        self.assertEqual(self.read("page.html").decode("utf-8"), page)

    def test_refuses_an_unknown_name_and_suggests_a_near_one(self):
        self.assertIn("Camera", self.trouble("catalogue", "Camra").words)
        self.assertIn("General", self.trouble("catalogue", "Camera/Genral").words)

    def test_compared_with_itself_has_no_change(self):
        self.good("catalogue", "--format", "json", "-o", "saved.json")
        self.assertEqual(self.good("catalogue", "--compare", "saved.json").text,
                         "nothing has changed\n")
        document = self.good("catalogue", "--compare", "saved.json", "--json").json()
        self.assertEqual((document["breaking"], document["changes"]), (0, []))

    def test_compared_with_a_catalogue_that_had_more_breaks(self):
        self.good("catalogue", "--format", "json", "-o", "saved.json")
        saved = self.read("saved.json").decode("utf-8")
        self.write("saved.json", saved.replace("near_distance", "nearest_distance"))
        result = self.found("catalogue", "--compare", "saved.json")
        self.assertIn("breaks  ", result.text)
        self.assertIn("nearest_distance", result.text)
        document = self.found("catalogue", "--compare", "saved.json", "--json").json()
        self.assertGreater(document["breaking"], 0)

    def test_compared_with_another_document_is_trouble(self):
        self.write("other.json", "{}")
        self.write("text", "no JSON")
        for name in ("other.json", "text", "missing.json", "box.vrnscene", "."):
            self.trouble("catalogue", "--compare", name)

    def test_refuses_options_that_contradict_each_other(self):
        self.good("catalogue", "--format", "json", "-o", "saved.json")
        self.trouble("catalogue", "--json", "--format", "html")
        self.trouble("catalogue", "Camera", "--compare", "saved.json")
        self.trouble("catalogue", "--format", "json", "--compare", "saved.json")


if __name__ == "__main__":
    main()
