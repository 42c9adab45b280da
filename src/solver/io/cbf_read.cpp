/* cbf_read.cpp - see cbf_reader.h: lines and numbers, the order of sections, and the problem that comes of them.
 *
 * The model has cones over columns alone. A block of CON in a quadratic cone is the point a x + b, which gets a column
 * for each of its parts: the row says a x - s = -b, and the columns s are in the cone. */
#include "solver/io/cbf_reader.h"

#include "solver/io/number.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdarg>

/* ---- lines and words --------------------------------------------------------------------------------------------- */

int32_t cbf_fail(const cbf_reader *r, int32_t code, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const std::string text = text_vformat(format, args);
    va_end(args);
    return io_error(r->io, code, r->lines.number, "%s", text.c_str());
}

int32_t cbf_next_line(cbf_reader *r, std::string_view *line)
{
    do {
        const int32_t res = lines_next(&r->lines, line);
        if (res != ZLR_RES_OK) return res;
        line->remove_prefix(std::min(line->find_first_not_of(" \t"), line->size()));
    } while (!r->lines.at_end && (line->empty() || line->front() == '#'));
    return ZLR_RES_OK;
}

int32_t cbf_body_line(cbf_reader *r, const char *what, std::string_view *line)
{
    const int32_t res = cbf_next_line(r, line);
    if (res != ZLR_RES_OK || !r->lines.at_end) return res;
    return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                    "found the end of the file in the section %s where %s was expected: the file is cut off",
                    r->section, what);
}

std::string_view cbf_take_word(std::string_view *line)
{
    const char *p = line->data();
    const char *end = p + line->size();
    while (p != end && (*p == ' ' || *p == '\t')) ++p;
    const char *begin = p;
    if (p != end && *p == '#') return {};
    while (p != end && *p != ' ' && *p != '\t') ++p;
    line->remove_prefix(static_cast<size_t>(p - line->data()));
    return {begin, static_cast<size_t>(p - begin)};
}

static int32_t found_expected(const cbf_reader *r, std::string_view found, const char *expected)
{
    if (found.empty())
        return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found the end of the line in %s where %s was expected", r->section,
                        expected);
    return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' in %s where %s was expected", io_quote(found).c_str(),
                    r->section, expected);
}

int32_t cbf_end_line(const cbf_reader *r, std::string_view line)
{
    const std::string_view word = cbf_take_word(&line);
    return word.empty() ? ZLR_RES_OK : found_expected(r, word, "the end of the line");
}

/* Digits alone: no sign, and no more of them than an int64_t holds. */
static bool parse_count(std::string_view word, int64_t *count)
{
    if (word.empty() || word.size() > 18) return false;
    int64_t value = 0;
    for (const char c : word) {
        if (c < '0' || c > '9') return false;
        value = 10 * value + (c - '0');
    }
    *count = value;
    return true;
}

int32_t cbf_take_count(const cbf_reader *r, std::string_view *line, const char *what, int64_t limit, int64_t *count)
{
    const std::string_view word = cbf_take_word(line);
    if (!parse_count(word, count)) return found_expected(r, word, what);
    if (*count <= limit) return ZLR_RES_OK;
    return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found %" PRId64 " in %s where %s up to %" PRId64 " was expected",
                    *count, r->section, what, limit);
}

int32_t cbf_take_index(const cbf_reader *r, std::string_view *line, const char *what, int32_t num, int32_t *index)
{
    const std::string_view word = cbf_take_word(line);
    int64_t value = 0;
    if (!parse_count(word, &value)) {
        const std::string expected = text_format("the number of a %s", what);
        return found_expected(r, word, expected.c_str());
    }
    if (value >= num)
        return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                        "found %s %" PRId64 " in %s, and there are %d, with the numbers from 0 on", what, value,
                        r->section, num);
    *index = static_cast<int32_t>(value);
    return ZLR_RES_OK;
}

int32_t cbf_take_value(const cbf_reader *r, std::string_view *line, double *value)
{
    const std::string_view word = cbf_take_word(line);
    if (number_parse(word, value) && std::isfinite(*value)) return ZLR_RES_OK;
    return found_expected(r, word, "a finite number");
}

