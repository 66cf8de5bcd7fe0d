"""What the tests of vrn share: a folder of their own with the Cornell box in it, and runs of vrn."""
import json
import os
import pty
import select
import shutil
import signal
import subprocess
import tempfile
import unittest

VRN = os.environ["VRN"]
PAGES = os.environ["VRN_PAGES"]
SOURCE = os.environ["SOURCE_FOLDER"]
DATA = os.path.join(SOURCE, "examples", "cornell_box", "data")

COMMANDS = ["info", "check", "show", "get", "set", "export", "build", "diff", "patch", "merge",
            "digest", "catalogue", "type", "value", "spectrum"]

_box = None


def box_bytes():
    """The bytes of the Cornell box's file."""
    global _box
    if _box is None:
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "box.vrnscene")
            subprocess.run([os.environ["BUILD_SCENE"], path], check=True, capture_output=True)
            with open(path, "rb") as file:
                _box = file.read()
    return _box


# A build that counts executed lines writes its counts when a process ends, and complains if it cannot.
# A process that must not write files leaves them out, and its complaints are not those of vrn.
NO_COUNTS = {"GCOV_PREFIX": "/dev/null"}


def without_complaints(err):
    return b"".join(line for line in err.splitlines(True) if not line.startswith(b"profiling:"))


class Result:
    def __init__(self, code, out, err):
        self.code, self.out, self.err = code, out, err

    @property
    def text(self):
        return self.out.decode("utf-8")

    @property
    def words(self):
        return self.err.decode("utf-8")

    def json(self):
        return json.loads(self.out.decode("utf-8"))


class Case(unittest.TestCase):
    """A case with a folder of its own, which is the current folder of vrn."""

    maxDiff = None
    user = None

    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(self._remove)
        self.write("box.vrnscene", box_bytes())

    def _remove(self):
        os.chmod(self.folder, 0o700)
        shutil.rmtree(self.folder, ignore_errors=True)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        if isinstance(content, str):
            content = content.encode("utf-8")
        with open(self.path(name), "wb") as file:
            file.write(content)
        return name

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def names(self):
        return sorted(os.listdir(self.folder))

    def start(self, *arguments, env=None, **options):
        environment = dict(os.environ, TERM="dumb")
        environment.pop("NO_COLOR", None)
        environment.update(env or {})
        if self.user is not None:
            options["user"] = self.user
            environment.update(NO_COUNTS)
        return subprocess.Popen([VRN, *arguments], cwd=self.folder, env=environment, **options)

    def as_other_user(self):
        """Gives the folder to a user without rights, for whom vrn then runs, if this is root."""
        if os.geteuid() != 0:
            return
        nobody = 65534
        for folder, _, names in os.walk(self.folder):
            for name in [folder] + [os.path.join(folder, name) for name in names]:
                os.chown(name, nobody, nobody)
        self.user = nobody
        probe = self.start("--version", stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        if probe.wait() != 0:
            self.skipTest("another user cannot run vrn here")

    def run_vrn(self, *arguments, stdin=b"", env=None, stdout=subprocess.PIPE):
        """Runs vrn, and checks what holds for every run: an exit code, and clear words for trouble."""
        process = self.start(*arguments, env=env, stdin=subprocess.PIPE, stdout=stdout,
                             stderr=subprocess.PIPE)
        out, err = process.communicate(stdin, timeout=120)
        result = Result(process.returncode, out, without_complaints(err))
        self.assertIn(result.code, (0, 1, 2), (arguments, err))
        for word in (b"terminate called", b"Sanitizer", b"runtime error", b"Assertion"):
            self.assertNotIn(word, err, arguments)
        return result

    def good(self, *arguments, **options):
        result = self.run_vrn(*arguments, **options)
        self.assertEqual(result.code, 0, (arguments, result.err))
        self.assertEqual(result.words, "", arguments)
        return result

    def found(self, *arguments, **options):
        result = self.run_vrn(*arguments, **options)
        self.assertEqual(result.code, 1, (arguments, result.err))
        return result

    def trouble(self, *arguments, **options):
        """Runs vrn, which must end with exit code 2 and one line on standard error."""
        result = self.run_vrn(*arguments, **options)
        self.assertEqual(result.code, 2, (arguments, result.out, result.err))
        self.assertRegex(result.words, r"\Avrn( [a-z]+)?: [^\n]+\n\Z", arguments)
        if arguments and arguments[0] in COMMANDS:
            self.assertTrue(result.words.startswith("vrn %s: " % arguments[0]), result.words)
        return result

    def on_terminal(self, *arguments, env=None, seconds=60):
        """Runs vrn on a terminal of its own. Returns the exit code and all that it wrote."""
        master, slave = pty.openpty()
        environment = dict(os.environ, TERM="xterm-256color")
        environment.pop("NO_COLOR", None)
        environment.pop("COLORTERM", None)
        environment.update(env or {})
        process = subprocess.Popen([VRN, *arguments], cwd=self.folder, env=environment,
                                   stdin=slave, stdout=slave, stderr=slave)
        os.close(slave)
        out = b""
        while True:
            ready, _, _ = select.select([master], [], [], seconds)
            if not ready:
                process.kill()
                self.fail("the command did not end")
            try:
                part = os.read(master, 65536)
            except OSError:
                break
            if not part:
                break
            out += part
        os.close(master)
        return process.wait(), out.decode("utf-8")


def main():
    # A test must not end because a reader went away.
    signal.signal(signal.SIGPIPE, signal.SIG_IGN)
    unittest.main()
