/* html_text.cpp - see html_text.h. Characters first, then numbers. */
#include "solver/report/html_text.h"

#include "solver/report/streams.h"

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <cmath>

static constexpr char replacement[] = "\xEF\xBF\xBD"; /* U+FFFD */
static constexpr char dash[] = "\xE2\x80\x93";        /* U+2013 */
static constexpr char ellipsis[] = "\xE2\x80\xA6";    /* U+2026 */
static constexpr char minus[] = "\xE2\x88\x92";       /* U+2212 */
static constexpr char infinity[] = "\xE2\x88\x9E";    /* U+221E */
static constexpr char thin_blank[] = "\xE2\x80\xAF";  /* U+202F, breaks no line */

#define NBSP "\xC2\xA0" /* U+00A0: a number and its unit stay on one line */

static constexpr size_t name_max = 120; /* characters of a name that are shown */

/* ---- Characters ---- */

struct character {
    uint32_t code = 0;
    size_t size = 1;       /* bytes that it takes; 1 for a broken sequence, so that the next byte gets its chance */
    bool is_valid = false; /* shortest form, no surrogate, at most U+10FFFF */
};

static character read_character(std::string_view text)
{
    static const uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<unsigned char>(text[0]);
    character c;
    if (first < 0x80) {
        c.code = first;
        c.is_valid = true;
        return c;
    }
    const size_t size = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || size > text.size()) return c;
    uint32_t code = first & (0x7fU >> size);
    for (size_t k = 1; k < size; k++) {
        const auto next = static_cast<unsigned char>(text[k]);
        if ((next & 0xc0U) != 0x80U) return c;
        code = code << 6U | (next & 0x3fU);
    }
    if (code < least[size] || code > 0x10ffff || (code >= 0xd800 && code <= 0xdfff)) return c;
    c.code = code;
    c.size = size;
    c.is_valid = true;
    return c;
}

/* Controls of the second block and code points that are no characters. */
static bool is_forbidden(uint32_t code)
{
    return (code >= 0x80 && code < 0xa0) || (code >= 0xfdd0 && code <= 0xfdef) || (code & 0xfffeU) == 0xfffe;
}

static void append_control(std::string *page, uint32_t code)
{
    *page += "\xE2\x90"; /* U+2400 and on; U+2421 for delete */
    *page += static_cast<char>(code == 0x7f ? 0xa1 : 0x80 + code);
}

static void append_ascii(std::string *page, char c)
{
    switch (c) {
    case '&': *page += "&amp;"; break;
    case '<': *page += "&lt;"; break;
    case '>': *page += "&gt;"; break;
    case '"': *page += "&quot;"; break;
    case '\'': *page += "&#39;"; break;
    case '\n':
    case '\t': *page += c; break;
    default:
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            append_control(page, static_cast<unsigned char>(c));
        else
            *page += c;
    }
}

static void append_character(std::string *page, const character &c, std::string_view text)
{
    if (!c.is_valid || is_forbidden(c.code))
        *page += replacement;
    else if (c.code < 0x80)
        append_ascii(page, text[0]);
    else
        *page += text.substr(0, c.size);
}

void html_append(std::string *page, std::string_view text)
{
    while (!text.empty()) {
        const character c = read_character(text);
        append_character(page, c, text);
        text.remove_prefix(c.size);
    }
}

std::string html_escape(std::string_view text)
{
    std::string escaped;
    html_append(&escaped, text);
    return escaped;
}

std::string html_name(std::string_view name)
{
    std::string element = "<bdi>";
    for (size_t num = 0; !name.empty(); num++) {
        const character c = read_character(name);
        if (num == name_max) {
            element += ellipsis;
            break;
        }
        append_character(&element, c, name);
        name.remove_prefix(c.size);
    }
    return element + "</bdi>";
}

/* ---- Numbers ---- */

/* Room for the largest double with six places. */
struct digits_buffer {
    char text[352];
};

