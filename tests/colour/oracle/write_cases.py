"""Writes the cases of the reference arithmetic as tab-separated tables.

    python3 write_cases.py OUTDIR

The first line of a table starts with "# " and names its columns; any further line that starts
with "#" is a remark. A float is the 8 hex digits of its bits, a list is separated by spaces and "-"
when empty; counts, encodings, codes and illuminant indices are decimal. Every NaN is written as
7fc00000 and stands for any NaN.

The cases depend on fixed seeds only: two runs write the same bytes.
"""

import csv
import math
import os
import random
import sys

import oracle
from oracle import Single, bits, neighbour

NAN = Single(math.nan)
INF = Single(math.inf)
ZERO = Single(0)
LARGEST = oracle.from_bits(0x7F7FFFFF)
SMALLEST = oracle.from_bits(1)
HALF_ULP_OF_ONE = 2.0**-24


def hex_of(x):
    assert isinstance(x, Single)
    return f"{bits(x):08x}"


def cell(x):
    if isinstance(x, (list, tuple)):
        return " ".join(map(hex_of, x)) if x else "-"
    return hex_of(x) if isinstance(x, Single) else str(x)


def singles(numbers):
    return [x if isinstance(x, Single) else Single(x) for x in numbers]


def write(out_dir, name, columns, rows, remarks=()):
    lines = ["# " + "\t".join(columns)]
    lines += ["# " + remark for remark in remarks]
    for row in rows:
        assert len(row) == len(columns), (name, row)
        lines.append("\t".join(map(cell, row)))
    with open(os.path.join(out_dir, name), "w", newline="\n", encoding="ascii") as file:
        file.write("\n".join(lines) + "\n")


def pairs(wavelengths, amplitudes):
    assert len(wavelengths) == len(amplitudes)
    return [x for pair in zip(singles(wavelengths), singles(amplitudes)) for x in pair]


def closed(wavelengths, amplitudes):
    """A spectral array: one more wavelength than amplitudes, both closing pairs added."""
    return oracle.from_samples(singles(wavelengths), singles(amplitudes))[1]


def uneven(rng, count, low, high):
    """`count` different Singles in increasing order."""
    found = set()
    while len(found) < count:
        found.add(Single(rng.uniform(low, high)))
    return sorted(found)


def amplitudes(rng, count, low=0.0, high=1.0):
    return [Single(rng.uniform(low, high)) for _ in range(count)]


def read_columns(name):
    here = os.path.dirname(os.path.abspath(__file__))
    path = os.path.join(here, "../../../examples/cornell_box/data", name)
    with open(path, newline="", encoding="ascii") as file:
        rows = list(csv.DictReader(file))
    return {key: [oracle.constant(row[key]) for row in rows] for key in rows[0]}


def measured():
    """The measured distributions as spectral arrays; the last sample holds for one mean step."""
    found = []
    for name in ("cornell_box_reflectance.csv", "cornell_box_light.csv"):
        columns = read_columns(name)
        w = columns.pop("wavelength")
        end = w[-1] + (w[-1] - w[0]) / (len(w) - 1)
        found += [closed(w + [end], values) for values in columns.values()]
    return found


# Tables, one function each


