/* html_numbers.cpp - sections of the run report about the data: how large the coefficients are, and where they stand. */
#include "solver/report/html_parts.h"

#include "solver/report/html_charts.h"
#include "solver/report/html_text.h"
#include "solver/report/magnitudes.h"
#include "solver/report/matrix_bins.h"

#include <algorithm>
#include <cmath>

/* ---- Coefficients ---- */

static constexpr int32_t bars_least = 8, bars_most = 24;

struct number_set {
    const char *title;
    const magnitudes *found;
};

/* Decades of a chart: all charts of a page share them, so that sizes can be compared at a glance. */
struct decade_range {
    int32_t first = 0, last = -1;
    int32_t step = 1; /* decades a bar */
};

static decade_range common_range(const std::vector<number_set> &sets)
{
    decade_range range;
    bool any = false;
    for (const number_set &set : sets) {
        if (set.found->total == 0) continue;
        range.first = any ? std::min(range.first, set.found->first) : set.found->first;
        range.last = any ? std::max(range.last, set.found->last) : set.found->last;
        any = true;
    }
    if (!any) return range;
    range.step = (range.last - range.first + bars_most) / bars_most;
    /* Numbers that are close together look so: there is empty room beside them. */
    for (bool below = false; range.last - range.first + 1 < bars_least; below = !below)
        if (below)
            range.first = std::max(range.first - 1, decade_least);
        else
            range.last = std::min(range.last + 1, decade_most);
    return range;
}

static int64_t count_between(const magnitudes *found, int32_t decade, int32_t num_decades)
{
    int64_t count = 0;
    for (int32_t d = decade; d < decade + num_decades && d <= decade_most; d++) count += magnitudes_of(found, d);
    return count;
}

static std::string size_text(double size)
{
    return size >= 1000.0 && size < 1e6 ? html_fixed(size, 0) : html_number(size, 3);
}

static std::string size_range(const magnitudes *found)
{
    if (found->least == found->most) return "all " + size_text(found->least);
    return size_text(found->least) + " to " + size_text(found->most);
}

static void append_histogram(std::string *page, const number_set *set, const decade_range *range)
{
    const std::string numbers = html_count(set->found->total) + (set->found->total == 1 ? " number, " : " numbers, ");
    bar_chart chart;
    chart.title = std::string(set->title) + " <span>(" + numbers + size_range(set->found) + ")</span>";
    chart.description = std::string(set->title) + ": " + numbers + size_range(set->found) + ".";
    for (int32_t d = range->first; d <= range->last; d += range->step) {
        const std::string from = html_power_of_ten(d), to = html_power_of_ten(d + range->step);
        chart.bars.push_back(
            {count_between(set->found, d, range->step), text_format("%s to %s", from.c_str(), to.c_str()), from});
        chart.last_edge = to;
    }
    chart_append_bars(page, &chart);
}

static void append_numbers(std::string *page, const std::vector<number_set> &sets, const decade_range *range)
{
    *page += "<details><summary>The same in numbers</summary>\n<div class=\"scroll\"><table>\n"
             "<thead><tr><th scope=\"col\">Sizes from</th>";
    for (const number_set &set : sets) text_append(page, "<th scope=\"col\" class=\"num\">%s</th>", set.title);
    *page += "</tr></thead>\n<tbody>\n";
    for (int32_t d = range->first; d <= range->last; d += range->step) {
        text_append(page, "<tr><th scope=\"row\">%s</th>", html_power_of_ten(d).c_str());
        for (const number_set &set : sets)
            text_append(page, "<td class=\"num\">%s</td>",
                        html_count(count_between(set.found, d, range->step)).c_str());
        *page += "</tr>\n";
    }
    *page += "</tbody></table></div>\n</details>\n";
}

void html_numbers(std::string *page, const ZLR_task *task)
{
    const problem_magnitudes found = magnitudes_of_problem(task->problem.get());
    std::vector<number_set> sets = {{"Matrix", &found.matrix},
                                    {"Costs", &found.cost},
                                    {"Column bounds", &found.bounds},
                                    {"Right-hand sides", &found.sides}};
    if (found.quadratic.total > 0) sets.push_back({"Quadratic terms", &found.quadratic});
    const decade_range range = common_range(sets);

    html_begin(page, "numbers", "Sizes of the coefficients");
    if (range.last < range.first) {
        html_paragraph(page, "", "The problem has no coefficients other than 0.");
        html_end(page);
        return;
    }
    html_paragraph(page, "soft",
                   "How many numbers lie between which powers of ten, signs left aside; zeros and infinities are not "
                   "counted. Bars have logarithmic heights.");
    *page += "<div class=\"pair\">\n";
    std::string absent;
    for (const number_set &set : sets) {
        if (set.found->total > 0)
            append_histogram(page, &set, &range);
        else
            absent += std::string(absent.empty() ? "None to count: " : ", ") + set.title;
    }
    *page += "</div>\n";
    if (!absent.empty()) html_paragraph(page, "note", absent + ".");
    append_numbers(page, sets, &range);
    html_end(page);
}

