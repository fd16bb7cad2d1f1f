# Installs the libraries, their public headers by folder, and the CMake package that
# find_package(qmUtility CONFIG REQUIRED) finds.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/qmUtility")

get_property(libraries GLOBAL PROPERTY QMUTILITY_LIBRARIES)
install(TARGETS ${libraries}
  EXPORT qmUtilityTargets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/qmUtility")
install(EXPORT qmUtilityTargets
  NAMESPACE qmUtility::
  FILE qmUtilityConfig.cmake
  DESTINATION "${package_dir}")

write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/qmUtilityConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/qmUtilityConfigVersion.cmake" DESTINATION "${package_dir}")
