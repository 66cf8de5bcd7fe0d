# ---
# jupyter: {jupytext: {text_representation: {format_name: percent}}}
# ---
# %% [markdown]
# # Colour
# Black bodies, measured reflectances, and metamers: spectra that look the same under one light.
# %%
import csv
import pathlib
import sys

import numpy as np

import vornath_data as vd

folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "examples/cornell_box")
grid = np.arange(400.0, 701.0, 5.0)
# %% [markdown]
# ## Black bodies
# Cold bodies are red and hot ones blue. The peak of the spectrum is where Wien's law says: 2.898e6 nm K / T.
# %%
for kelvin in (2000, 3000, 4000, 5000, 6500, 10000):
    red, green, blue = vd.blackbody_rgb(kelvin)
    wide = np.arange(100.0, 3000.0)
    peak = wide[vd.planck(wide, kelvin).argmax()]
    print(f"{kelvin:6} K   linear RGB {red:.3f} {green:.3f} {blue:.3f}   sRGB {vd.srgb((red, green, blue))}"
          f"   peak {peak:.0f} nm, Wien {2.897771955e6 / kelvin:.0f} nm")
vd.blackbody(6500.0)
# %% [markdown]
# ## Measured reflectances
# The paints of the measured box, under D65 and under the equal-energy light.
# %%
with open(folder / "data" / "cornell_box_reflectance.csv", encoding="utf-8") as file:
    measured = list(csv.DictReader(file))
paints = {name: vd.spectrum([(float(row["wavelength"]), float(row[name])) for row in measured])
          for name in ("white", "green", "red")}
for name, spectrum in paints.items():
    daylight, equal = (vd.spectrum_to_rgb(spectrum, light) for light in ("D65", "E"))
    print(f"{name:6} D65 {np.round(daylight, 3)}   E {np.round(equal, 3)}")
paints["red"]
# %% [markdown]
# ## Metamers
# RGB is a linear function of the amplitudes of a reflectance. A change of the amplitudes that this function maps to
# zero cannot be seen under that light, but can under another one.
# %%


def rgb_of(amplitudes, light="D65"):
    padded = np.concatenate([amplitudes, amplitudes[-1:]])
    return np.array(vd.spectrum_to_rgb(vd.spectrum(np.column_stack([np.append(grid, 705.0), padded])), light))


columns = np.array([rgb_of(np.eye(len(grid))[index]) for index in range(len(grid))], "f8").T
_, _, directions = np.linalg.svd(columns)
unseen = directions[3:]                       # changes of the amplitudes that RGB under D65 does not show
base = vd.sample_spectrum(paints["green"], grid).astype("f8")
wiggle = np.sin(grid / 15.0)
wiggle = unseen.T @ (unseen @ wiggle)
other = base + wiggle * min(base.min(), (1.0 - base).min()) / np.abs(wiggle).max()
difference = np.abs(rgb_of(base) - rgb_of(other)).max()
visible = np.abs(rgb_of(base, "E") - rgb_of(other, "E")).max()
print(f"the reflectances differ by up to {np.abs(base - other).max():.3f}, their colours under D65 by "
      f"{difference:.1e}, and under E by {visible:.1e}")
