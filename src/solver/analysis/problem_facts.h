/* problem_facts.h - what the analysis of a problem finds: the record between its finders and its printer.
 *
 * The finders below are called once each, in the order in which they stand; each takes time linear in the nonzeros and
 * fills its own part of the record. A finding is one row or column (or a pair) with something to be said about it;
 * problem_advice.cpp knows the words for each kind. Coefficients that are stored as 0 count nowhere but in
 * `num_stored_zeros`. */
#pragma once

#include "solver/engines/check.h"
#include "solver/model/model.h"

#include <cstdint>
#include <string>
#include <vector>

/* ---- sizes of numbers --------------------------------------------------------------------------------------------- */

/* Sizes are counted by decade: [1e-20, 1e-19) ... [1e+20, ...). What is beyond goes to the first and the last. */
inline constexpr int32_t decade_first = -20;
inline constexpr int32_t decade_last = 20;
inline constexpr int32_t num_decades = decade_last - decade_first + 1;

/* Finite values that are not 0, by size. The places are row and column of the first value of that size, -1: none. */
struct size_counts {
    int64_t num[num_decades] = {};
    int64_t total = 0;
    double least = model_inf, most = 0.0;
    int32_t least_row = -1, least_col = -1, most_row = -1, most_col = -1;
};

enum size_group { SIZES_MATRIX, SIZES_QUADRATIC, SIZES_COST, SIZES_BOUNDS, SIZES_SIDES, NUM_SIZE_GROUPS };

void sizes_add(size_counts *sizes, double value, int32_t row, int32_t col);

/* ---- the matrix --------------------------------------------------------------------------------------------------- */

struct row_matrix {
    std::vector<int64_t> start;
    std::vector<int32_t> col; /* ascending in each row */
    std::vector<double> value;
};

/* What a walk along a row asks of a column, in one place so that a visit costs one access to memory. The bounds are
 * in order even where the model's are crossed, which is a finding of its own. */
struct column_info {
    double lower, upper;
    bool is_int, is_binary;
    bool is_quadratic; /* occurs in a quadratic term */
    bool is_conic;     /* is in a cone, which can stop it where no bound and no row does */
};

/* ---- structure ---------------------------------------------------------------------------------------------------- */

/* A row has the first class that fits, in this order. "Equal" and "not equal": whether both sides are the same. */
enum row_class {
    ROW_QUADRATIC,
    ROW_FREE,
    ROW_EMPTY,
    ROW_SINGLETON,
    ROW_PARTITIONING, /* exactly one of these binary columns or complements is 1 */
    ROW_PACKING,      /* at most one */
    ROW_COVERING,     /* at least one */
    ROW_CARDINALITY,  /* some other number of them */
    ROW_VARIABLE_BOUND,
    ROW_PAIR, /* two columns, equal */
    ROW_KNAPSACK_EQUAL,
    ROW_KNAPSACK,
    ROW_INTEGER_EQUAL,
    ROW_INTEGER,
    ROW_MIXED_BINARY,
    ROW_MIXED_INTEGER,
    ROW_BALANCE, /* continuous, equal, all coefficients 1 or -1, both occur */
    ROW_CONTINUOUS_EQUAL,
    ROW_CONTINUOUS,
    NUM_ROW_CLASSES
};

/* Rows whose coefficients are all 1 or -1; of these, equalities with both. */
enum unit_row : uint8_t { UNIT_NOT, UNIT_OTHER, UNIT_BALANCE };

struct line_length {
    int32_t index;
    int64_t length;
};

struct network_facts {
    int32_t rows = 0;    /* that form a network, after turning the sign of some */
    int32_t columns = 0; /* with entries in them */
    int32_t arcs = 0;    /* columns with two entries in them */
};

struct quadratic_facts {
    int64_t squares = 0, products = 0; /* of the objective */
    int32_t columns = 0;               /* in any quadratic term */
    int64_t row_terms = 0;
    int32_t cones = 0; /* quadratic rows that have the form of a second-order cone */
};

struct parallel_facts {
    int32_t rows = 0, equal_rows = 0;       /* parallel to an earlier row; of these, with the same sides */
    int32_t columns = 0, equal_columns = 0; /* the same for columns; with the same cost and type */
};

struct big_m_facts {
    int32_t rows = 0;
    double least = model_inf, most = 0.0; /* M in units of the largest other coefficient of its row */
};

/* ---- findings ----------------------------------------------------------------------------------------------------- */

enum finding_kind {
    /* no solution */
    FIND_SIDES_CROSSED,
    FIND_BOUNDS_CROSSED,
    FIND_NO_INTEGER,
    FIND_UNREACHABLE,
    FIND_DIVISOR,
    FIND_CONTRADICTION,
    FIND_UNBOUNDED,
    /* doubtful */
    FIND_OBJ_NOT_CONVEX,
    FIND_ROW_NOT_CONVEX,
    FIND_SCALING,
    FIND_COST_SPREAD,
    FIND_COEF_TINY,
    FIND_BIG_M,
    FIND_BOUND_LARGE,
    FIND_SIDE_LARGE,
    FIND_BOUND_TINY,
    FIND_SIDE_TINY,
    FIND_BOUNDS_CLOSE,
    FIND_SIDES_CLOSE,
    FIND_BOUND_FRACTION,
    /* could be simpler */
    FIND_M_SMALLER,
    FIND_FORCED,
    FIND_REDUNDANT,
    FIND_ROW_PARALLEL,
    FIND_SINGLETON,
    FIND_ROW_EMPTY,
    FIND_ROW_FREE,
    FIND_COLUMN_EQUAL,
    FIND_COLUMN_EMPTY,
    FIND_COLUMN_FIXED,
    NUM_FINDINGS
};

