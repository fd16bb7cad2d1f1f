# SPDX-License-Identifier: MIT
# Options for the libraries and programs of the folder that includes this. All functions are looked up when a
# library is loaded: one that a host module lacks is reported there, and not when it is called. Their table is
# read-only then.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  add_link_options("LINKER:-z,relro,-z,now")
  get_directory_property(options COMPILE_OPTIONS)
  string(TOUPPER "${CMAKE_BUILD_TYPE}" type)
  # Sanitizers check more, and a level that the user has set goes first.
  if(NOT "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${type}} ${options}" MATCHES "-fsanitize|_FORTIFY_SOURCE")
    set(optimized "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
    add_compile_options("$<${optimized}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  endif()
endif()
