/* The table of parameters: every row by every way of setting it, names, words, and the engine's own settings. */
#include "solver/params/params.h"
#ifdef ZELOR_HAS_CLARABEL
#include "solver/engines/clarabel/clarabel_shim.h"
#endif

#include <algorithm>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <interfaces/highs_c_api.h>
#include <limits>
#include <set>
#include <sstream>

static constexpr double inf = std::numeric_limits<double>::infinity();

class params : public testing::Test
{
protected:
    void SetUp() override
    {
        param_set_defaults(&set);
        out.out[ZLR_STREAM_ERR].func = [](void *text, const char *piece) {
            *static_cast<std::string *>(text) += piece;
        };
        out.out[ZLR_STREAM_ERR].handle = &errors;
        table = param_table(&num);
    }

    /* A value that is allowed and not the default. */
    static std::string other_value(const param_row *row)
    {
        std::string other;
        if (row->words != nullptr) {
            param_each_word(row, [&](std::string_view word, int32_t value) {
                if (value != row->def) other = word;
                return other.empty();
            });
            return other;
        }
        if (row->param_class == ZLR_PAR_STR) return "some file #1.x";
        if (row->param_class == ZLR_PAR_INT)
            return std::to_string(static_cast<int>(row->def == row->min ? row->min + 1 : row->min));
        return std::isinf(row->max) ? "12.345678901234567" : param_double_text((row->min + row->max) / 3);
    }

    param_set set;
    stream_set out;
    std::string errors;
    const param_row *table = nullptr;
    int32_t num = 0;
};

TEST_F(params, every_row_takes_its_values_by_text)
{
    for (const param_row *row = table; row != table + num; row++) {
        SCOPED_TRACE(row->name);
        if (param_is_reserved(row)) continue;
        EXPECT_TRUE(param_is_default(&set, row));
        const std::string before = param_value_text(&set, row), other = other_value(row);
        ASSERT_EQ(param_put_text(&set, row->name, other.c_str(), &out), ZLR_RES_OK) << errors;
        EXPECT_FALSE(param_is_default(&set, row));
        const param_set changed = set;

        /* What is shown sets the same value again, bit for bit, and so does the shown default. */
        const std::string shown = param_value_text(&set, row);
        ASSERT_EQ(param_put_text(&set, row->name, before.c_str(), &out), ZLR_RES_OK) << errors;
        EXPECT_TRUE(param_is_default(&set, row));
        ASSERT_EQ(param_put_text(&set, row->name, shown.c_str(), &out), ZLR_RES_OK) << errors;
        EXPECT_EQ(set.dou, changed.dou);
        EXPECT_EQ(set.integer, changed.integer);
        EXPECT_EQ(set.str, changed.str);
    }
    EXPECT_EQ(errors, "");
}

TEST_F(params, every_row_keeps_its_range)
{
    for (const param_row *row = table; row != table + num; row++) {
        if (row->param_class == ZLR_PAR_STR || param_is_reserved(row)) continue;
        SCOPED_TRACE(row->name);
        const param_set before = set;
        const double beyond[] = {std::isinf(row->min) ? NAN : row->min - 1.0,
                                 std::isinf(row->max) ? NAN : row->max + 1.0};
        for (const double value : beyond) {
            if (row->param_class == ZLR_PAR_INT && std::fabs(value) > INT32_MAX) continue;
            errors.clear();
            const int32_t res = row->param_class == ZLR_PAR_INT
                                    ? param_put_int(&set, row->number, static_cast<int32_t>(value), &out)
                                    : param_put_double(&set, row->number, value, &out);
            EXPECT_EQ(res, ZLR_RES_ERR_PARAM_VALUE) << value;
            EXPECT_NE(errors.find(row->name), std::string::npos) << errors;
            EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
        }
        EXPECT_EQ(set.dou, before.dou);
        EXPECT_EQ(set.integer, before.integer);
    }
}

