"""vrn show and vrn get."""
import json

from support import Case, main


class Show(Case):
    def test_prints_every_object_of_the_scene(self):
        text = self.good("show", "box.vrnscene").text
        self.assertRegex(text, r"\Abox.vrnscene: scene [0-9a-f-]{36}, 32 objects\n")
        for name in ("CameraProgram 0", "MaterialProgram 1", "Mesh 7", "Camera 0", 'Light 0 "lamp"',
                     'Shape 0 "floor"', 'Shape 4 "right_wall"', "ImageTask 0"):
            self.assertIn("\n" + name, text)

    def test_prints_changed_fields_with_units_and_defaults(self):
        text = self.good("show", "box.vrnscene").text
        self.assertIn("  Raytracer\n    ray_epsilon  1e-05 m  default 0.0001 m\n", text)
        self.assertIn("  General\n    near_distance  0.5  default 0\n", text)
        self.assertNotIn("shutter_open", text)

    def test_prints_references_by_name_and_number(self):
        text = self.good("show", "box.vrnscene", "LightGroup/0").text
        self.assertIn('  emitters  Light 0 "lamp", Shape 1 "light"\n', text)
        self.assertIn("  material             Material 1\n",
                      self.good("show", "box.vrnscene", "Shape/1").text)

    def test_prints_changed_fields_first_if_it_prints_all(self):
        text = self.good("show", "--all", "box.vrnscene", "Camera/0/groups/General").text
        fields = [line.split()[0] for line in text.splitlines() if line.startswith("    ")]
        self.assertEqual(fields, ["near_distance", "shutter_open", "shutter_close", "time_start",
                                  "time_end"])
        self.assertIn("  backplate  none\n", self.good("show", "-a", "box.vrnscene", "Camera/0").text)

    def test_prints_what_an_address_names(self):
        for address, line in [
                ("Camera/0/groups/General/shutter_open", "    shutter_open  0"),
                ("Camera/0/groups/Backplate/image/wrapmode", "    image/wrapmode/u  REPEAT"),
                ("Camera/0/slots/program", "  program  CameraProgram 0"),
                ("scene/Raytracer/ray_epsilon", "    ray_epsilon  1e-05 m  default 0.0001 m"),
                ("scene/Rasterizer", "  Rasterizer"),
                ("CameraProgram/0/text", "  | camera pinhole(float focal_length, float2 film_size)"),
                ("Camera/0/value/data/film_size", "    film_size  (0.025, 0.025)"),
                ("Mesh/6/desc", "  holds   10 triangles, 20 vertices")]:
            text = self.good("show", "--all", "box.vrnscene", address).text
            self.assertIn(line, text.splitlines(), address)
        self.assertRegex(self.good("show", "box.vrnscene", "id").text, r"\A[0-9a-f-]{36}\n\Z")

    def test_prints_all_objects_of_a_class(self):
        text = self.good("show", "box.vrnscene", "Mesh").text
        self.assertEqual(text.count("Mesh "), 8)
        self.assertEqual(self.good("show", "box.vrnscene", "Texture").text,
                         "The scene has no Texture.\n")

    def test_prints_spectra_as_colours_and_whole_if_asked(self):
        text = self.good("show", "box.vrnscene", "Material/0").text
        self.assertRegex(text, r"reflectance  RGB 0\.7\d+ 0\.7\d+ 0\.7\d+, 78 pairs from 400 to 704 nm")
        text = self.good("show", "--all", "box.vrnscene", "Material/0").text
        self.assertIn("404", text.split())

    def test_refuses_addresses_that_name_nothing_and_suggests_near_ones(self):
        for address, words in [("Camer/0", "did you mean Camera?"),
                               ("Shape/8", "Shape/0 to Shape/7"), ("Camera/x", "Camera/0 only"),
                               ("Texture/0", "the scene has none"),
                               ("Camera/0/group", "did you mean groups?"),
                               ("Camera/0/groups/Genral", "did you mean General?"),
                               ("Camera/0/groups/General/near_distanc", "did you mean near_distance?"),
                               ("Shape/0/slots/mterial", "did you mean material?"),
                               ("Camera/0/value/data/focal", "did you mean focal_length?"),
                               ("scene/Raytrace", "did you mean Raytracer?"),
                               ("Camera/99999999999", "there is no Camera/99999999999")]:
            self.assertIn(words, self.trouble("show", "box.vrnscene", address).words)

    def test_refuses_a_free_slot(self):
        self.good("set", "box.vrnscene", "Shape/2", "null")
        self.assertIn("is free", self.trouble("show", "box.vrnscene", "Shape/2").words)
        self.assertIn("Shape 2  a free slot", self.good("show", "--all", "box.vrnscene").text)
        self.assertNotIn("Shape 2", self.good("show", "box.vrnscene").text)

    def test_warns_of_references_that_lead_nowhere(self):
        self.good("set", "box.vrnscene", "Material/2", "null")
        self.assertIn("Material 2 (a free slot)", self.good("show", "box.vrnscene", "Shape/4").text)
        self.good("set", "box.vrnscene", "Shape/4/slots/material", "null")
        self.assertIn("none, but it is required", self.good("show", "box.vrnscene", "Shape/4").text)

    def test_shows_no_control_character_of_a_file(self):
        self.good("set", "box.vrnscene", "Shape/0/groups/Target/tag", json.dumps("a\u001b[31mb"))
        self.good("set", "box.vrnscene", "LightProgram/0/text", json.dumps("x\u001b[2Jy\u0007"))
        self.assertNotIn(b"\x1b", self.good("show", "box.vrnscene").out)

    def test_prints_the_dump_of_the_library(self):
        text = self.good("show", "--dump", "box.vrnscene").text
        self.assertIn("CameraPrograms", text)
        self.trouble("show", "--dump", "--json", "box.vrnscene")
        self.trouble("show", "--dump", "box.vrnscene", "Camera/0")

    def test_as_json_is_the_scene_or_what_the_address_names(self):
        document = self.good("show", "--json", "box.vrnscene").json()
        self.assertEqual(document["format"], "vornath-scene")
        self.assertEqual(len(document["objects"]["Shape"]), 8)
        general = self.good("show", "--json", "box.vrnscene", "Camera/0/groups/General").json()
        self.assertEqual(general["near_distance"], 0.5)


