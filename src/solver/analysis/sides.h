/* sides.h - single sides of rows and single bounds of columns: what an infeasibility is made of. */
#pragma once

#include "solver/model/model.h"
#include "solver/model/solution.h"

#include <memory>
#include <string>
#include <vector>

struct model_side {
    bool is_row;
    bool is_upper;
    int32_t index;
};

/* Every side and bound that exists, rows first. */
std::vector<model_side> sides_all(const model *m);

/* Those that carry a multiplier in a certificate of infeasibility; in a maximisation they are negative. */
std::vector<model_side> sides_of_certificate(const solution *certificate);

/* "3 sides of rows and 1 bound". */
std::string sides_count_text(const std::vector<model_side> &sides);

double side_value(const model *m, const model_side *side);

/* A problem that has some sides of another and nothing else: the rows that they belong to, the columns that occur in
 * these or carry a bound, integrality, the cones that any of these columns are in, with all of their members; no
 * objective. Rows that are cones in disguise (solver/conic/disguise.h) are such only where their heads are at least 0: that
 * comes with them. */
struct side_head {
    int32_t row, column;
};

struct side_problem {
    std::shared_ptr<model> problem;
    std::vector<int32_t> row_of, col_of; /* numbers in the whole problem, ascending */
    std::vector<model_side> sides;       /* the given ones, in the same order, by numbers of the part */
    std::vector<side_head> heads;        /* of rows that are cones in disguise, by numbers of the part */
};

/* The heads of a convex problem's rows that are cones in disguise. */
std::vector<side_head> sides_heads(const model *m);

/* Holds heads without a lower bound at 0, where their row has its side. */
void sides_hold_heads(const std::vector<side_head> &heads, model *m);

side_problem sides_problem(const model *m, const std::vector<model_side> &sides, bool with_names);

/* A side as text: "c1: 2 x + 3 y >= 4" or "x <= 3", cut to `width` characters in the middle of a long row. */
std::string side_text(const model *m, const model_side *side, size_t width);
