/* Charts of the run report: axes, and that every picture is well-formed whatever the values. */
#include "solver/report/html_charts.h"
#include "support/html.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

static std::string complaint_of(const std::string &figure)
{
    return html_complaint("<!DOCTYPE html>\n<html><body>" + figure + "</body></html>");
}

static size_t count_of(const std::string &text, const std::string &what)
{
    size_t num = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size())) num++;
    return num;
}

TEST(chart_ticks, are_round_and_within_the_range)
{
    static const struct {
        double least, most;
    } cases[] = {{0.0, 10.0},     {-3.0, 7.0}, {0.0, 0.0037}, {1e9, 1.00001e9},
                 {-1e300, 1e300}, {5.0, 6.0},  {0.0, 86400.0}};
    for (const auto &c : cases) {
        const std::vector<double> ticks = chart_ticks(c.least, c.most);
        ASSERT_GE(ticks.size(), 3U) << c.least;
        ASSERT_LE(ticks.size(), 8U) << c.least;
        const double step = ticks[1] - ticks[0];
        const double digit = step / std::pow(10.0, std::floor(std::log10(step * 1.0001)));
        EXPECT_TRUE(std::fabs(digit - 1.0) < 1e-3 || std::fabs(digit - 2.0) < 1e-3 || std::fabs(digit - 5.0) < 1e-3)
            << digit;
        EXPECT_GE(ticks.front(), c.least - 1e-9 * step);
        EXPECT_LE(ticks.back(), c.most + 1e-6 * step);
    }
    EXPECT_EQ(chart_ticks(1.0, 1.0).size(), 1U);
    EXPECT_EQ(chart_ticks(1e16, std::nextafter(1e16, 2e16)).size(), 1U);
}

TEST(chart_ticks, texts_tell_neighbours_apart)
{
    EXPECT_EQ(chart_tick_text(0.1 + 0.2, 0.1), "0.3");
    EXPECT_EQ(chart_tick_text(-20.0, 10.0), "\u221220");
    EXPECT_EQ(chart_tick_text(1e-18, 0.5), "0");
    EXPECT_NE(chart_tick_text(123456000.0, 1000.0), chart_tick_text(123457000.0, 1000.0));
    EXPECT_EQ(chart_tick_text(2e-7, 1e-7), "2e-07");
}

TEST(chart_range, leaves_out_what_is_far_away_and_keeps_what_it_must)
{
    std::vector<double> values(40, 10.0);
    for (size_t k = 0; k < values.size(); k++) values[k] += static_cast<double>(k) / 40.0;
    bool is_cut = true;
    chart_range range = chart_range_of(values, {values.back()}, &is_cut);
    EXPECT_FALSE(is_cut);
    EXPECT_EQ(range.least, 10.0);

    values[0] = 1e9; /* a first incumbent */
    range = chart_range_of(values, {values.back()}, &is_cut);
    EXPECT_TRUE(is_cut);
    EXPECT_LT(range.most, 12.0);

    range = chart_range_of(values, {1e9}, &is_cut);
    EXPECT_GE(range.most, 1e9) << "the last value is always within";
}

static line_chart two_lines()
{
    line_chart chart;
    chart.title = "Two";
    chart.description = "One & another";
    chart.lines.push_back({"up", "first", true, {{0.0, 1.0}, {1.0, 2.0}, {2.0, 2.0}, {4.0, 3.0}}});
    chart.lines.push_back({"down", "second", false, {{0.0, 9.0}, {1.0, std::nan("")}, {2.0, 5.0}, {4.0, 3.0}}});
    return chart;
}

