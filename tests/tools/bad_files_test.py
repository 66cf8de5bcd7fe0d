"""Files that no scene is in, that cannot be read or written, and runs that are interrupted."""
import os
import signal
import stat
import subprocess
import time

from support import NO_COUNTS, Case, box_bytes, main, without_complaints

READERS = [("info", "FILE"), ("check", "FILE"), ("show", "FILE"), ("get", "FILE", "Camera/0"),
           ("set", "FILE", "Camera/0/groups/General/near_distance", "1"), ("export", "FILE"),
           ("diff", "FILE", "box.vrnscene"), ("diff", "box.vrnscene", "FILE"),
           ("patch", "FILE", "patch.json", "-o", "out"),
           ("merge", "FILE", "box.vrnscene", "-o", "out"),
           ("merge", "box.vrnscene", "FILE", "-o", "out"), ("digest", "FILE")]


def with_file(words, name):
    return [name if word == "FILE" else word for word in words]


class BadFile(Case):
    def setUp(self):
        super().setUp()
        self.write("patch.json", "[]")

    def refuses(self, name, readers=READERS):
        for words in readers:
            before = self.names()
            self.trouble(*with_file(words, name))
            self.assertEqual(self.names(), before, words)

    def test_that_is_missing_is_trouble(self):
        self.refuses("missing.vrnscene")
        self.refuses("missing/folder.vrnscene")

    def test_that_is_a_folder_is_trouble(self):
        os.mkdir(self.path("folder"))
        self.refuses("folder")

    def test_that_is_a_fifo_is_trouble_and_not_waited_for(self):
        os.mkfifo(self.path("fifo"))
        self.refuses("fifo")
        for words in [("build", "fifo"), ("patch", "box.vrnscene", "fifo", "-o", "out"),
                      ("catalogue", "--compare", "fifo"), ("spectrum", "fifo")]:
            self.trouble(*words)

    def test_that_is_a_device_is_trouble(self):
        self.refuses("/dev/null")
        self.refuses("/dev/zero")

    def test_that_is_no_scene_is_refused(self):
        readers = [words for words in READERS if words[0] != "check"]
        for content in (b"", b"V", b"VRNSCENE", b"VRNSCENE\xad\0\0\0", b"a text\n" * 100,
                        os.urandom(5000)):
            self.write("bad", content)
            self.refuses("bad", readers)
            self.found("check", "bad")

    def test_of_another_version_is_refused_with_its_version(self):
        scene = bytearray(box_bytes())
        scene[8] += 1
        self.write("bad", scene)
        self.refuses("bad", [words for words in READERS if words[0] != "check"])
        self.assertIn("FILE_VERSION", self.trouble("show", "bad").words)
        self.assertIn("FILE_VERSION", self.found("check", "bad").text)

    def test_that_is_cut_is_refused_with_the_first_error_and_the_way_to_all(self):
        self.write("bad file", box_bytes()[:7000])
        words = self.trouble("show", "bad file").words
        self.assertRegex(words, r"^vrn show: bad file: it is not safe to read: FILE_TRUNCATED at "
                                r"byte \d+, [A-Za-z]+/\d+.*: .*; run vrn check 'bad file'\n$")

    def test_that_is_cut_at_any_place_never_crashes(self):
        scene = box_bytes()
        for length in range(0, len(scene), 499):
            self.write("bad", scene[:length])
            self.assertIn(self.run_vrn("show", "bad").code, (0, 2))
            self.assertIn(self.run_vrn("check", "bad").code, (0, 1))

    def test_that_is_damaged_at_any_place_never_crashes(self):
        scene = box_bytes()
        for place in range(8, len(scene), 311):
            damaged = bytearray(scene)
            damaged[place] ^= 0xFF
            self.write("bad", damaged)
            self.assertIn(self.run_vrn("show", "--all", "bad").code, (0, 2))

    def test_without_the_right_to_read_is_trouble(self):
        self.as_other_user()
        os.chmod(self.path("box.vrnscene"), 0)
        self.trouble("show", "box.vrnscene")

    def test_among_several_does_not_stop_the_others(self):
        for command in ("info", "check", "digest"):
            result = self.run_vrn(command, "box.vrnscene", "missing", "box.vrnscene")
            self.assertEqual(result.code, 2)
            self.assertEqual(result.text.count("box.vrnscene"), 2, command)
            self.assertEqual(result.words.count("\n"), 1)


