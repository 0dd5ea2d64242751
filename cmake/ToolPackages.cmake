# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# The packages that the tool and its tests are built with.
option(QELMODB_ZSTD "The tool packs and unpacks with zstd" ON)
option(QELMODB_CAIRO "The tool draws grids" ON)

# Packages of nothing but headers are taken from the machine that builds when it builds for another one: they are the
# same there. The compiler is shown their own folders only; the headers of this machine's system are not for it.
set(borrowed_headers ${PROJECT_BINARY_DIR}/borrowed-headers)
function(qelmodb_borrow_headers target folder)
  find_path(${folder}_parent ${folder} PATHS /usr/local/include /usr/include
    NO_CMAKE_FIND_ROOT_PATH NO_DEFAULT_PATH REQUIRED)
  file(MAKE_DIRECTORY ${borrowed_headers})
  file(CREATE_LINK ${${folder}_parent}/${folder} ${borrowed_headers}/${folder} SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED)
  target_include_directories(${target} INTERFACE ${borrowed_headers})
endfunction()

if(CMAKE_CROSSCOMPILING)
  qelmodb_borrow_headers(CLI11::CLI11 CLI)
  qelmodb_borrow_headers(fmt::fmt fmt)
  target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY)
  qelmodb_borrow_headers(nlohmann_json::nlohmann_json nlohmann)
else()
  find_package(CLI11 REQUIRED)
  find_package(fmt REQUIRED)
  find_package(nlohmann_json REQUIRED)
endif()
find_package(Threads REQUIRED)
find_package(ZLIB REQUIRED)
if(QELMODB_ZSTD OR QELMODB_CAIRO)
  find_package(PkgConfig REQUIRED)
endif()
if(QELMODB_ZSTD)
  pkg_check_modules(ZSTD REQUIRED IMPORTED_TARGET libzstd)
endif()
if(QELMODB_CAIRO)
  pkg_check_modules(CAIRO REQUIRED IMPORTED_TARGET cairo)
endif()
