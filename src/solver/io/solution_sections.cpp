/* solution_sections.cpp - see solution_reader.h: sections, their fields and their values. */
#include "solver/io/solution_reader.h"

#include "solver/io/number.h"
#include "solver/report/words.h"

#include <cmath>

/* ---- Finding rows, columns and cones ---- */

static void index_items(listed_items *items)
{
    items->indexed = true;
    for (int32_t i = 0; i < items->num; i++) names_append(&items->shown, names_shown(items->names, i, items->prefix));
    items->unique = name_index_build(&items->index, &items->shown) < 0;
}

static bool stands_at(const listed_items *items, int32_t i, std::string_view name)
{
    const std::string_view given = names_get(items->names, i);
    return given.empty() ? names_shown(items->names, i, items->prefix) == name : given == name;
}

/* Lines in the problem's order are matched by position, which is right whether names are unique or not. The first line
 * out of order calls for the index, which works for unique names alone. */
static int32_t find_item(solution_reader *r, listed_items *items, std::string_view name, size_t *at)
{
    int32_t i = items->count;
    if (i >= items->num || !stands_at(items, i, name)) {
        if (!items->indexed) index_items(items);
        i = items->unique ? name_index_find(&items->index, &items->shown, name) : -1;
        if (i < 0)
            return solution_fail(r, ZLR_RES_ERR_SOL_MISMATCH,
                                 items->unique
                                     ? "the problem has no %s %s"
                                     : "found %s %s, which is not the next one of the problem; names that occur twice "
                                       "in the problem must be listed in its order",
                                 items->what, io_quote(name).c_str());
    }
    *at = static_cast<size_t>(i);
    if (items->seen[*at] != 0)
        return solution_fail(r, ZLR_RES_ERR_SOL_MISMATCH, "%s %s is listed twice", items->what, io_quote(name).c_str());
    items->seen[*at] = 1;
    items->count++;
    return ZLR_RES_OK;
}

/* ---- Sections ---- */

typedef std::vector<const solution_field *> field_list;

static const solution_field *find_field(const solution_reader *r, std::string_view word, solution_item item)
{
    for (const solution_field &field : solution_fields)
        if (word == field.name && solution_field_stands(&field, item, r->m)) return &field;
    return nullptr;
}

/* "y slc suc": the dual fields that a section can have, all or none of which must be there. */
static std::string dual_fields(const solution_reader *r, solution_item item, int32_t *num)
{
    std::string names;
    *num = 0;
    for (const solution_field &field : solution_fields) {
        if (field.part != FIELD_DUAL || !solution_field_stands(&field, item, r->m)) continue;
        names += (*num)++ > 0 ? std::string(" ") + field.name : field.name;
    }
    return names;
}

static int32_t check_fields(solution_reader *r, solution_item item, const field_list &fields)
{
    int32_t num_dual = 0;
    int32_t all_dual = 0;
    for (size_t i = 0; i < fields.size(); i++) {
        for (size_t j = 0; j < i; j++)
            if (fields[i] == fields[j])
                return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT, "field %s occurs twice", fields[i]->name);
        num_dual += fields[i]->part == FIELD_DUAL ? 1 : 0;
    }
    if (fields.empty() || fields[0]->part != FIELD_NAME)
        return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT, "expected name as the first field of the section");
    if (num_dual > 0 && r->kind == ZLR_SOL_ITG)
        return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT, "an integer solution has no duals");
    const std::string names = dual_fields(r, item, &all_dual);
    if (num_dual > 0 && num_dual != all_dual)
        return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT, "expected all dual fields of a %s (%s) or none",
                             r->items[item].what, names.c_str());
    return ZLR_RES_OK;
}

static int32_t section_heading(solution_reader *r, solution_item item, std::string_view rest, field_list *fields)
{
    listed_items *items = &r->items[item];
    if (items->has_section)
        return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the section of %ss occurs twice", items->what);
    items->has_section = true;
    for (solution_skip_blanks(&rest); !rest.empty(); solution_skip_blanks(&rest)) {
        std::string_view word;
        if (!solution_take_token(r, &rest, &word)) return solution_found_expected(r, rest, "a field of the section");
        const solution_field *field = find_field(r, word, item);
        if (field == nullptr) return solution_found_expected(r, word, "a field of the section");
        fields->push_back(field);
        items->has_key = items->has_key || field->part == FIELD_KEY;
        items->has_primal = items->has_primal || field->part == FIELD_PRIMAL;
        items->has_dual = items->has_dual || field->part == FIELD_DUAL;
    }
    return check_fields(r, item, *fields);
}

static int32_t take_key(solution_reader *r, solution_item item, size_t at, std::string_view token)
{
    const int32_t key = words_find_status_key(token);
    if (key < 0) return solution_found_expected(r, token, "a status key (UN, BS, SB, LL, UL, EQ, IN)");
    std::vector<int32_t> *const keys[NUM_ITEMS] = {&r->sol.skc, &r->sol.skx, &r->sol.skn};
    (*keys[item])[at] = key;
    return ZLR_RES_OK;
}

