# One place for the settings every target of the project shares.
add_library(kv_options INTERFACE)
target_compile_features(kv_options INTERFACE cxx_std_20)
target_compile_options(kv_options INTERFACE -Wall -Wextra -Wpedantic -Wno-missing-field-initializers)
target_compile_definitions(kv_options INTERFACE
  QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII
  QT_NO_KEYWORDS)
target_include_directories(kv_options INTERFACE ${PROJECT_SOURCE_DIR}/src)

# kv_add_library(name SOURCES ... DEPENDS ...): one static library per source folder.
function(kv_add_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC kv_options ${ARG_DEPENDS})
endfunction()
