"""Many files on Dask."""
import copy
import json
import os
import pickle
import subprocess
import sys

import functions_of_files
import pytest
from conftest import PACKAGE

import vornath_data as vd

pytest.importorskip("distributed")
from vornath_data import batch  # noqa: E402


@pytest.fixture(scope="module")
def client():
    with batch.processes_of_this_machine(2) as made:
        yield made


@pytest.fixture
def files(tmp_path):
    (tmp_path / "a").mkdir()
    for number in range(6):
        with vd.Scene() as scene:
            scene.Camera.add(value="{ }", general={"near_distance": number / 8})
            scene.save(tmp_path / "a" / f"{number}.vrnscene", sync=False)
    data = (tmp_path / "a" / "3.vrnscene").read_bytes()
    (tmp_path / "a" / "3.vrnscene").write_bytes(data[:-7])
    return tmp_path


def test_rows_are_in_the_order_of_the_input(files, client):
    paths = [str(files / "a" / f"{number}.vrnscene") for number in (5, 0, 3, 4)]
    seen = []
    table = batch.run("check", paths, client=client, progress=lambda done, total: seen.append((done, total)))
    assert [row.file for row in table] == paths
    assert [row.result["valid"] for row in table] == [True, True, False, True]
    assert seen[-1] == (4, 4) and table.exit_status == 1 and [row.file for row in table.found] == [paths[2]]
    assert "not valid, 1 errors" in str(table) and "FILE_TRUNCATED" in str(table)
    assert len(table.to_json_lines().splitlines()) == 4
    assert "3.vrnscene" in table._repr_html_()


def test_globs_are_sorted_and_go_into_folders(files):
    (files / "a" / "b").mkdir()
    (files / "a" / "b" / "9.vrnscene").write_bytes(b"")
    found = batch.expand([files / "**" / "*.vrnscene", files / "a" / "1.vrnscene", files / "none.vrnscene"])
    assert [os.path.basename(one) for one in found] == [
        "0.vrnscene", "1.vrnscene", "2.vrnscene", "3.vrnscene", "4.vrnscene", "5.vrnscene", "9.vrnscene",
        "none.vrnscene"]


def test_a_damaged_and_a_missing_file_are_rows(files, client):
    table = batch.run("digest", [files / "a/0.vrnscene", files / "a/3.vrnscene", files / "none"], client=client)
    assert [row.ok for row in table] == [True, False, False]
    assert table[0].result["digest"] == vd.Scene.open(files / "a/0.vrnscene").digest()
    assert [row.code for row in table.failed] == ["FILE_DAMAGED", "FILE_MISSING"] and table.exit_status == 2


def test_compares_with_a_reference(files, client):
    table = batch.run("diff", [files / "a/0.vrnscene", files / "a/4.vrnscene"], client=client,
                      reference=str(files / "a/0.vrnscene"))
    assert [row.result["differences"] for row in table] == [0, 1] and table.exit_status == 1
    assert table[1].result["entries"][0]["address"] == "Camera/0/groups/General/near_distance"


def test_exports_under_the_path_of_each_file(files, client):
    table = batch.run("export", [files / "a/0.vrnscene"], client=client, output=str(files / "out"),
                      root=str(files))
    assert table[0].result == {"output": str(files / "out/a/0.json")}
    assert json.loads((files / "out/a/0.json").read_text())["format"] == "vornath-scene"


def test_info_has_the_numbers_of_objects(files, client):
    table = batch.run("info", str(files / "a/0.vrnscene"), client=client)
    assert table[0].result["objects"]["Camera"] == {"slots": 1, "live": 1}


def test_a_function_that_hangs_dies_or_raises_costs_its_own_row(files, client):
    paths = [files / "a" / f"{number}.vrnscene" for number in (0, 1, 2, 4, 5)]
    table = batch.run(functions_of_files.sleep_or_die, paths, client=client, timeout=1.5)
    assert [row.ok for row in table] == [True, False, False, False, True]
    assert [row.code for row in table.failed] == ["TIMEOUT", "PROCESS_ENDED", "RuntimeError"]
    assert "longer than 1.5 s" in table[1].error and "SIGSEGV" in table[2].error and table[3].error == "four"
    assert table[4].result == {"name": "5.vrnscene"} and table[1].seconds >= 1.5


