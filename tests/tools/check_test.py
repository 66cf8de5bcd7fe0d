"""vrn info and vrn check."""
from support import Case, box_bytes, main


class Info(Case):
    def test_tells_the_numbers_of_a_scene(self):
        text = self.good("info", "box.vrnscene").text
        self.assertRegex(text, r"(?m)^box.vrnscene$")
        self.assertRegex(text, r"(?m)^  version +173$")
        self.assertRegex(text, r"(?m)^  size +13\.3 KiB \(13,597 bytes\)$")
        self.assertRegex(text, r"(?m)^  id +[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$")
        self.assertRegex(text, r"(?m)^    Shape +8$")
        self.assertRegex(text, r"(?m)^  to open it +at most [0-9.]+ MiB of memory$")

    def test_as_json_has_the_members_of_a_report(self):
        document = self.good("info", "--json", "box.vrnscene").json()
        self.assertEqual(document["file"], "box.vrnscene")
        self.assertEqual(document["size"], len(box_bytes()))
        self.assertEqual(document["info"]["version"], 173)
        self.assertEqual(document["info"]["objects"]["Shape"], {"slots": 8, "live": 8})
        self.assertEqual(document["info"]["assetBytes"], 6 * 200 + 2 * 1000)

    def test_of_several_files_is_an_array(self):
        documents = self.good("info", "--json", "box.vrnscene", "box.vrnscene").json()
        self.assertEqual([document["valid"] for document in documents], [True, True])
        result = self.run_vrn("info", "--json", "box.vrnscene", "missing")
        self.assertEqual(result.code, 2)
        self.assertEqual([document["valid"] for document in result.json()], [True, False])

    def test_counts_free_slots(self):
        self.good("set", "box.vrnscene", "Shape/2", "null")
        self.assertRegex(self.good("info", "box.vrnscene").text,
                         r"(?m)^    Shape +7  and 1 free slot$")


class Check(Case):
    def test_exits_with_0_for_a_good_file(self):
        self.assertEqual(self.good("check", "box.vrnscene").text,
                         "box.vrnscene: no errors, no warnings\n")

    def test_exits_with_1_for_a_damaged_file_and_prints_its_errors(self):
        self.write("bad", box_bytes()[:5000])
        text = self.found("check", "bad").text
        self.assertTrue(text.startswith("bad: 1 error; it must not be read\n"), text)
        self.assertRegex(text, r"(?m)^  error    FILE_TRUNCATED  Camera/0 at byte \d+$")

    def test_as_json_is_a_report(self):
        self.write("bad", box_bytes()[:5000])
        document = self.found("check", "--json", "bad").json()
        self.assertEqual((document["file"], document["size"], document["valid"]),
                         ("bad", 5000, False))
        self.assertEqual((document["issues"]["errors"], document["issues"]["warnings"],
                          document["issues"]["truncated"]), (1, 0, False))
        message = document["issues"]["messages"][0]
        self.assertEqual((message["code"], message["severity"], message["address"]),
                         ("FILE_TRUNCATED", "error", "Camera/0"))
        self.assertIsInstance(message["offset"], int)

    def warn(self):
        # A required slot that leads nowhere, and a field beyond its maximum.
        self.good("set", "box.vrnscene", "Shape/1/slots/material", "null")
        self.good("set", "box.vrnscene", "Camera/0/groups/Background/red", "2")

    def test_exits_with_0_for_warnings_and_with_1_if_it_is_strict(self):
        self.warn()
        text = self.good("check", "box.vrnscene").text
        self.assertTrue(text.startswith("box.vrnscene: no errors, 2 warnings\n"), text)
        self.assertRegex(text, r"(?m)^  warning  \w+ +Camera/0/groups/Background/red at byte")
        self.assertRegex(text, r"(?m)^  warning  \w+ +Shape/1/slots/material at byte")
        self.assertEqual(self.found("check", "--strict", "box.vrnscene").text, text)
        self.assertEqual(self.good("check", "--json", "box.vrnscene").json()["issues"]["warnings"], 2)
        self.found("check", "--strict", "--json", "box.vrnscene")

    def test_of_several_files_exits_with_the_worst(self):
        self.write("bad", box_bytes()[:5000])
        result = self.found("check", "box.vrnscene", "bad")
        self.assertIn("box.vrnscene: no errors", result.text)
        self.assertIn("bad: 1 error", result.text)
        self.assertEqual(self.run_vrn("check", "bad", "missing").code, 2)
        documents = self.found("check", "--json", "box.vrnscene", "bad").json()
        self.assertEqual([document["valid"] for document in documents], [True, False])

    def test_prints_nothing_about_good_files_if_it_is_quiet(self):
        self.write("bad", box_bytes()[:5000])
        self.assertEqual(self.found("check", "-q", "box.vrnscene", "bad").text,
                         "bad: 1 error; it must not be read\n")

    def test_refuses_a_file_that_takes_more_memory_than_allowed(self):
        self.assertIn("MEMORY_EXCEEDED",
                      self.found("check", "--max-memory", "64KiB", "box.vrnscene").text)

    def test_prints_as_many_messages_as_asked_for(self):
        self.warn()
        text = self.good("check", "--max-messages", "1", "box.vrnscene").text
        self.assertEqual(text.count("  warning  "), 1)
        self.assertIn("and 1 more", text)


if __name__ == "__main__":
    main()
