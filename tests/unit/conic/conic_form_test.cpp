/* conic_form_test.cpp - the conic form says the same as the problem, at any point, and its solutions lead back. */
#include "conic_support.h"

#include <set>

using namespace conic_support;

static const char *const problems[] = {
    "min x + [ x^2 + 2 x*y + 3 y^2 ] / 2 st a: x + 2 y + [ x^2 + x*y + y^2 ] <= 5 b: x - y >= -3 end",
    "max x + y - [ x^2 + y^2 ] st a: x - [ 2 x^2 - 2 x*y + 5 y^2 + z^2 ] >= -7 end",
    "min t st q: [ x^2 + y^2 - t^2 ] <= 0 c: x + y >= 1 end",
    "min t st q: [ 2 x^2 + 2 x*y + 3 y^2 - 5 t^2 ] <= -3 r: [ x^2 + z^2 - 7 t*u ] <= -1 end",
    "max z - u - v st q: [ 3 u*v - z^2 - w^2 ] >= 1 r: [ z^2 + w^2 + u^2 ] <= 30 end",
    "min u st q: [ u*v ] >= 4 r: [ u^2 - v^2 ] <= 0 s: [ 2 v^2 - u*x ] <= 0 end",
    "min x st q: [ 2 t^2 - x^2 - 2 x*y - y^2 ] >= 0 a: [ x^2 - 2 x*y + y^2 ] + t <= 4 end",
};

struct made_form {
    model m;
    std::shared_ptr<model> form;
    conic_map map;
};

static made_form make(const model &m, bool keep_objective)
{
    made_form made = {m, nullptr, {}};
    std::string message;
    EXPECT_EQ(conic_form(&m, keep_objective, &made.form, &made.map, &message), ZLR_RES_OK) << message;
    EXPECT_EQ(message, "");
    return made;
}

/* What model.h promises, and that no two names are the same. */
static void expect_sound(const model &m)
{
    EXPECT_TRUE(m.qcon.empty());
    std::set<int32_t> seen;
    for (const model_cone &cone : m.cones) {
        EXPECT_GT(cone.member.size(), cone_num_heads(cone.type));
        for (const int32_t j : cone.member) EXPECT_TRUE(j >= 0 && j < m.num_var && seen.insert(j).second) << j;
    }
    ASSERT_EQ(m.a.start.size(), static_cast<size_t>(m.num_var) + 1);
    for (const int32_t i : m.a.row) EXPECT_TRUE(i >= 0 && i < m.num_con);
    name_index vars, cons;
    EXPECT_EQ(name_index_build(&vars, &m.var_names), -1);
    EXPECT_EQ(name_index_build(&cons, &m.con_names), -1);
}

