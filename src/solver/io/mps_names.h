/* mps_names.h - the names under which the MPS writer writes rows and columns.
 *
 * A name that the format cannot hold is replaced: an empty one, one with blanks or control characters inside, with $ or
 * * in front, longer than 255 bytes (8 in the fixed layout), one that stands for two rows or columns, and 'MARKER' in its quotes. */
#pragma once

#include "solver/io/io.h"

#include <string>
#include <string_view>
#include <vector>

inline constexpr size_t mps_longest_name = 255;
inline constexpr size_t mps_longest_fixed_name = 8;

struct mps_name_list {
    const name_table *own = nullptr;
    std::vector<int32_t> replaced; /* by row or column: number in `made`, or -1; empty: nothing is replaced */
    name_table made;
    name_index own_index, made_index; /* of the names that stay, and of the new ones */
    std::string reserved;
    size_t longest = mps_longest_name;
    int64_t num_refused = 0; /* names that there were and that are replaced */
    int32_t first_refused = -1;
};

/* Finds names for `num` rows or columns, of the list's greatest length. `reserved` is taken by something else of the same kind; may be empty. */
void mps_names_make(mps_name_list *list, const name_table *own, int32_t num, char prefix, std::string_view reserved);

std::string_view mps_name(const mps_name_list *list, int32_t i);

/* Whether a name can stand in the format. */
bool mps_name_holds(std::string_view name, size_t longest);

/* A name that is neither in the list nor in use so far: `base`, or `base` with a number, cut to what is allowed. It is put
 * into the list. */
std::string mps_name_new(mps_name_list *list, const std::string &base);

/* Tells what was replaced, in one warning for rows and columns together. */
void mps_names_tell(const io_context *io, const mps_name_list *rows, const mps_name_list *columns);
