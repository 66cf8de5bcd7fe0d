"""The examples of the documents and of the docstrings, and the notebooks."""
import ast
import doctest
import importlib
import os
import pathlib
import re
import subprocess
import sys

import pytest
from conftest import PACKAGE, ROOT

import vornath_data as vd

MODULES = [path.stem for path in sorted((PACKAGE / "vornath_data").glob("*.py"))
           if not path.stem.startswith("_") or path.stem in ("_check", "_tools")]
BOX = ROOT / "examples/cornell_box"


def test_the_examples_of_the_tour_print_what_it_says():
    text = (ROOT / "docs/python.md").read_text()
    blocks = re.findall(r"```pycon\n(.*?)```", text, re.S)
    assert len(blocks) > 15
    test = doctest.DocTestParser().get_doctest("\n".join(blocks), {}, "docs/python.md", "docs/python.md", 0)
    result = doctest.DocTestRunner().run(test)
    assert result.attempted > 90 and result.failed == 0


def test_the_tour_names_every_public_name_and_no_other():
    text = (ROOT / "docs/python.md").read_text()
    assert not [name for name in vd.__all__ if not re.search(rf"\b{name}\b", text)]
    assert not [name for name in re.findall(r"\bvd\.(\w+)", text) if not hasattr(vd, name)]
    table = text[text.index("## All names"):text.index("## The C functions")]
    names = re.findall(r"`(\w+)`", table)
    assert len(names) > 45 and all(name in vd.__all__ or name in ("limits", "batch", "capi") for name in names)


@pytest.mark.parametrize("name", MODULES)
def test_the_examples_of_docstrings_print_what_they_say(name):
    module = vd if name == "__init__" else importlib.import_module(f"vornath_data.{name}")
    assert doctest.testmod(module).failed == 0


def test_every_public_thing_has_a_docstring():
    missing = []
    for name in vd.__all__:
        thing = getattr(vd, name)
        if callable(thing) and not thing.__doc__:
            missing.append(name)
        if isinstance(thing, type) and thing.__module__.startswith("vornath_data"):
            for label, part in vars(thing).items():
                if not label.startswith("_") and (callable(part) or isinstance(part, (property, classmethod))):
                    if not getattr(part, "__doc__", None):
                        missing.append(f"{name}.{label}")
    assert not missing


def run_notebook(name, *arguments):
    return subprocess.run([sys.executable, str(PACKAGE / "notebooks" / name), *map(str, arguments)],
                          env={**os.environ, "PYTHONPATH": str(PACKAGE)}, capture_output=True, text=True,
                          timeout=300, check=False)


def test_the_box_is_built_in_under_a_hundred_lines(tmp_path):
    lines = (PACKAGE / "notebooks/cornell_box.py").read_text().splitlines()
    assert sum(1 for line in lines if line.strip() and not line.lstrip().startswith("#")) < 100


def test_the_box_is_the_one_that_the_program_in_cxx_builds(tmp_path):
    done = run_notebook("cornell_box.py", BOX, tmp_path / "box.vrnscene")
    assert done.returncode == 0, done.stderr
    scene = vd.Scene.open(tmp_path / "box.vrnscene")
    assert not scene.validate().messages
    library = os.environ.get("VORNATH_DATA_LIBRARY", "").split(":")[0]
    build = pathlib.Path(library).parent / "examples/cornell_box/build_scene"
    if not library or not build.exists():
        pytest.skip("needs the program build_scene")
    subprocess.run([str(build), str(tmp_path / "other.vrnscene")], check=True, capture_output=True)
    other = vd.Scene.open(tmp_path / "other.vrnscene")
    assert not vd.diff(other, scene) and other.equivalent(scene)
    check = build.with_name("check_scene")
    if check.exists():
        subprocess.run([str(check), str(tmp_path / "box.vrnscene")], check=True, capture_output=True)


def test_the_notebook_about_colour_finds_metamers():
    done = run_notebook("colour.py", BOX)
    assert done.returncode == 0, done.stderr
    last = done.stdout.splitlines()[-1]
    apart, daylight, equal = (float(one) for one in re.findall(r"\d+\.\d+(?:e-\d+)?", last))
    assert apart > 0.05 and daylight < 1e-5 < equal


def test_no_file_of_the_package_has_lines_beyond_120_characters():
    for folder in ("vornath_data", "tests", "notebooks", "bench"):
        for path in sorted((PACKAGE / folder).glob("*.py")):
            if path.name == "_declarations.py":
                continue
            ast.parse(path.read_text())
            long = [number for number, line in enumerate(path.read_text().splitlines(), 1) if len(line) > 120]
            assert not long, (path.name, long)
