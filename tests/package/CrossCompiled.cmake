# SPDX-License-Identifier: MIT
# Installs a cross-compiled build, builds the README's project against it, and runs the program.
set(work "${BINARY_DIR}/package-tests")
file(REMOVE_RECURSE "${work}")
file(MAKE_DIRECTORY "${work}/project")

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

run("${AWK}" -v "project=${work}/project" -f "${SOURCE_DIR}/tests/docs/Extract.awk" "${SOURCE_DIR}/README.md")
run("${CMAKE_COMMAND}" --install "${BINARY_DIR}" --prefix "${work}/prefix")
run("${CMAKE_COMMAND}" -S "${work}/project" -B "${work}/build" -G "${GENERATOR}"
  "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE}" "-DqmUtility_ROOT=${work}/prefix"
  "-DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${work}/prefix/bin") # where Windows finds the library
run("${CMAKE_COMMAND}" --build "${work}/build")
run(${LAUNCHER} "${work}/prefix/bin/hello${SUFFIX}")
