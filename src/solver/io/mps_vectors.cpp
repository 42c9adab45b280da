/* mps_vectors.cpp - see mps_reader.h: the sections RHS, RANGES and BOUNDS.
 *
 * Right-hand sides and ranges are kept until the end, because either may stand first and a range is counted from the
 * right-hand side. Bounds are put into the model as they come. */
#include "solver/io/mps_reader.h"

#include <cmath>
#include <limits>

namespace
{
enum : uint8_t { lower_given = 1, upper_given = 2 };

/* Rows are named in their order here, for the most part. */
int32_t need_vector_row(mps_reader *r, std::string_view name, int32_t *row)
{
    const bool is_next = r->row_hint < r->m->num_con && names_get(&r->m->con_names, r->row_hint) == name;
    *row = r->row_hint;
    const int32_t res = is_next && !name.empty() ? ZLR_RES_OK : mps_need_row(r, name, row);
    if (res == ZLR_RES_OK && *row >= 0) r->row_hint = *row + 1;
    return res;
}

int32_t need_pair_rows(mps_reader *r, const mps_pairs *pairs, int32_t *row)
{
    for (int32_t i = 0; i < pairs->num; ++i) {
        const int32_t res = need_vector_row(r, pairs->name[i], &row[i]);
        if (res != ZLR_RES_OK) return res;
    }
    return ZLR_RES_OK;
}

int32_t given_twice(mps_reader *r, const char *what, std::string_view name)
{
    return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the row '%s' has a %s already", io_quote(name).c_str(), what);
}

double with_infinity(const mps_reader *r, double value)
{
    return std::fabs(value) < r->infinite ? value : std::copysign(model_inf, value);
}

/* A right-hand side may be infinite on the side where that means "no bound". */
int32_t check_rhs(mps_reader *r, int32_t row, std::string_view name, double value)
{
    if (row == mps_objective) {
        if (std::isfinite(value)) return r->objective_rhs ? given_twice(r, "right-hand side", name) : ZLR_RES_OK;
    } else {
        const char type = r->row_type[static_cast<size_t>(row)];
        if (!std::isnan(r->rhs[static_cast<size_t>(row)])) return given_twice(r, "right-hand side", name);
        const double v = with_infinity(r, value);
        if (std::isfinite(v) || type == 'N' || (type == 'L' && v > 0) || (type == 'G' && v < 0)) return ZLR_RES_OK;
    }
    return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                    "found an infinite right-hand side of the row '%s' where a finite one was expected",
                    io_quote(name).c_str());
}

void put_rhs(mps_reader *r, int32_t row, std::string_view name, double value)
{
    if (row == mps_objective) {
        if (r->objective_rhs_as != OBJECTIVE_RHS_IGNORE)
            r->m->cfix = value == 0.0 || r->objective_rhs_as == OBJECTIVE_RHS_KEEP ? value + 0.0 : -value;
        r->objective_rhs = true;
        return;
    }
    r->rhs[static_cast<size_t>(row)] = with_infinity(r, value);
    if (r->row_type[static_cast<size_t>(row)] == 'N' && value != 0.0)
        mps_count(&r->free_row_value, name, r->lines.number);
}
}  // namespace

int32_t mps_line_rhs(mps_reader *r, const mps_fields *fields)
{
    mps_pairs pairs;
    int32_t row[2] = {mps_none, mps_none};
    int32_t res = mps_take_pairs(r, fields, true, &pairs);
    if (res == ZLR_RES_OK) res = need_pair_rows(r, &pairs, row);
    if (res != ZLR_RES_OK) return res;
    const bool taken = !r->rhs_set.known || pairs.set.empty() || pairs.set == r->rhs_set.name;
    for (int32_t i = 0; i < pairs.num && taken; ++i) {
        if (i == 1 && row[0] == row[1]) return given_twice(r, "right-hand side", pairs.name[i]);
        if ((res = check_rhs(r, row[i], pairs.name[i], pairs.value[i])) != ZLR_RES_OK) return res;
    }
    if (!mps_set_taken(r, &r->rhs_set, pairs.set, "right-hand sides")) return ZLR_RES_OK;
    for (int32_t i = 0; i < pairs.num; ++i) put_rhs(r, row[i], pairs.name[i], pairs.value[i]);
    return ZLR_RES_OK;
}

