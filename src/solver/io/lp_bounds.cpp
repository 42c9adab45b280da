/* lp_bounds.cpp - the sections Bounds, General and Binary of an LP text.
 *
 *   [number sense] name [sense number]      name free
 *
 * The last bound given for a side counts. A binary column keeps bounds that were given for it inside 0 and 1. */
#include "solver/io/lp_reader.h"

#include <algorithm>

/* Sets what "column sense value" says. */
static int32_t set_bound(lp_reader *r, int32_t col, lp_kind sense, double value)
{
    const auto j = static_cast<size_t>(col);
    const bool below = value == -model_inf;
    const bool above = value == model_inf;
    if ((sense == LP_LESS && below) || (sense == LP_GREATER && above) || (sense == LP_EQUAL && (below || above)))
        return lp_expected(&r->lex, "a bound that a finite value can meet");
    if (sense != LP_LESS) {
        r->m->var_lower[j] = value;
        r->given[j] |= LP_GIVEN_LOWER;
    }
    if (sense != LP_GREATER) {
        r->m->var_upper[j] = value;
        r->given[j] |= LP_GIVEN_UPPER;
    }
    return ZLR_RES_OK;
}

/* The column that the token names. One that no expression has is taken as an empty column, and told, or refused. */
static int32_t read_column(lp_reader *r, int32_t *col)
{
    lp_lexer *lex = &r->lex;
    bool is_new = false;
    if (lex->kind != LP_NAME) return lp_expected(lex, "a variable name");
    const int32_t res = lp_column_at(r, col, &is_new);
    if (res != ZLR_RES_OK) return res;
    if (is_new && param_int(lex->io->params, IPAR_READ_LP_NEW_COLUMNS) == NEW_COLUMNS_ERROR)
        return lex->code = io_error(lex->io, ZLR_RES_ERR_FILE_FORMAT, lex->line,
                                    "found '%s' where a variable of the objective or a constraint was expected "
                                    "(READ_LP_NEW_COLUMNS)",
                                    io_quote(lex->text).c_str());
    if (is_new) lp_remember(r, LP_NOTE_NEW_COLUMN, lex->line, lex->text);
    lp_next(lex);
    return lex->code;
}

static int32_t read_sense(lp_reader *r, lp_kind *sense)
{
    if (!lp_is_sense(r->lex.kind)) return lp_expected(&r->lex, "'<=', '>=' or '='");
    *sense = r->lex.kind;
    lp_next(&r->lex);
    return r->lex.code;
}

/* sense number, behind a column. */
static int32_t read_right_bound(lp_reader *r, int32_t col)
{
    lp_kind sense = LP_EQUAL;
    double value = 0.0;
    int32_t res = read_sense(r, &sense);
    if (res == ZLR_RES_OK) res = lp_read_number(r, &value);
    return res == ZLR_RES_OK ? set_bound(r, col, sense, value) : res;
}

/* number sense name [sense number] */
static int32_t read_left_bound(lp_reader *r)
{
    double value = 0.0;
    lp_kind sense = LP_EQUAL;
    int32_t col = 0;
    int32_t res = lp_read_number(r, &value);
    if (res == ZLR_RES_OK) res = read_sense(r, &sense);
    if (res == ZLR_RES_OK) res = read_column(r, &col);
    if (res == ZLR_RES_OK) res = set_bound(r, col, lp_mirrored(sense), value);
    if (res != ZLR_RES_OK || !lp_is_sense(r->lex.kind)) return res;
    if (r->lex.kind != sense || sense == LP_EQUAL) return lp_expected(&r->lex, "the same sense as on the left side");
    return read_right_bound(r, col);
}

static int32_t read_bound(lp_reader *r)
{
    lp_lexer *lex = &r->lex;
    if (lex->kind != LP_NAME || lp_is_infinity(lex->text)) return read_left_bound(r);

    int32_t col = 0;
    int32_t res = read_column(r, &col);
    if (res != ZLR_RES_OK) return res;
    if (lex->kind != LP_NAME || !lp_is_free(lex->text)) {
        if (!lp_is_sense(lex->kind)) return lp_expected(lex, "'<=', '>=', '=' or 'free'");
        return read_right_bound(r, col);
    }
    res = set_bound(r, col, LP_GREATER, -model_inf);
    if (res == ZLR_RES_OK) res = set_bound(r, col, LP_LESS, model_inf);
    lp_next(lex);
    return res == ZLR_RES_OK ? lex->code : res;
}

int32_t lp_read_bounds(lp_reader *r)
{
    while (!lp_at_section(r)) {
        const int32_t res = read_bound(r);
        if (res != ZLR_RES_OK) return res;
    }
    return r->lex.code;
}

static void make_binary(lp_reader *r, int32_t col, int64_t line)
{
    const auto j = static_cast<size_t>(col);
    model *m = r->m;
    m->var_lower[j] = (r->given[j] & LP_GIVEN_LOWER) != 0 ? std::max(m->var_lower[j], 0.0) : 0.0;
    m->var_upper[j] = (r->given[j] & LP_GIVEN_UPPER) != 0 ? std::min(m->var_upper[j], 1.0) : 1.0;
    if (m->var_lower[j] > m->var_upper[j]) lp_remember(r, LP_NOTE_BINARY_BOUNDS, line, names_get(&m->var_names, col));
    r->given[j] = LP_GIVEN_LOWER | LP_GIVEN_UPPER;
}

int32_t lp_read_integers(lp_reader *r, bool is_binary)
{
    while (!lp_at_section(r)) {
        const int64_t line = r->lex.line;
        int32_t col = 0;
        const int32_t res = read_column(r, &col);
        if (res != ZLR_RES_OK) return res;
        r->m->var_type[static_cast<size_t>(col)] = ZLR_VAR_INT;
        if (is_binary) make_binary(r, col, line);
    }
    return r->lex.code;
}
