/* memman_win32.cpp - what the memory manager needs of Windows. */
#include "memman_internal.h"

bool memman_localtime(std::tm *local)
{
    const std::time_t now = std::time(nullptr);
    return localtime_s(local, &now) == 0;
}