TEST_F(params, words_are_distinct_and_in_range)
{
    for (const param_row *row = table; row != table + num; row++) {
        SCOPED_TRACE(row->name);
        std::set<std::string> words;
        std::set<int32_t> values;
        param_each_word(row, [&](std::string_view word, int32_t value) {
            EXPECT_TRUE(words.insert(std::string(word)).second) << word;
            EXPECT_TRUE(values.insert(value).second) << word;
            EXPECT_GE(value, row->min);
            EXPECT_LE(value, row->max);
            EXPECT_EQ(word.find_first_of("= \t0123456789"), std::string_view::npos) << word;
            return true;
        });
        if (row->words == nullptr) continue;
        EXPECT_EQ(values.count(static_cast<int32_t>(row->def)), 1U) << "the default has no word";
        EXPECT_EQ(*values.begin(), row->min);
        EXPECT_EQ(*values.rbegin(), row->max);
    }
}

TEST_F(params, names_are_unique_and_follow_the_rule)
{
    std::set<std::string> names;
    for (const param_row *row = table; row != table + num; row++) {
        const std::string name = row->name;
        EXPECT_TRUE(names.insert(name).second) << name;
        const std::string words = param_is_reserved(row) ? name.substr(0, name.rfind('_')) : name;
        EXPECT_EQ(words.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ_"), std::string::npos) << name;
        EXPECT_LT(name.size(), 32U) << name;
        EXPECT_EQ(param_find_name(name.c_str()), row);
        EXPECT_EQ(param_find(row->param_class, row->number), row);
        EXPECT_NE(std::string(row->text).back(), '.') << name;
    }
}

/* Rows that hold a number for what is to come: listed as such, and refused by name, by number and in files. */
TEST_F(params, reserved_rows_take_no_value)
{
    int32_t num_reserved[3] = {};
    const param_set before = set;
    for (const param_row *row = table; row != table + num; row++) {
        if (!param_is_reserved(row)) continue;
        SCOPED_TRACE(row->name);
        num_reserved[row->param_class - ZLR_PAR_DOUBLE]++;
        EXPECT_TRUE(std::string(row->name).ends_with("_" + std::to_string(row->number)));
        EXPECT_EQ(param_put_text(&set, row->name, "0", &out), ZLR_RES_ERR_PARAM_NAME);
        EXPECT_NE(errors.find(std::string(row->name) + " is reserved"), std::string::npos) << errors;
        errors.clear();
        const int32_t code = row->param_class == ZLR_PAR_DOUBLE ? param_put_double(&set, row->number, 0.0, &out)
                             : row->param_class == ZLR_PAR_INT  ? param_put_int(&set, row->number, 0, &out)
                                                                : param_put_str(&set, row->number, "", &out);
        EXPECT_EQ(code, ZLR_RES_ERR_PARAM_NAME);
        EXPECT_NE(errors.find("cannot be set"), std::string::npos) << errors;
        errors.clear();
        EXPECT_NE(param_reference_page().find(std::string("| `") + row->name), std::string::npos);
        const char *near = param_nearest(row->name);
        if (near != nullptr) {
            EXPECT_FALSE(param_is_reserved(param_find_name(near)));
        }
    }
    EXPECT_LE(num_reserved[0], 6);
    EXPECT_LE(num_reserved[1], 14);
    EXPECT_LE(num_reserved[2], 2);
    EXPECT_GT(num_reserved[1], 0);
    EXPECT_EQ(set.dou, before.dou);
    EXPECT_EQ(set.integer, before.integer);
    EXPECT_EQ(set.str, before.str);
}

/* Numbers and names that programs and scripts rely on. */
TEST_F(params, fixed_ones_stay)
{
    static const struct {
        int32_t param_class, number;
        const char *name;
    } cases[] = {
        {ZLR_PAR_DOUBLE, 8, "DATA_TOL_COEF"},
        {ZLR_PAR_DOUBLE, 11, "BOUND_INFINITE"},
        {ZLR_PAR_INT, 34, "LOG_LEVEL"},
        {ZLR_PAR_INT, 92, "PARAM_IGNORE_ERRORS"},
        {ZLR_PAR_INT, 112, "SENSITIVITY_ALL"},
        {ZLR_PAR_STR, 0, "BAS_SOL_FILE"},
        {ZLR_PAR_STR, 1, "DATA_FILE"},
        {ZLR_PAR_STR, 3, "INT_SOL_FILE"},
        {ZLR_PAR_STR, 4, "ITR_SOL_FILE"},
        {ZLR_PAR_STR, 8, "PARAM_WRITE_FILE"},
        {ZLR_PAR_STR, 14, "SENSITIVITY_FILE"},
        {ZLR_PAR_STR, 15, "SENSITIVITY_RES_FILE"},
        {ZLR_PAR_STR, 20, "STAT_LABEL"},
        {ZLR_PAR_DOUBLE, DPAR_TIME_LIMIT, "TIME_LIMIT"},
        {ZLR_PAR_INT, IPAR_THREADS, "THREADS"},
        {ZLR_PAR_INT, IPAR_OPTIMIZER, "OPTIMIZER"},
        {ZLR_PAR_STR, SPAR_RESULT_FILE, "RESULT_FILE"},
        {ZLR_PAR_DOUBLE, DPAR_MIP_REL_GAP, "MIP_REL_GAP"},
        {ZLR_PAR_INT, IPAR_RANDOM_SEED, "RANDOM_SEED"},
    };
    for (const auto &c : cases) {
        const param_row *row = param_find(c.param_class, c.number);
        ASSERT_NE(row, nullptr) << c.name;
        EXPECT_STREQ(row->name, c.name);
    }
    EXPECT_EQ(param_int(&set, IPAR_LOG_LEVEL), 10);
    EXPECT_EQ(param_dou(&set, DPAR_BOUND_INFINITE), 1e16);
    EXPECT_EQ(param_dou(&set, DPAR_DATA_TOL_COEF), 1e-12);
    EXPECT_EQ(param_dou(&set, DPAR_TIME_LIMIT), inf);
}

TEST_F(params, values_by_text)
{
    static const struct {
        const char *name, *value;
        int32_t code;
        const char *shown; /* the value afterwards; for an error a part of the message */
    } cases[] = {
        {"TIME_LIMIT", "10", ZLR_RES_OK, "10"},
        {"time_limit", " +1.5e1 ", ZLR_RES_OK, "15"},
        {"Time_Limit", "INF", ZLR_RES_OK, "inf"},
        {"TIME_LIMIT", "", ZLR_RES_ERR_PARAM_VALUE, "a number from 0 to inf"},
        {"TIME_LIMIT", "10s", ZLR_RES_ERR_PARAM_VALUE, "'10s'"},
        {"TIME_LIMIT", "1 0", ZLR_RES_ERR_PARAM_VALUE, "'1 0'"},
        {"TIME_LIMIT", "0x10", ZLR_RES_ERR_PARAM_VALUE, "'0x10'"},
        {"TIME_LIMIT", "1e999", ZLR_RES_ERR_PARAM_VALUE, "'1e999'"},
        {"TIME_LIMIT", "nan", ZLR_RES_ERR_PARAM_VALUE, "'nan'"},
        {"TIME_LIMIT", "-1", ZLR_RES_ERR_PARAM_VALUE, "from 0"},
        {"MIP_FEASIBILITY_TOL", "inf", ZLR_RES_ERR_PARAM_VALUE, "from 1e-10 to 0.5"},
        {"RANDOM_SEED", "2147483647", ZLR_RES_OK, "2147483647"},
        {"RANDOM_SEED", "2147483648", ZLR_RES_ERR_PARAM_VALUE, "an integer from 0 to 2147483647"},
        {"RANDOM_SEED", "1.0", ZLR_RES_ERR_PARAM_VALUE, "'1.0'"},
        {"RANDOM_SEED", "+-3", ZLR_RES_ERR_PARAM_VALUE, "'+-3'"},
        {"OPTIMIZER", "IntPnt", ZLR_RES_OK, "INTPNT"},
        {"OPTIMIZER", "2", ZLR_RES_OK, "DUAL_SIMPLEX"},
        {"OPTIMIZER", "INTPNTT", ZLR_RES_ERR_PARAM_VALUE, "did you mean INTPNT?"},
        {"OPTIMIZER", "8", ZLR_RES_ERR_PARAM_VALUE, "FREE (0), INTPNT (1)"},
        {"SIMPLEX_DUAL_PRICING", "-1", ZLR_RES_OK, "CHOOSE"},
        {"RESULT_SOLUTION", "yes", ZLR_RES_ERR_PARAM_VALUE, "OFF (0), ON (1)"},
        {"RESULT_FILE", "", ZLR_RES_OK, ""},
        {"RESULT_FILE", " a b\n ", ZLR_RES_OK, " a b\n "},
        {"TIMELIMIT", "1", ZLR_RES_ERR_PARAM_NAME, "did you mean TIME_LIMIT?"},
        {"TIME_LIMIT\n", "1", ZLR_RES_ERR_PARAM_NAME, "'TIME_LIMIT?'"},
        {"", "1", ZLR_RES_ERR_PARAM_NAME, "unknown parameter ''."},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.name) + " " + c.value);
        errors.clear();
        EXPECT_EQ(param_put_text(&set, c.name, c.value, &out), c.code) << errors;
        if (c.code == ZLR_RES_OK) {
            EXPECT_EQ(param_value_text(&set, param_find_name(c.name)), c.shown);
            EXPECT_EQ(errors, "");
        } else {
            EXPECT_NE(errors.find(c.shown), std::string::npos) << errors;
        }
    }
}

