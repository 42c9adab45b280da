/* names.h - the names of rows or columns, and the hash index that finds them.
 *
 * A table keeps all texts in one string, so that a million names are one allocation and not a million. The index is a
 * separate record: readers need it while they read, a finished task does not. Both keep row or column numbers, never
 * pointers, and so survive a copy. */
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct name_table {
    std::string text;           /* texts, each ended by 0, and what is left of replaced ones */
    std::vector<int64_t> start; /* where name i begins in `text`; -1: no name */
    int64_t wasted = 0;         /* about how many bytes of `text` nobody uses; names_put clears up in time */
};

void names_clear(name_table *table);
void names_reserve(name_table *table, int64_t num_names, int64_t num_bytes);

/* Makes the table hold `num` names; new ones are empty. */
void names_resize(name_table *table, int32_t num);

/* Appends a name and returns its number. */
int32_t names_append(name_table *table, std::string_view name);

/* Replaces name `i`; an empty text removes it. */
void names_put(name_table *table, int32_t i, std::string_view name);

/* Name `i`, empty if it has none. Valid until the table changes. */
std::string_view names_get(const name_table *table, int32_t i);

/* Name `i`, or `prefix` and the number from 1 on where it has none: what writers and reports show. */
std::string names_shown(const name_table *table, int32_t i, char prefix);

/* Open addressing with linear probing. A slot keeps the hash beside the number, so that growing does not touch the
 * texts and a probe compares texts only when the hashes agree. */
struct name_slot {
    uint32_t hash = 0;
    int32_t index = -1;
};

struct name_index {
    std::vector<name_slot> slots; /* a power of two, at most half full */
    int64_t num = 0;
};

/* Number of the name, or -1. */
int32_t name_index_find(const name_index *index, const name_table *table, std::string_view name);

/* The same, with the hash known. */
int32_t name_index_find_hashed(const name_index *index, const name_table *table, std::string_view name, uint32_t hash);

/* Adds name `i` of the table. Returns -1, or the number under which the same text is there already. */
int32_t name_index_add(name_index *index, const name_table *table, int32_t i);

/* The usual step of a reader: the number of a name, appended to table and index when it is new (*is_new). */
int32_t name_index_intern(name_index *index, name_table *table, std::string_view name, bool *is_new);

/* name_index_intern for several names in turn, none empty. Their look-ups overlap: with a table beyond the caches that is
 * several times as fast as one after the other. */
void name_index_intern_all(name_index *index, name_table *table, const std::string_view *names, size_t num,
                           int32_t *numbers);

/* Indexes a whole table. Returns -1, or the number of the first name that repeats an earlier one; empty names are left out. */
int32_t name_index_build(name_index *index, const name_table *table);

/* Many look-ups at a time. An index of a large model does not fit the caches, and a look-up waits for memory three
 * times: for the slot, for the place of the text and for the text. A reader that takes the steps below for a number of
 * names, each step for all of them, before it looks them up, waits for them together. The steps change nothing. */
uint32_t name_hash(std::string_view name);
void name_index_fetch_slot(const name_index *index, uint32_t hash);
int32_t name_index_fetch_start(const name_index *index, const name_table *table, uint32_t hash); /* likely number, -1 */
void name_index_fetch_text(const name_table *table, int32_t i);
