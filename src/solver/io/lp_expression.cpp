/* lp_expression.cpp - columns, expressions and numbers of an LP text.
 *
 * An expression is a sum of constants, linear terms (x, 3 x, 3x, 3 * x) and quadratic parts in brackets. A line's end
 * means nothing inside it, except that a number before the name of the next row is no coefficient. */
#include "solver/io/lp_reader.h"

#include <cstring>

void lp_remember(lp_reader *r, lp_note_kind kind, int64_t line, std::string_view name)
{
    lp_note *note = &r->notes[kind];
    if (note->num++ > 0) return;
    note->line = line;
    note->name = name;
}

bool lp_at_section(lp_reader *r)
{
    if (r->lex.kind == LP_NAME) return lp_header_at(&r->lex) != nullptr;
    return r->lex.kind == LP_END_OF_FILE;
}

/* ---- columns */

/* Names are UTF-8 wherever they go from here. */
static bool is_utf8(std::string_view text)
{
    size_t left = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (left > 0) {
            if ((byte & 0xc0U) != 0x80U) return false;
            left--;
        } else if (byte >= 0x80) {
            if (byte < 0xc2 || byte > 0xf4) return false;
            left = byte < 0xe0 ? 1 : byte < 0xf0 ? 2 : 3;
        }
    }
    return left == 0;
}

static void append_column(lp_reader *r)
{
    model *m = r->m;
    m->num_var++;
    m->c.push_back(0.0);
    m->var_lower.push_back(0.0);
    m->var_upper.push_back(model_inf);
    m->var_type.push_back(ZLR_VAR_CONT);
    r->given.push_back(0);
    r->rows.seen.emplace_back();
}

static int32_t check_new_column(lp_reader *r, std::string_view name)
{
    if (is_utf8(name)) return ZLR_RES_OK;
    return r->lex.code = io_error(r->lex.io, ZLR_RES_ERR_FILE_FORMAT, r->lex.line,
                                  "found '%s' where a name in UTF-8 was expected", io_quote(name).c_str());
}

/* Room for `num` more columns. */
static int32_t check_columns(lp_reader *r, size_t num)
{
    if (static_cast<size_t>(r->m->num_var) + num <= INT32_MAX) return ZLR_RES_OK;
    return lp_expected(&r->lex, "a file with less than 2147483647 columns");
}

int32_t lp_column_at(lp_reader *r, int32_t *col, bool *is_new)
{
    int32_t res = check_columns(r, 1);
    if (res != ZLR_RES_OK) return res;
    *col = name_index_intern(&r->var_index, &r->m->var_names, r->lex.text, is_new);
    if (!*is_new) return ZLR_RES_OK;
    res = check_new_column(r, r->lex.text);
    append_column(r);
    return res;
}

/* ---- linear terms */

int32_t lp_add_pending(lp_reader *r, bool is_objective)
{
    lp_pending *p = &r->pending;
    int32_t res = check_columns(r, p->num);
    if (res != ZLR_RES_OK) return res;
    name_index_intern_all(&r->var_index, &r->m->var_names, p->name, p->num, p->col);
    for (size_t k = 0; k < p->num && res == ZLR_RES_OK; k++) {
        if (p->col[k] < r->m->num_var) {
            __builtin_prefetch(&r->rows.seen[static_cast<size_t>(p->col[k])]);
            continue;
        }
        res = check_new_column(r, p->name[k]);
        append_column(r);
    }
    for (size_t k = 0; k < p->num && res == ZLR_RES_OK; k++) {
        for (; p->row_ends[k] > 0; p->row_ends[k]--) lp_rows_finish(&r->rows);
        if (is_objective)
            r->m->c[static_cast<size_t>(p->col[k])] += p->factor[k];
        else
            lp_rows_add(&r->rows, p->col[k], p->factor[k]);
    }
    for (; p->row_ends[p->num] > 0; p->row_ends[p->num]--) lp_rows_finish(&r->rows);
    p->row_ends[0] = 0;
    p->num = 0;
    p->used = 0;
    return res;
}

