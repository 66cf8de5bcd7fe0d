"""Colour: spectra, linear RGB of sRGB primaries, and black bodies. Wavelengths are in nanometres.

A spectrum in a value is { encoding; spectrum }: a luminance, an RGB triple, or pairs of a wavelength and an
amplitude. The first pair is (0, 0), an amplitude holds up to the next wavelength, and the last one is 0.

    >>> import vornath_data as vd
    >>> white = vd.spectrum([(400, 1.0), (720, 0.0)])
    >>> red, green, blue = vd.blackbody_rgb(6500.0)
    >>> red > green > blue * 0.9
    True
"""
from __future__ import annotations

import ctypes
import math
from collections.abc import Iterable, Sequence
from typing import Any

import numpy

from . import _declarations
from ._library import long, quick
from ._status import real_number
from .errors import OutOfRange, TypeMismatch
from .types import Type
from .values import Part, Value, _Item

_ILLUMINANTS = {"E": 0, "D65": 1}
_ENCODINGS = ("LUMINANCE", "RGB", "SPECTRAL")
Array = numpy.ndarray[Any, Any]


def _illuminant(name: str) -> int:
    try:
        return _ILLUMINANTS[name.upper()]
    except (KeyError, AttributeError):
        raise ValueError(f"an illuminant is 'E' or 'D65', not {name!r}") from None


def spectrum_type() -> Type:
    """Returns the type of a spectrum in a value."""
    return Type._own(quick.vrntTypeSpectrum())


def light_unit_type() -> Type:
    """Returns the type of photometric units: LUMEN, CANDELA, LUX, NIT."""
    return Type._own(quick.vrntTypeLightUnit())


def emission_type() -> Type:
    """Returns the type of a light's emission: a colour, a value and its unit."""
    return Type._own(quick.vrntTypeEmission())


def wrap_mode_type() -> Type:
    """Returns the type of the wrap modes of textures: CLAMP, BORDER, REPEAT, MIRROR."""
    return Type._own(quick.vrntTypeWrapmode())


def texture_type() -> Type:
    """Returns the type of a texture reference in a value."""
    return Type._own(quick.vrntTypeTexture())


def uv_transformation_type() -> Type:
    """Returns the type of an affine map of texture coordinates."""
    return Type._own(quick.vrntTypeUVTransformation())


_PARAMETERS = ("colour", "float", "normal", "simple_colour", "simple_float", "simple_normal")
_SAMPLERS = ("spectrum", "normal", "float", "spectrum_sphere")


def material_parameter_type(name: str) -> Type:
    """Returns the type of a material parameter: "colour", "float", "normal", "simple_colour",
    "simple_float" or "simple_normal"."""
    if name not in _PARAMETERS:
        raise ValueError(f"a material parameter is one of {', '.join(_PARAMETERS)}, not {name!r}")
    return Type._own(quick.vrntTypeMaterialParam(_PARAMETERS.index(name)))


def material_parameter_name(type: Type | str) -> str | None:
    """Returns the name of the material parameter that has a type; None if there is none."""
    number = quick.vrntTypeMaterialParamType(Type(type)._handle)
    return _PARAMETERS[number] if 0 <= number < len(_PARAMETERS) else None


def sampler_type(name: str) -> Type:
    """Returns the type of a sampler: "spectrum", "normal", "float" or "spectrum_sphere"."""
    if name not in _SAMPLERS:
        raise ValueError(f"a sampler is one of {', '.join(_SAMPLERS)}, not {name!r}")
    return Type._own(quick.vrntTypeSampler(_SAMPLERS.index(name)))


def sampler_name(type: Type | str) -> str | None:
    """Returns the name of the sampler that has a type; None if there is none."""
    number = quick.vrntTypeSamplerType(Type(type)._handle)
    return _SAMPLERS[number] if 0 <= number < len(_SAMPLERS) else None