def to_rgb_arrays():
    rng = random.Random(1931)
    found = measured()
    # Even grids, some of them past both ends of the range.
    for first, step, count in (
        (400, 5, 61), (400, 40, 8), (400, 20, 16), (400, 10, 32), (380, 5, 81), (402.5, 5, 60),
        (300, 100, 6), (500, 1, 30), (401, 0.1, 20), (390, 7.3, 45),
    ):
        w = [Single(first + step * i) for i in range(count + 1)]
        found.append(closed(w, amplitudes(rng, count)))
    # Uneven grids; the longest array has 200 pairs.
    for count, low, high in (
        (2, 400, 700), (3, 400, 700), (4, 350, 750), (5, 450, 650), (7, 400, 420), (12, 680, 720),
        (20, 380, 780), (40, 400, 700), (60, 200, 1000), (198, 390, 710),
    ):
        w = uneven(rng, count + 1, low, high)
        found.append(closed(w, amplitudes(rng, count, -0.5, 2.0)))
    # One pair in range, next to and exactly at the ends, on the grid and off it.
    for w in (
        400, neighbour(Single(400), 1), 402.5, 405, neighbour(Single(405), -1), 450, 452.123, 555,
        560, 695, 697.5, neighbour(Single(700), -1), 700,
    ):
        found.append(pairs([0, w], [0, 0.75]))
        found.append(pairs([0, w, 800], [0, rng.uniform(0, 3), 0]))
    # Pairs on both sides of an end.
    found.append(pairs([0, neighbour(Single(400), -1), 400, 405, 800], [0, 3, 0.5, 0.25, 0]))
    found.append(pairs([0, 695, 700, neighbour(Single(700), 1), 800], [0, 3, 0.5, 0.25, 0]))
    # No pair in range.
    found.append(pairs([0, 1], [0, 0]))
    found.append(pairs([0, 100, 399, 701, 900], [0, 1, 2, 3, 0]))
    found.append(pairs([0, 701, 750, 800], [0, 1, 1, 0]))
    found.append(pairs([0, 100, 200, neighbour(Single(400), -1)], [0, 1, 1, 0]))
    found.append(pairs([0, neighbour(Single(700), 1), 1e30, INF], [0, 1, 1, 0]))
    # NaN and infinite amplitudes, inside the range and outside.
    for odd in (NAN, INF, -INF):
        found.append(pairs([0, 450, 550, 650, 720], [0, 1, odd, 1, 0]))
        found.append(pairs([0, 350, 450, 550, 650, 720], [0, odd, 1, 1, 1, 0]))
        found.append(pairs([0, 450, 550, 650, 720, 730], [0, 1, 1, 1, odd, 0]))
        found.append(pairs([0, 400, 550, 650, 700], [0, odd, 1, 1, 0]))
        found.append(pairs([0, 450, 550, 650, 700], [0, 1, 1, 1, odd]))
    found.append(pairs([0, 450, 550, 650, 720], [0, INF, -INF, 1, 0]))
    # NaN wavelengths count as out of range.
    found.append(pairs([0, NAN, 550, 650, 720], [0, 1, 0.5, 1, 0]))
    found.append(pairs([0, 450, 550, NAN, 720], [0, 1, 0.5, 1, 0]))
    found.append(pairs([NAN, 450, 550, 650, 720], [0, 1, 0.5, 1, 0]))
    found.append(pairs([0, NAN, NAN, NAN], [0, 1, 1, 0]))
    found.append(pairs([0, NAN, 550, 650, 720], [0, NAN, 0.5, 1, 0]))
    # Infinite and negative wavelengths.
    found.append(pairs([-INF, -450, 450, 550, INF], [1, 2, 3, 4, 5]))
    # Amplitudes at the ends of the number range.
    w = [0, 420, 470, 520, 570, 620, 670, 720]
    for a in (LARGEST, 1e38, 1e36, 1e20, 1e-20, 1e-37, 1e-40, SMALLEST):
        found.append(pairs(w, [0] + [a] * 6 + [0]))
        found.append(pairs(w, [0, a, 0, -Single(a), a, 0, a, 0]))
    # Order and repetition don't matter to a sum over the stored pairs.
    found.append(pairs([0, 600, 500, 500, 450], [0, 1, 0.3, 0.3, 0.7]))
    return found


def to_rgb_rows():
    for array in to_rgb_arrays():
        for illuminant, code in ((oracle.ILLUMINANT_E, 0), (oracle.ILLUMINANT_D65, 1)):
            spectrum = (oracle.SPECTRAL, array)
            xyz = oracle.to_xyz(spectrum, illuminant)
            rgb = oracle.to_rgb(spectrum, illuminant)
            yield len(array), array, code, *xyz, *rgb, oracle.to_luminance(spectrum, illuminant)


