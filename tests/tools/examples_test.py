"""The examples in the help of each command, and the commands of docs/vrn.md, run as they stand."""
import os
import re
import shutil
import subprocess

from support import COMMANDS, PAGES, SOURCE, Case, main


class Examples(Case):
    def shell(self, line):
        path = PAGES + ":" + os.environ["PATH"]
        return subprocess.run(["bash", "-o", "pipefail", "-c", line], cwd=self.folder,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              env=dict(os.environ, PATH=path, PAGER="cat", GIT_CONFIG_NOSYSTEM="1",
                                       TERM="dumb", HOME=self.folder))

    def test_of_the_help_are_commands_that_vrn_takes(self):
        scene = self.read("box.vrnscene")
        os.mkdir(self.path("scenes"))
        for name in ("old", "new", "a", "b", "room", "chair", "table", "download", "scenes/a"):
            self.write(name + ".vrnscene", scene)
        self.write("change.json", "[]")
        self.write("reflectance.csv", "wavelength,a\n400,0.5\n700,0.5\n")
        small = '{ "format": "vornath-scene", "formatVersion": 1 }'
        self.write("box.json", small)
        self.write("scene.json", small)
        for command in COMMANDS:
            examples = self.good(command, "--help").text.split("Examples:\n")[1].splitlines()
            self.assertGreater(len(examples), 0)
            for line in examples:
                if "jq" in line or "less" in line:
                    continue
                process = self.shell(line)
                self.assertIn(process.returncode, (0, 1), (line, process.stdout))

    def test_of_the_guide_print_what_the_guide_shows(self):
        with open(os.path.join(SOURCE, "docs", "vrn.md"), encoding="utf-8") as file:
            guide = file.read()
        blocks = re.findall(r"```console\n(.*?)```", guide, re.S)
        self.assertGreater(len(blocks), 8)
        for block in blocks:
            for part in re.split(r"(?m)^\$ ", block)[1:]:
                line, _, expected = part.partition("\n")
                if "git " in line and not shutil.which("git"):
                    return
                process = self.shell(line)
                printed = process.stdout.decode("utf-8")
                self.compare(line, expected, printed)

    def compare(self, line, expected, printed):
        """Compares line by line. A line of dots stands for any lines; ids and digests may differ."""
        pattern = ""
        for wanted in expected.rstrip("\n").splitlines():
            if wanted.strip() == "...":
                pattern += r"(?:.*\n)*?"
                continue
            escaped = re.escape(wanted)
            escaped = re.sub(r"[0-9a-f]{8}\\-(?:[0-9a-f]{4}\\-){3}[0-9a-f]{12}", r"[0-9a-f-]{36}",
                             escaped)
            escaped = re.sub(r"sha256:[0-9a-f]{64}", r"sha256:[0-9a-f]{64}", escaped)
            pattern += escaped + r"\n"
        if not re.fullmatch(pattern, printed):
            self.fail("$ %s\nprints\n%s\nand not\n%s" % (line, printed, expected))


if __name__ == "__main__":
    main()
