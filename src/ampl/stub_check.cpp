/* stub_check.cpp - see stub_check.h: the segments of a stub, and the whole of it. */
#include "ampl/stub_check.h"

#include "ampl/stub_expression.h"

#include <sys/stat.h>

// Last: its macros must not meet the standard headers.
#include "ampl/ampl.h"

/* One check. Arrays are from ZLR_calloctask. */
struct stub_walk {
    stub_reader reader;
    stub_header header;
    stub_expression_scope scope;
    stub_coefs coefs;
    unsigned char *has_row, *has_objective, *has_gradient; /* C, O and G were there */
    unsigned char *has_common, *has_func;
    int32_t *common_degree;
    stub_operator *operators;
    bool is_known; /* the header is */
    bool is_nonlinear;
    bool has_sides, has_bounds, has_gradients, has_sets;
};

/* ---- Pieces of segments ---- */

/* Indices below a limit, each with a value. */
template <bool binary>
static bool take_terms(stub_reader *r, const char *what, int32_t num, int32_t limit, bool is_real)
{
    for (int32_t k = 0; k < num; ++k) {
        int32_t index = 0;
        int32_t value = 0;
        if (!stub_begin_line<binary>(r, what) || !stub_take_number<binary>(r, what, 0, limit - 1, &index)) return false;
        if (is_real ? !stub_take_real<binary>(r, "a value") : !stub_take_int<binary>(r, "a value", &value))
            return false;
        if (!stub_end_line<binary>(r)) return false;
    }
    return true;
}

/* ---- Segments ---- */

/* The library lists the columns that an objective lacks, and makes room for the list on the assumption that those that it
 * has ascend: `room` and `needed` follow what it does. */
struct missing_columns {
    int64_t room, needed;
    int32_t next, at;
};

static void follow_column(missing_columns *m, int32_t num_var, int32_t j)
{
    if (m->next < num_var) {
        m->room += j - m->next;
        m->next = j + 1;
    }
    if (m->at >= num_var) return;
    if (m->at < j) {
        m->needed += j - m->at;
        m->at = j;
    }
    ++m->at;
}

template <bool binary> static bool take_gradient(stub_walk *w)
{
    stub_reader *r = &w->reader;
    const int32_t num_var = w->header.num_var;
    const char *what = "a column";
    missing_columns m = {};
    int32_t k = 0;
    int32_t num = 0;
    if (!stub_take_number<binary>(r, "an objective", 0, w->header.num_obj - 1, &k) ||
        !stub_mark(r, w->has_gradient, "objective", k))
        return false;
    if (!stub_take_number<binary>(r, "a count of coefficients", 1, num_var, &num) || !stub_end_line<binary>(r))
        return false;
    w->has_gradients = true;
    for (int32_t p = 0; p < num; ++p) {
        int32_t j = 0;
        if (!stub_begin_line<binary>(r, what) || !stub_take_number<binary>(r, what, 0, num_var - 1, &j)) return false;
        follow_column(&m, num_var, j);
        if (!stub_take_real<binary>(r, "a coefficient") || !stub_end_line<binary>(r)) return false;
    }
    m.room += std::max(0, num_var - m.next);
    m.needed += std::max(0, num_var - m.at);
    return m.needed <= m.room || stub_fault(r, "the columns of objective %d do not ascend", k);
}

/* Sides of rows or bounds of columns, each with its kind. */
template <bool binary> static bool take_bounds(stub_walk *w, const char *what, int32_t num, bool takes_conditions)
{
    stub_reader *r = &w->reader;
    if (!stub_end_line<binary>(r)) return false;
    for (int32_t k = 0; k < num; ++k) {
        char kind = 0;
        int32_t unused = 0;
        if (!stub_take_letter<binary>(r, what, &kind)) return false;
        const bool is_condition = kind == '5' && takes_conditions;
        if (!is_condition && (kind < '0' || kind > '4')) {
            --r->at;
            return stub_expected(r, what);
        }
        if (is_condition && (!stub_take_int<binary>(r, "bounds of a condition", &unused) ||
                             !stub_take_number<binary>(r, "a column's number", 1, w->header.num_var, &unused)))
            return false;
        const int32_t num_values = is_condition || kind == '3' ? 0 : kind == '0' ? 2 : 1;
        for (int32_t p = 0; p < num_values; ++p)
            if (!stub_take_real<binary>(r, "a bound")) return false;
        if (!stub_end_line<binary>(r)) return false;
    }
    return true;
}

