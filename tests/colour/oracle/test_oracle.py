"""Checks of the reference arithmetic against facts that can be worked out by hand or in double."""

import filecmp
import math
import os
import random
import tempfile
import unittest
from fractions import Fraction

import oracle
import write_cases
from oracle import Single, bits, from_bits, neighbour


def singles(*numbers):
    return [Single(x) for x in numbers]


def doubles(numbers):
    """Plain floats, for reckoning in double."""
    return [float(x) for x in numbers]


def nearest(exact):
    """The single nearest to a fraction, ties to even, from the definition: 24 digits, none of them
    below 2^-149, and infinity from half a unit past the largest on."""
    if exact == 0:
        return 0.0
    size = abs(exact)
    exponent = math.floor(math.log2(size.numerator) - math.log2(size.denominator))
    while Fraction(2) ** (exponent + 1) <= size:
        exponent += 1
    while Fraction(2) ** exponent > size:
        exponent -= 1
    unit = Fraction(2) ** max(exponent - 23, -149)
    result = round(size / unit) * unit
    value = math.inf if result >= Fraction(2) ** 128 else float(result)
    return math.copysign(value, exact)


class Test(unittest.TestCase):
    def assert_near(self, got, want, delta):
        self.assertLessEqual(abs(float(got) - float(want)), delta, (float(got), float(want)))


class SinglePrecision(Test):
    def test_operations_round_once(self):
        rng = random.Random(1)
        tried = 0
        for n in range(6000):
            x = from_bits(rng.getrandbits(32))
            # Half of the partners are near enough for the sum to need both.
            y = from_bits(rng.getrandbits(32) if n % 2 else (bits(x) ^ rng.getrandbits(26)))
            if not (math.isfinite(x) and math.isfinite(y)) or y == 0:
                continue
            tried += 1
            a, b = Fraction(float(x)), Fraction(float(y))
            self.assertEqual(x + y, nearest(a + b))
            self.assertEqual(x - y, nearest(a - b))
            self.assertEqual(x * y, nearest(a * b))
            self.assertEqual(x / y, nearest(a / b))
        self.assertGreater(tried, 5000)

    def test_overflow_starts_half_a_unit_past_the_largest(self):
        largest = from_bits(0x7F7FFFFF)
        half_unit = 2.0**103
        self.assertEqual(Single(float(largest) + 0.99 * half_unit), largest)
        self.assertEqual(Single(float(largest) + half_unit), math.inf)
        self.assertEqual(Single(-float(largest) - half_unit), -math.inf)
        self.assertEqual(largest + largest, math.inf)
        self.assertEqual(-largest * 2, -math.inf)

    def test_division_by_zero(self):
        zero, one = singles(0, 1)
        self.assertEqual(one / zero, math.inf)
        self.assertEqual(one / -zero, -math.inf)
        self.assertEqual(-one / zero, -math.inf)
        self.assertTrue(math.isnan(zero / zero))
        self.assertTrue(math.isnan(Single(math.nan) / zero))
        self.assertEqual(Single(math.inf) / zero, math.inf)

    def test_unrounded_constants_are_refused(self):
        with self.assertRaises(TypeError):
            Single(1) * 0.1
        with self.assertRaises(TypeError):
            (1 << 24) + 1 - Single(1)

    def test_constants_are_nearest(self):
        for text in ("0.1", "1e-9", "1.9864458e-25", "1.3806486e-23", "1.325214e-33", "82.7549"):
            self.assertEqual(oracle.constant(text), nearest(Fraction(text)))
        # Rounding to double first lands on a tie here, and then goes the wrong way.
        text = str(1 + 2.0**-24) + "0000000000000000000000000000001"
        self.assertEqual(oracle.constant(text), neighbour(Single(1), 1))
        self.assertEqual(oracle.LIGHT_SPEED, 299792448)