def test_a_function_that_ends_the_process_when_it_is_loaded_is_told_for_each_file(files, client, tmp_path, monkeypatch):
    (tmp_path / "ends_when_loaded.py").write_text("import os\nos._exit(7)\n")
    monkeypatch.syspath_prepend(tmp_path)
    paths = [files / "a" / f"{number}.vrnscene" for number in range(3)]
    table = batch.run("ends_when_loaded:work", paths, client=client, timeout=5.0)
    assert [(row.code, row.error) for row in table] == [("PROCESS_ENDED", "the process ended with the status 7")] * 3


def test_a_result_that_cannot_be_sent_costs_its_own_row(files, client):
    paths = [files / "a" / f"{number}.vrnscene" for number in range(3)]
    table = batch.run(functions_of_files.cannot_be_sent_for_one, paths, client=client)
    assert [row.ok for row in table] == [True, False, True] and "pickle" in table[1].error


def test_a_function_of_a_notebook_is_sent_as_it_is(files, client):
    offset = 5
    table = batch.run(lambda path: len(open(path, "rb").read()) + offset, [files / "a/0.vrnscene"], client=client)
    assert table[0].result == (files / "a/0.vrnscene").stat().st_size + 5


def test_a_function_that_is_not_there_is_told_for_each_file(files, client):
    table = batch.run("no_such_module:work", [files / "a/0.vrnscene"], client=client)
    assert table[0].code == "ModuleNotFoundError"
    assert batch.run("os:nothing", [files / "a/0.vrnscene"], client=client)[0].code == "AttributeError"
    with pytest.raises(ValueError, match="a function is check, info, digest, diff, export or module:name"):
        batch.run("chekc", [files / "a/0.vrnscene"], client=client)
    with pytest.raises(TypeError):
        batch.run("check", [files / "a/0.vrnscene"], client=client, max_mem=3)
    with pytest.raises(TypeError):
        batch.run("diff", [files / "a/0.vrnscene"], client=client)
    with pytest.raises(TypeError):
        batch.run(functions_of_files.sleep_or_die, [files / "a/0.vrnscene"], client=client, ids=True)


def test_a_function_of_a_scene_gets_the_scene_opened_and_checked(files, client):
    paths = [files / "a" / f"{number}.vrnscene" for number in (2, 3, 4)]
    table = batch.run(functions_of_files.near_distance, paths, client=client)
    assert [row.ok and row.result for row in table] == [0.25, False, 0.5] and table[1].code == "FILE_DAMAGED"
    assert batch.run(functions_of_files.camera_count, paths[:1], client=client)[0].result == 1
    assert batch.run(lambda scene: scene.closed, paths[:1], client=client)[0].result is False
    for given, name in ((None, "str"), (True, "Scene"), (False, "str")):
        table = batch.run(functions_of_files.name_of_what_is_given, paths[:1], client=client, scene=given)
        assert table[0].result == name
    with pytest.raises(TypeError):
        batch.run("check", paths, client=client, scene=True)


def test_a_worker_that_ends_costs_the_row_of_its_file_alone(tmp_path):
    """The functions end the workers themselves, and not only the processes of the files."""
    paths = [str(tmp_path / f"{number}") for number in (0, 1, 2, 3, 4, 20, 5, 6, 7, 21, *range(30, 50))]
    seen = []
    with batch.processes_of_this_machine(2) as client:
        table = batch.run(functions_of_files.end_the_worker, paths, client=client,
                          progress=lambda done, total: seen.append(done))
        assert [row.code for row in table.failed] == ["WORKER_LOST"] * 3
        assert [os.path.basename(row.file) for row in table.failed] == ["2", "20", "21"]
        assert [row.result for row in table if row.ok] == [
            os.path.basename(path) for path in paths if not os.path.basename(path).startswith("2")]
        assert seen == sorted(seen) and seen[-1] == len(paths)
        assert batch.run("check", paths[:1], client=client)[0].code == "FILE_MISSING"  # It goes on.


def test_a_run_without_workers_ends(files, monkeypatch):
    import distributed
    monkeypatch.setattr(batch, "_WITHOUT_WORKERS", 1.0)
    with distributed.LocalCluster(n_workers=0, dashboard_address=None) as cluster, distributed.Client(cluster) as none:
        table = batch.run("check", [files / "a/0.vrnscene", files / "a/1.vrnscene"], client=none)
    assert [(row.code, row.error) for row in table] == [("NO_WORKER", "there was no worker for 1 s")] * 2


