/* cbf_reader.h - the state of the CBF reader, shared by its files; nothing else includes this.
 *
 *   cbf_read.cpp      lines and numbers, the order of sections, what the problem is made of when all is read
 *   cbf_structure.cpp VER, OBJSENSE, VAR, CON, INT, and the sections that are refused
 *   cbf_data.cpp      OBJACOORD, OBJBCOORD, ACOORD, BCOORD
 *
 * A section is a word on a line of its own, a line of counts and as many lines as these say. The sections that tell
 * sizes (VAR, CON) must stand before those that use them. Every coordinate stands once. */
#pragma once

#include "solver/io/cbf.h"
#include "solver/io/io.h"
#include "solver/io/line_reader.h"

#include <string_view>
#include <vector>

/* From entry `first` on, entry k stands in line `line` + (k - first): where a comment or an empty line comes between
 * entries a new run begins, so that the line of any entry is known without being kept. */
struct cbf_line_run {
    size_t first;
    int64_t line;
};

struct cbf_reader {
    const io_context *io = nullptr;
    model *m = nullptr;
    line_reader lines;
    double infinite = 1e16;
    double tiny = 1e-12;

    uint32_t seen = 0;        /* bit s: section number s has been met */
    const char *section = ""; /* the one at hand */
    int32_t num_var = 0;      /* of the file: slacks are not among them */
    int32_t num_con = 0;
    std::vector<cbf_block> var_blocks, con_blocks;
    std::vector<double> b; /* by row: what is added to it */

    std::vector<uint8_t> listed; /* of the section at hand, by row or column */

    std::vector<int32_t> row, col; /* entries of ACOORD until they are sorted by columns */
    std::vector<double> value;
    std::vector<cbf_line_run> runs;
};

/* An error in the line that was read last. */
int32_t cbf_fail(const cbf_reader *r, int32_t code, const char *format, ...) ZLR_PRINTF(3, 4);

/* The next line that is neither empty nor a comment, without its leading blanks; `lines.at_end` at the end. */
[[nodiscard]] int32_t cbf_next_line(cbf_reader *r, std::string_view *line);

/* The same inside a section, where the end of the file is an error. `what` is expected. */
[[nodiscard]] int32_t cbf_body_line(cbf_reader *r, const char *what, std::string_view *line);

/* Words of a line; empty at its end, where a comment may stand. */
std::string_view cbf_take_word(std::string_view *line);
[[nodiscard]] int32_t cbf_end_line(const cbf_reader *r, std::string_view line);

/* A count of `what`, at most `limit`. */
[[nodiscard]] int32_t cbf_take_count(const cbf_reader *r, std::string_view *line, const char *what, int64_t limit,
                                     int64_t *count);

/* The number of a row or column, which is below `num`. */
[[nodiscard]] int32_t cbf_take_index(const cbf_reader *r, std::string_view *line, const char *what, int32_t num,
                                     int32_t *index);
[[nodiscard]] int32_t cbf_take_value(const cbf_reader *r, std::string_view *line, double *value);

/* A line that holds a count and nothing else. */
[[nodiscard]] int32_t cbf_count_line(cbf_reader *r, const char *what, int64_t limit, int64_t *count);

/* The body of each section. */
[[nodiscard]] int32_t cbf_section_ver(cbf_reader *r);
[[nodiscard]] int32_t cbf_section_objsense(cbf_reader *r);
[[nodiscard]] int32_t cbf_section_var(cbf_reader *r);
[[nodiscard]] int32_t cbf_section_con(cbf_reader *r);
[[nodiscard]] int32_t cbf_section_int(cbf_reader *r);
[[nodiscard]] int32_t cbf_section_refused(cbf_reader *r);
[[nodiscard]] int32_t cbf_section_objacoord(cbf_reader *r);
[[nodiscard]] int32_t cbf_section_objbcoord(cbf_reader *r);
[[nodiscard]] int32_t cbf_section_acoord(cbf_reader *r);
[[nodiscard]] int32_t cbf_section_bcoord(cbf_reader *r);
