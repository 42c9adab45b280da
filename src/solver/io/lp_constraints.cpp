/* lp_constraints.cpp - the rows of an LP text.
 *
 *   [name:] expression sense number
 *   [name:] number sense expression [sense number]
 *
 * Variables stand on one side of a sense only: an unnamed row begins without any mark, so that "c1: x >= 2" with a "y"
 * behind it is two rows, and the same text on one line is refused because nobody can tell. */
#include "solver/io/lp_reader.h"

#include <cmath>

/* ---- names */

/* Appends a row, with the name that the token is if it is a label. */
static int32_t append_row(lp_reader *r)
{
    lp_lexer *lex = &r->lex;
    model *m = r->m;
    if (m->num_con == INT32_MAX) return lp_expected(lex, "a file with at most 2147483647 rows");
    if (lex->kind == LP_NAME && lp_colon_follows(lex)) {
        bool is_new = false;
        const int32_t row = name_index_intern(&r->con_index, &m->con_names, lex->text, &is_new);
        if (!is_new || row != m->num_con) return lp_expected(lex, "a row name that does not occur yet");
        lp_next(lex);
        lp_next(lex);
    } else {
        names_resize(&m->con_names, m->num_con + 1);
    }
    m->num_con++;
    m->con_lower.push_back(-model_inf);
    m->con_upper.push_back(model_inf);
    return lex->code;
}

/* ---- sides */

/* Sets what "activity sense value" says about the row being read. */
static int32_t set_side(lp_reader *r, lp_kind sense, double value)
{
    const bool below = value == -model_inf;
    const bool above = value == model_inf;
    if ((sense == LP_LESS && below) || (sense == LP_GREATER && above) || (sense == LP_EQUAL && (below || above)))
        return lp_expected(&r->lex, "a constraint that a finite activity can meet");
    if (sense != LP_LESS) r->m->con_lower.back() = value;
    if (sense != LP_GREATER) r->m->con_upper.back() = value;
    return ZLR_RES_OK;
}

static double limited(const lp_reader *r, double value)
{
    return std::fabs(value) >= r->infinite ? std::copysign(model_inf, value) : value;
}

/* The rest of "expression sense", from behind the sense. */
static int32_t read_right_number(lp_reader *r, lp_kind sense, const lp_side *left)
{
    double value = 0.0;
    int32_t res = lp_read_number(r, &value);
    if (res == ZLR_RES_OK) res = set_side(r, sense, value - left->constant);
    if (res == ZLR_RES_OK && lp_is_sense(r->lex.kind))
        res = lp_expected(&r->lex, "the next constraint (a range is written as number <= expression <= number)");
    return res;
}

/* The rest of "number sense", from behind the sense. */
static int32_t read_right_expression(lp_reader *r, lp_kind sense, const lp_side *left)
{
    lp_lexer *lex = &r->lex;
    lp_side side;
    int32_t res = lp_read_side(r, false, &side);
    if (res != ZLR_RES_OK) return res;
    if (!side.has_terms && !side.has_constant) return lp_expected(lex, "an expression or a number");
    if (!side.has_terms) return set_side(r, sense, limited(r, side.constant) - left->constant);

    res = set_side(r, lp_mirrored(sense), limited(r, left->constant) - side.constant);
    if (res != ZLR_RES_OK || !lp_is_sense(lex->kind)) return res;
    if (lex->kind != sense || sense == LP_EQUAL)
        return lp_expected(lex, sense == LP_LESS      ? "'<=' as on the left side of the range"
                                : sense == LP_GREATER ? "'>=' as on the left side of the range"
                                                      : "the next constraint");
    lp_next(lex);
    double value = 0.0;
    res = lp_read_number(r, &value);
    return res == ZLR_RES_OK ? set_side(r, sense, value - side.constant) : res;
}

/* What may stand behind a whole row. */
static int32_t check_row_end(lp_reader *r)
{
    lp_lexer *lex = &r->lex;
    if (lex->kind == LP_ARROW)
        return lex->code = io_error(lex->io, ZLR_RES_ERR_FILE_UNSUPPORTED, lex->line,
                                    "found '->': indicator constraints are not supported");
    if (lex->code != ZLR_RES_OK || lex->first_on_line || lp_at_section(r)) return lex->code;
    if (lex->kind == LP_NAME && lp_colon_follows(lex)) return lex->code;
    return lp_expected(lex, "the end of the constraint (variables stand on one side, and an unnamed "
                            "constraint begins on a line of its own)");
}

static int32_t finish_row(lp_reader *r)
{
    r->pending.row_ends[r->pending.num]++;
    if (r->quad.empty()) return ZLR_RES_OK;
    lp_quad_to_model(&r->quad);
    if (!r->quad.empty()) r->m->qcon.push_back({r->m->num_con - 1, r->quad});
    r->quad.clear();
    return ZLR_RES_OK;
}

static int32_t read_row(lp_reader *r)
{
    lp_lexer *lex = &r->lex;
    lp_side left;
    int32_t res = append_row(r);
    if (res == ZLR_RES_OK) res = lp_read_side(r, false, &left);
    if (res != ZLR_RES_OK) return res;
    if (!lp_is_sense(lex->kind)) return lp_expected(lex, "'+', '-', '<=', '>=' or '='");
    const lp_kind sense = lex->kind;
    lp_next(lex);
    if (left.has_terms || !left.has_constant)
        res = read_right_number(r, sense, &left);
    else
        res = read_right_expression(r, sense, &left);
    if (res == ZLR_RES_OK) res = check_row_end(r);
    if (res == ZLR_RES_OK) res = finish_row(r);
    return res;
}

int32_t lp_read_rows(lp_reader *r)
{
    while (!lp_at_section(r)) {
        const int32_t res = read_row(r);
        if (res != ZLR_RES_OK) return res;
    }
    if (r->lex.code != ZLR_RES_OK) return r->lex.code;
    return lp_add_pending(r, false);
}
