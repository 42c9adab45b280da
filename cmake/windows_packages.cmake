# What a cross build for Windows takes from this machine, where the target has no packages of its own: libraries of headers
# and one in source. Included by the top CMakeLists.txt when cross-compiling.
if(NOT TARGET nlohmann_json::nlohmann_json)
  # In a folder of its own: /usr/include as a whole holds this machine's headers.
  find_path(ZELOR_NLOHMANN_JSON nlohmann/json.hpp PATHS /usr/include /usr/local/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/host_headers)
  file(CREATE_LINK ${ZELOR_NLOHMANN_JSON}/nlohmann ${CMAKE_BINARY_DIR}/host_headers/nlohmann SYMBOLIC)
  add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
  target_include_directories(nlohmann_json::nlohmann_json INTERFACE ${CMAKE_BINARY_DIR}/host_headers)
endif()

if(NOT TARGET Eigen3::Eigen)
  # Eigen has a folder of its own already.
  find_path(ZELOR_EIGEN Eigen/SparseCholesky PATHS /usr/include/eigen3 /usr/local/include/eigen3 NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  add_library(Eigen3::Eigen INTERFACE IMPORTED)
  target_include_directories(Eigen3::Eigen INTERFACE ${ZELOR_EIGEN})
endif()

set(ZELOR_GTEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest")
if(ZELOR_TESTS AND EXISTS ${ZELOR_GTEST_SOURCE}/CMakeLists.txt)
  set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(${ZELOR_GTEST_SOURCE} googletest EXCLUDE_FROM_ALL)
endif()
