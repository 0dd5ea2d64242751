# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Other ways of keeping a device, each in a source of its own; those that are not installed are left out.
function(qelmodb_bench_peer name source)
  if(NOT ARGN)
    message(STATUS "Benchmarks leave out ${name}, which is not installed")
    return()
  endif()
  target_sources(qelmodb_bench PRIVATE ${source})
  target_link_libraries(qelmodb_bench PRIVATE ${ARGN})
endfunction()

# Gives the names of those targets that exist.
function(qelmodb_existing out)
  set(existing "")
  foreach(target IN LISTS ARGN)
    if(NOT TARGET ${target})
      set(existing "")
      break()
    endif()
    list(APPEND existing ${target})
  endforeach()
  set(${out} "${existing}" PARENT_SCOPE)
endfunction()

find_package(Boost QUIET COMPONENTS serialization)
qelmodb_existing(archive Boost::serialization)
qelmodb_bench_peer("Boost.Serialization" peer_boost_serialization.cpp ${archive})

set(rtree "")
find_path(QELMODB_BOOST_GEOMETRY boost/geometry/index/rtree.hpp)
if(QELMODB_BOOST_GEOMETRY)
  qelmodb_existing(rtree Boost::boost)
endif()
qelmodb_bench_peer("the R-tree of Boost.Geometry" peer_boost_rtree.cpp ${rtree})

find_package(SQLite3 QUIET)
qelmodb_existing(sqlite SQLite::SQLite3)
qelmodb_bench_peer("SQLite" peer_sqlite.cpp ${sqlite})

find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
  pkg_check_modules(QELMODB_BENCH_ZSTD QUIET IMPORTED_TARGET libzstd)
endif()
qelmodb_existing(zstd PkgConfig::QELMODB_BENCH_ZSTD)
qelmodb_bench_peer("zstd" peer_zstd.cpp ${zstd})

# The schema's header is made by the schema compiler.
find_program(QELMODB_FLATC flatc)
find_path(QELMODB_FLATBUFFERS flatbuffers/flatbuffers.h)
set(flatbuffers "")
if(QELMODB_FLATC AND QELMODB_FLATBUFFERS)
  set(schema_header ${CMAKE_CURRENT_BINARY_DIR}/device_generated.h)
  add_custom_command(OUTPUT ${schema_header}
    COMMAND ${QELMODB_FLATC} --cpp -o ${CMAKE_CURRENT_BINARY_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/device.fbs
    DEPENDS device.fbs VERBATIM)
  add_library(qelmodb_bench_schema INTERFACE)
  target_include_directories(qelmodb_bench_schema SYSTEM INTERFACE ${CMAKE_CURRENT_BINARY_DIR} ${QELMODB_FLATBUFFERS})
  target_sources(qelmodb_bench PRIVATE ${schema_header})
  # Fields of a buffer may be missing; those of ours never are.
  set_source_files_properties(peer_flatbuffers.cpp PROPERTIES COMPILE_OPTIONS -Wno-null-dereference)
  set(flatbuffers qelmodb_bench_schema)
endif()
qelmodb_bench_peer("FlatBuffers" peer_flatbuffers.cpp ${flatbuffers})
