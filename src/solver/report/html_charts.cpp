/* html_charts.cpp - see html_charts.h. Axes first, then lines, then bars. Lengths are in units of the view box, of which
 * there are about as many as pixels on a small screen, so that letters stay readable there. */
#include "solver/report/html_charts.h"

#include "solver/report/html_text.h"
#include "solver/report/streams.h"

#include <algorithm>
#include <cmath>

static constexpr double plot_left = 62.0, plot_top = 10.0, plot_width = 300.0, plot_height = 190.0;
static constexpr double bars_height = 130.0;
static constexpr double box_width = 440.0, box_height = 240.0;
static constexpr double label_distance = 15.0; /* least distance of two labels at the ends of lines */
static constexpr double mark_radius = 3.0;
static constexpr double digit_width = 7.5;  /* of a digit, with some room */
static constexpr size_t marks_most = 40;    /* of a line */
static constexpr int32_t decades_most = 16; /* of a logarithmic axis */

static void append_head(std::string *page, std::string_view title, std::string_view description, double height)
{
    *page += "<figure class=\"chart\"><figcaption>";
    *page += title;
    html_append_form(page, "</figcaption>\n<svg viewBox=\"0 0 ~ ~\" role=\"img\" aria-label=\"", {box_width, height});
    html_append(page, description);
    *page += "\">\n";
}

static void append_text(std::string *page, const char *css, double x, double y, std::string_view text)
{
    text_append(page, "<text class=\"%s\" ", css);
    html_append_form(page, "x=\"~\" y=\"~\">", {x, y});
    *page += text;
    *page += "</text>\n";
}

/* ---- Axes ---- */

chart_range chart_range_of(std::vector<double> values, const std::vector<double> &keep, bool *is_cut)
{
    constexpr double far_away = 4.0; /* so many times the range of the most */
    std::sort(values.begin(), values.end());
    const size_t tenth = values.size() / 10;
    chart_range all = {values.front(), values.back()};
    chart_range most = {values[tenth], values[values.size() - 1 - tenth]};
    for (const double v : keep) {
        all = {std::min(all.least, v), std::max(all.most, v)};
        most = {std::min(most.least, v), std::max(most.most, v)};
    }
    const double size = most.most - most.least;
    *is_cut = size > 0.0 && all.most - all.least > far_away * size;
    return *is_cut ? most : all;
}

std::vector<double> chart_ticks(double least, double most)
{
    std::vector<double> ticks;
    const double rough = (most - least) / 5.0;
    if (!(rough > 0.0) || !std::isfinite(rough)) return {least};
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    double step = power;
    for (const double factor : {2.0, 5.0, 10.0})
        if (step < rough * 0.999) step = factor * power;
    if (!(step > 0.0) || least + step == least) return {least}; /* closer together than doubles are */
    for (double k = std::ceil(least / step); k * step <= most + 1e-9 * step && ticks.size() < 12; k++)
        ticks.push_back(k * step);
    return ticks;
}

std::string chart_tick_text(double value, double step)
{
    if (std::fabs(value) < 1e-9 * step) return "0";
    const double size = std::fabs(value);
    const auto places = static_cast<int>(std::ceil(-std::log10(step) - 1e-9));
    if (size < 1e6 && step >= 1e-4) return html_fixed(value, std::clamp(places, 0, 6));
    const auto digits = static_cast<int>(std::floor(std::log10(size))) + places + 1;
    return html_number(value, std::clamp(digits, 1, 8));
}

/* How values become lengths of the plot. */
struct chart_frame {
    double x_least = 0.0, x_most = 1.0;
    double y_least = 0.0, y_most = 1.0; /* of a logarithmic axis: exponents */
    bool is_log = false;
};

static double x_of(const chart_frame *f, double x)
{
    return plot_left + plot_width * (x - f->x_least) / (f->x_most - f->x_least);
}

/* Values far outside are drawn just outside: the clip hides them, and no coordinate grows without end. */
static double y_of(const chart_frame *f, double y)
{
    double at = y;
    if (f->is_log) at = y > 0.0 ? std::max(std::log10(y), f->y_least) : f->y_least;
    const double share = (at - f->y_least) / (f->y_most - f->y_least);
    return plot_top + plot_height * (1.0 - std::clamp(share, -1.0, 2.0));
}

static void append_y_tick(std::string *page, double y, const std::string &text)
{
    html_append_form(page, "<path class=\"grid\" d=\"M~ ~h~\"/>", {plot_left, y, plot_width});
    append_text(page, "end", plot_left - 6.0, y + 4.0, text);
}

static void append_y_axis(std::string *page, const chart_frame *f, const char *unit)
{
    if (!f->is_log) {
        const std::vector<double> ticks = chart_ticks(f->y_least, f->y_most);
        const double step = ticks.size() > 1 ? ticks[1] - ticks[0] : std::max(std::fabs(ticks[0]), 1.0);
        for (const double tick : ticks) append_y_tick(page, y_of(f, tick), chart_tick_text(tick, step) + unit);
        return;
    }
    const auto least = static_cast<int32_t>(f->y_least), most = static_cast<int32_t>(f->y_most);
    const int32_t step = (most - least + 5) / 6;
    for (int32_t d = most; d >= least; d -= step) {
        const double value = std::pow(10.0, d);
        append_y_tick(page, y_of(f, value), unit[0] != '\0' ? html_number(value, 6) + unit : html_power_of_ten(d));
        if (most - least > 2 || d == most) continue;
        for (const double factor : {2.0, 5.0}) /* few powers of ten leave room for what lies between them */
            append_y_tick(page, y_of(f, factor * value), html_number(factor * value, 6) + unit);
    }
}

