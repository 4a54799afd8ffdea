"""Takes the version from where it stands for the whole project; all else is in pyproject.toml."""

import re
from pathlib import Path

from setuptools import setup

project = (Path(__file__).resolve().parent.parent / "CMakeLists.txt").read_text()
setup(version=re.search(r"project\([^)]*VERSION (\S+)", project)[1])
