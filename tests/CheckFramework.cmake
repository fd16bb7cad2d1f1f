# SPDX-License-Identifier: MIT
# Fails if the configuration with the real framework still contains a part of the subset: a source that is
# compiled, or a declaration in a header, which may only include the framework's own headers.
execute_process(COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET
  COMMAND "${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${BINARY_DIR}" -G "${GENERATOR}" -DQMUTILITY_FRAMEWORK=ON
    "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}"
    -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DQMUTILITY_BUILD_TESTS=OFF)
file(READ "${BINARY_DIR}/compile_commands.json" commands)
string(REGEX MATCHALL "(framework/[^ /]*|Kernel[^ /]*)\\.cpp\"" sources "${commands}")

file(GLOB headers "${SOURCE_DIR}/qmUtility/framework/*.h" "${SOURCE_DIR}/qmUtility/platform/Kernel.h")
foreach(name IN ITEMS afxdllx afxtempl afxwin)
  file(WRITE "${BINARY_DIR}/stubs/${name}.h" "#pragma once\n${name}\n")
endforeach()
execute_process(COMMAND_ERROR_IS_FATAL ANY OUTPUT_VARIABLE declarations
  COMMAND "${CXX_COMPILER}" -E -P -w
    -DQMUTILITY_FRAMEWORK "-I${SOURCE_DIR}" "-I${BINARY_DIR}/stubs" ${headers})
string(REGEX MATCHALL "[^ \n]+" words "${declarations}")
list(REMOVE_DUPLICATES words)
list(SORT words)

if(NOT commands MATCHES "DQMUTILITY_FRAMEWORK" OR sources OR NOT words STREQUAL "afxdllx;afxtempl;afxwin")
  message(FATAL_ERROR "parts of the subset: ${sources} ${declarations}")
endif()
