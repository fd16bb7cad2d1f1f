# Debian packages, built by "cmake --workflow --preset package": the libraries, named for their major version, the
# development files, and the tool qmini.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "qmUtility maintainers <qmutility@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_COMPONENTS_ALL Runtime Development)
if(TARGET qmini)
  list(APPEND CPACK_COMPONENTS_ALL Tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

set(runtime_package libqmutility${PROJECT_VERSION_MAJOR})
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The shared libraries.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  "${PROJECT_BINARY_DIR}/qmUtility" "${PROJECT_BINARY_DIR}/qmUtility/framework" "${PROJECT_BINARY_DIR}/qmUtility/host")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON) # adds the trigger that updates the loader's cache

set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "The headers, the CMake package and the pkg-config file.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqmutility-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")

set(CPACK_COMPONENT_TOOLS_DESCRIPTION
  "qmini edits INI files from the command line: it refuses edits that would lose a part of a file, and verifies others.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME qmini)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${runtime_package} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)

include(CPack)