class Get(Case):
    def test_prints_values_as_json(self):
        for address, value in [("Camera/0/groups/General/near_distance", 0.5),
                               ("Camera/0/groups/Background/active", True),
                               ("Camera/0/groups/Backplate/mode", "DISABLED"),
                               ("Camera/0/slots/program", 0), ("Camera/0/slots/backplate", None),
                               ("LightGroup/0/slots/emitters", [{"Light": 0}, {"Shape": 1}]),
                               ("scene/Raytracer/ray_epsilon", 1e-05),
                               ("Camera/0/groups/Transformation/matrix/x", [-1, 0, 0, 0]),
                               ("Camera/0/groups/Transformation/matrix/w/2", -0.8),
                               ("Camera/0/value/data/focal_length", 0.035),
                               ("Mesh/0/desc/triangles", 2)]:
            self.assertEqual(self.good("get", "box.vrnscene", address).json(), value, address)

    def test_prints_whole_groups_and_objects(self):
        self.assertEqual(list(self.good("get", "box.vrnscene", "Camera/0/groups/General").json()),
                         ["near_distance", "shutter_open", "shutter_close", "time_start", "time_end"])
        camera = self.good("get", "box.vrnscene", "Camera/0").json()
        self.assertEqual(list(camera), ["groups", "slots", "value"])

    def test_ends_its_output_with_one_line_feed(self):
        self.assertEqual(self.good("get", "box.vrnscene", "Mesh/0/desc/triangles").text, "2\n")

    def test_prints_the_bytes_of_assets_and_the_text_of_programs(self):
        self.assertEqual(len(self.good("get", "--raw", "box.vrnscene", "Mesh/0/bytes").out), 200)
        text = self.good("get", "box.vrnscene", "CameraProgram/0/text").json()
        self.assertEqual(self.good("get", "--raw", "box.vrnscene", "CameraProgram/0/text").text, text)
        self.trouble("get", "--raw", "box.vrnscene", "Camera/0")

    def test_refuses_addresses_that_name_nothing(self):
        for address in ("Camer/0", "Camera/1", "Camera/0/groups/Genral", "Camera/0/x",
                        "Camera/0/groups/General/near_distance/0", "Shape/-1", "a\nb", "\u00e4"):
            self.trouble("get", "box.vrnscene", address)
        self.assertIn("Camera", self.trouble("get", "box.vrnscene", "Camer/0").words)


if __name__ == "__main__":
    main()
