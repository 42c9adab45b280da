/* solution_reader.h - the state of the reader of solution files, shared by its files; nothing else includes this.
 *
 *   solution_read.cpp     tokens, the whole of a file, what follows from what was read
 *   solution_header.cpp   the keywords before the sections
 *   solution_sections.cpp the sections: their fields, finding rows, columns and cones, values
 *
 * Nothing is guessed: every row, column and cone that a section speaks of must be listed, exactly once and with every
 * field of the heading, and the file must end with [end]. */
#pragma once

#include "solver/io/line_reader.h"
#include "solver/io/solution_file.h"

#include <string>
#include <string_view>
#include <vector>

/* The rows, the columns or the cones of the problem, and which of them were listed. */
struct listed_items {
    const name_table *names = nullptr;
    char prefix = 'x';
    int32_t num = 0;
    const char *what = ""; /* "row", "column", "cone" */

    /* Made when names do not come in the problem's order. Without it a million names need no index. */
    name_table shown;
    name_index index;
    bool indexed = false, unique = true;

    std::vector<uint8_t> seen;
    int32_t count = 0;
    bool has_section = false, has_key = false, has_primal = false, has_dual = false;
};

struct solution_reader {
    const io_context *io;
    const model *m;
    int32_t kind;
    line_reader lines;
    solution sol;
    uint32_t keywords_seen = 0;
    bool holds_given = false;
    bool primal_obj_given = false;
    std::string quoted;    /* the last token, if it stood in quotes */
    name_table cone_names; /* none has one */
    listed_items items[NUM_ITEMS];
};

/* Errors in the line that was read last. */
int32_t solution_fail(const solution_reader *r, int32_t code, const char *format, ...) ZLR_PRINTF(3, 4);
int32_t solution_found_expected(const solution_reader *r, std::string_view found, const char *expected);

void solution_skip_blanks(std::string_view *rest);

/* The next token of a line, empty at its end. False for a malformed quotation. A token in quotes is valid until the
 * next one in quotes. */
[[nodiscard]] bool solution_take_token(solution_reader *r, std::string_view *rest, std::string_view *token);

/* The next line that is neither blank nor a comment. At the end of the file: at_end. */
[[nodiscard]] int32_t solution_next_line(solution_reader *r, std::string_view *line);
int32_t solution_cut_file(const solution_reader *r);

/* A line of the header. */
[[nodiscard]] int32_t solution_header_line(solution_reader *r, std::string_view line);

/* All sections, from the heading of the first one on, and the end of the file. */
[[nodiscard]] int32_t solution_read_sections(solution_reader *r, std::string_view line);
