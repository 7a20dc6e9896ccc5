# The files each system's build compiles. CMakeLists.txt includes this; the check that compiles the
# macOS build's files on Linux runs it as a script to print them for macOS, one a line:
#   cmake -DCORVANE_APPLE=ON -P cmake/sources.cmake
if(NOT DEFINED CORVANE_APPLE)
  set(CORVANE_APPLE ${APPLE})
endif()
get_filename_component(corvane_root "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
# A script can't ask to be rerun when files come and go.
if(CMAKE_SCRIPT_MODE_FILE)
  set(corvane_glob_flags "")
else()
  set(corvane_glob_flags CONFIGURE_DEPENDS)
endif()

file(GLOB_RECURSE CORVANE_SOURCES ${corvane_glob_flags} "${corvane_root}/src/*.cpp")
list(FILTER CORVANE_SOURCES EXCLUDE REGEX "/src/main\\.cpp$")
# src/platform/posix/ holds what both systems share and is built on each; only the other system's
# own folder is left out.
if(CORVANE_APPLE)
  list(FILTER CORVANE_SOURCES EXCLUDE REGEX "/src/platform/linux/")
else()
  list(FILTER CORVANE_SOURCES EXCLUDE REGEX "/src/platform/darwin/")
endif()

file(GLOB CORVANE_SUPPORT_SOURCES ${corvane_glob_flags} "${corvane_root}/tests/support/*.cpp")
file(GLOB_RECURSE CORVANE_TEST_SOURCES ${corvane_glob_flags} "${corvane_root}/tests/*.cpp")
list(FILTER CORVANE_TEST_SOURCES EXCLUDE REGEX "/tests/(darwin-syntax|interop|fuzz|support|stand_in)/")
# A program of its own that tests copy to where an agent's native program is installed.
set(CORVANE_STAND_IN_SOURCE "${corvane_root}/tests/stand_in/stand_in.cpp")
if(CORVANE_APPLE)
  list(FILTER CORVANE_TEST_SOURCES EXCLUDE REGEX "/tests/platform/linux/")
endif()

file(GLOB CORVANE_BENCH_SOURCES ${corvane_glob_flags} "${corvane_root}/bench/*.cpp")
if(CORVANE_APPLE)
  # Measured against ps and ss on a Linux machine with /proc.
  list(FILTER CORVANE_BENCH_SOURCES EXCLUDE REGEX "/bench/snapshot\\.cpp$")
endif()

if(CMAKE_SCRIPT_MODE_FILE)
  foreach(source "${corvane_root}/src/main.cpp" ${CORVANE_SOURCES} ${CORVANE_SUPPORT_SOURCES} ${CORVANE_TEST_SOURCES}
                 ${CORVANE_STAND_IN_SOURCE} ${CORVANE_BENCH_SOURCES})
    file(RELATIVE_PATH source "${corvane_root}" "${source}")
    message("${source}")
  endforeach()
endif()
