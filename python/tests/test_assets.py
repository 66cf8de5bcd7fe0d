"""Assets: bytes shared with NumPy."""
import gc
import threading
import weakref

import numpy as np
import pytest

import vornath_data as vd
from vornath_data import assets


def cube():
    positions = np.array([[x, y, z] for x in (0, 1) for y in (0, 1) for z in (0, 1)], "f4")
    return positions, np.array([[0, 1, 2], [1, 3, 2]], "u4")


def test_a_mesh_has_the_parts_that_it_was_made_of(scene):
    positions, triangles = cube()
    normals, tangents = positions + 1, positions + 2
    texcoords = np.arange(32, dtype="f4").reshape(2, 8, 2)
    mesh = scene.Mesh.add(positions=positions, triangles=triangles, normals=normals, tangents=tangents,
                          texcoords=texcoords)
    assert mesh.desc == {"triangles": 2, "vertices": 8, "texcoordSets": 2, "flags": 0}
    assert mesh.nbytes == 4 * (3 * 2 + 9 * 8 + 2 * 8 * 2)
    for name, array in (("positions", positions), ("triangles", triangles), ("normals", normals),
                        ("tangents", tangents), ("texcoords", texcoords)):
        assert np.array_equal(getattr(mesh, name), array), name


def test_views_are_read_only_and_without_a_copy(scene):
    positions, triangles = cube()
    mesh = scene.Mesh.add(positions=positions, triangles=triangles)
    assert mesh.positions.ctypes.data == mesh.bytes.ctypes.data + 24
    assert mesh.triangles.ctypes.data == mesh.bytes.ctypes.data
    for array in (mesh.positions, mesh.triangles, mesh.bytes, mesh.normals):
        assert not array.flags.writeable
        with pytest.raises(ValueError):
            array[...] = 0


def test_a_layout_is_shared_without_a_copy(scene):
    layout = vd.MeshLayout(triangles=1_000_000, vertices=500_000, texcoord_sets=2)
    layout.triangles[:, 1] = 1
    mesh = scene.Mesh.add(layout)
    assert mesh.bytes.ctypes.data == layout.words.ctypes.data
    assert mesh.positions.ctypes.data == layout.positions.ctypes.data
    assert mesh.triangles.ctypes.data == layout.triangles.ctypes.data
    assert mesh.texcoords.shape == (2, 500_000, 2)


def test_parts_that_lie_as_in_a_mesh_are_shared_without_a_copy(scene):
    layout = vd.MeshLayout(triangles=2, vertices=8)
    parts = {name: getattr(layout, name)
             for name in ("positions", "triangles", "normals", "tangents", "texcoords")}
    parts["positions"][...], parts["triangles"][...] = cube()
    mesh = scene.Mesh.add(**parts)
    assert mesh.bytes.ctypes.data == layout.words.ctypes.data
    del parts["normals"]
    assert scene.Mesh.add(**parts).bytes.ctypes.data != layout.words.ctypes.data, \
        "what stands in the place of missing parts is not taken over"


def test_bytes_are_shared_without_a_copy(scene):
    words = np.zeros(3 + 9 * 3 + 2 * 3, "u4")
    mesh = scene.Mesh.add(words, triangles=1, vertices=3)
    assert mesh.bytes.ctypes.data == words.ctypes.data
    flagged = scene.Mesh.add(bytes(152), triangles=1, vertices=3, texcoord_sets=0, flags=3)
    assert flagged.triangle_words.shape == (2, 1) and flagged.texcoords.shape == (1, 3, 2)
    with pytest.raises(vd.TypeMismatch, match="the asset has 152 bytes, and 151 were given"):
        scene.Mesh.add(bytes(151), triangles=1, vertices=3, flags=3)
    buffer = bytearray(152)
    scene.Mesh.add(buffer, triangles=1, vertices=3, flags=3)
    with pytest.raises(BufferError):
        buffer.append(0)


