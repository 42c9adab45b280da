/* machine_posix.cpp - see machine.h. */
#include "solver/engines/machine.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
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
    auto cores = static_cast<int32_t>(sysconf(_SC_NPROCESSORS_ONLN));
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof(set), &set) == 0) cores = CPU_COUNT(&set);
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
