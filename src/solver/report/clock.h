/* clock.h - time that only goes forward, in seconds from some start; and the time of day, for records. */
#pragma once

#include <chrono>
#include <cstdint>

inline double clock_now_s()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/* Milliseconds since 1970, UTC. */
inline int64_t clock_unix_ms()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}