static std::string number_in(double value, std::chars_format format, int precision)
{
    if (std::isnan(value)) return dash;
    if (std::isinf(value)) return std::string(value < 0.0 ? minus : "") + infinity;
    digits_buffer buffer;
    const auto end = std::to_chars(buffer.text, buffer.text + sizeof buffer.text, std::fabs(value), format, precision);
    const std::string_view digits(buffer.text, static_cast<size_t>(end.ptr - buffer.text));
    const bool is_zero = digits.find_first_of("123456789") == std::string_view::npos; /* then no "-0" */
    return std::string(value < 0.0 && !is_zero ? minus : "") + std::string(digits);
}

std::string html_number(double value, int digits) { return number_in(value, std::chars_format::general, digits); }

std::string html_fixed(double value, int places) { return number_in(value, std::chars_format::fixed, places); }

std::string html_residual(double value) { return value == 0.0 ? "0" : html_number(value, 2); }

std::string html_count(int64_t count)
{
    std::string text = text_format("%" PRId64, count < 0 ? -count : count);
    if (text.size() > 4)
        for (size_t at = text.size() - 3;; at -= 3) {
            text.insert(at, thin_blank);
            if (at <= 3) break;
        }
    return count < 0 ? minus + text : text;
}

std::string html_short_count(int64_t count)
{
    static const char units[] = {'\0', 'k', 'M', 'G', 'T', 'P', 'E'};
    auto value = static_cast<double>(count);
    size_t unit = 0;
    for (; value >= 999.5; unit++) value /= 1000.0;
    if (unit == 0) return html_fixed(value, 0);
    return html_fixed(value, value < 9.95 ? 1 : 0) + units[unit];
}

std::string html_seconds(double time_s)
{
    if (!std::isfinite(time_s)) return html_number(time_s);
    if (time_s < 0.00005) return "0" NBSP "s";
    if (time_s < 0.00995) return html_fixed(time_s * 1e3, 1) + (NBSP "ms");
    if (time_s < 0.9995) return html_fixed(time_s * 1e3, 0) + (NBSP "ms");
    if (time_s < 9.995) return html_fixed(time_s, 2) + (NBSP "s");
    if (time_s < 119.95) return html_fixed(time_s, 1) + (NBSP "s");
    const auto seconds = static_cast<int64_t>(std::llround(std::min(time_s, 1e15)));
    if (seconds < 7200)
        return text_format("%" PRId64 NBSP "min" NBSP "%02" PRId64 NBSP "s", seconds / 60, seconds % 60);
    return text_format("%" PRId64 NBSP "h" NBSP "%02" PRId64 NBSP "min", seconds / 3600, seconds / 60 % 60);
}

static void append_coordinate(std::string *page, double value)
{
    char text[32];
    const double tenths = std::round(value * 10.0);
    const auto end = std::to_chars(text, text + sizeof text, tenths / 10.0 + 0.0); /* no "-0" */
    page->append(text, end.ptr);
}

void html_append_form(std::string *page, std::string_view form, std::initializer_list<double> values)
{
    const double *value = values.begin();
    for (const char c : form) {
        if (c == '~' && value != values.end())
            append_coordinate(page, *value++);
        else
            *page += c;
    }
}

std::string html_power_of_ten(int32_t exponent)
{
    static const char *const raised[] = {"\xE2\x81\xB0", "\xC2\xB9",     "\xC2\xB2",     "\xC2\xB3",
                                         "\xE2\x81\xB4", "\xE2\x81\xB5", "\xE2\x81\xB6", "\xE2\x81\xB7",
                                         "\xE2\x81\xB8", "\xE2\x81\xB9"};
    if (exponent == 0) return "1";
    if (exponent == 1) return "10";
    std::string text = exponent < 0 ? "10\xE2\x81\xBB" : "10";
    for (const char digit : std::to_string(exponent < 0 ? -exponent : exponent)) text += raised[digit - '0'];
    return text;
}
