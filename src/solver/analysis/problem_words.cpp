/* problem_words.cpp - see problem_words.h. */
#include "solver/analysis/problem_words.h"

#include "solver/report/streams.h"

#include <algorithm>
#include <cinttypes>

std::string row_name(const problem_facts *facts, int32_t row) { return names_shown(&facts->m->con_names, row, 'c'); }

std::string column_name(const problem_facts *facts, int32_t col) { return names_shown(&facts->m->var_names, col, 'x'); }

/* Appends a word, on a new line where the present one has no room for it. `*used`: how much of that line is written. */
static void append_word(std::string *text, size_t *used, size_t indent, const std::string &word)
{
    if (*used > indent && *used + 1 + word.size() > report_width) {
        text->append("\n").append(indent, ' ');
        *used = indent;
    } else if (*used > indent) {
        text->append(" ");
        ++*used;
    }
    text->append(word);
    *used += word.size();
}

static void append_words(std::string *text, size_t *used, size_t indent, const std::string &words)
{
    for (size_t at = 0; at < words.size();) {
        const size_t end = std::min(words.find(' ', at), words.size());
        append_word(text, used, indent, words.substr(at, end - at));
        at = end + 1;
    }
}

/* Writes the lead, filled up to the indent so that what follows stands in line. Returns how much of the line is used. */
static size_t append_lead(std::string *text, const std::string &lead, size_t indent)
{
    text->append(lead);
    if (lead.size() < indent) text->append(indent - lead.size(), ' ');
    return lead.size() < indent ? indent : lead.size();
}

void words_list(std::string *text, const std::string &lead, size_t indent, const std::vector<std::string> &items)
{
    size_t used = append_lead(text, lead, indent);
    for (size_t k = 0; k < items.size(); k++) {
        const bool has_comma = k + 1 < items.size() && items[k + 1].rfind("and ", 0) != 0;
        const std::string item = has_comma ? items[k] + "," : items[k];
        if (indent + item.size() <= report_width)
            append_word(text, &used, indent, item);
        else
            append_words(text, &used, indent, item);
    }
    text->append("\n");
}

void words_sentence(std::string *text, const std::string &lead, size_t indent, const std::string &sentence)
{
    size_t used = append_lead(text, lead, indent);
    append_words(text, &used, indent, sentence);
    text->append("\n");
}

std::vector<std::string> words_counts(const std::vector<std::pair<int64_t, const char *>> &parts)
{
    std::vector<std::string> items;
    for (const auto &[num, what] : parts)
        if (num != 0) items.push_back(text_format("%" PRId64 " %s", num, what));
    return items;
}

std::string words_number(int64_t num, const char *one, const char *many)
{
    return text_format("%" PRId64 " %s", num, num == 1 ? one : many);
}

std::string words_short(int64_t num)
{
    if (num == 0) return ".";
    if (num < 100000) return text_format("%" PRId64, num);
    if (num < 1000000) return text_format("%" PRId64 "k", num / 1000);
    if (num < 100000000) return text_format("%.3gM", static_cast<double>(num) / 1e6);
    return text_format("%" PRId64 "M", num / 1000000);
}