def _pairs(samples: Any) -> Array:
    """Returns samples as pairs of a wavelength and an amplitude, checked."""
    if isinstance(samples, dict):
        samples = sorted(samples.items())
    array = numpy.asarray(list(samples) if not isinstance(samples, numpy.ndarray) else samples, "f8")
    if array.ndim != 2 or array.shape[1] != 2 or len(array) < 1:
        raise TypeMismatch("a spectrum is a list of pairs of a wavelength and an amplitude")
    if not numpy.isfinite(array).all():
        raise OutOfRange("the wavelengths and amplitudes of a spectrum are finite")
    with numpy.errstate(over="ignore"):
        pairs = array.astype("f4")
    if not numpy.isfinite(pairs).all():
        raise OutOfRange("an amplitude is outside the range of float")
    start = 1 if pairs[0, 0] == 0 else 0
    if (numpy.diff(pairs[:, 0]) <= 0).any() or pairs[start:, 0].min(initial=1.0) <= 0:
        raise OutOfRange("the wavelengths of a spectrum are positive and increase")
    return pairs


def spectrum(samples: Any, *, step: float | None = None) -> Value:
    """Returns a spectrum as a Value.

    samples: a number (a luminance), three numbers (linear RGB), or pairs of a wavelength and an amplitude,
    as a sequence, a dict or an array of shape (n, 2). Each amplitude holds up to the next wavelength. The
    closing pairs are added where they are missing: the last amplitude holds for `step` nm, or as long as
    the one before it.
    """
    if step is not None and not 0 < real_number("step", step) < math.inf:
        raise OutOfRange(f"step: {step} is no width of a sample")
    value = spectrum_type().default()
    if isinstance(samples, (bool, numpy.bool_)):
        raise TypeMismatch("a spectrum is a number, three numbers or pairs, and not a bool")
    number = int, float, numpy.integer, numpy.floating
    if isinstance(samples, number):
        value.update(encoding="LUMINANCE", spectrum=[float(samples)])
        return value
    if isinstance(samples, numpy.ndarray):
        plain = bool(samples.ndim == 1 and len(samples) == 3)
    else:
        samples = samples if isinstance(samples, dict) else list(samples)
        plain = len(samples) == 3 and all(isinstance(one, number) for one in samples)
    if plain:
        value.update(encoding="RGB", spectrum=[float(one) for one in samples])
        return value
    pairs = _pairs(samples)
    if pairs[0, 0] != 0:
        pairs = numpy.concatenate([numpy.zeros((1, 2), "f4"), pairs])
    if pairs[-1, 1] != 0:
        last, before = float(pairs[-1, 0]), float(pairs[-2, 0])
        width = float(step) if step is not None else last - before if len(pairs) > 2 else 5.0
        pairs = _pairs(numpy.concatenate([pairs, [[last + width, 0.0]]]))
    value.update(encoding="SPECTRAL", spectrum=pairs.ravel())
    return value


def _spectrum_place(value: _Item) -> tuple[Value, Any]:
    if not isinstance(value, _Item):
        raise TypeMismatch(f"a spectrum in a Value is expected, not {value.__class__.__name__}")
    root, type, offset = value._place()
    reason = type.mismatch(spectrum_type())
    if reason:
        raise TypeMismatch(f"a spectrum is expected: {reason}")
    return root, _declarations.vrntValueView_t(type._handle.address, offset)


def _floats(value: Any) -> Array:
    """Returns a copy of the floats of a spectrum. Raises TypeMismatch for one whose reference leads to none."""
    target = value["spectrum"]
    if not isinstance(target, _Item):
        raise TypeMismatch("the spectrum has no floats: its reference is "
                           + ("null" if target is None else "an address of the host"))
    return target.numpy().copy()


