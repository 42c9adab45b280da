/* mps_names.cpp - see mps_names.h. */
#include "solver/io/mps_names.h"

#include <algorithm>

namespace
{
bool is_bad_character(char c) { return static_cast<unsigned char>(c) <= ' ' || c == '\x7f'; }
}  // namespace

bool mps_name_holds(std::string_view name, size_t longest)
{
    if (name.empty() || name.size() > longest || name[0] == '$' || name[0] == '*' || name == "'MARKER'") return false;
    return std::none_of(name.begin(), name.end(), is_bad_character);
}

void mps_names_make(mps_name_list *list, const name_table *own, int32_t num, char prefix, std::string_view reserved)
{
    std::vector<int32_t> refused;
    list->own = own;
    list->reserved = reserved;
    for (int32_t i = 0; i < num; ++i) {
        const std::string_view name = names_get(own, i);
        if (!mps_name_holds(name, list->longest) || name == reserved || name_index_add(&list->own_index, own, i) >= 0)
            refused.push_back(i);
    }
    if (refused.empty()) return;
    list->replaced.assign(static_cast<size_t>(num), -1);
    for (const int32_t i : refused) {
        if (!names_get(own, i).empty() && list->num_refused++ == 0) list->first_refused = i;
        mps_name_new(list, prefix + std::to_string(int64_t{i} + 1));
        list->replaced[static_cast<size_t>(i)] = static_cast<int32_t>(list->made.start.size()) - 1;
    }
}

std::string_view mps_name(const mps_name_list *list, int32_t i)
{
    const int32_t made = list->replaced.empty() ? -1 : list->replaced[static_cast<size_t>(i)];
    return made < 0 ? names_get(list->own, i) : names_get(&list->made, made);
}

namespace
{
/* A base and an ending, with as much of the base as there is room for. */
std::string name_within(const std::string &base, const std::string &ending, size_t longest)
{
    return base.substr(0, longest - std::min(longest, ending.size())) + ending;
}
}  // namespace

std::string mps_name_new(mps_name_list *list, const std::string &base)
{
    std::string name = name_within(base, "", list->longest);
    for (int64_t k = 1; name == list->reserved || name_index_find(&list->own_index, list->own, name) >= 0 ||
                        name_index_find(&list->made_index, &list->made, name) >= 0;
         ++k)
        name = name_within(base, "_" + std::to_string(k), list->longest);
    bool is_new = false;
    name_index_intern(&list->made_index, &list->made, name, &is_new);
    return name;
}

void mps_names_tell(const io_context *io, const mps_name_list *rows, const mps_name_list *columns)
{
    const int64_t num = rows->num_refused + columns->num_refused;
    const mps_name_list *first = rows->num_refused > 0 ? rows : columns;
    if (num == 0) return;
    const std::string old_name = io_quote(names_get(first->own, first->first_refused));
    const std::string new_name(mps_name(first, first->first_refused));
    io_warning(io, 0, "%lld names cannot stand in an MPS file and are replaced; the first is '%s', written as '%s'",
               static_cast<long long>(num), old_name.c_str(), new_name.c_str());
}
