/* lp_writer.h - what the parts of the LP writer share: text in lines, names, and which columns the objective lists. */
#pragma once

#include "solver/io/io.h"
#include "solver/model/names.h"

#include <string>
#include <string_view>

/* Text in lines of limited length, broken between pieces. A longer piece stands on a line of its own. */
struct lp_text {
    byte_sink *out = nullptr;
    std::string buffer;
    size_t line_length = 0;
    size_t line_limit = 78;
};

/* Starts a line with `start`, after ending the one before. */
void lp_text_line(lp_text *text, std::string_view start);

/* Appends a blank and a piece, on a new line where it does not fit. */
void lp_text_piece(lp_text *text, std::string_view piece);

/* Hands the rest to the sink. Returns the sink's first error. */
[[nodiscard]] int32_t lp_text_end(lp_text *text);

/* As number_write. */
void lp_append_number(std::string *text, double value, int32_t digits);

/* The names as they are written: the model's, or generated ones where it has none, or one that an LP file cannot hold or
 * that is there already. */
struct lp_names {
    const name_table *shown = nullptr; /* the model's table or `own` */
    name_table own;
    name_index index; /* of `shown` */
};

/* Fills `names`, and warns once if names of the model were replaced. `table` lives as long as `names`. */
void lp_names_make(const io_context *io, const name_table *table, int32_t num, bool is_columns, lp_names *names);

/* Whether a text can stand in an LP file as the name of a row or of the objective. */
bool lp_name_can_stand(std::string_view name);

/* A name that the index does not hold: `wish`, or `wish` with underscores behind it. */
std::string lp_name_unused(const lp_names *names, std::string wish);

/* The matrix by rows; columns ascend in each. */
struct lp_matrix {
    std::vector<int64_t> start;
    std::vector<int32_t> col;
    std::vector<double> value;
};

void lp_matrix_make(const model *m, lp_matrix *a);

/* How many columns, from the first on, the objective must list with whatever cost they have, so that a reader that
 * numbers columns as it meets them numbers them as the model does. */
int32_t lp_listed_columns(const model *m, const lp_matrix *a);
