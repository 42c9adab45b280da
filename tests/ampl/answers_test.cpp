/* answers_test.cpp - small models of our own: duals as derivatives, sensitivity against what really happens, cones, forms of
 * the stub, functions of the user. */
#include "ampl_support.h"

#include <gtest/gtest.h>

#include <cmath>

/* Two products from three resources; every row and a bound can be active. */
static nl_model small_lp(bool maximise)
{
    nl_model m;
    m.columns = {{0, nl_infinite}, {0, nl_infinite}, {0, 3}};
    if (maximise) {
        m.rows = {{-nl_infinite, 40, {{0, 2}, {1, 1}, {2, 1}}, ""},
                  {-nl_infinite, 30, {{0, 1}, {1, 3}}, ""},
                  {-nl_infinite, nl_infinite, {{0, 1}, {2, 1}}, ""}};
        m.objectives = {{{{0, 3}, {1, 4}, {2, 5}}, "", true, 7}};
    } else {
        m.rows = {{40, nl_infinite, {{0, 2}, {1, 1}, {2, 1}}, ""},
                  {30, nl_infinite, {{0, 1}, {1, 3}}, ""},
                  {-nl_infinite, nl_infinite, {{0, 1}, {2, 1}}, ""}};
        m.objectives = {{{{0, 3}, {1, 4}, {2, 0.5}}, "", false, 7}};
    }
    return m;
}

struct solved {
    sol_file sol;
    stub_judgement judged;
    std::string out;
};

static solved solve(const nl_model &model, const std::vector<std::string> &words)
{
    const temp_folder folder;
    write_stub(folder, model);
    const ampl_run run = run_ampl(folder, "model", words);
    EXPECT_EQ(run.process.status, 0);
    EXPECT_TRUE(run.has_sol) << run.process.out;
    EXPECT_EQ(run.sol.complaint, "");
    return {run.sol, judge_point(folder.file("model"), run.sol.x, run.sol.y), run.process.out};
}

/* ---- Duals ---- */

/* AMPL's dual is the change of the objective for one more of the side, whichever way the objective goes. */
TEST(ampl_duals, are_derivatives_of_the_objective)
{
    constexpr double step = 0.01;
    for (const bool maximise : {false, true}) {
        SCOPED_TRACE(maximise ? "maximise" : "minimise");
        const nl_model model = small_lp(maximise);
        const solved base = solve(model, {"ampl_extended=on"});
        ASSERT_EQ(base.sol.code, 0);
        ASSERT_TRUE(base.judged.is_read);
        EXPECT_LT(base.judged.gap + base.judged.loose_dual + base.judged.infeasibility, 1e-9);
        ASSERT_EQ(base.sol.y.size(), 3u);
        for (size_t i = 0; i < 2; ++i) {
            nl_model moved = model;
            (maximise ? moved.rows[i].upper : moved.rows[i].lower) += step;
            EXPECT_NEAR((solve(moved, {}).judged.objective - base.judged.objective) / step, base.sol.y[i], 1e-7) << i;
            EXPECT_GT(std::fabs(base.sol.y[i]), 0.1) << "the row must count";
        }
        const std::vector<double> rc = sol_suffix_values(base.sol, "rc", 0, 3);
        ASSERT_EQ(rc.size(), 3u);
        nl_model moved = model;
        moved.columns[2].upper += step;
        EXPECT_NEAR((solve(moved, {}).judged.objective - base.judged.objective) / step, rc[2], 1e-7);
        EXPECT_EQ(rc[2] > 0, maximise);
    }
}

/* ---- Sensitivity ---- */

static const std::vector<std::string> with_sensitivity = {"sensitivity=1"};

