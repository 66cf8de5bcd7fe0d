"""What scripts/write_catalogue.py says of two pages of the catalogue.
usage: write_catalogue_test.py SOURCE_FOLDER"""
import pathlib
import sys
import unittest

SOURCE = pathlib.Path(sys.argv.pop())
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCE / "scripts"))
import write_catalogue  # noqa: E402

PAGE = (SOURCE / "docs/catalogue.md").read_text()


def refusal(old, new):
    try:
        write_catalogue.check(old, new)
    except SystemExit as end:
        return str(end)
    return ""


def replaced(old, new):
    assert old in PAGE, old
    return PAGE.replace(old, new, 1)


class Check(unittest.TestCase):
    def test_names_group_and_field_that_moved_under_an_unchanged_version(self):
        moved = replaced("| `near_distance` | 0 | float |", "| `near_distance` | 4 | float |")
        self.assertIn('Camera "General": near_distance: float at 0 before, float at 4 now',
                      refusal(PAGE, moved))

    def test_refuses_each_change_of_the_layout(self):
        for old, new in [("| `near_distance` | 0 | float |", "| `near_distance` | 0 | int |"),
                         ("enum DISABLED, FIT_SIZE", "enum FIT_SIZE, DISABLED"),
                         ("20 bytes at 64", "24 bytes at 64"),
                         ("Its groups take 208 bytes.", "Its groups take 224 bytes."),
                         ("| 1 | `backplate` | one, optional", "| 1 | `backplate` | list"),
                         ("## 8: Camera", "## 8: Cameras"),
                         (", with a value for its program", "")]:
            self.assertIn("still", refusal(PAGE, replaced(old, new)), new)

    def test_allows_a_layout_of_another_version(self):
        version, _ = write_catalogue.read_page(PAGE)
        newer = replaced("20 bytes at 64", "24 bytes at 64").replace(
            f"version {version}.", f"version {version + 1}.")
        self.assertEqual(refusal(PAGE, newer), "")
        self.assertIn("went back", refusal(newer, PAGE))

    def test_allows_words_and_defaults_to_change(self):
        for old, new in [("Near distance offset in meter.", "How near a camera sees."),
                         ("| float | `1.7` |", "| float | `1.8` |"), ("from `0.0` to `1.0`", "")]:
            self.assertEqual(refusal(PAGE, replaced(old, new)), "", new)

    def test_writes_the_document_that_stands(self):
        version, _ = write_catalogue.read_page(PAGE)
        document = (SOURCE / "docs/scene_format.md").read_text()
        self.assertEqual(write_catalogue.scene_format(document, PAGE, version), document)
        newer = write_catalogue.scene_format(document, replaced("take 208", "take 224"), version + 1)
        self.assertIn("groups 224", newer)
        self.assertEqual(newer.count(str(version + 1)), 3)


if __name__ == "__main__":
    unittest.main()