/* Takes the token, a name, as a term. */
static inline int32_t add_linear(lp_reader *r, bool is_objective, double factor)
{
    lp_pending *p = &r->pending;
    std::string_view name = r->lex.text;
    char *copy = p->text + p->used;
    std::memcpy(copy, name.data(), lp_pending_copy);
    if (name.size() > lp_pending_copy) std::memcpy(copy, name.data(), name.size());
    p->name[p->num] = std::string_view(copy, name.size());
    p->factor[p->num] = factor;
    p->used += name.size();
    p->num++;
    lp_next(&r->lex);
    return p->num == lp_pending_max ? lp_add_pending(r, is_objective) : r->lex.code;
}

/* ---- terms */

/* Signs before an operand. *num is how many there are. */
static inline double read_signs(lp_lexer *lex, int32_t *num)
{
    double sign = 1.0;
    *num = 0;
    while (lex->kind == LP_PLUS || lex->kind == LP_MINUS) {
        if (lex->kind == LP_MINUS) sign = -sign;
        (*num)++;
        lp_next(lex);
    }
    return sign;
}

/* The factor before a name, if there is one: 3, 3 * */
static double read_factor(lp_lexer *lex)
{
    double value = 1.0;
    if (lex->kind == LP_NUMBER) {
        value = lex->value;
        lp_next(lex);
        if (lex->kind == LP_STAR) lp_next(lex);
    }
    return value;
}

static int32_t read_quad_column(lp_reader *r, const char *expected, int32_t *col)
{
    bool is_new = false;
    if (r->lex.kind != LP_NAME) return lp_expected(&r->lex, expected);
    const int32_t res = lp_column_at(r, col, &is_new);
    if (res == ZLR_RES_OK) lp_next(&r->lex);
    return res;
}

/* x ^ 2, x * y, or x y as some programs write products. */
static int32_t read_quad_term(lp_reader *r, double sign)
{
    lp_lexer *lex = &r->lex;
    double factor = sign * read_factor(lex);
    int32_t i = 0;
    int32_t j = 0;
    int32_t res = read_quad_column(r, "a variable name", &i);
    if (res != ZLR_RES_OK) return res;

    switch (lex->kind) {
    case LP_CARET:
        lp_next(lex);
        if (lex->kind != LP_NUMBER || lex->value != 2.0) return lp_expected(lex, "the exponent 2");
        j = i;
        lp_next(lex);
        break;
    case LP_STAR:
        lp_next(lex);
        res = read_quad_column(r, "the second variable of a product", &j);
        break;
    case LP_NAME:
        lp_remember(r, LP_NOTE_BARE_PRODUCT, lex->line, lex->text);
        res = read_quad_column(r, "the second variable of a product", &j);
        break;
    default: return lp_expected(lex, "'^ 2' or '*' (linear terms stand outside the brackets)");
    }
    if (res == ZLR_RES_OK) r->quad.push_back({i, j, factor});
    return res;
}

/* [ ... ] or [ ... ] / 2, from the bracket on. */
static int32_t read_quad_part(lp_reader *r, bool is_objective, double sign)
{
    lp_lexer *lex = &r->lex;
    const size_t first = r->quad.size();
    int32_t res = lp_add_pending(r, is_objective); /* columns are numbered in order of appearance */
    if (res != ZLR_RES_OK) return res;
    lp_next(lex);
    for (bool is_first = true; lex->kind != LP_CLOSE; is_first = false) {
        int32_t num_signs = 0;
        const double term_sign = read_signs(lex, &num_signs);
        if (num_signs == 0 && !is_first) return lp_expected(lex, "'+', '-' or ']'");
        res = read_quad_term(r, sign * term_sign);
        if (res != ZLR_RES_OK) return res;
    }
    const int64_t line = lex->line;
    lp_next(lex);
    if (lex->kind != LP_SLASH) {
        if (is_objective) lp_remember(r, LP_NOTE_WHOLE_SQUARE, line, "");
        return lex->code;
    }
    lp_next(lex);
    if (lex->kind != LP_NUMBER || lex->value != 2.0) return lp_expected(lex, "'2' behind ']/'");
    if (!is_objective) lp_remember(r, LP_NOTE_HALF_ROW, line, "");
    for (size_t k = first; k < r->quad.size(); k++) r->quad[k].value *= 0.5;
    lp_next(lex);
    return lex->code;
}