int32_t cbf_count_line(cbf_reader *r, const char *what, int64_t limit, int64_t *count)
{
    std::string_view line;
    int32_t res = cbf_body_line(r, what, &line);
    if (res == ZLR_RES_OK) res = cbf_take_count(r, &line, what, limit, count);
    return res == ZLR_RES_OK ? cbf_end_line(r, line) : res;
}

/* ---- sections ---------------------------------------------------------------------------------------------------- */

struct section_row {
    const char *word;
    int32_t (*read)(cbf_reader *r);
    const char *needs[2]; /* sections that must stand before */
};

/* clang-format off */
static const section_row sections[] = {
    { "VER",        cbf_section_ver,       { nullptr, nullptr } },
    { "OBJSENSE",   cbf_section_objsense,  { "VER",   nullptr } },
    { "VAR",        cbf_section_var,       { "VER",   nullptr } },
    { "CON",        cbf_section_con,       { "VER",   nullptr } },
    { "INT",        cbf_section_int,       { "VAR",   nullptr } },
    { "OBJACOORD",  cbf_section_objacoord, { "VAR",   nullptr } },
    { "OBJBCOORD",  cbf_section_objbcoord, { "VER",   nullptr } },
    { "ACOORD",     cbf_section_acoord,    { "VAR",   "CON"   } },
    { "BCOORD",     cbf_section_bcoord,    { "CON",   nullptr } },
    { "PSDVAR",     cbf_section_refused,   { "VER",   nullptr } },
    { "PSDCON",     cbf_section_refused,   { "VER",   nullptr } },
    { "POWCONES",   cbf_section_refused,   { "VER",   nullptr } },
    { "POW*CONES",  cbf_section_refused,   { "VER",   nullptr } },
    { "OBJFCOORD",  cbf_section_refused,   { "VER",   nullptr } },
    { "FCOORD",     cbf_section_refused,   { "VER",   nullptr } },
    { "HCOORD",     cbf_section_refused,   { "VER",   nullptr } },
    { "DCOORD",     cbf_section_refused,   { "VER",   nullptr } },
    { "CHANGE",     cbf_section_refused,   { "VER",   nullptr } },
};
/* clang-format on */

static const section_row *find_section(std::string_view word)
{
    for (const section_row &row : sections)
        if (word == row.word) return &row;
    return nullptr;
}

static bool has_seen(const cbf_reader *r, const char *word)
{
    return (r->seen >> static_cast<uint32_t>(find_section(word) - sections) & 1U) != 0;
}

static int32_t read_section(cbf_reader *r, std::string_view line)
{
    const std::string_view word = cbf_take_word(&line);
    const section_row *row = find_section(word);
    if (row == nullptr)
        return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where the name of a section was expected%s%s",
                        io_quote(word).c_str(), *r->section != '\0' ? ", behind the last line of " : "", r->section);
    r->section = row->word;
    if (has_seen(r, row->word)) return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found a second section %s", row->word);
    for (const char *needed : row->needs)
        if (needed != nullptr && !has_seen(r, needed))
            return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found the section %s where %s was expected first", row->word,
                            needed);
    r->seen |= 1U << static_cast<uint32_t>(row - sections);
    const int32_t res = cbf_end_line(r, line);
    return res == ZLR_RES_OK ? row->read(r) : res;
}

/* The format has no end mark: that the sections are there that no file does without is all that can be asked for. */
static int32_t check_end(const cbf_reader *r)
{
    if (r->lines.number == 0) return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the file is empty");
    for (const char *needed : {"VER", "OBJSENSE", "VAR"})
        if (!has_seen(r, needed))
            return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                            "found the end of the file where the section %s was expected: the file is cut off", needed);
    if (!r->lines.last_is_whole)
        io_warning(r->io, r->lines.number, "the last line has no end: the file may have been cut off");
    return ZLR_RES_OK;
}

static int32_t read_sections(cbf_reader *r)
{
    for (;;) {
        std::string_view line;
        int32_t res = cbf_next_line(r, &line);
        if (res != ZLR_RES_OK) return res;
        if (r->lines.at_end) return check_end(r);
        res = read_section(r, line);
        if (res != ZLR_RES_OK) return res;
    }
}

