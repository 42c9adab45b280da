/* solution_parts.h - the parts of the analysis of a solution, each in a file of its own, and what they share. */
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/engines/gradient.h"

#include <string>
#include <vector>

/* What the parts look at, and the text that they add to. */
struct solution_view {
    const ZLR_task *task = nullptr;
    const model *m = nullptr;
    int32_t kind = ZLR_SOL_BAS;
    check_tolerances tol;
    solution sol;                      /* a copy: activities computed anew, duals put on their sides, checked */
    check_result found;                /* of that check */
    std::vector<reduced_cost> reduced; /* by column; empty without duals */
    size_t num_listed = 0;             /* names in a list */
    std::string text;
};

/* Rows and columns with a size each, the largest first; no more than `capacity` are kept. */
struct ranked_item {
    bool is_row;
    int32_t index;
    double size;
};

struct ranked_list {
    size_t capacity = 0;
    std::vector<ranked_item> items;
};

void ranked_add(ranked_list *list, const ranked_item &item);

/* "row NAME" or "column NAME". */
std::string solution_item_text(const solution_view *v, bool is_row, int32_t index);

/* A line "  words NAME"; the name has a line of its own where both do not fit into 80 columns. */
void solution_add_named(solution_view *v, const std::string &words, const std::string &name);

/* The items on lines of 80 columns, behind an indent: "row A 1.0e-03, column B 2.0e-04". */
void solution_add_list(solution_view *v, const ranked_list *list);

/* The parts. Each adds nothing where the solution has not what it is about. */
void solution_add_violations(solution_view *v);
void solution_add_basis(solution_view *v);
void solution_add_certificate(solution_view *v);
