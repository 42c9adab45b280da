/* machine_win32.cpp - see machine.h. */
#include "solver/engines/machine.h"

#include <windows.h>

int32_t machine_cores()
{
    DWORD_PTR process = 0, system = 0;
    int32_t cores = 0;
    if (GetProcessAffinityMask(GetCurrentProcess(), &process, &system) != 0)
        for (; process != 0; process &= process - 1) cores++;
    if (cores > 0) return cores;
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwNumberOfProcessors > 0 ? static_cast<int32_t>(info.dwNumberOfProcessors) : 1;
}

uint64_t machine_memory_bytes()
{
    MEMORYSTATUSEX status;
    status.dwLength = sizeof(status);
    return GlobalMemoryStatusEx(&status) != 0 ? status.ullTotalPhys : 0;
}

void machine_warm_heap() {}
