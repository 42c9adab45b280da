/* param_list.cpp - every parameter with its meaning: the listing for a console, 80 columns wide, and docs/parameters.md.
 * Both are grouped by the first word of the names. */
#include "solver/params/params.h"

#include <algorithm>
#include <cstring>
#include <iterator>

struct param_group {
    const char *first_words; /* of names: "READ_ WRITE_"; null: all that no other group takes */
    const char *title;
};

static const param_group groups[] = {
    {nullptr, "General"},
    {"RACE_ START_ CHECK_", "Races, starts and checks"},
    {"ENGINE_", "HiGHS, all methods"},
    {"PRESOLVE_", "Presolve"},
    {"SIMPLEX_", "Simplex"},
    {"IPM_", "Interior point"},
    {"PDLP_", "First-order method"},
    {"QP_ NONCONVEX", "Quadratic problems"},
    {"CONIC_", "Cones"},
    {"NLP_", "Nonlinear problems"},
    {"MIP_", "Integer problems"},
    {"DATA_TOL_ BOUND_ READ_ WRITE_", "Data and problem files"},
    {"ANALYZE_", "Analyses of problem and solution"},
    {"SENSITIVITY_", "Sensitivity"},
    {"REPAIR_", "Primal repair"},
    {"DATA_FILE BAS_ ITR_ INT_ PARAM_ RESULT_ LOG_ STAT_ REPORT_", "Files, logs and reports"},
    {"AMPL_", "AMPL front end"},
    {"RESERVED_", "Reserved"},
};

static bool begins_with_one_of(const char *name, const char *words)
{
    for (const char *word = words; *word != '\0';) {
        const size_t length = std::strcspn(word, " ");
        if (std::strncmp(name, word, length) == 0) return true;
        word += length;
        word += *word == ' ' ? 1 : 0;
    }
    return false;
}

static const param_group *group_of(const param_row *row)
{
    const param_group *found = std::find_if(std::begin(groups), std::end(groups), [row](const param_group &group) {
        return group.first_words != nullptr && begins_with_one_of(row->name, group.first_words);
    });
    return found != std::end(groups) ? found : groups;
}

template <class visit_type> static void each_row_of(const param_group *group, visit_type visit)
{
    int32_t num = 0;
    const param_row *table = param_table(&num);
    for (const param_row *row = table; row != table + num; row++)
        if (group_of(row) == group) visit(row);
}

static param_set defaults(void)
{
    param_set set;
    param_set_defaults(&set);
    return set;
}

static std::string shown_value(const param_set *set, const param_row *row)
{
    const std::string value = param_value_text(set, row);
    return row->param_class == ZLR_PAR_STR ? '"' + value + '"' : value;
}

/* ---- The listing ---- */

/* Appends text broken at blanks into lines of at most 80 characters, indented. A longer word has a line of its own. */
static void append_wrapped(std::string *page, std::string_view text, size_t indent)
{
    constexpr size_t width = 80;
    size_t used = 0;
    while (!text.empty()) {
        const size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        if (used > 0 && used + 1 + word.size() > width) {
            *page += '\n';
            used = 0;
        }
        *page += used > 0 ? " " : std::string(indent, ' ');
        used += (used > 0 ? 1 : indent) + word.size();
        *page += word;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    *page += '\n';
}

static void append_row(std::string *page, const param_set *set, const param_set *at_default, const param_row *row)
{
    *page +=
        text_format("%c %-28s %s", param_is_default(set, row) ? ' ' : '*', row->name, shown_value(set, row).c_str());
    if (row->unit[0] != '\0') *page += std::string(" ") + row->unit;
    *page += '\n';
    append_wrapped(page, std::string(row->text) + ".", 6);
    if (row->param_class != ZLR_PAR_STR && !param_is_reserved(row))
        append_wrapped(page, "Default " + shown_value(at_default, row) + "; " + param_allowed_text(row) + ".", 6);
}

void param_print(const param_set *set, stream_set *out, int32_t stream)
{
    if (!streams_linked(out, stream)) return;
    const param_set at_default = defaults();
    std::string page = "Parameters. Values that are not the default are marked by *.\n";
    for (const param_group &group : groups) {
        page += std::string("\n") + group.title + "\n" + std::string(std::strlen(group.title), '-') + "\n";
        each_row_of(&group, [&](const param_row *row) { append_row(&page, set, &at_default, row); });
    }
    streams_write(out, stream, page.c_str());
}

/* ---- The reference page ---- */

static const char *class_name(int32_t param_class)
{
    return param_class == ZLR_PAR_DOUBLE ? "double" : param_class == ZLR_PAR_INT ? "integer" : "string";
}

static std::string reference_row(const param_set *at_default, const param_row *row)
{
    std::string line = std::string("| `") + row->name + "` | " + class_name(row->param_class) + " " +
                       std::to_string(row->number) + " | ";
    const bool is_reserved = param_is_reserved(row);
    if (row->param_class != ZLR_PAR_STR && !is_reserved) line += "`" + param_value_text(at_default, row) + "`";
    line += " | " + (is_reserved ? "none" : param_allowed_text(row)) +
            (row->unit[0] != '\0' ? std::string(", ") + row->unit : "") + " | " + row->text + ". |";
    line += row->engine_option != nullptr ? std::string(" `") + row->engine_option + "` |\n" : " |\n";
    return line;
}

std::string param_reference_page(void)
{
    const param_set at_default = defaults();
    std::string page =
        "# Parameters\n\n"
        "Made from the table in `src/solver/params/table.cpp` by the build target `docs`; do not edit.\n\n"
        "A parameter is set by `-d NAME value` on the command line, by a line `NAME value` of a parameter file, or\n"
        "through the interface by name or number. Names and words may be written in lower case. Numbers must parse as a\n"
        "whole; `inf` and `-inf` are numbers where the range holds them. A parameter with words takes a word or its\n"
        "number.\n\n"
        "The column *engine* names the engine's own setting that the value is handed to when it is not the default.\n\n"
        "Parameter files hold `NAME value` or `NAME = value` a line; `#` begins a comment, also behind a value when a\n"
        "blank stands before it. Text in double quotes may hold blanks and `#`; a doubled quote in it stands for one.\n"
        "Every line is tried, and the first error is the result. With `PARAM_IGNORE_ERRORS ON` errors of later lines are\n"
        "told as warnings and passed over.\n";
    for (const param_group &group : groups) {
        page += std::string("\n## ") + group.title +
                "\n\n| name | class, number | default | values | what it does | engine |\n|---|---|---|---|---|---|\n";
        each_row_of(&group, [&](const param_row *row) { page += reference_row(&at_default, row); });
    }
    return page;
}
