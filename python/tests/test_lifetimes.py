"""Lifetimes and threads: nothing reads freed memory. These tests also run under AddressSanitizer."""
import contextlib
import gc
import os
import sys
import threading
import time
import weakref

import numpy as np
import pytest
from conftest import run_python

import vornath_data as vd


def box():
    scene = vd.Scene()
    layout = vd.MeshLayout(triangles=100, vertices=300)
    layout.positions[...] = 2.0
    scene.Mesh.add(layout)
    scene.Texture.add(np.ones((4, 4, 3), "u1"), format="SRGB8")
    scene.Material.add(value="{ paint = { colour = &[ 1.0, 2.0 ]; }; }", textures=[0])
    scene.Shape.add(mesh=0, material=0)
    scene.LightGroup.add(emitters=[scene.Shape[0]])
    scene.Camera.add(program=scene.CameraProgram.add("pinhole"), value="{ }")
    return scene


def test_every_use_after_close_raises_closed_error():
    scene = box()
    camera, shape, mesh = scene.Camera[0], scene.Shape[0], scene.Mesh[0]
    general, matrix, groups = camera.general, shape.transformation.matrix, scene.groups.raytracer
    cut, emitters = shape.cut_planes.cut, scene.LightGroup[0].emitters
    assert general.near_distance == 0.0 and matrix.x[0] == 1.0 and groups.ray_epsilon > 0
    objects = scene.Shape
    assert len(objects) == 1 and list(objects) == [shape]  # now their slots are known
    scene.close()
    scene.close()
    assert scene.closed
    uses = [
        lambda: scene.Camera[0], lambda: scene.Camera.add(), lambda: len(objects), lambda: list(objects),
        lambda: camera.general.near_distance, lambda: general.near_distance, lambda: matrix.x, lambda: cut[0],
        lambda: setattr(general, "near_distance", 1.0), lambda: setattr(matrix, "x", (1, 2, 3, 4)),
        lambda: cut.__setitem__(0, True), lambda: groups.ray_epsilon, lambda: general.to_dict(),
        lambda: general.update(near_distance=1), lambda: dict(general), lambda: general.reset(),
        lambda: shape.material, lambda: setattr(shape, "material", None), lambda: list(emitters),
        lambda: emitters.append(None), lambda: len(emitters), lambda: camera.value,
        lambda: setattr(camera, "value", "{ }"), lambda: mesh.positions, lambda: mesh.id, lambda: mesh.desc,
        lambda: mesh.replace(vd.MeshLayout(1, 3)), lambda: shape.remove(), lambda: shape.valid,
        lambda: shape.reference_count(), lambda: scene.id, lambda: scene.to_bytes(), lambda: scene.save("x"),
        lambda: scene.copy(), lambda: scene.validate(), lambda: len(scene), lambda: list(scene),
        lambda: scene.groups["Raytracer"].ray_epsilon, lambda: objects.column("General", "edge_radius"),
        lambda: objects.set_column("General", "edge_radius", 0.0), lambda: scene.__enter__(),
        lambda: scene.to_json(), lambda: scene.digest(), lambda: vd.diff(scene, scene), lambda: scene.dump(),
        lambda: scene.get("Camera/0"), lambda: scene.set("Camera/0", None), lambda: scene.merge(box()),
        lambda: box().merge(scene), lambda: scene.patched([]), lambda: scene.get_bytes("Mesh/0/bytes"),
        lambda: camera.update_texture_references(), lambda: objects.slot_count, lambda: 0 in objects,
        lambda: scene.CameraProgram[0],
    ]
    for use in uses:
        with pytest.raises(vd.ClosedError, match="the scene is closed"):
            use()
    for thing in (scene, camera, shape, objects):
        assert "closed" in repr(thing)


