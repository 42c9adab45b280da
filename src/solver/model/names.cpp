/* names.cpp - see names.h. The table first, then the index. */
#include "solver/model/names.h"

#include <algorithm>
#include <cstring>

namespace
{
constexpr size_t slots_min = 16;
constexpr size_t compact_bytes = 4096; /* less waste than this is not worth a pass over the texts */

/* Whether name i of a table is `name`, without looking for its end first. */
bool name_equals(const name_table *table, int32_t i, std::string_view name)
{
    const int64_t start = table->start[static_cast<size_t>(i)];
    if (start < 0) return name.empty();
    const auto at = static_cast<size_t>(start);
    return table->text.size() - at > name.size() && table->text[at + name.size()] == '\0' &&
           std::memcmp(table->text.data() + at, name.data(), name.size()) == 0;
}

/* Slot of a name: the one that holds it, or the free one where it belongs. The index has slots, and free ones. */
size_t slot_find(const name_index *index, const name_table *table, std::string_view name, uint32_t hash)
{
    const size_t mask = index->slots.size() - 1;
    size_t at = hash & mask;
    for (;;) {
        const name_slot &slot = index->slots[at];
        if (slot.index < 0 || (slot.hash == hash && name_equals(table, slot.index, name))) return at;
        at = (at + 1) & mask;
    }
}

void index_grow(name_index *index, size_t size)
{
    std::vector<name_slot> slots(size);
    for (const name_slot &slot : index->slots) {
        if (slot.index < 0) continue;
        size_t at = slot.hash & (size - 1);
        while (slots[at].index >= 0) at = (at + 1) & (size - 1);
        slots[at] = slot;
    }
    index->slots.swap(slots);
}

void index_make_room(name_index *index, int64_t num)
{
    size_t size = index->slots.empty() ? slots_min : index->slots.size();
    while (size < 2 * static_cast<size_t>(num)) size *= 2;
    if (size > index->slots.size()) index_grow(index, size);
}

/* Copies the texts that are in use. */
void names_compact(name_table *table)
{
    std::string text;
    text.reserve(table->text.size() - static_cast<size_t>(table->wasted));
    for (int64_t &start : table->start) {
        if (start < 0) continue;
        const char *name = table->text.data() + start;
        start = static_cast<int64_t>(text.size());
        text.append(name, std::strlen(name) + 1);
    }
    table->text.swap(text);
    table->wasted = 0;
}
}  // namespace

/* Multiplies and folds eight bytes at a time: names are short, and their last characters, which differ most, must reach
 * every bit of the result. */
uint32_t name_hash(std::string_view name)
{
    constexpr uint64_t factor = 0x9e3779b97f4a7c15U;
    uint64_t hash = name.size() * factor;
    const char *p = name.data();
    size_t left = name.size();

    while (left >= 8) {
        uint64_t part = 0;
        std::memcpy(&part, p, 8);
        hash = (hash ^ part) * factor;
        hash ^= hash >> 29U;
        p += 8;
        left -= 8;
    }
    uint64_t part = 0;
    if (left >= 4) {
        uint32_t low = 0;
        uint32_t high = 0;
        std::memcpy(&low, p, 4);
        std::memcpy(&high, p + left - 4, 4);
        part = low | uint64_t{high} << 32U;
    } else if (left > 0) {
        part = static_cast<uint8_t>(p[0]) | uint64_t{static_cast<uint8_t>(p[left / 2])} << 8U |
               uint64_t{static_cast<uint8_t>(p[left - 1])} << 16U;
    }
    hash = (hash ^ part) * factor;
    hash ^= hash >> 32U;
    hash *= factor;
    return static_cast<uint32_t>(hash >> 32U);
}

void names_clear(name_table *table)
{
    table->text.clear();
    table->start.clear();
    table->wasted = 0;
}

void names_reserve(name_table *table, int64_t num_names, int64_t num_bytes)
{
    table->start.reserve(static_cast<size_t>(num_names));
    table->text.reserve(static_cast<size_t>(num_bytes));
}

void names_resize(name_table *table, int32_t num)
{
    for (auto i = static_cast<size_t>(num); i < table->start.size(); ++i)
        table->wasted += static_cast<int64_t>(names_get(table, static_cast<int32_t>(i)).size());
    table->start.resize(static_cast<size_t>(num), -1);
}

int32_t names_append(name_table *table, std::string_view name)
{
    table->start.push_back(name.empty() ? -1 : static_cast<int64_t>(table->text.size()));
    if (!name.empty()) {
        table->text.append(name);
        table->text.push_back('\0');
    }
    return static_cast<int32_t>(table->start.size() - 1);
}

