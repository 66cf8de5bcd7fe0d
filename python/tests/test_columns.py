"""Columns: one field of all live objects as one array."""
import numpy as np
import pytest

import vornath_data as vd


@pytest.fixture
def shapes(scene):
    for number in range(5):
        scene.Shape.add(general={"edge_radius": number / 4})
    scene.Shape[1].remove()
    return scene.Shape


def test_a_column_has_the_live_objects_in_order(shapes):
    assert shapes.column("General", "edge_radius").tolist() == [0.0, 0.5, 0.75, 1.0]
    assert shapes.column("general", "edge_radius", slots=[4, 0]).tolist() == [1.0, 0.0]
    assert shapes.column("General", "edge_radius", slots=[shapes[3]]).tolist() == [0.75]


def test_every_column_has_what_the_objects_have(scene):
    """Compares each field of each group with what its objects tell."""
    for entry in vd.catalogue():
        if entry.kind != "instance":
            continue
        objects = scene[entry.name]
        objects.add(), objects.add()
        for group in entry.groups.values():
            whole = objects.column(group.name)
            assert whole.shape[0] == 2
            for label, field in group.fields.items():
                column = objects.column(group.name, label)
                one = objects[1].groups[group.name].value()[label]
                if isinstance(one, vd.Part):
                    one = one.numpy()
                    if column.dtype == bool:
                        one = one != 0
                    if one.dtype.names and column.dtype.names is None:
                        one = np.array([list(one[name]) for name in one.dtype.names])  # a matrix
                    assert np.array_equal(column[1], one), label
                elif isinstance(one, tuple):
                    assert tuple(column[1]) == one, label
                elif isinstance(one, str):
                    assert field.type.labels[column[1]] == one
                else:
                    assert column[1] == np.float32(one) if isinstance(one, float) else column[1] == one
                objects.set_column(group.name, label, column)
                assert np.array_equal(objects.column(group.name, label), column)


def test_matrices_are_arrays_of_four_by_four(shapes):
    matrices = shapes.column("Transformation", "matrix")
    assert matrices.shape == (4, 4, 4) and matrices.dtype == "float32"
    assert np.array_equal(matrices, np.broadcast_to(np.eye(4), (4, 4, 4)))
    matrices[:, 3, 1] = [1, 2, 3, 4]
    shapes.set_column("Transformation", "matrix", matrices)
    assert [shape.transformation.matrix.w[1] for shape in shapes] == [1.0, 2.0, 3.0, 4.0]
    assert shapes.column("Transformation", "matrix.w")[:, 1].tolist() == [1.0, 2.0, 3.0, 4.0]
    assert np.array_equal(shapes.column("Transformation"), matrices) or \
        shapes.column("Transformation").dtype.names == ("matrix",)


def test_one_value_is_written_to_all(shapes):
    shapes.set_column("General", "edge_radius", 0.125)
    assert shapes.column("General", "edge_radius").tolist() == [0.125] * 4
    shapes.set_column("Transformation", "matrix.x", [1, 2, 3, 4])
    assert shapes[4].transformation.matrix.x == (1, 2, 3, 4)
    shapes.set_column("General", "edge_radius", [1, 2], slots=[2, 0])
    assert shapes[0].general.edge_radius == 2.0 and shapes[2].general.edge_radius == 1.0


def test_bools_are_bools_and_enums_are_codes_or_labels(shapes):
    flags = shapes.column("Target", "visible_in_mask")
    assert flags.dtype == bool and flags.all()
    shapes.set_column("Target", "visible_in_mask", [True, False, True, False])
    assert [shape.target.visible_in_mask for shape in shapes] == [True, False, True, False]
    assert shapes.column("Target", "visible_in_mask", slots=[2]).tolist() == [False]
    labels = vd.catalogue()["Shape"].groups["General"].fields["geometric_representation"].type.labels
    shapes.set_column("General", "geometric_representation", [labels[1], labels[0], labels[1], labels[0]])
    assert shapes.column("General", "geometric_representation").tolist() == [1, 0, 1, 0]
    shapes.set_column("General", "geometric_representation", labels[1])
    assert shapes[0].general.geometric_representation == labels[1]
    shapes.set_column("General", "geometric_representation", np.zeros(4, int))
    with pytest.raises(vd.OutOfRange):
        shapes.set_column("General", "geometric_representation", [0, 0, 0, 99])
    with pytest.raises(vd.UnknownName):
        shapes.set_column("General", "geometric_representation", ["MESHH"] * 4)


def test_whole_groups_are_structured(scene):
    scene.Camera.add(), scene.Camera.add()
    whole = scene.Camera.column("General")
    assert whole.dtype == vd.catalogue()["Camera"].groups["General"].type.dtype
    whole["near_distance"] = [0.25, 0.5]
    scene.Camera.set_column("General", None, whole)
    assert scene.Camera[1].general.to_dict()["near_distance"] == 0.5
    scene.Camera.set_column("General", None, {"time_end": 0.5})
    assert scene.Camera[0].general.time_end == 0.5 and scene.Camera[0].general.near_distance == 0.0


@pytest.mark.parametrize("call,error", [
    (lambda s: s.column("Genral", "edge_radius"), vd.UnknownName),
    (lambda s: s.column("General", "edge"), vd.UnknownName),
    (lambda s: s.column("General", "edge_radius", slots=[1]), vd.NoSuchObject),
    (lambda s: s.set_column("General", "edge_radius", [1.0, 2.0]), vd.TypeMismatch),
    (lambda s: s.set_column("General", "edge_radius", ["a"] * 4), vd.TypeMismatch),
    (lambda s: s.set_column("General", "edge_radius", [1e39] * 4), vd.OutOfRange),
    (lambda s: s.set_column("Target", "visible_in_mask", [1, 1, 1, 1]), vd.TypeMismatch),
    (lambda s: s.set_column("Target", "custom_data", [2**31] * 4), vd.OutOfRange),
    (lambda s: s.set_column("Target", "custom_data", [0.5] * 4), vd.TypeMismatch),
])
def test_refuses_what_is_no_column_and_writes_nothing(shapes, call, error):
    before = shapes.column("General"), shapes.column("Target")
    with pytest.raises(error):
        call(shapes)
    assert shapes.column("General").tobytes() == before[0].tobytes()
    assert shapes.column("Target").tobytes() == before[1].tobytes()


def test_a_column_that_is_written_is_seen_by_its_objects(shapes):
    general = shapes[0].general
    assert general.edge_radius == 0.0
    shapes.set_column("General", "edge_radius", 0.5)
    assert general.edge_radius == 0.5


def test_a_class_without_objects_has_an_empty_column(scene):
    assert scene.Camera.column("Transformation", "matrix").shape == (0, 4, 4)
    assert scene.Camera.column("General").shape == (0,)
    scene.Camera.set_column("General", "near_distance", [])


def test_a_column_is_a_copy(shapes):
    column = shapes.column("General", "edge_radius")
    column[:] = 9
    assert shapes[0].general.edge_radius == 0.0
