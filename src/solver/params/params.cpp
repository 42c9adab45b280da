/* params.cpp - lookup in the table, the values of a task, values as text.
 *
 * In order: words and numbers as text, lookup, nearest names, setting values, values as text. */
#include "solver/params/params.h"

#include "solver/io/number.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <climits>
#include <cmath>

/* ---- Words and numbers as text ---- */

static char upper(char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); }

static bool same_text(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return upper(x) == upper(y); });
}

static std::string_view trimmed(std::string_view text)
{
    const char *blanks = " \t\r\n";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/* "A=0 B=1": the table's own form, so that nothing in it can be malformed but by a mistake that the tests find. */
void param_each_word(const param_row *row, const std::function<bool(std::string_view word, int32_t value)> &see)
{
    std::string_view rest = row->words != nullptr ? row->words : "";
    while (!rest.empty()) {
        const size_t end = std::min(rest.find(' '), rest.size());
        const std::string_view pair = rest.substr(0, end);
        const size_t equal = pair.find('=');
        int32_t value = 0;
        std::from_chars(pair.data() + equal + 1, pair.data() + pair.size(), value);
        if (!see(pair.substr(0, equal), value)) return;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

static std::string_view word_of_value(const param_row *row, int32_t value)
{
    std::string_view found;
    param_each_word(row, [&](std::string_view word, int32_t v) {
        if (v == value) found = word;
        return found.empty();
    });
    return found;
}

static bool value_of_word(const param_row *row, std::string_view text, int32_t *value)
{
    bool found = false;
    param_each_word(row, [&](std::string_view word, int32_t v) {
        if (same_text(word, text)) {
            *value = v;
            found = true;
        }
        return !found;
    });
    return found;
}

std::string param_double_text(double value)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value);
    return {text, end.ptr};
}

/* False for anything but a whole number that fits; from_chars knows no plus sign. */
static bool parse_int(std::string_view text, int32_t *value)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    const auto end = std::from_chars(text.data(), text.data() + text.size(), *value);
    return end.ec == std::errc() && end.ptr == text.data() + text.size();
}

/* ---- Lookup ---- */

const param_row *param_find(int32_t param_class, int32_t number)
{
    int32_t num = 0;
    const param_row *table = param_table(&num);
    const param_row *found = std::find_if(table, table + num, [=](const param_row &row) {
        return row.param_class == param_class && row.number == number;
    });
    return found != table + num ? found : nullptr;
}

const param_row *param_find_name(const char *name)
{
    if (name == nullptr) return nullptr;
    int32_t num = 0;
    const param_row *table = param_table(&num);
    const param_row *found =
        std::find_if(table, table + num, [=](const param_row &row) { return same_text(row.name, name); });
    return found != table + num ? found : nullptr;
}

/* ---- Nearest names ---- */

/* Letters to insert, remove, change or swap with their neighbour to get from one text to the other. */
static size_t edit_distance(std::string_view a, std::string_view b)
{
    std::vector<size_t> before(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); j++) last[j] = j;
    for (size_t i = 1; i <= a.size(); i++) {
        row[0] = i;
        for (size_t j = 1; j <= b.size(); j++) {
            const bool same = upper(a[i - 1]) == upper(b[j - 1]);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && upper(a[i - 1]) == upper(b[j - 2]) && upper(a[i - 2]) == upper(b[j - 1]))
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before.swap(last);
        last.swap(row);
    }
    return last[b.size()];
}

/* Far longer than any name: nothing can be near, and the distance costs the product of the lengths. */
static constexpr size_t longest_typed_name = 100;

/* Near: at most half of what was typed is wrong. That finds MIP_REL_GAP for MIP_GAP and nothing for a chance word. */
static bool nearer(std::string_view typed, std::string_view known, size_t *best)
{
    const size_t distance = edit_distance(typed, known);
    if (distance >= *best || 2 * distance > typed.size() + 1) return false;
    *best = distance;
    return true;
}