@pytest.mark.parametrize("parts,error", [
    ({"positions": np.zeros((3, 2)), "triangles": [[0, 1, 2]]}, vd.TypeMismatch),
    ({"positions": np.zeros((3, 3)), "triangles": [[0, 1, 3]]}, vd.OutOfRange),
    ({"positions": np.zeros((3, 3)), "triangles": [[0, 1, -1]]}, vd.OutOfRange),
    ({"positions": np.zeros((3, 3)), "triangles": [[0, 1]]}, vd.TypeMismatch),
    ({"positions": np.zeros((3, 3)), "triangles": [[0.0, 1.0, 2.0]]}, vd.TypeMismatch),
    ({"positions": np.zeros((3, 3)), "triangles": [[0, 1, 2]], "normals": np.zeros((2, 3))}, vd.TypeMismatch),
    ({"positions": [["a", "b", "c"]], "triangles": []}, vd.TypeMismatch),
    ({"positions": np.zeros((3, 3)), "triangles": [[0, 1, 2]], "colours": 1}, TypeError),
])
def test_refuses_parts_that_are_no_mesh(scene, parts, error):
    with pytest.raises(error):
        scene.Mesh.add(**parts)
    assert len(scene.Mesh) == 0


def test_an_empty_mesh_is_a_live_object(scene):
    mesh = scene.Mesh.add(positions=np.zeros((0, 3)), triangles=[])
    assert mesh.valid and len(scene.Mesh) == 1 and mesh.positions.shape == (0, 3) and mesh.nbytes == 0
    again = vd.Scene.from_bytes(scene.to_bytes())
    assert again.Mesh[0].triangles.shape == (0, 3)


def test_the_array_lives_as_long_as_the_asset():
    scene = vd.Scene()
    words = np.zeros(36, "u4")
    watch = weakref.ref(words)
    mesh = scene.Mesh.add(words, triangles=1, vertices=3)
    del words
    gc.collect()
    assert watch() is not None
    view = mesh.positions
    mesh.remove()
    gc.collect()
    assert watch() is not None, "the view keeps the bytes"
    assert view.sum() == 0
    del view
    gc.collect()
    assert watch() is None


def test_a_view_lives_longer_than_the_scene():
    scene = vd.Scene()
    view = scene.Mesh.add(positions=cube()[0], triangles=cube()[1]).positions
    scene.close()
    del scene
    gc.collect()
    assert np.array_equal(view, cube()[0])


def test_scenes_share_bytes_and_release_them_on_any_thread():
    words = np.zeros(36, "u4")
    watch = weakref.ref(words)
    scene = vd.Scene()
    scene.Mesh.add(words, triangles=1, vertices=3)
    del words
    thread = threading.Thread(target=scene.close)
    thread.start()
    thread.join()
    gc.collect()
    assert watch() is None and not [one for one in assets._kept.values() if one is watch()]


def test_replacing_copies_and_keeps_the_id(scene):
    mesh = scene.Mesh.add(positions=cube()[0], triangles=cube()[1])
    before, old = mesh.id, mesh.positions
    words = np.zeros(36, "u4")
    mesh.replace(words, triangles=1, vertices=3)
    assert mesh.id == before and mesh.vertex_count == 3 and old.shape == (8, 3)
    assert mesh.bytes.ctypes.data != words.ctypes.data
    mesh.replace(positions=cube()[0], triangles=cube()[1])
    assert np.array_equal(mesh.positions, cube()[0])
    mesh.replace(vd.MeshLayout(2, 4))
    assert mesh.triangle_count == 2


@pytest.mark.parametrize("format,channels,kind", [
    ("SL8", 1, "u1"), ("SLA8", 2, "u1"), ("SRGB8", 3, "u1"), ("NH8", 4, "u1"), ("L16", 1, "f2"),
    ("RGBA16", 4, "f2"), ("N32", 3, "f4"), ("XYZW32", 4, "f4"),
])
def test_pixels_have_the_dtype_and_the_shape_of_their_format(scene, format, channels, kind):
    pixels = np.arange(2 * 4 * channels).astype(kind).reshape(2, 4, channels)
    texture = scene.Texture.add(pixels, format=format)
    assert texture.desc == {"width": 4, "height": 2, "depth": 1, "format": vd.FORMATS[format], "layout": 0}
    assert texture.pixels.dtype == kind and np.array_equal(texture.pixels, pixels)
    assert texture.pixels.ctypes.data == pixels.ctypes.data, "nothing is copied"
    assert texture.nbytes == pixels.nbytes and (texture.format, texture.layout) == (format, "2D")


