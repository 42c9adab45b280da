/* degree_test.cpp - what the look through a stub says of its degree, beside the verdict of the library's own test. */
#include "ampl/ampl_support.h"
#include "ampl/evaluation/verdicts.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

static constexpr int num_columns = 3;

/* The expression as the objective, or as the only row; the common expression, where there is one, is v3. */
static nl_model model_of(const nl_expression &expression, const nl_expression &common, bool is_row)
{
    const nl_terms all = {{0, 0.0}, {1, 1.0}, {2, 0.0}};
    nl_model m;
    m.columns.assign(num_columns, {-nl_infinite, nl_infinite});
    m.nlvc = is_row ? num_columns : 0;
    m.nlvo = is_row ? 0 : num_columns;
    if (!common.empty()) m.commons = {{.linear = {{0, 1.0}}, .nonlinear = common}};
    m.objectives = {{.linear = all, .nonlinear = is_row ? "" : expression}};
    if (is_row) m.rows = {{.upper = 1.0, .linear = all, .nonlinear = expression}};
    return m;
}

struct judged_folder {
    verdict_task where;
    temp_folder folder;

    verdicts judge(const nl_model &model, nl_form form)
    {
        write_stub(folder, model, form);
        const verdicts v = judge_function(where, folder.file("model"), !model.rows.empty());
        EXPECT_TRUE(v.is_read);
        return v;
    }
};

/* What has to be seen: nonlinear models are made of these. */
TEST(ampl_degree, nonlinear_functions_are_seen)
{
    static const char *const expressions[] = {
        "o44\nv0\n",
        "o2\nn2\no43\nv1\n",
        "o16\no41\no0\nv0\nv1\n",
        "o15\no1\nv0\nn3\n",
        "o5\nv0\nn3\n",
        "o5\nv0\nn0.5\n",
        "o5\no5\nv0\nn2\nn2\n",
        "o2\nv0\no2\nv1\nv2\n",
        "o3\nv0\nv1\n",
        "o3\nn1\nv1\n",
        "o54\n3\nv0\no2\nv0\nv1\no2\nv2\no5\nv1\nn2\n",
        "o3\no2\nv0\no2\nv0\nv1\nn7\n",
        "o2\nv3\nv1\n",
    };
    judged_folder judged;
    for (const char *expression : expressions)
        for (const bool is_row : {false, true})
            for (const nl_form form : {NL_TEXT, NL_BINARY}) {
                const bool has_common = std::strstr(expression, "v3") != nullptr;
                const nl_model m = model_of(expression, has_common ? "o2\nv0\nv1\n" : "", is_row);
                const verdicts v = judged.judge(m, form);
                EXPECT_TRUE(v.by_look && v.by_library) << expression << is_row << form;
            }
}

/* ---- Random expressions ---- */

using generator = std::mt19937;

static int pick(generator *random, int num) { return static_cast<int>((*random)() % static_cast<unsigned>(num)); }

/* Small on purpose: products, powers and sums of few columns, with zeros and terms that cancel each other. */
static nl_expression expression_of(generator *random, int depth, int num_variables)
{
    static const char *const numbers[] = {"n0\n", "n1\n", "n2\n", "n3\n", "n-1\n", "n0.5\n"};
    static const char *const binaries[] = {"o0\n", "o1\n", "o2\n", "o2\n", "o3\n", "o5\n", "o4\n"};
    static const char *const unaries[] = {"o16\n", "o44\n", "o15\n", "o13\n", "o16\n"};
    const auto part = [&] { return expression_of(random, depth - 1, num_variables); };
    const int kind = depth == 0 ? pick(random, 3) : pick(random, 12);
    if (kind == 0) return numbers[pick(random, 6)];
    if (kind <= 2) return "v" + std::to_string(pick(random, num_variables)) + "\n";
    if (kind == 3) return unaries[pick(random, 5)] + part();
    if (kind == 4) return "o54\n3\n" + part() + part() + part();
    if (kind == 5) return "o5\n" + part() + "n2\n";
    if (kind == 6) {
        const nl_expression same = part();
        return "o1\n" + same + same;
    }
    const nl_expression first = part();
    return binaries[pick(random, 7)] + first + part();
}

/* A function that is called nonlinear is so for the library as well, whatever it is made of: the other way round it would be
 * solved as what it is not. */
TEST(ampl_degree, random_functions_agree_with_the_library)
{
    judged_folder judged;
    int num_seen = 0;
    for (unsigned seed = 1; seed <= 9000; ++seed) {
        generator random(seed);
        const bool has_common = pick(&random, 4) == 0;
        const nl_expression common = has_common ? expression_of(&random, 2, num_columns) : "";
        const nl_expression expression =
            expression_of(&random, 2 + static_cast<int>(seed % 4), num_columns + (has_common ? 1 : 0));
        const verdicts v = judged.judge(model_of(expression, common, seed % 2 == 0), NL_TEXT);
        num_seen += v.by_look;
        ASSERT_TRUE(v.by_library || !v.by_look) << "seed " << seed << "\n" << expression << "common\n" << common;
    }
    EXPECT_GT(num_seen, 1000);
    EXPECT_LT(num_seen, 6000);
}
