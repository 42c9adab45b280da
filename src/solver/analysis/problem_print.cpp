/* problem_print.cpp - see problem_facts.h. The report: sizes and structure, then the advice, which is what should be left
 * on the screen when the rest has scrolled away. */
#include "solver/analysis/problem_words.h"
#include "solver/report/streams.h"
#include "solver/report/summary.h"
#include "solver/report/words.h"

#include <algorithm>
#include <cinttypes>
#include <iterator>

/* Where the facts begin on a line. */
static constexpr size_t fact_indent = 13;

/* By row_class. */
static const char *const class_names[] = {"quadratic",
                                          "free",
                                          "empty",
                                          "singleton",
                                          "set partitioning",
                                          "set packing",
                                          "set covering",
                                          "cardinality",
                                          "variable bound",
                                          "two columns equal",
                                          "knapsack equal",
                                          "knapsack",
                                          "integer equal",
                                          "integer",
                                          "mixed with binaries",
                                          "mixed integer",
                                          "flow balance",
                                          "continuous equal",
                                          "continuous"};
static_assert(std::size(class_names) == NUM_ROW_CLASSES, "one name a class");

static const char *const size_names[] = {"matrix", "quadratic", "cost", "bounds", "sides"};
static_assert(std::size(size_names) == NUM_SIZE_GROUPS, "one name a group");

/* ---- facts -------------------------------------------------------------------------------------------------------- */

/* "  Rows       27: 8 equal, 19 at most" */
static void add_counts(std::string *text, const char *label, const std::string &total,
                       const std::vector<std::pair<int64_t, const char *>> &parts)
{
    std::vector<std::string> items = words_counts(parts);
    std::string lead = text_format("  %-11s", label);
    if (!total.empty()) lead += total + (items.empty() ? "" : ":");
    words_list(text, lead, fact_indent, items);
}

static void add_rows_and_columns(const problem_facts *facts, std::string *text)
{
    const model *m = facts->m;
    const int32_t *rows = facts->row_keys;
    int32_t keys[5] = {};
    int32_t kinds[3] = {};
    for (int32_t kind = 0; kind < 3; kind++) {
        for (int32_t key = 0; key < 5; key++) {
            keys[key] += facts->column_keys[kind][key];
            kinds[kind] += facts->column_keys[kind][key];
        }
    }
    add_counts(text, "Rows", std::to_string(m->num_con),
               {{rows[ZLR_BK_FX], "equal"},
                {rows[ZLR_BK_UP], "at most"},
                {rows[ZLR_BK_LO], "at least"},
                {rows[ZLR_BK_RA], "ranged"},
                {rows[ZLR_BK_FR], "free"}});
    add_counts(text, "Columns", std::to_string(m->num_var),
               {{kinds[COLUMN_CONTINUOUS], "continuous"},
                {kinds[COLUMN_BINARY], "binary"},
                {kinds[COLUMN_INTEGER], "integer"}});
    if (m->num_var > 0)
        add_counts(text, "Bounds", "",
                   {{keys[ZLR_BK_LO], "lower only"},
                    {keys[ZLR_BK_UP], "upper only"},
                    {keys[ZLR_BK_RA], "both"},
                    {keys[ZLR_BK_FX], "fixed"},
                    {keys[ZLR_BK_FR], "free"}});
}

static std::vector<std::string> longest_items(const problem_facts *facts, bool is_rows, size_t num)
{
    std::vector<std::string> items;
    const std::vector<line_length> &longest = is_rows ? facts->longest_rows : facts->longest_columns;
    for (size_t k = 0; k < std::min(num, longest.size()); k++) {
        const std::string name = is_rows ? row_name(facts, longest[k].index) : column_name(facts, longest[k].index);
        items.push_back(text_format("%s (%" PRId64 ")", name.c_str(), longest[k].length));
    }
    return items;
}