int32_t mps_line_ranges(mps_reader *r, const mps_fields *fields)
{
    mps_pairs pairs;
    int32_t row[2] = {mps_none, mps_none};
    int32_t res = mps_take_pairs(r, fields, true, &pairs);
    if (res == ZLR_RES_OK) res = need_pair_rows(r, &pairs, row);
    if (res != ZLR_RES_OK) return res;
    if (r->range.empty()) r->range.assign(r->row_type.size(), std::numeric_limits<double>::quiet_NaN());

    const bool taken = !r->range_set.known || pairs.set.empty() || pairs.set == r->range_set.name;
    for (int32_t i = 0; i < pairs.num && taken; ++i) {
        const bool is_twice = (i == 1 && row[0] == row[1]) ||
                              (row[i] != mps_objective && !std::isnan(r->range[static_cast<size_t>(row[i])]));
        if (is_twice) return given_twice(r, "range", pairs.name[i]);
    }
    if (!mps_set_taken(r, &r->range_set, pairs.set, "ranges")) return ZLR_RES_OK;
    for (int32_t i = 0; i < pairs.num; ++i) {
        if (row[i] == mps_objective || r->row_type[static_cast<size_t>(row[i])] == 'N')
            mps_count(&r->free_row_value, pairs.name[i], r->lines.number);
        else
            r->range[static_cast<size_t>(row[i])] = with_infinity(r, pairs.value[i]);
    }
    return ZLR_RES_OK;
}

/* A range R makes of a row: G [rhs, rhs + |R|], L [rhs - |R|, rhs], E [rhs, rhs + R] for R > 0, [rhs + R, rhs] for
 * R < 0. */
void mps_finish_rows(mps_reader *r)
{
    model *m = r->m;
    const size_t num = r->row_type.size();
    m->con_lower.assign(num, -model_inf);
    m->con_upper.assign(num, model_inf);
    for (size_t i = 0; i < num; ++i) {
        const char type = r->row_type[i];
        const double rhs = std::isnan(r->rhs[i]) ? 0.0 : r->rhs[i];
        const double given = r->range.empty() ? std::numeric_limits<double>::quiet_NaN() : r->range[i];
        const bool has = !std::isnan(given) && std::isfinite(rhs);
        if (type == 'G' || type == 'E') m->con_lower[i] = rhs;
        if (type == 'L' || type == 'E') m->con_upper[i] = rhs;
        if (has && (type == 'G' || (type == 'E' && given > 0))) m->con_upper[i] = rhs + std::fabs(given);
        if (has && (type == 'L' || (type == 'E' && given < 0))) m->con_lower[i] = rhs - std::fabs(given);
    }
}

/* ---- BOUNDS -------------------------------------------------------------------------------------------------------- */

namespace
{
struct bound_row {
    const char *word;
    bool has_value;
    bool is_integer;
    uint8_t sides; /* that it gives */
};

/* clang-format off */
constexpr bound_row bound_table[] = {
    { "UP", true,  false, upper_given },
    { "LO", true,  false, lower_given },
    { "FX", true,  false, lower_given | upper_given },
    { "FR", false, false, lower_given | upper_given },
    { "MI", false, false, lower_given },
    { "PL", false, false, upper_given },
    { "BV", false, true,  lower_given | upper_given },
    { "LI", true,  true,  lower_given },
    { "UI", true,  true,  upper_given },
};
/* clang-format on */

struct bound_line {
    const bound_row *type = nullptr;
    std::string_view set, column_name, value_text;
    int32_t column = mps_none;
    double value = 0.0;
};

int32_t find_bound_type(mps_reader *r, std::string_view word, const bound_row **type)
{
    for (const bound_row &row : bound_table)
        if (mps_is_word(word, row.word)) {
            *type = &row;
            return ZLR_RES_OK;
        }
    if (mps_is_word(word, "SC") || mps_is_word(word, "SI") || mps_is_word(word, "SN"))
        return mps_fail(r, ZLR_RES_ERR_FILE_UNSUPPORTED,
                        "found the bound type '%s': semi-continuous columns are not supported", io_quote(word).c_str());
    return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                    "found '%s' where a bound type, UP, LO, FX, FR, MI, PL, BV, LI or UI, was expected",
                    io_quote(word).c_str());
}

