"""What holds for all commands: exit codes, words, streams, colours, suggestions, other programs."""
import os
import shutil
import subprocess
import unittest

from support import COMMANDS, VRN, Case, main


class Help(Case):
    def test_is_printed_for_each_command(self):
        for command in COMMANDS:
            text = self.good(command, "--help").text
            self.assertTrue(text.startswith("vrn %s: " % command), text)
            self.assertIn("usage: vrn %s [OPTIONS]" % command, text)
            self.assertEqual(self.good(command, "-h").text, text)
            self.assertEqual(self.good("help", command).text, text)

    def test_of_vrn_lists_all_commands(self):
        text = self.good("--help").text
        for command in COMMANDS:
            self.assertRegex(text, r"(?m)^  %s +\S" % command)
        self.assertEqual(self.good("help").text, text)

    def test_is_printed_also_where_arguments_are_missing_or_wrong(self):
        self.good("set", "--help")
        self.good("check", "no such file", "--help")

    def test_takes_no_more_than_a_hundred_columns(self):
        for command in COMMANDS:
            text = self.good(command, "--help").text
            for line in text.split("Examples:")[0].splitlines():
                self.assertLessEqual(len(line), 100, line)


class Version(Case):
    def test_is_printed_everywhere(self):
        text = self.good("--version").text
        self.assertRegex(text, r"\Avrn \d+\.\d+\.\d+, with vornath_data \d+\.\d+\.\d+\n\Z")
        for command in COMMANDS:
            self.assertEqual(self.good(command, "--version").text, text)


class WrongUsage(Case):
    def test_without_a_command_names_the_help(self):
        result = self.trouble()
        self.assertEqual(result.text, "")
        self.assertIn("vrn --help", result.words)

    def test_refuses_an_empty_path(self):
        self.write("in.json", self.good("export", "box.vrnscene").out)
        before = self.read("box.vrnscene")
        names = self.names()
        for arguments in (["set", "box.vrnscene", "Shape/2", "null", "-o", ""],
                          ["build", "in.json", "-o", ""], ["export", "box.vrnscene", "-o", ""],
                          ["merge", "box.vrnscene", "box.vrnscene", "-o", ""],
                          ["check", ""]):
            self.assertIn("the path is empty", self.trouble(*arguments).words)
        self.assertEqual(self.read("box.vrnscene"), before)
        self.assertEqual(self.names(), names)

    def test_refuses_a_value_for_a_flag(self):
        self.trouble("check", "--json=3", "box.vrnscene")

    def test_suggests_the_nearest_command(self):
        for typed, meant in [("chek", "check"), ("difff", "diff"), ("catalog", "catalogue"),
                             ("spectrm", "spectrum"), ("shwo", "show"), ("Info", "info")]:
            self.assertIn("did you mean %s?" % meant, self.trouble(typed).words)

    def test_suggests_nothing_for_a_word_that_is_near_to_none(self):
        self.assertNotIn("did you mean", self.trouble("qqqqqqq").words)

    def test_suggests_the_nearest_option(self):
        for command, typed, meant in [("check", "--stric", "--strict"), ("check", "--jsno", "--json"),
                                      ("show", "--alll", "--all"), ("export", "--ful", "--full"),
                                      ("diff", "--tolerence=1", "--tolerance"),
                                      ("check", "-json", "--json")]:
            words = self.trouble(command, typed, "box.vrnscene").words
            self.assertIn("did you mean %s?" % meant, words)

    def test_tells_an_unknown_option_before_missing_arguments(self):
        self.assertIn("--stric", self.trouble("check", "--stric").words)

    def test_suggests_the_nearest_choice(self):
        words = self.trouble("catalogue", "--format", "markdwn").words
        self.assertIn("did you mean markdown?", words)

    def test_tells_a_missing_argument_with_the_usage(self):
        words = self.trouble("set", "box.vrnscene", "Camera/0").words
        self.assertIn("JSON: the argument is missing; usage: vrn set [OPTIONS] FILE ADDRESS JSON",
                      words)
        self.trouble("info")
        self.trouble("merge", "box.vrnscene", "-o", "x")

    def test_tells_an_argument_too_many(self):
        self.assertIn("too many", self.trouble("get", "box.vrnscene", "a", "b").words)

    def test_tells_a_missing_value_of_an_option(self):
        self.assertIn("--max-memory: a value is missing",
                      self.trouble("check", "box.vrnscene", "--max-memory").words)

    def test_tells_a_value_that_does_not_fit(self):
        for words in [("check", "box.vrnscene", "--max-memory", "many"),
                      ("check", "box.vrnscene", "--max-memory", "-1"),
                      ("check", "box.vrnscene", "--max-memory", "1e99GB"),
                      ("diff", "box.vrnscene", "box.vrnscene", "--tolerance", "x"),
                      ("diff", "box.vrnscene", "box.vrnscene", "--tolerance", "nan"),
                      ("diff", "box.vrnscene", "box.vrnscene", "--abs", "-1"),
                      ("check", "box.vrnscene", "--max-messages", "1.5"),
                      ("check", "box.vrnscene", "--max-messages", "-1"),
                      ("show", "box.vrnscene", "--color", "blue")]:
            self.trouble(*words)

    def test_says_where_options_stand(self):
        self.assertIn("options follow the command", self.trouble("--json", "info").words)

    def test_keeps_words_on_one_line_whatever_the_arguments_hold(self):
        self.trouble("info", "a\nb\x1b[31m\x07")
        self.assertNotIn("\x1b", self.trouble("ch\x1b[31meck").words)


