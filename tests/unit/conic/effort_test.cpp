/* effort_test.cpp - work that gives up where it would cost more than it may, or is not wanted any more: then it has left
 * nothing, and with enough it comes to what it comes to without a limit. */
#include "conic_support.h"

#include <thread>

using namespace conic_support;

/* One part each way that a form is factored: pairs, full and sparse matrices, definite and singular, in objective and row. */
static model mixed_model()
{
    std::mt19937 random(5);
    model m = from_lp("min x st c: x + y >= 1 q: x + [ x^2 + 2 x*y + y^2 ] <= 9 d: [ u^2 - t^2 ] <= 0 end");
    const int32_t first = m.num_var, dense = 40, sparse = 400;
    model_append_vars(&m, dense + 2 * sparse);
    m.qobj = terms_of(random_gram(&random, dense, dense / 2), first);
    for (int32_t j = 0; j < sparse; j++) { /* the differences of neighbours, and of some far apart: singular */
        const int32_t at = first + dense + j, other = first + dense + (j * 7 + 3) % sparse;
        for (const int32_t k : {j + 1 < sparse ? at + 1 : at, other}) {
            if (k == at) continue;
            m.qobj.push_back({at, at, 1.0});
            m.qobj.push_back({k, k, 1.0});
            m.qobj.push_back({std::max(at, k), std::min(at, k), -1.0});
        }
        m.qcon[0].terms.push_back({at + sparse, at + sparse, 3.0});
        if (j > 0) m.qcon[0].terms.push_back({at + sparse, at + sparse - 1, 1.0});
    }
    quad_normalise(&m.qobj);
    quad_normalise(&m.qcon[0].terms);
    return m;
}

TEST(effort, more_of_it_leads_to_what_there_is_without_a_limit)
{
    const model m = mixed_model();
    std::shared_ptr<model> whole, form;
    conic_map whole_map, map;
    std::string message;
    ASSERT_EQ(conic_form(&m, false, &whole, &whole_map, &message), ZLR_RES_OK) << message;
    int32_t num_given_up = 0;
    bool is_done = false;
    for (double steps = 1.0; !is_done; steps *= 1.5) {
        ASSERT_LT(steps, 1e12);
        work_effort effort;
        effort.steps_left = steps;
        form = std::make_shared<model>();
        const int32_t code = conic_form(&m, false, &form, &map, &message, &effort);
        is_done = !effort.is_given_up;
        num_given_up += is_done ? 0 : 1;
        if (!is_done) {
            EXPECT_EQ(form, nullptr) << steps;
            continue;
        }
        ASSERT_EQ(code, ZLR_RES_OK) << message;
    }
    EXPECT_GT(num_given_up, 20);
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(form->num_var, whole->num_var);
    EXPECT_EQ(form->num_con, whole->num_con);
    EXPECT_EQ(form->a.row, whole->a.row);
    EXPECT_EQ(form->a.value, whole->a.value);
    EXPECT_EQ(form->cones.size(), whole->cones.size());
    EXPECT_EQ(map.disguised.size(), 1U);
}

TEST(effort, flag_ends_work_at_its_next_step)
{
    const model m = mixed_model();
    std::atomic<bool> stop{true};
    work_effort effort;
    effort.stop = &stop;
    (void)convexity_check(&m, &effort);
    EXPECT_TRUE(effort.is_given_up);

    stop = false;
    effort.is_given_up = false;
    EXPECT_EQ(convexity_check(&m, &effort).code, ZLR_RES_OK);
    EXPECT_FALSE(effort.is_given_up);
}
