"""How things show themselves in a notebook: tables, swatches of colours, and spectra as SVG."""
from __future__ import annotations

from collections.abc import Iterable, Mapping
from html import escape
from typing import TYPE_CHECKING, Any

from .errors import Error

if TYPE_CHECKING:
    from ._check import Report
    from ._records import Fields
    from ._tools import Differences
    from .catalogue import Catalogue, Class, Group
    from .scene import Objects, Scene, SceneObject
    from .types import Field, Type
    from .values import Part, Value, _Item

_STYLE = ("border-collapse:collapse;font-family:ui-monospace,monospace;font-size:90%")
_CELL = "text-align:left;vertical-align:top;padding:1px 8px"
_ROWS = 200  # beyond which a table is cut


def _table(head: Iterable[str], rows: Iterable[Iterable[str]], caption: str = "") -> str:
    """Returns a table of cells that are HTML already."""
    parts = [f'<table style="{_STYLE}">']
    if caption:
        parts.append(f'<caption style="text-align:left;font-weight:bold">{caption}</caption>')
    parts.append("<thead><tr>" + "".join(f'<th scope="col" style="{_CELL}">{one}</th>' for one in head)
                 + "</tr></thead><tbody>")
    for number, row in enumerate(rows):
        if number == _ROWS:
            parts.append(f'<tr><td style="{_CELL}">...</td></tr>')
            break
        parts.append("<tr>" + "".join(f'<td style="{_CELL}">{one}</td>' for one in row) + "</tr>")
    parts.append("</tbody></table>")
    return "".join(parts)


def _text(thing: Any, length: int = 120) -> str:
    text = str(thing).encode("utf-8", "backslashreplace").decode()  # It may have bytes that are not UTF-8.
    return escape(text if len(text) <= length else text[:length - 4] + " ...")


def swatch(rgb: Iterable[float], words: str = "") -> str:
    """Returns a small square of a colour in linear RGB, with its numbers as its name."""
    from .colour import srgb
    red, green, blue = rgb
    numbers = f"{red:.3g} {green:.3g} {blue:.3g}"
    shown = srgb((red, green, blue))
    return (f'<span role="img" aria-label="colour {escape(numbers)}" title="linear RGB {escape(numbers)}" '
            f'style="display:inline-block;width:1em;height:1em;vertical-align:middle;'
            f'border:1px solid #888;background:rgb{shown}"></span> {words or escape(numbers)}')


# Values.

def _colour_of(item: _Item) -> str:
    """Returns the swatch and the plot of a spectrum, or nothing for another value."""
    from .colour import spectrum_pairs, spectrum_to_rgb, spectrum_type
    if item.type.kind != "struct" or not item.type.is_subtype(spectrum_type()):
        return ""
    try:
        rgb = spectrum_to_rgb(item)  # type: ignore[arg-type]
    except Error:
        return ""
    code = item["encoding"]
    text = f"{swatch(rgb)} {escape(str(code))}"
    if code == "SPECTRAL":
        try:
            text += "<br>" + spectrum_svg(spectrum_pairs(item))
        except Error as problem:
            text += f" ({escape(str(problem))})"
    return text


def spectrum_svg(pairs: Any, width: int = 360, height: int = 160) -> str:
    """Returns a plot of a sampled spectrum as SVG, with an axis in nanometres.

    pairs: two or more wavelengths that increase and their amplitudes, each of which holds up to the next
    wavelength.
    """
    points = [(float(x), float(y)) for x, y in pairs]
    left, bottom, right, top = 44, 28, 8, 8
    first, last = points[0][0], points[-1][0]
    highest = max(y for _, y in points)
    lowest = min(0.0, min(y for _, y in points))
    if highest <= lowest:
        highest = 0.0 if lowest < 0 else 1.0
    across = (width - left - right) / (last - first)
    up = (height - top - bottom) / (highest - lowest)

    def place(x: float, y: float) -> str:
        return f"{left + (x - first) * across:.1f},{height - bottom - (y - lowest) * up:.1f}"

    path = [f"M{place(points[0][0], lowest)} L{place(*points[0])}"]
    for (_, y), (x, following) in zip(points, points[1:]):
        path.append(f"L{place(x, y)} L{place(x, following)}")
    marks = []
    for x in _ticks(first, last):
        at = left + (x - first) * across
        marks.append(f'<line x1="{at:.1f}" x2="{at:.1f}" y1="{height - bottom}" y2="{height - bottom + 4}" '
                     f'stroke="currentColor"/><text x="{at:.1f}" y="{height - bottom + 14}" '
                     f'text-anchor="middle">{x:g}</text>')
    for y in _ticks(lowest, highest, 4):
        at = height - bottom - (y - lowest) * up
        marks.append(f'<line x1="{left - 4}" x2="{left}" y1="{at:.1f}" y2="{at:.1f}" stroke="currentColor"/>'
                     f'<text x="{left - 6}" y="{at + 3:.1f}" text-anchor="end">{y:g}</text>')
    return (f'<svg role="img" aria-label="spectrum from {first:g} to {last:g} nm" width="{width}" '
            f'height="{height}" viewBox="0 0 {width} {height}" font-size="10" fill="currentColor" '
            f'xmlns="http://www.w3.org/2000/svg">'
            f'<path d="{" ".join(path)}" fill="none" stroke="currentColor" stroke-width="1.5"/>'
            f'<path d="M{left},{top} V{height - bottom} H{width - right}" fill="none" '
            f'stroke="currentColor"/>{"".join(marks)}'
            f'<text x="{(left + width - right) / 2:.0f}" y="{height - 2}" text-anchor="middle">'
            f'wavelength (nm)</text></svg>')


