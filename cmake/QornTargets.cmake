# What all targets of the project share, said once.

# Warnings, sanitizers and the version for TARGET.
function(qorn_target_settings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wshadow -Werror)
  # At -O3 GCC 12 takes the joining of std::string for copies beyond any object.
  target_compile_options(
    ${target}
    PRIVATE
      "$<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-stringop-overflow;-Wno-array-bounds;-Wno-restrict>")
  target_compile_definitions(${target} PRIVATE QORN_VERSION="${PROJECT_VERSION}")
  if(QORN_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${QORN_SANITIZE} -fno-omit-frame-pointer
                                             -fno-sanitize-recover=all)
    target_link_options(${target} PUBLIC -fsanitize=${QORN_SANITIZE})
  endif()
  if(QORN_BUILD_FUZZERS)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
endfunction()

# For targets of many sources: what nearly all of them include is compiled once.
function(qorn_precompile_headers target)
  target_precompile_headers(
    ${target}
    PRIVATE
    <algorithm>
    <fstream>
    <functional>
    <iostream>
    <map>
    <memory>
    <set>
    <sstream>
    <string>
    <unordered_map>
    <vector>)
endfunction()

# SOURCE of this folder uses <regex>, of which GCC 12 with sanitizers says that it may read what it
# hasn't written.
function(qorn_uses_regex source)
  if(QORN_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS -Wno-maybe-uninitialized)
  endif()
endfunction()

# One layer of the library: the sources of this folder's src/, its installed headers in include/, those
# for the layers above it alone in private/, and the layers below it, which are all that it can see.
function(qorn_layer name)
  cmake_parse_arguments(PARSE_ARGV 1 LAYER "" "" "SOURCES;BELOW;LIBRARIES")
  list(TRANSFORM LAYER_SOURCES PREPEND src/)
  add_library(${name} OBJECT ${LAYER_SOURCES})
  target_include_directories(
    ${name}
    PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/include ${CMAKE_CURRENT_SOURCE_DIR}/private
    PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${LAYER_BELOW} PRIVATE ${LAYER_LIBRARIES})
  qorn_target_settings(${name})
  qorn_precompile_headers(${name})
endfunction()

# A program of the project.
function(qorn_program name)
  cmake_parse_arguments(PARSE_ARGV 1 PROGRAM "" "" "SOURCES;LIBRARIES")
  add_executable(${name} ${PROGRAM_SOURCES})
  target_link_libraries(${name} PRIVATE ${PROGRAM_LIBRARIES})
  qorn_target_settings(${name})
endfunction()
