/* mps_read.cpp - see mps_reader.h: lines in batches, the choice of the dialect, the end of a file. */
#include "solver/io/mps_reader.h"

#include <cstdarg>

int32_t mps_fail(mps_reader *r, int32_t code, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    r->failure = text_vformat(format, args);
    va_end(args);
    return code;
}

int32_t mps_tell(mps_reader *r, int32_t code, int64_t line)
{
    return io_error(r->io, code, line, "%s", r->failure.c_str());
}

void mps_count(mps_tally *tally, std::string_view name, int64_t line)
{
    if (tally->num++ > 0) return;
    tally->first_line = line;
    tally->first_name = io_quote(name);
}

bool mps_set_taken(mps_reader *r, mps_set *set, std::string_view name, const char *what)
{
    if (!set->known) set->name = name;
    set->known = true;
    if (name.empty() || name == set->name) {
        set->met = true;
        return true;
    }
    if (!set->told)
        io_warning(r->io, r->lines.number, "the %s '%s' are taken, and those of '%s' and others are left out", what,
                   io_quote(set->name).c_str(), io_quote(name).c_str());
    set->told = true;
    return false;
}

int32_t mps_find_row(mps_reader *r, std::string_view name)
{
    if (r->has_objective && name == r->m->obj_name) return mps_objective;
    return name_index_find(&r->row_index, &r->m->con_names, name);
}

int32_t mps_need_row(mps_reader *r, std::string_view name, int32_t *row)
{
    *row = mps_find_row(r, name);
    if (*row != mps_none) return ZLR_RES_OK;
    return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where the name of a row was expected",
                    io_quote(name).c_str());
}

/* Columns are named again in the order in which they were met, for the most part: the one behind the last is tried
 * before the index. */
int32_t mps_find_column(mps_reader *r, std::string_view name)
{
    const model *m = r->m;
    if (name.empty()) return mps_none;
    if (r->column_hint > 0 && names_get(&m->var_names, r->column_hint - 1) == name) return r->column_hint - 1;
    int32_t column = r->column_hint;
    if (column >= m->num_var || names_get(&m->var_names, column) != name)
        column = name_index_find(&r->column_index, &m->var_names, name);
    if (column != mps_none) r->column_hint = column + 1;
    return column;
}

int32_t mps_need_column(mps_reader *r, std::string_view name, int32_t *column)
{
    *column = mps_find_column(r, name);
    if (*column != mps_none) return ZLR_RES_OK;
    return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where the name of a column was expected",
                    io_quote(name).c_str());
}

namespace
{
/* ---- Data lines ---------------------------------------------------------------------------------------------------- */

int32_t take_fields(mps_reader *r, const mps_fields *fields)
{
    switch (r->section) {
    case mps_section::columns: return mps_line_columns(r, fields);
    case mps_section::rows: return mps_line_rows(r, fields);
    case mps_section::rhs: return mps_line_rhs(r, fields);
    case mps_section::ranges: return mps_line_ranges(r, fields);
    case mps_section::bounds: return mps_line_bounds(r, fields);
    case mps_section::quadobj:
    case mps_section::qsection:
    case mps_section::qmatrix:
    case mps_section::qcmatrix: return mps_line_quad(r, fields);
    case mps_section::objsense:
    case mps_section::objname: return mps_line_single_word(r, fields);
    default:
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where the name of a section was expected",
                        io_quote(fields->text[fields->num - 1]).c_str());
    }
}

/* Tries a line by columns that makes no sense by blanks. */
int32_t retry_by_columns(mps_reader *r, std::string_view line, int32_t res)
{
    mps_fields fields;
    const std::string failure = r->failure;
    if (!mps_split_fixed(line, &fields) || take_fields(r, &fields) != ZLR_RES_OK) {
        r->failure = failure;
        return res;
    }
    r->dialect = MPS_FIXED;
    streams_printf(r->io->out, ZLR_STREAM_MSG, "%s(%lld): fixed MPS format, with blanks in names.\n", r->io->file,
                   static_cast<long long>(r->lines.number));
    return ZLR_RES_OK;
}

int32_t take_data(mps_reader *r, std::string_view line, const mps_fields *by_blanks)
{
    int32_t res = ZLR_RES_OK;
    if (r->dialect == MPS_FIXED && r->section != mps_section::objsense) {
        mps_fields fields;
        if (mps_split_fixed(line, &fields))
            res = take_fields(r, &fields);
        else
            res = mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the line does not keep to the columns of the fixed format");
    } else {
        res = take_fields(r, by_blanks);
        if (res == ZLR_RES_ERR_FILE_FORMAT && r->dialect == MPS_AUTO) res = retry_by_columns(r, line, res);
    }
    return res == ZLR_RES_OK ? res : mps_tell(r, res, r->lines.number);
}

