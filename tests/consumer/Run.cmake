# Installs the build in BINARY_DIR to an empty folder, then configures, builds and runs the consumer against it.
set(work "${BINARY_DIR}/consumer")
file(REMOVE_RECURSE "${work}")

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

run("${CMAKE_COMMAND}" --install "${BINARY_DIR}" --prefix "${work}/prefix")
run("${CMAKE_COMMAND}" -S "${CONSUMER_DIR}" -B "${work}/build" -G "${GENERATOR}"
  "-DCMAKE_PREFIX_PATH=${work}/prefix" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
  "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE}"
  "-DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${work}/prefix/bin") # where Windows finds the library
run("${CMAKE_COMMAND}" --build "${work}/build")
run(${LAUNCHER} "${work}/prefix/bin/consumer${SUFFIX}")
