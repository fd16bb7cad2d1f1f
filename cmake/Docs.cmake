# SPDX-License-Identifier: MIT
# The target "docs": the documents and the reference of the public declarations as a site, in docs/html of the
# build folder. The start page is index.html. Every finding of doxygen is an error.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  return()
endif()

set(inputs README.md
  docs/getting-started.md docs/ini-format.md docs/timing.md docs/frame-rate.md docs/watching-files.md
  docs/host-modules.md docs/platforms.md docs/benchmarks.md docs/verification.md
  CONTRIBUTING.md SECURITY.md CHANGELOG.md)
get_property(libraries GLOBAL PROPERTY QMUTILITY_LIBRARIES)
foreach(library IN LISTS libraries)
  get_target_property(headers ${library} HEADER_SET)
  list(APPEND inputs ${headers})
endforeach()

set(DOXYGEN_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/docs")
set(DOXYGEN_PROJECT_NUMBER "${QMUTILITY_VERSION_STRING}")
set(DOXYGEN_USE_MDFILE_AS_MAINPAGE README.md)
set(DOXYGEN_IMAGE_PATH docs)
# Doxygen before 1.9.7 does not resolve links to headings of other pages. The site has no folders and no files
# without a suffix.
set(DOXYGEN_FILTER_PATTERNS
  [=["*.md=sed -E -e 's|(\.md)#[a-z-]+\)|\1)|g' -e 's|\[([^]]*)\]\(([a-z./]*/)?[A-Za-z]+\)|\1|g'"]=])
set(DOXYGEN_GENERATE_TREEVIEW YES)
set(DOXYGEN_HAVE_DOT NO)
set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
set(DOXYGEN_BUILTIN_STL_SUPPORT YES)
set(DOXYGEN_SORT_MEMBER_DOCS NO)
set(DOXYGEN_MACRO_EXPANSION YES)
set(DOXYGEN_EXPAND_ONLY_PREDEF YES)
set(DOXYGEN_PREDEFINED QMUTILITY_API= QMUTILITY_PRIVATE= QMFRAMEWORK_API=
  QMCONSOLE_API= QMCOMMONBASE_API= QMSYSTEMINFO_API= WINAPI=)
set(DOXYGEN_QUIET YES)
set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
doxygen_add_docs(docs ${inputs} COMMENT "Reference of the public declarations")
