# Makes the Debian packages in a build folder of their own, looks at what they say of themselves, and unpacks both to a
# folder, as the system would to its root.
function(run)
  execute_process(COMMAND ${ARGV} WORKING_DIRECTORY "${SOURCE_DIR}" COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

file(GLOB former "${BINARY_DIR}/*.deb")
if(former)
  file(REMOVE ${former})
endif()
run("${CMAKE_COMMAND}" --preset package -B "${BINARY_DIR}")
run("${CMAKE_COMMAND}" --build "${BINARY_DIR}")
cmake_path(GET CMAKE_COMMAND PARENT_PATH tools)
run("${tools}/cpack" --config "${BINARY_DIR}/CPackConfig.cmake" -B "${BINARY_DIR}")

# expect(<package> <field> <regular expression>)
function(expect package field pattern)
  file(GLOB file "${BINARY_DIR}/${package}_${VERSION}_*.deb")
  execute_process(COMMAND dpkg-deb -f "${file}" "${field}"
    COMMAND_ERROR_IS_FATAL ANY OUTPUT_VARIABLE value OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT value MATCHES "${pattern}")
    message(FATAL_ERROR "${field} of ${file} is \"${value}\", which does not match \"${pattern}\"")
  endif()
endfunction()

expect(libqmutility1 Depends "libc6 .*libstdc\\+\\+6 ")
expect(libqmutility1 Section "^libs$")
expect(libqmutility-dev Depends "^libqmutility1 \\(= ${VERSION}\\)$")
expect(libqmutility-dev Section "^libdevel$")

# What a program needs to run is in the one, what it takes to build it in the other.
file(REMOVE_RECURSE "${ROOT}")
file(GLOB runtime "${BINARY_DIR}/libqmutility1_*.deb")
file(GLOB development "${BINARY_DIR}/libqmutility-dev_*.deb")
run(dpkg-deb -x "${runtime}" "${ROOT}")
file(GLOB files RELATIVE "${LIBDIR}" "${LIBDIR}/*")
list(FILTER files EXCLUDE REGEX "^lib[A-Za-z]+\\.so\\.1(\\.0\\.0)?$")
if(files OR EXISTS "${ROOT}/usr/include" OR NOT EXISTS "${LIBDIR}/libqmUtility.so.1")
  message(FATAL_ERROR "libqmutility1 has more or less than the libraries in ${LIBDIR}: ${files}")
endif()
run(dpkg-deb -x "${development}" "${ROOT}")
