# What all our shared libraries have in common: public headers by folder that compile as C++17, sources in
# C++20, a versioned name, and nothing to be seen but what is meant to be.
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
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    VERIFY_INTERFACE_HEADER_SETS ${PROJECT_IS_TOP_LEVEL})

  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "") # MinGW's would be "lib"
  endif()

  # Hidden visibility leaves one thing in the dynamic symbol table: what the standard library's templates make
  # in our sources. The version script hides it. Our libraries find one another in their own folder.
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    set(exports "${qmUtility_SOURCE_DIR}/cmake/exports.map")
    target_link_options(${target} PRIVATE "LINKER:--version-script=${exports}")
    if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize") # whose runtime may be the executable's
      target_link_options(${target} PRIVATE "LINKER:-z,defs")
    endif()
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${exports}")
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
  endif()
  set_property(GLOBAL APPEND PROPERTY QMUTILITY_LIBRARIES ${target})
endfunction()
