# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

include(CMakePackageConfigHelpers)

install(TARGETS qelmodb EXPORT qelmodbTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qelmodb)

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
configure_file(${PROJECT_SOURCE_DIR}/cmake/qelmodb.pc.in ${PROJECT_BINARY_DIR}/qelmodb.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qelmodb.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The compiler's own libraries, without which neither DLL nor tool starts.
if(MINGW)
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

# One archive of all this: a ZIP file for Windows, as is usual there.
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR TGZ)
endif()
set(CPACK_PACKAGE_VENDOR "The qelmodb authors")
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
