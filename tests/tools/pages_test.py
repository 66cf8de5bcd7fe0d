"""The manual pages and the completions are in step with the options of the commands."""
import os
import re
import shutil
import subprocess
import unittest

from support import COMMANDS, PAGES, Case, main


def options_of(text):
    """The options in the lists of a help text."""
    options = set()
    for line in text.split("Examples:")[0].splitlines():
        match = re.match(r"  (?:(-\w), |    )(--[a-z-]+)", line)
        if match:
            options.update(name for name in match.groups() if name)
    return options


def page_of(name):
    with open(os.path.join(PAGES, "man", name + ".1"), encoding="utf-8") as file:
        return file.read()


def completion(name):
    with open(os.path.join(PAGES, "completions", name), encoding="utf-8") as file:
        return file.read()


class Pages(Case):
    def test_of_each_command_have_exactly_its_options(self):
        for command in COMMANDS:
            page = page_of("vrn-" + command)
            section = page[page.index(".SH OPTIONS"):page.index(".SH EXIT STATUS")]
            listed = set()
            for line in section.splitlines():
                if line.startswith("\\fB\\-"):
                    listed.update(re.findall(r"\\fB(-{1,2}[a-z-]+)\\fR", line.replace("\\-", "-")))
            self.assertEqual(listed, options_of(self.good(command, "--help").text), command)

    def test_have_the_arguments_and_the_examples_of_the_help(self):
        for command in COMMANDS:
            page = page_of("vrn-" + command).replace("\\-", "-")
            text = self.good(command, "--help").text
            for line in re.findall(r"(?m)^  (\S+?)(?:\.\.\.)?\s{2,}\S",
                                   text.split("Options:")[0].split("Arguments:")[1]):
                self.assertIn("\\fI%s\\fR" % line, page)
            for example in text.split("Examples:\n")[1].splitlines():
                plain = page.replace("\\(aq", "'").replace("\\e", "\\")
                self.assertIn(example.strip(), plain)

    def test_of_vrn_lists_all_commands(self):
        page = page_of("vrn")
        for command in COMMANDS:
            self.assertIn(".TP\n\\fB%s\\fR\n" % command, page)
            self.assertIn("vrn\\-%s (1)" % command, page)

    @unittest.skipUnless(shutil.which("man") or shutil.which("groff"), "there is no formatter")
    def test_are_formatted_without_a_warning(self):
        for command in ["vrn"] + ["vrn-" + name for name in COMMANDS]:
            path = os.path.join(PAGES, "man", command + ".1")
            process = subprocess.run(["groff", "-man", "-Tutf8", "-wall", "-z", path],
                                     capture_output=True)
            self.assertEqual((process.returncode, process.stderr), (0, b""), command)


class Bash(Case):
    def complete(self, *words):
        script = (". '%s'\nCOMP_WORDS=(%s)\nCOMP_CWORD=%d\n_vrn\nprintf '%%s\\n' \"${COMPREPLY[@]}\"\n"
                  % (os.path.join(PAGES, "completions", "vrn.bash"),
                     " ".join("'%s'" % word for word in words), len(words) - 1))
        # Of other programs, only those of this test.
        os.makedirs(self.path("bin"), exist_ok=True)
        for name in ("sed", "sort", "grep", "tr"):
            if not os.path.lexists(self.path("bin/" + name)):
                os.symlink(shutil.which(name), self.path("bin/" + name))
        process = subprocess.run([shutil.which("bash"), "--norc", "-c", script], cwd=self.folder,
                                 capture_output=True, env={**os.environ, "PATH": self.path("bin")})
        self.assertEqual(process.stderr, b"")
        return set(process.stdout.decode("utf-8").split())

    def test_completes_commands(self):
        self.assertEqual(self.complete("vrn", ""), set(COMMANDS) | {"help", "--help", "--version"})
        self.assertEqual(self.complete("vrn", "ca"), {"catalogue"})
        self.assertEqual(self.complete("vrn", "help", "ch"), {"check"})

    def test_completes_exactly_the_options_of_a_command(self):
        for command in COMMANDS:
            self.assertEqual(self.complete("vrn", command, "-"),
                             options_of(self.good(command, "--help").text), command)

    def test_completes_programs_of_their_own(self):
        self.complete("vrn", "")  # makes the folder
        for name, text in (("vrn", 'exec "vrn-$@"'),
                           ("vrn-paint", 'echo "  -o, --output OUT  the [--picture]\n      --dry"')):
            with open(self.path("bin/" + name), "w", encoding="utf-8") as file:
                file.write("#!/bin/sh\n" + text + "\n")
            os.chmod(self.path("bin/" + name), 0o755)
        self.assertEqual(self.complete("vrn", "pa"), {"paint", "patch"})
        self.assertEqual(self.complete("vrn", "paint", "-"),
                         {"-o", "--output", "--picture", "--dry"})
        self.assertEqual(self.complete("vrn", "paint", "--p"), {"--picture"})
        self.assertEqual(self.complete("vrn", "paint", "b"), {"bin", "box.vrnscene"})
        self.assertEqual(self.complete("vrn", "absent", "--"), set())

    def test_completes_values(self):
        self.assertEqual(self.complete("vrn", "catalogue", "--format", ""),
                         {"text", "json", "schema", "html", "markdown"})
        self.assertEqual(self.complete("vrn", "show", "--color", "n"), {"never"})
        self.assertIn("Camera", self.complete("vrn", "catalogue", "Cam"))
        self.assertEqual(self.complete("vrn", "check", "--max-memory", ""), set())

    def test_completes_scene_files_and_folders(self):
        self.write("notes.txt", "")
        os.mkdir(self.path("folder"))
        self.assertEqual(self.complete("vrn", "check", ""), {"bin", "box.vrnscene", "folder"})
        self.assertEqual(self.complete("vrn", "check", "n"), {"notes.txt"})


class OtherShells(Case):
    def test_fish_has_exactly_the_options_of_each_command(self):
        text = completion("vrn.fish")
        for command in COMMANDS:
            listed = set()
            for line in text.splitlines():
                if "-n '__fish_seen_subcommand_from %s'" % command not in line:
                    continue
                line = line.split(" -d ")[0]
                listed.update("--" + name for name in re.findall(r" -l ([a-z-]+)", line))
                listed.update("-" + name for name in re.findall(r" -s (\w)", line))
            self.assertEqual(listed, options_of(self.good(command, "--help").text), command)

    def test_zsh_has_exactly_the_options_of_each_command(self):
        text = completion("_vrn")
        for command in COMMANDS:
            part = text[text.index("        %s)\n" % command):]
            part = part[:part.index(";;")]
            listed = set()
            for line in part.splitlines():
                line = line.strip()
                both = re.match(r"'\([^)]*\)'\{(-\w),(--[a-z-]+)=?\}", line)
                one = re.match(r"'(--[a-z-]+)=?\[", line)
                if both:
                    listed.update(both.groups())
                if one:
                    listed.add(one.group(1))
            self.assertEqual(listed, options_of(self.good(command, "--help").text), command)

    def test_are_of_a_form_that_their_shells_take(self):
        for shell, name in (("zsh", "_vrn"), ("fish", "vrn.fish"), ("bash", "vrn.bash")):
            if not shutil.which(shell):
                continue
            process = subprocess.run([shell, "-n", os.path.join(PAGES, "completions", name)],
                                     capture_output=True)
            self.assertEqual((process.returncode, process.stderr), (0, b""), shell)


if __name__ == "__main__":
    main()
