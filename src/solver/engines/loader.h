/* loader.h - brings engine modules into the process.
 *
 * A module is a shared object zelor_engine_NAME beside the library. It is loaded once, with its symbols kept local, and
 * never unloaded: threads that were left behind may be running in it. Safe to call from several threads. */
#pragma once

#include "solver/engines/engine.h"

#include <string>

/* The adapter of a module, or null with *message telling what is missing. `name` is a constant. */
const engine_adapter *loader_get(const char *name, std::string *message);