class Arguments(Case):
    def test_after_two_dashes_are_no_options(self):
        self.write("--json", self.read("box.vrnscene"))
        self.assertIn("--json", self.good("info", "--", "--json").text)

    def test_may_stand_behind_an_equals_sign(self):
        self.good("check", "--max-memory=1GiB", "box.vrnscene")
        self.good("check", "box.vrnscene", "--color=never")

    def test_with_brackets_and_negative_numbers_are_no_options_and_no_lists(self):
        for name in ("[a,b]", "{}", "-5", "-.5"):
            self.write(name, self.read("box.vrnscene"))
            self.good("check", name)

    def test_of_a_size_take_binary_and_decimal_units(self):
        need = self.good("info", "--json", "box.vrnscene").json()["info"]["openMemory"]
        self.found("check", "--max-memory", str(need - 1), "box.vrnscene")
        self.good("check", "--max-memory", str(need), "box.vrnscene")
        self.found("check", "--max-memory", "3MB", "box.vrnscene")
        self.good("check", "--max-memory", "4MiB", "box.vrnscene")
        self.good("check", "--max-memory", "0.01g", "box.vrnscene")


class StandardOutput(Case):
    WRITERS = [("info", "box.vrnscene"), ("check", "box.vrnscene"), ("show", "box.vrnscene"),
               ("get", "box.vrnscene", "Camera/0"), ("export", "box.vrnscene"),
               ("export", "--full", "box.vrnscene"), ("digest", "box.vrnscene"), ("catalogue",),
               ("catalogue", "--format", "html"), ("type", "{ int a; }"), ("value", "{ a = 1; }"),
               ("spectrum", "float3(1.0, 1.0, 1.0)"), ("--help",), ("check", "--help")]

    def test_on_a_full_device_is_trouble(self):
        for words in self.WRITERS:
            with open("/dev/full", "wb") as full:
                result = self.run_vrn(*words, stdout=full)
            self.assertEqual(result.code, 2, words)
            self.assertIn("No space left on device", result.words)
            self.assertEqual(result.words.count("\n"), 1)

    def test_that_is_closed_is_trouble(self):
        for words in self.WRITERS:
            process = subprocess.run(["/bin/sh", "-c", '"$@" >&-', "sh", VRN, *words],
                                     cwd=self.folder, capture_output=True)
            self.assertEqual(process.returncode, 2, words)
            self.assertIn(b"standard output: it cannot be written", process.stderr)

    def test_that_is_closed_puts_nothing_into_files(self):
        before = self.read("box.vrnscene")
        subprocess.run(["/bin/sh", "-c", '"$@" >&- 2>&-', "sh", VRN, "show", "box.vrnscene"],
                       cwd=self.folder)
        self.assertEqual(self.read("box.vrnscene"), before)

    def test_whose_reader_has_gone_ends_the_command_quietly(self):
        for words in self.WRITERS + [("catalogue", "--format", "json")]:
            read, write = os.pipe()
            os.close(read)
            process = self.start(*words, stdout=write, stderr=subprocess.PIPE)
            os.close(write)
            _, err = process.communicate(timeout=60)
            self.assertEqual((process.returncode, err), (0, b""), words)

    def test_of_a_scene_is_refused_by_a_terminal(self):
        code, text = self.on_terminal("set", "box.vrnscene", "Camera/0/groups/General/near_distance",
                                      "0.25", "-o", "-")
        self.assertEqual(code, 2)
        self.assertIn("nothing for a terminal", text)
        code, text = self.on_terminal("get", "--raw", "box.vrnscene", "Mesh/0/bytes")
        self.assertEqual(code, 2)
        self.assertIn("nothing for a terminal", text)