def test_every_format_and_layout_has_the_librarys_size(scene):
    for format, code in vd.FORMATS.items():
        for layout, number in vd.LAYOUTS.items():
            depth = 6 if layout.startswith("Cube") else 1
            width = height = 12
            size = assets._texture_bytes(width, height, depth, code, number)
            scene.Texture.add(bytes(size), format=format, layout=layout, width=width, height=height, depth=depth)
            with pytest.raises(vd.TypeMismatch):
                scene.Texture.add(bytes(size - 1), format=format, layout=layout, width=width, height=height,
                                  depth=depth)
    report = scene.validate()
    assert report.valid and not report.messages
    assert vd.Scene.from_bytes(scene.to_bytes()).to_bytes() == scene.to_bytes(), \
        "the library writes and reads as many bytes"


def test_mipmap_levels_follow_each_other(scene):
    sizes = [(4, 8), (2, 4), (1, 2), (1, 1)]
    data = b"".join(bytes([level]) * height * width * 3 for level, (height, width) in enumerate(sizes))
    texture = scene.Texture.add(data, format="SRGB8", layout="2D-Mipmap", width=8, height=4)
    assert [level.shape[:2] for level in texture.levels] == sizes
    assert [int(level.max()) for level in texture.levels] == [0, 1, 2, 3]
    assert texture.pixels.shape == (4, 8, 3)


def test_layers_and_blocks(scene):
    faces = np.zeros((6, 4, 4, 1), "f4")
    assert scene.Texture.add(faces, format="L32", layout="Cube").pixels.shape == (6, 4, 4, 1)
    blocks = scene.Texture.add(bytes(2 * 3 * 8), format="BC1", width=9, height=8)
    assert blocks.pixels.shape == (2, 3, 8)


@pytest.mark.parametrize("call,error", [
    (lambda s: s.Texture.add(np.zeros((2, 2, 3)), format="SRGB8"), vd.TypeMismatch),
    (lambda s: s.Texture.add(np.zeros((2, 2, 4), "u1"), format="SRGB8"), vd.TypeMismatch),
    (lambda s: s.Texture.add(np.zeros((2, 2, 3), "u1"), format="SRGB9"), vd.UnknownName),
    (lambda s: s.Texture.add(np.zeros((2, 2, 3), "u1"), format=5), vd.OutOfRange),
    (lambda s: s.Texture.add(bytes(64), format="BC1"), TypeError),
    (lambda s: s.Texture.add(bytes(64), format="SL8", width=0, height=1), vd.OutOfRange),
    (lambda s: s.Texture.add(bytes(64), format="SL8", layout="2d", width=1, height=1), vd.UnknownName),
])
def test_refuses_pixels_that_are_no_texture(scene, call, error):
    with pytest.raises(error):
        call(scene)
    assert len(scene.Texture) == 0


def test_material_graphs_are_bytes(scene):
    graph = scene.MaterialGraph.add(b"0123456789", root_offset=2, parameter_offset=5)
    assert bytes(graph.bytes) == b"0123456789" and (graph.root_offset, graph.parameter_offset) == (2, 5)
    graph.replace(b"abc")
    assert bytes(graph.bytes) == b"abc"
    with pytest.raises(vd.OutOfRange):
        scene.MaterialGraph.add(b"abc", root_offset=4)


def test_assets_without_contiguous_bytes_are_copied(scene):
    pixels = np.zeros((4, 8, 3), "u1")[:, ::2]
    texture = scene.Texture.add(pixels, format="SRGB8")
    assert texture.width == 4 and texture.pixels.ctypes.data != pixels.ctypes.data


def test_an_array_of_a_texture_can_become_another_texture(scene):
    first = scene.Texture.add(np.ones((2, 2, 3), "u1"), format="SRGB8")
    second = vd.Scene().Texture.add(first.pixels, format="XYZ8")
    address = first.pixels.ctypes.data
    first.remove()
    scene.close()
    gc.collect()
    assert second.pixels.ctypes.data == address and second.pixels.sum() == 12