void names_put(name_table *table, int32_t i, std::string_view name)
{
    int64_t &start = table->start[static_cast<size_t>(i)];
    const size_t old = names_get(table, i).size();

    if (name.empty()) {
        table->wasted += static_cast<int64_t>(old);
        start = -1;
    } else if (name.size() <= old) {
        /* memmove: the new text may be a part of the old one. */
        char *to = table->text.data() + start;
        std::memmove(to, name.data(), name.size());
        to[name.size()] = '\0';
        table->wasted += static_cast<int64_t>(old - name.size());
    } else {
        const std::string copy(name); /* the text may stand in this very table */
        table->wasted += static_cast<int64_t>(old);
        start = static_cast<int64_t>(table->text.size());
        table->text.append(copy.c_str(), copy.size() + 1);
    }
    if (static_cast<size_t>(table->wasted) > table->text.size() / 2 + compact_bytes) names_compact(table);
}

std::string_view names_get(const name_table *table, int32_t i)
{
    const int64_t start = table->start[static_cast<size_t>(i)];
    return start < 0 ? std::string_view() : std::string_view(table->text.data() + start);
}

std::string names_shown(const name_table *table, int32_t i, char prefix)
{
    const std::string_view name = names_get(table, i);
    return name.empty() ? prefix + std::to_string(int64_t{i} + 1) : std::string(name);
}

int32_t name_index_find(const name_index *index, const name_table *table, std::string_view name)
{
    return name_index_find_hashed(index, table, name, name_hash(name));
}

int32_t name_index_find_hashed(const name_index *index, const name_table *table, std::string_view name, uint32_t hash)
{
    if (index->slots.empty()) return -1;
    return index->slots[slot_find(index, table, name, hash)].index;
}

int32_t name_index_add(name_index *index, const name_table *table, int32_t i)
{
    index_make_room(index, index->num + 1);
    const std::string_view name = names_get(table, i);
    const uint32_t hash = name_hash(name);
    name_slot &slot = index->slots[slot_find(index, table, name, hash)];
    if (slot.index >= 0) return slot.index;
    slot = {hash, i};
    ++index->num;
    return -1;
}

int32_t name_index_intern(name_index *index, name_table *table, std::string_view name, bool *is_new)
{
    index_make_room(index, index->num + 1);
    const uint32_t hash = name_hash(name);
    name_slot &slot = index->slots[slot_find(index, table, name, hash)];
    *is_new = slot.index < 0;
    if (*is_new) {
        slot = {hash, names_append(table, name)};
        ++index->num;
    }
    return slot.index;
}

/* Each look-up waits for memory up to three times: the slot, where the text begins, the text. So each step is taken for
 * some names before the next step asks for what it has fetched. */
void name_index_intern_all(name_index *index, name_table *table, const std::string_view *names, size_t num,
                           int32_t *numbers)
{
    constexpr size_t group = 16;
    uint32_t hashes[group];
    for (size_t first = 0; first < num; first += group) {
        const size_t count = std::min(group, num - first);
        index_make_room(index, index->num + static_cast<int64_t>(count));
        const size_t mask = index->slots.size() - 1;
        for (size_t k = 0; k < count; ++k) {
            hashes[k] = name_hash(names[first + k]);
            __builtin_prefetch(&index->slots[hashes[k] & mask]);
        }
        for (size_t k = 0; k < count; ++k) {
            const name_slot &slot = index->slots[hashes[k] & mask];
            numbers[first + k] = slot.hash == hashes[k] ? slot.index : -1;
            if (numbers[first + k] >= 0) __builtin_prefetch(&table->start[static_cast<size_t>(slot.index)]);
        }
        for (size_t k = 0; k < count; ++k)
            if (numbers[first + k] >= 0)
                __builtin_prefetch(table->text.data() + table->start[static_cast<size_t>(numbers[first + k])]);
        for (size_t k = 0; k < count; ++k) {
            name_slot &slot = index->slots[slot_find(index, table, names[first + k], hashes[k])];
            if (slot.index < 0) {
                slot = {hashes[k], names_append(table, names[first + k])};
                ++index->num;
            }
            numbers[first + k] = slot.index;
        }
    }
}

int32_t name_index_build(name_index *index, const name_table *table)
{
    index->slots.clear();
    index->num = 0;
    index_make_room(index, static_cast<int64_t>(table->start.size()));
    for (int32_t i = 0; i < static_cast<int32_t>(table->start.size()); ++i)
        if (table->start[static_cast<size_t>(i)] >= 0 && name_index_add(index, table, i) >= 0) return i;
    return -1;
}

void name_index_fetch_slot(const name_index *index, uint32_t hash)
{
    if (!index->slots.empty()) __builtin_prefetch(&index->slots[hash & (index->slots.size() - 1)]);
}

int32_t name_index_fetch_start(const name_index *index, const name_table *table, uint32_t hash)
{
    if (index->slots.empty()) return -1;
    const size_t mask = index->slots.size() - 1;
    size_t at = hash & mask;
    while (index->slots[at].index >= 0 && index->slots[at].hash != hash) at = (at + 1) & mask;
    const int32_t i = index->slots[at].index;
    if (i >= 0) __builtin_prefetch(&table->start[static_cast<size_t>(i)]);
    return i;
}

void name_index_fetch_text(const name_table *table, int32_t i)
{
    const int64_t start = table->start[static_cast<size_t>(i)];
    if (start >= 0) __builtin_prefetch(table->text.data() + start);
}
