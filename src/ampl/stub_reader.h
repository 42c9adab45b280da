/* stub_reader.h - the items of an AMPL stub, one after the other, for the check of a stub.
 *
 * A stub is ten lines of text and then segments, as text or binary. Text: a letter begins a line, numbers follow with
 * blanks between them, what comes behind the last one that is wanted is a comment. Binary: letters are single bytes, an
 * integer is 4 bytes, a real number 8, a name is its length and its bytes.
 *
 * The file is read by blocks. In text a block is cut behind its last line end, so that whoever stands in a line finds its
 * end without asking whether the block ends before. Each function returns false once something is wrong, and `fault` then
 * holds what, in one sentence without a full stop; nothing more can be taken from the reader then. */
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>

inline constexpr int64_t stub_block_bytes = 262144;
inline constexpr int32_t stub_name_bytes = 128;

/* The library takes no more of a line: what stands behind would be another number, or none, without a word. */
inline constexpr int32_t stub_line_bytes = 78;
inline constexpr int32_t stub_fault_bytes = 1536;

struct stub_reader {
    std::FILE *file;
    const char *name;     /* of the file, for messages */
    char *block;          /* stub_block_bytes */
    const char *at, *end; /* what can be taken; of text whole lines */
    const char *full;     /* end of what was read into the block */
    const char *begin;    /* of the line that is being taken */
    int64_t line;         /* the line that `at` stands in, from 1 */
    int64_t offset;       /* the place in the file of the block's first byte */
    int64_t size;         /* of the file */
    bool is_binary;
    bool is_swapped; /* numbers are in the other byte order than this machine's */
    bool has_words;  /* for numbers, as of infinity, or numbers of the text that are too large to be one */
    char fault[stub_fault_bytes];
};

/* Takes the first block, as lines. */
[[nodiscard]] bool stub_reader_begin(stub_reader *r);

/* From here on it is binary. */
void stub_reader_set_binary(stub_reader *r, bool is_swapped);

/* Gets more. False at the end of the file (no fault), and where a file ends in the midst of a line (a fault). */
[[nodiscard]] bool stub_reader_refill(stub_reader *r);

/* A fault of the file as a whole; returns false. */
bool stub_refuse(stub_reader *r, const char *format, ...) __attribute__((format(printf, 2, 3)));

/* Faults; they return false. `found` as it stands in the file. */
bool stub_fault(stub_reader *r, const char *format, ...) __attribute__((format(printf, 2, 3)));
bool stub_expected(stub_reader *r, const char *what);
bool stub_out_of_range(stub_reader *r, const char *what, int64_t value, int64_t low, int64_t high);
bool stub_ends(stub_reader *r, const char *what);

/* In text, what is seldom: a real number with more to it than some digits and a point, the end of a line that is more than a line
 * end, the rest of a line. */
[[nodiscard]] bool stub_take_odd_real(stub_reader *r, const char *what, double *value);
[[nodiscard]] bool stub_end_odd_line(stub_reader *r);
[[nodiscard]] bool stub_skip_line(stub_reader *r);

/* Where `at` is in the file. */
inline int64_t stub_place(const stub_reader *r) { return r->offset + (r->at - r->block); }

inline int64_t stub_bytes_left(const stub_reader *r) { return r->size - stub_place(r); }

/* Marks what may come only once. */
inline bool stub_mark(stub_reader *r, unsigned char *seen, const char *what, int32_t k)
{
    if (seen[k]) return stub_fault(r, "%s %d comes a second time", what, k);
    seen[k] = 1;
    return true;
}

inline bool stub_is_digit(char c) { return static_cast<unsigned char>(c - '0') <= 9; }

/* At least `num` bytes of a binary stub. */
inline bool stub_need_bytes(stub_reader *r, int64_t num, const char *what)
{
    if (r->end - r->at >= num) return true;
    return (stub_reader_refill(r) && r->end - r->at >= num) || stub_ends(r, what);
}

/* A line of numbers begins. */
template <bool binary> inline bool stub_begin_line(stub_reader *r, const char *what)
{
    if constexpr (binary) return true;
    if (r->at == r->end && !stub_reader_refill(r)) return stub_ends(r, what);
    r->begin = r->at;
    return true;
}