def test_results_and_errors_that_cannot_be_read_or_shown_cost_their_own_row(files, client):
    paths = [files / "a" / f"{number}.vrnscene" for number in (0, 1, 2, 4)]
    table = batch.run(functions_of_files.odd_results, paths, client=client)
    assert [row.ok for row in table] == [True, False, False, True]
    assert [row.code for row in table.failed] == ["ZeroDivisionError", "HasNoMessage"]
    assert table[2].error == "the message cannot be read: ValueError"

    def refuse(name):
        raise AssertionError(f"{name} is not JSON")
    lines = [json.loads(line, parse_constant=refuse) for line in table.to_json_lines().splitlines()]
    assert lines[3]["result"] == {"(1, 2)": ["nan", "-inf"], "text": "<HasNoText: ValueError>"}
    assert lines[0]["result"] == ["0.vrnscene", "..."]
    assert "0.vrnscene" in str(table) and "0.vrnscene" in table._repr_html_()


@pytest.mark.parametrize("protocol", range(pickle.HIGHEST_PROTOCOL + 1))
def test_tables_pickle_with_every_protocol_and_equal_their_copies(files, client, protocol):
    table = batch.run("check", [files / "a/0.vrnscene", files / "a/3.vrnscene", files / "none"], client=client)
    for twin in (pickle.loads(pickle.dumps(table, protocol)), copy.copy(table), copy.deepcopy(table)):
        assert twin == table and str(twin) == str(table) and twin.exit_status == 2
        assert [hash(row) for row in twin] == [hash(row) for row in table]
    row = pickle.loads(pickle.dumps(table[1], protocol))
    assert row == table[1] and row.found and row != table[0] and table != batch.Table([])


def test_a_function_that_reads_standard_input_finds_nothing(files, client):
    paths = [files / "a" / f"{number}.vrnscene" for number in range(4)]
    table = batch.run(functions_of_files.read_standard_input, paths, client=client, timeout=20)
    assert [row.ok and row.result for row in table] == [""] * 4


def test_a_function_may_go_to_another_folder(files, client, monkeypatch):
    monkeypatch.chdir(files)
    paths = [f"a/{number}.vrnscene" for number in range(6)]
    table = batch.run(functions_of_files.change_folder, paths, client=client)
    assert [row.ok and row.result for row in table] == [True] * 6 and [row.file for row in table] == paths
    assert batch.run("digest", paths[:1], client=client)[0].ok
    assert batch.run("diff", paths[:1], client=client, reference=paths[0])[0].result["equal"]


def test_a_process_that_ends_and_leaves_another_one_is_told(files, client):
    paths = [files / "a" / f"{number}.vrnscene" for number in range(3)]
    table = batch.run(functions_of_files.leave_a_process, paths, client=client)
    assert [row.code for row in table] == ["", "PROCESS_ENDED", ""]


def test_exports_stay_in_their_folder_and_never_write_one_file_twice(files, client, monkeypatch):
    monkeypatch.chdir(files)
    (files / "else").mkdir()
    (files / "else" / "x.vrnscene").write_bytes((files / "a/0.vrnscene").read_bytes())
    (files / "a" / "0.bak").write_bytes((files / "a/0.vrnscene").read_bytes())
    table = batch.run("export", [files / "else/x.vrnscene"], client=client, output="out")
    assert table[0].result == {"output": str(files / "out/x.json")} and (files / "out/x.json").exists()
    table = batch.run("export", ["a/1.vrnscene", "else/x.vrnscene"], client=client, output="two")
    assert [row.result["output"] for row in table] == [str(files / "two/a/1.json"), str(files / "two/else/x.json")]
    with pytest.raises(ValueError, match=r"else/x.vrnscene is not in the folder .*/a,"):
        batch.run("export", ["a/1.vrnscene", "else/x.vrnscene"], client=client, output="three", root="a")
    with pytest.raises(ValueError, match=r"0.vrnscene and .*0.bak would both be written to .*three/0.json"):
        batch.run("export", ["a/0.vrnscene", "a/0.bak"], client=client, output="three")
    assert not (files / "three").exists() and not list((files / "else").glob("*.json"))
    done = command("export", "--output", "three", "a/0.vrnscene", "a/0.bak")
    assert done.returncode == 2 and "would both be written" in done.stderr and not (files / "three").exists()


