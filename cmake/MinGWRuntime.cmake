# SPDX-License-Identifier: MIT
# Copies the compiler's runtime libraries beside the programs, in the build and in the installation. All
# libraries share them, so that exceptions pass from one library to another.
foreach(name IN ITEMS libgcc_s_seh-1 libstdc++-6 libwinpthread-1)
  execute_process(COMMAND "${CMAKE_CXX_COMPILER}" "-print-file-name=${name}.dll"
    OUTPUT_VARIABLE library OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  if(NOT IS_ABSOLUTE "${library}") # this compiler does not have it
    continue()
  endif()
  file(COPY "${library}" DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
  if(QMUTILITY_INSTALL)
    install(FILES "${library}" DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT Runtime)
  endif()
endforeach()