class Tables(Test):
    def test_sizes_and_ends(self):
        tables = [oracle.X_BAR, oracle.Y_BAR, oracle.Z_BAR, *oracle.ILLUMINANTS.values()]
        for table in tables + list(oracle.CURVES.values()):
            self.assertEqual(len(table), 61)
        ends = [(t[0], t[-1]) for t in (oracle.X_BAR, oracle.Y_BAR, oracle.Z_BAR)]
        want = [("0.01431", "0.011359"), ("0.000396", "0.004102"), ("0.06785", "0")]
        self.assertEqual(ends, [tuple(map(oracle.constant, pair)) for pair in want])
        light = oracle.ILLUMINANTS[4]
        self.assertEqual(light[:3], [oracle.constant(t) for t in ("82.7549", "87.1204", "91.486")])
        self.assertEqual(light[32], 100)

    def test_sum_of_luminous_efficiency(self):
        # The whole function at 5 nm sums to 21.371; the tails outside 400 to 700 nm hold 0.0104.
        self.assert_near(math.fsum(oracle.Y_BAR), 21.361, delta=0.001)
        self.assertEqual(max(oracle.Y_BAR), 1)
        self.assertEqual(oracle.Y_BAR.index(1), (555 - 400) // 5)

    def test_white_points(self):
        # Chromaticities of the full tables; cutting the range costs a few parts in ten thousand.
        for index, x, y in ((0, 1 / 3, 1 / 3), (4, 0.31271, 0.32902)):
            light = oracle.ILLUMINANTS[index]
            bars = (oracle.X_BAR, oracle.Y_BAR, oracle.Z_BAR)
            sums = [math.fsum(a * b for a, b in zip(doubles(bar), doubles(light))) for bar in bars]
            self.assert_near(sums[0] / sum(sums), x, delta=1e-3)
            self.assert_near(sums[1] / sum(sums), y, delta=1e-3)

    def test_matrices(self):
        for column in range(3):
            unit = [Single(i == column) for i in range(3)]
            back = oracle.apply(oracle.XYZ_TO_RGB, oracle.apply(oracle.RGB_TO_XYZ, unit))
            for got, want in zip(back, unit):
                self.assert_near(got, want, delta=1e-6)
        white = oracle.apply(oracle.RGB_TO_XYZ, singles(1, 1, 1))
        for got, want in zip(white, (0.95047, 1, 1.08883)):
            self.assert_near(got, want, delta=1e-5)
        for got in oracle.apply(oracle.D65_TO_E, white):
            self.assert_near(got, 1, delta=1e-5)
        for got in oracle.apply(oracle.XYZ_TO_RGB_E, singles(1, 1, 1)):
            self.assert_near(got, 1, delta=1e-6)

    def test_curves(self):
        # White is flat, and a primary and its complement make white but for their flanks.
        self.assertTrue(all(abs(s - 1) < 0.01 for s in oracle.CURVES["white"]))
        for a, b in (("cyan", "red"), ("magenta", "green"), ("yellow", "blue")):
            for s, t in zip(oracle.CURVES[a], oracle.CURVES[b]):
                self.assertTrue(0.7 < s + t < 1.6, (a, b, s, t))
        for table in oracle.CURVES.values():
            self.assertTrue(all(0 < s < 1.003 for s in table))


class Spectra(Test):
    SIMPLE = oracle.from_samples(singles(400, 500, 600), singles(1, 2))

    def assert_refused(self, message, call, *arguments):
        with self.assertRaises(ValueError) as caught:
            call(*arguments)
        self.assertEqual(str(caught.exception), message)

    def test_from_samples(self):
        short = oracle.from_samples(singles(400, 500), singles(2))
        self.assertEqual(short[1], [0, 0, 400, 2, 500, 0])
        self.assert_refused(
            "At least 7 spectral values must be specified.", oracle.validate, short
        )
        self.assertEqual(self.SIMPLE[1], [0, 0, 400, 1, 500, 2, 600, 0])
        oracle.validate(self.SIMPLE)

    def test_from_samples_checks(self):
        increase = "Wavelength lambdas must increase strictly monotonic."
        for message, wavelengths, amplitudes in (
            ("Wavelength lambda array must contain at least 2 elements.", [400], []),
            ("Wavelength lambda[0] must be greater than 0.", [0, 1], [1]),
            (increase, [400, 400], [1]),
            (increase, [400, math.nan, 500], [1, 1]),
            (increase, [math.nan, 500], [1]),
            (increase, [400, 300], [1, 2, 3]),
            ("amplitudes.size() must be lambdas.size() - 1.", [400, 500], [1, 2]),
        ):
            self.assert_refused(
                message, oracle.from_samples, singles(*wavelengths), singles(*amplitudes)
            )

    def test_uniform_wavelengths_accumulate(self):
        first, delta = singles(400, 0.1)
        array = oracle.from_uniform_samples(first, delta, singles(*[1] * 50))[1]
        self.assertEqual(len(array), 2 * 50 + 4)
        self.assertEqual(array[:4], [0, 0, 400, 1])
        self.assert_near(array[-2], 405, delta=1e-2)
        self.assertNotEqual(array[-2], first + 50 * delta)
        self.assertEqual(array[-1], 0)

    def test_from_band(self):
        self.assertEqual(oracle.from_band(*singles(400, 20, 3))[1], [0, 0, 400, 3, 420, 0])

    def test_validate(self):
        first = "The first wave length and amplitude of the spectral value need to be zero."
        increase = "Lambdas must increase strictly monotonical."
        last = "The last amplitude of the spectral value must be zero."
        for message, values in (
            ("Number of spectral values must be even.", [0, 1, 0, 1, 0, 1, 0]),
            (first, [0, 1, 400, 1, 500, 1, 600, 0]),
            (first, [math.nan, 0, 400, 1, 500, 1, 600, 0]),
            (increase, [0, 0, 0, 1, 500, 1, 600, 0]),
            (increase, [0, 0, 400, 1, math.nan, 1, 600, 0]),
            (last, [0, 0, 400, 1, 500, 1, 600, 1]),
            (last, [0, 0, 400, 1, 500, 1, 600, math.nan]),
        ):
            self.assert_refused(message, oracle.validate, (oracle.SPECTRAL, singles(*values)))

    def test_step_averages(self):
        for low, delta, want in (
            (450, 100, 1.5), (350, 100, 0.5), (650, 100, 0), (400, 200, 1.5), (410, 20, 1),
            (300, 100, 0), (500, 100, 2), (300, 500, 0.6), (475, 50, 1.5), (550, 100, 1),
        ):
            got = oracle.band_average(self.SIMPLE, Single(low), Single(delta), 0)
            self.assert_near(got, want, delta=1e-6)

    def test_step_averages_against_exact_integrals(self):
        rng = random.Random(11)
        for _ in range(200):
            w = sorted(singles(*(rng.uniform(380, 720) for _ in range(8))))
            a = singles(*(rng.uniform(0, 2) for _ in range(7)))
            low, delta = singles(rng.uniform(300, 750), rng.uniform(5, 300))
            first, last, edges = float(low), float(low) + float(delta), doubles(w)
            overlaps = (
                max(0.0, min(y, last) - max(x, first)) for x, y in zip(edges, edges[1:])
            )
            want = math.fsum(v * o for v, o in zip(doubles(a), overlaps)) / float(delta)
            got = oracle.band_average(oracle.from_samples(w, a), low, delta, 0)
            # Differences of wavelengths near 1000 and sums near 700 lose at most this much.
            self.assert_near(got, want, delta=1e-3 / float(delta))

    def test_band_checks(self):
        flat = oracle.from_luminance(Single(2))
        for spectrum in (flat, self.SIMPLE, oracle.from_rgb(*singles(1, 1, 1))):
            for wavelength, delta, message in (
                (0, 0, "Wavelength lambda must be greater than 0."),
                (-1, 1, "Wavelength lambda must be greater than 0."),
                (1, 0, "Wavelength delta lambda must be greater than 0"),
                (math.nan, -1, "Wavelength delta lambda must be greater than 0"),
            ):
                self.assert_refused(
                    message, oracle.band_average, spectrum, Single(wavelength), Single(delta), 0
                )
        self.assertEqual(oracle.band_average((oracle.LUMINANCE, []), *singles(0, -1), 0), 0)
        self.assertEqual(oracle.band_average(flat, *singles(math.nan, math.nan), 0), 2)

    def test_sampling(self):
        self.assertEqual(oracle.sample_at(self.SIMPLE, singles(400, 450, 550, 650)), [1, 1.5, 1])
        self.assertEqual(
            oracle.sample_uniform(self.SIMPLE, *singles(400, 40), 5), [1, 1, 1.5, 2, 2]
        )


class Reconstruction(Test):
    def average(self, colour, low, delta, illuminant=0):
        spectrum = oracle.from_rgb(*singles(*colour))
        return oracle.band_average(spectrum, Single(low), Single(delta), illuminant)

    def test_white(self):
        white = oracle.CURVES["white"]
        self.assertEqual(oracle.reconstruct(singles(1, 1, 1), 0, 60), white)
        self.assert_near(self.average((1, 1, 1), 500, 100), 1, delta=0.01)
        want = math.fsum(white[20:40]) / 20
        self.assert_near(self.average((1, 1, 1), 500, 100), want, delta=1e-5)

    def test_grey_stays_grey_in_daylight(self):
        for grey in (0.25, 1, 3):
            for low in range(400, 700, 25):
                plain = self.average((grey, grey, grey), low, 25)
                self.assert_near(
                    self.average((grey, grey, grey), low, 25, 4), plain, delta=1e-5 * grey
                )

    def test_corners_of_the_cube(self):
        white = oracle.CURVES["white"]
        for colour, name in (
            ((1, 0, 0), "red"), ((0, 1, 0), "green"), ((0, 0, 1), "blue"), ((0, 1, 1), "cyan"),
            ((1, 0, 1), "magenta"), ((1, 1, 0), "yellow"),
        ):
            got = oracle.reconstruct(singles(*colour), 0, 60)
            self.assertEqual(got, oracle.CURVES[name])
            brighter = oracle.reconstruct(singles(*(c + 1 for c in colour)), 0, 60)
            for s, t, w in zip(brighter, got, white):
                self.assertEqual(s, w + t)

    def test_order_of_channels(self):
        # 0.5 more in the middle channel and 1 more in the highest, on top of the lowest.
        for colour, pair, single in (
            ((1, 1.5, 2), "cyan", "blue"), ((1, 2, 1.5), "cyan", "green"),
            ((1.5, 1, 2), "magenta", "blue"), ((2, 1, 1.5), "magenta", "red"),
            ((1.5, 2, 1), "yellow", "green"), ((2, 1.5, 1), "yellow", "red"),
        ):
            got = oracle.reconstruct(singles(*colour), 0, 60)
            curves = [doubles(oracle.CURVES[name]) for name in ("white", pair, single)]
            for s, w, p, c in zip(got, *curves):
                self.assert_near(s, w + 0.5 * p + 0.5 * c, delta=1e-6)

    def test_bands_off_the_grid(self):
        white = (1, 1, 1)
        self.assertEqual(self.average(white, 300, 50), 0)
        self.assertEqual(self.average(white, 300, 100), 0)
        self.assertEqual(self.average(white, 705, 5), 0)
        self.assertEqual(self.average(white, 900, 100), 0)
        self.assertEqual(self.average(white, 1e30, 1), 0)
        self.assert_near(self.average(white, 350, 100), 0.5, delta=0.005)
        self.assert_near(self.average(white, 655, 100), 0.5, delta=0.005)
        self.assert_near(self.average(white, 700, 10), 0.5, delta=0.005)

    def test_band_inside_one_sample(self):
        want = oracle.CURVES["red"][10]
        self.assert_near(self.average((1, 0, 0), 451, 2), want, delta=1e-6)
        halves = (oracle.CURVES["red"][10] + oracle.CURVES["red"][11]) / 2
        self.assert_near(self.average((1, 0, 0), 452.5, 5), halves, delta=1e-6)

    def test_odd_channels(self):
        for colour in ((math.nan, 0, 0), (0, math.nan, 0), (0, 0, math.nan)):
            self.assertTrue(math.isnan(self.average(colour, 500, 100)))
            self.assertEqual(self.average(colour, 300, 50), 0)


class Conversions(Test):
    GRID = singles(*range(400, 706, 5))

    def test_flat_spectrum_has_luminance_one(self):
        flat = oracle.from_samples(self.GRID, singles(*[1] * 61))
        for illuminant in (0, 4):
            self.assert_near(oracle.to_luminance(flat, illuminant), 1, delta=1e-6)
        # The ends that the range cuts off cost a few parts in a thousand.
        for value in oracle.to_rgb(flat, 4) + oracle.to_xyz(flat, 0):
            self.assert_near(value, 1, delta=5e-3)

    def test_one_pair(self):
        # The light cancels: Y is the amplitude, and X and Z keep the observer's ratios.
        for index in (0, 12, 31, 60):
            w = Single(400 + 5 * index)
            for illuminant in (0, 4):
                xyz = oracle.to_xyz((oracle.SPECTRAL, singles(0, 0, w, 0.75)), illuminant)
                y = oracle.Y_BAR[index]
                self.assert_near(xyz[1], 0.75, delta=1e-6)
                self.assert_near(xyz[0], 0.75 * float(oracle.X_BAR[index] / y), delta=1e-4)
                self.assert_near(xyz[2], 0.75 * float(oracle.Z_BAR[index] / y), delta=1e-4)

    def test_pairs_count_once_whatever_their_width(self):
        dense = (oracle.SPECTRAL, singles(0, 0, 555, 1, 555.5, 1, 610, 0, 620, 0))
        y = [oracle.Y_BAR[i] for i in (31, 42, 44)]
        want = 2 * y[0] / (2 * y[0] + y[1] + y[2])
        self.assert_near(oracle.to_luminance(dense, 0), want, delta=1e-3)

    def test_nothing_in_range(self):
        above = (oracle.SPECTRAL, singles(0, 0, 710, 1, 720, 1, 730, 0))
        self.assertTrue(all(math.isnan(c) for c in oracle.to_rgb(above, 0)))

    def test_plain_encodings(self):
        for illuminant in (0, 4):
            rgb = oracle.from_rgb(*singles(0.25, 0.5, 0.75))
            self.assertEqual(oracle.to_rgb(rgb, illuminant), [0.25, 0.5, 0.75])
            want = 0.2126729 * 0.25 + 0.7151522 * 0.5 + 0.072175 * 0.75
            self.assert_near(oracle.to_luminance(rgb, illuminant), want, delta=1e-6)
            self.assertEqual(oracle.to_rgb(oracle.from_luminance(Single(3)), illuminant), [3] * 3)
            for encoding in (0, 1, 2):
                self.assertEqual(oracle.to_rgb((encoding, []), illuminant), [0] * 3)
                self.assertEqual(oracle.to_xyz((encoding, []), illuminant), [0] * 3)

    def test_convert_writes_one_amplitude_for_three_pairs(self):
        before = singles(0, -1, 500, -2, 900, -3)
        after = oracle.convert(oracle.RGB, singles(1, 1, 1), oracle.SPECTRAL, before, 0)
        self.assertEqual(after[:3] + after[4:], before[:3] + before[4:])
        self.assert_near(after[3], 1, delta=0.01)

    def test_convert_closes_the_input_itself(self):
        data = singles(-5, 9, 500, 1, 600, 2, -5, 9, 77)
        self.assertEqual(
            oracle.spectrum_of_record(oracle.SPECTRAL, data)[1], [0, 0, 500, 1, 600, 2, 650, 0]
        )

    def test_convert_writes_what_the_encoding_holds(self):
        before = singles(-1, -2, -3, -4)
        grey = singles(0.5)
        for encoding, written in ((0, 1), (1, 3), (7, 3)):
            after = oracle.convert(oracle.LUMINANCE, grey, encoding, before, 1)
            self.assertEqual(after[written:], before[written:])
            for value in after[:written]:
                self.assert_near(value, 0.5, delta=1e-6)

    def test_spd_leaves_an_odd_float_alone(self):
        pairs = singles(400, -1, 500, -2, -3)
        after = oracle.to_spd(Spectra.SIMPLE, pairs)
        # The closing wavelength is 500 + 100 / 2.
        self.assertEqual(after, [400, 1, 500, 2, -3])


class Radiation(Test):
    def closed_form(self, w, t):
        """In double, with the exact constants of the SI."""
        h, c, k = 6.62607015e-34, 299792458.0, 1.380649e-23
        m = w * 1e-9
        return 2 * h * c * c / m**5 / math.expm1(h * c / (m * k * t)) * 1e-9

    def test_zero(self):
        for w, t in ((0, 6500), (555, 0), (0, 0), (-0.0, 6500), (0, math.nan)):
            self.assertEqual(bits(oracle.planck(Single(w), Single(t))), 0)

    def test_known_value(self):
        got = oracle.planck(Single(555), Single(6500))
        self.assert_near(got, 4.27e4, delta=50)

    def test_closed_form(self):
        # The constants here are older than the exact ones and agree with them to about 1e-6, which
        # the exponent multiplies by up to 20.
        for w in (350, 400, 555, 700, 1000):
            for t in (2000, 2856, 4000, 6500, 10000, 20000):
                x = 1.438777e7 / (w * t)
                got = float(oracle.planck(Single(w), Single(t)))
                want = self.closed_form(w, t)
                self.assertLess(abs(got / want - 1), 1e-5 if x < 8 else 3e-5, (w, t))

    def test_wien_limit(self):
        # Far below the peak the -1 is lost, so the radiance is 2hc^2 / m^5 * exp(-hc / mkT).
        h2, hc, k, c = 1.325214e-33, 1.9864458e-25, 1.3806486e-23, 299792458.0
        w, t = 400.0, 1500.0
        m = w * 1e-9
        want = h2 * c * c / m**5 * math.exp(-hc / (m * k * t)) * 1e-9
        self.assertLess(abs(float(oracle.planck(Single(w), Single(t))) / want - 1), 1e-5)

    def test_displacement(self):
        peak = max(range(300, 700), key=lambda w: oracle.planck(Single(w), Single(6500)))
        self.assert_near(peak, 2.897771955e6 / 6500, delta=2)

    def test_limits(self):
        self.assertEqual(oracle.planck(*singles(100, 100)), 0)
        self.assertEqual(oracle.planck(*singles(10, 1e9)), math.inf)
        self.assertTrue(math.isnan(oracle.planck(*singles(1, 1))))

    def test_black_body_has_luminance_one(self):
        for t in (1000, 2000, 3000, 6500, 12000, 20000):
            rgb = oracle.blackbody_to_rgb(Single(t))
            self.assert_near(oracle.apply(oracle.RGB_TO_XYZ, rgb)[1], 1, delta=1e-6)
            self.assertTrue(all(c >= 0 for c in rgb))

    def test_black_body_colours(self):
        daylight = oracle.blackbody_to_rgb(Single(6500))
        self.assertLess(max(daylight) / min(daylight), 1.1)
        warm = oracle.blackbody_to_rgb(Single(2000))
        self.assertGreater(warm[0], 20 * warm[2])
        for t in (0, 1, 100):
            self.assertTrue(all(math.isnan(c) for c in oracle.blackbody_to_rgb(Single(t))))


class Cases(Test):
    def test_tables_are_deterministic_and_well_formed(self):
        with tempfile.TemporaryDirectory() as one, tempfile.TemporaryDirectory() as two:
            write_cases.write_all(one)
            write_cases.write_all(two)
            names = sorted(os.listdir(one))
            self.assertEqual(len(names), 11)
            _, different, failed = filecmp.cmpfiles(one, two, names, shallow=False)
            self.assertEqual((different, failed), ([], []))
            for name in names:
                with open(os.path.join(one, name), encoding="ascii") as file:
                    lines = file.read().splitlines()
                self.assertTrue(lines[0].startswith("# "))
                columns = lines[0][2:].split("\t")
                rows = [line.split("\t") for line in lines if not line.startswith("#")]
                self.assertGreater(len(rows), 5)
                for row in rows:
                    self.assertEqual(len(row), len(columns), name)
                    self.assertTrue(all(row), name)


if __name__ == "__main__":
    unittest.main()
