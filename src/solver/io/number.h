/* number.h - numbers of text files.
 *
 * One rule for all readers: decimal digits with an optional sign, point and exponent (e, E, d or D), or "inf" and
 * "infinity" without regard to case. No locale, no hexadecimal, no NaN. Every value is the nearest double. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/* The value of a whole token. False for anything else than a number, for digits left over behind one, and for a number
 * too large for a double; one too small is 0 or the nearest denormal. Infinite only where the text says so. */
[[nodiscard]] bool number_parse(std::string_view token, double *value);

/* Writes a number at most 24 characters long and returns how many they are: with so many significant digits, or, where
 * `digits` is 0, with as few as read back as the same bits. Zeros at the end of a fraction are left out. */
inline constexpr size_t number_room = 32;
size_t number_write(char (&text)[number_room], double value, int32_t digits);
