/* stub_reader.cpp - see stub_reader.h: blocks, faults, and the items that are seldom. */
#include "ampl/stub_reader.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cinttypes>
#include <cmath>
#include <cstdarg>
#include <cstdlib>

/* ---- Blocks ---- */

/* What was not taken goes to the front, and as much as there is room for comes behind it. Tells whether anything came. */
static bool read_more(stub_reader *r)
{
    const auto kept = static_cast<size_t>(r->full - r->at);
    r->offset += r->at - r->block;
    std::memmove(r->block, r->at, kept);
    const size_t got = std::fread(r->block + kept, 1, static_cast<size_t>(stub_block_bytes) - kept, r->file);
    r->at = r->block;
    r->full = r->block + kept + got;
    r->end = r->full;
    return got > 0;
}

static const char *behind_last_line(const char *begin, const char *end)
{
    while (end != begin && end[-1] != '\n') --end;
    return end;
}

bool stub_reader_refill(stub_reader *r)
{
    if (r->fault[0] != 0) return false;
    const bool got = read_more(r);
    if (r->is_binary) return got;
    r->end = behind_last_line(r->block, r->full);
    if (r->end != r->block) return true;
    if (r->full == r->block) return false;
    if (r->full - r->block == stub_block_bytes)
        return stub_fault(r, "the line is longer than %" PRId64 " bytes", stub_block_bytes);
    return stub_fault(r, "the file ends in the midst of the line");
}

bool stub_reader_begin(stub_reader *r)
{
    r->at = r->end = r->full = r->block;
    r->line = 1;
    return stub_reader_refill(r);
}

void stub_reader_set_binary(stub_reader *r, bool is_swapped)
{
    r->is_binary = true;
    r->is_swapped = is_swapped;
    r->end = r->full;
}

/* ---- Faults ---- */

static const char *const place_names[] = {"line", "byte"};

bool stub_fault(stub_reader *r, const char *format, ...)
{
    if (r->fault[0] != 0) return false; /* the first one says it */
    const int64_t place = r->is_binary ? stub_place(r) : r->line;
    char what[256];
    va_list args;
    va_start(args, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the line above has done that
    std::vsnprintf(what, sizeof what, format, args);
    va_end(args);
    std::snprintf(r->fault, sizeof r->fault, "%s, %s %" PRId64 ": %s", r->name, place_names[r->is_binary], place, what);
    return false;
}

/* Some of what stands there, fit to be printed. */
static void take_found(const stub_reader *r, char *found, size_t capacity)
{
    const char *p = r->at;
    size_t num = 0;
    while (p != r->end && *p == ' ') ++p;
    for (; p != r->end && num + 1 < capacity; ++p) {
        if (*p == ' ' || *p == '\n' || *p == '\r' || *p == '\t') break;
        found[num++] = std::isprint(static_cast<unsigned char>(*p)) ? *p : '?';
    }
    found[num] = 0;
}

bool stub_refuse(stub_reader *r, const char *format, ...)
{
    char what[256];
    va_list args;
    va_start(args, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the line above has done that
    std::vsnprintf(what, sizeof what, format, args);
    va_end(args);
    std::snprintf(r->fault, sizeof r->fault, "%s: %s", r->name, what);
    return false;
}

bool stub_expected(stub_reader *r, const char *what)
{
    char found[24];
    take_found(r, found, sizeof found);
    if (found[0] == 0) return stub_fault(r, "expected %s, found the end of the line", what);
    return stub_fault(r, "expected %s, found '%s'", what, found);
}

bool stub_out_of_range(stub_reader *r, const char *what, int64_t value, int64_t low, int64_t high)
{
    if (low > high) return stub_fault(r, "found %s %" PRId64 ", where the header leaves room for none", what, value);
    return stub_fault(r, "expected %s from %" PRId64 " to %" PRId64 ", found %" PRId64, what, low, high, value);
}

bool stub_ends(stub_reader *r, const char *what)
{
    return stub_fault(r, "expected %s, found the end of the file", what);
}

/* ---- Seldom items ---- */

/* What may stand behind a number. */
static bool ends_number(char c) { return c != 0 && std::strchr(" \t\r\n#", c) != nullptr; }

/* With an exponent, many digits, or one of the words for what is no number; the line end stops it at the latest. */
bool stub_take_odd_real(stub_reader *r, const char *what, double *value)
{
    const char *p = r->at;
    while (*p == ' ') ++p;
    if (*p == '\n' || *p == '\t' || *p == '\r') return stub_expected(r, what);
    const std::from_chars_result plain = std::from_chars(p, r->end, *value);
    if (plain.ec == std::errc() && std::isfinite(*value) && ends_number(*plain.ptr)) {
        r->at = plain.ptr;
        return true;
    }
    char *behind = nullptr;
    *value = std::strtod(p, &behind);
    const bool is_number = behind != p && ends_number(*behind);
    const bool is_hexadecimal =
        std::any_of(p, static_cast<const char *>(behind), [](char c) { return c == 'x' || c == 'X'; });
    if (!is_number || is_hexadecimal) return stub_expected(r, what); /* the library stops at the x */
    if (!std::isfinite(*value)) r->has_words = true;
    r->at = behind;
    return true;
}

bool stub_end_odd_line(stub_reader *r)
{
    if (r->at - r->begin > stub_line_bytes)
        return stub_fault(r, "the line's numbers go beyond its first %d letters", stub_line_bytes);
    if (!ends_number(*r->at)) return stub_expected(r, "the end of the line");
    return stub_skip_line(r);
}

/* The library takes a carriage return for a line end wherever it stands. */
bool stub_skip_line(stub_reader *r)
{
    const auto left = static_cast<size_t>(r->end - r->at);
    const char *end = static_cast<const char *>(std::memchr(r->at, '\n', left));
    const char *last = end;
    while (last != r->at && last[-1] == '\r') --last;
    if (std::memchr(r->at, '\r', static_cast<size_t>(last - r->at)) != nullptr)
        return stub_fault(r, "a carriage return stands in the midst of the line");
    r->at = end + 1;
    ++r->line;
    return true;
}