def _ticks(low: float, high: float, count: int = 6) -> list[float]:
    import math
    step = 10 ** math.floor(math.log10((high - low) / count))
    for factor in (1, 2, 5, 10):
        if (high - low) / (step * factor) <= count:
            step *= factor
            break
    first = math.ceil(low / step)
    return [round(number * step, 12) for number in range(first, math.floor(high / step + 1e-9) + 1)]


def _leaf_text(thing: Any) -> str:
    from .values import Part, Value, _Item
    if isinstance(thing, _Item):
        assert isinstance(thing, (Value, Part))
        colour = _colour_of(thing)
        if colour:
            return colour
        if thing.type.kind == "struct":
            return value_html(thing, nested=True)
        try:
            return _text(thing.text())
        except Error as problem:
            return _text(problem)
    return _text(repr(thing) if isinstance(thing, (str, bytes)) else thing)


def value_html(item: Value | Part | _Item, nested: bool = False) -> str:
    """Returns a value as a table of its fields, or its text."""
    colour = _colour_of(item)
    if item.type.kind == "struct":
        table = _table(("Field", "Type", "Value"), (
            (escape(label), _text(field.type.text, 60), _leaf_text(item[label]))
            for label, field in item.type.fields.items()))
        return colour + table if colour else table
    try:
        return f"<code>{_text(item.text(), 2000)}</code>"
    except Error as problem:
        return f"<code>{_text(problem)}</code>"


# Types and the catalogue.

def _limit_text(field: Field) -> str:
    words = []
    for low, high, name in ((field.minimum, field.maximum, ""),
                            (field.soft_minimum, field.soft_maximum, "soft ")):
        if low is not None or high is not None:
            words.append(f"{name}{'' if low is None else low} to {'' if high is None else high}")
    return _text("; ".join(words))


def _field_rows(fields: Iterable[Field], offset: int = 0, path: str = "") -> Iterable[list[str]]:
    for field in fields:
        label = path + field.label
        kind = field.type.kind
        inner = field.type.fields
        default = "" if inner else _text(field.default)
        words = "struct" if inner else "enum" if kind == "enum" else field.type.stripped.text
        yield [escape(label), str(offset + field.offset), _text(words, 40), default, _limit_text(field),
               escape(field.unit or ""), escape(field.name if field.name != field.label else ""),
               _text(field.description, 400)]
        yield from _field_rows(inner.values(), offset + field.offset, label + ".")


_FIELD_HEAD = ("Field", "Offset", "Type", "Default", "Limits", "Unit", "Name", "Description")


def type_html(type: Type) -> str:
    """Returns a type as a table of its fields with offsets, defaults and limits."""
    caption = f"{type.kind}, {type.size} bytes, aligned to {type.alignment}"
    if type.kind == "struct":
        return _table(_FIELD_HEAD, _field_rows(type.fields.values()), caption)
    return f"<code>{_text(type.text, 2000)}</code> ({caption})"


def group_info_html(group: Group) -> str:
    """Returns a group of the catalogue as a table of its fields."""
    return _table(_FIELD_HEAD, _field_rows(group.fields.values()),
                  escape(f"{group.owner}/{group.name}: {group.description} ({group.size} bytes)"))


def class_info_html(entry: Class) -> str:
    """Returns a class of the catalogue: its slots and its groups."""
    parts = [f"<b>{escape(entry.name)}</b> ({entry.kind}{', with a value' if entry.has_value else ''})"]
    if entry.slots:
        parts.append(_table(("Slot", "Holds", "Target"), (
            (escape(slot.name), slot.kind, escape(slot.target)) for slot in entry.slots.values())))
    for group in entry.groups.values():
        parts.append(f"<details><summary>{escape(group.name)}: {escape(group.description)}</summary>"
                     f"{group_info_html(group)}</details>")
    return "".join(parts)


