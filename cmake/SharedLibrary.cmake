# SPDX-License-Identifier: MIT
# Adds a shared library: public headers that compile as C++17, sources in C++20, a versioned name.
#
#   qm_shared_library(<target> SOURCES <file>... HEADERS <public header>...)
function(qm_shared_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;HEADERS")
  add_library(${target} SHARED ${arg_SOURCES})
  add_library(qmUtility::${target} ALIAS ${target})
  target_sources(${target} PUBLIC
    FILE_SET HEADERS BASE_DIRS "${qmUtility_SOURCE_DIR}" FILES ${arg_HEADERS})
  target_compile_features(${target} PRIVATE cxx_std_20 INTERFACE cxx_std_17)
  set_target_properties(${target} PROPERTIES
    VERSION "${qmUtility_VERSION}"
    SOVERSION "${qmUtility_VERSION_MAJOR}"
    VERIFY_INTERFACE_HEADER_SETS ${PROJECT_IS_TOP_LEVEL})
  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "") # "lib" by default with MinGW
  endif()

  # The version script hides what hidden visibility does not: instantiations of the standard library's
  # templates. Nothing of a static library is exported. The libraries find one another in their own folder.
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    set(exports "${qmUtility_SOURCE_DIR}/cmake/exports.map")
    target_link_options(${target} PRIVATE "LINKER:--version-script=${exports}" "LINKER:--exclude-libs,ALL")
    if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize") # the executable may define their runtime
      target_link_options(${target} PRIVATE "LINKER:-z,defs")
    endif()
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${exports}")
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
  endif()
  set_property(GLOBAL APPEND PROPERTY QMUTILITY_LIBRARIES ${target})
endfunction()