class StandardInput(Case):
    def test_stands_for_a_scene(self):
        scene = self.read("box.vrnscene")
        for words in [("info",), ("check",), ("show",), ("digest",), ("export",)]:
            self.good(*words, "-", stdin=scene)
        self.good("get", "-", "Camera/0", stdin=scene)
        self.good("diff", "box.vrnscene", "-", stdin=scene)
        self.good("diff", "-", "box.vrnscene", stdin=scene)

    def test_is_named_in_messages(self):
        self.assertIn("standard input", self.trouble("show", "-", stdin=b"no scene").words)

    def test_may_be_a_pipe_of_the_shell(self):
        process = subprocess.run(["bash", "-c", '"$0" diff box.vrnscene <(cat box.vrnscene)', VRN],
                                 cwd=self.folder, capture_output=True)
        self.assertEqual((process.returncode, process.stderr), (0, b""))

    def test_cannot_be_two_things(self):
        self.trouble("diff", "-", "-")
        self.trouble("patch", "-", "-", "-o", "x")
        self.trouble("set", "-", "Camera/0", "-")

    def test_is_read_without_a_check_too(self):
        scene = self.read("box.vrnscene")
        self.assertEqual(self.good("digest", "--trust", "-", stdin=scene).text,
                         self.good("digest", "-", stdin=scene).text)
        self.trouble("show", "--trust", "-", stdin=b"no scene")


class Trust(Case):
    def test_gives_the_same_as_a_checked_read(self):
        for words in [("show", "box.vrnscene"), ("get", "box.vrnscene", "Camera/0"),
                      ("export", "box.vrnscene"), ("digest", "box.vrnscene")]:
            self.assertEqual(self.good(*words, "--trust").out, self.good(*words).out)

    def test_reads_a_file_that_needs_more_memory_than_allowed_otherwise(self):
        self.assertIn("MEMORY_EXCEEDED",
                      self.trouble("show", "--max-memory", "1KiB", "box.vrnscene").words)

    def test_still_reports_what_is_no_scene(self):
        self.write("text", "no scene")
        self.trouble("show", "--trust", "text")
        self.trouble("show", "--trust", "missing")
        self.trouble("show", "--trust", ".")


class Colours(Case):
    def test_are_not_written_to_a_pipe(self):
        self.assertNotIn(b"\x1b", self.good("show", "box.vrnscene").out)

    def test_are_written_when_asked_for(self):
        text = self.good("show", "--color", "always", "box.vrnscene").text
        self.assertIn("\x1b[1m", text)
        self.assertRegex(text, "\x1b\\[48;2;\\d+;\\d+;\\d+m  \x1b\\[0m")

    def test_are_off_with_NO_COLOR(self):
        for choice in ("auto", "always"):
            result = self.good("show", "--color", choice, "box.vrnscene", env={"NO_COLOR": "1"})
            self.assertNotIn(b"\x1b", result.out)
        # The convention: an empty variable says nothing.
        result = self.good("show", "--color", "always", "box.vrnscene", env={"NO_COLOR": ""})
        self.assertIn(b"\x1b", result.out)

    def test_are_shown_on_a_terminal(self):
        code, text = self.on_terminal("show", "box.vrnscene")
        self.assertEqual(code, 0)
        self.assertIn("\x1b[1m", text)
        self.assertRegex(text, "\x1b\\[48;5;\\d+m")
        code, text = self.on_terminal("show", "box.vrnscene", env={"COLORTERM": "truecolor"})
        self.assertRegex(text, "\x1b\\[48;2;\\d+;\\d+;\\d+m")

    def test_are_not_shown_on_a_terminal_that_has_none(self):
        for environment in ({"TERM": "dumb"}, {"NO_COLOR": "1"}):
            _, text = self.on_terminal("show", "box.vrnscene", env=environment)
            self.assertNotIn("\x1b", text)
        _, text = self.on_terminal("show", "--color", "never", "box.vrnscene")
        self.assertNotIn("\x1b", text)

    def test_change_nothing_but_the_colours(self):
        import re
        plain = self.good("show", "--all", "box.vrnscene").text
        coloured = self.good("show", "--all", "--color", "always", "box.vrnscene").text
        coloured = re.sub("\x1b\\[48[0-9;]*m  \x1b\\[0m ", "", coloured)
        coloured = re.sub("\x1b\\[[0-9;]*m", "", coloured)
        # Swatches move texts, so only the words count.
        self.assertEqual(coloured.split(), plain.split())