static int32_t check_cone_type(const solution_reader *r, size_t at, std::string_view token)
{
    const int32_t type = words_find_cone_type(token);
    if (type < 0) return solution_found_expected(r, token, "a type of cones (QUAD, RQUAD)");
    if (type == r->m->cones[at].type) return ZLR_RES_OK;
    return solution_fail(r, ZLR_RES_ERR_SOL_MISMATCH, "cone %zu is %s in the file and %s in the problem", at + 1,
                         words_cone_type(type), words_cone_type(r->m->cones[at].type));
}

static int32_t take_value(solution_reader *r, const solution_field *field, solution_item item, size_t at,
                          std::string_view token)
{
    double value = 0.0;
    if (field->part == FIELD_KEY) return take_key(r, item, at, token);
    if (field->part == FIELD_CONE_TYPE) return check_cone_type(r, at, token);
    if (!number_parse(token, &value)) return solution_found_expected(r, token, "a number");
    if (field->part == FIELD_BOUND) return ZLR_RES_OK;
    if (!std::isfinite(value)) return solution_found_expected(r, token, "a finite number");
    if (field->part == FIELD_CONE_SIZE) {
        const size_t size = r->m->cones[at].member.size();
        if (value == static_cast<double>(size)) return ZLR_RES_OK;
        return solution_fail(r, ZLR_RES_ERR_SOL_MISMATCH,
                             "cone %zu has %.0f members in the file and %zu in the problem", at + 1, value, size);
    }
    (r->sol.*(field->values[item]))[at] = value;
    return ZLR_RES_OK;
}

static int32_t section_line(solution_reader *r, solution_item item, const field_list &fields, std::string_view line)
{
    size_t at = 0;
    for (const solution_field *field : fields) {
        std::string_view token;
        if (!solution_take_token(r, &line, &token))
            return solution_found_expected(r, line, "a name with closed quotes");
        if (token.empty() && field->part != FIELD_NAME)
            return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found the end of the line, expected field %s",
                                 field->name);
        const int32_t res = field->part == FIELD_NAME ? find_item(r, &r->items[item], token, &at)
                                                      : take_value(r, field, item, at, token);
        if (res != ZLR_RES_OK) return res;
    }
    solution_skip_blanks(&line);
    return line.empty() ? ZLR_RES_OK : solution_found_expected(r, line, "the end of the line");
}

static int32_t section_complete(solution_reader *r, const listed_items *items)
{
    if (items->count == items->num) return ZLR_RES_OK;
    int32_t missing = 0;
    while (items->seen[static_cast<size_t>(missing)] != 0) missing++;
    return solution_fail(r, ZLR_RES_ERR_SOL_MISMATCH,
                         "the section lists %d of %d %ss; all must be listed, and %s is missing", items->count,
                         items->num, items->what, io_quote(names_shown(items->names, missing, items->prefix)).c_str());
}

/* Lines up to the next section, whose heading is left in *line. */
static int32_t read_section(solution_reader *r, solution_item item, std::string_view fields_text,
                            std::string_view *line)
{
    field_list fields;
    int32_t res = section_heading(r, item, fields_text, &fields);
    while (res == ZLR_RES_OK) {
        res = solution_next_line(r, line);
        if (res != ZLR_RES_OK) break;
        if (r->lines.at_end) return solution_cut_file(r);
        if (line->front() == '[') return section_complete(r, &r->items[item]);
        res = section_line(r, item, fields, *line);
    }
    return res;
}

static int32_t read_after_end(solution_reader *r)
{
    std::string_view line;
    const int32_t res = solution_next_line(r, &line);
    if (res != ZLR_RES_OK || r->lines.at_end) return res;
    return solution_found_expected(r, line, "nothing behind [end]");
}

int32_t solution_read_sections(solution_reader *r, std::string_view line)
{
    for (;;) {
        std::string_view heading;
        if (!solution_take_token(r, &line, &heading)) return solution_found_expected(r, line, "a section");
        if (heading == "[end]") {
            solution_skip_blanks(&line);
            return line.empty() ? read_after_end(r) : solution_found_expected(r, line, "the end of the line");
        }
        const solution_item item = heading == "[rows]"      ? ITEM_ROW
                                   : heading == "[columns]" ? ITEM_COLUMN
                                   : heading == "[cones]"   ? ITEM_CONE
                                                            : NUM_ITEMS;
        if (item == NUM_ITEMS) return solution_found_expected(r, heading, "[rows], [columns], [cones] or [end]");
        const int32_t res = read_section(r, item, line, &line);
        if (res != ZLR_RES_OK) return res;
    }
}
