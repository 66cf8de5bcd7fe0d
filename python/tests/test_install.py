"""Installing the package: with pip, and as a Debian package. Nothing is downloaded."""
import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest
from conftest import PACKAGE, ROOT

import vornath_data as vd
from vornath_data import _library

USE = """
import vornath_data as vd
from vornath_data import _library
scene = vd.Scene()
scene.Camera.add().general.near_distance = 0.5
print(vd.__file__, _library.data_path, scene.Camera[0].general.near_distance)
"""


def run(*command, **environment):
    kept = {name: text for name, text in os.environ.items()
            if name not in ("PYTHONPATH", "PYTHONHOME", "VORNATH_DATA_LIBRARY")}
    done = subprocess.run(list(map(str, command)), capture_output=True, text=True, timeout=300,
                          env={**kept, **environment}, check=False)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


def folders():
    """Returns the folders of the libraries that the tests use, joined with ':'."""
    paths = [pathlib.Path(one) for one in (_library.data_path, _library.toolkit_path)]
    if not all(path.is_absolute() for path in paths):
        pytest.skip("the libraries come from the system's loader")
    return ":".join(str(path.parent) for path in paths)


def test_the_versions_of_the_library_the_package_and_its_project_are_one():
    text = (ROOT / "include/vornath_data/version.h").read_text()
    version = ".".join(re.search(rf"VORNATH_DATA_VERSION_{part} (\d+)", text)[1]
                       for part in ("MAJOR", "MINOR", "PATCH"))
    assert vd.__version__ == version
    assert f'\nversion = "{version}"\n' in (PACKAGE / "pyproject.toml").read_text()


def test_pip_installs_the_package_without_a_network(tmp_path):
    pytest.importorskip("hatchling")
    pytest.importorskip("pip")
    run(sys.executable, "-m", "venv", "--without-pip", "--system-site-packages", tmp_path / "there")
    python = tmp_path / "there/bin/python"
    before = sorted(PACKAGE.rglob("*"))
    run(python, "-m", "pip", "install", "--no-index", "--no-cache-dir", "--disable-pip-version-check", PACKAGE)
    assert [path for path in sorted(PACKAGE.rglob("*")) if "__pycache__" not in path.parts] == [
        path for path in before if "__pycache__" not in path.parts]
    installed, library, field = run(python, "-c", USE, VORNATH_DATA_LIBRARY=folders()).split()
    assert pathlib.Path(installed).is_relative_to(tmp_path) and field == "0.5"
    for name in ("py.typed", "_objects.pyi"):
        assert (pathlib.Path(installed).parent / name).exists()
    assert "check files" in run(tmp_path / "there/bin/vornath-batch", "--help", VORNATH_DATA_LIBRARY=folders())


def build_deb(folder, *options):
    for tool in ("dpkg-deb", "dpkg-query", "strip", "objdump", "cmake"):
        if not shutil.which(tool):
            pytest.skip(f"needs {tool}")
    pytest.importorskip("hatchling")
    path = run(ROOT / "scripts/build_python_deb.sh", "--output", folder, *options).strip()
    assert pathlib.Path(path).parent == folder
    return path


def fields_of(package):
    return dict(line.split(": ", 1) for line in run("dpkg-deb", "--field", package).splitlines() if line[0] != " ")


@pytest.fixture(scope="module")
def package(tmp_path_factory):
    return build_deb(tmp_path_factory.mktemp("deb"), "--libraries", folders())


def test_the_debian_package_runs_from_another_root_with_its_own_libraries(package, tmp_path):
    admin = tmp_path / "var/lib/dpkg"
    for name in ("updates", "info"):
        (admin / name).mkdir(parents=True)
    for name in ("status", "available"):
        (admin / name).touch()
    run("dpkg", f"--root={tmp_path}", "--force-depends", "--force-not-root", "--force-bad-path", "--unpack", package)
    packages = tmp_path / "usr/lib/python3/dist-packages"
    installed, library, field = run(sys.executable, "-c", USE, PYTHONPATH=str(packages)).split()
    assert installed == str(packages / "vornath_data/__init__.py") and field == "0.5"
    assert library == str(packages / "vornath_data/lib/libvornath_data.so.1")
    assert "check files" in run(tmp_path / "usr/bin/vornath-batch", "--help", PYTHONPATH=str(packages))


def test_the_debian_package_says_what_it_needs_and_names_no_folder_of_the_build(package, tmp_path):
    fields = fields_of(package)
    assert fields["Package"] == "python3-vornath-data" and fields["Version"] == vd.__version__
    needs = fields["Depends"].split(", ")
    assert {"python3 (>= 3.11)", "python3-numpy", "libc6", "libstdc++6"} <= set(needs)
    assert any(one.startswith("libtbb") for one in needs) and any(one.startswith("libfmt") for one in needs)
    run("dpkg-deb", "--extract", package, tmp_path)
    for library in tmp_path.rglob("*.so.1"):
        assert "RUNPATH" not in run("objdump", "-p", library) and "RPATH" not in run("objdump", "-p", library)


def test_a_debian_package_without_libraries_is_for_all_architectures(tmp_path):
    package = build_deb(tmp_path, "--without-libraries")
    fields = fields_of(package)
    assert fields["Architecture"] == "all" and fields["Depends"] == "python3 (>= 3.11), python3-numpy"
    listed = run("dpkg-deb", "--contents", package)
    assert "/vornath_data/scene.py" in listed and ".so" not in listed


def test_the_script_refuses_what_it_does_not_know(tmp_path):
    done = subprocess.run([ROOT / "scripts/build_python_deb.sh", "--libraris", "x"], capture_output=True, text=True,
                          check=False)
    assert done.returncode == 2 and done.stderr == "build_python_deb.sh: unknown argument: --libraris\n"