TEST(conic_form, says_the_same_at_any_point)
{
    std::mt19937 random(5);
    for (const char *lp : problems)
        for (const bool keep_objective : {false, true}) {
            SCOPED_TRACE(lp);
            const made_form made = make(from_lp(lp), keep_objective);
            const model &m = made.m, &form = *made.form;
            expect_sound(form);
            EXPECT_EQ(form.qobj.empty(), !keep_objective || m.qobj.empty());
            int inside = 0, outside = 0;
            for (int round = 0; round < 200; round++) {
                const std::vector<double> x = random_point(&random, m.num_var, 0.0, round % 2 == 0 ? 3.0 : 1.2);
                const std::vector<double> z = lift(m, form, x);
                std::vector<double> was(static_cast<size_t>(m.num_con)), is(static_cast<size_t>(form.num_con));
                model_activity(&m, x.data(), was.data());
                model_activity(&form, z.data(), is.data());
                EXPECT_NEAR(model_objective(&m, x.data()), model_objective(&form, z.data()), 1e-10);
                for (size_t i = was.size(); i < is.size(); i++) EXPECT_NEAR(is[i], 0.0, 1e-12);

                std::set<int32_t> disguised;
                for (size_t k = 0; k < made.map.disguised.size(); k++) disguised.insert(made.map.disguised[k].row);
                for (int32_t i = 0; i < m.num_con; i++)
                    if (disguised.count(i) == 0) {
                        EXPECT_NEAR(was[static_cast<size_t>(i)], is[static_cast<size_t>(i)], 1e-10);
                    }

                /* The cones come in the order of their rows; those of convex rows are met by the choice of w. */
                size_t next = 0;
                for (const model_cone &cone : form.cones) {
                    const bool epigraph =
                        cone.member[0] >= m.num_var && form.c[static_cast<size_t>(cone.member[0])] != 0.0;
                    const double violation = cone_violation(&cone, z.data());
                    const std::string head = names_shown(&form.var_names, cone.member[0], 'x');
                    if (epigraph || head.ends_with(".w")) {
                        EXPECT_LE(violation, 1e-10);
                        continue;
                    }
                    ASSERT_LT(next, made.map.disguised.size());
                    const auto row = static_cast<size_t>(made.map.disguised[next++].row);
                    const double miss = std::max(m.con_lower[row] - was[row], was[row] - m.con_upper[row]);
                    if (std::fabs(miss) < 1e-9) continue;
                    EXPECT_EQ(violation > 1e-11, miss > 0.0) << head << ' ' << violation << ' ' << miss;
                    (miss > 0.0 ? outside : inside)++;
                }
                EXPECT_EQ(next, made.map.disguised.size());
            }
            if (!made.map.disguised.empty()) {
                EXPECT_TRUE(inside > 0 && outside > 0) << inside << ' ' << outside;
            }
        }
}

TEST(conic_form, plain_cones_take_the_columns_themselves)
{
    const made_form made = make(from_lp(problems[2]), false);
    ASSERT_EQ(made.form->cones.size(), 1U);
    EXPECT_EQ(made.map.new_var, 0);
    EXPECT_EQ(made.map.new_con, 0);
    EXPECT_EQ(made.form->cones[0].member,
              (std::vector<int32_t>{column(made.m, "t"), column(made.m, "x"), column(made.m, "y")}));
    EXPECT_EQ(made.form->con_upper[0], model_inf);
}

TEST(conic_form, names_that_are_taken_are_left_alone)
{
    const made_form made =
        make(from_lp("min q.w + q.h st q: q.w + [ q.w^2 + q.t1^2 ] <= 4 q.t1: q.w - q.h >= -4 end"), false);
    expect_sound(*made.form);
    EXPECT_GE(column(*made.form, "q.w_"), made.m.num_var);
    EXPECT_GE(column(*made.form, "q.t2"), made.m.num_var);
}

TEST(conic_form, problems_without_quadratic_parts_stay_as_they_are)
{
    for (const model &m : {model(), from_lp("min x st a: x + y >= 1 end")}) {
        const made_form made = make(m, false);
        EXPECT_EQ(made.form->num_var, m.num_var);
        EXPECT_EQ(made.form->num_con, m.num_con);
        EXPECT_TRUE(made.form->cones.empty());
        EXPECT_FALSE(made.map.moved_objective);
    }
}

TEST(conic_form, forms_that_vanish_or_bind_nothing_are_dropped)
{
    model m = from_lp("min x + [ x^2 ] / 2 st q: x + [ x^2 ] = 1 r: y + [ x*y ] <= 1 end");
    m.qobj[0].value = m.qcon[0].terms[0].value = 0.0;
    m.con_upper[1] = model_inf;
    const made_form made = make(m, false);
    EXPECT_TRUE(made.form->cones.empty());
    EXPECT_TRUE(made.form->qobj.empty());
    EXPECT_EQ(made.map.freed_rows, 1);
    EXPECT_EQ(made.form->con_lower[0], 1.0);
}

TEST(conic_form, what_is_not_convex_is_refused)
{
    const model m = from_lp("min x st q: x + [ x*y ] <= 1 end");
    std::shared_ptr<model> form = std::make_shared<model>();
    conic_map map;
    std::string message;
    EXPECT_EQ(conic_form(&m, false, &form, &map, &message), ZLR_RES_ERR_NONCONVEX);
    EXPECT_EQ(form, nullptr);
    EXPECT_NE(message.find("Row q"), std::string::npos);
}