template <bool binary> static bool take_common(stub_walk *w)
{
    stub_reader *r = &w->reader;
    const stub_header *h = &w->header;
    const int32_t num_var = h->num_var;
    int32_t k = 0;
    int32_t num = 0;
    int32_t user = 0;
    if (!stub_take_number<binary>(r, "a common expression", num_var, num_var + h->num_common_all - 1, &k)) return false;
    if (!stub_mark(r, w->has_common, "common expression", k - num_var)) return false;
    w->has_common[k - num_var] = 0; /* not yet defined: it may not use itself */
    if (!stub_take_number<binary>(r, "a count of terms", 0, num_var, &num)) return false;
    const bool is_shared = k < num_var + h->num_common;
    if (!stub_take_number<binary>(r, "the function that a common expression is of", is_shared ? 0 : 1,
                                  is_shared ? 0 : INT32_MAX, &user))
        return false;
    if (!stub_end_line<binary>(r) || !take_terms<binary>(r, "a column", num, num_var, true)) return false;
    if (!stub_take_expression<binary>(r, &w->scope, &w->common_degree[k - num_var])) return false;
    w->has_common[k - num_var] = 1;
    return true;
}

/* A name ends its line in text, and follows its length in binary. */
template <bool binary> static bool take_name(stub_reader *r, char *name)
{
    int32_t num = 0;
    if constexpr (binary) {
        if (!stub_take_number<binary>(r, "the length of a name", 1, stub_name_bytes - 1, &num)) return false;
        if (!stub_need_bytes(r, num, "a name")) return false;
    } else {
        while (*r->at == ' ') ++r->at;
        while (r->at[num] != '\n' && r->at[num] != '\r') ++num;
        if (num == 0 || num >= stub_name_bytes) return stub_expected(r, "a name of 1 to 127 letters");
    }
    std::copy_n(r->at, num, name);
    name[num] = 0;
    r->at += num;
    r->begin = r->at; /* of a long name the library takes what it has room for */
    return stub_end_line<binary>(r);
}

template <bool binary> static bool take_function(stub_walk *w)
{
    stub_reader *r = &w->reader;
    char name[stub_name_bytes];
    int32_t k = 0;
    int32_t unused = 0;
    if (!stub_take_number<binary>(r, "a function", 0, w->header.num_func - 1, &k)) return false;
    if (!stub_mark(r, w->has_func, "function", k)) return false;
    return stub_take_int<binary>(r, "a kind of function", &unused) &&
           stub_take_int<binary>(r, "a count of arguments", &unused) && take_name<binary>(r, name);
}

template <bool binary> static bool take_suffix(stub_walk *w)
{
    stub_reader *r = &w->reader;
    const stub_header *h = &w->header;
    const int64_t sizes[] = {h->num_var, static_cast<int64_t>(h->num_con) + h->num_lcon, h->num_obj, 1};
    char name[stub_name_bytes];
    int32_t kind = 0;
    int32_t num = 0;
    if (!stub_take_number<binary>(r, "a kind of suffix", 0, 7, &kind)) return false;
    const auto size = static_cast<int32_t>(sizes[kind & ASL_Sufkind_mask]);
    if (!stub_take_number<binary>(r, "a count of values", 1, size, &num) || !take_name<binary>(r, name)) return false;
    const bool is_of_columns = (kind & ASL_Sufkind_mask) == ASL_Sufkind_var;
    if (is_of_columns && (std::strcmp(name, "sosno") == 0 || std::strcmp(name, "ref") == 0)) w->has_sets = true;
    return take_terms<binary>(r, "an index of a suffix", num, size, (kind & ASL_Sufkind_real) != 0);
}