@pytest.mark.parametrize("thing", [
    None, object(), "abc", 5, [object()] * 100, [None] * 6, ["a"] * 6, [256] * 6, [-1] * 6, [1.5] * 6, [[1, 2], [3]],
    np.array([None] * 100), np.array(["abc"] * 100), np.array(["2026-01-01"] * 100, "M8[D]"),
    np.zeros(100, [("a", "i4"), ("b", "O")]), np.zeros(100, "m8[s]"), np.ma.array(np.zeros(400, "u1"), mask=True),
], ids=lambda thing: repr(thing)[:20])
def test_what_has_no_bytes_becomes_no_asset(scene, thing):
    for add in (lambda: scene.MaterialGraph.add(thing), lambda: scene.Mesh.add(thing, triangles=1, vertices=3),
                lambda: scene.Texture.add(thing, format="SL8", width=1, height=6)):
        with pytest.raises(TypeError if thing is None else vd.TypeMismatch):
            add()
    assert len(scene) == 0


def test_bytes_come_from_buffers_and_lists_of_their_numbers(scene):
    import array
    for thing, expected in (([1, 2, 255], b"\1\2\xff"), ((), b""), (array.array("h", [1, 2]), b"\1\0\2\0"),
                            (memoryview(b"abcd")[::2], b"ac"), (bytearray(b"ab"), b"ab"),
                            (np.array([1], "f8"), b"\0\0\0\0\0\0\xf0\x3f"), (np.array([b"xy"]), b"xy"),
                            (np.arange(6, dtype="u1").reshape(2, 3).T, b"\0\3\1\4\2\5"),
                            (np.float32(1), b"\0\0\x80\x3f")):
        assert scene.MaterialGraph.add(thing).bytes.tobytes() == expected


def test_masked_arrays_are_refused(scene):
    """Nothing in a scene says that an element has no value."""
    hidden = np.ma.array(np.zeros((3, 3), "f4"), mask=np.eye(3))
    corner = np.ma.array([[0, 1, 2]], mask=[[0, 0, 1]])
    shape = scene.Shape.add()
    value = vd.Value("{ int[3] a; float b; int c; float3 d; float[3,3] e; enum { A; B; } f; }")
    eye = np.eye(3, dtype="f4")
    for use in (lambda: scene.Mesh.add(positions=hidden, triangles=[[0, 1, 2]]),
                lambda: scene.Mesh.add(positions=eye, triangles=corner),
                lambda: scene.Mesh.add(positions=eye, triangles=[[0, 1, 2]], normals=hidden),
                lambda: scene.Mesh.add(positions=eye, triangles=[[0, 1, 2]], texcoords=hidden[:, :2]),
                lambda: scene.Texture.add(np.ma.array(np.zeros((2, 2, 3), "u1"), mask=True), format="SRGB8"),
                lambda: scene.Shape.set_column("Target", "tag", np.ma.array([1], mask=[True])),
                lambda: scene.Shape.set_column("Transformation", "matrix", np.ma.array(np.eye(4), mask=np.eye(4))),
                lambda: setattr(shape.transformation, "matrix", np.ma.array(np.eye(4), mask=np.eye(4))),
                lambda: value.__setitem__("a", np.ma.array([1, 2, 3], mask=[1, 0, 0])),
                lambda: value.__setitem__("a", [1, np.ma.masked, 3]),
                lambda: value.__setitem__("b", np.ma.masked), lambda: value.__setitem__("c", np.ma.masked),
                lambda: value.__setitem__("d", np.ma.array([1, 2, 3], mask=[1, 0, 0])),
                lambda: value.__setitem__("d", [1, np.ma.masked, 3]), lambda: value.__setitem__("e", hidden),
                lambda: value.__setitem__("f", np.ma.masked)):
        with pytest.raises(vd.TypeMismatch, match="masked"):
            use()
    assert value == vd.Value(value.type) and len(scene.Mesh) == len(scene.Texture) == 0


