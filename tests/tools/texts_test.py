"""vrn type, value and spectrum."""
import os
import xml.etree.ElementTree

from support import Case, DATA, main


class Type(Case):
    def test_prints_size_alignment_and_layout(self):
        text = self.good("type", "{ float @default=0.5 @min=0.0 gloss; int[3] size; }").text
        for word in ("gloss", "size", "16", "4", "0.5"):
            self.assertIn(word, text)

    def test_as_json_has_the_layout(self):
        document = self.good("type", "--json", "{ float @default=0.5 gloss; float3 n; }").json()
        self.assertEqual((document["size"], document["alignment"]), (32, 16))
        self.assertEqual([(part["path"], part["offset"]) for part in document["layout"]
                          if part["path"]], [("gloss", 0), ("n", 16)])

    def test_reads_standard_input(self):
        self.assertEqual(self.good("type", "--json", "-", stdin=b"int").json()["size"], 4)

    def caret(self, *arguments):
        result = self.run_vrn(*arguments)
        self.assertEqual(result.code, 2)
        lines = result.words.splitlines()
        self.assertEqual(len(lines), 3, result.words)
        self.assertRegex(lines[2], r"\A *\^\Z")
        return lines[0], lines[1], lines[2].index("^")

    def test_of_a_wrong_text_shows_the_place_with_a_caret(self):
        first, line, place = self.caret("type", "{ float a b; }")
        self.assertRegex(first, r"^vrn type: TEXT: column 11: ")
        self.assertEqual((line, place), ("  { float a b; }", 12))
        first, line, place = self.caret("type", "{\n  float a;\n  flot b;\n}")
        self.assertRegex(first, r"^vrn type: TEXT: line 3, column \d+: ")
        self.assertTrue(line.strip().startswith("flot"))

    def test_of_a_long_wrong_text_shows_the_part_with_the_place(self):
        _, line, place = self.caret("type", "{ " + "float a; " * 300 + "}")
        self.assertLess(len(line), 120)
        self.assertLess(place, len(line) + 1)

    def test_of_any_text_is_trouble_in_clear_words(self):
        for text in ("", "x", "{", "\x01", "\u00e4\u00f6", "float[", "[" * 5000, "{" * 5000):
            result = self.run_vrn("type", text)
            self.assertEqual(result.code, 2, text[:10])
            self.assertRegex(result.words, r"\Avrn type: [^\n]+\n")
        self.trouble("type", "-", stdin=b"int\0")


class ValueText(Case):
    def test_prints_the_type_and_the_parts(self):
        text = self.good("value", "{ a = 1; b = [ 1.0, 2.0 ]; }").text
        self.assertIn("int a", text)
        document = self.good("value", "--json", "{ a = 1; b = [ 1.0, 2.0 ]; }").json()
        self.assertEqual(document["data"], {"a": 1, "b": [1, 2]})

    def test_as_a_type_reads_what_people_mean(self):
        kind = "{ enum { LOW; HIGH; } mode; float @default=0.5 gloss; float x; }"
        document = self.good("value", "--json", "{ mode = HIGH; x = 2 }", "--as", kind).json()
        self.assertEqual(document["data"], {"mode": "HIGH", "gloss": 0.5, "x": 2})
        result = self.run_vrn("value", "{ mode = HIHG; }", "--as", kind)
        self.assertEqual(result.code, 2)
        self.assertIn("HIGH", result.words.splitlines()[0])
        self.assertRegex(result.words.splitlines()[2], r"\A *\^\Z")

    def test_coerced_keeps_what_fits(self):
        document = self.good("value", "--json", "{ a = 1; }", "--coerce", "{ int a; int b; }").json()
        self.assertEqual(document["data"], {"a": 1, "b": 0})

    def test_coerced_fails_for_what_does_not_fit_unless_it_is_lenient(self):
        words = ["value", "--json", "{ a = 1.5; }", "--coerce", "{ int @default=7 a; }"]
        self.assertIn("--lenient", self.trouble(*words).words)
        self.assertEqual(self.good(*words, "--lenient").json()["data"], {"a": 7})
        self.trouble("value", "{ a = 1; }", "--lenient")

    def test_reads_negative_numbers_and_arrays_as_they_stand(self):
        self.assertEqual(self.good("value", "--json", "-3").json()["data"], -3)
        self.assertEqual(self.good("value", "--json", "[ 1, 2 ]").json()["data"], [1, 2])

    def test_of_a_wrong_text_or_type_is_trouble(self):
        for words in [("",), ("{",), ("1", "--as", "x"), ("1", "--as", ""), ("1", "--coerce", "{"),
                      ("vrntval",), ("x" * 10000,)]:
            result = self.run_vrn("value", *words)
            self.assertEqual(result.code, 2, words)
            self.assertRegex(result.words, r"\Avrn value: [^\n]+\n")


