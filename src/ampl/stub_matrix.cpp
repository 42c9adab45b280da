/* stub_matrix.cpp - see stub_matrix.h. */
#include "ampl/stub_matrix.h"

// Last: its macros must not meet the standard headers.
#include "ampl/ampl.h"

int32_t stub_matrix_make(ZLR_task *task, int32_t num_var, int32_t num_nz, stub_matrix *m)
{
    int32_t res = ampl_calloc(task, num_var + 1, &m->colstart);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, num_nz, &m->rowno);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, num_nz, &m->value);
    return res;
}

void stub_matrix_free(ZLR_task *task, stub_matrix *m)
{
    ampl_free(task, &m->value);
    ampl_free(task, &m->rowno);
    ampl_free(task, &m->colstart);
}

/* Functions of a user's own are left to the library altogether: what it says of them may tell a line of the file. */
static bool can_be_kept(const stub_header *h)
{
    return h->num_curved_con < h->num_con && h->num_func == 0 && h->num_coefs > 0;
}

int32_t stub_coefs_make(ZLR_task *task, const stub_header *h, stub_coefs *coefs)
{
    int32_t res = ampl_calloc(task, h->num_con, &coefs->has_row);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, h->num_var, &coefs->places);
    coefs->is_kept = can_be_kept(h);
    if (res == ZLR_RES_OK && coefs->is_kept)
        res = stub_matrix_make(task, h->num_var, static_cast<int32_t>(h->num_coefs), &coefs->matrix);
    return res;
}

void stub_coefs_free(ZLR_task *task, stub_coefs *coefs)
{
    stub_matrix_free(task, &coefs->matrix);
    ampl_free(task, &coefs->places);
    ampl_free(task, &coefs->has_row);
}

template <bool binary> bool stub_take_starts(stub_reader *r, const stub_header *h, bool is_length, stub_coefs *coefs)
{
    const auto num_nz = static_cast<int32_t>(h->num_coefs);
    const int32_t last = h->num_var - 1;
    const char *what = "an end of a column";
    int32_t num = 0;
    int32_t end = 0;
    if (coefs->has_starts) return stub_fault(r, "the lengths of the columns come a second time");
    coefs->has_starts = true;
    if (!stub_take_number<binary>(r, "a count of columns less one", last, last, &num) || !stub_end_line<binary>(r))
        return false;
    for (int32_t j = 0; j < last; ++j) {
        int32_t value = 0;
        if (!stub_begin_line<binary>(r, what)) return false;
        if (!stub_take_number<binary>(r, what, is_length ? 0 : end, is_length ? num_nz - end : num_nz, &value))
            return false;
        const int32_t begin = end;
        end = is_length ? begin + value : value;
        coefs->places[j] = {begin, end};
        if (!stub_end_line<binary>(r)) return false;
    }
    coefs->places[last] = {end, num_nz};
    return true;
}

/* The piece of the file grows by a row. Where something stood between it and the row there is no one piece. Beside rows that
 * are not linear those that are have to ascend, as the order in which they are joined then is by numbers. */
static void extend_piece(stub_coefs *coefs, const stub_header *h, int32_t i, int64_t begin, int64_t end)
{
    stub_matrix *m = &coefs->matrix;
    if (i < h->num_curved_con) return;
    if (m->end == 0) m->begin = begin;
    if (m->end != 0 && m->end != begin) coefs->is_kept = false;
    if (h->num_curved_con > 0 && i < coefs->last_row) coefs->is_kept = false;
    coefs->last_row = i;
    m->end = end;
}

template <bool binary>
static bool take_coefs(stub_reader *r, int32_t num_var, int32_t i, int32_t num, const stub_coefs *coefs)
{
    const char *what = "a column";
    const stub_matrix *m = &coefs->matrix;
    for (int32_t k = 0; k < num; ++k) {
        int32_t j = 0;
        double value = 0;
        if (!stub_begin_line<binary>(r, what) || !stub_take_number<binary>(r, what, 0, num_var - 1, &j)) return false;
        stub_places *p = &coefs->places[j];
        if (p->next == p->end) return stub_fault(r, "column %d has more coefficients than its length (k) says", j);
        if (!stub_take_value<binary>(r, "a coefficient", &value) || !stub_end_line<binary>(r)) return false;
        if (coefs->is_kept) {
            m->rowno[p->next] = i;
            m->value[p->next] = value;
        }
        ++p->next;
    }
    return true;
}

template <bool binary> bool stub_take_row(stub_reader *r, const stub_header *h, stub_coefs *coefs)
{
    const int64_t begin = stub_place(r) - 1; /* of the letter */
    int32_t i = 0;
    int32_t num = 0;
    if (!stub_take_number<binary>(r, "a row", 0, h->num_con - 1, &i) || !stub_mark(r, coefs->has_row, "row", i))
        return false;
    if (!stub_take_number<binary>(r, "a count of coefficients", 1, h->num_var, &num) || !stub_end_line<binary>(r))
        return false;
    if (!coefs->has_starts) return stub_fault(r, "coefficients of a row come before the lengths of the columns (k)");
    coefs->num += num;
    if (!take_coefs<binary>(r, h->num_var, i, num, coefs)) return false;
    extend_piece(coefs, h, i, begin, stub_place(r));
    return true;
}

/* A stub with words for numbers goes to the library as it is, which knows words of its own. */
void stub_coefs_release(const stub_reader *r, const stub_header *h, stub_coefs *coefs, stub_matrix *matrix)
{
    if (!coefs->is_kept || coefs->matrix.end == 0 || r->has_words) return;
    for (int32_t j = 0; j < h->num_var; ++j) coefs->matrix.colstart[j + 1] = coefs->places[j].end;
    *matrix = coefs->matrix;
    coefs->matrix = {};
}

template bool stub_take_starts<false>(stub_reader *r, const stub_header *h, bool is_length, stub_coefs *coefs);
template bool stub_take_starts<true>(stub_reader *r, const stub_header *h, bool is_length, stub_coefs *coefs);
template bool stub_take_row<false>(stub_reader *r, const stub_header *h, stub_coefs *coefs);
template bool stub_take_row<true>(stub_reader *r, const stub_header *h, stub_coefs *coefs);
