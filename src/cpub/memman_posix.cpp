/* memman_posix.cpp - what the memory manager needs of POSIX. */
#include "memman_internal.h"

bool memman_localtime(std::tm *local)
{
    const std::time_t now = std::time(nullptr);
    return localtime_r(&now, local) != nullptr;
}