/* Initial values. */
template <bool binary> static bool take_start(stub_walk *w, const char *what, int32_t size)
{
    stub_reader *r = &w->reader;
    int32_t num = 0;
    return stub_take_number<binary>(r, "a count of values", 0, size, &num) && stub_end_line<binary>(r) &&
           take_terms<binary>(r, what, num, size, true);
}

/* A row (C), a logical constraint (L; `seen` is null) or an objective (O), whose sense stands behind its number. The first
 * `num_curved` of them are looked at for being nonlinear. */
template <bool binary>
static bool take_body(stub_walk *w, const char *what, int32_t limit, int32_t num_curved, unsigned char *seen,
                      bool has_sense)
{
    stub_reader *r = &w->reader;
    int32_t k = 0;
    int32_t sense = 0;
    int32_t degree = 0;
    if (!stub_take_number<binary>(r, what, 0, limit - 1, &k) || (seen != nullptr && !stub_mark(r, seen, what, k)))
        return false;
    if (has_sense && !stub_take_number<binary>(r, "a sense", 0, 1, &sense)) return false;
    if (!stub_end_line<binary>(r) || !stub_take_expression<binary>(r, &w->scope, &degree)) return false;
    if (k < num_curved && degree >= stub_degree_nonlinear) w->is_nonlinear = true;
    return true;
}

template <bool binary> static bool take_segment(stub_walk *w, char letter)
{
    stub_reader *r = &w->reader;
    const stub_header *h = &w->header;
    switch (letter) {
    case 'J': return stub_take_row<binary>(r, h, &w->coefs);
    case 'G': return take_gradient<binary>(w);
    case 'C': return take_body<binary>(w, "row", h->num_con, h->num_curved_con, w->has_row, false);
    case 'L': return take_body<binary>(w, "logical constraint", h->num_lcon, 0, nullptr, false);
    case 'O': /* the first one alone is solved for */
        return take_body<binary>(w, "objective", h->num_obj, std::min(1, h->num_curved_obj), w->has_objective, true);
    case 'V': return take_common<binary>(w);
    case 'F': return take_function<binary>(w);
    case 'S': return take_suffix<binary>(w);
    case 'x': return take_start<binary>(w, "a column", h->num_var);
    case 'd': return take_start<binary>(w, "a row", h->num_con);
    case 'k':
    case 'K': return stub_take_starts<binary>(r, h, letter == 'K', &w->coefs);
    case 'r': /* where these two come again, the last ones count */
        w->has_sides = true;
        return take_bounds<binary>(w, "the sides of a row", h->num_con, h->has_conditions);
    case 'b': w->has_bounds = true; return take_bounds<binary>(w, "the bounds of a column", h->num_var, false);
    default: --r->at; return stub_expected(r, "a segment");
    }
}

/* ---- The whole ---- */

static bool all_there(stub_reader *r, const char *what, const unsigned char *seen, int32_t num)
{
    for (int32_t k = 0; k < num; ++k)
        if (!seen[k]) return stub_fault(r, "the file ends without %s %d", what, k);
    return true;
}

static bool check_end(stub_walk *w)
{
    stub_reader *r = &w->reader;
    const stub_header *h = &w->header;
    if (!w->has_bounds) return stub_fault(r, "the file ends without the bounds of the columns");
    if (!w->has_sides && h->num_con > 0) return stub_fault(r, "the file ends without the sides of the rows");
    if (w->coefs.num != h->num_coefs)
        return stub_fault(r, "expected %ld coefficients of rows, found %ld", static_cast<long>(h->num_coefs),
                          static_cast<long>(w->coefs.num));
    /* Their count in the header is not always true: some writers are careless with it. */
    if (!w->has_gradients && h->num_gradients > 0)
        return stub_fault(r, "the file ends without the coefficients of the objectives");
    return all_there(r, "row", w->has_row, h->num_con) && all_there(r, "objective", w->has_objective, h->num_obj) &&
           all_there(r, "common expression", w->has_common, h->num_common_all);
}

