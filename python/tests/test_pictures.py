"""How things show themselves in a notebook."""
import builtins
import html.parser
import xml.etree.ElementTree as ET

import pytest

import vornath_data as vd

VOID = {"br"}


class Checker(html.parser.HTMLParser):
    """Checks that tags nest."""

    def __init__(self):
        super().__init__()
        self.open, self.data, self.tags = [], [], []

    def handle_starttag(self, tag, attributes):
        self.tags.append((tag, dict(attributes)))
        if tag not in VOID:
            self.open.append(tag)

    def handle_endtag(self, tag):
        assert self.open and self.open.pop() == tag

    def handle_data(self, data):
        self.data.append(data)


def parsed(thing):
    checker = Checker()
    checker.feed(thing._repr_html_() if hasattr(thing, "_repr_html_") else thing)
    checker.close()
    assert not checker.open
    return checker


def sampled():
    return vd.spectrum([(400, 0.25), (500, 1.0), (600, 0.5)])


def test_everything_shows_itself_with_tags_that_nest(filled):
    things = [filled, filled.Shape, filled.Camera, vd.catalogue(), vd.catalogue()["Shape"],
              vd.catalogue()["Shape"].groups["General"], vd.Type("int"), filled.validate(),
              vd.diff(filled, vd.Scene()), sampled(), vd.Value.parse("[ 1, 2 ]")]
    things += list(filled)
    for thing in things:
        assert len(parsed(thing).data) > 0, thing
    for entry in vd.catalogue():
        parsed(entry)
    filled.close()
    for thing in things:
        parsed(thing)


def test_a_group_shows_what_is_not_its_default_first(filled):
    data = parsed(filled.Camera[0].general).data
    assert data[0] == "Camera/0/groups/General" and data[6:8] == ["near_distance", "0.25"]


def test_text_is_escaped(scene):
    program = scene.CameraProgram.add("<script>alert(1)</script>")
    assert "<script>" not in program._repr_html_() and "&lt;script&gt;" in program._repr_html_()
    value = vd.Value.parse("{ a = [ 60c, 62c, 38c ]; }")
    assert "<>&" not in value._repr_html_()


def test_a_spectrum_has_a_swatch_and_a_plot_with_an_axis_in_nanometres():
    text = sampled()._repr_html_()
    assert "wavelength (nm)" in text and "spectrum from 400 to 700 nm" in text
    svg = ET.fromstring(text[text.index("<svg"):text.index("</svg>") + 6])
    path = svg.find("{http://www.w3.org/2000/svg}path").get("d")
    points = [tuple(float(one) for one in point[1:].split(",")) for point in path.split()]
    heights = [y for _, y in points]
    assert min(heights) == heights[3] or heights.count(min(heights)) == 2, "the highest amplitude is at the top"
    assert points[0][0] < points[-1][0]
    labels = [one.text for one in svg.iter("{http://www.w3.org/2000/svg}text")]
    assert {"400", "500", "600", "700"} <= set(labels)


def test_a_swatch_has_the_colour_in_srgb():
    tags = parsed(vd.spectrum((1.0, 0.5, 0.0))).tags
    style = next(attributes["style"] for tag, attributes in tags if tag == "span")
    assert "background:rgb(255, 188, 0)" in style


def spectral(*floats):
    value = vd.spectrum_type().default()
    value.update(encoding="SPECTRAL", spectrum=list(floats))
    return value


INF = float("inf")


@pytest.mark.parametrize("floats,plot", [
    ((0, 0, 400, 1, 400, 1, 500, 0), False), ((0, 0, 500, 1, 400, 1, 300, 0), False),
    ((0, 0, 400, -1e30, 500, -1e30), True), ((0, 0, 400, 0, 500, 0), True), ((0, 0, 400, 1e30, 500, -1e30), True),
    ((0, 0, 400, INF, 500, 1, 600, 2, INF, 1), True), ((0, 0, -1e30, 1, -1, 1), False), ((), False),
    ((0, 0, 1e-45, 1e-45, 3e-45, 2e-45), True), ((400,), False), ((0, 0, 3e38, 3e38, 3.4e38, -3e38), True),
])
def test_every_spectrum_shows_itself_with_a_plot_if_its_wavelengths_increase(floats, plot):
    value = spectral(*floats)
    text = value._repr_html_()
    parsed(value)
    assert ("<svg" in text) is plot and "nan," not in text
    if plot:
        path = ET.fromstring(text[text.index("<svg"):text.index("</svg>") + 6])[0].get("d")
        for point in path.split():
            x, y = (float(one) for one in point[1:].split(","))
            assert 44 <= x <= 352 and 8 <= y <= 132, "inside the axes"
    else:
        with pytest.raises((vd.OutOfRange, vd.TypeMismatch)):
            vd.plot_spectrum(value)


def test_infinite_colours_and_spectra_without_floats_show_themselves():
    assert "rgb(255, 0, 0)" in vd.Value.parse(str(vd.spectrum((0.5, 0, 0))).replace("0.5", "1.0e39"))._repr_html_()
    empty = vd.spectrum_type().default()
    for code in ("LUMINANCE", "RGB", "SPECTRAL"):
        empty["encoding"] = code
        empty["spectrum"] = None
        assert len(parsed(empty).data) > 0
        with pytest.raises(vd.TypeMismatch, match="null"):
            vd.convert_spectrum(empty)
    with pytest.raises(vd.TypeMismatch, match="null"):
        vd.plot_spectrum(empty)


def test_large_things_are_cut(scene):
    for _ in range(300):
        scene.Shape.add()
    text = scene.Shape._repr_html_()
    assert text.count("<tr>") == 202 and "..." in text
    assert len(vd.Value("float[100000]")._repr_html_()) < 3000


def test_plots_with_matplotlib_where_it_is(tmp_path):
    pytest.importorskip("matplotlib")
    figure = vd.plot_spectrum(sampled(), tmp_path / "x.svg")
    assert figure.axes[0].get_xlabel() == "wavelength (nm)" and (tmp_path / "x.svg").stat().st_size > 500
    with pytest.raises(vd.TypeMismatch):
        vd.plot_spectrum(vd.spectrum(0.5))


def test_plots_as_svg_without_matplotlib(tmp_path, monkeypatch):
    real = builtins.__import__

    def refuse(name, *arguments, **named):
        if name.startswith("matplotlib"):
            raise ImportError(name)
        return real(name, *arguments, **named)

    monkeypatch.setattr(builtins, "__import__", refuse)
    vd.plot_spectrum(sampled(), tmp_path / "x.svg")
    assert ET.parse(tmp_path / "x.svg").getroot().tag.endswith("svg")
    with pytest.raises(ImportError):
        vd.plot_spectrum(sampled(), tmp_path / "x.png")


def test_all_groups_of_an_object_and_of_a_scene_show_themselves(scene):
    text = scene.Camera.add().groups._repr_html_()
    assert text.count("<details>") == 4 and "near_distance" in text
    assert "ray_epsilon" in scene.groups._repr_html_()
