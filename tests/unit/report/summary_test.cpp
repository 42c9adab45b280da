/* summary_test.cpp - what the summaries say of quadratic parts and cones. */
#include "solver/report/summary.h"

#include <gtest/gtest.h>

#include <cmath>

struct told {
    std::string text;
    stream_set streams;

    told()
    {
        streams.out[ZLR_STREAM_MSG].handle = &text;
        streams.out[ZLR_STREAM_MSG].func = [](void *handle, const char *piece) {
            *static_cast<std::string *>(handle) += piece;
        };
    }
    told(const told &) = delete;
    told &operator=(const told &) = delete;
};

static std::string line_of(const std::string &text, const std::string &begin)
{
    const size_t at = text.find("\n" + begin);
    return at == std::string::npos ? "" : text.substr(at + 1, text.find('\n', at + 1) - at - 1);
}

static ZLR_task conic_task()
{
    ZLR_task task;
    param_set_defaults(&task.params);
    model m;
    model_append_vars(&m, 9);
    model_append_cons(&m, 1);
    names_put(&m.var_names, 2, "head");
    m.cones = {{ZLR_CT_QUAD, {0, 1}}, {ZLR_CT_RQUAD, {2, 3, 4}}, {ZLR_CT_RQUAD, {5, 6, 7, 8}}};
    task.problem = std::make_shared<model>(std::move(m));
    return task;
}

TEST(summary, cones_and_quadratic_parts_are_counted)
{
    told out;
    ZLR_task task = conic_task();
    summary_read(&task, &out.streams, ZLR_STREAM_MSG);
    EXPECT_NE(out.text.find("Problem '', conic, minimise\n"), std::string::npos) << out.text;
    EXPECT_EQ(line_of(out.text, "  Cones"),
              "  Cones      3          1 quadratic of 2 columns, 2 rotated of 3 to 4 columns");

    told other;
    model *m = task.problem.get();
    m->cones.clear();
    m->qobj = {{0, 0, 2.0}, {1, 0, 1.0}};
    m->qcon = {{0, {{3, 3, 1.0}}}};
    summary_read(&task, &other.streams, ZLR_STREAM_MSG);
    EXPECT_EQ(line_of(other.text, "  Cones"), "");
    EXPECT_NE(line_of(other.text, "  Rows").find("1 quadratic"), std::string::npos) << other.text;
    EXPECT_NE(line_of(other.text, "  Nonzeros").find("3 quadratic terms"), std::string::npos) << other.text;
}

TEST(summary, violations_of_cones_are_told_where_they_were_looked_at)
{
    ZLR_task task = conic_task();
    solution *sol = &task.sol[ZLR_SOL_ITR];
    solution_reset(sol, 1, 9, 3);
    sol->defined = true;
    sol->check.row = sol->check.bound = 0.0;
    told without;
    summary_solution(&task, &without.streams, ZLR_STREAM_MSG);
    EXPECT_EQ(line_of(without.text, "  Violations"), "  Violations rows 0.0e+00  bounds 0.0e+00");

    sol->check.cone = 2.5e-7;
    sol->check.worst_cone = 1;
    told with;
    summary_solution(&task, &with.streams, ZLR_STREAM_MSG);
    EXPECT_EQ(line_of(with.text, "  Violations"), "  Violations rows 0.0e+00  bounds 0.0e+00  cones 2.5e-07 (head)");
}