/* `rank` orders the findings of a kind, largest first. What the rest holds depends on the kind: see where it is made. */
struct finding {
    int32_t index;
    double rank;
    double a = 0.0, b = 0.0;
    int32_t other = -1, third = -1;
};

/* ---- the record --------------------------------------------------------------------------------------------------- */

/* What is doubtful, and what the report shows, by the task's parameters. */
struct problem_rules {
    /* From here on the rounding of a double (2e-16 of it) comes near the feasibility tolerance of 1e-6: no engine can
     * meet it. Bounds and sides of that size are as a rule meant as "none". */
    double large_value = 1e9;
    double tiny_coefficient = 1e-9; /* engines take coefficients below this for 0 */

    /* From here on a coefficient counts as big: below, it may as well be data like a capacity beside pieces. */
    double big_ratio = 100.0;

    /* What no scaling of rows and columns takes away loses digits: seen from the largest coefficient of a row, a unit of
     * the smallest is lost in a feasibility tolerance of 1e-6. Models that engines solve well stay below 1e5. */
    double harmful_spread = 1e6;

    bool full = false; /* all names and classes; what follows is of the screen */
    bool advice = true, sizes = true, structure = true, parallel = true;
    size_t names_grave = 4, names_simple = 3; /* of a point that is grave, and of one that is only nice to know */
    int64_t most_lines = 16;                  /* of all points */
    size_t num_longest = 3;
};

struct problem_facts {
    const model *m = nullptr;
    check_tolerances tol;
    problem_rules rules;

    row_matrix rows;
    std::vector<column_info> columns;
    std::vector<int32_t> column_length;
    std::vector<uint8_t> is_quadratic_row;
    int64_t num_nz = 0, num_stored_zeros = 0;

    size_counts sizes[NUM_SIZE_GROUPS];
    int32_t row_keys[5] = {};       /* by bound key */
    int32_t column_keys[3][5] = {}; /* by column_kind and bound key */

    std::vector<uint8_t> row_classes; /* row_class of each row */
    std::vector<uint8_t> unit_rows;   /* unit_row of each row */
    int32_t class_count[NUM_ROW_CLASSES] = {};
    std::vector<line_length> longest_rows, longest_columns; /* longest first, at most num_longest */

    network_facts network;
    quadratic_facts quadratic;
    parallel_facts parallel;
    big_m_facts big_m;
    double scaled_spread = 1.0; /* largest over smallest coefficient after scaling; 1 where it was not asked for */

    std::vector<finding> found[NUM_FINDINGS];
};

enum column_kind { COLUMN_CONTINUOUS, COLUMN_BINARY, COLUMN_INTEGER };

inline constexpr size_t num_longest = 10;

/* ---- limits ------------------------------------------------------------------------------------------------------- */

/* Rounding in a few additions of what came out of a file with 12 digits. */
inline constexpr double rounding_share = 1e-9;

inline double rounding_room(double value)
{
    return rounding_share * (value < -1.0 ? -value : (value > 1.0 ? value : 1.0));
}

/* ---- the finders -------------------------------------------------------------------------------------------------- */

/* problem_facts.cpp: rows, columns, sizes of numbers, keys, lengths. */
void problem_collect(const model *m, const check_tolerances *tol, problem_facts *facts);

/* problem_rows.cpp: classes of rows, and what the bounds of its columns say of a row. */
void problem_find_rows(problem_facts *facts);

/* problem_columns.cpp */
void problem_find_columns(problem_facts *facts);

/* problem_parallel.cpp */
void problem_find_parallel(problem_facts *facts);

/* problem_structure.cpp: the network and the quadratic parts. */
void problem_find_network(problem_facts *facts);
void problem_find_quadratic(problem_facts *facts);

/* problem_scaling.cpp */
void problem_find_scaling(problem_facts *facts);

/* All of these, in that order, by facts->rules. */
void problem_find_all(const model *m, const check_tolerances *tol, problem_facts *facts);

/* The activities that the bounds of its columns leave to a row: the finite parts, the columns without an end, and the
 * sizes of all finite parts added up, for rounding. */
struct row_reach {
    double least = 0.0, most = 0.0;
    int32_t endless_down = 0, endless_up = 0;
    double terms = 0.0;
};

/* Adds a column with its coefficient. */
void reach_add(row_reach *reach, double value, const column_info *column);

inline double reach_least(const row_reach *reach) { return reach->endless_down > 0 ? -model_inf : reach->least; }
inline double reach_most(const row_reach *reach) { return reach->endless_up > 0 ? model_inf : reach->most; }

/* problem_big_m.cpp: looks at one row without a quadratic part, of which `most` is the largest coefficient. */
void problem_look_for_big_m(problem_facts *facts, int32_t row, double most);

/* ---- the words ---------------------------------------------------------------------------------------------------- */

/* problem_advice.cpp: the advice as text, to be printed last. */
std::string problem_advice(const problem_facts *facts);

/* problem_print.cpp: all of the report. */
std::string problem_report(const problem_facts *facts);