/* ---- The matrix ---- */

static constexpr int64_t titled_most = 250; /* nonzeros that are drawn one by one, with their names as titles */
static constexpr int32_t num_shades = 4;
static constexpr double picture_width = 640.0, picture_height = 520.0, cell_most = 20.0;
static constexpr double margin_left = 20.0, margin_top = 20.0;

struct picture_size {
    double width, height;
};

/* As the matrix is shaped, but never thinner than a quarter of its length. */
static picture_size size_of(const model *m, const matrix_bins *bins)
{
    const double shape = std::clamp(static_cast<double>(m->num_var) / m->num_con, 0.25, 4.0);
    double width = std::min(picture_width, cell_most * bins->columns);
    double height = std::min(picture_height, cell_most * bins->rows);
    if (width / height > shape) width = std::max(height * shape, std::min(width, 4.0 * cell_most));
    if (width / height < shape) height = std::max(width / shape, std::min(height, 4.0 * cell_most));
    return {width, height};
}

static double share_of(const model *m, const matrix_bins *bins, int32_t row, int32_t column)
{
    const int64_t count =
        bins->count[static_cast<size_t>(row) * static_cast<size_t>(bins->columns) + static_cast<size_t>(column)];
    const int64_t rows =
        matrix_bin_start(m->num_con, bins->rows, row + 1) - matrix_bin_start(m->num_con, bins->rows, row);
    const int64_t columns =
        matrix_bin_start(m->num_var, bins->columns, column + 1) - matrix_bin_start(m->num_var, bins->columns, column);
    return static_cast<double>(count) / (static_cast<double>(rows) * static_cast<double>(columns));
}

/* The shade of each cell by the share of it that is filled, relative to the fullest cell: 0 empty, num_shades for a third
 * of that share and more, one less for every third further down. */
struct shaded_grid {
    double most = 0.0; /* share of the fullest cell */
    std::vector<uint8_t> shade;
    bool has[num_shades + 1] = {};
};

static constexpr double shade_step = 3.0;

static shaded_grid shade_cells(const model *m, const matrix_bins *bins)
{
    shaded_grid grid;
    std::vector<double> share;
    for (int32_t r = 0; r < bins->rows; r++)
        for (int32_t c = 0; c < bins->columns; c++) share.push_back(share_of(m, bins, r, c));
    grid.most = *std::max_element(share.begin(), share.end());
    for (const double s : share) {
        int32_t shade = s > 0.0 ? num_shades : 0;
        for (double limit = grid.most / shade_step; shade > 1 && s < limit; limit /= shade_step) shade--;
        grid.shade.push_back(static_cast<uint8_t>(shade));
        grid.has[shade] = true;
    }
    return grid;
}

/* One path a shade, of horizontal strokes as thick as a row: moves relative to the end of the stroke before. */
struct shade_path {
    std::string text;
    int32_t x = 0, y = 0;
};

static void append_cells(std::string *page, const matrix_bins *bins, const shaded_grid *grid, const picture_size *size)
{
    shade_path paths[num_shades];
    for (int32_t r = 0; r < bins->rows; r++)
        for (int32_t c = 0; c < bins->columns;) {
            const uint8_t *row = &grid->shade[static_cast<size_t>(r) * static_cast<size_t>(bins->columns)];
            const int32_t shade = row[c], begin = c;
            while (c < bins->columns && row[c] == shade) c++;
            if (shade == 0) continue;
            shade_path *path = &paths[shade - 1];
            text_append(&path->text, "m%d %dh%d", begin - path->x, r - path->y, c - begin);
            path->x = c;
            path->y = r;
        }
    text_append(page, "<g shape-rendering=\"crispEdges\" transform=\"");
    text_append(page, "translate(%s %s) ", html_fixed(margin_left, 0).c_str(), html_fixed(margin_top, 0).c_str());
    text_append(page, "scale(%s %s) translate(0 .5)\">\n", html_fixed(size->width / bins->columns, 5).c_str(),
                html_fixed(size->height / bins->rows, 5).c_str());
    for (int32_t k = 0; k < num_shades; k++)
        if (!paths[k].text.empty()) text_append(page, "<path class=\"s%d\" d=\"%s\"/>\n", k + 1, paths[k].text.c_str());
    *page += "</g>\n";
}

