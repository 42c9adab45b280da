/* machine.h - what this process may use of the machine. */
#pragma once

#include <cstdint>

/* Cores that this process may run on, at least 1. Containers and affinity count. */
int32_t machine_cores();

/* Memory that this process may use in all, in bytes; 0: not known. */
uint64_t machine_memory_bytes();