class OtherPrograms(Case):
    def script(self, folder, name, text):
        os.makedirs(self.path(folder), exist_ok=True)
        self.write(os.path.join(folder, name), text)
        os.chmod(self.path(os.path.join(folder, name)), 0o755)

    def test_on_PATH_are_commands(self):
        self.script("bin", "vrn-hello", "#!/bin/sh\necho \"$# $1 $2\"\nexit 7\n")
        path = self.path("bin") + ":" + os.environ["PATH"]
        process = self.start("hello", "--json", "a b", env={"PATH": path}, stdout=subprocess.PIPE)
        out, _ = process.communicate()
        self.assertEqual((process.returncode, out), (7, b"2 --json a b\n"))

    def test_beside_vrn_come_first(self):
        self.script("bin", "vrn-hello", "#!/bin/sh\necho path\n")
        self.script("here", "vrn-hello", "#!/bin/sh\necho beside\n")
        shutil.copy(VRN, self.path("here/vrn"))
        process = subprocess.run([self.path("here/vrn"), "hello"], capture_output=True,
                                 env=dict(os.environ, PATH=self.path("bin")))
        self.assertEqual(process.stdout, b"beside\n")

    def test_of_the_project_are_found_beside_vrn_in_its_build_tree_and_on_PATH(self):
        tools = self.path("tree/tools")
        os.makedirs(tools)
        shutil.copy(VRN, os.path.join(tools, "vrn"))
        environment = dict(os.environ, PATH=self.path("bin"))

        def render():
            return subprocess.run([os.path.join(tools, "vrn"), "render"], capture_output=True,
                                  env=environment)

        missing = render()
        self.assertEqual((missing.returncode, missing.stdout), (2, b""))
        self.assertRegex(missing.stderr, rb"\Avrn: render: the program vrn-render is not installed; "
                                         rb"[^\n]*scripts/install_dependencies.sh renderer[^\n]*\n\Z")
        self.script("bin", "vrn-render", "#!/bin/sh\necho path\n")
        self.assertEqual(render().stdout, b"path\n")
        # A folder beside that of vrn counts only in a build tree.
        self.script("tree/renderer", "vrn-render", "#!/bin/sh\necho tree\n")
        self.assertEqual(render().stdout, b"path\n")
        self.write("tree/CMakeCache.txt", "")
        self.assertEqual(render().stdout, b"tree\n")
        self.script("tree/tools", "vrn-render", "#!/bin/sh\necho beside\n")
        self.assertEqual(render().stdout, b"beside\n")

    def test_of_the_project_are_in_the_help_and_are_suggested(self):
        self.assertRegex(self.good("--help").text, r"\n  vrn-render +`vrn render`: ")
        self.assertIn("did you mean render?", self.trouble("rendr").words)

    def test_do_not_take_the_place_of_a_command(self):
        self.script("bin", "vrn-info", "#!/bin/sh\necho mine\n")
        text = self.good("info", "box.vrnscene", env={"PATH": self.path("bin")}).text
        self.assertIn("box.vrnscene", text)

    def test_that_cannot_be_run_are_no_commands(self):
        self.script("bin", "vrn-hello", "")
        os.chmod(self.path("bin/vrn-hello"), 0o644)
        self.trouble("hello", env={"PATH": self.path("bin")})
        self.trouble("../bin/hello", env={"PATH": self.path("bin")})


class LongWork(Case):
    def test_shows_no_bar_if_it_is_short(self):
        _, text = self.on_terminal("check", "box.vrnscene")
        self.assertNotIn("[#", text)
        self.assertNotIn("\r\x1b[K", text)


if __name__ == "__main__":
    main()
