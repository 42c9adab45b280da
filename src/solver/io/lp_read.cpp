/* lp_read.cpp - reading an LP file: the objective, the order of sections, and what is done when all is read. The dialect
 * is described in docs/formats-lp.md. */
#include "solver/io/lp_reader.h"

#include <string>

/* ---- objective */

static int32_t refuse(lp_reader *r, const char *what)
{
    return r->lex.code = io_error(r->lex.io, ZLR_RES_ERR_FILE_UNSUPPORTED, r->lex.line, "%s", what);
}

static int32_t read_objective(lp_reader *r)
{
    lp_lexer *lex = &r->lex;
    const int32_t sense = lex->kind == LP_NAME ? lp_sense_word(lex->text) : -1;
    if (sense < 0) return lp_expected(lex, "'Minimize' or 'Maximize'");
    r->m->sense = sense;
    if (lp_word_follows(lex, "multi-objectives")) return refuse(r, "several objectives are not supported");
    lp_next(lex);
    if (lex->kind == LP_NAME && lp_colon_follows(lex)) {
        r->m->obj_name = lex->text;
        lp_next(lex);
        lp_next(lex);
    }

    lp_side side;
    const int32_t res = lp_read_side(r, true, &side);
    if (res != ZLR_RES_OK) return res;
    if (side.is_infinite) return lp_expected(lex, "a finite objective");
    r->m->cfix = side.constant;
    lp_quad_to_model(&r->quad);
    r->m->qobj.swap(r->quad);
    r->quad.clear();
    if (lp_at_section(r)) return lex->code;
    return lp_expected(lex, "'+', '-' or a section such as 'Subject To'");
}

/* ---- sections */

static int32_t read_refused(lp_reader *r, const lp_header *header)
{
    if (lp_at_section(r)) return r->lex.code; /* empty: some programs write the header always */
    const std::string what = std::string("the section '") + header->title + "' is not supported";
    return refuse(r, what.c_str());
}

static int32_t read_section(lp_reader *r, const lp_header *header)
{
    switch (header->section) {
    case LP_SECTION_ROWS: return lp_read_rows(r);
    case LP_SECTION_BOUNDS: return lp_read_bounds(r);
    case LP_SECTION_GENERAL: return lp_read_integers(r, false);
    case LP_SECTION_BINARY: return lp_read_integers(r, true);
    case LP_SECTION_REFUSED: return read_refused(r, header);
    default: return r->lex.code;
    }
}

/* The end of a file without "End". */
static int32_t end_without_end(lp_reader *r)
{
    lp_lexer *lex = &r->lex;
    if (param_int(lex->io->params, IPAR_READ_MISSING_END) != MISSING_END_WARN)
        return lp_expected(lex, "'End' (the file may have been cut off)");
    io_warning(lex->io, lex->line, "found the end of the file where 'End' was expected: a part may be missing");
    return ZLR_RES_OK;
}

/* All sections behind the objective. A file without "End" may have been cut, at a place that nothing else betrays. */
static int32_t read_sections(lp_reader *r)
{
    lp_lexer *lex = &r->lex;
    for (;;) {
        if (lex->code != ZLR_RES_OK) return lex->code;
        if (lex->kind == LP_END_OF_FILE) return end_without_end(r);
        const lp_header *header = lp_header_at(lex);
        lp_skip_header(lex, header);
        if (header->section == LP_SECTION_END) break;
        const int32_t res = read_section(r, header);
        if (res != ZLR_RES_OK) return res;
    }
    if (lex->code != ZLR_RES_OK || lex->kind == LP_END_OF_FILE) return lex->code;
    return lp_expected(lex, "nothing behind 'End'");
}

/* ---- when all is read */

/* Rows that the text does not name get a name that no other row has. */
static void name_rows(lp_reader *r)
{
    model *m = r->m;
    for (int32_t i = 0; i < m->num_con; i++) {
        if (!names_get(&m->con_names, i).empty()) continue;
        std::string name = "c" + std::to_string(i + 1);
        while (name_index_find(&r->con_index, &m->con_names, name) >= 0) name += '_';
        names_put(&m->con_names, i, name);
        (void)name_index_add(&r->con_index, &m->con_names, i);
    }
}

/* Settled at the end, when no bound can follow any more. */
static int32_t settle_default_lower(lp_reader *r)
{
    model *m = r->m;
    const int32_t policy = param_int(r->lex.io->params, IPAR_READ_NEGATIVE_UPPER);
    for (int32_t col = 0; col < m->num_var; col++) {
        const auto j = static_cast<size_t>(col);
        const std::string_view name = names_get(&m->var_names, col);
        if (!(m->var_upper[j] < 0.0) || (r->given[j] & LP_GIVEN_LOWER) != 0) continue;
        if (policy == NEGATIVE_UPPER_ERROR)
            return io_error(r->lex.io, ZLR_RES_ERR_FILE_FORMAT, 0,
                            "the variable '%s' has the upper bound %g and no lower one (READ_NEGATIVE_UPPER)",
                            io_quote(name).c_str(), m->var_upper[j]);
        if (policy == NEGATIVE_UPPER_INFINITE) m->var_lower[j] = -model_inf;
        lp_remember(r, policy == NEGATIVE_UPPER_INFINITE ? LP_NOTE_NO_LOWER : LP_NOTE_DEFAULT_LOWER, 0, name);
    }
    return ZLR_RES_OK;
}

static const char *const note_texts[LP_NOTE_COUNT] = {
    "variables that no expression holds are taken as empty columns",
    "a quadratic part of the objective without '/ 2' is taken as it stands",
    "a quadratic part of a constraint with '/ 2' is halved",
    "'x y' in brackets is taken as the product 'x * y'",
    "an upper bound below 0 leaves the lower bound at 0, so that the variable has no value; 'x >= -inf' lowers it",
    "an upper bound below 0 without a lower one makes the lower bound -infinity",
    "the bounds of a binary variable leave neither 0 nor 1",
};

static void tell_notes(const lp_reader *r)
{
    for (size_t k = 0; k < LP_NOTE_COUNT; k++) {
        const lp_note *note = &r->notes[k];
        if (note->num == 0) continue;
        const std::string first = note->name.empty() ? "" : ", first '" + io_quote(note->name) + "'";
        io_warning(r->lex.io, note->line, "%s (%lld in all%s)", note_texts[k], static_cast<long long>(note->num),
                   first.c_str());
    }
}

int32_t lp_read(const io_context *io, byte_source *in, model *m)
{
    lp_reader r;
    r.m = m;
    r.infinite = param_dou(io->params, DPAR_BOUND_INFINITE);
    r.rows.tiny = param_dou(io->params, DPAR_DATA_TOL_COEF);
    lp_lexer_start(&r.lex, io, in);
    int32_t res = r.lex.code;
    if (res == ZLR_RES_OK) res = read_objective(&r);
    if (res == ZLR_RES_OK) res = read_sections(&r);
    if (res != ZLR_RES_OK) return res;

    m->name = r.lex.problem_name;
    name_rows(&r);
    res = settle_default_lower(&r);
    if (res != ZLR_RES_OK) return res;
    r.var_index = {};
    r.con_index = {};
    lp_rows_to_columns(&r.rows, m->num_var, &m->a);
    tell_notes(&r);
    return ZLR_RES_OK;
}
