# Builds Clarabel behind our C interface, with cargo. Its folder stands beside what scripts/install-deps fetched, so that all
# presets share what was compiled: a build of the second one takes a moment.
option(ZELOR_CLARABEL "Build the engine Clarabel, with cargo" ON)
if(NOT ZELOR_CLARABEL)
  message(STATUS "Clarabel: left out, as ZELOR_CLARABEL says")
  return()
endif()
if(WIN32)
  message(STATUS "Clarabel: none for Windows, conic problems are read and converted only")
  return()
endif()

find_program(ZELOR_CARGO cargo PATHS $ENV{HOME}/.cargo/bin NO_CACHE)
set(_cargo_version 0)
if(ZELOR_CARGO)
  execute_process(COMMAND ${ZELOR_CARGO} --version OUTPUT_VARIABLE _cargo_text ERROR_QUIET)
  if(_cargo_text MATCHES "cargo ([0-9.]+)")
    set(_cargo_version ${CMAKE_MATCH_1})
  endif()
endif()
set(_cargo_needed 1.71)
if(_cargo_version VERSION_LESS _cargo_needed)
  message(WARNING "Clarabel: no cargo ${_cargo_needed} or later, so that the engine for cones is left out. "
    "scripts/install-deps build gets cargo; on Debian 12 it is in the packages cargo-web and rustc-web.")
  return()
endif()

set(_crate ${CMAKE_SOURCE_DIR}/src/solver/engines/clarabel)
file(STRINGS ${_crate}/Cargo.toml _clarabel_version REGEX "^version = ")
string(REGEX MATCH "[0-9.]+" _clarabel_version "${_clarabel_version}")
set(_cargo_folder ${CMAKE_SOURCE_DIR}/build/deps/clarabel-${_clarabel_version}/target)
set(_clarabel_library ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/libzelor_clarabel.a)
file(GLOB _crate_sources CONFIGURE_DEPENDS ${_crate}/src/*.rs)

# Newer cargo leaves out versions of crates that the compiler at hand is too old for; the variable is what asks for it.
# Sanitizers of the C++ side stay out of the crate: its flags are its own.
add_custom_command(OUTPUT ${_clarabel_library}
  COMMAND ${CMAKE_COMMAND} -E env CARGO_RESOLVER_INCOMPATIBLE_RUST_VERSIONS=fallback
    ${ZELOR_CARGO} build --release --quiet --manifest-path ${_crate}/Cargo.toml --target-dir ${_cargo_folder}
  COMMAND ${CMAKE_COMMAND} -E copy ${_cargo_folder}/release/libzelor_clarabel.a ${_clarabel_library}
  DEPENDS ${_crate}/Cargo.toml ${_crate_sources}
  COMMENT "Building Clarabel ${_clarabel_version} with cargo ${_cargo_version}"
  VERBATIM)
add_custom_target(zelor_clarabel_crate DEPENDS ${_clarabel_library})

add_library(zelor_clarabel STATIC IMPORTED GLOBAL)
set_target_properties(zelor_clarabel PROPERTIES IMPORTED_LOCATION ${_clarabel_library})
add_dependencies(zelor_clarabel zelor_clarabel_crate)
target_link_libraries(zelor_clarabel INTERFACE Threads::Threads ${CMAKE_DL_LIBS} m)
message(STATUS "Clarabel: ${_clarabel_version}, built with cargo ${_cargo_version}")
