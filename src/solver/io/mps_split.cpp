/* mps_split.cpp - see mps_reader.h: a line into fields, fields into numbers and pairs. */
#include "solver/io/mps_reader.h"
#include "solver/io/number.h"

#include <algorithm>

namespace
{
inline bool is_blank(char c) { return c == ' ' || c == '\t'; }

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
    return text;
}

/* Where the fields of the fixed format may stand, from 0 on, and where those that hold names begin and end by the
 * letter of the format. Numbers are often found a little beside their place, which does no harm. */
struct fixed_field {
    size_t begin, end;
};
/* clang-format off */
constexpr fixed_field fixed_fields[] = {
    {  0,  4 }, {  4, 14 }, { 14, 24 }, { 24, 39 }, { 39, 49 }, { 49, 73 },
};
/* clang-format on */
constexpr size_t name_width = 8; /* what follows in the fields of names is blank */
}  // namespace

void mps_split_free(std::string_view line, mps_fields *fields)
{
    const char *p = line.data();
    const char *end = p + line.size();
    int32_t num = 0;
    for (;;) {
        while (p != end && *p == ' ') ++p;
        if (p == end) break;
        if (*p == '\t') {
            ++p;
            continue;
        }
        /* One comparison a byte: other control characters, which belong to the field, are seldom met. */
        const char *begin = p++;
        while (p != end && (static_cast<unsigned char>(*p) > ' ' || !is_blank(*p))) ++p;
        fields->text[num++] = {begin, static_cast<size_t>(p - begin)};
        if (num == mps_max_fields) break;
    }
    fields->num = num;
    fields->fixed = false;
}

bool mps_split_fixed(std::string_view line, mps_fields *fields)
{
    if (line.find('\t') != std::string_view::npos || (!line.empty() && line[0] != ' ')) return false;
    fields->num = 0;
    fields->fixed = true;
    for (int32_t i = 0; i < 6; ++i) {
        const fixed_field place = fixed_fields[i];
        std::string_view text = line.substr(std::min(place.begin, line.size()));
        text = text.substr(0, place.end - place.begin);
        const bool is_name = i == 1 || i == 2 || i == 4;
        if ((i == 2 || i == 4) && !text.empty() && text[0] == '$') break;
        if (is_name && text.size() > name_width && !trimmed(text.substr(name_width)).empty()) return false;
        fields->text[i] = trimmed(text);
        if (!fields->text[i].empty()) fields->num = i + 1;
    }
    for (int32_t i = fields->num; i < mps_max_fields; ++i) fields->text[i] = {};
    return fields->num > 0;
}

bool mps_is_word(std::string_view text, const char *upper_case_word)
{
    size_t i = 0;
    for (; i < text.size() && upper_case_word[i] != '\0'; ++i) {
        const char c = text[i] >= 'a' && text[i] <= 'z' ? static_cast<char>(text[i] - 'a' + 'A') : text[i];
        if (c != upper_case_word[i]) return false;
    }
    return i == text.size() && upper_case_word[i] == '\0';
}

int32_t mps_before_comment(const mps_fields *fields, int32_t from)
{
    for (int32_t i = from; i < fields->num && !fields->fixed; ++i)
        if (fields->text[i][0] == '$' || fields->text[i][0] == '*') return i;
    return fields->num;
}

int32_t mps_take_number(mps_reader *r, std::string_view text, double *value)
{
    if (number_parse(text, value)) return ZLR_RES_OK;
    if (text.empty())
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found the end of the line where a number was expected");
    return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where a number was expected", io_quote(text).c_str());
}

namespace
{
/* A comment may follow complete data. Only what cannot be data is taken for one: the first of two further fields may
 * be a name that begins in this way. */
bool begins_comment(mps_reader *r, std::string_view text)
{
    return (text[0] == '$' || text[0] == '*') && mps_find_row(r, text) == mps_none;
}

int32_t too_many(mps_reader *r, std::string_view text)
{
    return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where the end of the line was expected",
                    io_quote(text).c_str());
}

int32_t pair_fixed(mps_reader *r, const mps_fields *fields, int32_t at, mps_pairs *pairs)
{
    const int32_t i = pairs->num++;
    pairs->name[i] = fields->text[at];
    return mps_take_number(r, fields->text[at + 1], &pairs->value[i]);
}

int32_t take_pairs_fixed(mps_reader *r, const mps_fields *fields, mps_pairs *pairs)
{
    pairs->set = fields->text[1];
    if (!fields->text[0].empty()) return too_many(r, fields->text[0]);
    const int32_t res = pair_fixed(r, fields, 2, pairs);
    return res != ZLR_RES_OK || fields->num <= 4 ? res : pair_fixed(r, fields, 4, pairs);
}
}  // namespace

int32_t mps_take_pairs(mps_reader *r, const mps_fields *fields, bool set_optional, mps_pairs *pairs)
{
    pairs->num = 0;
    pairs->hashed = false;
    if (fields->fixed) return take_pairs_fixed(r, fields, pairs);

    /* Without a comment the number of fields tells whether the first name is there; a comment begins behind data. */
    int32_t num = fields->num;
    for (int32_t i = 2; i < num; ++i)
        if ((fields->text[i][0] == '$' || fields->text[i][0] == '*') && begins_comment(r, fields->text[i])) num = i;
    const bool has_set = !set_optional || num % 2 == 1;
    const int32_t first = has_set ? 1 : 0;
    pairs->set = has_set ? fields->text[0] : std::string_view();
    pairs->hashed = has_set && fields->hashed;
    pairs->hash[0] = fields->hash[0];
    pairs->hash[1] = fields->hash[1];
    if (num - first > 4) return too_many(r, fields->text[first + 4]);
    if (num - first < 2)
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found the end of the line where %s was expected",
                        num - first == 1 ? "a number" : "a name and a number");

    for (int32_t at = first; at < num; at += 2) {
        const int32_t i = pairs->num++;
        pairs->name[i] = fields->text[at];
        if (at + 1 == num)
            return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found the end of the line where a number was expected");
        const int32_t res = mps_take_number(r, fields->text[at + 1], &pairs->value[i]);
        if (res != ZLR_RES_OK) return res;
    }
    return ZLR_RES_OK;
}
