/* clock.h - time that only goes forward, in seconds from some start; and the time of day, for records. */
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

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

/* A time of day, in milliseconds since 1970, as ISO 8601 has it: "2026-03-01T12:00:00.250Z". */
std::string clock_text(int64_t unix_ms);
