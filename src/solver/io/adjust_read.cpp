/* adjust_read.cpp - see adjust.h: checks and changes after a read. */
#include "solver/io/adjust.h"

#include <algorithm>
#include <cmath>

namespace
{
/* ---- Checks -------------------------------------------------------------------------------------------------------- */

bool is_made_of(std::string_view text, int32_t encoding)
{
    while (!text.empty()) {
        const size_t size = utf8_size(text);
        if (size == 0 || (size > 1 && encoding == ENCODING_ASCII)) return false;
        text.remove_prefix(size);
    }
    return true;
}

int32_t check_names(const io_context *io, const name_table *names, int32_t num, const char *what, int32_t encoding)
{
    for (int32_t i = 0; i < num; ++i) {
        const std::string_view name = names_get(names, i);
        if (is_made_of(name, encoding)) continue;
        return io_error(io, ZLR_RES_ERR_FILE_FORMAT, 0, "the name '%s' of %s %lld is not %s (READ_ENCODING)",
                        io_quote(name).c_str(), what, static_cast<long long>(i) + 1,
                        encoding == ENCODING_ASCII ? "ASCII" : "UTF-8");
    }
    return ZLR_RES_OK;
}

int32_t check_encoding(const io_context *io, const model *m)
{
    const int32_t encoding = param_int(io->params, IPAR_READ_ENCODING);
    if (encoding == ENCODING_ANY) return ZLR_RES_OK;
    const int32_t res = check_names(io, &m->con_names, m->num_con, "row", encoding);
    return res == ZLR_RES_OK ? check_names(io, &m->var_names, m->num_var, "column", encoding) : res;
}

void warn_of_huge(const io_context *io, const model *m)
{
    const double huge = param_dou(io->params, DPAR_READ_HUGE_COEF);
    if (huge == model_inf) return;
    int64_t num = 0;
    int32_t row = -1, column = -1;
    double largest = 0.0;
    for (int32_t j = 0; j < m->num_var; ++j) {
        const auto end = static_cast<size_t>(m->a.start[static_cast<size_t>(j) + 1]);
        for (auto k = static_cast<size_t>(m->a.start[static_cast<size_t>(j)]); k < end; ++k) {
            const double size = std::fabs(m->a.value[k]);
            if (size < huge) continue;
            ++num;
            if (size <= largest) continue;
            largest = size;
            row = m->a.row[k];
            column = j;
        }
    }
    if (num == 0) return;
    io_warning(io, 0, "coefficients of %g or more: %lld; the largest, %g, is that of column '%s' in row '%s'", huge,
               static_cast<long long>(num), largest, io_quote(names_shown(&m->var_names, column, 'x')).c_str(),
               io_quote(names_shown(&m->con_names, row, 'c')).c_str());
}

/* Pairs of bounds, or of sides, with the lower one above the upper one. */
struct crossed_pairs {
    int64_t num = 0;
    int32_t first = -1;
};

crossed_pairs close_and_count(double tol, std::vector<double> *lower, const std::vector<double> &upper)
{
    crossed_pairs found;
    for (size_t k = 0; k < upper.size(); ++k) {
        if (!((*lower)[k] > upper[k])) continue;
        if ((*lower)[k] - upper[k] <= tol) {
            (*lower)[k] = upper[k];
        } else if (found.num++ == 0) {
            found.first = static_cast<int32_t>(k);
        }
    }
    return found;
}

int32_t tell_crossed(const io_context *io, const crossed_pairs *found, const char *what, const std::string &name)
{
    const int32_t policy = param_int(io->params, IPAR_READ_CROSSED_BOUNDS);
    if (found->num == 0 || policy == CROSSED_TAKE) return ZLR_RES_OK;
    const std::string shown = io_quote(name);
    if (policy == CROSSED_ERROR)
        return io_error(io, ZLR_RES_ERR_FILE_FORMAT, 0,
                        "%s '%s' has its lower bound above the upper one (READ_CROSSED_BOUNDS)", what, shown.c_str());
    io_warning(io, 0, "%s '%s' has its lower bound above the upper one (%lld in all): no point is feasible", what,
               shown.c_str(), static_cast<long long>(found->num));
    return ZLR_RES_OK;
}

int32_t check_crossed(const io_context *io, model *m)
{
    const double tol = param_dou(io->params, DPAR_READ_TOL_CROSSED);
    if (tol == 0.0 && param_int(io->params, IPAR_READ_CROSSED_BOUNDS) == CROSSED_TAKE) return ZLR_RES_OK;
    const crossed_pairs rows = close_and_count(tol, &m->con_lower, m->con_upper);
    const crossed_pairs columns = close_and_count(tol, &m->var_lower, m->var_upper);
    const std::string row = rows.num > 0 ? names_shown(&m->con_names, rows.first, 'c') : "";
    const std::string column = columns.num > 0 ? names_shown(&m->var_names, columns.first, 'x') : "";
    const int32_t res = tell_crossed(io, &rows, "row", row);
    return res == ZLR_RES_OK ? tell_crossed(io, &columns, "column", column) : res;
}

/* ---- Changes ------------------------------------------------------------------------------------------------------- */

/* New numbers of the rows that have a finite side, -1 for the others. */
std::vector<int32_t> number_bounded_rows(const model *m, int32_t *num_kept)
{
    std::vector<int32_t> number(static_cast<size_t>(m->num_con));
    *num_kept = 0;
    for (size_t i = 0; i < number.size(); ++i)
        number[i] = m->con_lower[i] == -model_inf && m->con_upper[i] == model_inf ? -1 : (*num_kept)++;
    return number;
}

void keep_entries(sparse_columns *a, const std::vector<int32_t> &number)
{
    size_t kept = 0;
    auto begin = static_cast<size_t>(a->start[0]);
    for (size_t j = 0; j + 1 < a->start.size(); ++j) {
        const auto end = static_cast<size_t>(a->start[j + 1]);
        for (size_t k = begin; k < end; ++k) {
            const int32_t row = number[static_cast<size_t>(a->row[k])];
            if (row < 0) continue;
            a->row[kept] = row;
            a->value[kept++] = a->value[k];
        }
        begin = end;
        a->start[j + 1] = static_cast<int64_t>(kept);
    }
    a->row.resize(kept);
    a->value.resize(kept);
}

void keep_sides_and_names(model *m, const std::vector<int32_t> &number)
{
    name_table names;
    for (size_t i = 0; i < number.size(); ++i) {
        if (number[i] < 0) continue;
        m->con_lower[static_cast<size_t>(number[i])] = m->con_lower[i];
        m->con_upper[static_cast<size_t>(number[i])] = m->con_upper[i];
        names_append(&names, names_get(&m->con_names, static_cast<int32_t>(i)));
    }
    m->con_names = std::move(names);
}

void drop_free_rows(const io_context *io, model *m)
{
    int32_t num_kept = 0;
    const std::vector<int32_t> number = number_bounded_rows(m, &num_kept);
    const int32_t num_dropped = m->num_con - num_kept;
    if (num_dropped == 0) return;
    keep_entries(&m->a, number);
    keep_sides_and_names(m, number);
    m->num_con = num_kept;
    m->con_lower.resize(static_cast<size_t>(num_kept));
    m->con_upper.resize(static_cast<size_t>(num_kept));
    for (quad_row &q : m->qcon) q.row = number[static_cast<size_t>(q.row)];
    std::erase_if(m->qcon, [](const quad_row &q) { return q.row < 0; });
    streams_printf(io->out, ZLR_STREAM_MSG, "%s: free rows left out: %d.\n", io->file, num_dropped);
}

void drop_names(model *m)
{
    names_clear(&m->con_names);
    names_clear(&m->var_names);
    names_resize(&m->con_names, m->num_con);
    names_resize(&m->var_names, m->num_var);
}
}  // namespace

int32_t adjust_read(const io_context *io, model *m)
{
    const param_set *params = io->params;
    int32_t res = check_encoding(io, m);
    if (res == ZLR_RES_OK) res = check_crossed(io, m);
    if (res != ZLR_RES_OK) return res;
    warn_of_huge(io, m);

    if (param_int(params, IPAR_READ_FREE_ROWS) == READ_FREE_ROWS_DROP) drop_free_rows(io, m);
    if (param_int(params, IPAR_READ_NAMES) == READ_NAMES_DROP) drop_names(m);
    if (param_int(params, IPAR_READ_INTEGERS) == READ_INTEGERS_RELAX)
        std::fill(m->var_type.begin(), m->var_type.end(), static_cast<uint8_t>(ZLR_VAR_CONT));
    const int32_t sense = param_int(params, IPAR_READ_SENSE);
    if (sense != SENSE_KEEP) m->sense = sense == SENSE_MAX ? ZLR_SENSE_MAX : ZLR_SENSE_MIN;
    return ZLR_RES_OK;
}
