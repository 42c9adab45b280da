# Finds the AMPL Solver Library. Its archive is preferred: a shared library more is felt at every start, and most runs do
# not use it.
if(WIN32)
  message(STATUS "AMPL Solver Library: none for Windows, the AMPL front end is left out")
  return()
endif()
find_path(ZELOR_ASL_INCLUDE asl.h PATH_SUFFIXES ampl-netlib-solvers asl coin/ThirdParty REQUIRED NO_CACHE)
find_library(ZELOR_ASL_LIBRARY NAMES libamplsolver.a amplsolver REQUIRED NO_CACHE)

add_library(zelor_asl INTERFACE)
target_include_directories(zelor_asl SYSTEM INTERFACE ${ZELOR_ASL_INCLUDE})
# User functions are loaded at run time, and find funcadd_ASL in the program.
target_link_libraries(zelor_asl INTERFACE ${ZELOR_ASL_LIBRARY} ${CMAKE_DL_LIBS} m)
target_link_options(zelor_asl INTERFACE -Wl,--export-dynamic-symbol=funcadd_ASL)
message(STATUS "AMPL Solver Library: ${ZELOR_ASL_LIBRARY}")