TEST_F(params, unknown_numbers_are_told)
{
    EXPECT_EQ(param_put_double(&set, 69, 1.0, &out), ZLR_RES_ERR_PARAM_NAME);
    EXPECT_EQ(param_put_double(&set, -1, 1.0, &out), ZLR_RES_ERR_PARAM_NAME);
    EXPECT_EQ(param_put_int(&set, 1000000, 1, &out), ZLR_RES_ERR_PARAM_NAME);
    EXPECT_EQ(param_put_str(&set, 24, "x", &out), ZLR_RES_ERR_PARAM_NAME);
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 4) << errors;
}

TEST_F(params, nearest_names)
{
    static const struct {
        const char *typed, *nearest;
    } cases[] = {
        {"MIP_GAP", "MIP_REL_GAP"},    {"timelimit", "TIME_LIMIT"}, {"TREADS", "THREADS"}, {"TIEM_LIMIT", "TIME_LIMIT"},
        {"MIP_RELGAP", "MIP_REL_GAP"}, {"LOGLEVEL", "LOG_LEVEL"},   {"SEED", nullptr},     {"x", nullptr},
        {"QWERTYUIOP", nullptr},       {"OPTIMISER", "OPTIMIZER"},
    };
    for (const auto &c : cases) EXPECT_STREQ(param_nearest(c.typed), c.nearest) << c.typed;
    EXPECT_EQ(param_nearest(std::string(100000, 'A').c_str()), nullptr);
}

