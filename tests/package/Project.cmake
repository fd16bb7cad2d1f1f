# SPDX-License-Identifier: MIT
# Extracts the files of a document's projects, runs one of its scripts in the script's folder, and compares the end of
# the output with output.txt from the same folder or the top folder. Numbers may differ.
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
execute_process(COMMAND
  "${AWK}" -v "project=${WORK}" -f "${SOURCE_DIR}/tests/docs/Extract.awk" "${SOURCE_DIR}/${DOCUMENT}"
  COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET SCRIPT PARENT_PATH folder)
cmake_path(GET SCRIPT FILENAME script)
set(folder "${WORK}/${folder}")
file(CREATE_LINK "${SOURCE_DIR}" "${folder}/qmUtility" SYMBOLIC) # "a copy of this repository"

execute_process(COMMAND sh -e "${script}" WORKING_DIRECTORY "${folder}"
  COMMAND_ERROR_IS_FATAL ANY OUTPUT_VARIABLE output)
set(expected "${folder}/output.txt")
if(NOT EXISTS "${expected}")
  set(expected "${WORK}/output.txt")
endif()
file(READ "${expected}" expected)
string(REGEX REPLACE "-?[0-9]" "0" output "\n${output}")
string(REGEX REPLACE "-?[0-9]" "0" expected "\n${expected}")
string(LENGTH "${expected}" length)
string(FIND "${output}" "${expected}" at REVERSE)
math(EXPR end "${at} + ${length}")
string(LENGTH "${output}" whole)
if(at EQUAL -1 OR NOT end EQUAL whole)
  message(FATAL_ERROR "${DOCUMENT} says that the output of ${SCRIPT} ends with:${expected}but the output is:${output}")
endif()
