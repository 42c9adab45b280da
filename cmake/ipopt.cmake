# Finds Ipopt, 3.11 or later, as the system or CMAKE_PREFIX_PATH has it. Only its C interface is used, so that any build
# will do. What solves its linear systems, and the BLAS beneath, are that build's own affair.
option(ZELOR_IPOPT "Build the engine Ipopt" ON)
if(NOT ZELOR_IPOPT)
  message(STATUS "Ipopt: left out, as ZELOR_IPOPT says")
  return()
endif()
if(WIN32)
  message(STATUS "Ipopt: none for Windows, general nonlinear problems are not solved")
  return()
endif()

find_path(ZELOR_IPOPT_INCLUDE IpStdCInterface.h PATH_SUFFIXES coin-or coin NO_CACHE)
find_library(ZELOR_IPOPT_LIBRARY ipopt NO_CACHE)
if(NOT ZELOR_IPOPT_INCLUDE OR NOT ZELOR_IPOPT_LIBRARY)
  message(WARNING "Ipopt: not found, so that the engine for general nonlinear problems is left out. "
    "scripts/install-deps build gets it; on Debian it is in the packages coinor-libipopt-dev and libopenblas0-serial.")
  return()
endif()

add_library(zelor_ipopt INTERFACE)
target_include_directories(zelor_ipopt SYSTEM INTERFACE ${ZELOR_IPOPT_INCLUDE})
target_link_libraries(zelor_ipopt INTERFACE ${ZELOR_IPOPT_LIBRARY})
message(STATUS "Ipopt: ${ZELOR_IPOPT_LIBRARY}")
