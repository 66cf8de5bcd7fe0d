# ---
# jupyter: {jupytext: {text_representation: {format_name: percent}}}
# ---
# %% [markdown]
# # A measured box
# Builds a scene from the tables in `examples/cornell_box/data/`. Lengths become metres; a matrix has the images of
# the axes and of the origin as its rows.
# %%
import csv
import pathlib
import sys

import numpy as np

import vornath_data as vd

folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "examples/cornell_box")
output = pathlib.Path(sys.argv[2] if len(sys.argv) > 2 else "cornell_box.vrnscene")


def table(name):
    with open(folder / "data" / f"cornell_box_{name}.csv", encoding="utf-8") as file:
        return list(csv.DictReader(file))


def vector(row, unit=1.0):
    return np.array([float(row[axis]) for axis in "xyz"]) * unit


def unit(v):
    return v / np.linalg.norm(v)


def program(objects, name):
    return objects.add((folder / "programs" / name).read_text(encoding="utf-8"))


# %% [markdown]
# ## Spectra
# A measured reflectance holds up to the next wavelength. The points of the lamp's emission are joined by lines, which
# are cut into steps of 5 nm.
# %%
measured = table("reflectance")
paint = {name: vd.spectrum([(float(row["wavelength"]), float(row[name])) for row in measured])
         for name in ("white", "green", "red")}
points = np.array([[float(row["wavelength"]), float(row["emission"])] for row in table("light")])
steps = np.arange(points[0, 0], points[-1, 0], 5.0)
heights = np.interp(steps + 2.5, points[:, 0], points[:, 1])
emission = vd.spectrum(np.vstack([np.column_stack([steps, heights]), [points[-1, 0], 0.0]]))
# %% [markdown]
# ## Camera and materials
# %%
scene = vd.Scene()
view = {row["quantity"]: row for row in table("camera")}
z = -unit(vector(view["direction"]))
x = unit(np.cross(vector(view["up"]), z))
rows = np.zeros((4, 4))
rows[:3, :3], rows[3, 3] = [x, np.cross(z, x), z], 1.0
rows[3, :3] = vector(view["position"], 1e-3)
focal, width, height = (float(view[name]["x"]) for name in ("focal_length", "film_width", "film_height"))
camera = scene.Camera.add(
    program=program(scene.CameraProgram, "pinhole.camera"), transformation={"matrix": rows + 0.0},
    general={"near_distance": 0.5}, background={"active": True},
    value=vd.Value("{ float focal_length; float2 film_size; }",
                   {"focal_length": focal, "film_size": (width, height)}))

diffuse, glowing = (program(scene.MaterialProgram, f"{name}.material") for name in ("diffuse", "glowing"))
kind = vd.spectrum_type().stripped
materials = {}
for name in dict.fromkeys(row["material"] for row in table("geometry")):
    if name in paint:
        value = vd.Value(f"{{ {kind} reflectance; }}", {"reflectance": paint[name]})
    else:
        value = vd.Value(f"{{ {kind} reflectance; {kind} emission; }}",
                         {"reflectance": vd.spectrum(0.78), "emission": emission})
    materials[name] = scene.Material.add(program=diffuse if name in paint else glowing, value=value)
# %% [markdown]
# ## Shapes
# Each face has vertices and normals of its own, and two triangles. The lamp hangs half a millimetre below the ceiling.
# %%
room, lamp_group, short, tall = (scene.TransformationGroup.add() for _ in range(4))
lamp_group.transformation.matrix.w = (0.0, -0.0005, 0.0, 1.0)
moved = {"light": lamp_group, "short_block": short, "tall_block": tall}
lights = scene.LightGroup.add()
faces = {}
for row in table("geometry"):
    faces.setdefault((row["object"], row["material"]), []).append(vector(row, 1e-3))
shapes = {}
for (name, material), corners in faces.items():
    quads = np.array(corners).reshape(-1, 4, 3)
    after, before = np.roll(quads, -1, axis=1) - quads, np.roll(quads, 1, axis=1) - quads
    normals = np.cross(after, before)
    along = np.stack([quads[:, 1] - quads[:, 0]] * 2 + [quads[:, 2] - quads[:, 3]] * 2, axis=1)
    first = 4 * np.arange(len(quads))[:, None]
    mesh = scene.Mesh.add(positions=quads.reshape(-1, 3), triangles=(first + [0, 1, 2, 0, 2, 3]).reshape(-1, 3),
                          normals=(normals / np.linalg.norm(normals, axis=2, keepdims=True)).reshape(-1, 3),
                          tangents=(along / np.linalg.norm(along, axis=2, keepdims=True)).reshape(-1, 3),
                          texcoords=np.tile([[0, 0], [1, 0], [1, 1], [0, 1]], (len(quads), 1)))
    shapes[name] = scene.Shape.add(material=materials[material], mesh=mesh, light_group=lights,
                                   transformation_group=moved.get(name, room), target={"tag": name})
# %% [markdown]
# ## The lamp
# It is in the scene twice: as a shape, which the camera sees, and as a light, which lights the box.
# %%
face = np.array(faces["light", "light"][:4])
across, up = face[1] - face[0], face[2] - face[1]
rows = np.zeros((4, 4))
rows[:, :3], rows[3, 3] = [across, up, unit(np.cross(across, up)), face.mean(axis=0)], 1.0
light = scene.Light.add(program=program(scene.LightProgram, "rectangle.light"), transformation_group=lamp_group,
                        transformation={"matrix": rows + 0.0}, target={"tag": "lamp"},
                        value=vd.Value(f"{{ {kind} emission; }}", {"emission": emission}))
light.visibility.visible_to.camera = False
shapes["light"].sampling_probability.multiplier = 0.0
shapes["light"].visibility.visible_to.indirect_illumination = False
shapes["light"].visibility.cast.indirect_illumination = False
lights.emitters = [light, shapes["light"]]

scene.ImageTask.add(camera=camera, wavefront={"max_bounces": 16, "spectral_wavelength": 1.0})
scene.groups.raytracer.ray_epsilon = 0.00001
# %%
scene.save(output)
print(scene, vd.check(output), sep="\n")
