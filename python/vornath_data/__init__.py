"""Scenes, types, values and colour of vornath_data in Python.

    >>> import vornath_data as vd
    >>> scene = vd.Scene()
    >>> program = scene.MaterialProgram.add("diffuse")
    >>> material = scene.Material.add(program=program, value="{ gloss = 0.5; }")
    >>> material.program.text, material.value["gloss"]
    ('diffuse', 0.5)

docs/python.md is a tour.
"""
from .assets import FORMATS, LAYOUTS, MeshLayout
from .catalogue import catalogue
from ._check import Message, Report, check, check_codes
from ._tools import (CatalogueChange, Difference, Differences, catalogue_text, compare_catalogue, diff,
                     equivalent, make_patch, write_file)
from .colour import *
from .colour import __all__ as _colour
from .errors import *
from .errors import __all__ as _errors
from .scene import Objects, Scene, SceneObject, Side, back, front
from .types import Field, Type
from .values import ForeignAddress, Part, Value, coerce, parse_value

__version__ = "1.0.0"

__all__ = ["CatalogueChange", "Difference", "Differences", "FORMATS", "Field", "ForeignAddress", "LAYOUTS",
           "MeshLayout", "Message", "Objects", "Part", "Report", "Scene", "SceneObject", "Side", "Type",
           "Value", "back", "catalogue", "catalogue_text", "check", "check_codes", "coerce", "compare_catalogue",
           "diff", "equivalent", "front", "make_patch", "parse_value", "write_file", *_colour, *_errors]
