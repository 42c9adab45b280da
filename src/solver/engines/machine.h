/* machine.h - what this process may use of the machine. */
#pragma once

#include <cstdint>

/* Cores that this process may run on, at least 1. Containers and affinity count. */
int32_t machine_cores();

/* Memory that this process may use in all, in bytes; 0: not known. */
uint64_t machine_memory_bytes();

/* Prepares a new thread's heap for the many small blocks of an engine, where the system's allocator is slow at that. */
void machine_warm_heap();
