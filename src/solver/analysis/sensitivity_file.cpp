/* sensitivity_file.cpp - see sensitivity_file.h. */
#include "solver/analysis/sensitivity_file.h"

#include "solver/io/line_reader.h"
#include "solver/io/source_holder.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <memory>

struct item_reader {
    const io_context *io;
    const model *m;
    std::vector<range_item> *items;
    std::unique_ptr<name_index> rows, columns; /* made when a name is first asked for */
    int64_t line = 0;
};

static void add_sides(const model *m, range_what what, int32_t k, std::vector<range_item> *items)
{
    const bool is_row = what == RANGE_ROW;
    const auto at = static_cast<size_t>(k);
    if (std::isfinite((is_row ? m->con_lower : m->var_lower)[at])) items->push_back({what, k, false});
    if (std::isfinite((is_row ? m->con_upper : m->var_upper)[at])) {
        const bool together = (is_row ? m->con_lower : m->var_lower)[at] == (is_row ? m->con_upper : m->var_upper)[at];
        if (!together) items->push_back({what, k, true});
    }
}

static void add_kind(const model *m, range_what what, std::vector<range_item> *items)
{
    const int32_t num = what == RANGE_ROW ? m->num_con : m->num_var;
    for (int32_t k = 0; k < num; k++) {
        if (what == RANGE_COST)
            items->push_back({what, k, false});
        else
            add_sides(m, what, k, items);
    }
}

std::vector<range_item> sensitivity_all_items(const model *m, const bool *wanted)
{
    std::vector<range_item> items;
    for (const range_what what : {RANGE_ROW, RANGE_COLUMN, RANGE_COST})
        if (wanted == nullptr || wanted[what]) add_kind(m, what, &items);
    return items;
}

/* The next word of a line, or a name in quotes. False: a quote is not closed. */
static bool next_word(std::string_view *rest, std::string *word)
{
    word->clear();
    rest->remove_prefix(std::min(rest->find_first_not_of(" \t"), rest->size()));
    if (rest->empty() || (*rest)[0] == '#') {
        *rest = {};
        return true;
    }
    if ((*rest)[0] != '"') {
        const size_t end = std::min(rest->find_first_of(" \t"), rest->size());
        *word = rest->substr(0, end);
        rest->remove_prefix(end);
        return true;
    }
    for (size_t k = 1; k < rest->size(); k++) {
        const bool is_quote = (*rest)[k] == '"';
        if (is_quote && (k + 1 >= rest->size() || (*rest)[k + 1] != '"')) {
            rest->remove_prefix(k + 1);
            return true;
        }
        if (is_quote) k++;
        *word += (*rest)[k];
    }
    return false;
}

static int32_t find_name(item_reader *r, bool is_row, const std::string &name)
{
    const name_table *names = is_row ? &r->m->con_names : &r->m->var_names;
    std::unique_ptr<name_index> &index = is_row ? r->rows : r->columns;
    if (index == nullptr) {
        index = std::make_unique<name_index>();
        (void)name_index_build(index.get(), names); /* of names that occur twice the first is meant */
    }
    const int32_t found = name_index_find(index.get(), names, name);
    if (found >= 0) return found;
    /* Rows and columns without a name go by the one that reports show. */
    const int32_t num = is_row ? r->m->num_con : r->m->num_var;
    for (int32_t k = 0; k < num; k++)
        if (names_get(names, k).empty() && names_shown(names, k, is_row ? 'c' : 'x') == name) return k;
    return -1;
}

static int32_t add_named(item_reader *r, range_what what, const std::string &name, const std::string &side)
{
    const bool is_row = what == RANGE_ROW;
    const int32_t k = find_name(r, is_row, name);
    if (k < 0)
        return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, r->line, "the problem has no %s '%s'",
                        is_row ? "row" : "column", io_quote(name).c_str());
    if (what == RANGE_COST) {
        if (!side.empty())
            return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, r->line, "found '%s' behind the name of a cost",
                            io_quote(side).c_str());
        r->items->push_back({what, k, false});
    } else if (side.empty()) {
        add_sides(r->m, what, k, r->items);
    } else if (side == "lower" || side == "upper") {
        r->items->push_back({what, k, side == "upper"});
    } else {
        return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, r->line, "found '%s' where lower or upper was expected",
                        io_quote(side).c_str());
    }
    return ZLR_RES_OK;
}

static int32_t read_line(item_reader *r, std::string_view rest)
{
    static const struct {
        const char *one, *all;
        range_what what;
    } words[] = {{"row", "rows", RANGE_ROW}, {"bound", "bounds", RANGE_COLUMN}, {"cost", "costs", RANGE_COST}};
    std::string word, name, side, more;

    for (std::string *part : {&word, &name, &side, &more})
        if (!next_word(&rest, part))
            return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, r->line, "the closing quote is missing");
    if (word.empty()) return ZLR_RES_OK;
    if (!more.empty())
        return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, r->line, "found '%s' where the line should end",
                        io_quote(more).c_str());
    if (word == "all" && name.empty()) {
        const std::vector<range_item> all = sensitivity_all_items(r->m, nullptr);
        r->items->insert(r->items->end(), all.begin(), all.end());
        return ZLR_RES_OK;
    }
    for (const auto &known : words) {
        if (word == known.all && name.empty()) {
            add_kind(r->m, known.what, r->items);
            return ZLR_RES_OK;
        }
        if (word != known.one) continue;
        if (!name.empty()) return add_named(r, known.what, name, side);
        return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, r->line, "a name is missing behind %s", known.one);
    }
    return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, r->line,
                    "found '%s' where row, bound or cost with a name, rows, bounds, costs or all was expected",
                    io_quote(word).c_str());
}

int32_t sensitivity_file_read(const io_context *io, const model *m, std::vector<range_item> *items)
{
    byte_source *in = nullptr;
    const int32_t res = source_open(io->sys, &in, io->file);
    if (res != ZLR_RES_OK) return io_error(io, res, 0, "the sensitivity file cannot be read: %s", std::strerror(errno));
    const source_holder holder(in);
    line_reader lines;
    item_reader r = {io, m, items, nullptr, nullptr};
    lines_open(&lines, io, in);
    for (;;) {
        std::string_view line;
        const int32_t code = lines_next(&lines, &line);
        if (code != ZLR_RES_OK) return code;
        if (lines.at_end) return ZLR_RES_OK;
        r.line = lines.number;
        const int32_t read = read_line(&r, line);
        if (read != ZLR_RES_OK) return read;
    }
}