@pytest.mark.parametrize("options", [{"processes": 0}, {"processes": -1}, {"timeout": 0}, {"timeout": -5},
                                     {"timeout": float("nan")}, {"timeout": float("inf")}])
def test_numbers_without_sense_are_refused(files, options):
    with pytest.raises(ValueError, match="not"):
        batch.run("check", [files / "a/0.vrnscene"], **options)


def test_a_time_or_a_number_of_another_type_is_refused(files):
    with pytest.raises(TypeError):
        batch.run("check", [files / "a/0.vrnscene"], timeout="x")
    with pytest.raises(TypeError):
        batch.run("check", [files / "a/0.vrnscene"], processes=1.5)
    with pytest.raises(ValueError, match="not -1"), batch.processes_of_this_machine(-1):
        pass


@pytest.mark.parametrize("option", ["--processes=-1", "--processes=0", "--timeout=nan", "--timeout=-5",
                                    "--timeout=0", "--timeout=x"])
def test_the_command_tells_numbers_without_sense_as_its_usage(files, option):
    done = command("check", files / "a/0.vrnscene", option)
    assert done.returncode == 2 and "usage:" in done.stderr and option.split("=")[0] in done.stderr
    assert done.stdout == ""


def test_names_that_are_not_utf8_are_rows(files, client):
    name = os.fsencode(files) + b"/a/\xff\xfe.vrnscene"
    with open(name, "wb") as target:
        target.write((files / "a/0.vrnscene").read_bytes())
    table = batch.run("check", [os.fsdecode(name), os.fsdecode(name) + "x"], client=client)
    assert table[0].result["valid"] and table[1].code == "FILE_MISSING"
    assert json.loads(table.to_json_lines().splitlines()[0])["file"] == os.fsdecode(name)
    table._repr_html_().encode()
    done = subprocess.run([sys.executable, "-m", "vornath_data.batch", "check", "--scheduler",
                           client.scheduler.address, name], capture_output=True, timeout=120,
                          env={**os.environ, "PYTHONPATH": str(PACKAGE)}, check=False)
    assert done.returncode == 0 and done.stdout.startswith(name), done.stderr


def test_no_files_are_an_empty_table():
    assert len(batch.run("check", [])) == 0 and batch.run("check", []).exit_status == 0


def command(*arguments, **named):
    return subprocess.run([sys.executable, "-m", "vornath_data.batch", *map(str, arguments)], text=True,
                          capture_output=True, timeout=120,
                          env={**os.environ, "PYTHONPATH": str(PACKAGE)}, check=False, **named)


def test_the_command_prints_json_lines(files):
    done = command("check", files / "a/*.vrnscene", "--json", "--processes", 1)
    rows = [json.loads(line) for line in done.stdout.splitlines()]
    assert done.returncode == 1, done.stderr
    assert [os.path.basename(row["file"]) for row in rows] == [f"{number}.vrnscene" for number in range(6)]
    assert [row["result"]["valid"] for row in rows] == [True, True, True, False, True, True]
    assert done.stderr == ""


def test_the_command_uses_a_scheduler(files, client):
    done = command("digest", files / "a/0.vrnscene", "--scheduler", client.scheduler.address)
    assert done.returncode == 0 and "sha256:" in done.stdout, done.stderr


def test_the_command_runs_a_function_of_a_scene(files, client, tmp_path):
    (tmp_path / "counts.py").write_text("def cameras(thing):\n    return len(thing.Camera)\n")
    done = subprocess.run([sys.executable, "-m", "vornath_data.batch", "run", "counts:cameras", "--scene", "--json",
                           "--scheduler", client.scheduler.address, str(files / "a/0.vrnscene")], cwd=tmp_path,
                          env={**os.environ, "PYTHONPATH": str(PACKAGE)}, capture_output=True, text=True,
                          timeout=120, check=False)
    assert done.returncode == 0 and json.loads(done.stdout)["result"] == 1, done.stderr


def test_the_command_tells_that_nothing_matches(tmp_path):
    done = command("check", tmp_path / "*.vrnscene")
    assert done.returncode == 2 and "no file matches" in done.stderr and done.stdout == ""
    assert command("chekc", "x").returncode == 2
