/* problem_structure.cpp - see problem_facts.h. The network part of the matrix, and the quadratic parts. */
#include "solver/analysis/problem_facts.h"

#include <algorithm>
#include <cmath>

/* ---- network ------------------------------------------------------------------------------------------------------
 *
 * Rows of 1 and -1 form a network when no column has more than two entries in them and some of them can be turned round
 * in sign so that those two are a 1 and a -1. Rows are taken in one by one where that stays so. Whether it does is kept
 * as a forest: rows that columns tie together are in one tree, with the sign of each relative to its parent. The part
 * found need not be the largest there is, which would be a hard problem. */

/* A row's part in the forest. The search waits for memory more than for anything else, so what is used together stands
 * together. */
struct network_row {
    int32_t parent;       /* itself at a root */
    int32_t size = 1;     /* of a root's tree */
    int32_t seen_by = -1; /* of a root: the row that is being looked at and touches the tree */
    bool turned = false;  /* relative to the parent */
    bool wanted = false;  /* of a root, for seen_by: whether that row must be turned relative to it */
};

struct network_column {
    int32_t first_row = -1;
    uint8_t entries = 0; /* in rows taken so far */
    bool first_negative = false;
};

struct network_search {
    std::vector<network_row> rows;
    std::vector<network_column> columns;
    std::vector<int32_t> roots; /* of the row that is being looked at */
};

/* The root of a row's tree; *turned: of the row relative to it. Shortens the path. */
static int32_t root_of(network_search *net, int32_t row, bool *turned)
{
    network_row *rows = net->rows.data();
    int32_t at = row;
    *turned = false;
    while (rows[at].parent != at) {
        const int32_t up = rows[at].parent;
        if (rows[up].parent != up) {
            rows[at].turned = rows[at].turned != rows[up].turned;
            rows[at].parent = rows[up].parent;
        }
        *turned = *turned != rows[at].turned;
        at = rows[at].parent;
    }
    return at;
}

static bool fits(network_search *net, const row_matrix *rows, int32_t row)
{
    net->roots.clear();
    const auto end = static_cast<size_t>(rows->start[static_cast<size_t>(row) + 1]);
    for (auto k = static_cast<size_t>(rows->start[static_cast<size_t>(row)]); k < end; k++) {
        const network_column *col = &net->columns[static_cast<size_t>(rows->col[k])];
        if (col->entries == 2) return false;
        if (col->entries == 0) continue;
        bool turned = false;
        const int32_t at = root_of(net, col->first_row, &turned);
        network_row *root = &net->rows[static_cast<size_t>(at)];
        const bool is_same_sign = (rows->value[k] < 0.0) == col->first_negative;
        const bool wanted = turned != is_same_sign;
        if (root->seen_by != row) {
            root->seen_by = row;
            root->wanted = wanted;
            net->roots.push_back(at);
        } else if (root->wanted != wanted) {
            return false;
        }
    }
    return true;
}

/* Makes one tree of the row and the trees that it touches: the largest of them takes in the others, so that paths stay
 * short. */
static void join_trees(network_search *net, int32_t row)
{
    int32_t top = row;
    for (const int32_t root : net->roots)
        if (net->rows[static_cast<size_t>(root)].size > net->rows[static_cast<size_t>(top)].size) top = root;
    network_row *target = &net->rows[static_cast<size_t>(top)];
    const bool top_turned = top != row && target->wanted; /* the row relative to the top */

    for (const int32_t root : net->roots) {
        if (root == top) continue;
        network_row *joined = &net->rows[static_cast<size_t>(root)];
        joined->parent = top;
        joined->turned = joined->wanted != top_turned;
        target->size += joined->size;
    }
    if (top == row) return;
    net->rows[static_cast<size_t>(row)].parent = top;
    net->rows[static_cast<size_t>(row)].turned = top_turned;
    target->size++;
}

static void take_in(network_search *net, const row_matrix *rows, int32_t row, network_facts *facts)
{
    join_trees(net, row);
    const auto end = static_cast<size_t>(rows->start[static_cast<size_t>(row) + 1]);
    for (auto k = static_cast<size_t>(rows->start[static_cast<size_t>(row)]); k < end; k++) {
        network_column *col = &net->columns[static_cast<size_t>(rows->col[k])];
        if (col->entries++ > 0) {
            facts->arcs++;
            continue;
        }
        facts->columns++;
        col->first_row = row;
        col->first_negative = rows->value[k] < 0.0;
    }
    facts->rows++;
}

/* Equalities with coefficients of both signs are what networks are written as, and come first. */
void problem_find_network(problem_facts *facts)
{
    network_search net;
    net.rows.resize(static_cast<size_t>(facts->m->num_con));
    for (size_t i = 0; i < net.rows.size(); i++) net.rows[i].parent = static_cast<int32_t>(i);
    net.columns.resize(static_cast<size_t>(facts->m->num_var));

    for (const uint8_t wanted : {UNIT_BALANCE, UNIT_OTHER}) {
        for (int32_t i = 0; i < facts->m->num_con; i++) {
            const uint8_t which = facts->row_classes[static_cast<size_t>(i)];
            if (facts->unit_rows[static_cast<size_t>(i)] != wanted) continue;
            if (which == ROW_QUADRATIC || which == ROW_FREE || which == ROW_SINGLETON) continue;
            if (fits(&net, &facts->rows, i)) take_in(&net, &facts->rows, i, &facts->network);
        }
    }
}