const char *param_nearest(const char *name)
{
    const std::string_view typed = name;
    if (typed.size() > longest_typed_name) return nullptr;
    int32_t num = 0;
    const param_row *table = param_table(&num);
    const char *nearest = nullptr;
    size_t best = SIZE_MAX;
    for (int32_t i = 0; i < num; i++)
        if (!param_is_reserved(&table[i]) && nearer(typed, table[i].name, &best)) nearest = table[i].name;
    return nearest;
}

static std::string nearest_word(const param_row *row, std::string_view typed)
{
    std::string nearest;
    size_t best = SIZE_MAX;
    if (typed.size() > longest_typed_name) return nearest;
    param_each_word(row, [&](std::string_view word, int32_t) {
        if (nearer(typed, word, &best)) nearest = word;
        return true;
    });
    return nearest;
}

/* ---- Setting values ---- */

/* Values come from files and command lines: one line, of a length that a message bears. */
static std::string shown(std::string_view text)
{
    constexpr size_t longest = 60;
    std::string out(text.substr(0, longest));
    for (char &c : out)
        if (std::iscntrl(static_cast<unsigned char>(c)) != 0) c = '?';
    return text.size() > longest ? out + "..." : out;
}

static int32_t bad_value(const param_row *row, std::string_view value, std::string *message)
{
    *message = std::string(row->name) + ": found '" + shown(value) + "', expected " + param_allowed_text(row);
    const std::string near = nearest_word(row, value);
    if (!near.empty()) *message += " (did you mean " + near + "?)";
    return ZLR_RES_ERR_PARAM_VALUE;
}

static int32_t refuse_reserved(const param_row *row, std::string *message)
{
    *message = std::string(row->name) + " is reserved for an engine that is still to come and cannot be set";
    return ZLR_RES_ERR_PARAM_NAME;
}

static int32_t set_double(param_set *set, const param_row *row, double value, std::string_view text,
                          std::string *message)
{
    if (param_is_reserved(row)) return refuse_reserved(row, message);
    if (!(value >= row->min && value <= row->max)) return bad_value(row, text, message); /* NaN as well */
    set->dou[static_cast<size_t>(row->number)] = value;
    return ZLR_RES_OK;
}

static int32_t set_int(param_set *set, const param_row *row, int32_t value, std::string_view text, std::string *message)
{
    if (param_is_reserved(row)) return refuse_reserved(row, message);
    if (value < row->min || value > row->max) return bad_value(row, text, message);
    if (row->words != nullptr && word_of_value(row, value).empty()) return bad_value(row, text, message);
    set->integer[static_cast<size_t>(row->number)] = value;
    return ZLR_RES_OK;
}

static int32_t set_int_text(param_set *set, const param_row *row, std::string_view text, std::string *message)
{
    text = trimmed(text);
    int32_t value = 0;
    if (row->words != nullptr && value_of_word(row, text, &value)) return set_int(set, row, value, text, message);
    return parse_int(text, &value) ? set_int(set, row, value, text, message) : bad_value(row, text, message);
}

int32_t param_set_text(param_set *set, const char *name, const char *value, std::string *message)
{
    const param_row *row = param_find_name(name);
    if (row == nullptr) {
        const char *near = param_nearest(name);
        *message = "unknown parameter '" + shown(name) + "'";
        if (near != nullptr) *message += std::string(" (did you mean ") + near + "?)";
        return ZLR_RES_ERR_PARAM_NAME;
    }
    if (param_is_reserved(row)) return refuse_reserved(row, message);
    double number = 0.0;
    switch (row->param_class) {
    case ZLR_PAR_DOUBLE:
        return number_parse(trimmed(value), &number) ? set_double(set, row, number, value, message)
                                                     : bad_value(row, value, message);
    case ZLR_PAR_INT: return set_int_text(set, row, value, message);
    default: set->str[static_cast<size_t>(row->number)] = value; return ZLR_RES_OK;
    }
}

static int32_t tell(int32_t code, const std::string &message, stream_set *out)
{
    if (code != ZLR_RES_OK) streams_printf(out, ZLR_STREAM_ERR, "Parameter error: %s.\n", message.c_str());
    return code;
}

