"""The package's types: stubs of the classes' groups and fields, and mypy."""
import shutil
import subprocess
import sys

import pytest
from conftest import PACKAGE, ROOT

import vornath_data as vd


def test_the_stubs_are_in_step_with_the_catalogue():
    subprocess.run([sys.executable, str(ROOT / "scripts/write_python_stubs.py"), "--check"], check=True)


@pytest.fixture(scope="module")
def mypy(tmp_path_factory):
    """Runs mypy. The runs share what it finds out about NumPy and the package."""
    if not shutil.which("mypy"):
        pytest.skip("needs mypy")
    cache = tmp_path_factory.mktemp("mypy")

    def run(*arguments, cwd=PACKAGE):
        return subprocess.run(["mypy", f"--cache-dir={cache}", *arguments], cwd=cwd, capture_output=True,
                              text=True, check=False)
    return run


def test_the_package_is_clean_under_mypy_strict(mypy):
    done = mypy()
    assert done.returncode == 0 and "warning" not in done.stderr.lower(), done.stdout + done.stderr


def test_a_host_is_checked_against_the_catalogue(mypy, tmp_path):
    """What is right passes, and each wrong line is told."""
    right = """
import vornath_data as vd
scene = vd.Scene()
near: float = scene.Camera[0].general.near_distance
scene.Camera[0].general.near_distance = 0.5
row: tuple[float, float, float, float] = scene.Shape[0].transformation.matrix.w
program = scene.Camera[0].program
text: str = program.text if program is not None else ""
visible: bool = scene.Shape[0].target.visible_in_mask
"""
    wrong = ["scene.Camera[0].genral", "scene.Camera[0].general.near_distanc", "scene.Camra",
             'scene.Camera[0].general.near_distance = "x"', "scene.Camera[0].general.near_distanc = 1.0",
             "scene.Camera[0].progam = None", "scene.Shape[0].value", "scene.Mesh[0].general",
             "vd.Scene.opn", 'scene.Camera[0].backplate.mode = "FIT"']
    (tmp_path / "host.py").write_text(right + "\n".join(wrong) + "\n")
    (tmp_path / "mypy.ini").write_text(f"[mypy]\nmypy_path = {PACKAGE}\nstrict = true\n")
    done = mypy("host.py", cwd=tmp_path)
    first = right.count("\n") + 1
    told = {int(line.split(":")[1]) for line in done.stdout.splitlines() if "host.py:" in line and "error" in line}
    assert told == set(range(first, first + len(wrong))), done.stdout


def test_every_class_group_and_field_of_the_stubs_is_there():
    text = (PACKAGE / "vornath_data/_objects.pyi").read_text()
    for entry in vd.catalogue():
        assert f"class {entry.name}(" in text
        for group in entry.groups.values():
            for label in group.fields:
                assert f"    {label}: " in text