void lp_quad_to_model(std::vector<quad_term> *terms)
{
    for (quad_term &term : *terms)
        if (term.i == term.j) term.value *= 2.0;
    quad_normalise(terms);
}

/* ---- expressions */

/* Whether the name that is the token, behind a number, is no variable: it opens a section or names the next row. */
static inline bool name_ends_constant(lp_reader *r)
{
    if (lp_header_at(&r->lex) != nullptr) return true;
    return (r->lex.first_on_line || *r->lex.pos == ':') && lp_colon_follows(&r->lex);
}

/* A number: a factor when a variable follows, else a constant. */
static inline int32_t read_number_term(lp_reader *r, bool is_objective, double sign, lp_side *side)
{
    lp_lexer *lex = &r->lex;
    const double value = sign * lex->value;
    lp_next(lex);
    if (lex->kind == LP_STAR) {
        lp_next(lex);
        if (lex->kind != LP_NAME) return lp_expected(lex, "a variable name");
    } else if (lex->kind != LP_NAME || name_ends_constant(r)) {
        side->constant += value;
        side->has_constant = true;
        return lex->code;
    }
    side->has_terms = true;
    return add_linear(r, is_objective, value);
}

static int32_t read_infinite_term(lp_reader *r, double sign, lp_side *side)
{
    if (side->has_constant || side->has_terms) return lp_expected(&r->lex, "a variable name or a finite number");
    side->constant = sign * model_inf;
    side->has_constant = true;
    side->is_infinite = true;
    lp_next(&r->lex);
    return r->lex.code;
}

/* One operand. *at_end when the token cannot begin one, which is an error behind a sign. */
static inline int32_t read_term(lp_reader *r, bool is_objective, double sign, bool is_needed, lp_side *side,
                                bool *at_end)
{
    lp_lexer *lex = &r->lex;
    if (lex->kind == LP_NUMBER) return read_number_term(r, is_objective, sign, side);
    if (lex->kind == LP_OPEN) {
        side->has_terms = true;
        return read_quad_part(r, is_objective, sign);
    }
    if (lex->kind == LP_NAME && lp_header_at(lex) == nullptr) {
        if (lp_is_infinity(lex->text)) return read_infinite_term(r, sign, side);
        side->has_terms = true;
        return add_linear(r, is_objective, sign);
    }
    *at_end = true;
    return is_needed ? lp_expected(lex, "a variable name or a number") : lex->code;
}

int32_t lp_read_side(lp_reader *r, bool is_objective, lp_side *side)
{
    lp_lexer *lex = &r->lex;
    for (bool is_first = true;; is_first = false) {
        int32_t num_signs = 0;
        const double sign = read_signs(lex, &num_signs);
        if (num_signs == 0 && !is_first) break;
        if (side->is_infinite) return lp_expected(lex, "'<=', '>=' or '=' behind an infinite number");
        bool at_end = false;
        const int32_t res = read_term(r, is_objective, sign, num_signs > 0, side, &at_end);
        if (res != ZLR_RES_OK) return res;
        if (at_end) break;
    }
    if (lex->code != ZLR_RES_OK) return lex->code;
    return is_objective ? lp_add_pending(r, true) : ZLR_RES_OK;
}

int32_t lp_read_number(lp_reader *r, double *value)
{
    lp_lexer *lex = &r->lex;
    int32_t num_signs = 0;
    const double sign = read_signs(lex, &num_signs);
    if (lex->kind == LP_NUMBER)
        *value = sign * (lex->value >= r->infinite ? model_inf : lex->value);
    else if (lex->kind == LP_NAME && lp_is_infinity(lex->text))
        *value = sign * model_inf;
    else
        return lp_expected(lex, "a number");
    lp_next(lex);
    return lex->code;
}
