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
  # complete <line> <its words as bash splits them>
  set(complete "source '${ROOT}/share/bash-completion/completions/qmini'
    complete() {
      COMP_LINE=\$1 COMP_POINT=\${#1} COMP_WORDS=(\"\${@:2}\") COMP_CWORD=$(($# - 2))
      _qmini && echo \"\${COMPREPLY[*]}\" || true
    }
    file=$(mktemp) && trap 'rm \"$file\"' EXIT && printf '[Old one]\\na:b=\\na:c=\\n' >\"$file\"\n")
  expect("^sections set sort\n$" "${BASH}" -c "${complete} complete 'qmini s' qmini s")
  expect("^--dry-run\n$" "${BASH}" -c "${complete} complete 'qmini set --d' qmini set --d")
  expect("^Old. one\n$" "${BASH}" -c "${complete} complete \"qmini keys $file O\" qmini keys \"$file\" O")
  expect("^Old one\n$" "${BASH}" -c "${complete} complete \"qmini keys $file 'O\" qmini keys \"$file\" \"'O\"")
  expect("^b c\n$" "${BASH}" -c
    "${complete} complete \"qmini get $file 'Old one' a:\" qmini get \"$file\" \"'Old one'\" a :")
  expect("^.# .;\n$" "${BASH}" -c "${complete} complete 'qmini comment f S --with ' qmini comment f S --with ''")
endif()
find_program(MAN man)
if(MAN)
  expect("edit FILE.*COMMON OPTIONS" "${MAN}" -l "${ROOT}/share/man/man1/qmini.1.gz")
  expect("^$" sh -c "exec man --warnings -l \"$0\" 2>&1 >/dev/null" "${ROOT}/share/man/man1/qmini.1.gz")
endif()
