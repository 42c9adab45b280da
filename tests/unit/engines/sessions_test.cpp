/* sessions_test.cpp - what the linear engine does on its own account in a session: see engine_session_calls. */
#ifdef ZELOR_ENGINE_MODULE /* builds with the engine */
#include "small_models.h"
#include "solver/engines/engine.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

class sessions : public testing::Test
{
protected:
    void open(double demand)
    {
        std::string message;
        void *module = dlopen(ZELOR_ENGINE_MODULE, RTLD_LAZY | RTLD_LOCAL); /* never unloaded, as by the library */
        ASSERT_NE(module, nullptr) << dlerror();
        const auto *adapter = static_cast<const engine_adapter *>(dlsym(module, "zelor_engine"));
        ASSERT_NE(adapter, nullptr);
        calls = adapter->sessions;
        ASSERT_NE(calls, nullptr);
        problem = make_model(ZLR_SENSE_MIN, {1.0, 1.0, 1.0},
                             {{demand, model_inf, {1.0, 1.0, 0.0}}, {-model_inf, 9.0, {0.0, 1.0, 1.0}}},
                             {0.0, 0.0, 0.0}, {1.0, 1.0, 5.0});
        session = calls->open(job, &problem, &message);
        ASSERT_NE(session, nullptr) << message;
    }
    void TearDown() override
    {
        if (session != nullptr) calls->close(session);
    }

    std::shared_ptr<engine_job> job = std::make_shared<engine_job>();
    const engine_session_calls *calls = nullptr;
    engine_session *session = nullptr;
    model problem;
    engine_sides sides;
    engine_answer answer;
};

TEST_F(sessions, infeasible_sides_are_those_of_the_clash)
{
    open(4.0);
    ASSERT_TRUE(calls->infeasible_sides(session, 10.0, &sides));
    EXPECT_EQ(sides.row_lower, (std::vector<char>{1, 0}));
    EXPECT_EQ(sides.row_upper, (std::vector<char>{0, 0}));
    EXPECT_EQ(sides.col_lower, (std::vector<char>{0, 0, 0}));
    EXPECT_EQ(sides.col_upper, (std::vector<char>{1, 1, 0}));
}

TEST_F(sessions, feasible_problem_has_no_infeasible_sides)
{
    open(2.0);
    EXPECT_FALSE(calls->infeasible_sides(session, 10.0, &sides));
    EXPECT_TRUE(sides.row_lower.empty());
}

TEST_F(sessions, relaxation_pays_the_least)
{
    open(4.0);
    const engine_weights w = {{1.0, 1.0, 1.0}, {5.0, 3.0, 1.0}, {-1.0, -1.0}};
    ASSERT_TRUE(calls->relax(session, 10.0, &w, &answer));
    ASSERT_EQ(answer.x.size(), 3U);
    EXPECT_NEAR(answer.x[0], 1.0, 1e-7);
    EXPECT_NEAR(answer.x[1], 3.0, 1e-7);
    EXPECT_NEAR(answer.y[0], 3.0, 1e-7); /* the next unit of the demand costs as much */
}

TEST_F(sessions, stop_leaves_nothing_found)
{
    open(4.0);
    job->stop = true;
    const engine_weights w = {{1.0, 1.0, 1.0}, {1.0, 1.0, 1.0}, {1.0, 1.0}};
    EXPECT_FALSE(calls->infeasible_sides(session, 10.0, &sides));
    EXPECT_FALSE(calls->relax(session, 10.0, &w, &answer));
}

#endif
