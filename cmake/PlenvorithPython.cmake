# The Python that Debian's packages are for, whichever else comes first in PATH.
find_program(PLENVORITH_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(NOT PLENVORITH_PYTHON)
  find_program(PLENVORITH_PYTHON python3)
endif()
mark_as_advanced(PLENVORITH_PYTHON)