TEST(conic_form, long_diagonal_forms_cost_a_pass)
{
    model m;
    model_append_vars(&m, 200000);
    for (int32_t j = 0; j < m.num_var; j++) m.qobj.push_back({j, j, 2.0 + j % 7});
    const made_form made = make(m, false);
    EXPECT_EQ(made.map.new_var, 200002);
    EXPECT_EQ(model_num_nz(made.form.get()), 400000);
}

/* ---- the way back */

/* A stationary pair of the form, built from the point: y of the rows that stay as given, the dual of each cone along
 * the direction that complements the point, the rows that link by these. What is left over becomes the cost of the
 * problem's columns, so that the pair is stationary with the reduced costs `reduced`. Returns the form with these
 * costs. */
static model stationary_pair(made_form *made, const std::vector<double> &x, const std::vector<double> &y,
                             const std::vector<double> &reduced, solution *sol)
{
    const double sense = made->m.sense == ZLR_SENSE_MIN ? 1.0 : -1.0;
    model &form = *made->form;
    solution_reset(sol, form.num_con, form.num_var, model_num_cones(&form));
    sol->defined = sol->has_primal = sol->has_dual = true;
    sol->xx = lift(made->m, form, x);
    std::copy(y.begin(), y.end(), sol->y.begin());
    for (const conic_disguised &d : made->map.disguised) sol->y[static_cast<size_t>(d.row)] = 0.0;

    for (const model_cone &cone : form.cones) {
        const auto at = [&](size_t k) { return static_cast<size_t>(cone.member[k]); };
        const bool rotated = cone.type == ZLR_CT_RQUAD;
        double factor = 1.5 * sense;
        const size_t w = at(0);
        if (cone.member[0] >= made->m.num_var &&
            form.var_lower[w] == 0.0) { /* an epigraph: its row or cost says how much */
            factor = form.c[w];
            for (int64_t k = form.a.start[w]; k < form.a.start[w + 1]; k++)
                factor -=
                    form.a.value[static_cast<size_t>(k)] * y[static_cast<size_t>(form.a.row[static_cast<size_t>(k)])];
        }
        const std::vector<double> &z = sol->xx;
        sol->snx[at(0)] = factor * (rotated ? z[at(1)] : z[at(0)]);
        if (rotated) sol->snx[at(1)] = factor * z[at(0)];
        for (size_t k = cone_num_heads(cone.type); k < cone.member.size(); k++) sol->snx[at(k)] = -factor * z[at(k)];
    }
    for (auto j = static_cast<size_t>(made->m.num_var); j < form.c.size(); j++) {
        for (int64_t k = form.a.start[j]; k < form.a.start[j + 1]; k++) {
            const auto row = static_cast<size_t>(form.a.row[static_cast<size_t>(k)]);
            if (row >= static_cast<size_t>(made->m.num_con)) sol->y[row] = -sol->snx[j];
        }
        if (form.var_lower[j] == form.var_upper[j]) { /* the fixed column takes what its cone's dual leaves */
            sol->slx[j] = std::max(0.0, -sol->snx[j]);
            sol->sux[j] = std::max(0.0, sol->snx[j]);
        }
    }
    for (size_t j = 0; j < x.size(); j++) {
        double c = sol->snx[j] + reduced[j];
        for (int64_t k = form.a.start[j]; k < form.a.start[j + 1]; k++)
            c += form.a.value[static_cast<size_t>(k)] * sol->y[static_cast<size_t>(form.a.row[static_cast<size_t>(k)])];
        form.c[j] = made->m.c[j] = c;
        (sense * reduced[j] > 0.0 ? sol->slx : sol->sux)[j] = std::fabs(reduced[j]) * sense;
    }
    return form;
}

