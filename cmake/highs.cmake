# Finds HiGHS: in the prefix HIGHS_ROOT if the user gives one, else where scripts/install-deps unpacked it. Only its C
# interface is used, so that any build from 1.10 on will do.
if(WIN32 AND NOT HIGHS_ROOT)
  message(STATUS "HiGHS: none for Windows, the program reads and converts only; HIGHS_ROOT names a prefix")
  return()
endif()
set(_highs_prefix ${HIGHS_ROOT})
if(NOT _highs_prefix)
  set(_highs_prefix ${CMAKE_SOURCE_DIR}/build/deps/highs-1.15.1)
endif()

find_path(ZELOR_HIGHS_INCLUDE interfaces/highs_c_api.h
  HINTS ${_highs_prefix}/include/highs ${_highs_prefix}/include REQUIRED NO_CACHE)
# lib/quick: the same library where it starts faster, see scripts/install-deps.
find_library(ZELOR_HIGHS_LIBRARY highs
  HINTS ${_highs_prefix}/lib/quick ${_highs_prefix}/lib ${_highs_prefix}/lib64 REQUIRED NO_CACHE)

add_library(zelor_highs INTERFACE)
target_include_directories(zelor_highs SYSTEM INTERFACE ${ZELOR_HIGHS_INCLUDE})
target_link_libraries(zelor_highs INTERFACE ${ZELOR_HIGHS_LIBRARY})
message(STATUS "HiGHS: ${ZELOR_HIGHS_LIBRARY}")

# An installation brings the HiGHS along that scripts/install-deps unpacked, for the place where it stands now may go. One of the
# user's own stays where it is.
if(NOT HIGHS_ROOT)
  set(ZELOR_HIGHS_INSTALL_RPATH "$ORIGIN/zelor/quick")
  install(DIRECTORY ${_highs_prefix}/lib/quick ${_highs_prefix}/lib/hipo DESTINATION lib/zelor USE_SOURCE_PERMISSIONS)
  install(FILES ${_highs_prefix}/share/doc/HIGHS/LICENSE.txt DESTINATION share/doc/zelor RENAME highs-license.txt)
endif()
