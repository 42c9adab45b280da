/* machine_posix.cpp - see machine.h. */
#include "solver/engines/machine.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sched.h>
#include <unistd.h>

/* The share of processor time that a control group allows, in cores; 0 where none is set. */
static double group_cores()
{
    double quota = 0.0, period = 0.0;
    std::FILE *file = std::fopen("/sys/fs/cgroup/cpu.max", "re");
    if (file == nullptr) return 0.0;
    const bool is_limited = std::fscanf(file, "%lf %lf", &quota, &period) == 2 && period > 0.0;  // NOLINT(cert-err34-c)
    (void)std::fclose(file);
    return is_limited ? quota / period : 0.0;
}

int32_t machine_cores()
{
    cpu_set_t set;
    CPU_ZERO(&set);
    const bool has_set = sched_getaffinity(0, sizeof(set), &set) == 0;
    auto cores = has_set ? CPU_COUNT(&set) : static_cast<int32_t>(sysconf(_SC_NPROCESSORS_ONLN));
    const double group = group_cores();
    if (group > 0.0) cores = std::min(cores, static_cast<int32_t>(std::lround(group)));
    return std::max(cores, 1);
}

static uint64_t group_memory()
{
    unsigned long long bytes = 0;
    std::FILE *file = std::fopen("/sys/fs/cgroup/memory.max", "re");
    if (file == nullptr) return 0;
    const bool is_limited = std::fscanf(file, "%llu", &bytes) == 1;  // NOLINT(cert-err34-c): "max" is no number
    (void)std::fclose(file);
    return is_limited ? bytes : 0;
}

uint64_t machine_memory_bytes()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long size = sysconf(_SC_PAGESIZE);
    const uint64_t all = pages > 0 && size > 0 ? static_cast<uint64_t>(pages) * static_cast<uint64_t>(size) : 0;
    const uint64_t group = group_memory();
    return group > 0 && (all == 0 || group < all) ? group : all;
}

/* glibc makes the heap of a thread larger by single pages, with a system call each: half a millisecond for a small model.
 * A block that is taken and given back leaves its pages with the heap, untouched. The larger one before it is mapped by
 * itself, and its return teaches the allocator to take blocks below its size from the heap, and to keep them there. */
void machine_warm_heap()
{
    constexpr size_t heap_bytes = size_t{4} << 20;
    void *volatile block =
        std::malloc(heap_bytes + heap_bytes / 2); /* volatile: an unused block may be optimised away */
    std::free(block);
    block = std::malloc(heap_bytes);
    std::free(block);
}