def step_average_rows():
    rng = random.Random(2)

    def row(array, low, delta):
        low, delta = singles((low, delta))
        return array, low, delta, oracle.step_average(array, low, delta)

    simple = closed([400, 500, 600], [1, 2])
    for low, delta in (
        (450, 100), (350, 100), (650, 100), (400, 200), (400, 100), (500, 100), (300, 100),
        (600, 100), (350, 300), (300, 500), (100, 50), (410, 20), (510, 20), (599, 1), (599, 2),
        (399, 1), (399, 2), (1, 399), (1, 400), (1, 999), (1e-3, 1e-3), (1e-40, 1e-40),
        (neighbour(Single(400), -1), 1), (neighbour(Single(400), 1), 1),
        (neighbour(Single(500), -1), 100), (neighbour(Single(500), 1), 100),
        (400, neighbour(Single(100), -1)), (400, neighbour(Single(100), 1)),
        (400, neighbour(Single(200), -1)), (400, neighbour(Single(200), 1)),
        (450, 1e-6), (500, 1e-6), (400, 1e-30), (600, 1e-30), (450, SMALLEST),
        (450, 1e6), (450, 1e30), (450, 3.4e38), (450, LARGEST), (LARGEST, LARGEST), (450, INF),
        (1e30, 1), (1e30, 1e30), (NAN, 100), (450, NAN), (NAN, NAN), (650, NAN), (NAN, 1e30),
    ):
        yield row(simple, low, delta)

    # A closing wavelength without bound, and amplitudes that are no numbers or reach the limits.
    special = [
        pairs([0, 400, 500, 600], [0, 1, INF, 0]),
        pairs([0, 400, 500, 600], [0, NAN, 1, 0]),
        pairs([0, 400, 500, 600], [0, LARGEST, LARGEST, 0]),
        pairs([0, 400, 500, 600], [0, 1e36, -Single(1e36), 0]),
        pairs([0, 400, 500, 600], [0, SMALLEST, 1e-40, 0]),
        pairs([0, 400, 500, 1e38], [0, 1, 2, 0]),
    ]
    for array in special:
        for low, delta in ((400, 100), (450, 100), (420, 20), (520, 20), (350, 100), (700, 100)):
            yield row(array, low, delta)

    # One band as short as a spectrum can be.
    tiny = oracle.from_band(Single(500), Single(10), Single(3))[1]
    for low, delta in ((500, 10), (495, 10), (505, 10), (490, 10), (510, 10), (400, 200), (502, 3)):
        yield row(tiny, low, delta)

    arrays = [
        closed(uneven(rng, count + 1, 380, 720), amplitudes(rng, count, low, 2))
        for count, low in ((2, 0), (3, -1), (5, 0), (9, -2), (14, 0))
    ]
    arrays.append(closed([Single(400 + 4 * i) for i in range(21)], amplitudes(rng, 20)))
    for array in arrays:
        w = array[2::2]
        bands = []
        for _ in range(4):  # over several intervals, often past an end
            low = rng.uniform(330, 740)
            bands.append((low, rng.uniform(1, 250)))
        for _ in range(3):  # inside one interval
            k = rng.randrange(len(w) - 1)
            width = w[k + 1] - w[k]
            low = w[k] + width * Single(rng.uniform(0, 0.5))
            bands.append((low, width * Single(rng.uniform(0.01, 0.49))))
        for _ in range(3):  # from border to border
            k, j = sorted(rng.sample(range(len(w)), 2))
            bands.append((w[k], w[j] - w[k]))
        bands.append((w[0] / 2, w[0] / 4))
        bands.append((w[-1] + 1, 20))
        bands.append((w[0] - 30, w[-1] - w[0] + 60))
        for low, delta in bands:
            yield row(array, low, delta)


