# SPDX-License-Identifier: MIT
# Debian packages, built by "cmake --workflow --preset package": the libraries, named for their major version,
# the development files, and the tool qmini.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGE_CONTACT "qmUtility maintainers <maintainers@qmutility.invalid>")
string(REPLACE "-" "~" debian_version "${QMUTILITY_VERSION_STRING}") # sorts before the release
set(CPACK_PACKAGE_VERSION "${debian_version}")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL "")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(debian "${PROJECT_BINARY_DIR}/package") # in "debian" dpkg-gensymbols would find a former build's symbols
set(date "Sun, 22 Nov 2026 00:00:00 +0000") # of the version: packages of several architectures share the file

# qm_package(<component> <package> <section> <Multi-Arch> <description> [<lintian overrides>])
# Makes a package of a component, with the documents that each package must contain.
macro(qm_package component package section multi_arch description)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER ${component} id)
  set(CPACK_COMPONENT_${id}_DESCRIPTION "${description}")
  set(CPACK_DEBIAN_${id}_PACKAGE_NAME ${package})
  # CPack has no variable for the field Multi-Arch before CMake 3.31, so it follows the section.
  set(CPACK_DEBIAN_${id}_PACKAGE_SECTION "${section}\nMulti-Arch: ${multi_arch}")

  file(WRITE "${debian}/${package}/changelog" "${package} (${debian_version}) unstable; urgency=low

  * See the file CHANGELOG.md beside this one.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  execute_process(COMMAND gzip -9nf "${debian}/${package}/changelog" COMMAND_ERROR_IS_FATAL ANY)
  set(documents "${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}")
  install(FILES "${debian}/${package}/changelog.gz" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
    DESTINATION "${documents}" COMPONENT ${component})
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE"
    DESTINATION "${documents}" RENAME copyright COMPONENT ${component})
  if(${ARGC} GREATER 5) # findings that are intended
    file(WRITE "${debian}/${package}/overrides" "${ARGV5}")
    install(FILES "${debian}/${package}/overrides"
      DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides" RENAME ${package} COMPONENT ${component})
  endif()
endmacro()

set(about "qmUtility reads and edits INI files, measures elapsed time and frame rates,
and tells whether files were modified.
.
This package contains")

set(runtime_package libqmutility${PROJECT_VERSION_MAJOR})
qm_package(Runtime ${runtime_package} libs same
  "INI files, timing and file changes for applications\n${about} the shared libraries."
  "# This library calls only functions of the compiler's runtime and of libm.
library-not-linked-against-libc [*libqmSystemInfo.so*]
# The libraries are compiled for it; a library in which no buffer's size is known has no such call.
hardening-no-fortify-functions *
# CPack adds scripts that call ldconfig, beside the trigger.
maintscript-calls-ldconfig *
# CPack does not strip this section.
binary-has-unneeded-section .comment *
")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(folder "${PROJECT_BINARY_DIR}/qmUtility")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${folder}" "${folder}/framework" "${folder}/host")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
file(WRITE "${debian}/triggers" "activate-noawait ldconfig\n")
# The symbols of the libraries, each with this version: it is the oldest that has them all.
list(TRANSFORM libraries REPLACE "(.+)" "-e$<TARGET_FILE:\\1>" OUTPUT_VARIABLE built)
add_custom_command(OUTPUT "${debian}/symbols"
  COMMAND dpkg-gensymbols -q "-p${runtime_package}" "-v${debian_version}" "-O${debian}/symbols" ${built}
  COMMAND sed -i "/#MINVER#$/a * Build-Depends-Package: libqmutility-dev" "${debian}/symbols"
  DEPENDS ${libraries}
  VERBATIM)
add_custom_target(qm_debian_symbols ALL DEPENDS "${debian}/symbols")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${debian}/triggers" "${debian}/symbols")

qm_package(Development libqmutility-dev libdevel same
  "INI files, timing and file changes: development files
${about} the headers, the CMake package and the pkg-config file.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime_package} (= ${debian_version})")

if(TARGET qmini)
  qm_package(Tools qmini utils foreign "command-line editor of INI files
qmini reads and edits INI files: it prints values, lists keys (also as JSON),
sets, adds, deletes, renames, comments out, sorts and annotates. An edit
changes the lines that it is about, and no other byte. A file is the old one
or the new one at every moment, whole."
    "# The tool contains the C++ runtime, which is not fortified.
hardening-no-fortify-functions [usr/bin/qmini]
# A fragment of a word in the program's text.
spelling-error-in-binary ment meant [usr/bin/qmini]
# CPack does not strip this section.
binary-has-unneeded-section .comment [usr/bin/qmini]
")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
endif()

include(CPack)
