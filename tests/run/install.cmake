# An installation solves by itself, without what it was built from.
#   cmake -DBUILD_DIR=... -DSOURCE_DIR=... -DNONLINEAR=... -P install.cmake     NONLINEAR: whether there is an engine for it
set(prefix ${BUILD_DIR}/tests/installed)
file(REMOVE_RECURSE ${prefix})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

# must_solve MODEL ANSWER WORDS...: what the program says, or an answer to AMPL, holds a regular expression.
function(must_solve model answer)
  file(COPY ${SOURCE_DIR}/examples/${model} DESTINATION ${prefix})
  execute_process(COMMAND ${prefix}/bin/zelor ${model} ${ARGN} WORKING_DIRECTORY ${prefix}
    OUTPUT_VARIABLE said ERROR_VARIABLE said RESULT_VARIABLE code)
  if(EXISTS ${prefix}/tin.sol)
    file(READ ${prefix}/tin.sol sol)
    string(APPEND said "${sol}")
  endif()
  if(NOT code EQUAL 0 OR NOT said MATCHES "${answer}")
    message(FATAL_ERROR "${model}: status ${code}\n${said}")
  endif()
endfunction()

must_solve(transport.mps "Basic solution: OPTIMAL")
must_solve(transport.mps "Interior solution: OPTIMAL" -d OPTIMIZER INTPNT)
if(NONLINEAR)
  must_solve(tin.nl "LOCALLY_OPTIMAL" -AMPL outlev=2)
endif()

file(GLOB binaries ${prefix}/bin/zelor ${prefix}/lib/*.so)
string(REGEX REPLACE "([][+.*?()^$|\\])" "\\\\\\1" source "${SOURCE_DIR}")
foreach(binary IN LISTS binaries)
  file(STRINGS ${binary} found REGEX "(^|:)${source}/build/")
  if(found)
    message(FATAL_ERROR "${binary} looks for libraries in ${found}")
  endif()
endforeach()
file(REMOVE_RECURSE ${prefix})