def test_the_words_of_a_layout_stay_what_they_are(scene):
    """An array in their place could be shorter than its mesh, or have another order of bytes."""
    layout = vd.MeshLayout(triangles=1, vertices=3)
    for other in (layout.words[:2], layout.words[::-1], np.zeros(1000, ">u4"), None):
        with pytest.raises(AttributeError):
            layout.words = other
    words = layout.words
    words.dtype = "u1"
    words.shape = 9, 4, -1
    with pytest.raises(ValueError):
        layout.words.resize((1,), refcheck=False)
    layout.words[0] = 7
    assert layout.words.dtype == np.uint32 and layout.words.shape == (3 + 27 + 6,)
    layout.triangles[0] = 0, 1, 2
    mesh = scene.Mesh.add(layout)
    assert mesh.triangles.tolist() == [[0, 1, 2]] and mesh.bytes.ctypes.data == layout.words.ctypes.data


def test_counts_and_extents_are_whole_numbers_in_their_range(scene):
    for wrong in (1.5, "1", None, True, np.float32(1), 1 + 0j):
        for call in (lambda: vd.MeshLayout(wrong, 2), lambda: vd.MeshLayout(1, wrong),
                     lambda: vd.MeshLayout(1, 2, wrong),
                     lambda: vd.MeshLayout(1, 2, flags=wrong),
                     lambda: scene.Mesh.add(b"", triangles=wrong, vertices=3),
                     lambda: scene.MaterialGraph.add(b"abc", root_offset=wrong),
                     lambda: scene.MaterialGraph.add(b"abc", parameter_offset=wrong)):
            with pytest.raises(vd.TypeMismatch, match="an integer is expected"):
                call()
    for wrong in (-1, 2**31, 2**32, 2**64):
        for call in (lambda: vd.MeshLayout(wrong, 2),
                     lambda: scene.Texture.add(b"abc", format="SL8", width=wrong, height=1),
                     lambda: scene.Texture.add(b"abc", format="SL8", width=1, height=1, depth=wrong),
                     lambda: scene.MaterialGraph.add(b"abc", root_offset=wrong)):
            with pytest.raises(vd.OutOfRange):
                call()
    assert vd.MeshLayout(np.int64(1), np.uint8(3)).words.size == 36 and len(scene) == 0


def test_extents_beside_an_array_are_those_of_the_array(scene):
    pixels = np.zeros((2, 4, 3), "u1")
    for extents in ({"width": 999}, {"height": 3}, {"depth": 2}):
        with pytest.raises(vd.TypeMismatch, match="the array has"):
            scene.Texture.add(pixels, format="SRGB8", **extents)
    made = scene.Texture.add(pixels, format="SRGB8", width=4)
    assert (made.width, made.height, made.depth) == (4, 2, 1)
    made = scene.Texture.add(np.zeros((6, 2, 2, 3), "u1"), format="SRGB8", layout="Cube", depth=6)
    assert (made.width, made.height, made.depth) == (2, 2, 6)


def test_texture_coordinates_without_a_set_are_refused(scene):
    eye = np.eye(3, dtype="f4")
    for shape in ((0, 3, 2), (0, 2), (1, 2, 2), (0,), ()):
        with pytest.raises(vd.TypeMismatch, match="texcoords"):
            scene.Mesh.add(positions=eye, triangles=[[0, 1, 2]], texcoords=np.zeros(shape, "f4"))
    empty = scene.Mesh.add(positions=np.zeros((0, 3)), triangles=[], texcoords=np.zeros((1, 0, 2)))
    assert empty.texcoords.shape == (1, 0, 2)


def test_a_position_beyond_float_is_refused(scene):
    eye = np.eye(3)
    far = eye * 1e300
    for parts in ({"positions": far}, {"positions": eye, "normals": far}, {"positions": eye, "tangents": -far},
                  {"positions": eye, "texcoords": far[:, :2]}):
        with pytest.raises(vd.OutOfRange, match=list(parts)[-1]):
            scene.Mesh.add(triangles=[[0, 1, 2]], **parts)
    kept = scene.Mesh.add(triangles=[[0, 1, 2]], positions=[[np.inf, np.nan, 1], [0, 0, 0], [1, 1, 1]])
    assert kept.positions[0, 0] == np.inf and np.isnan(kept.positions[0, 1])