template <bool binary> inline bool stub_end_line(stub_reader *r)
{
    if constexpr (binary) return true;
    if (*r->at != '\n' || r->at - r->begin > stub_line_bytes) return stub_end_odd_line(r);
    ++r->at;
    ++r->line;
    return true;
}

/* The letter that an item begins with. */
template <bool binary> inline bool stub_take_letter(stub_reader *r, const char *what, char *letter)
{
    if (r->at == r->end && !stub_reader_refill(r)) return stub_ends(r, what);
    r->begin = r->at;
    *letter = *r->at++;
    return true;
}

template <bool binary> inline bool stub_take_int(stub_reader *r, const char *what, int32_t *value)
{
    if constexpr (binary) {
        if (!stub_need_bytes(r, 4, what)) return false;
        uint32_t bits = 0;
        std::memcpy(&bits, r->at, 4);
        if (r->is_swapped) bits = __builtin_bswap32(bits);
        *value = static_cast<int32_t>(bits);
        r->at += 4;
        return true;
    }
    const char *p = r->at;
    while (*p == ' ') ++p;
    const bool is_negative = *p == '-';
    if (is_negative) ++p;
    if (!stub_is_digit(*p)) return stub_expected(r, what);
    int64_t number = 0;
    for (; stub_is_digit(*p); ++p) {
        number = 10 * number + (*p - '0');
        if (number > INT32_MAX + int64_t{is_negative}) return stub_expected(r, what);
    }
    *value = static_cast<int32_t>(is_negative ? -number : number);
    r->at = p;
    return true;
}

/* Whole numbers below 2^53 and powers of ten up to this are exact, and so is the rounding of their quotient. */
inline constexpr int32_t stub_max_power = 22;
inline constexpr double stub_powers[stub_max_power + 1] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                           1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                           1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/* More digits than this may not fit 64 bits. */
inline constexpr int64_t stub_max_digits = 19;

/* A real number, correctly rounded. */
template <bool binary> inline bool stub_take_value(stub_reader *r, const char *what, double *value)
{
    if constexpr (binary) {
        if (!stub_need_bytes(r, 8, what)) return false;
        uint64_t bits = 0;
        std::memcpy(&bits, r->at, 8);
        if (r->is_swapped) bits = __builtin_bswap64(bits);
        std::memcpy(value, &bits, 8);
        r->at += 8;
        return true;
    }
    const char *p = r->at;
    while (*p == ' ') ++p;
    const bool is_negative = *p == '-';
    if (is_negative) ++p;
    const char *digits = p;
    uint64_t number = 0;
    for (; stub_is_digit(*p); ++p) number = 10 * number + static_cast<uint64_t>(*p - '0');
    int64_t num = p - digits;
    int64_t behind_point = 0;
    if (*p == '.') {
        const char *point = p++;
        for (; stub_is_digit(*p); ++p) number = 10 * number + static_cast<uint64_t>(*p - '0');
        behind_point = p - point - 1;
        num += behind_point;
    }
    const bool is_exact = num <= stub_max_digits && number <= (uint64_t{1} << 53);
    if (num == 0 || !is_exact || (*p != '\n' && *p != ' ')) return stub_take_odd_real(r, what, value);
    const double size = static_cast<double>(number) / stub_powers[behind_point];
    *value = is_negative ? -size : size;
    r->at = p;
    return true;
}

/* A real number whose value is not wanted. */
template <bool binary> inline bool stub_take_real(stub_reader *r, const char *what)
{
    double value = 0;
    if constexpr (binary) {
        if (!stub_need_bytes(r, 8, what)) return false;
        r->at += 8;
        return true;
    }
    return stub_take_value<binary>(r, what, &value);
}

/* An integer from low to high. */
template <bool binary>
inline bool stub_take_number(stub_reader *r, const char *what, int32_t low, int32_t high, int32_t *value)
{
    if (!stub_take_int<binary>(r, what, value)) return false;
    return (*value >= low && *value <= high) || stub_out_of_range(r, what, *value, low, high);
}
