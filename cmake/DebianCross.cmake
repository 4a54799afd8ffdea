# Builds for another architecture of Debian with Debian's cross compiler. PLENVORITH_TRIPLET is the name
# that compilers give the architecture, as in aarch64-linux-gnu; the folder PLENVORITH_SYSROOT holds
# what is linked, and what the programs then run with.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PLENVORITH_SYSROOT PLENVORITH_TRIPLET)
set(CMAKE_SYSTEM_NAME Linux)
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR "${PLENVORITH_TRIPLET}")
set(CMAKE_CXX_COMPILER ${PLENVORITH_TRIPLET}-g++)
set(CMAKE_SYSROOT ${PLENVORITH_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Emulated, a program takes its loader and its libraries from there, whatever environment it is given.
file(GLOB loader ${PLENVORITH_SYSROOT}/lib/ld*.so.[12])
set(libraries ${PLENVORITH_SYSROOT}/usr/lib/${PLENVORITH_TRIPLET})
string(JOIN : path ${PLENVORITH_SYSROOT}/lib/${PLENVORITH_TRIPLET} ${libraries} ${libraries}/blas
       ${libraries}/lapack)
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,--dynamic-linker=${loader} -Wl,--disable-new-dtags -Wl,-rpath,${path}")