/* Finds out which field is which in a free line: the name of the set may be missing, and a value may stand behind a
 * type that needs none. */
int32_t sort_bound_fields(mps_reader *r, const mps_fields *fields, bound_line *b)
{
    const std::string_view *text = fields->text;
    if (fields->fixed) {
        b->set = text[1];
        b->column_name = text[2];
        b->value_text = text[3];
        return ZLR_RES_OK;
    }
    int32_t num = fields->num;
    for (int32_t i = 2; i < num; ++i)
        if ((text[i][0] == '$' || text[i][0] == '*') && mps_find_column(r, text[i]) == mps_none) num = i;
    if (num > 4)
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where the end of the line was expected",
                        io_quote(text[4]).c_str());

    const bool has_set =
        num == 4 || (num == 3 && !b->type->has_value &&
                     (mps_find_column(r, text[2]) != mps_none || mps_find_column(r, text[1]) == mps_none));
    const int32_t at = has_set ? 2 : 1;
    if (has_set) b->set = text[1];
    if (at < num) b->column_name = text[at];
    if (at + 1 < num) b->value_text = text[at + 1];
    return ZLR_RES_OK;
}

/* A value that means no bound on its own side, and nonsense on the other. */
int32_t check_bound_value(mps_reader *r, const bound_line *b)
{
    const uint8_t sides = b->type->sides;
    const bool bad = std::isinf(b->value) &&
                     ((b->value > 0 && (sides & lower_given) != 0) || (b->value < 0 && (sides & upper_given) != 0));
    if (!bad) return ZLR_RES_OK;
    return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s', which is infinite, where a bound of type %s was expected",
                    io_quote(b->value_text).c_str(), b->type->word);
}

int32_t parse_bound(mps_reader *r, const mps_fields *fields, bound_line *b)
{
    int32_t res = find_bound_type(r, fields->text[0], &b->type);
    if (res == ZLR_RES_OK) res = sort_bound_fields(r, fields, b);
    if (res == ZLR_RES_OK && b->column_name.empty())
        res = mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found the end of the line where the name of a column was expected");
    if (res == ZLR_RES_OK) res = mps_need_column(r, b->column_name, &b->column);
    if (res != ZLR_RES_OK || (!b->type->has_value && b->value_text.empty())) return res;
    if ((res = mps_take_number(r, b->value_text, &b->value)) != ZLR_RES_OK) return res;
    b->value = with_infinity(r, b->value);
    return b->type->has_value ? check_bound_value(r, b) : ZLR_RES_OK;
}

void put_lower(mps_reader *r, int32_t column, double value) { r->m->var_lower[static_cast<size_t>(column)] = value; }

void put_upper(mps_reader *r, int32_t column, double value) { r->m->var_upper[static_cast<size_t>(column)] = value; }

