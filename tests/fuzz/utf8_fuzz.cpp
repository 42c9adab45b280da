/* utf8_fuzz.cpp - fuzz target of the conversion from UTF-8 to UTF-16: against a model of its rules that is written the
 * other way round, from tables of code points to bytes and units, and in rooms of every size that can matter. */
#include "cpub/sysformat.h"

#include <cstdlib>
#include <string>
#include <vector>

static void require(bool holds)
{
    if (!holds) std::abort();
}

/* One character of the source: what it takes and what it gives. */
struct character {
    size_t num_bytes;
    std::vector<uint16_t> units;
    bool is_error;
};

/* How many bytes a sequence has that begins with `lead`, by the ranges of leads. */
static size_t length_by_range(unsigned lead)
{
    static const struct {
        unsigned first, last;
        size_t length;
    } ranges[] = {{0x00, 0x7F, 1}, {0xC0, 0xDF, 2}, {0xE0, 0xEF, 3}, {0xF0, 0xF7, 4}, {0xF8, 0xFB, 5}};
    for (const auto &range : ranges)
        if (lead >= range.first && lead <= range.last) return range.length;
    return 6;
}

static std::vector<uint16_t> units_of(uint64_t code)
{
    if (code < 0x10000) return {static_cast<uint16_t>(code)};
    const uint64_t plane = code / 0x10000; /* 1 to 16 */
    const uint64_t first = (0xD800 | ((plane + 15) * 1024 + code / 1024 % 4)) % 0x10000;
    return {static_cast<uint16_t>(first), static_cast<uint16_t>(0xDC00 + code % 1024)};
}

/* The character at `at` of a text that ends in 0 somewhere behind it. */
static character model_character(const std::string &text, size_t at)
{
    const character broken = {0, {'.'}, true};
    const auto byte = [&text, at](size_t k) { return static_cast<unsigned char>(text.c_str()[at + k]); };
    const size_t length = length_by_range(byte(0));
    if (length == 1) return {1, {byte(0)}, false};

    /* Bits of the lead that count: five of a sequence of two, one less for each byte more. */
    uint64_t code = byte(0) % (1U << (7 - length));
    for (size_t k = 1; k < length; ++k) {
        if (byte(k) < 0x80 || byte(k) > 0xBF) {
            character stopped = broken;
            stopped.num_bytes = byte(k) == 0 ? k : k + 1;
            return stopped;
        }
        code = code * 64 + (byte(k) - 0x80U);
    }
    if (code >= 0x110000) return {length, {'.'}, true};
    return {length, units_of(code), false};
}

/* What a call is to give. `capacity` counts for calls with a destination only. */
struct answer {
    std::vector<uint16_t> units;
    uint64_t bytes_read = 0, errors = 0;
};

static answer model_answer(const std::vector<character> &characters, bool counts_only, uint64_t capacity)
{
    answer expected;
    for (const character &c : characters) {
        if (!counts_only && (capacity == 0 || expected.units.size() >= capacity - 1)) break;
        expected.units.insert(expected.units.end(), c.units.begin(), c.units.end());
        expected.bytes_read += c.num_bytes;
        expected.errors += c.is_error ? 1 : 0;
    }
    return expected;
}

/* Converts into a room of its own that ends right behind what may be written, so that a sanitizer sees more. */
static void check_room(const std::string &text, const answer &expected, uint64_t capacity)
{
    const size_t num = expected.units.size();
    std::vector<uint16_t> room(num + 1, 0xAAAA);
    uint64_t bytes_read = ~uint64_t{0};
    uint64_t errors = ~uint64_t{0};
    require(utf8_towide(text.c_str(), room.data(), &bytes_read, capacity, &errors) == num);
    require(bytes_read == expected.bytes_read && errors == expected.errors);
    require(room[num] == 0);
    room.pop_back();
    require(room == expected.units);

    std::vector<uint16_t> guarded(num + 3, 0xAAAA);
    require(utf8_towide(text.c_str(), guarded.data(), nullptr, capacity, nullptr) == num);
    require(guarded[num] == 0 && guarded[num + 1] == 0xAAAA && guarded[num + 2] == 0xAAAA);
}

static void check_count(const std::string &text, const answer &expected)
{
    uint64_t bytes_read = ~uint64_t{0};
    uint64_t errors = ~uint64_t{0};
    require(utf8_towide(text.c_str(), nullptr, &bytes_read, 0, &errors) == expected.units.size());
    require(bytes_read == expected.bytes_read && errors == expected.errors);

    uint64_t num_units = ~uint64_t{0};
    const int32_t res = sysenv_utf8towide(nullptr, 0, &num_units, nullptr, nullptr, text.c_str());
    require(res == (expected.errors == 0 ? 0 : SYSENV_UTF8_BROKEN) && num_units == expected.units.size());
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string bytes(data, data + size);
    const std::string text = bytes.substr(0, bytes.find('\0'));
    std::vector<character> characters;
    for (size_t at = 0; at < text.size(); at += characters.back().num_bytes)
        characters.push_back(model_character(text, at));

    const answer whole = model_answer(characters, true, 0);
    require(whole.bytes_read == text.size());
    check_count(text, whole);
    check_room(text, whole, whole.units.size() + 1); /* the room that a count asks for holds it all */

    /* Long texts are cut near both ends only. */
    for (uint64_t capacity = 0; capacity <= whole.units.size() + 2; ++capacity) {
        if (capacity == 40 && whole.units.size() > 80) capacity = whole.units.size() - 20;
        check_room(text, model_answer(characters, false, capacity), capacity);
    }
    return 0;
}