def sample_colours(rng):
    """Each order of the three channels with its ties, then the colours that are less tame."""
    found = [(r, g, b) for r in (0.2, 0.5, 0.9) for g in (0.2, 0.5, 0.9) for b in (0.2, 0.5, 0.9)]
    found += [(0, 0, 0), (1, 1, 1), (1, 0, 0), (0, 1, 0), (0, 0, 1)]
    found += [(1, 1, 0), (0, 1, 1), (1, 0, 1)]
    found += [tuple(rng.uniform(0, 1) for _ in range(3)) for _ in range(6)]
    found += [(-0.5, 0.25, 1.5), (2, -1, 0.5), (12.5, 3, -7), (-1, -2, -3), (1e30, 1, 1e-30)]
    return [tuple(singles(c)) for c in found]


ODD_COLOURS = [
    tuple(singles(c))
    for c in (
        (NAN, 0.5, 0.5), (0.5, NAN, 0.5), (0.5, 0.5, NAN), (NAN, NAN, NAN), (INF, 0.5, 0.5),
        (0.5, INF, 0.5), (0.5, 0.5, INF), (-INF, 0.5, 0.5), (0.5, -INF, 0.5), (0.5, 0.5, -INF),
        (INF, INF, INF), (INF, -INF, 1), (INF, NAN, 1), (LARGEST, LARGEST, LARGEST),
        (LARGEST, 1, -LARGEST), (SMALLEST, SMALLEST, 0), (1e-40, 1e-42, 1e-38),
    )
]


def rgb_average_rows():
    rng = random.Random(3)

    def row(colour, illuminant, low, delta):
        low, delta = singles((low, delta))
        result = oracle.band_average((oracle.RGB, list(colour)), low, delta, illuminant)
        return *colour, illuminant, low, delta, result

    below_400, above_400 = neighbour(Single(400), -1), neighbour(Single(400), 1)
    bands = [
        (400, 300), (400, 305), (400, 310), (300, 500), (500, 100), (400, 5), (405, 5), (410, 5),
        (415, 5), (695, 5), (700, 5), (700, 2.5), (702.5, 2.5), (702.5, 2), (702.5, 10), (704, 0.5),
        (neighbour(Single(705), -1), 1), (705, 5), (706, 5), (800, 10), (1e9, 1), (1e30, 1e30),
        (300, 50), (300, 99.5), (300, 100), (300, 100.001), (390, 20), (395, 5), (397.5, 5), (1, 1),
        (1, 1000), (1e-40, 1e-40), (below_400, 5), (above_400, 5), (below_400, SMALLEST),
        (401, 1), (402, 2.5), (403, 2), (404, 2), (452.3, 0.1), (452.3, 1e-6), (452.3, 1e-30),
        (450, 1e-30), (455, 1e-5), (450, 4.9999), (450, neighbour(Single(5), 1)),
        (450, neighbour(Single(5), -1)), (400, 40), (520, 20), (610, 10), (387.6, 311.9),
        (699.9, 0.1), (699.9, 0.2), (699.9, 5.2), (450, 1e6), (450, 1e30), (450, LARGEST),
        (450, INF), (333.3, 66.6), (333.3, 66.8), (333.3, 70),
    ]
    fixed = [(1, 1, 1), (0.25, 0.5, 0.75), (0.9, 0.3, 0.1), (-0.5, 2, 0.125)]
    for n, band in enumerate(bands):
        yield row(singles(fixed[0]), 0, *band)
        yield row(singles(fixed[1 + n % 3]), 4 if n % 2 else 0, *band)

    for colour in sample_colours(rng):
        for illuminant in (0, 4):
            yield row(colour, illuminant, rng.uniform(400, 690), rng.uniform(0.5, 120))
            yield row(colour, illuminant, 400 + 5 * rng.randrange(60), 5)
        yield row(colour, 4 * rng.randrange(2), rng.uniform(340, 460), rng.uniform(20, 400))

    for colour in ODD_COLOURS:
        for illuminant in (0, 4):
            yield row(colour, illuminant, 500, 100)
            yield row(colour, illuminant, 522, 2)
        yield row(colour, 0, 300, 50)
        yield row(colour, 4, 710, 50)

    for _ in range(60):
        colour = singles(rng.uniform(-0.2, 1.2) for _ in range(3))
        yield row(colour, 4 * rng.randrange(2), rng.uniform(350, 720), rng.uniform(0.01, 200))


