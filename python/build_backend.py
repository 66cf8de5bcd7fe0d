"""The build backend: hatchling as the system has it.

pip builds in an environment that hides the system's packages, and would download hatchling there. This
looks for it where Debian installs it (python3-hatchling), so that `pip install ./python` works offline."""
import sys

try:
    import hatchling.build
except ImportError:
    sys.path.append("/usr/lib/python3/dist-packages")
    try:
        import hatchling.build
    except ImportError:
        sys.exit("the package is built with hatchling: install python3-hatchling")

from hatchling.build import build_sdist, build_wheel  # noqa: E402,F401

if hasattr(hatchling.build, "build_editable"):
    from hatchling.build import build_editable  # noqa: F401