static void append_entries(std::string *page, const model *m, const picture_size *size)
{
    const double width = size->width / m->num_var, height = size->height / m->num_con;
    const double space = std::min({width, height, 10.0}) * 0.1;
    for (int32_t j = 0; j < m->num_var; j++) {
        const auto end = static_cast<size_t>(m->a.start[static_cast<size_t>(j) + 1]);
        for (auto k = static_cast<size_t>(m->a.start[static_cast<size_t>(j)]); k < end; k++) {
            html_append_form(page, "<rect class=\"cell\" x=\"~\" y=\"~\" width=\"~\" height=\"~\"><title>",
                             {margin_left + width * j + space, margin_top + height * m->a.row[k] + space,
                              width - 2.0 * space, height - 2.0 * space});
            html_append(page, names_shown(&m->con_names, m->a.row[k], 'c'));
            *page += ", ";
            html_append(page, names_shown(&m->var_names, j, 'x'));
            *page += ": " + html_number(m->a.value[k], 8) + "</title></rect>\n";
        }
    }
}

static void append_picture(std::string *page, const model *m, const matrix_bins *bins, const shaded_grid *grid)
{
    const picture_size size = size_of(m, bins);
    const double width = size.width + margin_left + 1.0, height = size.height + margin_top + 1.0;
    *page += "<figure class=\"matrix\">\n";
    html_append_form(page, "<svg width=\"~\" height=\"~\" viewBox=\"0 0 ~ ~\" role=\"img\" aria-label=\"",
                     {width, height, width, height});
    *page += "Where the nonzeros of the matrix lie: " + html_count(m->num_con) + " rows, " + html_count(m->num_var) +
             " columns, " + html_count(model_num_nz(m)) + " nonzeros.\">\n";
    html_append_form(page, "<text x=\"~\" y=\"~\">columns \xE2\x86\x92</text>", {margin_left, margin_top - 7.0});
    html_append_form(page, "<text transform=\"translate(~ ~) rotate(90)\">rows \xE2\x86\x92</text>\n",
                     {margin_left - 14.0, margin_top});
    if (model_num_nz(m) <= titled_most && bins->rows == m->num_con && bins->columns == m->num_var)
        append_entries(page, m, &size);
    else
        append_cells(page, bins, grid, &size);
    html_append_form(page, "<rect class=\"frame\" x=\"~\" y=\"~\" width=\"~\" height=\"~\"/>\n",
                     {margin_left, margin_top, size.width, size.height});
    *page += "</svg>\n";
}

/* "3 rows", or how many at least and at most. */
static std::string cell_size(int32_t num, int32_t cells, const char *what)
{
    const int32_t least = num / cells, most = (num + cells - 1) / cells;
    std::string text = html_count(least);
    if (most != least) text += " or " + html_count(most);
    return text + " " + what + (most == 1 ? "" : "s");
}

static std::string percent_text(double percent) { return html_number(percent, percent < 99.5 ? 2 : 3); /* not 1e+02 */ }

/* "1.2 to 3.7 % filled" for a shade from 1 on; the lightest has no lower end, the darkest ends at the fullest cell. */
static std::string shade_text(const shaded_grid *grid, int32_t shade)
{
    const double most = 100.0 * grid->most / std::pow(shade_step, num_shades - shade);
    const std::string text = percent_text(most) + " % filled";
    return shade == 1 ? "up to " + text : percent_text(most / shade_step) + " to " + text;
}

static void append_legend(std::string *page, const model *m, const matrix_bins *bins, const shaded_grid *grid)
{
    if (bins->rows == m->num_con && bins->columns == m->num_var) return;
    *page += "<ul class=\"legend\">";
    for (int32_t k = 1; k <= num_shades; k++)
        if (grid->has[k])
            text_append(
                page,
                "<li><svg viewBox=\"0 0 1 1\" aria-hidden=\"true\"><path class=\"s%d\" d=\"M0 .5h1\"/></svg>%s</li>", k,
                shade_text(grid, k).c_str());
    *page += "</ul>\n";
    html_paragraph(page, "note",
                   "A cell of the picture stands for " + cell_size(m->num_con, bins->rows, "row") + " and " +
                       cell_size(m->num_var, bins->columns, "column") + "; one without a shade is empty.");
}

void html_matrix(std::string *page, const ZLR_task *task)
{
    const model *m = task->problem.get();
    html_begin(page, "matrix", "Picture of the matrix");
    if (model_num_nz(m) == 0 || m->num_con == 0 || m->num_var == 0) {
        html_paragraph(page, "", "The matrix has no nonzeros.");
        html_end(page);
        return;
    }
    const int32_t cells = param_int(&task->params, IPAR_REPORT_MATRIX_CELLS); /* bounds the size of the page */
    const matrix_bins bins = matrix_bins_of(m, cells, cells);
    const shaded_grid grid = shade_cells(m, &bins);
    append_picture(page, m, &bins, &grid);
    append_legend(page, m, &bins, &grid);
    *page += "</figure>\n";
    html_end(page);
}