def catalogue_html(catalogue: Catalogue) -> str:
    """Returns the catalogue as a table of its classes."""
    return _table(("Number", "Class", "Kind", "Slots", "Groups"), (
        (str(entry.number), escape(entry.name), entry.kind, _text(", ".join(entry.slots)),
         _text(", ".join(entry.groups))) for entry in catalogue))


# Scenes.

def fields_html(fields: Fields) -> str:
    """Returns a group of an object as a table; what is not the default stands first, in bold."""
    from ._records import fresh_bytes
    from .types import Type
    group = fields._group
    try:
        found = fields.to_dict()
    except Error as problem:
        return escape(str(problem))
    type: Type = fields._type
    fresh = type._layout.decode(fresh_bytes(group._number, group._info.index), fields._offset, None)
    changed = [label for label in found if found[label] != fresh[label]]
    rows = []
    for label in [*changed, *(label for label in found if label not in changed)]:
        field = type.fields[label]
        words = _text(found[label])
        if label in changed:
            words = f"<b>{words}</b>"
        rows.append((escape(label), words, escape(field.unit or ""), _text(fresh[label]),
                     _text(field.description, 400)))
    return _table(("Field", "Value", "Unit", "Default", "Description"), rows, escape(group._name()))


def groups_html(groups: Mapping[str, Fields]) -> str:
    """Returns groups as tables to unfold."""
    return "".join(f"<details><summary>{escape(name)}</summary>{fields_html(group)}</details>"
                   for name, group in groups.items())


def object_html(thing: SceneObject) -> str:
    """Returns an object: its slots, its value and its groups."""
    from .scene import Instance
    parts = [f"<b>{escape(repr(thing))}</b>"]
    if not isinstance(thing, Instance) or thing._scene.closed or not thing.valid:
        return parts[0] + _asset_html(thing)
    if thing._class.slots:
        parts.append(_table(("Slot", "Target"), ((escape(name), _text(list(target) if hasattr(
            target, "words") else target)) for name, target in thing.slots.items())))
    value = getattr(thing, "value", None) if thing._class.has_value else None
    if value is not None:
        parts.append(f"<details open><summary>value</summary>{value_html(value)}</details>")
    parts.append(groups_html(thing.groups))
    return "".join(parts)


def _asset_html(thing: SceneObject) -> str:
    from .assets import Asset
    if not isinstance(thing, Asset) or thing._scene.closed or not thing.valid:
        return ""
    rows = [(escape(name), str(number)) for name, number in thing.desc.items()]
    rows += [("bytes", str(thing.nbytes)), ("id", str(thing.id))]
    return _table(("Member", "Value"), rows)


def objects_html(objects: Objects[Any]) -> str:
    """Returns the objects of a class as a table."""
    if objects._scene.closed:
        return escape(repr(objects))
    shown = objects.indices()[:_ROWS + 1]
    return _table(("Slot", objects.name), ((str(index), _text(repr(objects[index]))) for index in shown),
                  escape(repr(objects).strip("<>")))


def scene_html(scene: Scene) -> str:
    """Returns a scene as a table of its classes with the numbers of their objects."""
    if scene.closed or scene._pointer is None:
        return escape(repr(scene))
    rows = [(escape(name), str(len(objects)), str(objects.slot_count - len(objects)))
            for name, objects in scene.classes.items() if objects.slot_count]
    return _table(("Class", "Objects", "Free slots"), rows, escape(f"Scene {scene.id}"))


def report_html(report: Report) -> str:
    """Returns a report as a table of its messages."""
    words = "can be read" if report.valid else "must not be read"
    caption = f"{report.file or 'The scene'} {words}: {report.errors} errors, {report.warnings} warnings"
    return _table(("Severity", "Code", "Offset", "Address", "Message"), (
        (one.severity, escape(one.code), "" if one.offset is None else str(one.offset), escape(one.address),
         _text(one.message, 400)) for one in report), escape(caption))


def differences_html(found: Differences) -> str:
    """Returns differences as a table."""
    return _table(("Address", "Kind", "Old", "New"), (
        (escape(one.address), one.kind, _text(one.old_text or ""), _text(one.new_text or ""))
        for one in found), f"{found.found} differences")


def figure_of_spectrum(item: Any, pairs: Any) -> Any:
    """Returns a matplotlib figure of a spectrum in a value, with wavelengths in nanometres. Needs
    matplotlib, which nothing else in the package does."""
    from matplotlib.figure import Figure

    from .colour import spectrum_to_rgb, srgb
    colour = [one / 255 for one in srgb(spectrum_to_rgb(item))]
    figure = Figure(figsize=(6, 3), layout="constrained")
    axes = figure.add_subplot()
    axes.fill_between(pairs[:, 0], pairs[:, 1], step="post", color=colour, alpha=0.5)
    axes.step(pairs[:, 0], pairs[:, 1], where="post", color="black", linewidth=1)
    axes.set_xlabel("wavelength (nm)")
    axes.set_ylabel("amplitude")
    return figure