def reconstruct_rows():
    rng = random.Random(4)
    colours = [
        (1, 1, 1), (0, 0, 0), (0.5, 0.5, 0.5), (1, 0, 0), (0, 1, 0), (0, 0, 1), (1, 1, 0),
        (0, 1, 1), (1, 0, 1), (0.1, 0.2, 0.3), (0.1, 0.3, 0.2), (0.2, 0.1, 0.3), (0.3, 0.1, 0.2),
        (0.2, 0.3, 0.1), (0.3, 0.2, 0.1), (-0.25, 0.5, 1.75),
    ]
    colours += [tuple(rng.uniform(0, 1) for _ in range(3)) for _ in range(6)]
    grid = [Single(400 + 5 * i) for i in range(oracle.SAMPLES + 1)]
    for colour in map(singles, colours):
        yield *colour, oracle.sample_at((oracle.RGB, colour), grid)


def rgb_xyz_rows():
    rng = random.Random(5)
    colours = sample_colours(rng) + ODD_COLOURS
    colours += [tuple(singles(rng.uniform(-1, 2) for _ in range(3))) for _ in range(40)]
    for exponent in (-44, -38, -30, -10, 10, 30, 38):
        scale = 10.0**exponent
        colours.append(tuple(singles(rng.uniform(-1, 1) * scale for _ in range(3))))
    for colour in colours:
        spectrum = (oracle.RGB, list(colour))
        yield *colour, *oracle.to_xyz(spectrum, 0), oracle.to_luminance(spectrum, 0)


def samples_rows():
    rng = random.Random(6)
    cases = [
        ([400, 500], [2]), ([400, 500, 600], [1, 2]), ([1e-40, 1e-39], [1]), ([1, INF], [-1]),
        ([400, neighbour(Single(400), 1)], [3]), ([SMALLEST, LARGEST], [LARGEST]),
        ([400, 500, 600, 700], [NAN, INF, -INF]), ([400, 500, 600], [-Single(0), 0]),
    ]
    for count in (3, 4, 8, 16, 33):
        cases.append((uneven(rng, count + 1, 100, 1000), amplitudes(rng, count, -1, 3)))
    for w, a in cases:
        w, a = singles(w), singles(a)
        yield w, a, oracle.from_samples(w, a)[1]


def uniform_rows():
    rng = random.Random(7)
    cases = [
        (400, 100, [2]), (400, 100, [1, 2]), (400, 40, amplitudes(rng, 8)),
        (400, 0.1, amplitudes(rng, 40)), (380.1, 1.7, amplitudes(rng, 30, -1, 2)),
        (0.1, 0.1, amplitudes(rng, 25)), (400, 1e-5, [1, 2, 3]), (400, 10 / 3, amplitudes(rng, 60)),
        (16777216, 1, [1, 2, 3]), (1e-40, 1e-40, [1, 2]), (1e38, 1e38, [1, 2, 3, 4]),
        (NAN, 5, [1, 2]), (400, NAN, [1, 2]), (400, INF, [1, 2]), (400, 5, [NAN, INF, -INF]),
        (400, 5, []),
    ]
    for _ in range(6):
        count = rng.randrange(2, 20)
        cases.append((rng.uniform(300, 500), rng.uniform(0.3, 20), amplitudes(rng, count)))
    for first, delta, a in cases:
        first, delta, a = Single(first), Single(delta), singles(a)
        yield first, delta, a, oracle.from_uniform_samples(first, delta, a)[1]


