"""Reference arithmetic for spectra and colour conversions, in 32-bit floats.

Every value is a `Single`: a float that holds a 32-bit value and whose operators round to 32 bits
after each step, so an expression here reads like the same expression in C and gives the same bits.
Wavelengths are in nanometres, temperatures in kelvin.

A spectrum is a pair (encoding, values): encoding is LUMINANCE, RGB or SPECTRAL and values is a list
of Singles, empty for black. A spectral list holds (wavelength, amplitude) pairs, flattened.
"""

import csv
import math
import os
import struct
from fractions import Fraction

LUMINANCE, RGB, SPECTRAL = 0, 1, 2

ILLUMINANT_E, ILLUMINANT_D65 = 0, 4

SAMPLES = 61


# Single precision

_PACK = struct.Struct("<f")


def _round(x):
    """The double x rounded to the nearest single, as a plain float."""
    try:
        return _PACK.unpack(_PACK.pack(x))[0]
    except OverflowError:
        # pack() raises exactly when rounding to nearest gives infinity.
        return math.copysign(math.inf, x)


class Single(float):
    """A 32-bit float. Operands must be Singles or integers that 32 bits hold exactly, so that a
    constant that nobody rounded can't slip into an expression.

    Doing the operation in double and rounding once more is exact for + - * /: double has more than
    twice the digits of single.
    """

    __slots__ = ()

    def __new__(cls, x=0.0):
        return float.__new__(cls, _round(x))

    def __add__(self, other):
        return Single(float(self) + _operand(other))

    def __sub__(self, other):
        return Single(float(self) - _operand(other))

    def __mul__(self, other):
        return Single(float(self) * _operand(other))

    def __truediv__(self, other):
        return Single(_divide(float(self), _operand(other)))

    def __radd__(self, other):
        return Single(_operand(other) + float(self))

    def __rsub__(self, other):
        return Single(_operand(other) - float(self))

    def __rmul__(self, other):
        return Single(_operand(other) * float(self))

    def __rtruediv__(self, other):
        return Single(_divide(_operand(other), float(self)))

    def __neg__(self):
        return Single(-float(self))


def _operand(x):
    if isinstance(x, Single):
        return float(x)
    if isinstance(x, int) and abs(x) <= 1 << 24:
        return float(x)
    raise TypeError(f"not a 32-bit float: {x!r}")


def _divide(x, y):
    if y != 0:
        return x / y
    if x == 0 or math.isnan(x):
        return math.nan
    return math.copysign(math.inf, x) * math.copysign(1.0, y)


def bits(x):
    """The bits of a Single as an integer; every NaN gives the one quiet NaN."""
    if math.isnan(x):
        return 0x7FC00000
    return struct.unpack("<I", _PACK.pack(x))[0]


def from_bits(n):
    return Single(_PACK.unpack(struct.pack("<I", n))[0])


def neighbour(x, step):
    """The Single that is `step` units in the last place further from zero; x is finite."""
    return from_bits(bits(x) + step)


def constant(text):
    """The Single nearest to a decimal text, with no detour over the nearest double."""
    exact = Fraction(text)
    guess = Single(float(text))
    if guess == 0:
        return guess
    near = [neighbour(guess, step) for step in (0, -1, 1)]
    return min(near, key=lambda x: (abs(Fraction(float(x)) - exact), bits(x) & 1))


# Tables


def _read_table(name):
    """The columns of a CSV file as lists of Singles, by heading."""
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), name)
    with open(path, newline="", encoding="ascii") as file:
        rows = list(csv.DictReader(file))
    return {key: [constant(row[key]) for row in rows] for key in rows[0]}


_observer = _read_table("cie_1931_2deg_5nm.csv")
_daylight = _read_table("illuminant_d65_5nm.csv")
CURVES = _read_table("curves.csv")

for _table in (_observer, _daylight, CURVES):
    assert _table.pop("wavelength") == [400 + 5 * i for i in range(SAMPLES)]

X_BAR, Y_BAR, Z_BAR = _observer["x"], _observer["y"], _observer["z"]

ILLUMINANTS = {ILLUMINANT_E: [Single(1)] * SAMPLES, ILLUMINANT_D65: _daylight["power"]}


def _matrix(text):
    return [[constant(number) for number in row.split()] for row in text.split(";")]