template <bool binary> static bool walk_segments(stub_walk *w)
{
    stub_reader *r = &w->reader;
    while (r->at != r->end || stub_reader_refill(r)) {
        char letter = 0;
        if (!stub_take_letter<binary>(r, "a segment", &letter) || !take_segment<binary>(w, letter)) return false;
    }
    return r->fault[0] == 0 && check_end(w);
}

static int32_t make_arrays(ZLR_task *task, stub_walk *w)
{
    const stub_header *h = &w->header;
    int32_t res = ampl_calloc(task, h->num_con, &w->has_row);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, h->num_obj, &w->has_objective);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, h->num_obj, &w->has_gradient);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, h->num_common_all, &w->has_common);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, h->num_func, &w->has_func);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, h->num_common_all, &w->common_degree);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, stub_max_depth + 1, &w->operators);
    if (res == ZLR_RES_OK) res = stub_coefs_make(task, h, &w->coefs);
    w->scope = {h->num_var,  h->num_var + h->num_common_all, h->num_func, w->has_common, w->has_func, w->common_degree,
                w->operators};
    return res;
}

static void free_arrays(ZLR_task *task, stub_walk *w)
{
    stub_coefs_free(task, &w->coefs);
    ampl_free(task, &w->operators);
    ampl_free(task, &w->common_degree);
    for (unsigned char **block : {&w->has_func, &w->has_common, &w->has_gradient, &w->has_objective, &w->has_row})
        ampl_free(task, block);
    ampl_free(task, &w->reader.block);
}

static int32_t check_file(ZLR_task *task, stub_walk *w)
{
    stub_reader *r = &w->reader;
    int32_t res = ampl_calloc(task, static_cast<int32_t>(stub_block_bytes), &r->block);
    if (res != ZLR_RES_OK) return res;
    bool is_good = stub_reader_begin(r) || stub_ends(r, "an AMPL stub");
    if (is_good) is_good = stub_take_header(r, &w->header);
    w->is_known = is_good;
    /* Such a model is refused by its header: what its segments hold is not read. */
    if (is_good && (w->header.has_conditions || w->header.num_lcon > 0)) return ZLR_RES_OK;
    if (is_good) res = make_arrays(task, w);
    if (res != ZLR_RES_OK) return res;
    if (is_good) is_good = r->is_binary ? walk_segments<true>(w) : walk_segments<false>(w);
    return is_good ? ZLR_RES_OK : ZLR_RES_ERR_AMPL_STUB;
}

static std::FILE *open_file(const char *name, std::string *path)
{
    *path = std::string(name) + ".nl";
    std::FILE *file = std::fopen(path->c_str(), "rb");
    const size_t length = std::strlen(name);
    if (file != nullptr || length <= 3 || std::strcmp(name + length - 3, ".nl") != 0) return file;
    *path = name;
    return std::fopen(path->c_str(), "rb");
}

int32_t stub_check(ZLR_task *task, const char *name, stub_facts *facts, stub_matrix *matrix, char *fault)
{
    std::string path;
    std::FILE *file = open_file(name, &path);
    if (file == nullptr) return ZLR_RES_ERR_FILE_READ;
    stub_walk w = {};
    struct stat about = {};
    int32_t res = ZLR_RES_ERR_AMPL_STUB;
    w.reader.file = file;
    w.reader.name = path.c_str();
    if (fstat(fileno(file), &about) != 0 || !S_ISREG(about.st_mode)) {
        (void)stub_refuse(&w.reader, "not a file");
    } else {
        std::setvbuf(file, nullptr, _IONBF, 0); /* blocks are read, which need no buffer of the stream's */
        w.reader.size = about.st_size;
        res = check_file(task, &w);
    }
    if (res == ZLR_RES_OK) stub_coefs_release(&w.reader, &w.header, &w.coefs, matrix);
    std::memcpy(fault, w.reader.fault, stub_fault_bytes);
    *facts = {w.is_known ? w.header.num_con : 0, w.is_known ? w.header.num_var : 0, w.has_sets, w.is_nonlinear};
    free_arrays(task, &w);
    (void)std::fclose(file);
    return res;
}