def grid_record(rng, inner, odd=False):
    """A spectral record to fill: `inner` wavelengths between closing pairs, all amplitudes marked
    so that a place that must not be written shows."""
    marks = [-1000 - rng.randrange(1000) for _ in range(len(inner) + 2)]
    data = pairs([0, *inner, inner[-1] + 5], marks)
    return data + [Single(-3)] if odd else data


def convert_rows():
    rng = random.Random(8)
    e = oracle

    inputs = [
        (e.LUMINANCE, [0.75]), (e.LUMINANCE, [-2]), (e.RGB, [0.2, 0.5, 0.9]),
        (e.RGB, [0.9, 0.4, 0.1]), (e.RGB, [1, 1, 1]), (7, [0.3, 0.8, 0.1]),
    ]
    w = [Single(400 + 10 * i) for i in range(31)]
    inputs.append((e.SPECTRAL, pairs([0, *w, 710], [0, *amplitudes(rng, 31), 0])))
    # Uneven; the closing pair of the record is dropped and another one made.
    w = uneven(rng, 9, 390, 710)
    inputs.append((e.SPECTRAL, pairs([0, *w, 900], [0, *amplitudes(rng, 9), 0])))
    # An odd count leaves the last float unread.
    inputs.append((e.SPECTRAL, inputs[-1][1] + [Single(123)]))
    # The closing pairs are dropped whatever they hold.
    inputs.append((e.SPECTRAL, pairs([-5, 450, 550, 650, NAN], [9, 1, 0.5, 0.25, 9])))
    # The fewest wavelengths that can be closed.
    inputs.append((e.SPECTRAL, pairs([0, 500, 600, 700], [0, 1, 2, 0])))
    inputs.append((e.SPECTRAL, pairs([0, 500, 600, 700], [0, 1, 2, 0]) + [Single(NAN)]))

    outputs = [
        (e.LUMINANCE, [-11, -12]), (e.RGB, [-11, -12, -13, -14]), (7, [-11, -12, -13, -14]),
        (e.SPECTRAL, grid_record(rng, [Single(400 + 40 * i) for i in range(8)])),
        (e.SPECTRAL, grid_record(rng, uneven(rng, 7, 380, 720), odd=True)),
        (e.SPECTRAL, grid_record(rng, [Single(550)])),
        (e.SPECTRAL, grid_record(rng, [Single(550)], odd=True)),
        (e.SPECTRAL, grid_record(rng, singles([100, 200, 420, 699, 702, 800]))),
    ]
    for n, (in_encoding, values) in enumerate(inputs):
        for out_encoding, before in outputs:
            values, before = singles(values), singles(before)
            codes = (0, 1) if out_encoding != e.SPECTRAL else ((0, 1, 2, -1)[n % 4],)
            if in_encoding == e.SPECTRAL and out_encoding == e.RGB:
                codes = (0, 1, 2, 4, -1)
            for code in codes:
                after = e.convert(in_encoding, values, out_encoding, before, code)
                yield in_encoding, values, out_encoding, before, code, after


