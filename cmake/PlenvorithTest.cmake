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
#                 [READS_SAMPLES] [PROPERTIES <name> <value>...])
#
# One test program for one room of the tree; the properties are those of each test in it, and the
# prefix stands in front of their names. READS_SAMPLES gives it copies (tests/support/sample_copies.h).
function(plenvorith_test room)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "READS_SAMPLES" "LABEL;PREFIX" "SOURCES;USES;PROPERTIES")
  set(target plenvorith_${room}_test)
  add_executable(${target} ${ARG_SOURCES})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${target} PRIVATE plenvorith::flags ${ARG_USES} GTest::gmock_main)
  plenvorith_precompile_gmock(${target})
  if(ARG_READS_SAMPLES)
    target_compile_definitions(${target}
                               PRIVATE PLENVORITH_SAMPLES="${PROJECT_SOURCE_DIR}/samples")
    list(APPEND ARG_PROPERTIES FIXTURES_REQUIRED checkout)
  endif()
  if(NOT ARG_LABEL)
    set(ARG_LABEL ${room})
  endif()
  if(PLENVORITH_SANITIZE OR CMAKE_CROSSCOMPILING)
    # One process for all of them: with sanitizers, or emulated, it takes longer to start than most tests
    # take.
    add_test(NAME ${room} COMMAND ${target} --gtest_brief=1)
    set_tests_properties(${room} PROPERTIES LABELS ${ARG_LABEL} ${ARG_PROPERTIES})
    return()
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
    set_tests_properties(${subject}.${case} PROPERTIES LABELS ${label} SKIP_RETURN_CODE 77
                                                          FIXTURES_REQUIRED checkout)
  endforeach()
endfunction()

# plenvorith_checkout_tests()
#
# Before the first test that knows where files of the checkout lie, and behind the last: none of them
# may have changed. Tests are given copies, and yet a fault in the product could reach the original.
function(plenvorith_checkout_tests)
  set(script ${CMAKE_CURRENT_SOURCE_DIR}/support/checkout.sh)
  set(list ${CMAKE_CURRENT_BINARY_DIR}/checkout.sha256)
  add_test(NAME Checkout.IsRemembered COMMAND ${script} remember ${PROJECT_SOURCE_DIR} ${list})
  add_test(NAME Checkout.IsAsItWas COMMAND ${script} compare ${PROJECT_SOURCE_DIR} ${list})
  set_tests_properties(Checkout.IsRemembered PROPERTIES LABELS checkout FIXTURES_SETUP checkout)
  set_tests_properties(Checkout.IsAsItWas PROPERTIES LABELS checkout FIXTURES_CLEANUP checkout)
endfunction()