bool is_blank_line(std::string_view line) { return line.find_first_not_of(" \t") == std::string_view::npos; }

bool is_data(std::string_view line) { return !line.empty() && (line[0] == ' ' || line[0] == '\t'); }

int32_t take_line(mps_reader *r, std::string_view line, const mps_fields *by_blanks)
{
    ++r->lines.number;
    if (is_data(line)) return by_blanks->num == 0 ? ZLR_RES_OK : take_data(r, line, by_blanks);
    return line.empty() || line[0] == '*' ? ZLR_RES_OK : mps_take_header(r, line);
}

constexpr int32_t batch_lines = 32;

struct line_batch {
    std::string_view line[batch_lines];
    mps_fields fields[batch_lines]; /* of data lines, by blanks */
    int32_t num = 0;
};

/* Lets the memory that the lines of COLUMNS are about to ask for come into the caches; see names.h. A name that is no
 * name of a row does no harm. */
void fetch_names(mps_reader *r, line_batch *batch)
{
    const model *m = r->m;
    uint32_t hash[2 * batch_lines];
    int32_t row[2 * batch_lines];
    int32_t num = 0;
    std::string_view column;
    for (int32_t k = 0; k < batch->num; ++k) {
        mps_fields *f = &batch->fields[k];
        f->hashed = true;
        for (int32_t i = 1; i < f->num && i < 4; i += 2) {
            hash[num] = name_hash(f->text[i]);
            f->hash[i / 2] = hash[num];
            name_index_fetch_slot(&r->row_index, hash[num++]);
        }
        if (f->num > 0 && f->text[0] != column) {
            column = f->text[0];
            name_index_fetch_slot(&r->column_index, name_hash(column));
        }
    }
    for (int32_t k = 0; k < num; ++k) row[k] = name_index_fetch_start(&r->row_index, &m->con_names, hash[k]);
    for (int32_t k = 0; k < num; ++k) {
        if (row[k] < 0) continue;
        name_index_fetch_text(&m->con_names, row[k]);
        __builtin_prefetch(&r->row_mark[static_cast<size_t>(row[k])], 1);
    }
}

int32_t next_batch(mps_reader *r, line_batch *batch)
{
    const int32_t res = lines_next_batch(&r->lines, batch->line, batch_lines, &batch->num);
    if (res != ZLR_RES_OK) return res;
    for (int32_t k = 0; k < batch->num; ++k) {
        batch->fields[k].num = 0;
        batch->fields[k].hashed = false;
        if (is_data(batch->line[k])) mps_split_free(batch->line[k], &batch->fields[k]);
    }
    if (r->section == mps_section::columns && r->dialect != MPS_FIXED) fetch_names(r, batch);
    return ZLR_RES_OK;
}

/* The end of a file without ENDATA. There are files that lack it: where all of the matrix has been read and the last line
 * is whole, the problem is taken, and the user is told what may be missing. Anything else is a file that was cut. */
int32_t end_without_endata(mps_reader *r)
{
    const int64_t line = r->lines.number;
    const bool is_behind_columns =
        r->section == mps_section::rhs || r->section == mps_section::ranges || r->section == mps_section::bounds;
    const bool is_taken = param_int(r->io->params, IPAR_READ_MISSING_END) != MISSING_END_ERROR;
    if (is_behind_columns && is_taken && r->lines.last_is_whole) {
        io_warning(r->io, line,
                   "found the end of the file where ENDATA was expected: right-hand sides, ranges or bounds "
                   "may be missing");
        return mps_end_section(r);
    }
    if (line == 0) return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, 0, "the file is empty");
    if (r->section == mps_section::none)
        return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, line, "found the end of the file where a section was expected");
    return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, line,
                    "found the end of the file in the section %s where ENDATA was expected%s",
                    mps_section_word(r->section), is_taken ? ": the file is cut off" : "");
}

/* Reads to the end: a compressed file that is damaged or cut shows only there. */
int32_t read_rest(mps_reader *r, const line_batch *batch, int32_t next)
{
    bool told = false;
    std::string_view line;
    for (;;) {
        if (next < batch->num) {
            line = batch->line[next++];
            ++r->lines.number;
        } else {
            const int32_t res = lines_next(&r->lines, &line);
            if (res != ZLR_RES_OK || r->lines.at_end) return res;
        }
        if (told || line.empty() || line[0] == '*' || is_blank_line(line)) continue;
        io_warning(r->io, r->lines.number, "what stands behind ENDATA is left out");
        told = true;
    }
}