class Target(Case):
    WRITERS = [("set", "box.vrnscene", "Camera/0/groups/General/near_distance", "0.25", "-o", "OUT"),
               ("export", "box.vrnscene", "-o", "OUT"), ("build", "box.json", "-o", "OUT"),
               ("export", "--digests", "box.vrnscene", "-o", "OUT"),
               ("patch", "box.vrnscene", "patch.json", "-o", "OUT"),
               ("merge", "box.vrnscene", "box.vrnscene", "-o", "OUT"),
               ("catalogue", "-o", "OUT"), ("spectrum", "float3(1.0, 1.0, 1.0)", "--plot", "OUT")]

    def setUp(self):
        super().setUp()
        self.write("patch.json", "[]")
        self.good("export", "--inline", "box.vrnscene", "-o", "box.json")

    def test_in_a_missing_folder_is_trouble(self):
        for words in self.WRITERS:
            before = self.names()
            self.trouble(*[word.replace("OUT", "missing/out") for word in words])
            self.assertEqual(self.names(), before)

    def test_that_is_a_folder_a_fifo_or_a_device_is_trouble(self):
        os.mkdir(self.path("folder"))
        os.mkfifo(self.path("fifo"))
        for words in self.WRITERS:
            for target in ("folder", "fifo", "/dev/full"):
                before = self.names()
                self.trouble(*[word.replace("OUT", target) for word in words])
                self.assertEqual(self.names(), before)

    def test_in_a_read_only_folder_is_trouble_and_stays(self):
        os.mkdir(self.path("kept"))
        self.write("kept/out", "old")
        self.as_other_user()
        os.chmod(self.path("kept"), 0o500)
        self.addCleanup(os.chmod, self.path("kept"), 0o700)
        for words in self.WRITERS:
            self.trouble(*[word.replace("OUT", "kept/out") for word in words])
            self.assertEqual(self.read("kept/out"), b"old")

    def test_is_replaced_whole_and_keeps_its_permissions(self):
        for words in self.WRITERS:
            self.write("out", "old")
            os.chmod(self.path("out"), 0o640)
            self.good(*[word.replace("OUT", "out") for word in words])
            self.assertNotEqual(self.read("out"), b"old")
            self.assertEqual(stat.S_IMODE(os.stat(self.path("out")).st_mode), 0o640, words)

    def test_behind_a_link_is_replaced_and_the_link_stays(self):
        self.write("real", "old")
        os.symlink("real", self.path("link"))
        self.good("set", "box.vrnscene", "Camera/0/groups/General/near_distance", "0.25", "-o", "link")
        self.assertTrue(os.path.islink(self.path("link")))
        self.good("check", "real")

    def test_stays_if_there_is_a_limit_on_the_size_of_files(self):
        self.write("out", "old")
        for words in self.WRITERS:
            if words[0] == "spectrum":
                continue
            process = subprocess.run(
                ["/bin/bash", "-c", 'ulimit -f 1; exec "$@"', "sh", os.environ["VRN"],
                 *[word.replace("OUT", "out") for word in words]],
                cwd=self.folder, capture_output=True, env=dict(os.environ, **NO_COUNTS))
            self.assertEqual(process.returncode, 2, (words, process.stderr))
            self.assertEqual(without_complaints(process.stderr).count(b"\n"), 1)
            self.assertEqual(self.read("out"), b"old")

    def test_that_is_a_stream_takes_the_scene(self):
        for words in self.WRITERS:
            if words[0] in ("set", "build", "patch", "merge"):
                result = self.good(*[word.replace("OUT", "-") for word in words])
                self.assertTrue(result.out.startswith(b"VRNSCENE"))
                self.write("made", result.out)
                self.good("check", "made")


class Interrupted(Case):
    def big_scene(self):
        """A scene with an asset of 96 MiB, which takes a while to write."""
        size = 96 << 20
        self.write("graph.bin", b"")
        with open(self.path("graph.bin"), "r+b") as file:
            file.truncate(size)
        import hashlib
        digest = hashlib.sha256(b"\0" * size).hexdigest()
        self.write("big.json", """{ "format": "vornath-scene", "formatVersion": 1, "objects": {
          "MaterialGraph": [ { "desc": { "binarySize": %d },
            "bytes": { "file": "graph.bin", "size": %d, "sha256": "%s" } } ] } }"""
                   % (size, size, digest))
        self.good("build", "big.json", "-o", "big.vrnscene")

    def test_runs_leave_the_old_file_and_nothing_beside_it(self):
        self.big_scene()
        old = self.read("big.vrnscene")
        names = self.names()
        killed = 0
        for step in range(24):
            process = self.start("set", "big.vrnscene", "scene/Raytracer/ray_epsilon",
                                 "0.%03d" % (step + 1), stderr=subprocess.DEVNULL)
            time.sleep(0.004 * step)
            process.send_signal(signal.SIGKILL)
            killed += process.wait() == -signal.SIGKILL
            self.assertEqual(self.names(), names)
            now = self.read("big.vrnscene")
            if now != old:
                # The run was faster than the signal, and wrote all of it.
                self.good("check", "big.vrnscene")
                old = now
        self.assertGreater(killed, 0)


if __name__ == "__main__":
    main()
