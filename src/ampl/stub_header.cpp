/* stub_header.cpp - see stub_header.h. */
#include "ampl/stub_header.h"

#include <cinttypes>
#include <initializer_list>

/* The two kinds of arithmetic that a binary stub can be of. */
enum { ARITHMETIC_LITTLE = 1, ARITHMETIC_BIG = 2 };

static bool is_little_endian()
{
    const uint16_t probe = 1;
    unsigned char first = 0;
    std::memcpy(&first, &probe, 1);
    return first == 1;
}

/* One line of counts: at least `least` of them, each at least 0. Those that are not there stay as they are. */
static bool take_counts(stub_reader *r, const char *what, int32_t least, std::initializer_list<int32_t *> counts)
{
    if (!stub_begin_line<false>(r, what)) return false;
    int32_t num = 0;
    for (int32_t *count : counts) {
        const char *p = r->at;
        while (*p == ' ') ++p;
        if (num >= least && !stub_is_digit(*p) && *p != '-') break;
        if (!stub_take_number<false>(r, what, 0, INT32_MAX, count)) return false;
        ++num;
    }
    return stub_end_line<false>(r);
}

/* The first line: the form, and options of AMPL's own, of which the library takes nine. */
static bool take_form(stub_reader *r, bool *is_binary)
{
    char letter = 0;
    if (!stub_take_letter<false>(r, "an AMPL stub", &letter)) return false;
    *is_binary = letter == 'b' || letter == 'B';
    const bool is_text = letter == 'g' || letter == 'G';
    if ((!is_text && !*is_binary) || (!stub_is_digit(*r->at) && std::strchr(" \t\r\n#", *r->at) == nullptr)) {
        --r->at;
        return stub_expected(r, "an AMPL stub, which begins with 'g' or 'b'");
    }
    int32_t num_options = 0;
    if (stub_is_digit(*r->at) && !stub_take_number<false>(r, "a count of options", 0, 9, &num_options)) return false;
    return stub_skip_line(r); /* options and a comment */
}

static bool take_arithmetic(stub_reader *r, stub_header *h, bool *is_swapped)
{
    int32_t network = 0;
    int32_t arithmetic = 0;
    int32_t flags = 0;
    if (!take_counts(r, "a count of functions", 2, {&network, &h->num_func, &arithmetic, &flags})) return false;
    *is_swapped = arithmetic != 0 && (arithmetic == ARITHMETIC_LITTLE) != is_little_endian();
    if (arithmetic <= ARITHMETIC_BIG) return true;
    --r->line;
    return stub_out_of_range(r, "a kind of arithmetic", arithmetic, 0, ARITHMETIC_BIG);
}

/* Counts that have to be at most another. */
static bool at_most(stub_reader *r, const char *what, int64_t value, int64_t most, const char *of_what)
{
    if (value <= most) return true;
    return stub_refuse(r, "the header has %" PRId64 " %s, but %" PRId64 " %s", value, what, most, of_what);
}

struct column_counts {
    int32_t nlvc, nlvo, nlvb, nbv, niv, nlvbi, nlvci, nlvoi;
};

/* Each column, row, coefficient and function takes a byte at least: what cannot be in the file is found before memory is
 * asked for. */
