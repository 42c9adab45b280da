/* number.cpp - see number.h.
 *
 * Nearly all numbers of problem files have few digits: those are computed directly, which is exact as long as the
 * digits fit 53 bits and the power of ten is one that a double holds exactly. All others go through std::from_chars. */
#include "solver/io/number.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace
{
constexpr double exact_powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

constexpr int exact_power_max = 22;
constexpr uint64_t exact_digits = uint64_t{1} << 53U;
constexpr int digits_max = 18; /* more could overflow the integer that they are gathered in */
constexpr int64_t exponent_max = 1000000;

/* The parts of a decimal number: mantissa * 10^exponent. */
struct decimal {
    bool is_short; /* the mantissa holds all digits */
    uint64_t mantissa;
    int64_t exponent;
    int64_t magnitude; /* power of ten of the first digit that is not 0 */
    bool is_zero;
};

inline bool is_digit(char c) { return c >= '0' && c <= '9'; }

/* Reads an exponent behind its letter. */
bool exponent_parse(const char *p, const char *end, int64_t *exponent)
{
    const bool negative = p != end && *p == '-';
    if (p != end && (*p == '-' || *p == '+')) ++p;
    if (p == end) return false;

    int64_t e = 0;
    for (; p != end; ++p) {
        if (!is_digit(*p)) return false;
        if (e < exponent_max) e = 10 * e + (*p - '0');
    }
    *exponent = negative ? -e : e;
    return true;
}

/* Takes a number apart; false when the text is no decimal number. */
bool decimal_parse(const char *p, const char *end, decimal *number)
{
    uint64_t mantissa = 0;
    int used = 0;        /* digits in the mantissa, leading zeros left out */
    int64_t skipped = 0; /* digits before the point that did not fit the mantissa */
    int64_t behind = 0;  /* digits behind the point that did */
    bool any = false;
    bool point = false;
    int64_t dropped = 0;

    for (; p != end; ++p) {
        const unsigned digit = static_cast<unsigned>(*p - '0');
        if (digit < 10) {
            any = true;
            if (used < digits_max) {
                mantissa = 10 * mantissa + digit;
                used += mantissa != 0;
                behind += point;
            } else {
                skipped += !point;
                ++dropped;
            }
        } else if (*p == '.' && !point) {
            point = true;
        } else {
            break;
        }
    }
    if (!any) return false;

    int64_t exponent = 0;
    if (p != end) {
        const char letter = static_cast<char>(*p | 0x20);
        if ((letter != 'e' && letter != 'd') || !exponent_parse(p + 1, end, &exponent)) return false;
    }
    number->is_short = dropped == 0;
    number->mantissa = mantissa;
    number->exponent = exponent + skipped - behind;
    number->magnitude = number->exponent + used;
    number->is_zero = mantissa == 0;
    return true;
}

/* The general way, for a text that is known to be a decimal number. An exponent behind a `d` is rewritten for
 * from_chars, in a copy on the stack: such numbers come from old programs, and one longer than the copy is refused. */
bool decimal_value_slow(std::string_view text, const decimal *number, double *value)
{
    char buffer[1024];
    size_t mantissa_size = 0;
    while (mantissa_size < text.size() && (is_digit(text[mantissa_size]) || text[mantissa_size] == '.'))
        ++mantissa_size;

    const char *begin = text.data();
    const char *end = text.data() + text.size();
    if (mantissa_size < text.size() && (text[mantissa_size] | 0x20) == 'd') {
        if (text.size() > sizeof buffer) return false;
        std::memcpy(buffer, text.data(), text.size());
        buffer[mantissa_size] = 'e';
        begin = buffer;
        end = buffer + text.size();
    }
    const std::from_chars_result result = std::from_chars(begin, end, *value);
    if (result.ec == std::errc() && result.ptr == end) return std::isfinite(*value);
    if (result.ec != std::errc::result_out_of_range || number->magnitude > 0) return false;
    *value = 0.0; /* too small */
    return true;
}

bool is_infinity(const char *p, const char *end)
{
    static const char word[] = "infinity";
    const auto size = static_cast<size_t>(end - p);
    if (size != 3 && size != 8) return false;
    for (size_t i = 0; i < size; ++i)
        if ((p[i] | 0x20) != word[i]) return false;
    return true;
}
}  // namespace

bool number_parse(std::string_view token, double *value)
{
    const char *p = token.data();
    const char *end = p + token.size();
    if (p == end) return false;

    const bool negative = *p == '-';
    if (*p == '-' || *p == '+') ++p;

    decimal number;
    double v = 0.0;
    if (decimal_parse(p, end, &number)) {
        if (number.is_zero) {
            v = 0.0;
        } else if (number.is_short && number.mantissa <= exact_digits && number.exponent >= -exact_power_max &&
                   number.exponent <= exact_power_max) {
            v = static_cast<double>(number.mantissa);
            v = number.exponent < 0 ? v / exact_powers[-number.exponent] : v * exact_powers[number.exponent];
        } else if (!decimal_value_slow({p, static_cast<size_t>(end - p)}, &number, &v)) {
            return false;
        }
    } else if (is_infinity(p, end)) {
        v = std::numeric_limits<double>::infinity();
    } else {
        return false;
    }
    *value = negative ? -v : v;
    return true;
}

size_t number_write(char (&text)[number_room], double value, int32_t digits)
{
    const std::to_chars_result result =
        digits > 0 ? std::to_chars(text, text + number_room, value, std::chars_format::general, digits)
                   : std::to_chars(text, text + number_room, value);
    return static_cast<size_t>(result.ptr - text);
}