int32_t param_put_text(param_set *set, const char *name, const char *value, stream_set *out)
{
    std::string message;
    return tell(param_set_text(set, name, value, &message), message, out);
}

static int32_t no_such_number(const char *class_name, int32_t number, stream_set *out)
{
    return tell(ZLR_RES_ERR_PARAM_NAME,
                std::string("no ") + class_name + " parameter has number " + std::to_string(number), out);
}

int32_t param_put_double(param_set *set, int32_t number, double value, stream_set *out)
{
    const param_row *row = param_find(ZLR_PAR_DOUBLE, number);
    if (row == nullptr) return no_such_number("double", number, out);
    std::string message;
    return tell(set_double(set, row, value, param_double_text(value), &message), message, out);
}

int32_t param_put_int(param_set *set, int32_t number, int32_t value, stream_set *out)
{
    const param_row *row = param_find(ZLR_PAR_INT, number);
    if (row == nullptr) return no_such_number("integer", number, out);
    std::string message;
    return tell(set_int(set, row, value, std::to_string(value), &message), message, out);
}

int32_t param_put_str(param_set *set, int32_t number, const char *value, stream_set *out)
{
    const param_row *row = param_find(ZLR_PAR_STR, number);
    if (row == nullptr) return no_such_number("string", number, out);
    std::string message;
    if (param_is_reserved(row)) return tell(refuse_reserved(row, &message), message, out);
    set->str[static_cast<size_t>(number)] = value;
    return ZLR_RES_OK;
}

void param_set_defaults(param_set *set)
{
    set->dou.assign(static_cast<size_t>(param_num_double), 0.0);
    set->integer.assign(static_cast<size_t>(param_num_int), 0);
    set->str.assign(static_cast<size_t>(param_num_str), "");
    int32_t num = 0;
    const param_row *table = param_table(&num);
    for (const param_row *row = table; row != table + num; row++) {
        const auto number = static_cast<size_t>(row->number);
        if (row->param_class == ZLR_PAR_DOUBLE) set->dou[number] = row->def;
        if (row->param_class == ZLR_PAR_INT) set->integer[number] = static_cast<int32_t>(row->def);
        if (row->param_class == ZLR_PAR_STR) set->str[number] = row->str_def;
    }
}

bool param_is_default(const param_set *set, const param_row *row)
{
    const auto number = static_cast<size_t>(row->number);
    switch (row->param_class) {
    case ZLR_PAR_DOUBLE: return set->dou[number] == row->def;
    case ZLR_PAR_INT: return set->integer[number] == row->def;
    default: return set->str[number] == row->str_def;
    }
}

/* ---- Values as text ---- */

static std::string int_text(const param_row *row, int32_t value)
{
    const std::string_view word = word_of_value(row, value);
    return word.empty() ? std::to_string(value) : std::string(word);
}

std::string param_value_text(const param_set *set, const param_row *row)
{
    const auto number = static_cast<size_t>(row->number);
    switch (row->param_class) {
    case ZLR_PAR_DOUBLE: return param_double_text(set->dou[number]);
    case ZLR_PAR_INT: return int_text(row, set->integer[number]);
    default: return set->str[number];
    }
}

static std::string words_text(const param_row *row)
{
    std::string text;
    param_each_word(row, [&](std::string_view word, int32_t value) {
        if (!text.empty()) text += ", ";
        text += std::string(word) + " (" + std::to_string(value) + ")";
        return true;
    });
    return text;
}

std::string param_allowed_text(const param_row *row)
{
    if (row->param_class == ZLR_PAR_STR) return "a text";
    if (row->words != nullptr) return words_text(row);
    const bool whole = row->param_class == ZLR_PAR_INT;
    const auto text = [whole](double v) {
        return whole ? std::to_string(static_cast<int32_t>(v)) : param_double_text(v);
    };
    return std::string(whole ? "an integer" : "a number") + " from " + text(row->min) + " to " + text(row->max);
}
