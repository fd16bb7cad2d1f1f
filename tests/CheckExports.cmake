# SPDX-License-Identifier: MIT
# Fails if a library exports a symbol outside its public classes and namespaces, whose mangled names are given.
execute_process(COMMAND "${OBJDUMP}" -p "${LIBRARY}" COMMAND_ERROR_IS_FATAL ANY OUTPUT_VARIABLE symbols)
string(REGEX REPLACE ".*Name Pointer] Table|\n\n.*" "" symbols "${symbols}\n")
string(REGEX MATCHALL "[^ \n]+(\n|$)" symbols "${symbols}")
set(others "${symbols}")
list(FILTER others EXCLUDE REGEX "^_Z(NK?|T[ISV])(${NAMES})")
list(FILTER symbols INCLUDE REGEX "^_ZN(${NAMES})")
if(NOT symbols OR others)
  message(FATAL_ERROR "${LIBRARY}: unexpected exports: ${others}, beside: ${symbols}")
endif()
