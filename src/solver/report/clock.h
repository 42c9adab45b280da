/* clock.h - time that only goes forward, in seconds from some start. */
#pragma once

#include <chrono>

inline double clock_now_s()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}