static bool check_counts(stub_reader *r, const stub_header *h, const column_counts *c)
{
    const int64_t left = stub_bytes_left(r);
    const char *bytes = "bytes follow";
    const int64_t num_int = static_cast<int64_t>(c->nbv) + c->niv + c->nlvbi + c->nlvci + c->nlvoi;
    if (h->num_var == 0) return stub_refuse(r, "the model has no columns");
    if (h->num_con + static_cast<int64_t>(h->num_obj) + h->num_lcon == 0)
        return stub_refuse(r, "the model has neither rows nor objectives");
    return at_most(r, "columns", h->num_var, left, bytes) && at_most(r, "rows", h->num_con, left, bytes) &&
           at_most(r, "objectives", h->num_obj, left, bytes) &&
           at_most(r, "logical constraints", h->num_lcon, left, bytes) &&
           at_most(r, "functions", h->num_func, left, bytes) &&
           at_most(r, "common expressions", h->num_common_all, left, bytes) &&
           at_most(r, "coefficients of rows", h->num_coefs, left, bytes) &&
           at_most(r, "coefficients of objectives", h->num_gradients, left, bytes) &&
           at_most(r, "nonlinear rows", h->num_curved_con, h->num_con, "rows") &&
           at_most(r, "nonlinear objectives", h->num_curved_obj, h->num_obj, "objectives") &&
           at_most(r, "nonlinear columns in rows", c->nlvc, h->num_var, "columns") &&
           at_most(r, "nonlinear columns in objectives", c->nlvo, h->num_var, "columns") &&
           at_most(r, "nonlinear columns in both", c->nlvb, h->num_var, "columns") &&
           at_most(r, "integer columns", num_int, h->num_var, "columns");
}

static bool take_nonzeros(stub_reader *r, stub_header *h)
{
    int32_t nzc = 0;
    int32_t nzo = 0;
    if (!take_counts(r, "a count of coefficients, below 2^31", 2, {&nzc, &nzo})) return false;
    h->num_coefs = nzc;
    h->num_gradients = nzo;
    return true;
}

bool stub_take_header(stub_reader *r, stub_header *h)
{
    bool is_binary = false;
    bool is_swapped = false;
    column_counts c = {};
    int32_t unused[2] = {};
    int32_t num_range = 0, num_equation = 0, linear_cc = 0, nonlinear_cc = 0, common[5] = {};
    c.nlvb = -1;
    if (!take_form(r, &is_binary)) return false;
    if (!take_counts(r, "a count of columns, rows or objectives", 3,
                     {&h->num_var, &h->num_con, &h->num_obj, &num_range, &num_equation, &h->num_lcon}))
        return false;
    if (!take_counts(r, "a count of nonlinear rows or objectives", 2,
                     {&h->num_curved_con, &h->num_curved_obj, &linear_cc, &nonlinear_cc}))
        return false;
    if (!take_counts(r, "a count of network rows", 2, {&unused[0], &unused[1]})) return false;
    if (!take_counts(r, "a count of nonlinear columns", 2, {&c.nlvc, &c.nlvo, &c.nlvb})) return false;
    if (!take_arithmetic(r, h, &is_swapped)) return false;
    /* Old stubs, which do not tell the nonlinear columns of both, do not tell the kinds of integer columns either. */
    const char *discrete = "a count of integer columns";
    if (c.nlvb < 0 ? !take_counts(r, discrete, 2, {&c.nbv, &c.niv})
                   : !take_counts(r, discrete, 5, {&c.nbv, &c.niv, &c.nlvbi, &c.nlvci, &c.nlvoi}))
        return false;
    if (!take_nonzeros(r, h)) return false;
    if (!take_counts(r, "a length of names", 2, {&unused[0], &unused[1]})) return false;
    if (!take_counts(r, "a count of common expressions", 5,
                     {&common[0], &common[1], &common[2], &common[3], &common[4]}))
        return false;

    h->has_conditions = linear_cc > 0 || nonlinear_cc > 0;
    int64_t num_common = static_cast<int64_t>(common[0]) + common[1] + common[2];
    int64_t num_all = num_common + common[3] + common[4];
    if (!at_most(r, "common expressions", num_all, stub_bytes_left(r), "bytes follow") ||
        !at_most(r, "common expressions", num_all, INT32_MAX - h->num_var, "are possible"))
        return false;
    h->num_common = static_cast<int32_t>(num_common);
    h->num_common_all = static_cast<int32_t>(num_all);
    if (!check_counts(r, h, &c)) return false;
    if (is_binary) stub_reader_set_binary(r, is_swapped);
    return true;
}
