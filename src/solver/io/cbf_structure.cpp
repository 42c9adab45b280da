/* cbf_structure.cpp - see cbf_reader.h: the sections that say what a problem is made of, and those that are refused. */
#include "solver/io/cbf_reader.h"

#include <algorithm>
#include <cinttypes>

/* Rows and columns are announced by a number alone: a file of fifty bytes must not make the reader ask for all of the
 * machine's memory. */
static constexpr int64_t most_items = 100'000'000;

static constexpr int64_t newest_version = 3;

int32_t cbf_section_ver(cbf_reader *r)
{
    int64_t version = 0;
    const int32_t res = cbf_count_line(r, "the version of the format", INT32_MAX, &version);
    if (res != ZLR_RES_OK) return res;
    if (version >= 1 && version <= newest_version) return ZLR_RES_OK;
    return cbf_fail(r, ZLR_RES_ERR_FILE_UNSUPPORTED,
                    "version %" PRId64 " of the format is not supported; versions 1 to %" PRId64 " are", version,
                    newest_version);
}

int32_t cbf_section_objsense(cbf_reader *r)
{
    std::string_view line;
    const int32_t res = cbf_body_line(r, "MIN or MAX", &line);
    if (res != ZLR_RES_OK) return res;
    const std::string_view word = cbf_take_word(&line);
    if (word != "MIN" && word != "MAX")
        return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' in OBJSENSE where MIN or MAX was expected",
                        io_quote(word).c_str());
    r->m->sense = word == "MAX" ? ZLR_SENSE_MAX : ZLR_SENSE_MIN;
    return cbf_end_line(r, line);
}

/* ---- cones ------------------------------------------------------------------------------------------------------- */

/* Cones that the format has and the model has not. */
static bool is_other_cone(std::string_view word)
{
    return word == "EXP" || word == "EXP*" || word == "SVECPSD" || word.ends_with(":POW") || word.ends_with(":POW*");
}

static int32_t read_block(cbf_reader *r, int64_t left, cbf_block *block)
{
    std::string_view line;
    int32_t res = cbf_body_line(r, "a cone and its size", &line);
    if (res != ZLR_RES_OK) return res;
    const std::string_view word = cbf_take_word(&line);
    const auto row = std::find_if(std::begin(cbf_cone_table), std::end(cbf_cone_table),
                                  [&](const cbf_cone_row &each) { return word == each.word; });
    if (row == std::end(cbf_cone_table)) {
        if (is_other_cone(word))
            return cbf_fail(r, ZLR_RES_ERR_FILE_UNSUPPORTED,
                            "the cone %s is not supported; F, L+, L-, L=, Q and QR are", io_quote(word).c_str());
        return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                        "found '%s' in %s where a cone (F, L+, L-, L=, Q, QR) and its size were expected",
                        io_quote(word).c_str(), r->section);
    }
    int64_t size = 0;
    res = cbf_take_count(r, &line, "the size of a cone", INT32_MAX, &size);
    if (res == ZLR_RES_OK) res = cbf_end_line(r, line);
    if (res != ZLR_RES_OK) return res;
    if (size < row->least)
        return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found a cone %s of size %" PRId64 ", which needs at least %d",
                        row->word, size, row->least);
    if (size > left)
        return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                        "found a cone of size %" PRId64 " where the first line of %s leaves %" PRId64, size, r->section,
                        left);
    *block = {static_cast<cbf_cone>(row - cbf_cone_table), static_cast<int32_t>(size)};
    return ZLR_RES_OK;
}

static int32_t read_blocks(cbf_reader *r, const char *what, int32_t *num, std::vector<cbf_block> *blocks)
{
    std::string_view line;
    int64_t total = 0;
    int64_t num_blocks = 0;
    int32_t res = cbf_body_line(r, what, &line);
    if (res == ZLR_RES_OK) res = cbf_take_count(r, &line, what, most_items, &total);
    if (res == ZLR_RES_OK) res = cbf_take_count(r, &line, "a number of cones", INT32_MAX, &num_blocks);
    if (res == ZLR_RES_OK) res = cbf_end_line(r, line);
    int64_t left = total;
    for (int64_t k = 0; k < num_blocks && res == ZLR_RES_OK; k++) {
        cbf_block block = {};
        res = read_block(r, left, &block);
        blocks->push_back(block);
        left -= block.size;
    }
    if (res != ZLR_RES_OK) return res;
    if (left > 0)
        return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT,
                        "the cones of %s have %" PRId64 " members in all, and its first line says %" PRId64, r->section,
                        total - left, total);
    *num = static_cast<int32_t>(total);
    return ZLR_RES_OK;
}

int32_t cbf_section_var(cbf_reader *r)
{
    const int32_t res = read_blocks(r, "a number of columns", &r->num_var, &r->var_blocks);
    if (res == ZLR_RES_OK) model_append_vars(r->m, r->num_var);
    return res;
}

int32_t cbf_section_con(cbf_reader *r)
{
    const int32_t res = read_blocks(r, "a number of rows", &r->num_con, &r->con_blocks);
    if (res != ZLR_RES_OK) return res;
    model_append_cons(r->m, r->num_con);
    r->b.assign(static_cast<size_t>(r->num_con), 0.0);
    return ZLR_RES_OK;
}

/* ---- integers ---------------------------------------------------------------------------------------------------- */

int32_t cbf_section_int(cbf_reader *r)
{
    int64_t num = 0;
    int32_t res = cbf_count_line(r, "a number of integer columns", r->num_var, &num);
    for (int64_t k = 0; k < num && res == ZLR_RES_OK; k++) {
        std::string_view line;
        int32_t j = 0;
        res = cbf_body_line(r, "the number of a column", &line);
        if (res == ZLR_RES_OK) res = cbf_take_index(r, &line, "column", r->num_var, &j);
        if (res == ZLR_RES_OK) res = cbf_end_line(r, line);
        if (res != ZLR_RES_OK) return res;
        uint8_t *type = &r->m->var_type[static_cast<size_t>(j)];
        if (*type == ZLR_VAR_INT) return cbf_fail(r, ZLR_RES_ERR_FILE_FORMAT, "column %d stands twice in INT", j);
        *type = ZLR_VAR_INT;
    }
    return res;
}

/* ---- what is refused --------------------------------------------------------------------------------------------- */

/* Some programs write a section with a count of 0 for what a problem has not. */
int32_t cbf_section_refused(cbf_reader *r)
{
    const char *section = r->section;
    if (std::string_view(section) != "CHANGE") {
        std::string_view line;
        const int64_t at = r->lines.number;
        const int32_t res = cbf_body_line(r, "a count", &line);
        if (res != ZLR_RES_OK) return res;
        if (cbf_take_word(&line) == "0") return ZLR_RES_OK;
        return io_error(r->io, ZLR_RES_ERR_FILE_UNSUPPORTED, at, "the section %s is not supported", section);
    }
    return cbf_fail(r, ZLR_RES_ERR_FILE_UNSUPPORTED,
                    "the section CHANGE, which begins another problem, is not supported");
}