def test_what_a_scene_gave_lives_longer_than_the_scene():
    scene = box()
    positions, pixels = scene.Mesh[0].positions, scene.Texture[0].pixels
    value = scene.Material[0].value
    inner, colour = value["paint"], value["paint"]["colour"]
    array = colour.numpy()
    del value
    scene.close()
    del scene
    gc.collect()
    assert positions.sum() == 1800 and pixels.sum() == 48
    assert inner["colour"].to_python() == [1.0, 2.0] and array.tolist() == [1.0, 2.0]
    del inner, colour
    gc.collect()
    assert array.tolist() == [1.0, 2.0]


def test_a_scene_lives_as_long_as_one_of_its_objects():
    general = box().Camera[0].general
    gc.collect()
    general.near_distance = 0.5
    assert general.near_distance == 0.5
    emitters = box().LightGroup[0].emitters
    gc.collect()
    assert emitters[0].mesh.positions.sum() == 1800


def test_scenes_that_nothing_refers_to_are_destroyed():
    layout = vd.MeshLayout(1, 3)
    watch = weakref.ref(layout.words)
    scene = vd.Scene()
    scene.Mesh.add(layout)
    objects = [scene.Mesh[0], scene.Camera.add(value="{ }").general]
    assert objects[1].near_distance == 0
    del layout, scene, objects
    gc.collect()
    assert watch() is None


def test_cycles_are_collected():
    class Holder:
        pass

    watches = []
    for _ in range(10):
        holder = Holder()
        holder.scene = box()
        holder.value = vd.Value.parse("{ a = [ 1, 2 ]; }")
        holder.array = holder.value["a"].numpy()
        holder.mesh = holder.scene.Mesh[0].positions
        holder.self = holder
        watches.append(weakref.ref(holder))
    del holder
    gc.collect()
    assert not any(watch() for watch in watches)


@pytest.fixture
def quick_collections():
    """Leaves what there is before a test to itself, so that a collection takes no time for it."""
    gc.collect()
    gc.freeze()
    yield
    gc.unfreeze()


def test_deleting_in_any_order(quick_collections):
    import itertools
    for order in itertools.permutations(range(4)):
        scene = box()
        things = [scene, scene.Camera[0].general, scene.Mesh[0].positions, scene.Material[0].value["paint"]]
        things[1].near_distance, things[3]["colour"]
        del scene
        for index in order:
            things[index] = None
        gc.collect()


def test_a_finaliser_that_closes_the_scene_while_a_call_is_made_frees_nothing_under_the_call(quick_collections):
    class Closer:
        def __del__(self):
            with contextlib.suppress(vd.ConcurrentUseError):  # It runs in a call that holds the scene.
                self.scene.close()

    thresholds = gc.get_threshold()
    uses = [lambda s, c: len(s.Shape), lambda s, c: s.Shape[0], lambda s, c: c.value, lambda s, c: c.program,
            lambda s, c: setattr(c.general, "near_distance", 0.5), lambda s, c: s.Camera[0].general.to_dict(),
            lambda s, c: s.to_bytes(), lambda s, c: s.Mesh[0].positions, lambda s, c: s.CameraProgram[0].text,
            lambda s, c: 0 in s.Shape, lambda s, c: s.Shape.slot_count, lambda s, c: c.reference_count()]
    for use in uses:
        closed = 0
        for objects in range(16):
            scene = box()
            camera = scene.Camera[0]
            gc.collect()
            gc.disable()
            closer = Closer()
            closer.scene, closer.cycle = scene, closer
            del closer
            gc.set_threshold(gc.get_count()[0] + objects)  # It is collected when so many objects were made.
            gc.enable()
            try:
                use(scene, camera)
            except vd.ClosedError:
                pass
            finally:
                gc.set_threshold(*thresholds)
            gc.collect()
            closed += scene.closed
            scene.close()
            with pytest.raises(vd.ClosedError):
                use(scene, camera)
        assert closed


def test_an_exception_in_a_block_closes_the_scene():
    with pytest.raises(ZeroDivisionError), vd.Scene() as scene:
        scene.Camera.add()
        raise ZeroDivisionError
    assert scene.closed