/* Within its range a cost leaves the point as it is, beyond it does not. */
TEST(ampl_sensitivity, ranges_of_costs_hold_and_no_more)
{
    for (const bool maximise : {false, true}) {
        const nl_model model = small_lp(maximise);
        const solved base = solve(model, with_sensitivity);
        const std::vector<double> up = sol_suffix_values(base.sol, "up", 0, 3);
        const std::vector<double> down = sol_suffix_values(base.sol, "down", 0, 3);
        const std::vector<double> current = sol_suffix_values(base.sol, "current", 0, 3);
        ASSERT_EQ(up.size() + down.size() + current.size(), 9u);
        for (size_t j = 0; j < 3; ++j) {
            SCOPED_TRACE((maximise ? "maximise, column " : "minimise, column ") + std::to_string(j));
            EXPECT_EQ(current[j], model.objectives[0].linear[j].second);
            for (const auto &[end, outward] : {std::make_pair(up[j], 0.01), std::make_pair(down[j], -0.01)}) {
                if (!std::isfinite(end)) continue;
                nl_model moved = model;
                moved.objectives[0].linear[j].second = end - outward;
                EXPECT_EQ(solve(moved, {}).sol.x, base.sol.x) << "inside " << end;
                moved.objectives[0].linear[j].second = end + outward;
                EXPECT_NE(solve(moved, {}).sol.x, base.sol.x) << "outside " << end;
            }
        }
    }
}

/* The same of sides and duals. The free row is not analysed: its entries are 0. */
TEST(ampl_sensitivity, ranges_of_sides_hold_and_no_more)
{
    for (const bool maximise : {false, true}) {
        const nl_model model = small_lp(maximise);
        const solved base = solve(model, with_sensitivity);
        const std::vector<double> up = sol_suffix_values(base.sol, "up", 1, 3);
        const std::vector<double> down = sol_suffix_values(base.sol, "down", 1, 3);
        const std::vector<double> current = sol_suffix_values(base.sol, "current", 1, 3);
        ASSERT_EQ(up.size() + down.size() + current.size(), 9u);
        EXPECT_EQ(up[2], 0);
        EXPECT_EQ(down[2], 0);
        int num_ends = 0;
        for (size_t i = 0; i < 2; ++i) {
            SCOPED_TRACE((maximise ? "maximise, row " : "minimise, row ") + std::to_string(i));
            EXPECT_EQ(current[i], maximise ? model.rows[i].upper : model.rows[i].lower);
            for (const auto &[end, outward] : {std::make_pair(up[i], 0.01), std::make_pair(down[i], -0.01)}) {
                if (!std::isfinite(end)) continue;
                ++num_ends;
                nl_model moved = model;
                double *side = maximise ? &moved.rows[i].upper : &moved.rows[i].lower;
                *side = end - outward;
                const std::vector<double> inside = solve(moved, {}).sol.y;
                *side = end + outward;
                const std::vector<double> outside = solve(moved, {}).sol.y;
                for (size_t k = 0; k < 2; ++k) EXPECT_NEAR(inside[k], base.sol.y[k], 1e-9) << "inside " << end;
                EXPECT_GT(std::fabs(outside[0] - inside[0]) + std::fabs(outside[1] - inside[1]), 1e-9) << end;
            }
        }
        EXPECT_GE(num_ends, 3);
    }
}

TEST(ampl_sensitivity, is_dropped_where_it_does_not_apply)
{
    nl_model integer = small_lp(true);
    integer.niv = 1;
    nl_model quadratic = small_lp(false);
    quadratic.nlvo = 1;
    quadratic.objectives[0].nonlinear = nl_square(0);
    for (const nl_model *model : {&integer, &quadratic}) {
        const solved found = solve(*model, with_sensitivity);
        EXPECT_EQ(found.sol.code, 0);
        for (const char *name : {"up", "down", "current"})
            EXPECT_TRUE(sol_suffix_values(found.sol, name, 0, 3).empty()) << name;
    }
}

/* ---- Statuses out and in ---- */

