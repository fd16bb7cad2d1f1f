# SPDX-License-Identifier: MIT
# Debian packages, built by "cmake --workflow --preset package": the libraries, named for their major version, the
# development files, and the tool qmini.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGE_CONTACT "qmUtility maintainers <maintainers@qmutility.invalid>")
string(REPLACE "-" "~" debian_version "${QMUTILITY_VERSION_STRING}") # sorts before the release
set(CPACK_PACKAGE_VERSION "${debian_version}")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# CPack has no variable for the field Multi-Arch before CMake 3.31, so it follows the section.

# Installs the documents that each package must contain.
set(debian "${PROJECT_BINARY_DIR}/debian")
set(date "Sun, 22 Nov 2026 00:00:00 +0000") # of the version: packages of several architectures share the file
function(qm_package_documents package component)
  file(WRITE "${debian}/${package}/changelog" "${package} (${debian_version}) unstable; urgency=low

  * See the file CHANGELOG.md beside this one.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  execute_process(COMMAND gzip -9nf "${debian}/${package}/changelog" COMMAND_ERROR_IS_FATAL ANY)
  set(documents "${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}")
  install(FILES "${debian}/${package}/changelog.gz" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
    DESTINATION "${documents}" COMPONENT ${component})
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${documents}" RENAME copyright COMPONENT ${component})
endfunction()

# Installs a package's lintian overrides: findings that are intended.
function(qm_package_overrides package component overrides)
  file(WRITE "${debian}/${package}/overrides" "${overrides}")
  install(FILES "${debian}/${package}/overrides" DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides"
    RENAME ${package} COMPONENT ${component})
endfunction()

set(runtime_package libqmutility${PROJECT_VERSION_MAJOR})
qm_package_documents(${runtime_package} Runtime)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "INI files, timing and file changes for applications
qmUtility reads and edits INI files, measures elapsed time and frame rates,
and tells whether files were modified.
.
This package contains the shared libraries.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION "libs\nMulti-Arch: same")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  "${PROJECT_BINARY_DIR}/qmUtility" "${PROJECT_BINARY_DIR}/qmUtility/framework" "${PROJECT_BINARY_DIR}/qmUtility/host")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
file(WRITE "${debian}/triggers" "activate-noawait ldconfig\n")
# The symbols of the libraries, each with this version: it is the oldest that has them all.
foreach(library IN LISTS libraries)
  list(APPEND symbol_sources "-e$<TARGET_FILE:${library}>")
endforeach()
add_custom_command(OUTPUT "${debian}/symbols"
  COMMAND dpkg-gensymbols -q "-p${runtime_package}" "-v${debian_version}" "-O${debian}/symbols" ${symbol_sources}
  COMMAND sed -i "/#MINVER#$/a * Build-Depends-Package: libqmutility-dev" "${debian}/symbols"
  DEPENDS ${libraries}
  VERBATIM)
add_custom_target(qm_debian_symbols ALL DEPENDS "${debian}/symbols")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${debian}/triggers" "${debian}/symbols")
qm_package_overrides(${runtime_package} Runtime "# This library calls only functions of the compiler's runtime and of libm.
library-not-linked-against-libc [*libqmSystemInfo.so*]
# The libraries are compiled for it; a library in which no buffer's size is known has no such call.
hardening-no-fortify-functions *
# CPack adds scripts that call ldconfig, beside the trigger.
maintscript-calls-ldconfig *
# CPack does not strip this section.
binary-has-unneeded-section .comment *
")

set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "INI files, timing and file changes: development files
qmUtility reads and edits INI files, measures elapsed time and frame rates,
and tells whether files were modified.
.
This package contains the headers, the CMake package and the pkg-config file.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqmutility-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION "libdevel\nMulti-Arch: same")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime_package} (= ${debian_version})")
qm_package_documents(libqmutility-dev Development)

set(CPACK_COMPONENT_TOOLS_DESCRIPTION "command-line editor of INI files
qmini reads and edits INI files: it prints values, lists keys (also as JSON),
sets, adds, deletes, renames, comments out, sorts and annotates. An edit
changes the lines that it is about, and no other byte. A file is the old one
or the new one at every moment, whole.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME qmini)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION "utils\nMulti-Arch: foreign")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
if(TARGET qmini)
  list(APPEND CPACK_COMPONENTS_ALL Tools)
  qm_package_documents(qmini Tools)
  qm_package_overrides(qmini Tools "# The tool contains the C++ runtime, which is not fortified.
hardening-no-fortify-functions [usr/bin/qmini]
# A fragment of a word in the program's text.
spelling-error-in-binary ment meant [usr/bin/qmini]
# CPack does not strip this section.
binary-has-unneeded-section .comment [usr/bin/qmini]
")
endif()

include(CPack)
