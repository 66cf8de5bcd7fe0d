"""Colour."""
import math

import numpy as np
import pytest

import vornath_data as vd


def test_spectra_have_three_encodings():
    assert vd.spectrum(0.5).to_python() == {"encoding": "LUMINANCE", "spectrum": {"to": [0.5]}}
    assert vd.spectrum((0.25, 0.5, 0.75))["encoding"] == "RGB"
    sampled = vd.spectrum([(400, 0.25), (500, 0.5)])
    assert sampled["encoding"] == "SPECTRAL"
    assert sampled["spectrum"].to_python() == [0, 0, 400, 0.25, 500, 0.5, 600, 0]
    assert vd.spectrum({500: 0.5, 400: 0.25}) == sampled
    assert vd.spectrum(np.array([[400, 0.25], [500, 0.5]])) == sampled
    assert vd.spectrum([(400, 0.5)], step=10.0)["spectrum"].to_python() == [0, 0, 400, 0.5, 410, 0]


@pytest.mark.parametrize("samples,error", [
    ([(500, 1.0), (400, 1.0)], vd.OutOfRange), ([(400, math.nan)], vd.OutOfRange), ([(-1, 1.0)], vd.OutOfRange),
    ([1, 2, 3, 4], vd.TypeMismatch), ([], vd.TypeMismatch), ([(400, 1e39)], vd.OutOfRange),
])
def test_refuses_samples_that_are_no_spectrum(samples, error):
    with pytest.raises(error):
        vd.spectrum(samples)


def test_a_flat_reflectance_is_grey():
    grid = np.arange(395.0, 711.0, 5.0)
    grey = vd.spectrum(np.column_stack([grid, np.full(len(grid), 0.5)]))
    rgb = vd.spectrum_to_rgb(grey)
    assert rgb == pytest.approx((0.5, 0.5, 0.5), abs=0.01)
    assert vd.spectrum_to_rgb(vd.spectrum((0.25, 0.5, 0.75))) == (0.25, 0.5, 0.75)
    with pytest.raises(ValueError):
        vd.spectrum_to_rgb(grey, "D50")


def test_only_spectra_have_a_colour():
    for wrong in (vd.Value.parse("1"), vd.Value.parse("{ a = 1; }")):
        with pytest.raises(vd.TypeMismatch):
            vd.spectrum_to_rgb(wrong)
    with pytest.raises(vd.TypeMismatch):
        vd.spectrum_to_rgb((1, 2, 3))
    empty = vd.spectrum_type().default()
    empty["encoding"] = "RGB"
    with pytest.raises(vd.TypeMismatch):
        vd.spectrum_to_rgb(empty)


def test_a_spectrum_in_a_value_has_a_colour():
    value = vd.Value.parse("{ n = 1; paint = %s; }" % vd.spectrum((0.25, 0.5, 0.75)))
    assert vd.spectrum_to_rgb(value["paint"]) == (0.25, 0.5, 0.75)


def test_black_bodies():
    assert vd.blackbody_rgb(6500.0)[0] == pytest.approx(1.0, abs=0.1)
    red, green, blue = vd.blackbody_rgb(2000.0)
    assert red > green > blue >= 0
    assert all(math.isnan(one) for one in vd.blackbody_rgb(0.0))


def test_plancks_law_peaks_where_wien_says():
    grid = np.arange(300.0, 1500.0, 1.0)
    radiance = vd.planck(grid, 5000.0)
    assert grid[radiance.argmax()] == pytest.approx(2.897771955e6 / 5000.0, abs=1.0)
    assert vd.planck(500.0, 0.0) == 0.0 and vd.planck(500.0, 5000.0) == radiance[200]
    assert vd.blackbody(5000.0)["spectrum"].numpy()[3:-2:2].max() == 1.0
    with pytest.raises(vd.OutOfRange):
        vd.blackbody(1.0)


def test_samples_a_spectrum():
    spectrum = vd.spectrum([(400, 1.0), (500, 0.5), (600, 0.0)])
    assert vd.sample_spectrum(spectrum, [400, 450, 500, 550]).tolist() == pytest.approx([1, 1, 0.5, 0.5])
    for wrong in ([400], [500, 400], [0, 400], [[400, 500]]):
        with pytest.raises(vd.OutOfRange):
            vd.sample_spectrum(spectrum, wrong)


def test_converts_between_encodings():
    assert vd.convert_spectrum((0.5, 0.5, 0.5), "LUMINANCE") == pytest.approx(0.5, abs=0.01)
    pairs = vd.convert_spectrum((0.2, 0.4, 0.6), "SPECTRAL")
    assert pairs.shape == (63, 2) and pairs[1, 0] == 400
    assert vd.convert_spectrum(pairs, "RGB") == pytest.approx((0.2, 0.4, 0.6), abs=0.02)
    with pytest.raises(vd.OutOfRange):
        vd.convert_spectrum([(400, 1.0)], "RGB")
    with pytest.raises(ValueError):
        vd.convert_spectrum(0.5, "XYZ")


def test_srgb_is_clamped_and_curved():
    assert vd.srgb((0.0, 0.5, 2.0)) == (0, 188, 255) and vd.srgb((math.nan, -1, 1)) == (0, 0, 255)
    assert vd.srgb((math.inf, -math.inf, 1e300)) == (255, 0, 255)


def test_fixed_types():
    assert vd.light_unit_type().labels == ("LUMEN", "CANDELA", "LUX", "NIT")
    assert list(vd.emission_type().fields) == ["color", "value", "unit"]
    assert vd.wrap_mode_type().labels == ("CLAMP", "BORDER", "REPEAT", "MIRROR")
    assert list(vd.texture_type().fields) == ["texture_ref"] and vd.uv_transformation_type().size == 24


def test_the_step_of_a_spectrum_is_a_width():
    for wrong in (-5, 0, float("nan"), float("inf"), 1e-30, 1e300):
        with pytest.raises(vd.OutOfRange):
            vd.spectrum([(400, 1)], step=wrong)
    with pytest.raises(vd.TypeMismatch):
        vd.spectrum([(400, 1)], step="x")
    assert vd.spectrum([(400, 1)], step=10)["spectrum"].to_python() == [0, 0, 400, 1, 410, 0]
    assert vd.spectrum([(400, 1)])["spectrum"].to_python() == [0, 0, 400, 1, 405, 0]
    assert vd.spectrum([(400, 1), (420, 2)])["spectrum"].to_python() == [0, 0, 400, 1, 420, 2, 440, 0]


def test_numbers_of_numpy_are_numbers_of_a_spectrum():
    import numpy as np
    assert vd.spectrum(np.float32(0.5)) == vd.spectrum(0.5)
    assert vd.spectrum(np.int64(2)) == vd.spectrum(2)
    assert vd.spectrum((np.float32(0.5), np.float32(0.25), np.int32(1))) == vd.spectrum((0.5, 0.25, 1))
    with pytest.raises(vd.TypeMismatch):
        vd.spectrum(np.True_)