def test_types_of_values_live_as_long_as_their_parts():
    part = vd.Value(vd.Type("{ { { int only_here_in_lifetimes; } b; } a; }"))["a"]["b"]
    fields = part.type.fields
    del part
    gc.collect()
    assert fields["only_here_in_lifetimes"].type.text == "int"
    metadata = vd.Type("{ float @default=0.25 only_here_too; }").fields["only_here_too"].type.metadata
    gc.collect()
    assert metadata["default"] == 0.25


def use_at_once(scene, work, other):
    """Runs `work` in a thread, and `other` here as long as that runs. Returns what `other` raised."""
    raised = []
    done = threading.Event()
    started = threading.Event()

    def run():
        started.set()
        try:
            work()
        finally:
            done.set()

    thread = threading.Thread(target=run)
    thread.start()
    started.wait()
    while not done.is_set():
        try:
            other()
        except vd.ConcurrentUseError as problem:
            raised.append(str(problem))
        except vd.NoSuchObject:
            pass
    thread.join()
    return raised


def large():
    scene = vd.Scene()
    for _ in range(2000):
        scene.Shape.add()
    scene.Texture.add(np.zeros((1024, 1024, 4), "f4"), format="RGBA32")
    return scene


def test_a_use_during_a_long_call_of_another_thread_raises():
    scene = large()
    general = scene.Shape[0].general
    general.edge_radius = 0.5
    raised = use_at_once(scene, lambda: [scene.to_bytes() for _ in range(20)], lambda: general.edge_radius)
    assert raised and raised[0] == "another thread uses the scene; one thread at a time may use a scene"
    assert general.edge_radius == 0.5
    for other in (lambda: scene.Shape.add(), lambda: scene.id,
                  lambda: setattr(general, "edge_radius", 0.25), lambda: scene.Texture[0].pixels):
        assert use_at_once(scene, lambda: [scene.digest() for _ in range(5)], other)
    scene.close()


def test_closing_during_a_long_call_raises_and_leaves_the_scene():
    scene = large()
    raised = []

    def close():
        try:
            scene.close()
        except vd.ConcurrentUseError as problem:
            raised.append(problem)
            raise
        raise vd.ConcurrentUseError("closed after the call")

    def work():
        for _ in range(3):
            try:
                scene.to_bytes()
            except (vd.ClosedError, vd.ConcurrentUseError):
                return

    use_at_once(scene, work, close)
    assert raised or scene.closed


