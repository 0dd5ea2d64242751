# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS qelmodb EXPORT qelmodbTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qelmodb
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qelmodb)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qelmodb)
install(EXPORT qelmodbTargets NAMESPACE qelmodb:: DESTINATION ${package_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qelmodbConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qelmodbConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qelmodbConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qelmodbConfig.cmake ${PROJECT_BINARY_DIR}/qelmodbConfigVersion.cmake
  DESTINATION ${package_dir})

if(BUILD_SHARED_LIBS)
  set(QELMODB_PC_CFLAGS "")
else()
  set(QELMODB_PC_CFLAGS "-DQELMODB_STATIC")
endif()
# It names the folders by where it lies itself, so the prefix may be another one than was configured, and all of it may
# be moved. Only folders that were given as absolute paths stay what they are.
set(QELMODB_PC_FOLDER ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(QELMODB_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH way_up /prefix/${QELMODB_PC_FOLDER} /prefix)
  string(REGEX REPLACE "/$" "" way_up "${way_up}")
  set(QELMODB_PC_PREFIX "\${pcfiledir}/${way_up}")
endif()
foreach(kind LIB INCLUDE)
  set(QELMODB_PC_${kind}DIR "\${prefix}/${CMAKE_INSTALL_${kind}DIR}")
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}DIR}")
    set(QELMODB_PC_${kind}DIR ${CMAKE_INSTALL_${kind}DIR})
  endif()
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/qelmodb.pc.in ${PROJECT_BINARY_DIR}/qelmodb.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qelmodb.pc DESTINATION ${QELMODB_PC_FOLDER})

# The compiler's own libraries, without which neither DLL nor tool starts.
if(MINGW AND qelmodb_runtime)
  install(FILES ${qelmodb_runtime} DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(QELMODB_BUILD_TOOL)
  # The tool finds the library beside it, wherever both are moved.
  file(RELATIVE_PATH bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(bxdb PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
  install(TARGETS bxdb RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR})

# One archive of all this: a ZIP file for Windows, as is usual there. A project that adds this one makes its own.
if(PROJECT_IS_TOP_LEVEL)
  set(CPACK_GENERATOR TGZ)
  if(WIN32)
    set(CPACK_GENERATOR ZIP)
  endif()
  set(CPACK_PACKAGE_VENDOR "The qelmodb authors")
  set(CPACK_VERBATIM_VARIABLES ON)
  include(CPack)
endif()