RGB_TO_XYZ = _matrix(
    "0.4124564 0.3575761 0.1804375; 0.2126729 0.7151522 0.072175; 0.0193339 0.119192 0.9503041"
)
XYZ_TO_RGB = _matrix(
    "3.2404542 -1.5371385 -0.4985314; -0.969266 1.8760108 0.041556; 0.0556434 -0.2040259 1.0572252"
)
D65_TO_E = _matrix(
    "1.0502616 0.0270757 -0.0232523; 0.039065 0.9729502 -0.0092579; -0.0024047 0.0026446 0.9180873"
)
XYZ_TO_RGB_E = _matrix(
    "2.6896558 -1.2758625 -0.4137932; -1.0221083 1.9782869 0.0438216;"
    "0.0612244 -0.2244897 1.1632653"
)


def apply(matrix, v):
    return [row[0] * v[0] + row[1] * v[1] + row[2] * v[2] for row in matrix]


def illuminant_of_code(code):
    return ILLUMINANT_D65 if code == 1 else ILLUMINANT_E


# Checks: a single value passes unless it is zero or negative, so a NaN passes


def check_band(wavelength, delta):
    if wavelength <= 0:
        raise ValueError("Wavelength lambda must be greater than 0.")
    if delta <= 0:
        raise ValueError("Wavelength delta lambda must be greater than 0")


def check_wavelengths(wavelengths):
    if len(wavelengths) < 2:
        raise ValueError("Wavelength lambda array must contain at least 2 elements.")
    if wavelengths[0] <= 0:
        raise ValueError("Wavelength lambda[0] must be greater than 0.")
    if not all(a < b for a, b in zip(wavelengths, wavelengths[1:])):
        raise ValueError("Wavelength lambdas must increase strictly monotonic.")


# Building spectra


def from_luminance(value):
    return LUMINANCE, [value]


def from_rgb(r, g, b):
    return RGB, [r, g, b]


def from_samples(wavelengths, amplitudes):
    check_wavelengths(wavelengths)
    if len(amplitudes) != len(wavelengths) - 1:
        raise ValueError("amplitudes.size() must be lambdas.size() - 1.")
    values = [Single(0), Single(0)]
    for w, a in zip(wavelengths, amplitudes):
        values += [w, a]
    return SPECTRAL, values + [wavelengths[-1], Single(0)]


def from_uniform_samples(first, delta, amplitudes):
    check_band(first, delta)
    values = [Single(0), Single(0)]
    w = first
    for a in amplitudes:
        values += [w, a]
        w = w + delta
    return SPECTRAL, values + [w, Single(0)]


def from_band(wavelength, delta, amplitude):
    zero = Single(0)
    return SPECTRAL, [zero, zero, wavelength, amplitude, wavelength + delta, zero]


def validate(spectrum):
    encoding, values = spectrum
    if not values:
        return
    if encoding != SPECTRAL:
        if len(values) != (1 if encoding == LUMINANCE else 3):
            raise ValueError("wrong number of values")
        return
    if len(values) < 7:
        raise ValueError("At least 7 spectral values must be specified.")
    if len(values) % 2 != 0:
        raise ValueError("Number of spectral values must be even.")
    if not (values[0] == 0 and values[1] == 0):
        raise ValueError(
            "The first wave length and amplitude of the spectral value need to be zero."
        )
    wavelengths = values[0::2]
    if not all(a < b for a, b in zip(wavelengths, wavelengths[1:])):
        raise ValueError("Lambdas must increase strictly monotonical.")
    if not values[-1] == 0:
        raise ValueError("The last amplitude of the spectral value must be zero.")


# Averages over bands


def band_average(spectrum, wavelength, delta, illuminant):
    encoding, values = spectrum
    if not values:
        return Single(0)
    check_band(wavelength, delta)
    if encoding == LUMINANCE:
        return values[0]
    if encoding == SPECTRAL:
        return step_average(values, wavelength, delta)
    return rgb_average(values, illuminant, wavelength, delta)


def step_average(values, low, delta):
    """The mean of the step function over [low, low + delta]. The array starts at wavelength 0, so
    that there is an interval before the first wavelength that is not below `low`."""
    w, a = values[0::2], values[1::2]
    n = len(w)
    high = low + delta
    p = next((k for k in range(n) if w[k] >= low), n)
    q = next((k for k in range(p, n) if w[k] >= high), n)
    assert p > 0
    total = Single(0)
    for k in range(p - 1, min(q, n - 1)):
        total = total + a[k] * (w[k + 1] - w[k])
    total = total - a[p - 1] * (low - w[p - 1])
    if q != n:
        total = total - a[q - 1] * (w[q] - high)
    return total / delta