/* Keys that come back as they went out start the optimiser at the answer: no iteration is left to do. */
TEST(ampl_statuses, of_an_answer_start_the_next_run)
{
    const nl_model model = small_lp(true);
    const solved base = solve(model, {});
    const std::vector<double> columns = sol_suffix_values(base.sol, "sstatus", 0, 3);
    const std::vector<double> rows = sol_suffix_values(base.sol, "sstatus", 1, 3);
    ASSERT_EQ(columns.size() + rows.size(), 6u);
    int num_basic = 0;
    for (const std::vector<double> *statuses : {&columns, &rows})
        for (const double status : *statuses) num_basic += status == 1 ? 1 : 0;
    EXPECT_EQ(num_basic, 3) << "as many as rows";

    nl_model again = model;
    again.suffixes = {{0, "sstatus", {}}, {1, "sstatus", {}}};
    for (int k = 0; k < 3; ++k) {
        again.suffixes[0].values.emplace_back(k, columns[static_cast<size_t>(k)]);
        again.suffixes[1].values.emplace_back(k, rows[static_cast<size_t>(k)]);
    }
    for (const bool is_warm : {false, true}) {
        const temp_folder folder;
        write_stub(folder, is_warm ? again : model);
        const ampl_run run =
            run_ampl(folder, "model", {"ampl_extended=on", "result_file=result.json", "optimizer=DUAL_SIMPLEX"});
        ASSERT_EQ(run.sol.code, 0) << run.process.out;
        for (size_t j = 0; j < 3; ++j) EXPECT_NEAR(run.sol.x[j], base.sol.x[j], 1e-9);
        const nlohmann::json result = nlohmann::json::parse(file_read(folder.file("result.json")), nullptr, false);
        ASSERT_TRUE(result.is_object());
        const double iterations = result_number(result, "iterations");
        EXPECT_EQ(iterations == 0, is_warm) << iterations;
    }
}

/* ---- Cones ---- */

struct cone_case {
    const char *name;
    std::vector<nl_column> columns;
    std::vector<nl_row> rows;
    nl_terms cost;
    bool maximise;
    nl_terms cone;
    double optimal;
};

static nl_model cone_model(const cone_case &c)
{
    nl_model m;
    m.columns = c.columns;
    m.rows = c.rows;
    m.objectives = {{c.cost, "", c.maximise, 0}};
    m.suffixes = {{0, "cone", c.cone}};
    return m;
}

TEST(ampl_cones, are_solved_to_known_optima)
{
    const nl_column free_column = {-nl_infinite, nl_infinite};
    const nl_column at_least_0 = {0, nl_infinite};
    const cone_case cases[] = {
        /* x0 >= |(x1, x2)|, x1 + x2 = 2 */
        {"one root",
         {at_least_0, free_column, free_column},
         {{2, 2, {{1, 1}, {2, 1}}, ""}},
         {{0, 1}},
         false,
         {{0, -1}, {1, 1}, {2, 1}},
         std::sqrt(2.0)},
        /* the root stands last */
        {"root behind its members",
         {free_column, free_column, at_least_0},
         {{2, 2, {{0, 1}, {1, 1}}, ""}},
         {{2, 1}},
         false,
         {{0, 1}, {1, 1}, {2, -1}},
         std::sqrt(2.0)},
        /* 2 x0 x1 >= x2^2, x2 = 2 */
        {"two roots",
         {at_least_0, at_least_0, free_column},
         {{2, 2, {{2, 1}}, ""}},
         {{0, 1}, {1, 1}},
         false,
         {{0, -1}, {1, -1}, {2, 1}},
         2 * std::sqrt(2.0)},
        /* two cones of one root 1 each: largest x1 + x3 */
        {"two cones",
         {{1, 1}, free_column, {1, 1}, free_column},
         {{-nl_infinite, 5, {{1, 1}, {3, 1}}, ""}},
         {{1, 1}, {3, 1}},
         true,
         {{0, -2}, {1, 2}, {2, -1}, {3, 1}},
         2.0},
    };
    for (const cone_case &c : cases) {
        SCOPED_TRACE(c.name);
        const solved found = solve(cone_model(c), {});
        EXPECT_EQ(found.sol.code, 0) << found.sol.message;
        EXPECT_NEAR(found.judged.objective, c.optimal, 1e-6);
        EXPECT_LT(found.judged.infeasibility, 1e-6);
        for (size_t j = 0; j < c.columns.size(); ++j) {
            std::string line = "1643> XX variable: " + std::to_string(j);
            EXPECT_NE(found.out.find(line), std::string::npos) << found.out;
        }
    }
}

/* ---- Forms ---- */

TEST(ampl_forms, of_a_stub_give_the_same_answer)
{
    const temp_folder folder;
    const nl_model model = small_lp(true);
    const solved base = solve(model, {});
    for (const nl_form form : {NL_TEXT, NL_BINARY, NL_SWAPPED}) {
        SCOPED_TRACE(form);
        std::vector<double> x, y;
        write_stub(folder, model, form);
        (void)run_ampl(folder, "model", {});
        ASSERT_TRUE(read_sol_vectors(folder.file("model"), &x, &y));
        EXPECT_EQ(x, base.sol.x);
        EXPECT_EQ(y, base.sol.y);
    }
}

