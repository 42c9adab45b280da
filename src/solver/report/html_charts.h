/* html_charts.h - charts of the run report as inline SVG: lines over time, and bars.
 *
 * A chart is a figure with a caption and a description for those who do not see it. Lines differ by dash and by a label at
 * their end as well as by colour; values stand in titles, which browsers show as tooltips. Colours come from the classes
 * of the style sheet. Every coordinate written is finite. */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct chart_point {
    double x, y; /* y NaN: the line is interrupted */
};

struct chart_line {
    const char *name = ""; /* the label at its end */
    const char *css = "";  /* class: colour and dash */
    bool is_step = false;  /* a value holds until the next point */
    std::vector<chart_point> points;
};

struct line_chart {
    const char *title = "";
    std::string description; /* a sentence or two for those who do not see the lines */
    const char *unit = "";   /* of y, behind numbers: " %" */
    bool is_log = false;     /* powers of ten; what is 0 lies on the bottom */
    std::vector<chart_line> lines;
};

/* Does nothing, and returns false, for a chart whose values are all at about the same time, or that has none. */
bool chart_append_lines(std::string *page, const line_chart *chart);

struct chart_bar {
    int64_t count = 0;
    std::string title; /* what the bar stands for: "1 to 10" */
    std::string edge;  /* the label of the axis where it begins */
};

struct bar_chart {
    std::string title, description;
    std::vector<chart_bar> bars;
    std::string last_edge; /* where the last one ends */
};

/* Bars of logarithmic height, for one entry among a million must be seen. */
void chart_append_bars(std::string *page, const bar_chart *chart);

/* What the axes are made of. */

/* The range to show of a linear axis: all of the values, or where a few of them (the first incumbents, as a rule) are far
 * away from the others, the range of the others, with *is_cut true. Contains `keep` in any case. At least one value. */
struct chart_range {
    double least, most;
};
chart_range chart_range_of(std::vector<double> values, const std::vector<double> &keep, bool *is_cut);

/* Multiples of 1, 2 or 5 times a power of ten within the range: three to seven of them. */
std::vector<double> chart_ticks(double least, double most);

/* A tick's value with as many digits as its neighbours differ by. */
std::string chart_tick_text(double value, double step);
