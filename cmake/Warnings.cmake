# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# The warnings that all code of the project is built with; errors for its developers.
function(qelmodb_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast
    -Wcast-align -Woverloaded-virtual -Wnull-dereference -Wdouble-promotion -Wformat=2 -Wundef
    # g++ 12 warns of its own std::string operator+.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
    $<$<BOOL:${QELMODB_DEVELOPER}>:-Werror>)
endfunction()

# Headers that take much of the time in which a program compiles, compiled once.
function(qelmodb_precompile target)
  target_precompile_headers(${target} PRIVATE ${ARGN})
  # g++ 12 thinks that its own strings overflow when they are added up, and tells it where a header is precompiled.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds -Wno-stringop-overflow>)
endfunction()
