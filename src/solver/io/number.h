/* number.h - numbers of text files.
 *
 * One rule for all readers: decimal digits with an optional sign, point and exponent (e, E, d or D), or "inf" and
 * "infinity" without regard to case. No locale, no hexadecimal, no NaN. Every value is the nearest double. */
#pragma once

#include <string_view>

/* The value of a whole token. False for anything else than a number, for digits left over behind one, and for a number
 * too large for a double; one too small is 0 or the nearest denormal. Infinite only where the text says so. */
[[nodiscard]] bool number_parse(std::string_view token, double *value);