def split(t):
    """Integer part and fraction, both toward zero. An infinity is its own integer part."""
    if math.isinf(t):
        return float(t), Single(0)
    whole = math.trunc(t)
    return whole, Single(float(t) - whole)


ROUNDING = constant("1.1920929e-7")
ALMOST_ONE = constant("0.9999999")


def adapt_to_e(rgb):
    """The colour that looks under white E as `rgb` looks under white D65."""
    return apply(XYZ_TO_RGB_E, apply(D65_TO_E, apply(RGB_TO_XYZ, rgb)))


def rgb_average(rgb, illuminant, wavelength, delta):
    """The mean of the reconstructed distribution over [wavelength, wavelength + delta]."""
    i0, f0 = split((wavelength - 400) / 5)
    i1, f1 = split((wavelength + delta - 400) / 5 - ROUNDING)
    if i0 < 0 or (i0 == 0 and f0 < 0):
        i0, f0 = 0, Single(0)
    if i1 < 0 or (i1 == 0 and f1 < 0):
        return Single(0)
    if i1 >= SAMPLES:
        i1, f1 = SAMPLES - 1, ALMOST_ONE
    n = i1 - i0 + 1
    if n < 1:
        return Single(0)
    if illuminant == ILLUMINANT_D65:
        rgb = adapt_to_e(rgb)

    weights = [Single(1)] * n
    weights[0] = 1 - f0
    weights[-1] = f1
    if n == 1:
        weights[0] = f1 - f0

    total = Single(0)
    for weight, s in zip(weights, reconstruct(rgb, i0, i1)):
        total = total + weight * s * 5
    return total / delta


def reconstruct(rgb, first, last):
    """Smits's reconstruction of a colour on the samples first to last, both included."""
    r, g, b = rgb
    if not r > g and not r > b:
        base = [(r, "white")]
        if not g > b:
            base += [(g - r, "cyan"), (b - g, "blue")]
        else:
            base += [(b - r, "cyan"), (g - b, "green")]
    elif not g > r and not g > b:
        base = [(g, "white")]
        if not r > b:
            base += [(r - g, "magenta"), (b - r, "blue")]
        else:
            base += [(b - g, "magenta"), (r - b, "red")]
    else:
        base = [(b, "white")]
        if not r > g:
            base += [(r - b, "yellow"), (g - r, "green")]
        else:
            base += [(g - b, "yellow"), (r - g, "red")]

    result = []
    for i in range(first, last + 1):
        s = base[0][0] * CURVES[base[0][1]][i]
        for factor, curve in base[1:]:
            s = s + factor * CURVES[curve][i]
        result.append(s)
    return result


def sample_at(spectrum, wavelengths):
    check_wavelengths(wavelengths)
    return [
        band_average(spectrum, low, high - low, ILLUMINANT_D65)
        for low, high in zip(wavelengths, wavelengths[1:])
    ]


def sample_uniform(spectrum, first, delta, count, illuminant=ILLUMINANT_D65):
    return [band_average(spectrum, i * delta + first, delta, illuminant) for i in range(count)]


# Conversions


def spectral_to_xyz(values, illuminant):
    """The sum over the stored pairs, none weighted by the width of its interval."""
    light = ILLUMINANTS[illuminant]
    x_sum = y_sum = z_sum = normaliser = Single(0)
    for w, a in zip(values[0::2], values[1::2]):
        in_range = 400 <= w <= 700
        # Outside the range the light only multiplies zeros, so for a NaN either end will do.
        clamped = w if in_range else Single(700) if w > 700 else Single(400)
        k, f = split((clamped - 400) / 5)
        k2 = min(k + 1, SAMPLES - 1)

        def between(table):
            return (1 - f) * table[k] + f * table[k2]

        i = between(light)
        if in_range:
            x, y, z = between(X_BAR), between(Y_BAR), between(Z_BAR)
        else:
            x = y = z = Single(0)
        x_sum = x_sum + x * a * i
        y_sum = y_sum + y * a * i
        z_sum = z_sum + z * a * i
        normaliser = normaliser + y * i
    return [x_sum / normaliser, y_sum / normaliser, z_sum / normaliser]