TEST(ampl_objectives, none_and_several)
{
    nl_model model = small_lp(true);
    model.objectives.push_back({{{0, 1}}, "", false, 0});
    EXPECT_NEAR(solve(model, {}).judged.objective, solve(small_lp(true), {}).judged.objective, 1e-9)
        << "the first counts";
    model.objectives.clear();
    const solved found = solve(model, {});
    EXPECT_EQ(found.sol.code, 0);
    EXPECT_LT(found.judged.infeasibility, 1e-9);
}

/* ---- Integer marks ---- */

/* The names of the integer columns that the task holds after the transfer alone. */
static std::string integer_columns(const nl_model &model, bool extended)
{
    const temp_folder folder;
    write_stub(folder, model);
    process_options options;
    options.folder = folder.path;
    options.args = {"model", extended ? "ampl_extended=on" : "outlev=0", "-a", "-x", "-out", "out.lp"};
    const process_result run = process_run(ZELOR_PROGRAM, options);
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_FALSE(file_exists(folder.file("model.sol"))) << "nothing is reported when nothing is optimised";
    const std::string text = file_read(folder.file("out.lp"));
    const size_t begin = text.find("eneral"), end = text.find("End");
    std::string names;
    if (begin == std::string::npos) return names;
    for (size_t at = text.find('x', begin); at != std::string::npos && at < end; at = text.find('x', at + 1))
        names += text.substr(at, text.find_first_of(" \n", at) - at) + " ";
    return names;
}

TEST(ampl_integer_marks, are_exact_when_extended)
{
    nl_model linear = small_lp(true);
    linear.columns.push_back({0, 9});
    linear.objectives[0].linear.emplace_back(3, 1);
    linear.niv = 2;
    /* Columns: two in the objective's square, the second integer, then two linear ones, the last integer. */
    nl_model mixed = linear;
    mixed.niv = 1;
    mixed.nlvo = 2;
    mixed.nlvoi = 1;
    mixed.objectives[0].maximise = false;
    mixed.objectives[0].nonlinear = nl_plus(nl_square(0), nl_square(1));
    EXPECT_EQ(integer_columns(linear, false), "x3 x4 ");
    EXPECT_EQ(integer_columns(linear, true), "x3 x4 ");
    EXPECT_EQ(integer_columns(mixed, true), "x2 x4 ");
    EXPECT_EQ(integer_columns(mixed, false), "x2 ") << "the second run begins too late and is empty";
}

/* ---- Functions of the user ---- */

static process_result run_with_functions(const temp_folder &folder, const char *variable, const std::string &library)
{
    process_options options;
    options.folder = folder.path;
    options.args = {"model", "-AMPL", "ampl_extended=on"};
    options.environment = {{variable, library}, {"AMPLFUNC", variable == std::string("AMPLFUNC") ? library : ""}};
    return process_run(ZELOR_PROGRAM, options);
}

TEST(ampl_user_functions, are_loaded_or_named)
{
    nl_model model = small_lp(false);
    model.functions = {{"zelor_square_from", 2}};
    const temp_folder folder;
    write_stub(folder, model);
    for (const char *variable : {"ampl_funclibs", "AMPLFUNC"}) {
        const process_result run = run_with_functions(folder, variable, ZELOR_USER_FUNCTIONS);
        const sol_file sol = sol_read(file_read(folder.file("model.sol")));
        EXPECT_EQ(run.status, 0) << run.out;
        EXPECT_EQ(sol.code, 0) << variable << "\n" << run.out;
    }
    (void)run_with_functions(folder, "ampl_funclibs", "");
    const sol_file sol = sol_read(file_read(folder.file("model.sol")));
    EXPECT_EQ(sol.complaint, "");
    EXPECT_EQ(sol.code, 520);
    EXPECT_NE(sol.message.find("function zelor_square_from not available"), std::string::npos) << sol.message;

    const ampl_run plain = run_ampl(folder, "model", {});
    EXPECT_FALSE(plain.has_sol);
    EXPECT_NE(plain.process.out.find("zelor_square_from"), std::string::npos) << plain.process.out;
}
