# SPDX-License-Identifier: MIT
# Compares the symbols that the libraries export with those on record. A change that is intended is recorded
# by copying the list that was built over the recorded one.
cmake_minimum_required(VERSION 3.23)
set(symbols "")
foreach(library IN LISTS LIBRARIES)
  execute_process(COMMAND "${NM}" -DCj --defined-only "${library}"
    COMMAND_ERROR_IS_FATAL ANY OUTPUT_VARIABLE lines)
  string(REPLACE ";" "," lines "${lines}")
  string(REGEX REPLACE
    "__cxx11::(basic_string<[a-z_]+), std::char_traits<[a-z_]+>, std::allocator<[a-z_]+> >" "\\1>"
    lines "${lines}")
  string(REGEX REPLACE "(basic_string_view<[a-z_]+), std::char_traits<[a-z_]+> >" "\\1>" lines "${lines}")
  string(REGEX REPLACE "\n$" "" lines "${lines}")
  string(REPLACE "\n" ";" lines "${lines}")
  list(FILTER lines EXCLUDE REGEX "__odr_asan") # the address sanitizer's
  list(REMOVE_DUPLICATES lines)
  # What exists for both character types is one line, with Char for the type.
  foreach(wide IN LISTS lines)
    string(REPLACE "wchar_t" "char" narrow "${wide}")
    if(wide MATCHES "wchar_t" AND narrow IN_LIST lines)
      list(REMOVE_ITEM lines "${wide}" "${narrow}")
      string(REPLACE "wchar_t" "Char" both "${wide}")
      list(APPEND lines "${both}")
    endif()
  endforeach()
  list(SORT lines)
  list(JOIN lines "\n" lines)
  cmake_path(GET library FILENAME name)
  string(APPEND symbols "== ${name}\n${lines}\n")
endforeach()
file(WRITE "${BUILT}" "${symbols}")
execute_process(COMMAND diff -u "${RECORDED}" "${BUILT}" RESULT_VARIABLE isDifferent)
if(isDifferent)
  message(FATAL_ERROR "To record the symbols built: cp ${BUILT} ${RECORDED}")
endif()