/* The engine's own view: the option is there, is of a type that the value fits, has our default (so that "not at the
 * default" is the right time to hand it over; limits may say "none" in their own way), and takes the ends of our range. */
TEST_F(params, engine_options_exist_and_take_our_values)
{
    void *highs = Highs_create();
    ASSERT_EQ(Highs_setBoolOptionValue(highs, "output_flag", 0), kHighsStatusOk);
    int32_t num_options = 0;
    for (const param_row *row = table; row != table + num; row++) {
        /* Those of the other engines have tests of their own, which need these engines. */
        if (row->engine_option == nullptr || std::string(row->engine_option).starts_with("clarabel:") ||
            std::string(row->engine_option).starts_with("ipopt:"))
            continue;
        SCOPED_TRACE(row->name);
        const std::string option = row->engine_option;
        ASSERT_EQ(option.substr(0, 6), "highs:");
        const char *name = row->engine_option + 6;
        HighsInt type = -1;
        ASSERT_EQ(Highs_getOptionType(highs, name, &type), kHighsStatusOk);
        num_options++;
        if (row->param_class == ZLR_PAR_DOUBLE) {
            double now = 0, least = 0, most = 0, def = 0;
            ASSERT_EQ(Highs_getDoubleOptionValues(highs, name, &now, &least, &most, &def), kHighsStatusOk);
            /* Our readers have dropped what is too small by a parameter of their own: the adapter hands this over always. */
            EXPECT_EQ(row->def, row->number == DPAR_ENGINE_SMALL_COEF ? 1e-12 : def);
            EXPECT_EQ(Highs_setDoubleOptionValue(highs, name, row->min), kHighsStatusOk);
            EXPECT_EQ(Highs_setDoubleOptionValue(highs, name, row->max), kHighsStatusOk);
        } else if (type == kHighsOptionTypeInt) {
            HighsInt now = 0, least = 0, most = 0, def = 0;
            ASSERT_EQ(Highs_getIntOptionValues(highs, name, &now, &least, &most, &def), kHighsStatusOk);
            const bool none_by_default = def == most && row->def == row->min;
            EXPECT_TRUE(none_by_default || row->def == def);
            EXPECT_EQ(Highs_setIntOptionValue(highs, name, static_cast<HighsInt>(row->min) + (none_by_default ? 1 : 0)),
                      kHighsStatusOk);
            EXPECT_EQ(Highs_setIntOptionValue(highs, name, static_cast<HighsInt>(row->max)), kHighsStatusOk);
        } else if (type == kHighsOptionTypeBool) {
            HighsInt now = 0, def = 0;
            ASSERT_EQ(Highs_getBoolOptionValues(highs, name, &now, &def), kHighsStatusOk);
            EXPECT_EQ(row->def, def);
            EXPECT_STREQ(row->words, "OFF=0 ON=1");
        } else {
            param_each_word(row, [&](std::string_view word, int32_t value) {
                std::string lower(word);
                for (char &c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
                char text[512], def[512];
                EXPECT_EQ(Highs_getStringOptionValues(highs, name, text, def), kHighsStatusOk);
                EXPECT_EQ(lower == def, value == row->def) << word;
                if (lower == "hipo") return true; /* an extra module, which not every build can load */
                EXPECT_EQ(Highs_setStringOptionValue(highs, name, lower.c_str()), kHighsStatusOk) << word;
                return true;
            });
            EXPECT_NE(row->words, nullptr);
        }
    }
    EXPECT_GT(num_options, 20);
    Highs_destroy(highs);
}

#ifdef ZELOR_HAS_CLARABEL
TEST_F(params, options_of_clarabel_exist_and_take_our_values)
{
    zlr_clarabel_settings *settings = zlr_clarabel_settings_new();
    int32_t num_options = 0;
    for (const param_row *row = table; row != table + num; row++) {
        if (row->engine_option == nullptr || !std::string(row->engine_option).starts_with("clarabel:")) continue;
        SCOPED_TRACE(row->name);
        const char *name = row->engine_option + 9;
        double def = -1.0;
        ASSERT_EQ(zlr_clarabel_get_number(settings, name, &def), ZLR_CLARABEL_OK);
        /* These three are handed over always, and are sharper than the engine's own. */
        const bool is_ours = row->number >= DPAR_CONIC_TOL_GAP_REL && row->number <= DPAR_CONIC_TOL_FEAS &&
                             row->param_class == ZLR_PAR_DOUBLE;
        EXPECT_EQ(row->def, is_ours ? def / 10.0 : def);
        EXPECT_EQ(zlr_clarabel_put_number(settings, name, row->min), ZLR_CLARABEL_OK);
        EXPECT_EQ(zlr_clarabel_put_number(settings, name, row->max), ZLR_CLARABEL_OK);
        EXPECT_EQ(zlr_clarabel_put_number(settings, name, 0.5) == ZLR_CLARABEL_OK, row->param_class == ZLR_PAR_DOUBLE);
        EXPECT_EQ(zlr_clarabel_put_number(settings, name, 2.0) == ZLR_CLARABEL_VALUE, row->words != nullptr);
        num_options++;
    }
    EXPECT_GT(num_options, 25);
    zlr_clarabel_settings_free(settings);
}
#endif

TEST_F(params, listing_fits_80_columns_and_has_every_row)
{
    std::string listing;
    out.out[ZLR_STREAM_MSG] = {out.out[ZLR_STREAM_ERR].func, &listing, nullptr};
    ASSERT_EQ(param_put_text(&set, "THREADS", "3", &out), ZLR_RES_OK);
    param_print(&set, &out, ZLR_STREAM_MSG);
    for (const param_row *row = table; row != table + num; row++) {
        const std::string name = std::string(" ") + row->name + " ";
        size_t at = listing.find(name); /* behind the marker at the beginning of a line */
        while (at != std::string::npos && listing[at - 2] != '\n') at = listing.find(name, at + 1);
        ASSERT_NE(at, std::string::npos) << row->name;
        EXPECT_EQ(listing[at - 1] == '*', std::string(row->name) == "THREADS") << row->name;
    }
    std::istringstream lines(listing);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80U) << line;
}

TEST_F(params, committed_page_is_up_to_date)
{
    std::ifstream in(ZELOR_SOURCE_DIR "/docs/parameters.md", std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    EXPECT_TRUE(text.str() == param_reference_page()) << "run the build target docs";
}