static void add_nonzeros(const problem_facts *facts, bool full, std::string *text)
{
    const auto nz = static_cast<double>(facts->num_nz);
    const auto rows = static_cast<double>(facts->m->num_con);
    const auto cols = static_cast<double>(facts->m->num_var);
    const size_t num = full ? num_longest : facts->rules.num_longest;

    text_append(text, "  Nonzeros   %" PRId64, facts->num_nz);
    if (facts->num_nz > 0)
        text_append(text, ": density %.2g %%, %.3g a row, %.3g a column", 100.0 * nz / rows / cols, nz / rows,
                    nz / cols);
    *text += "\n";
    if (facts->num_stored_zeros > 0)
        text_append(text, "             and %s stored as 0\n",
                    words_number(facts->num_stored_zeros, "coefficient", "coefficients").c_str());
    if (facts->num_nz == 0 || num == 0) return;
    words_list(text, "  Longest    rows", fact_indent, longest_items(facts, true, num));
    words_list(text, "             columns", fact_indent, longest_items(facts, false, num));
}

static void add_quadratic(const problem_facts *facts, std::string *text)
{
    const quadratic_facts *q = &facts->quadratic;
    const auto num_rows = static_cast<int64_t>(facts->m->qcon.size());
    if (q->columns == 0) return;
    std::vector<std::string> items;
    if (q->squares + q->products > 0)
        items.push_back("objective " + words_number(q->squares, "square", "squares") + " and " +
                        words_number(q->products, "product", "products"));
    if (num_rows > 0)
        items.push_back(words_number(num_rows, "row", "rows") + " with " + words_number(q->row_terms, "term", "terms"));
    if (q->cones > 0) items.push_back(words_number(q->cones, "of them a cone", "of them cones"));
    items.push_back(words_number(q->columns, "column", "columns"));
    words_list(text, "  Quadratic", fact_indent, items);
}

static void add_functions(const problem_facts *facts, std::string *text)
{
    const model_functions *f = facts->m->functions.get();
    if (f == nullptr) return;
    words_list(text, "  Nonlinear", fact_indent,
               {words_number(static_cast<int64_t>(f->row.size()), "row", "rows") + " and the objective by functions",
                words_number(static_cast<int64_t>(f->col.size()), "entry", "entries") + " in the rows' gradients",
                words_number(static_cast<int64_t>(f->hes_row.size()), "entry", "entries") + " in the Hessian",
                "not looked into here"});
}

/* By type and size, and what share of the columns is in them. */
static void add_cones(const problem_facts *facts, std::string *text)
{
    const std::vector<model_cone> &cones = facts->m->cones;
    int64_t num_members = 0;
    if (cones.empty()) return;
    for (const model_cone &cone : cones) num_members += static_cast<int64_t>(cone.member.size());
    std::vector<std::string> items = summary_cone_items(facts->m);
    items.push_back(words_number(num_members, "column", "columns") + " in them");
    words_list(text, text_format("  Cones      %zu:", cones.size()), fact_indent, items);
}

/* A network that few columns are part of is a coincidence: a quarter of them must be arcs in it to be told on a screen. */
static constexpr int64_t arc_share = 4;

static void add_structure(const problem_facts *facts, bool full, std::string *text)
{
    const network_facts *net = &facts->network;
    const parallel_facts *parallel = &facts->parallel;
    std::vector<std::pair<int64_t, const char *>> classes;

    for (size_t k = 0; k < NUM_ROW_CLASSES; k++) classes.emplace_back(facts->class_count[k], class_names[k]);
    if (facts->m->num_con > 0) add_counts(text, "Structure", "", classes);
    if (net->arcs > 0 && (full || net->arcs * arc_share >= facts->m->num_var)) {
        const bool is_all = net->rows == facts->m->num_con && net->columns == facts->m->num_var;
        words_list(text, is_all ? "  Network    all:" : "  Network", fact_indent,
                   {words_number(net->rows, "row", "rows"), words_number(net->columns, "column", "columns"),
                    words_number(net->arcs, "of them an arc between two rows", "of them arcs between two rows")});
    }
    if (facts->big_m.rows > 0)
        text_append(text, "  Big-M      %s, M %.3g to %.3g times the other coefficients\n",
                    words_number(facts->big_m.rows, "row", "rows").c_str(), facts->big_m.least, facts->big_m.most);
    if (parallel->rows + parallel->columns == 0) return;
    std::vector<std::string> items;
    if (parallel->rows > 0)
        items.push_back(words_number(parallel->rows, "row", "rows") +
                        text_format(" (%d with the same sides)", parallel->equal_rows));
    if (parallel->columns > 0)
        items.push_back(words_number(parallel->columns, "column", "columns") +
                        text_format(" (%d with the same cost)", parallel->equal_columns));
    words_list(text, "  Parallel", fact_indent, items);
}