class Spectrum(Case):
    def near(self, value, expected, tolerance):
        self.assertLessEqual(abs(value - expected), tolerance)

    def test_of_a_flat_reflectance_is_grey(self):
        for text in ("[ 400.0, 0.5, 700.0, 0.5 ]", "float3(0.5, 0.5, 0.5)", "0.5",
                     "{ encoding = RGB : enum { LUMINANCE; RGB; SPECTRAL; };"
                     " spectrum = &[ 0.5, 0.5, 0.5 ]; }"):
            document = self.good("spectrum", "--json", text).json()
            # The observer's table has four digits, so flat light is grey to a percent.
            for component in document["rgb"]:
                self.near(component, 0.5, 0.005)
            self.near(document["luminance"], 0.5, 0.005)
            self.assertEqual([(band["from"], band["to"]) for band in document["bands"]],
                             [(400, 450), (450, 500), (500, 550), (550, 600), (600, 650), (650, 700)])

    def test_averages_bands(self):
        document = self.good("spectrum", "--json", "[ 400.0, 1.0, 425.0, 3.0, 450.0, 5.0, 700.0, 5.0 ]"
                             ).json()
        means = [band["mean"] for band in document["bands"]]
        self.near(means[0], 2, 1e-5)
        self.near(means[1], 5, 1e-5)
        document = self.good("spectrum", "--json", "--band", "100", "1.0").json()
        self.assertEqual(len(document["bands"]), 3)
        self.trouble("spectrum", "--band", "1", "1.0")

    def test_of_a_table_takes_each_column(self):
        document = self.good("spectrum", "--json",
                             os.path.join(DATA, "cornell_box_reflectance.csv")).json()
        self.assertEqual([entry["name"] for entry in document["spectra"]], ["white", "green", "red"])
        white, green, red = [entry["rgb"] for entry in document["spectra"]]
        self.assertGreater(min(white), 0.7)
        self.assertEqual(max(green), green[1])
        self.assertEqual(max(red), red[0])

    def test_of_a_table_is_printed_for_people(self):
        text = self.good("spectrum", os.path.join(DATA, "cornell_box_light.csv")).text
        self.assertRegex(text, r"(?m)^emission  spectral, 4 samples from 400 to 800 nm$")
        for label in ("RGB  ", "RGB under E  ", "luminance  ", "400 to 450 nm  "):
            self.assertRegex(text, r"(?m)^  " + label)
        joined = self.good("spectrum", "--linear", os.path.join(DATA, "cornell_box_light.csv")).text
        self.assertNotEqual(joined, text)

    def test_reads_a_table_from_a_stream(self):
        text = self.good("spectrum", "-", stdin=b"wavelength,a\n400,1\n700,1\n").text
        self.assertIn("a  spectral", text)

    def test_plots_a_picture_that_is_well_formed(self):
        self.good("spectrum", os.path.join(DATA, "cornell_box_reflectance.csv"), "--plot", "out.svg")
        picture = xml.etree.ElementTree.fromstring(self.read("out.svg"))
        name = "{http://www.w3.org/2000/svg}"
        self.assertEqual(picture.tag, name + "svg")
        self.assertEqual(len(picture.findall(name + "path")), 3)
        words = [text.text for text in picture.findall(name + "text")]
        for word in ("white", "green", "red", "wavelength (nm)"):
            self.assertIn(word, words)
        self.assertNotIn(b"href", self.read("out.svg"))
        printed = self.good("spectrum", "0.5", "--plot", "-").out
        xml.etree.ElementTree.fromstring(printed)

    def test_of_what_is_no_spectrum_is_trouble(self):
        for text in ("{ a = 1; }", "true", "[ 400.0 ]", "[ 500.0, 1.0, 400.0, 1.0 ]",
                     "[ -400.0, 1.0, 500.0, 1.0 ]"):
            self.trouble("spectrum", text)
        self.assertEqual(self.run_vrn("spectrum", "{").code, 2)

    def test_of_a_wrong_table_is_trouble_with_the_line(self):
        for table, words in [("", "two rows"), ("wavelength,a\n", "two rows"),
                             ("400,1\n500,1\n", "line 1"), ("wavelength,a\n400,1\n500,x\n", "line 3"),
                             ("wavelength,a\n400,1\n500\n", "line 3"),
                             ("wavelength,a\n500,1\n400,1\n", "not greater"),
                             ("wavelength,a\n400,nan\n500,1\n", "line 2"), ("a\n\n", "line 1")]:
            self.write("bad.csv", table)
            self.assertIn(words, self.trouble("spectrum", "bad.csv").words)
        self.trouble("spectrum", "missing.csv")
        self.trouble("spectrum", "box.vrnscene")


if __name__ == "__main__":
    main()