TEST(conic_map, a_stationary_pair_of_the_form_gives_one_of_the_problem)
{
    std::mt19937 random(23);
    for (const char *lp : problems) {
        SCOPED_TRACE(lp);
        made_form made = make(from_lp(lp), false);
        const double sense = made.m.sense == ZLR_SENSE_MIN ? 1.0 : -1.0;
        /* A disguised row is met with equality: only there is its gradient what the cone's dual is. */
        std::vector<double> x = random_point(&random, made.m.num_var, 0.5, 2.0);
        if (made.map.disguised.size() > 1) continue; /* one head can be moved for one row only: see the next test */
        for (const conic_disguised &d : made.map.disguised) {
            const auto head = static_cast<size_t>(
                made.map.forms.column[static_cast<size_t>(made.map.member[static_cast<size_t>(d.first)].first)]);
            double low = 0.0, high = 1e4; /* bisection on the head */
            const auto row = static_cast<size_t>(d.row);
            for (int step = 0; step < 200; step++) {
                x[head] = (low + high) / 2;
                std::vector<double> activity(static_cast<size_t>(made.m.num_con));
                model_activity(&made.m, x.data(), activity.data());
                const bool holds = activity[row] >= made.m.con_lower[row] && activity[row] <= made.m.con_upper[row];
                (holds ? high : low) = x[head];
            }
        }
        std::vector<double> y(static_cast<size_t>(made.m.num_con)), reduced(x.size());
        for (size_t i = 0; i < y.size(); i++) y[i] = sense * (made.m.con_upper[i] != model_inf ? -0.75 : 0.5);
        for (size_t j = 0; j < x.size(); j++) reduced[j] = sense * (j % 2 == 0 ? 0.25 : 0.0);

        solution of_form, of_task;
        const model form = stationary_pair(&made, x, y, reduced, &of_form);
        ASSERT_LE(stationarity(form, of_form), 1e-12);
        conic_map_point(&made.m, &made.map, &of_form, &of_task);
        EXPECT_LE(stationarity(made.m, of_task), 1e-9);
        EXPECT_EQ(of_task.xx, x);
        std::vector<double> activity(static_cast<size_t>(made.m.num_con));
        model_activity(&made.m, x.data(), activity.data());
        EXPECT_EQ(of_task.xc, activity);
        std::set<int32_t> disguised;
        for (const conic_disguised &d : made.map.disguised) disguised.insert(d.row);
        for (size_t i = 0; i < y.size(); i++) {
            if (disguised.count(static_cast<int32_t>(i)) == 0) {
                EXPECT_EQ(of_task.y[i], y[i]);
            }
            EXPECT_GT(y[i] * of_task.y[i], 0.0); /* the sign that its side has */
            EXPECT_EQ(of_task.slc[i] - of_task.suc[i], of_task.y[i]);
        }
        for (size_t j = 0; j < x.size(); j++) EXPECT_NEAR(of_task.slx[j] - of_task.sux[j], reduced[j], 1e-9);
    }
}

/* min t + u/2 with two cones that share t: x^2 + y^2 <= t^2 is met at (3, 4, 5), t u >= 50 at u = 10. */
TEST(conic_map, cones_that_share_a_column)
{
    made_form made = make(from_lp("min t st q: [ x^2 + y^2 - t^2 ] <= 0 r: [ t*u ] >= 50 end"), false);
    std::vector<double> x(4);
    x[static_cast<size_t>(column(made.m, "t"))] = 5.0;
    x[static_cast<size_t>(column(made.m, "x"))] = 3.0;
    x[static_cast<size_t>(column(made.m, "y"))] = 4.0;
    x[static_cast<size_t>(column(made.m, "u"))] = 10.0;
    solution of_form, of_task;
    const model form = stationary_pair(&made, x, {0.0, 0.0}, {0.0, 0.0, 0.0, 0.0}, &of_form);
    ASSERT_LE(stationarity(form, of_form), 1e-12);
    conic_map_point(&made.m, &made.map, &of_form, &of_task);
    EXPECT_LE(stationarity(made.m, of_task), 1e-12);
    EXPECT_NEAR(of_task.y[0], -0.75, 1e-12); /* the dual 1.5 (t, -x, -y) is -y times (2 t, -2 x, -2 y) */
    EXPECT_GT(of_task.y[1], 0.0);
}