/* ---- sizes of numbers --------------------------------------------------------------------------------------------- */

/* The decades that hold anything; `first` above `last` for none. */
static void used_decades(const problem_facts *facts, int32_t *first, int32_t *last)
{
    *first = num_decades;
    *last = -1;
    for (const size_counts &sizes : facts->sizes) {
        for (int32_t d = 0; d < num_decades; d++) {
            if (sizes.num[d] == 0) continue;
            *first = std::min(*first, d);
            *last = std::max(*last, d);
        }
    }
}

/* A line a group and a column for one decade, or for as many as it takes to get all on the screen. */
static void add_sizes(const problem_facts *facts, std::string *text)
{
    constexpr int32_t most_bins = 8;
    int32_t first = 0;
    int32_t last = 0;
    used_decades(facts, &first, &last);
    if (first > last) return;
    const int32_t width = (last - first) / most_bins + 1;

    *text += "  Sizes         least     most";
    for (int32_t d = first; d <= last; d += width)
        *text += text_format("%6s", text_format("1e%d", d + decade_first).c_str());
    *text += width == 1 ? "\n" : "..\n";
    for (size_t g = 0; g < NUM_SIZE_GROUPS; g++) {
        const size_counts *sizes = &facts->sizes[g];
        if (sizes->total == 0) continue;
        text_append(text, "    %-9s%8.2g %8.2g", size_names[g], sizes->least, sizes->most);
        for (int32_t d = first; d <= last; d += width) {
            int64_t num = 0;
            for (int32_t part = d; part < std::min(d + width, num_decades); part++) num += sizes->num[part];
            text_append(text, "%6s", words_short(num).c_str());
        }
        *text += "\n";
    }
}

/* ---- in full ------------------------------------------------------------------------------------------------------ */

static void add_column_kinds(const problem_facts *facts, std::string *text)
{
    static const char *const kinds[] = {"continuous", "binary", "integer"};
    *text += "\nColumns       lower only  upper only        both       fixed        free\n";
    for (size_t kind = 0; kind < std::size(kinds); kind++) {
        const int32_t *keys = facts->column_keys[kind];
        text_append(text, "  %-11s%11d %11d %11d %11d %11d\n", kinds[kind], keys[ZLR_BK_LO], keys[ZLR_BK_UP],
                    keys[ZLR_BK_RA], keys[ZLR_BK_FX], keys[ZLR_BK_FR]);
    }
}

/* Lengths by powers of two: 0, 1, 2 to 3, 4 to 7 ... */
static void add_lengths(const problem_facts *facts, std::string *text)
{
    int64_t num[2][40] = {};
    size_t most = 0;
    const auto count = [&](size_t which, int64_t length) {
        size_t bin = 0;
        while (length > 0) {
            length /= 2;
            bin++;
        }
        num[which][bin]++;
        most = std::max(most, bin);
    };
    for (size_t i = 0; i + 1 < facts->rows.start.size(); i++) count(0, facts->rows.start[i + 1] - facts->rows.start[i]);
    for (const int32_t length : facts->column_length) count(1, length);

    *text += "\nNonzeros             rows     columns\n";
    for (size_t bin = 0; bin <= most; bin++) {
        const int64_t from = bin == 0 ? 0 : int64_t{1} << (bin - 1);
        const int64_t to = bin == 0 ? 0 : 2 * from - 1;
        const std::string range =
            from == to ? text_format("%" PRId64, from) : text_format("%" PRId64 " to %" PRId64, from, to);
        text_append(text, "  %-13s%10" PRId64 " %11" PRId64 "\n", range.c_str(), num[0][bin], num[1][bin]);
    }
}

