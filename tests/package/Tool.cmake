# SPDX-License-Identifier: MIT
# Looks at an installed qmini: it runs, bash completes its command line, and its manual page has no warnings.
function(expect pattern)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  if(NOT output MATCHES "${pattern}")
    message(FATAL_ERROR "\"${output}\" does not match \"${pattern}\"")
  endif()
endfunction()

set(ENV{PATH} "${ROOT}/bin:$ENV{PATH}")
expect("^qmini [0-9.]+[-a-z]*\n$" qmini --version)
find_program(BASH bash)
if(BASH)
  set(complete "source '${ROOT}/share/bash-completion/completions/qmini'
    complete() { COMP_WORDS=(\"$@\") && COMP_CWORD=$(($# - 1)) && _qmini && echo \"\${COMPREPLY[*]}\" || true
    }\n")
  expect("^sections show set sort\n$" "${BASH}" -c "${complete} complete qmini s")
  expect("^--activate\n$" "${BASH}" -c "${complete} complete qmini set --a")
  expect("^Old. one\n$" "${BASH}" -c "${complete} complete qmini keys <(echo '[Old one]') O")
endif()
find_program(MAN man)
if(MAN)
  expect("edit FILE" "${MAN}" -l "${ROOT}/share/man/man1/qmini.1.gz")
  expect("^$" sh -c "exec man --warnings -l \"$0\" 2>&1 >/dev/null" "${ROOT}/share/man/man1/qmini.1.gz")
endif()