void put_bound(mps_reader *r, const bound_line *b)
{
    const int32_t j = b->column;
    const auto at = static_cast<size_t>(j);
    const std::string_view type = b->type->word;
    if ((r->bound_given[at] & b->type->sides) != 0) mps_count(&r->bound_twice, b->column_name, r->lines.number);

    if (type == "UP" || type == "UI") {
        put_upper(r, j, b->value);
        if (b->value < 0.0 && (r->bound_given[at] & lower_given) == 0) {
            if (r->negative_upper_as != NEGATIVE_UPPER_ZERO)
                put_lower(r, j, -model_inf); /* an old convention, which most readers keep */
            mps_count(&r->negative_upper, b->column_name, r->lines.number);
        }
    } else if (type == "LO" || type == "LI") {
        put_lower(r, j, b->value);
    } else if (type == "MI") {
        put_lower(r, j, -model_inf);
    } else if (type == "PL") {
        put_upper(r, j, model_inf);
    } else {
        put_lower(r, j, type == "FX" ? b->value : type == "BV" ? 0.0 : -model_inf);
        put_upper(r, j, type == "FX" ? b->value : type == "BV" ? 1.0 : model_inf);
    }
    if (b->type->is_integer) r->m->var_type[at] = ZLR_VAR_INT;
    r->bound_given[at] = static_cast<uint8_t>(r->bound_given[at] | b->type->sides);

    /* BV with its upper bound behind it, and 0 behind any type, are usual. */
    if (!b->type->has_value && b->value != 0.0 && !(type == "BV" && b->value == 1.0))
        mps_count(&r->ignored_value, b->column_name, r->lines.number);
}
}  // namespace

int32_t mps_line_bounds(mps_reader *r, const mps_fields *fields)
{
    bound_line b;
    const int32_t res = parse_bound(r, fields, &b);
    if (res != ZLR_RES_OK) return res;
    if (mps_set_taken(r, &r->bound_set, b.set, "bounds")) put_bound(r, &b);
    return ZLR_RES_OK;
}

namespace
{
/* Known only when no bound can follow any more. */
int32_t refuse_negative_upper(mps_reader *r)
{
    for (size_t j = 0; j < r->bound_given.size(); ++j) {
        if (!(r->m->var_upper[j] < 0.0) || (r->bound_given[j] & lower_given) != 0) continue;
        return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, 0,
                        "the column '%s' has the upper bound %g and no lower one (READ_NEGATIVE_UPPER)",
                        io_quote(names_get(&r->m->var_names, static_cast<int32_t>(j))).c_str(), r->m->var_upper[j]);
    }
    return ZLR_RES_OK;
}

int32_t check_set(const mps_reader *r, const mps_set *set, const char *what, const char *param)
{
    if (!set->asked_for || set->met || !set->told) return ZLR_RES_OK;
    return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, 0, "the file has %s, but none under the name '%s' (%s)", what,
                    io_quote(set->name).c_str(), param);
}
}  // namespace

/* A set that a parameter names, and that is not among those of the file, is not taken as empty in silence. */
int32_t mps_finish_sets(mps_reader *r)
{
    int32_t res = check_set(r, &r->rhs_set, "right-hand sides", "READ_RHS_SET");
    if (res == ZLR_RES_OK) res = check_set(r, &r->range_set, "ranges", "READ_RANGES_SET");
    return res == ZLR_RES_OK ? check_set(r, &r->bound_set, "bounds", "READ_BOUNDS_SET") : res;
}

/* An integer column between markers of which BOUNDS says nothing is binary: that is how the files that rely on it mean
 * it, and how the other readers take them, unless READ_MPS_INTEGER_BOUNDS says otherwise. Any bound in the file, a useless
 * one included, makes the lower bound 0 and the upper one infinite to begin with. */
int32_t mps_finish_bounds(mps_reader *r)
{
    int64_t num = 0;
    if (r->negative_upper_as == NEGATIVE_UPPER_ERROR) {
        const int32_t res = refuse_negative_upper(r);
        if (res != ZLR_RES_OK) return res;
    }
    if (param_int(r->io->params, IPAR_READ_MPS_INTEGER_BOUNDS) == INTEGER_BOUNDS_INFINITE) return ZLR_RES_OK;
    for (size_t j = 0; j < r->bound_given.size(); ++j) {
        if (r->m->var_type[j] != ZLR_VAR_INT || r->bound_given[j] != 0) continue;
        r->m->var_upper[j] = 1.0;
        ++num;
    }
    if (num > 0)
        io_warning(r->io, 0, "%lld integer columns have no bounds in the file and are taken as binary",
                   static_cast<long long>(num));
    return ZLR_RES_OK;
}
