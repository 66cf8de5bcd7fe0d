"""What the tests share."""
from __future__ import annotations

import os
import pathlib
import subprocess
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGE = ROOT / "python"
sys.path.insert(0, str(PACKAGE))


def run_python(code: str, **environment: str) -> subprocess.CompletedProcess[str]:
    """Runs code in a process of its own."""
    return subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=120,
                          env={**os.environ, "PYTHONPATH": str(PACKAGE), **environment}, check=False)


@pytest.fixture
def scene():
    import vornath_data as vd
    with vd.Scene() as made:
        yield made


@pytest.fixture
def filled():
    """A scene with objects of several classes, and a free slot among the shapes."""
    import numpy
    import vornath_data as vd
    made = vd.Scene()
    mesh = made.Mesh.add(positions=numpy.eye(3, dtype="f4"), triangles=[[0, 1, 2]])
    texture = made.Texture.add(numpy.arange(24, dtype="u1").reshape(2, 4, 3), format="SRGB8")
    painted = made.MaterialProgram.add("painted")
    material = made.Material.add(program=painted, value="{ gloss = 0.5; }", textures=[texture])
    shapes = [made.Shape.add(mesh=mesh, material=material) for _ in range(3)]
    shapes[1].remove()
    lamp = made.Light.add(program=made.LightProgram.add("lamp"), value="{ power = 3.0; }")
    made.LightGroup.add(emitters=[shapes[0], lamp, None])
    pinhole = made.CameraProgram.add("camera pinhole { }")
    made.Camera.add(program=pinhole, value="{ focal_length = 0.05; }", general={"near_distance": 0.25})
    yield made
    made.close()
