# One place for the settings every target of the project shares.
add_library(kv_options INTERFACE)
target_compile_features(kv_options INTERFACE cxx_std_20)
target_compile_options(kv_options INTERFACE -Wall -Wextra -Wpedantic -Wno-missing-field-initializers)
target_compile_definitions(kv_options INTERFACE
  QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII
  QT_NO_KEYWORDS)
target_include_directories(kv_options INTERFACE ${PROJECT_SOURCE_DIR}/src)

# The sanitizer build (scripts/test-sanitizers.sh) and the fuzzing build (scripts/fuzz.sh).
# A report ends the process at once, so no test or fuzz run can pass over one.
option(KV_SANITIZE "Build everything with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
option(KV_BUILD_FUZZ "Build the libFuzzer targets of tests/fuzz (needs clang++)" OFF)
if(KV_SANITIZE OR KV_BUILD_FUZZ)
  # gcc leaves a float-to-integer conversion out of range out of "undefined"; clang has it in.
  target_compile_options(kv_options INTERFACE -fsanitize=address,undefined,float-cast-overflow
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kv_options INTERFACE -fsanitize=address,undefined,float-cast-overflow)
  # The standard library's own checks too: an empty optional or an index past the end stops
  # there rather than reading whatever the memory holds.
  target_compile_definitions(kv_options INTERFACE _GLIBCXX_ASSERTIONS)
endif()
# Instrumented code runs several times slower, so the tests' time limits grow with it.
set(KV_TEST_TIMEOUT_SCALE 1)
if(KV_SANITIZE)
  set(KV_TEST_TIMEOUT_SCALE 3)
endif()
if(KV_BUILD_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "KV_BUILD_FUZZ needs clang++: configure with -DCMAKE_CXX_COMPILER=clang++")
  endif()
  # Coverage feedback from every library; only the fuzz executables link libFuzzer's main.
  target_compile_options(kv_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# kv_add_library(name SOURCES ... DEPENDS ...): one static library per source folder.
function(kv_add_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC kv_options ${ARG_DEPENDS})
endfunction()