def to_xyz(spectrum, illuminant):
    encoding, values = spectrum
    if not values:
        return [Single(0)] * 3
    if encoding == SPECTRAL:
        return spectral_to_xyz(values, illuminant)
    return apply(RGB_TO_XYZ, values * 3 if encoding == LUMINANCE else values)


def to_rgb(spectrum, illuminant):
    encoding, values = spectrum
    if not values:
        return [Single(0)] * 3
    if encoding == LUMINANCE:
        return values * 3
    if encoding == SPECTRAL:
        return apply(XYZ_TO_RGB, spectral_to_xyz(values, illuminant))
    return list(values)


def to_luminance(spectrum, illuminant):
    return to_xyz(spectrum, illuminant)[1]


def spectrum_of_record(encoding, data):
    """The spectrum of a flat record; the length of data is the record's count when spectral."""
    if encoding == LUMINANCE:
        return from_luminance(data[0])
    if encoding != SPECTRAL:
        return from_rgb(*data[:3])
    h = len(data) // 2
    wavelengths = data[2 : 2 * (h - 1) : 2]
    amplitudes = data[3 : 2 * (h - 1) : 2]
    end = wavelengths[-1] + (wavelengths[-1] - wavelengths[0]) / len(wavelengths)
    return from_samples(wavelengths + [end], amplitudes)


def convert(in_encoding, in_data, out_encoding, out_data, code):
    """The data of the out record after the conversion of the in record."""
    spectrum = spectrum_of_record(in_encoding, in_data)
    illuminant = illuminant_of_code(code)
    result = list(out_data)
    if out_encoding == LUMINANCE:
        result[0] = to_luminance(spectrum, illuminant)
    elif out_encoding == SPECTRAL:
        h = len(out_data) // 2
        wavelengths = out_data[2 : 2 * (h - 1) : 2]
        result[3 : 2 * (h - 1) : 2] = sample_at(spectrum, wavelengths + [wavelengths[-1] + 5])
    else:
        result[:3] = to_rgb(spectrum, illuminant)
    return result


def to_spd(spectrum, pairs):
    """The pairs after each amplitude is replaced; a last float without a partner stays."""
    h = len(pairs) // 2
    wavelengths = pairs[0 : 2 * h : 2]
    end = wavelengths[-1] + (wavelengths[-1] - wavelengths[0]) / h
    result = list(pairs)
    result[1 : 2 * h : 2] = sample_at(spectrum, wavelengths + [end])
    return result


# Thermal radiation


def pow_rounded(x, y):
    """pow() in double, with the infinities of C, rounded to single."""
    try:
        return Single(math.pow(x, y))
    except OverflowError:
        return Single(math.inf)
    except ValueError:
        return Single(math.copysign(math.inf, x))


def exp_rounded(x):
    try:
        return Single(math.exp(x))
    except OverflowError:
        return Single(math.inf)


NANO = constant("1e-9")
TWO_H = constant("1.325214e-33")
HC = constant("1.9864458e-25")
BOLTZMANN = constant("1.3806486e-23")
LIGHT_SPEED = constant("299792458")


def planck_exponential(wavelength, temperature):
    """The exponential of Planck's law, correctly rounded as nearly as double allows."""
    return exp_rounded(HC / (wavelength * NANO * BOLTZMANN * temperature))


def planck(wavelength, temperature, exponential=None):
    """Spectral radiance per nanometre. `exponential` replaces the value of the exponential, for
    finding out how far a last digit of it carries."""
    if temperature == 0 or wavelength == 0:
        return Single(0)
    if exponential is None:
        exponential = planck_exponential(wavelength, temperature)
    a = pow_rounded(wavelength * NANO, -5.0)
    c2 = pow_rounded(LIGHT_SPEED, 2.0)
    d = exponential - 1
    return a * (c2 * TWO_H) / d * NANO


def blackbody_xyz(temperature):
    xyz = [Single(0)] * 3
    for i in range(SAMPLES):
        e = planck(Single(400 + 5 * i), temperature)
        xyz = [s + e * bar[i] for s, bar in zip(xyz, (X_BAR, Y_BAR, Z_BAR))]
    return xyz


def blackbody_to_rgb(temperature):
    rgb = [Single(0) if c < 0 else c for c in apply(XYZ_TO_RGB, blackbody_xyz(temperature))]
    luminance = apply(RGB_TO_XYZ, rgb)[1]
    scale = 1 / luminance
    return [c * scale for c in rgb]