static void append_x_axis(std::string *page, const chart_frame *f)
{
    const double bottom = plot_top + plot_height;
    const std::vector<double> ticks = chart_ticks(f->x_least, f->x_most);
    const double step = ticks.size() > 1 ? ticks[1] - ticks[0] : 1.0;
    html_append_form(page, "<path class=\"axis\" d=\"M~ ~v~h~\"/>\n", {plot_left, plot_top, plot_height, plot_width});
    for (const double tick : ticks)
        append_text(page, "mid", x_of(f, tick), bottom + 17.0, chart_tick_text(tick, step) + " s");
}

/* ---- Lines ---- */

static std::vector<double> values_of(const line_chart *chart)
{
    std::vector<double> values;
    for (const chart_line &line : chart->lines)
        for (const chart_point &p : line.points)
            if (std::isfinite(p.y)) values.push_back(p.y);
    return values;
}

/* The newest value of each line. */
static std::vector<double> last_values(const line_chart *chart)
{
    std::vector<double> values;
    for (const chart_line &line : chart->lines) {
        const auto last = std::find_if(line.points.rbegin(), line.points.rend(),
                                       [](const chart_point &p) { return std::isfinite(p.y); });
        if (last != line.points.rend()) values.push_back(last->y);
    }
    return values;
}

static bool set_log_range(chart_frame *f, const std::vector<double> &values)
{
    double least = HUGE_VAL, most = 0.0;
    for (const double v : values) {
        if (v <= 0.0) continue;
        least = std::min(least, v);
        most = std::max(most, v);
    }
    if (most == 0.0) return false;
    f->y_most = std::ceil(std::log10(most));
    f->y_least = std::max(std::floor(std::log10(least)), f->y_most - decades_most);
    if (f->y_least >= f->y_most) f->y_least = f->y_most - 1.0;
    return true;
}

/* Whether there are values at times that lie apart from each other: a point is no course. */
static bool has_course(const line_chart *chart, double x_most)
{
    constexpr double share_of_few = 0.25, share_of_many = 0.02;
    constexpr size_t many = 8;
    double first = HUGE_VAL, last = -HUGE_VAL;
    size_t num = 0;
    for (const chart_line &line : chart->lines)
        for (const chart_point &p : line.points) {
            if (!std::isfinite(p.y)) continue;
            first = std::min(first, p.x);
            last = std::max(last, p.x);
            num++;
        }
    return last - first > (num >= many ? share_of_many : share_of_few) * x_most;
}

static bool set_frame(chart_frame *f, const line_chart *chart, bool *is_cut)
{
    const std::vector<double> values = values_of(chart);
    f->x_least = 0.0;
    f->x_most = 0.0;
    f->is_log = chart->is_log;
    for (const chart_line &line : chart->lines)
        for (const chart_point &p : line.points) f->x_most = std::max(f->x_most, p.x);
    if (!has_course(chart, f->x_most)) return false;
    if (chart->is_log) return set_log_range(f, values);

    const chart_range range = chart_range_of(values, last_values(chart), is_cut);
    double room = 0.06 * (range.most - range.least);
    if (!(room > 1e-12 * std::fabs(range.most))) room = std::max(0.05 * std::fabs(range.most), 1e-3);
    f->y_least = range.least - room;
    f->y_most = range.most + room;
    return std::isfinite(f->y_most - f->y_least);
}

static void append_line(std::string *page, const chart_frame *f, const chart_line *line)
{
    bool is_open = false;
    text_append(page, "<path class=\"line %s\" d=\"", line->css);
    for (const chart_point &p : line->points) {
        if (!std::isfinite(p.y)) {
            is_open = false;
            continue;
        }
        const double x = x_of(f, p.x), y = y_of(f, p.y);
        if (is_open && line->is_step)
            html_append_form(page, "H~V~", {x, y});
        else
            html_append_form(page, is_open ? "L~ ~" : "M~ ~", {x, y});
        is_open = true;
    }
    *page += "\"/>\n";
}

/* Points with their values as titles: of a line of steps those where it changes, and never more than marks_most. */
static void append_marks(std::string *page, const chart_frame *f, const chart_line *line, const char *unit)
{
    std::vector<chart_point> marks;
    double last = std::nan("");
    for (const chart_point &p : line->points) {
        const bool is_new = !line->is_step || p.y != last;
        last = p.y;
        const double y = std::isfinite(p.y) ? y_of(f, p.y) : -1.0;
        if (is_new && y >= plot_top && y <= plot_top + plot_height) marks.push_back(p);
    }
    const size_t stride = (marks.size() + marks_most - 1) / marks_most;
    for (size_t k = 0; k < marks.size(); k++) {
        if (k % stride != 0 && k + 1 != marks.size()) continue;
        text_append(page, "<circle class=\"%s\" r=\"2.5\" ", line->css);
        html_append_form(page, "cx=\"~\" cy=\"~\">", {x_of(f, marks[k].x), y_of(f, marks[k].y)});
        text_append(page, "<title>%s %s%s at %s</title></circle>\n", line->name, html_number(marks[k].y, 8).c_str(),
                    unit, html_seconds(marks[k].x).c_str());
    }
}