int32_t read_lines(mps_reader *r)
{
    line_batch batch;
    for (;;) {
        int32_t res = next_batch(r, &batch);
        if (res != ZLR_RES_OK) return res;
        if (r->lines.at_end) return end_without_endata(r);
        for (int32_t k = 0; k < batch.num; ++k) {
            if ((res = take_line(r, batch.line[k], &batch.fields[k])) != ZLR_RES_OK) return res;
            if (r->section == mps_section::endata) return read_rest(r, &batch, k + 1);
        }
    }
}

void tell_tally(const mps_reader *r, const mps_tally *tally, const char *what)
{
    if (tally->num == 1)
        io_warning(r->io, tally->first_line, "'%s' %s", tally->first_name.c_str(), what);
    else if (tally->num > 1)
        io_warning(r->io, tally->first_line, "'%s', and %lld after it, %s", tally->first_name.c_str(),
                   static_cast<long long>(tally->num - 1), what);
}

const char *duplicates_text(int32_t policy)
{
    switch (policy) {
    case DUPLICATES_FIRST: return "has an entry that is given again: the first value counts";
    case DUPLICATES_LAST: return "has an entry that is given again: the last value counts";
    default: return "has an entry that is given again: the values are added up";
    }
}

void tell_doubts(const mps_reader *r)
{
    if (!r->has_objective) io_warning(r->io, 0, "there is no row of type N: the objective is 0");
    tell_tally(r, &r->column_twice, "stands in more than one place of COLUMNS: its entries are put together");
    tell_tally(r, &r->entry_twice, "has an entry that stands twice with the same value: it counts once");
    tell_tally(r, &r->entry_again, duplicates_text(r->duplicates));
    tell_tally(r, &r->quad_twice, "has a quadratic entry that stands more than once: the values are added up");
    tell_tally(r, &r->quad_both,
               "has a quadratic entry in both triangles of a section that holds one: the values are added up");
    tell_tally(r, &r->free_row_value, "is a free row: its right-hand side or range has no effect");
    tell_tally(r, &r->negative_upper,
               r->negative_upper_as == NEGATIVE_UPPER_ZERO
                   ? "has a negative upper bound and no lower one: the lower bound stays at 0, and no value fits"
                   : "has a negative upper bound and no lower one: the lower bound is taken as -infinity");
    tell_tally(r, &r->bound_twice, "has a bound that is given again: the last one counts");
    tell_tally(r, &r->ignored_value, "has a bound of a type without a value: the value has no effect");
}
void ask_for_set(mps_set *set, const char *name)
{
    set->name = name;
    set->known = set->asked_for = name[0] != '\0';
}

void take_params(mps_reader *r, const param_set *params)
{
    const char *objective = param_str(params, SPAR_READ_OBJECTIVE_ROW);
    r->dialect = param_int(params, IPAR_READ_MPS_FORMAT);
    r->infinite = param_dou(params, DPAR_BOUND_INFINITE);
    r->tiny = param_dou(params, DPAR_DATA_TOL_COEF);
    r->duplicates = param_int(params, IPAR_READ_MPS_DUPLICATES);
    r->negative_upper_as = param_int(params, IPAR_READ_NEGATIVE_UPPER);
    r->objective_rhs_as = param_int(params, IPAR_READ_MPS_OBJECTIVE_RHS);
    ask_for_set(&r->rhs_set, param_str(params, SPAR_READ_RHS_SET));
    ask_for_set(&r->range_set, param_str(params, SPAR_READ_RANGES_SET));
    ask_for_set(&r->bound_set, param_str(params, SPAR_READ_BOUNDS_SET));
    r->objective_chosen = r->objective_asked = objective[0] != '\0';
    r->m->obj_name = objective;
}
}  // namespace

int32_t mps_read(const io_context *io, byte_source *in, model *m)
{
    mps_reader r;
    r.io = io;
    r.m = m;
    take_params(&r, io->params);
    lines_open(&r.lines, io, in);

    int32_t res = read_lines(&r);
    if (res == ZLR_RES_OK) res = mps_finish_sets(&r);
    if (res == ZLR_RES_OK) res = mps_finish_bounds(&r);
    if (res != ZLR_RES_OK) return res;
    mps_finish_rows(&r);
    tell_doubts(&r);
    return ZLR_RES_OK;
}