TEST(line_chart, has_lines_marks_and_labels)
{
    std::string page;
    const line_chart chart = two_lines();
    ASSERT_TRUE(chart_append_lines(&page, &chart));
    EXPECT_EQ(complaint_of(page), "");
    EXPECT_NE(page.find("aria-label=\"One &amp; another\""), std::string::npos);
    EXPECT_EQ(count_of(page, "<circle class=\"first\""), 3U) << "a step's marks are where it changes";
    EXPECT_EQ(count_of(page, "<circle class=\"second\""), 3U);
    EXPECT_EQ(count_of(page, "<title>down 9 at 0\u00a0s</title>"), 1U);

    /* The first line ends in the middle between its first value and the other's: 3 of 1 to 9, at the right end. The two
     * labels, whose lines end at the same point, stand apart. */
    const size_t at = page.find("class=\"name first\""), other = page.find("class=\"name second\"");
    ASSERT_NE(at, std::string::npos);
    ASSERT_NE(other, std::string::npos);
    const double y = std::atof(page.c_str() + page.find("y=\"", at) + 3);
    const double other_y = std::atof(page.c_str() + page.find("y=\"", other) + 3);
    EXPECT_GE(std::fabs(y - other_y), 14.9);
}

TEST(line_chart, values_that_are_hard_to_draw)
{
    constexpr double most = std::numeric_limits<double>::max();
    const std::vector<std::vector<double>> cases = {
        {0.0, 0.0, 0.0, 0.0},     {5.0, 5.0, 5.0, 5.0},          {-HUGE_VAL, 1.0, HUGE_VAL, 2.0},
        {most, 1.0, -1.0, 2.0},   {1e-320, 1e-310, 0.0, 1e-300}, {1e16, 1e16 + 2.0, 1e16, 1e16},
        {-1e9, -1e9, -1e9, 1e-9}, {most, most, most, most},
    };
    for (const bool is_log : {false, true})
        for (const auto &values : cases) {
            line_chart chart = two_lines();
            chart.is_log = is_log;
            for (size_t k = 0; k < 4; k++) chart.lines[0].points[k].y = values[k];
            std::string page;
            (void)chart_append_lines(&page, &chart);
            EXPECT_EQ(complaint_of(page), "") << values[0] << " " << is_log;
            EXPECT_LT(page.size(), 20000U);
        }
}

TEST(line_chart, nothing_is_drawn_without_a_course)
{
    std::string page;
    line_chart chart;
    EXPECT_FALSE(chart_append_lines(&page, &chart));
    chart.lines.push_back({"one", "first", false, {{3.0, 1.0}}});
    EXPECT_FALSE(chart_append_lines(&page, &chart));
    chart.lines[0].points = {{0.0, 1.0}, {0.0, 2.0}};
    EXPECT_FALSE(chart_append_lines(&page, &chart)) << "both at the same time";
    chart.lines[0].points = {{0.0, std::nan("")}, {1.0, std::nan("")}};
    EXPECT_FALSE(chart_append_lines(&page, &chart));
    chart.is_log = true;
    chart.lines[0].points = {{0.0, 0.0}, {1.0, 0.0}};
    EXPECT_FALSE(chart_append_lines(&page, &chart)) << "no power of ten to show";
    EXPECT_EQ(page, "");
}

TEST(bar_chart, heights_are_logarithmic_and_a_single_one_is_seen)
{
    bar_chart chart;
    chart.title = "Bars";
    chart.bars = {{1000000, "many", "1"}, {0, "none", "10"}, {1, "one", "100"}};
    chart.last_edge = "1000";
    std::string page;
    chart_append_bars(&page, &chart);
    EXPECT_EQ(complaint_of(page), "");
    EXPECT_EQ(count_of(page, "<rect"), 2U) << "an empty decade has no bar";
    std::vector<double> heights;
    for (size_t at = page.find("height=\""); at != std::string::npos; at = page.find("height=\"", at + 1))
        heights.push_back(std::atof(page.c_str() + at + 8));
    ASSERT_EQ(heights.size(), 2U);
    EXPECT_NEAR(heights[1] / heights[0], std::log1p(1.0) / std::log1p(1e6), 0.01);
    EXPECT_NE(page.find("<title>many: 1\u202f000\u202f000</title>"), std::string::npos);
}