/* Names at the ends of the lines, moved apart where lines end close to each other. */
static void append_labels(std::string *page, const chart_frame *f, const line_chart *chart)
{
    struct label {
        const chart_line *line;
        double y;
    };
    std::vector<label> labels;
    for (const chart_line &line : chart->lines) {
        const auto last = std::find_if(line.points.rbegin(), line.points.rend(),
                                       [](const chart_point &p) { return std::isfinite(p.y); });
        if (last != line.points.rend()) labels.push_back({&line, y_of(f, last->y)});
    }
    std::stable_sort(labels.begin(), labels.end(), [](const label &a, const label &b) { return a.y < b.y; });
    for (size_t k = 1; k < labels.size(); k++) labels[k].y = std::max(labels[k].y, labels[k - 1].y + label_distance);
    const double over = labels.empty() ? 0.0 : std::max(0.0, labels.back().y - plot_top - plot_height);
    for (const label &l : labels)
        append_text(page, (std::string("name ") + l.line->css).c_str(), plot_left + plot_width + 8.0, l.y - over + 4.0,
                    l.line->name);
}

bool chart_append_lines(std::string *page, const line_chart *chart)
{
    chart_frame frame;
    bool is_cut = false;
    if (!set_frame(&frame, chart, &is_cut)) return false;
    append_head(page, chart->title, chart->description, box_height);
    append_y_axis(page, &frame, chart->unit);
    append_x_axis(page, &frame);
    /* An inner picture clips what is outside. */
    const double left = plot_left, top = plot_top - mark_radius;
    const double width = plot_width + mark_radius, height = plot_height + 2.0 * mark_radius;
    html_append_form(page, "<svg x=\"~\" y=\"~\" width=\"~\" height=\"~\" viewBox=\"~ ~ ~ ~\">\n",
                     {left, top, width, height, left, top, width, height});
    for (const chart_line &line : chart->lines) append_line(page, &frame, &line);
    for (const chart_line &line : chart->lines) append_marks(page, &frame, &line, chart->unit);
    *page += "</svg>\n";
    append_labels(page, &frame, chart);
    *page += "</svg>\n";
    if (is_cut) *page += "<p class=\"note\">Values far away from the others are outside of the picture.</p>\n";
    *page += "</figure>\n";
    return true;
}

/* ---- Bars ---- */

static void append_bar(std::string *page, const chart_bar *bar, double x, double width, double height)
{
    const double middle = x + width / 2.0, top = plot_top + bars_height - height;
    html_append_form(page, "<rect class=\"bar\" x=\"~\" y=\"~\" width=\"~\" height=\"~\">",
                     {x + 1.0, top, width - 2.0, height});
    text_append(page, "<title>%s: %s</title></rect>\n", bar->title.c_str(), html_count(bar->count).c_str());
    const std::string text = html_short_count(bar->count);
    if (width >= digit_width * static_cast<double>(text.size()))
        append_text(page, "mid", middle, top - 4.0, text);
    else {
        html_append_form(page, "<text transform=\"translate(~ ~) rotate(-90)\">", {middle + 4.0, top - 4.0});
        *page += text + "</text>\n";
    }
}

void chart_append_bars(std::string *page, const bar_chart *chart)
{
    constexpr double left = 14.0, width = box_width - 2.0 * left, headroom = 34.0, edge_distance = 36.0;
    constexpr double bottom = plot_top + bars_height;
    const double bar_width = width / static_cast<double>(std::max<size_t>(chart->bars.size(), 1));
    const auto stride = static_cast<size_t>(std::ceil(edge_distance / bar_width));
    int64_t most = 1;
    for (const chart_bar &bar : chart->bars) most = std::max(most, bar.count);

    append_head(page, chart->title, chart->description, bottom + 26.0);
    html_append_form(page, "<path class=\"axis\" d=\"M~ ~h~\"/>\n", {left, bottom, width});
    for (size_t k = 0; k < chart->bars.size(); k++) {
        const double x = left + bar_width * static_cast<double>(k);
        const double share =
            std::log1p(static_cast<double>(chart->bars[k].count)) / std::log1p(static_cast<double>(most));
        if (chart->bars[k].count > 0)
            append_bar(page, &chart->bars[k], x, bar_width, std::max(share * (bars_height - headroom), 3.0));
        if (k % stride == 0) append_text(page, "mid", x, bottom + 17.0, chart->bars[k].edge);
    }
    if (chart->bars.size() % stride == 0) append_text(page, "mid", left + width, bottom + 17.0, chart->last_edge);
    *page += "</svg></figure>\n";
}
