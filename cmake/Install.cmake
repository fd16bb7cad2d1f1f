# SPDX-License-Identifier: MIT
# Installs the shared libraries (component Runtime), and the public headers, the CMake package for
# find_package(qmUtility CONFIG) and the pkg-config file (component Development).
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/qmUtility")
set(pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

get_property(libraries GLOBAL PROPERTY QMUTILITY_LIBRARIES)
install(TARGETS ${libraries} EXPORT qmUtilityTargets
  RUNTIME COMPONENT Runtime
  LIBRARY COMPONENT Runtime NAMELINK_COMPONENT Development
  ARCHIVE COMPONENT Development
  FILE_SET HEADERS COMPONENT Development
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}") # for a consumer's CMake without file sets (before 3.23)
install(EXPORT qmUtilityTargets NAMESPACE qmUtility:: DESTINATION "${package_dir}" COMPONENT Development)

configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/qmUtilityConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/qmUtilityConfig.cmake"
  INSTALL_DESTINATION "${package_dir}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/qmUtilityConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/qmUtilityConfig.cmake" "${PROJECT_BINARY_DIR}/qmUtilityConfigVersion.cmake"
  DESTINATION "${package_dir}" COMPONENT Development)

# The pkg-config file names its prefix relative to itself, so an installed copy can be moved.
cmake_path(ABSOLUTE_PATH pkgconfig_dir BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" OUTPUT_VARIABLE path)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${path}" OUTPUT_VARIABLE pkgconfig_to_prefix)
cmake_path(APPEND pkgconfig_includedir "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
cmake_path(APPEND pkgconfig_libdir "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
configure_file("${CMAKE_CURRENT_LIST_DIR}/qmutility.pc.in" "${PROJECT_BINARY_DIR}/qmutility.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/qmutility.pc" DESTINATION "${pkgconfig_dir}" COMPONENT Development)

if(QMUTILITY_PACKAGES)
  include("${CMAKE_CURRENT_LIST_DIR}/Packages.cmake")
else()
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE"
    DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/qmUtility" COMPONENT Development)
endif()
