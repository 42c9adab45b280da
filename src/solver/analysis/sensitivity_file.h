/* sensitivity_file.h - what a sensitivity report is asked for.
 *
 *   rows | bounds | costs | all            everything of that kind
 *   row NAME [lower|upper]                 the sides of a row, or one of them
 *   bound NAME [lower|upper]               the bounds of a column, or one of them
 *   cost NAME                              the cost coefficient of a column
 *
 * One of these a line; # begins a comment; a name with blanks or # stands in double quotes, a quote in it is doubled. */
#pragma once

#include "solver/analysis/ranging.h"
#include "solver/io/io.h"

/* Every side and bound that exists, and every cost. `wanted`, by range_what, leaves kinds out; null: none. */
std::vector<range_item> sensitivity_all_items(const model *m, const bool *wanted);

/* Reads the file io->file. Returns ZLR_RES_ERR_FILE_READ, ZLR_RES_ERR_FILE_FORMAT; the message tells file, line and what was
 * found. Repeated items are kept as they come. */
[[nodiscard]] int32_t sensitivity_file_read(const io_context *io, const model *m, std::vector<range_item> *items);
