# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# The warnings that all code of the project is built with; errors for its developers.
function(qelmodb_warnings target)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    return()
  endif()
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast
    -Wcast-align -Woverloaded-virtual -Wnull-dereference -Wdouble-promotion -Wformat=2 -Wundef
    # g++ 12 warns of its own std::string operator+.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
    $<$<BOOL:${QELMODB_DEVELOPER}>:-Werror>)
endfunction()

# Compiles sources a few at a time: most of the time goes into headers and templates that they share. Names in the
# anonymous namespaces of sources that are united must differ; ARGN are sources that stay by themselves.
function(qelmodb_unite target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 7)
  if(ARGN)
    set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  endif()
endfunction()

# Headers that take much of the time in which a program compiles, compiled once; or REUSE_FROM and a target that has
# them.
function(qelmodb_precompile target)
  if("${ARGN}" MATCHES REUSE_FROM)
    target_precompile_headers(${target} ${ARGN})
  else()
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
  # g++ 12 thinks that its own strings overflow when they are added up, and tells it where a header is precompiled.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds -Wno-stringop-overflow>)
endfunction()
