/* mps_reader.h - the state of the MPS reader, shared by its files; nothing else includes this.
 *
 *   mps_read.cpp     lines, the choice of the dialect, the end of a file
 *   mps_sections.cpp section headers, NAME, OBJSENSE, OBJNAME, ROWS
 *   mps_split.cpp    a line into fields, by blanks (free format) or by columns (fixed format)
 *   mps_columns.cpp  COLUMNS
 *   mps_vectors.cpp  RHS, RANGES, BOUNDS
 *   mps_quad.cpp     QUADOBJ, QSECTION, QMATRIX, QCMATRIX
 *
 * The dialect. Fields are divided by blanks, which reads all free files and all fixed ones but those with blanks inside
 * names. Unless a format is forced, a line that makes no sense in this way but does by the columns of the fixed format
 * shows such a file, and from there on columns count. So every step that takes a line checks all of it before it
 * changes anything, and tells what is wrong through mps_fail, which keeps the message until it is known to be final. */
#pragma once

#include "solver/io/io.h"
#include "solver/io/line_reader.h"

#include <string>
#include <string_view>
#include <vector>

inline constexpr int32_t mps_none = -1;      /* no row or column of that name */
inline constexpr int32_t mps_objective = -2; /* the objective, where the number of a row is asked for */

inline constexpr int32_t mps_max_fields = 8;

/* The fields of a line; comments behind data are still among them. */
struct mps_fields {
    std::string_view text[mps_max_fields];
    int32_t num = 0;
    uint32_t hash[2] = {0, 0}; /* of text[1] and text[3], where `hashed` */
    bool hashed = false;
    bool fixed = false; /* taken by columns: text[0..5] are the fields 1 to 6, num counts up to the last one used */
};

enum class mps_section {
    none,
    name,
    objsense,
    objname,
    rows,
    columns,
    rhs,
    ranges,
    bounds,
    quadobj,
    qsection,
    qmatrix,
    qcmatrix,
    endata
};

/* One pair of names and a value, or two with the same first name: the form of most lines. */
struct mps_pairs {
    std::string_view set; /* column, or name of the right-hand side, or empty */
    int32_t num = 0;
    std::string_view name[2];
    double value[2] = {};
    uint32_t hash[2] = {0, 0}; /* of the names, where `hashed` */
    bool hashed = false;
};

/* An entry of a column that stands in more than one place of the file. */
struct mps_late_entry {
    int32_t column, row;
    double value;
    int64_t line;
};

/* Something that is told once, with the place where it was met first. */
struct mps_tally {
    int64_t num = 0;
    int64_t first_line = 0;
    std::string first_name;
};

struct mps_quad_entry {
    int32_t i, j;
    double value;
    int64_t line;
};

/* A vector of which one set is read: the first, or one that a parameter names. */
struct mps_set {
    std::string name;
    bool known = false;
    bool asked_for = false; /* by a parameter */
    bool met = false;
    bool told = false; /* that another one is passed over */
};

struct mps_reader {
    const io_context *io = nullptr;
    model *m = nullptr;
    line_reader lines;
    std::string failure;        /* of the line at hand, not told yet */
    int32_t dialect = MPS_AUTO; /* as asked for; MPS_FIXED once blanks in names have been found */
    double infinite = 1e16;
    double tiny = 1e-12;
    int32_t duplicates = DUPLICATES_ERROR; /* parameters READ_MPS_... and others that the lines of a file call for */
    int32_t negative_upper_as = NEGATIVE_UPPER_FORMAT;
    int32_t objective_rhs_as = OBJECTIVE_RHS_NEGATE;

    mps_section section = mps_section::none;
    uint32_t seen = 0; /* bit s: section s has been met */
    int64_t section_line = 0;

    name_index row_index, column_index;
    bool has_objective = false;
    bool objective_chosen = false; /* by OBJNAME or a parameter */
    bool objective_asked = false;  /* by a parameter, which OBJNAME does not change */
    std::vector<char> row_type;    /* 'N', 'L', 'G', 'E', by row */
    std::vector<double> rhs;       /* by row, NaN where there is none */
    std::vector<double> range;     /* by row, NaN where there is none; empty before RANGES */
    bool objective_rhs = false;    /* the objective has a right-hand side */
    bool sense_given = false;
    mps_set rhs_set, range_set, bound_set;

