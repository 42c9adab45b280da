/* word_list.cpp - see word_list.h. */
#include "solver/report/word_list.h"

#include <algorithm>

static constexpr std::string_view dividers = ", \t\r\n";

std::vector<std::string_view> word_list_split(std::string_view list)
{
    std::vector<std::string_view> words;
    for (;;) {
        list.remove_prefix(std::min(list.find_first_not_of(dividers), list.size()));
        if (list.empty()) return words;
        const size_t end = std::min(list.find_first_of(dividers), list.size());
        words.push_back(list.substr(0, end));
        list.remove_prefix(end);
    }
}

bool word_list_wants(std::string_view list, std::string_view word)
{
    const std::vector<std::string_view> words = word_list_split(list);
    return words.empty() || std::find(words.begin(), words.end(), word) != words.end();
}

void word_list_check(std::string_view list, const std::vector<std::string_view> &known, const char *param,
                     stream_set *out)
{
    for (const std::string_view word : word_list_split(list)) {
        if (std::find(known.begin(), known.end(), word) != known.end()) continue;
        std::string all;
        for (const std::string_view each : known) all += (all.empty() ? "" : ", ") + std::string(each);
        streams_printf(out, ZLR_STREAM_WRN, "Warning: %s: there is no '%.*s'; there are %s.\n", param,
                       static_cast<int>(word.size()), word.data(), all.c_str());
    }
}