/* ---- when all is read -------------------------------------------------------------------------------------------- */

/* Whether a block is a cone of the model. Quadratic ones that are too short for that are bounds: of one part, x >= 0,
 * and rotated ones of two, x >= 0 and y >= 0. */
static bool is_model_cone(const cbf_block *block)
{
    return (block->cone == cbf_cone::quad && block->size >= 2) || (block->cone == cbf_cone::rquad && block->size >= 3);
}

static void add_cone(model *m, const cbf_block *block, int32_t first)
{
    model_cone cone;
    cone.type = block->cone == cbf_cone::quad ? ZLR_CT_QUAD : ZLR_CT_RQUAD;
    cone.member.resize(static_cast<size_t>(block->size));
    for (int32_t k = 0; k < block->size; k++) cone.member[static_cast<size_t>(k)] = first + k;
    m->cones.push_back(std::move(cone));
}

/* Sides that say that something plus b is in a linear cone. */
static void set_sides(const cbf_reader *r, cbf_cone cone, double b, double *lower, double *upper)
{
    const double side = 0.0 - b; /* no negative zero */
    const bool has_lower = cone != cbf_cone::free && cone != cbf_cone::minus;
    const bool has_upper = cone == cbf_cone::minus || cone == cbf_cone::zero;
    *lower = has_lower && side > -r->infinite ? side : -model_inf;
    *upper = has_upper && side < r->infinite ? side : model_inf;
}

static void finish_columns(cbf_reader *r)
{
    model *m = r->m;
    int32_t first = 0;
    for (const cbf_block &block : r->var_blocks) {
        const bool is_cone = is_model_cone(&block);
        if (is_cone) add_cone(m, &block, first);
        for (int32_t j = first; j < first + block.size; j++)
            set_sides(r, is_cone ? cbf_cone::free : block.cone, 0.0, &m->var_lower[static_cast<size_t>(j)],
                      &m->var_upper[static_cast<size_t>(j)]);
        first += block.size;
    }
}

/* One column for each row of the block, named after it. */
static void add_slacks(model *m, const cbf_block *block, int32_t first_row)
{
    const int32_t first = m->num_var;
    model_append_vars(m, block->size);
    for (int32_t k = 0; k < block->size; k++) {
        const size_t j = static_cast<size_t>(first) + static_cast<size_t>(k);
        m->var_lower[j] = -model_inf;
        m->var_upper[j] = model_inf;
        m->a.row.push_back(first_row + k);
        m->a.value.push_back(-1.0);
        m->a.start[j + 1] = static_cast<int64_t>(m->a.row.size());
        names_put(&m->var_names, first + k, names_shown(&m->con_names, first_row + k, 'c') + "_cone");
    }
    add_cone(m, block, first);
}

static int32_t finish_rows(cbf_reader *r)
{
    model *m = r->m;
    int64_t num_slacks = 0;
    for (const cbf_block &block : r->con_blocks) num_slacks += is_model_cone(&block) ? block.size : 0;
    if (m->num_var + num_slacks > INT32_MAX)
        return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                        "the rows in cones bring %" PRId64 " columns more, which are too many", num_slacks);
    int32_t first = 0;
    for (const cbf_block &block : r->con_blocks) {
        const bool is_cone = is_model_cone(&block);
        for (int32_t k = first; k < first + block.size; k++) {
            const auto i = static_cast<size_t>(k);
            set_sides(r, block.cone, r->b[i], &m->con_lower[i], &m->con_upper[i]);
            if (is_cone) m->con_lower[i] = m->con_upper[i] = 0.0 - r->b[i];
        }
        if (is_cone) add_slacks(m, &block, first);
        first += block.size;
    }
    return ZLR_RES_OK;
}

int32_t cbf_read(const io_context *io, byte_source *in, model *m)
{
    cbf_reader r;
    r.io = io;
    r.m = m;
    r.infinite = param_dou(io->params, DPAR_BOUND_INFINITE);
    r.tiny = param_dou(io->params, DPAR_DATA_TOL_COEF);
    lines_open(&r.lines, io, in);
    const int32_t res = read_sections(&r);
    if (res != ZLR_RES_OK) return res;
    finish_columns(&r);
    return finish_rows(&r);
}
