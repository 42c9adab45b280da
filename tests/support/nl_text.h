/* nl_text.h - writes AMPL stubs for tests, as text or binary. A model is what the test says: nothing is checked, and counts
 * in the header can be set to anything. Rows that are not linear come first, as the format wants it. */
#pragma once

#include <string>
#include <utility>
#include <vector>

inline constexpr double nl_infinite = 1e300; /* a bound of this size is none */

using nl_terms = std::vector<std::pair<int, double>>;

/* An expression in the text form, one item a line: "o5\nv0\nn2\n". */
using nl_expression = std::string;

struct nl_column {
    double lower = 0.0, upper = nl_infinite;
};

struct nl_row {
    double lower = -nl_infinite, upper = nl_infinite;
    nl_terms linear = {};
    nl_expression nonlinear = {}; /* empty: none */
};

struct nl_objective {
    nl_terms linear = {};
    nl_expression nonlinear = {};
    bool maximise = false;
    double constant = 0.0; /* where there is no expression */
};

struct nl_suffix {
    int kind = 0; /* 0 column, 1 row, 2 objective, 3 problem; 4 more: real values */
    std::string name;
    nl_terms values;
};

/* A common expression, the n-th of which is the variable columns + n. */
struct nl_common {
    nl_terms linear;
    nl_expression nonlinear;
};

struct nl_function {
    std::string name;
    int num_args = 1;
};

struct nl_model {
    std::vector<nl_column> columns;
    std::vector<nl_row> rows;
    std::vector<nl_objective> objectives;
    std::vector<nl_common> commons; /* used by constraints and objectives */
    std::vector<nl_function> functions;
    std::vector<nl_suffix> suffixes;
    nl_terms x, y;                    /* initial values */
    int nlvc = 0, nlvo = 0, nlvb = 0; /* leading columns that are not linear in rows, objectives, both */
    int nbv = 0, niv = 0, nlvbi = 0, nlvci = 0,
        nlvoi = 0; /* integer columns: linear binary, linear, and of those three */
    int max_row_name = 0, max_column_name = 0;
    int num_complementarities = 0, num_logical = 0;
};

enum nl_form { NL_TEXT, NL_BINARY, NL_SWAPPED }; /* the last in the other byte order than this machine's */

std::string nl_text(const nl_model &model, nl_form form = NL_TEXT);

/* ---- Expressions ---- */

nl_expression nl_number(double value);
nl_expression nl_variable(int j);
nl_expression nl_product(const nl_expression &a, const nl_expression &b);
nl_expression nl_plus(const nl_expression &a, const nl_expression &b);
nl_expression nl_square(int j); /* of a column */
nl_expression nl_exp(const nl_expression &a);

/* A line of it taken away, replaced or added, for stubs that are damaged on purpose: `number` from 1. */
std::string nl_without_line(const std::string &text, int number);
std::string nl_with_line(const std::string &text, int number, const std::string &line);
int nl_count_lines(const std::string &text);