def test_many_threads_on_one_scene_lose_no_write_and_raise_or_succeed():
    scene = vd.Scene()
    cameras = [scene.Camera.add() for _ in range(2)]
    unexpected, refused = [], []
    counts = [0] * 6

    def work(number):
        general = scene.Camera[number % 2].general
        label = ("near_distance", "shutter_open", "shutter_close")[number // 2]
        for round_ in range(400):
            try:
                setattr(general, label, float(round_))
                counts[number] = round_
            except vd.ConcurrentUseError as problem:
                refused.append(problem)
            except BaseException as problem:
                unexpected.append(problem)

    old = sys.getswitchinterval()
    sys.setswitchinterval(1e-6)
    try:
        threads = [threading.Thread(target=work, args=(number,)) for number in range(6)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
    finally:
        sys.setswitchinterval(old)
    assert not unexpected
    for number in range(6):
        label = ("near_distance", "shutter_open", "shutter_close")[number // 2]
        assert getattr(scene.Camera[number % 2].general, label) == counts[number], "a write was lost"
    assert len(cameras) == 2


def test_threads_that_add_remove_and_close_read_no_freed_memory():
    old = sys.getswitchinterval()
    sys.setswitchinterval(1e-6)
    try:
        for _ in range(5):
            scene = box()
            unexpected = []

            def work(number):
                while True:
                    try:
                        shape = scene.Shape.add(mesh=0)
                        shape.general.edge_radius = 0.5
                        group = scene.LightGroup[0].emitters
                        group.append(shape)
                        list(group)
                        scene.Shape.column("General", "edge_radius")
                        scene.Mesh[0].positions.sum()
                        scene.Material[0].value.to_python()
                        shape.remove()
                        if number == 0 and len(group) > 30:
                            scene.close()
                    except vd.ClosedError:
                        return
                    except (vd.ConcurrentUseError, vd.NoSuchObject, vd.ToolkitError):
                        continue
                    except BaseException as problem:
                        unexpected.append(problem)
                        return

            threads = [threading.Thread(target=work, args=(number,)) for number in range(4)]
            for thread in threads:
                thread.start()
            time.sleep(0.3)
            while not scene.closed:
                try:
                    scene.close()
                except vd.ConcurrentUseError:
                    pass
            for thread in threads:
                thread.join()
            assert not unexpected, unexpected
    finally:
        sys.setswitchinterval(old)


def test_a_call_back_into_a_scene_in_use_raises():
    """An array that an asset kept may run code when it goes."""
    seen = []

    class Noisy:
        def __del__(self):
            try:
                scene.Mesh.add(vd.MeshLayout(1, 3))
            except vd.Error as problem:
                seen.append(str(problem))

    class Words(np.ndarray):
        pass

    scene = vd.Scene()
    words = np.zeros(36, "u4").view(Words)
    words.noisy = Noisy()
    mesh = scene.Mesh.add(words.view(Words), triangles=1, vertices=3)
    base = words
    del words, base
    gc.collect()
    mesh.remove()
    gc.collect()
    assert len(scene.Mesh) <= 1
    assert not seen or "used by a call of this thread" in seen[0]


@pytest.mark.skipif(not hasattr(os, "fork"), reason="needs fork")
def test_a_forked_process_uses_its_own_copy():
    scene = box()
    value = vd.Value.parse("{ a = 1; }")
    child = os.fork()
    if child == 0:
        status = 1
        try:
            scene.Camera[0].general.near_distance = 0.5
            value["a"] = 2
            positions = scene.Mesh[0].positions
            scene.close()
            status = 0 if positions.sum() == 1800 and value["a"] == 2 else 2
        finally:
            os._exit(status)
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
    assert scene.Camera[0].general.near_distance == 0.0 and value["a"] == 1


@pytest.mark.skipif(not hasattr(os, "fork"), reason="needs fork")
def test_a_scene_that_was_in_use_at_the_fork_says_so():
    scene = box()
    with scene._exclusive(change=False):
        child = os.fork()
        if child == 0:
            status = 1
            try:
                scene.id
            except vd.ConcurrentUseError as problem:
                status = 0 if "when this process was forked" in str(problem) else 2
            finally:
                os._exit(status)
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0


def test_the_interpreter_ends_with_everything_alive():
    done = run_python("""
import threading, numpy as np, vornath_data as vd
scene = vd.Scene()
words = np.zeros(36, "u4")
mesh = scene.Mesh.add(words, triangles=1, vertices=3)
positions = mesh.positions
general = scene.Camera.add(value="{ }").general
general.near_distance = 1.0
value = vd.Value.parse("{ a = &[ 1, 2 ]; }")
array = value["a"].numpy()
class Cycle: pass
cycle = Cycle(); cycle.self = cycle; cycle.things = [scene, mesh, positions, general, value, array, value.type]
class Late:
    def __del__(self):
        self.things[0].close()
late = Late(); late.things = [scene]; late.self = late
def use():
    while True: array.sum()
threading.Thread(target=use, daemon=True).start()
print("end")
""")
    assert (done.returncode, done.stdout, done.stderr) == (0, "end\n", "")


@pytest.mark.parametrize("work", ['vd.Scene().MaterialGraph.add(np.zeros(10, "u1"))', "vd.Scene().dump()",
                                  'vd.Scene().MaterialGraph.add(Noisy((10,)))'])
def test_the_interpreter_ends_while_threads_of_their_own_release_assets_and_print_scenes(work):
    for _ in range(4):
        done = run_python(f"""
import threading, time, numpy as np, vornath_data as vd
class Noisy(np.ndarray):
    def __del__(self): sum(range(100))
def use():
    while True: {work}
for _ in range(3): threading.Thread(target=use, daemon=True).start()
time.sleep(0.1)
print("end")
""")
        assert (done.returncode, done.stdout, done.stderr) == (0, "end\n", "")


def test_a_finaliser_that_runs_last_can_use_a_scene():
    done = run_python("""
import vornath_data as vd
class Late:
    def __del__(self):
        scene = self.scene
        scene.set("Camera/0/groups/General/near_distance", 0.5)
        near, copy = scene.get("Camera/0/groups/General/near_distance"), scene.copy()
        print(len(scene), len(scene.Shape), bool(scene.Camera), near, copy.digest() == scene.digest())
        print(scene.equivalent(copy), scene.validate().valid, scene.Shape.column("Target", "visible_in_mask").tolist())
        print(len(scene.to_json()["objects"]), len(scene.dump()) > 100)
        try:
            scene.get("Shape/9")
        except KeyError:
            print("unknown")
late = Late()
late.scene = vd.Scene()
late.scene.Shape.add()
late.scene.Camera.add(value="{ }")
""")
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout == "2 1 True 0.5 True\nTrue True [True]\n2 True\nunknown\n"


def test_a_scene_is_printed_by_a_function_that_runs_at_the_end():
    done = run_python("""
import atexit
@atexit.register
def last(): print(len(scene.dump()) > 100)
import vornath_data as vd
scene = vd.Scene()
""")
    assert (done.returncode, done.stdout, done.stderr) == (0, "True\n", "")


def test_blocks_that_outlive_the_interpreter_are_freed_by_the_c_library():
    done = run_python("""
import atexit, ctypes, numpy as np
@atexit.register
def last():  # registered first, so that it runs last: after the package has let go
    handle = ctypes.c_void_p(address)
    capi.vrdmDestroyScene(handle)
    print("destroyed")
import vornath_data as vd
from vornath_data import capi
scene = vd.Scene()
scene.Mesh.add(np.zeros(36, "u4"), triangles=1, vertices=3)
address, scene._handle.value = scene._handle.value, 0
""")
    assert (done.returncode, done.stdout, done.stderr) == (0, "destroyed\n", "")


def test_an_array_is_released_on_a_thread_without_an_interpreter(tmp_path):
    import shutil
    import subprocess

    from conftest import ROOT
    compiler = shutil.which("cc")
    if not compiler:
        pytest.skip("needs a C compiler")
    source = tmp_path / "release.c"
    source.write_text("""
#include <pthread.h>
#include <vornath_data/asset_storage.h>
static void* work(void* storage) { vrdmAssetStorageRelease((AssetStorage*)storage); return 0; }
void releaseOnThread(AssetStorage* storage) {
  pthread_t thread;
  pthread_create(&thread, 0, work, storage);
  pthread_join(thread, 0);
}
""")
    library = tmp_path / "release.so"
    subprocess.run([compiler, "-shared", "-fPIC", f"-I{ROOT / 'include'}", str(source), "-o", str(library),
                    "-pthread"], check=True)
    import ctypes

    from vornath_data import assets, capi
    function = ctypes.CDLL(str(library)).releaseOnThread
    function.argtypes = [ctypes.c_void_p]
    words = np.zeros(36, "u4")
    watch = weakref.ref(words)
    block = assets.make_storage(words, words.ctypes.data, words.nbytes)
    del words
    capi.vrtkStorageRetain(block)
    capi.vrtkStorageRelease(block)
    assert watch() is not None
    function(block)
    gc.collect()
    assert watch() is None


def test_a_scene_and_a_value_begin_once(scene):
    camera = scene.Camera.add(general={"near_distance": 0.5})
    general = camera.general
    opened = vd.Scene.from_json(scene.to_json())
    value = vd.Value("float[3]", [1, 2, 3])
    part, parsed = value[0], vd.Value.parse("{ a = 1; }")
    for again in (scene.__init__, opened.__init__, lambda: value.__init__("int"), lambda: parsed.__init__("int")):
        with pytest.raises(TypeError, match="exists already"):
            again()
    assert general.near_distance == 0.5 and len(scene.Camera) == len(opened.Camera) == 1
    assert value.to_python() == [1, 2, 3] and part == 1.0 and parsed["a"] == 1
    scene.close()
    with pytest.raises(TypeError, match="exists already"):
        scene.__init__()
    with pytest.raises(vd.ClosedError):
        general.near_distance


INTERRUPTED = """
import sys, threading
import vornath_data as vd
from vornath_data import scene as module
target, use = vd.Scene(), sys.argv[1:]
camera = target.Camera.add(general={"near_distance": 0.5})
class Stop(BaseException): pass
def stop(frame, event, argument):
    # Where a handler of a signal would raise: before the first line of __exit__().
    if event == "call" and frame.f_code is module._Exclusive.__exit__.__code__:
        sys.settrace(None)
        raise Stop
"""


@pytest.mark.parametrize("use", [
    "target.id", "len(target)", "target.Camera.add()", "camera.general.to_dict()", "camera.remove()", "target.digest()",
    "camera.general.near_distance = 1.0", "setattr(target.Camera[0].general, 'near_distance', 1.0)", "target.close()",
    "target.Camera.column('General', 'near_distance')", "vd.diff(target, vd.Scene())", "camera.reference_count()",
])
def test_a_scene_is_free_after_an_interrupted_call(use):
    """Also while the exception, whose traceback keeps the call's frames, is handled."""
    for call in ("target.id", "target.Shape.add()", "vd.diff(target, vd.Scene())"):
        code = INTERRUPTED + f"""
sys.settrace(stop)
try:
    {call}
except Stop:
    {use}
    print('used')
"""
        done = run_python(code)
        assert (done.stdout, done.stderr) == ("used\n", ""), done.stderr


def test_a_call_that_still_runs_keeps_its_scene():
    """The frames of a call that is under way are found: from a callback within it the scene is refused."""
    done = run_python("""
import vornath_data as vd
from vornath_data import _tools
scene, other = vd.Scene(), vd.Scene()
def deep(count, use):
    return deep(count - 1, use) if count else use()
def one(self):
    with self._exclusive():
        return deep(50, lambda: self.id)
def two():
    with _tools._Both(scene, other):
        return deep(50, lambda: (other.id))
def three():
    with _tools._Both(scene, other):
        return deep(50, lambda: (scene.id))
for use in (lambda: one(scene), two, three):
    try:
        use()
    except vd.ConcurrentUseError as problem:
        print(problem)
    scene.id, other.id
""")
    words = "the scene is used by a call of this thread that has not returned\n"
    assert done.stdout == 3 * words, done.stderr


def test_a_group_is_whole_after_an_interrupted_first_use():
    """Wherever a call is interrupted, a group then reads and writes as if nothing had happened."""
    done = run_python("""
import sys
import vornath_data as vd
class Stop(BaseException): pass
def interrupt(scene, use, number):
    count = [0]
    def stop(frame, event, argument):
        if "vornath_data" not in frame.f_code.co_filename or frame.f_code.co_name == "__del__":
            return None
        count[0] += 1
        if count[0] == number:
            sys.settrace(None)
            raise Stop
        return stop
    sys.settrace(stop)
    try:
        use()
        return False
    except Stop:
        return True
    finally:
        sys.settrace(None)
for use in (lambda g: g.near_distance, lambda g: g.to_dict(), lambda g: g.update(shutter_open=0.25),
            lambda g: g.reset(), lambda g: setattr(g, "time_end", 2.0)):
    number = 1
    while True:
        scene = vd.Scene()
        general = scene.Camera.add().general
        if not interrupt(scene, lambda: use(general), number):
            break
        general.near_distance = 0.5
        fresh = scene.Camera[0].general
        assert general.near_distance == fresh.near_distance == 0.5, number
        assert general.to_dict() == fresh.to_dict(), (number, general, fresh)
        number += 1
    assert number > 2
print("done")
""")
    assert (done.stdout, done.stderr) == ("done\n", ""), done.stderr
