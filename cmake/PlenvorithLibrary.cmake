# What every target of ours is compiled with. The first floating-point option keeps a multiplication
# and an addition from being fused, so that the same input gives the same bytes on every processor;
# the second one lets a square root be one instruction instead of a call that may set errno.
add_library(plenvorith_flags INTERFACE)
add_library(plenvorith::flags ALIAS plenvorith_flags)
target_compile_features(plenvorith_flags INTERFACE cxx_std_20)
target_compile_options(
  plenvorith_flags
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            -Wsign-conversion
            -Wold-style-cast
            -ffp-contract=off
            -fno-math-errno)
if(PLENVORITH_SANITIZE)
  target_compile_options(plenvorith_flags INTERFACE -fsanitize=${PLENVORITH_SANITIZE}
                                                    -fno-sanitize-recover=all
                                                    -fno-omit-frame-pointer)
  # With the sanitizers' checks in between, g++ takes the library's own <regex> for at fault.
  target_compile_options(plenvorith_flags
                         INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(plenvorith_flags INTERFACE -fsanitize=${PLENVORITH_SANITIZE})
else()
  # What makes of a fault, ours or the kernel's, an end of the program instead of a way in. The
  # checked functions of the C library need an optimised build.
  target_compile_options(
    plenvorith_flags
    INTERFACE -fstack-protector-strong
              $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
              $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
  target_link_options(plenvorith_flags INTERFACE LINKER:-z,relro LINKER:-z,now)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)

# Programs are loaded at addresses that nobody can foretell. The libraries fit into the shared ones
# of others, too, which without the second line would keep g++ from inlining.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
target_compile_options(plenvorith_flags INTERFACE -fno-semantic-interposition)

# plenvorith_library(<room> [PUBLIC <file>...] [HEADERS <file>...] SOURCES <file>...
#                    [USES <target>...] [NOT_INSTALLED] [OPTIMIZED])
#
# One static library for one folder of the tree. Its headers are included by their path from the
# project's root ("steptext/entity_table.h"); USES are the libraries whose headers they include.
#
# Other projects find it with find_package(Plenvorith), unless it is NOT_INSTALLED. Of its headers they
# get those that are PUBLIC, which include no others. An OPTIMIZED one is so in builds for debugging, too:
# its tests compare millions of inputs.
function(plenvorith_library room)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "NOT_INSTALLED;OPTIMIZED" "" "PUBLIC;HEADERS;SOURCES;USES")
  set(target plenvorith_${room})
  add_library(${target} STATIC ${ARG_SOURCES})
  add_library(plenvorith::${room} ALIAS ${target})
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}
                                  FILES ${ARG_PUBLIC})
  # A library of their own, so that each is compiled alone where that is asked for, as the public ones.
  if(ARG_HEADERS)
    add_library(${target}_headers INTERFACE)
    target_sources(${target}_headers INTERFACE FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}
                                               FILES ${ARG_HEADERS})
    target_link_libraries(${target}_headers INTERFACE ${target})
  endif()
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:plenvorith::flags> PUBLIC ${ARG_USES})
  target_compile_features(${target} PUBLIC cxx_std_20)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_INTERPROCEDURAL_OPTIMIZATION)
    # Without machine code beside what the linker optimises, only this very compiler could use what is
    # installed, and every test program would be optimised anew.
    target_compile_options(${target} PRIVATE -ffat-lto-objects)
  endif()
  if(ARG_OPTIMIZED)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Debug>:-O1>)
  endif()
  if(PROJECT_IS_TOP_LEVEL AND NOT ARG_NOT_INSTALLED)
    plenvorith_install_library(${room} "${ARG_USES}")
  endif()
endfunction()

# plenvorith_install_library(<room> <list of targets>)
#
# Rooms above the kernel, in the second of two export sets, are offered only where it is found.
function(plenvorith_install_library room uses)
  set(target plenvorith_${room})
  set(export Plenvorith)
  get_property(kernel_rooms GLOBAL PROPERTY PlenvorithKernel_rooms)
  list(TRANSFORM kernel_rooms PREPEND plenvorith:: OUTPUT_VARIABLE kernel_targets)
  foreach(used IN LISTS uses)
    if(used IN_LIST kernel_targets OR used STREQUAL "plenvorith::occt")
      set(export PlenvorithKernel)
    endif()
  endforeach()
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${room})
  install(
    TARGETS ${target}
    EXPORT ${export}
    ARCHIVE COMPONENT development
    FILE_SET HEADERS
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/plenvorith
    COMPONENT development)
  set_property(GLOBAL APPEND PROPERTY ${export}_rooms ${room})
endfunction()
