/* Texts and numbers of the run report: whatever bytes come in, what goes out is UTF-8 that HTML allows. */
#include "solver/report/html_text.h"
#include "support/html.h"

#include <clocale>
#include <cmath>
#include <gtest/gtest.h>

TEST(html_text, escapes)
{
    static const struct {
        const char *name;
        std::string text, escaped;
    } cases[] = {
        {"plain", "row_1(a)", "row_1(a)"},
        {"markup", "<b>&\"'", "&lt;b&gt;&amp;&quot;&#39;"},
        {"an entity is a text like any other", "&lt;", "&amp;lt;"},
        {"line feed and tab stay", "a\n\tb", "a\n\tb"},
        {"controls become pictures", std::string("\0\x01\x1b\r\x7f", 5), "\u2400\u2401\u241b\u240d\u2421"},
        {"two to four bytes", "\u00e9\u20ac\U0001f600", "\u00e9\u20ac\U0001f600"},
        {"stray continuation", "a\x80z", "a\ufffdz"},
        {"cut at the end", "a\xe2\x82", "a\ufffd\ufffd"},
        {"a broken lead does not eat what follows", "\xe2<", "\ufffd&lt;"},
        {"overlong slash", "\xc0\xaf", "\ufffd\ufffd"},
        {"overlong in three bytes", "\xe0\x80\xbc", "\ufffd\ufffd\ufffd"},
        {"surrogate", "\xed\xa0\x80", "\ufffd\ufffd\ufffd"},
        {"beyond the last plane", "\xf4\x90\x80\x80", "\ufffd\ufffd\ufffd\ufffd"},
        {"second block of controls", "\xc2\x85", "\ufffd"},
        {"no characters", "\xef\xbf\xbe\xef\xb7\x90", "\ufffd\ufffd"},
        {"empty", "", ""},
    };
    for (const auto &c : cases) EXPECT_EQ(html_escape(c.text), c.escaped) << c.name;
}

/* Every pair of bytes, so that no combination slips through the table above. */
TEST(html_text, any_bytes_give_well_formed_text)
{
    for (int a = 0; a < 256; a++)
        for (int b = 0; b < 256; b++) {
            html_reading r;
            const std::string text = {static_cast<char>(a), static_cast<char>(b), '<'};
            const std::string escaped = html_escape(text);
            html_read_text(&r, escaped);
            ASSERT_EQ(r.complaint, "") << a << " " << b;
            ASSERT_EQ(html_escape(escaped).find("\ufffd") != std::string::npos,
                      escaped.find("\ufffd") != std::string::npos)
                << a << " " << b << ": what was escaped is UTF-8";
            ASSERT_EQ(escaped.substr(escaped.size() - 4), "&lt;") << a << " " << b;
        }
}

TEST(html_text, long_names_are_cut_between_characters)
{
    std::string name;
    for (int k = 0; k < 200; k++) name += "\u00e9";
    const std::string shown = html_name(name);
    EXPECT_LT(shown.size(), 300U);
    EXPECT_NE(shown.find("\u2026</bdi>"), std::string::npos);
    EXPECT_EQ(shown.find("\ufffd"), std::string::npos);
    EXPECT_EQ(html_name("a<b"), "<bdi>a&lt;b</bdi>");
}

TEST(html_text, numbers)
{
    EXPECT_EQ(html_number(std::nan("")), "\u2013");
    EXPECT_EQ(html_number(-HUGE_VAL), "\u2212\u221e");
    EXPECT_EQ(html_number(-0.0), "0");
    EXPECT_EQ(html_number(-1.5e-9), "\u22121.5e-09");
    EXPECT_EQ(html_number(5300.0), "5300");
    EXPECT_EQ(html_number(1e300), "1e+300");
    EXPECT_EQ(html_fixed(-0.04, 1), "0.0");
    EXPECT_EQ(html_fixed(1e308, 0).size(), 309U);
    EXPECT_EQ(html_residual(0.0), "0");
    EXPECT_EQ(html_residual(1.234e-9), "1.2e-09");
}

TEST(html_text, counts_and_times)
{
    EXPECT_EQ(html_count(0), "0");
    EXPECT_EQ(html_count(9999), "9999");
    EXPECT_EQ(html_count(12345), "12\u202f345");
    EXPECT_EQ(html_count(-1234567), "\u22121\u202f234\u202f567");
    EXPECT_EQ(html_short_count(999), "999");
    EXPECT_EQ(html_short_count(1000), "1.0k");
    EXPECT_EQ(html_short_count(999600), "1.0M");
    EXPECT_EQ(html_short_count(INT64_MAX), "9.2E");
    EXPECT_EQ(html_power_of_ten(-12), "10\u207b\u00b9\u00b2");
    EXPECT_EQ(html_power_of_ten(0), "1");
    static const struct {
        double time_s;
        const char *text;
    } times[] = {{0.0, "0 s"},      {0.0037, "3.7 ms"},    {0.25, "250 ms"},       {0.9999, "1.00 s"},
                 {75.26, "75.3 s"}, {121.0, "2 min 01 s"}, {11223.0, "3 h 07 min"}};
    for (const auto &t : times) {
        std::string text = html_seconds(t.time_s);
        for (size_t at = 0; (at = text.find("\u00a0")) != std::string::npos;) text.replace(at, 2, " ");
        EXPECT_EQ(text, t.text);
    }
    EXPECT_EQ(html_seconds(std::nan("")), "\u2013");
}

TEST(html_text, the_point_does_not_depend_on_the_locale)
{
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    const char *set = nullptr;
    for (const char *name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "nl_NL.UTF-8"})
        if (set == nullptr) set = std::setlocale(LC_NUMERIC, name);
    if (set == nullptr) GTEST_SKIP() << "no locale with a comma is installed";
    std::string form;
    html_append_form(&form, "M~ ~", {1.26, -0.01});
    const std::string number = html_number(1.5), fixed = html_fixed(2.25, 2);
    std::setlocale(LC_NUMERIC, before.c_str());
    EXPECT_EQ(form, "M1.3 0");
    EXPECT_EQ(number, "1.5");
    EXPECT_EQ(fixed, "2.25");
}