static void add_all_sizes(const problem_facts *facts, std::string *text)
{
    int32_t first = 0;
    int32_t last = 0;
    used_decades(facts, &first, &last);
    if (first > last) return;
    *text += "\nFrom         ";
    for (const char *name : size_names) text_append(text, "%12s", name);
    *text += "\n";
    for (int32_t d = first; d <= last; d++) {
        text_append(text, "  %-11s", text_format("1e%+03d", d + decade_first).c_str());
        for (const size_counts &sizes : facts->sizes) text_append(text, "%12" PRId64, sizes.num[d]);
        *text += "\n";
    }
}

/* The extremes of the matrix with their places. */
static void add_extremes(const problem_facts *facts, std::string *text)
{
    const size_counts *sizes = &facts->sizes[SIZES_MATRIX];
    if (sizes->total == 0) return;
    text_append(text, "\nSmallest coefficient %.6g in row %s, column %s\n", sizes->least,
                row_name(facts, sizes->least_row).c_str(), column_name(facts, sizes->least_col).c_str());
    text_append(text, "Largest coefficient %.6g in row %s, column %s\n", sizes->most,
                row_name(facts, sizes->most_row).c_str(), column_name(facts, sizes->most_col).c_str());
    if (facts->scaled_spread > 1.0)
        text_append(text, "After scaling, the coefficients of a row differ by a factor of at most %.1e\n",
                    facts->scaled_spread);
}

static void add_classes(const problem_facts *facts, std::string *text)
{
    std::vector<std::vector<std::string>> names(NUM_ROW_CLASSES);
    for (int32_t i = 0; i < facts->m->num_con; i++)
        names[facts->row_classes[static_cast<size_t>(i)]].push_back(row_name(facts, i));
    *text += "\nRows by structure\n";
    for (size_t k = 0; k < NUM_ROW_CLASSES; k++) {
        text_append(text, "  %s: %d\n", class_names[k], facts->class_count[k]);
        if (!names[k].empty()) words_list(text, "", 4, names[k]);
    }
    for (const quad_row &q : facts->m->qcon)
        text_append(text, "  quadratic row %s: %s\n", row_name(facts, q.row).c_str(),
                    words_number(static_cast<int64_t>(q.terms.size()), "term", "terms").c_str());
}

static void add_all_cones(const problem_facts *facts, std::string *text)
{
    const std::vector<model_cone> &cones = facts->m->cones;
    if (!cones.empty()) *text += "\nCones\n";
    for (size_t k = 0; k < cones.size(); k++) {
        std::vector<std::string> members;
        for (const int32_t j : cones[k].member) members.push_back(column_name(facts, j));
        const char *type = cones[k].type == ZLR_CT_RQUAD ? "rotated" : "quadratic";
        words_list(text, text_format("  %zu, %s:", k + 1, type), 4, members);
    }
}

std::string problem_report(const problem_facts *facts)
{
    const problem_rules *rules = &facts->rules;
    const bool full = rules->full;
    const model *m = facts->m;
    std::string text;

    text += "\n";
    const std::string name = m->name.empty() ? "" : " '" + m->name + "'";
    words_sentence(&text, "Analysis of", 2,
                   text_format("problem%s: %s, %s", name.c_str(), words_problem_type(model_problem_type(m)),
                               m->sense == ZLR_SENSE_MAX ? "maximise" : "minimise"));
    add_rows_and_columns(facts, &text);
    add_nonzeros(facts, full, &text);
    add_quadratic(facts, &text);
    add_functions(facts, &text);
    add_cones(facts, &text);
    if (rules->structure) add_structure(facts, full, &text);
    if (rules->sizes) add_sizes(facts, &text);
    if (full) {
        add_column_kinds(facts, &text);
        add_lengths(facts, &text);
        if (rules->sizes) add_all_sizes(facts, &text);
        if (rules->sizes) add_extremes(facts, &text);
        if (rules->structure) add_classes(facts, &text);
        add_all_cones(facts, &text);
    }
    if (rules->advice) text += "\n" + problem_advice(facts);
    return text + "\n";
}