/* At the apex there is no gradient, and nothing is invented. */
TEST(conic_map, apex)
{
    made_form made = make(from_lp(problems[2]), false);
    solution of_form, of_task;
    (void)stationary_pair(&made, {0.0, 0.0, 0.0}, {0.0, 1.0}, {0.0, 0.0, 0.0}, &of_form);
    of_form.snx[static_cast<size_t>(column(made.m, "t"))] = 1.0;
    conic_map_point(&made.m, &made.map, &of_form, &of_task);
    EXPECT_EQ(of_task.y[0], 0.0);
    EXPECT_EQ(of_task.y[1], 1.0);
    for (const double v : of_task.slx) EXPECT_TRUE(std::isfinite(v));
}

TEST(conic_map, keys_and_cones_of_the_problem_stay)
{
    model m = from_lp("min t + z st q: [ x^2 + y^2 ] + t <= 9 a: z - x >= 0 end");
    m.cones.push_back({ZLR_CT_QUAD, {column(m, "z"), column(m, "x")}});
    const made_form made = make(m, false);
    ASSERT_EQ(made.form->cones.size(), 2U);
    solution of_form, of_task;
    solution_reset(&of_form, made.form->num_con, made.form->num_var, 2);
    of_form.defined = of_form.has_primal = of_form.has_dual = of_form.has_keys = true;
    of_form.solsta = ZLR_SOLSTA_OPTIMAL;
    for (size_t j = 0; j < of_form.snx.size(); j++) of_form.snx[j] = 1.0 + static_cast<double>(j);
    of_form.skx.back() = ZLR_SK_FIXED;
    of_form.skx[1] = ZLR_SK_LOWER;
    conic_map_point(&m, &made.map, &of_form, &of_task);
    EXPECT_EQ(of_task.skx.size(), static_cast<size_t>(m.num_var));
    EXPECT_EQ(of_task.skx[1], ZLR_SK_LOWER);
    EXPECT_EQ(of_task.skn.size(), 1U);
    for (int32_t j = 0; j < m.num_var; j++) {
        const bool in_cone = j == column(m, "z") || j == column(m, "x");
        EXPECT_EQ(of_task.snx[static_cast<size_t>(j)], in_cone ? 1.0 + j : 0.0);
    }
    EXPECT_EQ(of_task.solsta, ZLR_SOLSTA_OPTIMAL);
}

TEST(conic_map, rays)
{
    const made_form made = make(from_lp(problems[2]), false);
    const auto t = static_cast<size_t>(column(made.m, "t")), x = static_cast<size_t>(column(made.m, "x"));
    solution of_form, of_task;
    solution_reset(&of_form, 2, 3, 1);
    of_form.defined = of_form.has_primal = true;
    of_form.solsta = ZLR_SOLSTA_DUAL_INFEAS_CER;
    of_form.xx[t] = of_form.xx[x] = 1.0;
    conic_map_ray(&made.m, &made.map, &of_form, &of_task);
    EXPECT_EQ(of_task.xx, of_form.xx);
    EXPECT_EQ(of_task.xc, (std::vector<double>{0.0, 1.0})); /* the linear row x + y */

    solution_reset(&of_form, 2, 3, 1);
    of_form.defined = of_form.has_dual = true;
    of_form.solsta = ZLR_SOLSTA_PRIM_INFEAS_CER;
    of_form.y[1] = 0.5;
    of_form.snx[t] = 0.25;
    of_form.slx[x] = 0.125;
    conic_map_ray(&made.m, &made.map, &of_form, &of_task);
    EXPECT_EQ(of_task.y, (std::vector<double>{-0.25, 0.5}));
    EXPECT_EQ(of_task.suc[0], 0.25);
    EXPECT_EQ(of_task.slx[x], 0.125);
}