/* ---- quadratic parts ---------------------------------------------------------------------------------------------- */

/* The two columns (or one, twice) that show that `sign` times a quadratic form is not convex; -1 when nothing shows:
 * only squares, and products against the squares of their columns, are looked at. `squares` is 0 everywhere and left
 * so. */
struct column_pair {
    int32_t i = -1, j = -1;
    double value = 0.0;
};

static column_pair not_convex_at(const std::vector<quad_term> &terms, double sign, std::vector<double> *squares)
{
    column_pair worst;
    for (const quad_term &t : terms)
        if (t.i == t.j) (*squares)[static_cast<size_t>(t.i)] = sign * t.value;
    for (const quad_term &t : terms) {
        const double square = (*squares)[static_cast<size_t>(t.i)] * (*squares)[static_cast<size_t>(t.j)];
        const bool shows = t.i == t.j ? sign * t.value < 0.0 : t.value * t.value > square * (1.0 + rounding_share);
        /* A negative square says more than a product: it comes first, then the size. */
        const bool beats = worst.i < 0 || (t.i == t.j && worst.i != worst.j) ||
                           ((t.i == t.j) == (worst.i == worst.j) && std::fabs(t.value) > std::fabs(worst.value));
        if (shows && beats) worst = {t.i, t.j, t.value};
    }
    for (const quad_term &t : terms) (*squares)[static_cast<size_t>(t.i)] = 0.0;
    return worst;
}

/* Squares with one negative square or one negative product of columns that are at least 0, and nothing linear:
 * x^2 + y^2 <= t^2, x^2 <= 2 u v. */
static bool is_cone(const problem_facts *facts, const quad_row *q, double sign, double side)
{
    const quad_term *negative = nullptr;
    const auto row = static_cast<size_t>(q->row);
    if (side != 0.0 || facts->rows.start[row] != facts->rows.start[row + 1]) return false;
    for (const quad_term &t : q->terms) {
        if (t.i == t.j && sign * t.value > 0.0) continue;
        if (negative != nullptr || sign * t.value > 0.0) return false;
        negative = &t;
    }
    if (negative == nullptr) return false;
    for (const quad_term &t : q->terms) /* the two of a product have no square of their own */
        if (&t != negative && (t.i == negative->i || t.i == negative->j)) return false;
    return facts->columns[static_cast<size_t>(negative->i)].lower >= 0.0 &&
           facts->columns[static_cast<size_t>(negative->j)].lower >= 0.0;
}

/* FIND_ROW_NOT_CONVEX: `other` and `third` are the columns that show it, a their coefficient; without them the row has two
 * sides, which no curved row can have. */
static void look_at_quad_row(problem_facts *facts, const quad_row *q, std::vector<double> *squares)
{
    const double lower = facts->m->con_lower[static_cast<size_t>(q->row)];
    const double upper = facts->m->con_upper[static_cast<size_t>(q->row)];

    facts->quadratic.row_terms += static_cast<int64_t>(q->terms.size());
    if (std::isinf(lower) && std::isinf(upper)) return;
    if (std::isfinite(lower) && std::isfinite(upper)) {
        facts->found[FIND_ROW_NOT_CONVEX].push_back({q->row, 0.0});
        return;
    }
    const double sign = std::isfinite(upper) ? 1.0 : -1.0;
    if (is_cone(facts, q, sign, sign > 0.0 ? upper : lower)) {
        facts->quadratic.cones++;
        return;
    }
    const column_pair at = not_convex_at(q->terms, sign, squares);
    if (at.i >= 0)
        facts->found[FIND_ROW_NOT_CONVEX].push_back({q->row, std::fabs(at.value), at.value, 0.0, at.i, at.j});
}

/* FIND_OBJ_NOT_CONVEX: at most one; index and `other` are the columns, a the coefficient. */
void problem_find_quadratic(problem_facts *facts)
{
    const model *m = facts->m;
    for (const quad_term &t : m->qobj) (t.i == t.j ? facts->quadratic.squares : facts->quadratic.products)++;
    for (const column_info &column : facts->columns) facts->quadratic.columns += column.is_quadratic ? 1 : 0;
    if (facts->quadratic.columns == 0) return;

    std::vector<double> squares(static_cast<size_t>(m->num_var), 0.0);
    const column_pair at = not_convex_at(m->qobj, m->sense == ZLR_SENSE_MAX ? -1.0 : 1.0, &squares);
    if (at.i >= 0) facts->found[FIND_OBJ_NOT_CONVEX].push_back({at.i, std::fabs(at.value), at.value, 0.0, at.j});
    for (const quad_row &q : m->qcon) look_at_quad_row(facts, &q, &squares);
}
