#!/usr/bin/env python3
"""Sets the version in the scene files of the fuzz corpus, and in the dictionary, to the version in
src/scene/scene_file.cpp. Run it after you increment that version: the reader rejects inputs of other
versions at once. Numbers that cannot have been a version do not change.
usage: scripts/raise_corpus_version.py [SOURCE_FOLDER]
"""
import pathlib
import re
import struct
import sys

MAGIC = b"VRNSCENE"
NO_VERSION = 0x10000


def main():
    root = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent
    source = (root / "src/scene/scene_file.cpp").read_text()
    found = re.search(r"kVersion = (\d+);", source)
    if not found:
        sys.exit("No version found in src/scene/scene_file.cpp.")
    version = int(found.group(1))
    word = struct.pack("<I", version)

    raised = 0
    corpora = [root / "fuzz/corpus" / name for name in ("scene_file", "scene_check")]
    for path in sorted(path for corpus in corpora if corpus.is_dir() for path in corpus.iterdir()):
        data = path.read_bytes()
        if data[:8] != MAGIC or len(data) < 12 or data[8:12] == word:
            continue
        if struct.unpack("<I", data[8:12])[0] >= NO_VERSION:
            continue
        path.write_bytes(MAGIC + word + data[12:])
        raised += 1

    dictionary = root / "fuzz/scene_file.dict"
    escaped = "".join(f"\\x{byte:02x}" for byte in word)
    text = dictionary.read_text()
    changed = re.sub(r'"VRNSCENE(\\x[0-9a-f]{2}){4}"', lambda _: f'"VRNSCENE{escaped}"', text)
    if changed != text:
        dictionary.write_text(changed)
    print(f"{raised} inputs were changed to version {version}; the dictionary "
          f"{'was changed' if changed != text else 'is up to date'}.")


if __name__ == "__main__":
    main()
