# Fails when the library defines a dynamic symbol that is not a member of an exported class.
execute_process(COMMAND "${NM}" -DC --defined-only "${LIBRARY}"
  COMMAND_ERROR_IS_FATAL ANY OUTPUT_VARIABLE symbols)
set(classes "INIParser|CQMTimer|CQMDebugTraceStartEndMarker|CQMFPSCounter|CQMFileCheck|CQMFileCheckAPI")
string(REGEX REPLACE "[^\n]* [A-Z] ((typeinfo|typeinfo name|vtable) for )?(${classes})(::[^\n]*)?\n" "" strangers
  "${symbols}")
string(REGEX MATCHALL "[^\n]* INIParser::(Load|Save|GetSections|Edit|BasicRecord)[(<][^\n]*" private "${symbols}")
if(NOT symbols MATCHES "INIParser::GetValue" OR NOT strangers STREQUAL "" OR private)
  message(FATAL_ERROR "Unexpected exports:\n${strangers}${private}\nof\n${symbols}")
endif()