def spd_rows():
    rng = random.Random(9)
    e = oracle
    w = uneven(rng, 11, 390, 710)
    spectra = [
        (e.LUMINANCE, [0.75]), (e.RGB, [0.2, 0.5, 0.9]), (e.RGB, [0.5, 0.5, 0.5]),
        (e.RGB, [1, -0.5, 0.25]), (e.SPECTRAL, closed([400, 500, 600], [1, 2])),
        (e.SPECTRAL, closed(w, amplitudes(rng, 10, -1, 2))), measured()[2],
        (e.LUMINANCE, []), (e.RGB, []), (e.SPECTRAL, []), (e.RGB, [NAN, 1, 1]),
        (e.SPECTRAL, closed([400, 500, 600], [INF, NAN])),
    ]
    spectra[6] = (e.SPECTRAL, spectra[6])
    grids = [
        pairs([400, 500], [-1, -2]),
        pairs([400, 500], [-1, -2]) + [Single(-3)],
        pairs([400 + 40 * i for i in range(8)], [NAN] * 8),
        pairs(uneven(rng, 7, 300, 800), [-7] * 7) + [Single(430)],
        pairs([1, 350, 399, 400, 405, 600, 697, 704, 750], [-9] * 9),
    ]
    for encoding, values in spectra:
        values = singles(values)
        for before in grids:
            yield encoding, values, len(before), before, e.to_spd((encoding, values), before)


def same_kind(x, y):
    return bits(x) == bits(y) or (0 < abs(x) < INF and 0 < abs(y) < INF and (x > 0) == (y > 0))


def exponential_error(exponential):
    """The error of d = exponential - 1, relative to d, when the exponential is one unit in its last
    place off."""
    if not math.isfinite(exponential) or exponential == 1:
        return 0.0
    unit = max(abs(neighbour(exponential, step) - exponential) for step in (1, -1))
    return unit / abs(exponential - 1)


def planck_row(w, t):
    w, t = Single(w), Single(t)
    result = oracle.planck(w, t)
    low = high = result
    tolerance = 0.0
    if w != 0 and t != 0:
        exponential = oracle.planck_exponential(w, t)
        if math.isfinite(exponential) and exponential > 0:
            low = oracle.planck(w, t, neighbour(exponential, -1))
            high = oracle.planck(w, t, neighbour(exponential, 1))
        if math.isfinite(result) and result != 0:
            tolerance = exponential_error(exponential) + 6 * HALF_ULP_OF_ONE
            tolerance += float(SMALLEST) / abs(result)
    # Zero, infinity and NaN must not hang on the last digit of the exponential.
    for other in (low, high):
        assert same_kind(result, other), (w, t)
        if math.isfinite(result):
            assert abs(float(other) - float(result)) <= tolerance * abs(result), (w, t)
    return w, t, result, f"{tolerance:.3e}", low, high


def planck_rows():
    for i in range(16):
        for j in range(17):
            yield planck_row(10 ** (4 * i / 15), 50000 ** (j / 16))
    for w in (380, 400, 450, 480, 555, 620, 700, 900):
        for t in (1000, 1500, 2000, 2856, 4000, 5000, 6500, 8000, 10000, 20000):
            yield planck_row(w, t)
    for w, t in ((10000, 16.5), (10000, 17), (20000, 8.3), (100000, 1.7)):  # denormal results
        yield planck_row(w, t)
    for w, t in (
        (0, 6500), (555, 0), (0, 0), (-0.0, 6500), (555, -0.0), (-0.0, -0.0), (0, NAN), (NAN, 0),
        (INF, 0), (0, INF), (NAN, 6500), (555, NAN), (1, 1), (1, 50000), (1, 5e7), (10, 100),
        (15, 1e6), (19, 1000), (19, 50000), (20, 50000), (1e-37, 1e38), (1e-40, 6500),
    ):
        yield planck_row(w, t)


