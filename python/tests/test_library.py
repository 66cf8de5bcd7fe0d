"""Loading the libraries, and the C declarations."""
import ctypes
import os
import pathlib
import shutil
import subprocess
import sys

import pytest
from conftest import ROOT, run_python

from vornath_data import _declarations, _library, capi


def exported(path):
    lines = pathlib.Path(path).read_text().splitlines()
    return {line for line in lines if line.startswith(("vrnt", "vrtn", "vrdm", "vrtk")) and "::" not in line}


def test_declares_every_exported_function_and_no_other():
    listed = exported(ROOT / "tests/abi/exports.txt") | exported(ROOT / "tests/toolkit/exports.txt")
    assert set(_declarations.FUNCTIONS) == {name for name in listed if "(" not in name}


@pytest.mark.skipif(not shutil.which("cc"), reason="needs a C compiler")
def test_declarations_are_in_step_with_the_headers():
    subprocess.run([sys.executable, str(ROOT / "scripts/write_python_declarations.py"), "--check"], check=True)


@pytest.mark.skipif(not shutil.which("cc"), reason="needs a C compiler")
def test_structs_have_the_sizes_and_offsets_of_the_compiler(tmp_path):
    structs = {name: thing for name, thing in vars(_declarations).items()
               if isinstance(thing, type) and issubclass(thing, ctypes.Structure)
               and thing is not ctypes.Structure}
    lines = []
    expected = []
    for name, kind in structs.items():
        lines.append(f'printf("%zu\\n", sizeof({name}));')
        expected.append(ctypes.sizeof(kind))
        for member, _ in kind._fields_:
            lines.append(f'printf("%zu\\n", offsetof({name}, {member}));')
            expected.append(getattr(kind, member).offset)
    source = tmp_path / "sizes.c"
    source.write_text("#include <stddef.h>\n#include <stdio.h>\n#include <vornath_data/vrnt.h>\n"
                      "#include <vornath_data/vrdm.h>\n#include <vornath_data/asset_records.h>\n"
                      "#include <vornath_toolkit/vrtk.h>\nint main(void) {\n" + "\n".join(lines) + "\n}\n")
    program = tmp_path / "sizes"
    subprocess.run(["cc", f"-I{ROOT / 'include'}", f"-I{ROOT / 'toolkit/include'}", str(source), "-o",
                    str(program)], check=True)
    printed = subprocess.run([str(program)], capture_output=True, text=True, check=True).stdout
    assert [int(line) for line in printed.split()] == expected


@pytest.mark.parametrize("exports", ["tests/abi/exports.txt", "tests/toolkit/exports.txt"])
def test_reaches_every_function_of_both_families(exports):
    listed = {name for name in exported(ROOT / exports) if "(" not in name}
    assert len(listed) > 80
    for name in listed:
        assert getattr(capi, name).argtypes is not None and getattr(capi, name).__name__ == name
        assert name in dir(capi)
    assert capi.vrdmObjectTypeCount() == 18
    assert capi.VRDM_CLASS_SCENE_DATA == 2**32 - 1
    with pytest.raises(AttributeError, match="the C interface has no vrntNothing"):
        capi.vrntNothing


def test_tells_what_was_looked_for_where_the_libraries_are_missing(tmp_path):
    done = run_python("import vornath_data", VORNATH_DATA_LIBRARY=str(tmp_path))
    last = done.stderr.split("LibraryError: ")[-1]
    assert done.returncode == 1
    assert str(tmp_path / "libvornath_data.so.1") in last
    assert "as VORNATH_DATA_LIBRARY says" in last
    assert "Install the library, or set VORNATH_DATA_LIBRARY" in last


def test_names_a_folder_that_is_not_there(tmp_path):
    done = run_python("import vornath_data", VORNATH_DATA_LIBRARY=f"{tmp_path}/none:{tmp_path}/libvornath_data.so.1")
    last = done.stderr.split("LibraryError: ")[-1]
    assert f"  {tmp_path}/none/libvornath_data.so.1\n  {tmp_path}/libvornath_data.so.1\n" in last
    assert f"{tmp_path}/none is no folder" in last and f"{tmp_path} is no folder" not in last


def test_tells_that_a_folder_has_another_version(tmp_path):
    (tmp_path / "libvornath_data.so.2").write_bytes(b"")
    done = run_python("import vornath_data", VORNATH_DATA_LIBRARY=str(tmp_path))
    assert f"{tmp_path} has another version: libvornath_data.so.2" in done.stderr


def test_tells_that_a_library_lacks_functions(tmp_path):
    compiler = shutil.which("cc")
    if not compiler:
        pytest.skip("needs a C compiler")
    source = tmp_path / "old.c"
    source.write_text("int vrdmObjectTypeCount(void) { return 18; }\n")
    for name in ("libvornath_data.so.1", "libvornath_toolkit.so.1"):
        subprocess.run([compiler, "-shared", "-fPIC", str(source), "-o", str(tmp_path / name)], check=True)
    done = run_python("import vornath_data", VORNATH_DATA_LIBRARY=str(tmp_path))
    assert "is of another version than this package: it has no " in done.stderr
    assert "Install the package and the libraries of one version." in done.stderr


def test_tells_that_a_file_is_no_library(tmp_path):
    (tmp_path / "libvornath_data.so.1").write_text("no library")
    done = run_python("import vornath_data", VORNATH_DATA_LIBRARY=str(tmp_path))
    assert "libvornath_data.so.1 does not load: " in done.stderr


def test_a_missing_library_is_an_import_error(tmp_path):
    code = "try:\n import vornath_data\nexcept ImportError as e: print(type(e).__name__)"
    assert run_python(code, VORNATH_DATA_LIBRARY=str(tmp_path)).stdout == "LibraryError\n"


def test_finds_the_libraries_beside_the_package(tmp_path):
    package = tmp_path / "vornath_data"
    shutil.copytree(ROOT / "python/vornath_data", package, ignore=shutil.ignore_patterns("__pycache__"))
    (package / "lib").mkdir()
    for path in (_library.data_path, _library.toolkit_path):
        if not os.path.isabs(path):
            pytest.skip("the libraries come from the system's loader")
        shutil.copy(os.path.realpath(path), package / "lib" / pathlib.Path(path).name)
    environment = {"PYTHONPATH": str(tmp_path)}
    environment["VORNATH_DATA_LIBRARY"] = ""
    environment["LD_LIBRARY_PATH"] = str(package / "lib")
    done = run_python("from vornath_data import _library; print(_library.data_path)", **environment)
    assert done.stdout.strip() == str(package / "lib/libvornath_data.so.1"), done.stderr


@pytest.mark.parametrize("version,fits", [("1.0.0", True), ("1.7.2", True), ("2.0.0", False), ("0.9.0", False)])
def test_needs_the_major_version_and_at_least_the_minor_version(version, fits):
    assert _library._fits(version) is fits
