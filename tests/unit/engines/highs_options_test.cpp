/* highs_options_test.cpp - every parameter that is an option of HiGHS, read back from HiGHS behind our adapter. */
#ifdef ZELOR_ENGINE_MODULE /* builds with the engine */
#include "solver/engines/highs/session.h"
#include "solver/engines/table.h"

#include <cctype>
#include <cmath>
#include <gtest/gtest.h>

static const engine_source highs_source = {"highs", "HiGHS", "", nullptr};

/* A session with its options set by the parameters, as before a solve. */
static void set_options(highs_session *s, const param_set *params, engine_method method)
{
    engine_answer answer;
    s->job = std::make_shared<engine_job>();
    s->job->method = method;
    s->job->time_limit_s = model_inf;
    s->job->options = plan_options(&highs_source, params);
    s->highs = Highs_create();
    ASSERT_TRUE(highs_set_options(s, &answer)) << answer.message;
}

/* An option as text, whatever type the engine has for it. */
static std::string option_text(void *highs, const char *name)
{
    HighsInt type = -1, whole = 0;
    double number = 0.0;
    char text[512] = "";
    EXPECT_EQ(Highs_getOptionType(highs, name, &type), kHighsStatusOk) << name;
    if (type == kHighsOptionTypeBool) {
        EXPECT_EQ(Highs_getBoolOptionValue(highs, name, &whole), kHighsStatusOk);
        return std::to_string(whole);
    }
    if (type == kHighsOptionTypeInt) {
        EXPECT_EQ(Highs_getIntOptionValue(highs, name, &whole), kHighsStatusOk);
        return std::to_string(whole);
    }
    if (type == kHighsOptionTypeDouble) {
        EXPECT_EQ(Highs_getDoubleOptionValue(highs, name, &number), kHighsStatusOk);
        return param_double_text(number);
    }
    EXPECT_EQ(Highs_getStringOptionValue(highs, name, text), kHighsStatusOk);
    return text;
}

/* Sets a value that is not the default and returns it as the engine should have it. */
static std::string change(param_set *set, const param_row *row, bool is_text)
{
    const auto at = static_cast<size_t>(row->number);
    if (row->param_class == ZLR_PAR_DOUBLE) {
        set->dou[at] = std::isinf(row->max) ? 12.5 : (row->min + row->max) / 3.0;
        return param_double_text(set->dou[at]);
    }
    std::string word;
    int32_t value = static_cast<int32_t>(row->def == row->min ? row->min + 1 : row->min);
    if (row->words != nullptr)
        param_each_word(row, [&](std::string_view w, int32_t v) {
            if (v == row->def) return true;
            word = w;
            value = v;
            return false;
        });
    for (char &c : word) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    set->integer[at] = value;
    return is_text ? word : std::to_string(value);
}

TEST(highs_options, every_parameter_reaches_the_engine)
{
    int32_t num = 0, num_seen = 0;
    const param_row *rows = param_table(&num);
    for (const param_row *row = rows; row != rows + num; row++) {
        if (row->engine_option == nullptr || !std::string(row->engine_option).starts_with("highs:")) continue;
        SCOPED_TRACE(row->name);
        const char *name = row->engine_option + 6;
        param_set params;
        param_set_defaults(&params);
        highs_session usual, changed;
        HighsInt type = -1;
        set_options(&usual, &params, METHOD_DUAL_SIMPLEX);
        ASSERT_EQ(Highs_getOptionType(usual.highs, name, &type), kHighsStatusOk);
        const std::string expected = change(&params, row, type == kHighsOptionTypeString);
        EXPECT_FALSE(param_is_default(&params, row));
        EXPECT_NE(option_text(usual.highs, name), expected);
        set_options(&changed, &params, METHOD_DUAL_SIMPLEX);
        EXPECT_EQ(option_text(changed.highs, name), expected);
        num_seen++;
    }
    EXPECT_GT(num_seen, 70);
}

TEST(highs_options, the_first_order_method_is_the_code_that_was_asked_for)
{
    const engine_table table = {&highs_source};
    const plan_machine machine = {1, 0};
    model m;
    param_set params;
    param_set_defaults(&params);
    params.integer[IPAR_OPTIMIZER] = OPTIMIZER_PDLP;
    for (const int32_t code : {PDLP_CUPDLP, PDLP_HIPDLP}) {
        params.integer[IPAR_PDLP_CODE] = code;
        const plan_step step = plan_make(&table, &m, &params, &machine).rounds[0][0];
        ASSERT_EQ(step.method, METHOD_PDLP);
        highs_session s;
        engine_answer answer;
        s.job = std::make_shared<engine_job>();
        s.job->method = step.method;
        s.job->time_limit_s = model_inf;
        s.job->options = step.extra;
        s.highs = Highs_create();
        ASSERT_TRUE(highs_set_options(&s, &answer)) << answer.message;
        EXPECT_EQ(option_text(s.highs, "solver"), code == PDLP_HIPDLP ? "hipdlp" : "pdlp");
    }
}
#endif