def blackbody_row(t):
    t = Single(t)
    rgb = oracle.blackbody_to_rgb(t)
    if any(map(math.isnan, rgb)):
        return t, *rgb, f"{0.0:.3e}"
    radiance_error = max(
        exponential_error(oracle.planck_exponential(Single(400 + 5 * i), t))
        for i in range(oracle.SAMPLES)
    )
    relative = radiance_error + (6 + 2 * oracle.SAMPLES + 6) * HALF_ULP_OF_ONE
    xyz = oracle.blackbody_xyz(t)
    unscaled = [c if c > 0 else ZERO for c in oracle.apply(oracle.XYZ_TO_RGB, xyz)]
    luminance = float(oracle.apply(oracle.RGB_TO_XYZ, unscaled)[1])
    channel_errors = [
        relative * sum(abs(m) * float(s) for m, s in zip(row, xyz)) / luminance
        for row in oracle.XYZ_TO_RGB
    ]
    luminance_error = sum(float(m) * d for m, d in zip(oracle.RGB_TO_XYZ[1], channel_errors))
    luminance_error += 8 * HALF_ULP_OF_ONE
    tolerance = max(d + float(c) * luminance_error for d, c in zip(channel_errors, rgb))
    return t, *rgb, f"{tolerance:.3e}"


def blackbody_rows():
    for i in range(60):
        yield blackbody_row(1000 * 20 ** (i / 59))
    for t in (0, -0.0, 1, 100, 300, 500, 800, 2000, 6500, 50000, 1e6, NAN):
        yield blackbody_row(t)


PLANCK_REMARKS = (
    "tolerance: decimal, relative to the result. expf() may be one unit in the last place off;",
    "that changes d = expf() - 1 by that unit, and so the result by about ulp(expf) / d. Rounding",
    "d, the quotient and the result adds half a unit each on either side, 3 * 2^-23, and a denormal",
    "result one denormal unit. At tolerance 0 the result is zero, infinite or NaN and has to be met",
    "exactly.",
    "low and high: the results if expf() is one unit below or above the nearest float; a result",
    "that is none of the three comes from something else than expf().",
)

BLACKBODY_REMARKS = (
    "tolerance: decimal, absolute, for each channel. X, Y and Z are sums of positive terms, so",
    "their relative error is at most that of the worst term, max ulp(expf) / d over the",
    "wavelengths, plus half a unit for each rounding on either side. A row of the matrix turns that",
    "into an error of sum |m| * XYZ per channel, and the division by the luminance adds the",
    "luminance's own error.",
)


def write_all(out_dir):
    os.makedirs(out_dir, exist_ok=True)
    write(
        out_dir, "to_rgb.tsv",
        ("count", "spectrum", "code", "X", "Y", "Z", "R", "G", "B", "luminance"), to_rgb_rows(),
    )
    write(
        out_dir, "step_average.tsv", ("spectrum", "lambda", "delta", "result"), step_average_rows()
    )
    write(
        out_dir, "rgb_average.tsv",
        ("r", "g", "b", "illuminant", "lambda", "delta", "result"), rgb_average_rows(),
    )
    write(
        out_dir, "reconstruct.tsv", ("r", "g", "b", "results"), reconstruct_rows(),
        ("results: 61 averages over 5 nm from 400, 405, ... nm on, under illuminant 4",),
    )
    write(out_dir, "rgb_xyz.tsv", ("r", "g", "b", "X", "Y", "Z", "luminance"), rgb_xyz_rows())
    write(out_dir, "samples.tsv", ("lambdas", "amplitudes", "array"), samples_rows())
    write(out_dir, "uniform.tsv", ("lambda0", "delta", "amplitudes", "array"), uniform_rows())
    write(
        out_dir, "convert.tsv",
        ("in_encoding", "in", "out_encoding", "out_before", "code", "out_after"), convert_rows(),
        ("the count of a record is the number of floats listed",),
    )
    write(
        out_dir, "spd.tsv", ("encoding", "spectrum", "count", "pairs_before", "pairs_after"),
        spd_rows(),
    )
    write(
        out_dir, "planck.tsv", ("lambda", "temperature", "result", "tolerance", "low", "high"),
        planck_rows(), PLANCK_REMARKS,
    )
    write(
        out_dir, "blackbody.tsv", ("temperature", "R", "G", "B", "tolerance"), blackbody_rows(),
        BLACKBODY_REMARKS,
    )


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: write_cases.py OUTDIR")
    write_all(sys.argv[1])
