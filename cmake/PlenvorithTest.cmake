# How test programs are built and how scripts become tests.
find_package(GTest REQUIRED)
include(GoogleTest)

# plenvorith_precompile_gmock(<target>)
#
# Most of what a single test file compiles is GoogleTest, hence once for all of them. Where the files
# of a program are compiled together there is nothing to gain.
function(plenvorith_precompile_gmock target)
  if(CMAKE_UNITY_BUILD)
    return()
  endif()
  get_property(first GLOBAL PROPERTY Plenvorith_precompiled_gmock)
  if(first)
    target_precompile_headers(${target} REUSE_FROM ${first})
  else()
    target_precompile_headers(${target} PRIVATE <gmock/gmock.h>)
    set_property(GLOBAL PROPERTY Plenvorith_precompiled_gmock ${target})
  endif()
  # For ccache, which otherwise does not know what the precompiled header is made of.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endfunction()

# plenvorith_test(<room> SOURCES <file>... [USES <target>...] [LABEL <label>] [PREFIX <prefix>]
#                 [PROPERTIES <name> <value>...])
#
# One test program for one room of the tree; the properties are those of each test in it, and the
# prefix stands in front of their names.
function(plenvorith_test room)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "LABEL;PREFIX" "SOURCES;USES;PROPERTIES")
  set(target plenvorith_${room}_test)
  add_executable(${target} ${ARG_SOURCES})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${target} PRIVATE plenvorith::flags ${ARG_USES} GTest::gmock_main)
  plenvorith_precompile_gmock(${target})
  if(NOT ARG_LABEL)
    set(ARG_LABEL ${room})
  endif()
  gtest_discover_tests(
    ${target}
    DISCOVERY_MODE PRE_TEST
    TEST_PREFIX "${ARG_PREFIX}"
    PROPERTIES LABELS ${ARG_LABEL} ${ARG_PROPERTIES})
endfunction()

# plenvorith_script_test(<subject> <script> [<argument>...])
#
# One test for each function of a script whose name starts with a capital letter; the script is given
# the arguments and that name.
function(plenvorith_script_test subject script)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${script})
  file(STRINGS ${script} cases REGEX "^[A-Z][A-Za-z0-9]*\\(\\) {$")
  string(TOLOWER ${subject} label)
  foreach(case IN LISTS cases)
    string(REPLACE "() {" "" case "${case}")
    add_test(NAME ${subject}.${case} COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/${script} ${ARGN} ${case})
    set_tests_properties(${subject}.${case} PROPERTIES LABELS ${label} SKIP_RETURN_CODE 77)
  endforeach()
endfunction()
