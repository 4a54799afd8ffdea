"""Runs the tests of the files named, with the programs in PATH. Status 77 where that cannot be."""

import sys

try:
    import numpy  # noqa: F401
    import pytest
except ImportError as error:
    print(f"skipped: {error}")
    sys.exit(77)

if __name__ == "__main__":  # processes that tests start read this, too
    sys.exit(pytest.main(["-q", "-rs", "-p", "no:cacheprovider", *sys.argv[1:]]))