def spectrum_pairs(value: Any) -> Array:
    """Returns the wavelengths and amplitudes of a sampled spectrum that is drawn, without what is not finite and
    without the closing pair (0, 0). Raises OutOfRange if they cannot be drawn."""
    floats = _floats(value)
    pairs = floats[:len(floats) // 2 * 2].reshape(-1, 2)
    pairs = pairs[numpy.isfinite(pairs).all(axis=1) & (pairs[:, 0] > 0)]
    if len(pairs) < 2 or (numpy.diff(pairs[:, 0]) <= 0).any():
        raise OutOfRange("a plot needs two or more wavelengths that are positive and increase")
    return pairs


def spectrum_to_rgb(value: Value | Part, illuminant: str = "D65") -> tuple[float, float, float]:
    """Returns the linear RGB of a spectrum.

    illuminant: "D65" or "E", for a sampled spectrum. Each pair counts once, whatever its width; without a
    pair from 400 to 700 nm the result is NaN. Raises TypeMismatch for a value that is no spectrum.
    """
    code = _illuminant(illuminant)
    root, view = _spectrum_place(value)
    block = root._block.share()
    rgb = (ctypes.c_float * 3)()
    if long.vrntValueToRGB(block.address, ctypes.byref(view), code, rgb):
        raise TypeMismatch("the spectrum has fewer floats than its encoding needs")
    return rgb[0], rgb[1], rgb[2]


def sample_spectrum(value: Value | Part, wavelengths: Sequence[float] | Array) -> Array:
    """Returns the amplitudes of a spectrum at wavelengths, under D65: the mean from each wavelength to the
    next one.

    wavelengths: in nanometres, two or more, positive and increasing.
    """
    grid = numpy.asarray(wavelengths, "<f4")
    if grid.ndim != 1 or len(grid) < 2 or not (grid[0] > 0) or not (numpy.diff(grid) > 0).all():
        raise OutOfRange("two or more wavelengths are expected, positive and increasing")
    root, view = _spectrum_place(value)
    block = root._block.share()
    pairs = numpy.zeros((len(grid), 2), "<f4")
    pairs[:, 0] = grid
    if long.vrntValueToSPD(block.address, ctypes.byref(view), 2 * len(grid), pairs.ctypes.data):
        raise TypeMismatch("the spectrum has fewer floats than its encoding needs")
    return pairs[:, 1].copy()


def convert_spectrum(samples: Any, to: str = "RGB", *, illuminant: str = "D65",
                     wavelengths: Sequence[float] | Array | None = None) -> Any:
    """Converts a colour to another encoding.

    samples: a number, three numbers, or pairs of a wavelength and an amplitude. to: "LUMINANCE" (returns a
    float), "RGB" (a tuple) or "SPECTRAL" (an array of shape (n, 2) of pairs at `wavelengths`, with closing
    pairs around them). illuminant: "D65" or "E", of RGB. Of a sampled spectrum, the closing pairs do not
    count.
    """
    if to not in _ENCODINGS:
        raise ValueError(f"an encoding is one of {', '.join(_ENCODINGS)}, not {to!r}")
    code = _illuminant(illuminant)
    value = samples if isinstance(samples, _Item) else spectrum(samples)
    _spectrum_place(value)
    source = _floats(value)
    if value["encoding"] not in _ENCODINGS:
        raise TypeMismatch(f"the encoding has no name: {value['encoding']}")
    encoding = _ENCODINGS.index(value["encoding"])
    if encoding == 2:
        # The library throws for wavelengths that break the rules, and an exception may not pass here.
        inner = source[:len(source) // 2 * 2].reshape(-1, 2)[1:-1, 0]
        if len(inner) < 2 or not inner[0] > 0 or not (numpy.diff(inner) > 0).all():
            raise OutOfRange("a sampled spectrum needs two wavelengths between the closing pairs, positive "
                             "and increasing")
    elif len(source) < (1, 3)[encoding]:
        raise TypeMismatch("the spectrum has fewer floats than its encoding needs")
    if to == "SPECTRAL":
        if wavelengths is None:
            wavelengths = numpy.arange(400, 701, 5)
        grid = numpy.asarray(wavelengths, "<f4")
        if grid.ndim != 1 or len(grid) < 2 or not grid[0] > 0 or not (numpy.diff(grid) > 0).all():
            raise OutOfRange("two or more wavelengths are expected, positive and increasing")
        pairs = numpy.zeros((len(grid) + 2, 2), "<f4")
        pairs[1:-1, 0] = grid
        pairs[-1, 0] = 2 * grid[-1] - grid[-2]
        result = pairs.ravel()
    else:
        result = numpy.zeros(3 if to == "RGB" else 1, "<f4")
    given = _declarations.vrntSpectrumRec(encoding, len(source), source.ctypes.data)
    wanted = _declarations.vrntSpectrumRec(_ENCODINGS.index(to), len(result), result.ctypes.data)
    long.vrntSpectrumConvert(ctypes.byref(given), ctypes.byref(wanted), code)
    if to == "SPECTRAL":
        return result.reshape(-1, 2)
    return tuple(float(one) for one in result) if to == "RGB" else float(result[0])


def blackbody_rgb(temperature: float) -> tuple[float, float, float]:
    """Returns the linear RGB of a black body, scaled to a luminance of 1, without negative components.

    temperature: in kelvin. NaN below about 230 K.
    """
    rgb = (ctypes.c_float * 3)()
    quick.vrntBlackbodyToRGB(rgb, real_number("temperature", temperature))
    return rgb[0], rgb[1], rgb[2]


def planck(wavelength: float | Iterable[float], temperature: float) -> Any:
    """Returns the spectral radiance of a black body, in watts per steradian, square metre and nanometre.

    wavelength: in nanometres, a number or an array. temperature: in kelvin.
    """
    law, temperature = quick.vrntPlancksLaw, real_number("temperature", temperature)
    if isinstance(wavelength, (int, float)):
        return float(law(wavelength, temperature))
    try:
        array = numpy.asarray(wavelength, "f4")
    except (TypeError, ValueError):
        raise TypeMismatch(f"wavelength: numbers are expected, not {wavelength!r}") from None
    return numpy.array([law(float(one), temperature) for one in array.ravel()], "f4").reshape(array.shape)


def blackbody(temperature: float, wavelengths: Sequence[float] | Array | None = None) -> Value:
    """Returns the spectrum of a black body as a Value, scaled to a greatest amplitude of 1.

    temperature: in kelvin. wavelengths: in nanometres; 400 to 700 in steps of 5 by default.
    """
    grid = numpy.arange(400.0, 701.0, 5.0) if wavelengths is None else numpy.asarray(wavelengths, "f8")
    radiance = planck(grid, temperature).astype("f8")
    top = radiance.max()
    if not top > 0 or not math.isfinite(top):
        raise OutOfRange(f"a black body of {temperature} K has no light in these wavelengths")
    return spectrum(numpy.column_stack([grid, radiance / top]))


def srgb(rgb: Sequence[float]) -> tuple[int, int, int]:
    """Returns linear RGB as 8-bit sRGB, with the transfer curve, clamped: for showing."""
    def encode(linear: float) -> int:
        if not 0 < linear < 1:
            return 255 if linear >= 1 else 0
        curve = 12.92 * linear if linear <= 0.0031308 else 1.055 * math.pow(linear, 1 / 2.4) - 0.055
        return round(255 * curve)
    red, green, blue = (encode(float(one)) for one in rgb)
    return red, green, blue


def plot_spectrum(value: Value | Part, file: Any = None) -> Any:
    """Returns a matplotlib figure of a sampled spectrum, with wavelengths in nanometres; with a file name,
    writes it there, too. Without matplotlib, a file that ends in .svg is written by the package itself.
    Raises TypeMismatch for another encoding, and OutOfRange for wavelengths that do not increase."""
    root, _ = _spectrum_place(value)
    del root
    if value["encoding"] != "SPECTRAL":
        raise TypeMismatch("only a sampled spectrum has a plot")
    from ._html import figure_of_spectrum, spectrum_svg
    pairs = spectrum_pairs(value)
    try:
        figure = figure_of_spectrum(value, pairs)
    except ImportError:
        if file is None or not str(file).endswith(".svg"):
            raise
        with open(file, "w", encoding="utf-8") as target:
            target.write(spectrum_svg(pairs))
        return None
    if file is not None:
        figure.savefig(file)
    return figure


__all__ = ["blackbody", "blackbody_rgb", "convert_spectrum", "emission_type", "light_unit_type",
           "material_parameter_name", "material_parameter_type", "planck", "plot_spectrum", "sample_spectrum",
           "sampler_name", "sampler_type", "spectrum", "spectrum_to_rgb", "spectrum_type", "srgb",
           "texture_type", "uv_transformation_type", "wrap_mode_type"]
