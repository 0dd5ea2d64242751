# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# The packages that the tool and its tests are built with.

# Looks for a package that the tool can do without by an option. Built for this machine, the tool is to have it unless
# the option says otherwise; built for another one, where that one has it.
#   qelmodb_optional_package(NAME MODULE HELP)
function(qelmodb_optional_package name module help)
  find_package(PkgConfig QUIET)
  if(PkgConfig_FOUND)
    pkg_check_modules(${name} QUIET IMPORTED_TARGET GLOBAL ${module})
  endif()
  set(wanted ON)
  if(CMAKE_CROSSCOMPILING AND NOT TARGET PkgConfig::${name})
    set(wanted OFF)
  endif()
  option(QELMODB_${name} ${help} ${wanted})
  if(NOT QELMODB_${name})
    message(STATUS "The tool does without ${module} (QELMODB_${name})")
  elseif(NOT TARGET PkgConfig::${name})
    message(FATAL_ERROR "${module} was not found by pkg-config for ${CMAKE_SYSTEM_NAME}: install its development "
      "package, or build the tool without it: -DQELMODB_${name}=OFF")
  endif()
endfunction()

# Packages of nothing but headers are taken from the machine that builds when it builds for another one: they are the
# same there. The compiler is shown their own folders only; the headers of this machine's system are not for it.
set(borrowed_headers ${PROJECT_BINARY_DIR}/borrowed-headers)
function(qelmodb_borrow_headers target folder)
  find_path(${folder}_parent ${folder} PATHS /usr/local/include /usr/include
    NO_CMAKE_FIND_ROOT_PATH NO_DEFAULT_PATH NO_CACHE REQUIRED)
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
qelmodb_optional_package(ZSTD libzstd "The tool packs and unpacks with zstd")
qelmodb_optional_package(CAIRO cairo "The tool draws grids")