    int32_t column = mps_none;     /* the one at hand */
    std::string column_name;       /* its name */
    bool in_integers = false;      /* between markers */
    bool column_late = false;      /* the column at hand stood in the file before */
    std::vector<int32_t> row_mark; /* last column with an entry in the row */
    int32_t objective_mark = mps_none;
    std::vector<mps_late_entry> late;

    std::vector<uint8_t> bound_given;      /* by column: 1 lower, 2 upper */
    int32_t column_hint = 0, row_hint = 0; /* where the next name is likely to be found */
    mps_tally negative_upper, bound_twice, entry_again, ignored_value, column_twice, entry_twice, quad_twice, quad_both,
        free_row_value;

    int32_t quad_row = mps_objective;
    std::vector<mps_quad_entry> quad;
};

/* Keeps a message for the line at hand and returns `code`; mps_tell tells it. */
int32_t mps_fail(mps_reader *r, int32_t code, const char *format, ...) ZLR_PRINTF(3, 4);
int32_t mps_tell(mps_reader *r, int32_t code, int64_t line);

/* Counts something that is told at the end. */
void mps_count(mps_tally *tally, std::string_view name, int64_t line);

/* Whether a set is the one to be read; tells that another one is passed over. */
[[nodiscard]] bool mps_set_taken(mps_reader *r, mps_set *set, std::string_view name, const char *what);

bool mps_is_word(std::string_view text, const char *upper_case_word); /* no regard to case */

/* The number of fields before a comment: the first field from `from` on that begins with $ or *. */
int32_t mps_before_comment(const mps_fields *fields, int32_t from);

/* Divides a line. The one by columns is false when the line does not keep to them. */
void mps_split_free(std::string_view line, mps_fields *fields);
[[nodiscard]] bool mps_split_fixed(std::string_view line, mps_fields *fields);

/* The pairs of a line of COLUMNS, RHS, RANGES. `set_optional`: a free line may leave the first name out. */
[[nodiscard]] int32_t mps_take_pairs(mps_reader *r, const mps_fields *fields, bool set_optional, mps_pairs *pairs);
[[nodiscard]] int32_t mps_take_number(mps_reader *r, std::string_view text, double *value);

/* Numbers of names, mps_none if there is none. */
int32_t mps_find_row(mps_reader *r, std::string_view name);
int32_t mps_find_column(mps_reader *r, std::string_view name);
[[nodiscard]] int32_t mps_need_row(mps_reader *r, std::string_view name, int32_t *row);
[[nodiscard]] int32_t mps_need_column(mps_reader *r, std::string_view name, int32_t *column);

/* A line that begins a section. Tells its own errors. */
[[nodiscard]] int32_t mps_take_header(mps_reader *r, std::string_view line);
[[nodiscard]] int32_t mps_end_section(mps_reader *r); /* what is left to be done when the one at hand has ended */
const char *mps_section_word(mps_section section);

/* One line of each section; what is to be done when it or the whole file has ended. */
[[nodiscard]] int32_t mps_line_rows(mps_reader *r, const mps_fields *fields);
[[nodiscard]] int32_t mps_line_single_word(mps_reader *r, const mps_fields *fields); /* OBJSENSE, OBJNAME */
[[nodiscard]] int32_t mps_line_columns(mps_reader *r, const mps_fields *fields);
[[nodiscard]] int32_t mps_end_columns(mps_reader *r);
[[nodiscard]] int32_t mps_line_rhs(mps_reader *r, const mps_fields *fields);
[[nodiscard]] int32_t mps_line_ranges(mps_reader *r, const mps_fields *fields);
[[nodiscard]] int32_t mps_line_bounds(mps_reader *r, const mps_fields *fields);
void mps_finish_rows(mps_reader *r);
[[nodiscard]] int32_t mps_finish_bounds(mps_reader *r);
[[nodiscard]] int32_t mps_finish_sets(mps_reader *r);
[[nodiscard]] int32_t mps_begin_quad(mps_reader *r, std::string_view row_name);
[[nodiscard]] int32_t mps_line_quad(mps_reader *r, const mps_fields *fields);
[[nodiscard]] int32_t mps_end_quad(mps_reader *r);
