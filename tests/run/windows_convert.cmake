# Converts a problem with the program and looks at what came of it: status 0, the problem in the file, and every line of it
# ended by CR LF. Runs in a folder that it may write to.
#
#   cmake [-DEMULATOR=...] -DPROGRAM=... -DSOURCE_DIR=... -P windows_convert.cmake
set(written windows_convert.lp)
file(REMOVE ${written})
execute_process(COMMAND ${EMULATOR} ${PROGRAM} ${SOURCE_DIR}/examples/transport.mps -x -out ${written}
  RESULT_VARIABLE status OUTPUT_VARIABLE told ERROR_VARIABLE told)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "exit status ${status}\n${told}")
endif()

file(READ ${written} text)
foreach(part "Minimize" "Subject To" " FREIGHT: 4.5 N_BAY" "E_MOOR" "End")
  string(FIND "${text}" "${part}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "'${part}' is missing in:\n${text}")
  endif()
endforeach()

file(READ ${written} bytes HEX)
string(REGEX REPLACE "(..)" "\\1 " bytes "${bytes}")
string(REPLACE "0d 0a " "" rest "${bytes}")
if(rest STREQUAL bytes OR rest MATCHES "0[ad] ")
  message(FATAL_ERROR "not all lines end in CR LF:\n${text}")
endif()
