/* What is kept of a run for its report: the progress, thinned, and the log, with its middle left out. */
#include "solver/report/progress.h"
#include "solver/report/run_history.h"
#include "solver/report/stream_capture.h"
#include "solver/report/streams.h"

#include <cmath>
#include <gtest/gtest.h>

static progress_line line_at(double time_s, int64_t iterations, double objective)
{
    progress_line line;
    line.method = "dual simplex";
    line.time_s = time_s;
    line.iterations = iterations;
    line.has_primal = true;
    line.primal_obj = objective;
    line.primal_infeas = 0.5;
    return line;
}

TEST(run_history, keeps_what_is_known_and_leaves_repetitions_out)
{
    run_history history;
    progress_line line = line_at(1.0, 10, 5.0);
    run_history_add(&history, &line);
    line.time_s = 2.0;
    run_history_add(&history, &line); /* nothing new but the time */
    line.iterations = 11;
    line.primal_obj = HUGE_VAL;
    run_history_add(&history, &line);
    line.method = "interior point";
    run_history_add(&history, &line);

    ASSERT_EQ(history.series.size(), 2U);
    ASSERT_EQ(history.series[0].points.size(), 2U);
    EXPECT_EQ(history.series[1].points.size(), 1U);
    const history_point &p = history.series[0].points[0];
    EXPECT_EQ(p.time_s, 1.0);
    EXPECT_EQ(p.primal_obj, 5.0);
    EXPECT_EQ(p.primal_infeas, 0.5);
    EXPECT_TRUE(std::isnan(p.dual_obj));
    EXPECT_TRUE(std::isnan(p.dual_infeas));
    EXPECT_TRUE(std::isnan(history.series[0].points[1].primal_obj)) << "an infinite objective is none";
}

TEST(run_history, thins_evenly_and_keeps_both_ends)
{
    for (const size_t most : {size_t{4}, size_t{20}, size_t{300}}) {
        SCOPED_TRACE(most);
        run_history history;
        history.max_points = most;
        constexpr int64_t num = 20000;
        for (int64_t k = 0; k < num; k++) {
            const progress_line line = line_at(0.01 * static_cast<double>(k), k, -static_cast<double>(k));
            run_history_add(&history, &line);
            ASSERT_LE(history.series[0].points.size(), most);
            ASSERT_EQ(history.series[0].points.back().iterations, k) << "the newest is always there";
        }
        const std::vector<history_point> &points = history.series[0].points;
        EXPECT_GE(points.size(), most / 2);
        EXPECT_EQ(points.front().iterations, 0);
        const double length = 0.01 * num;
        for (size_t k = 1; k < points.size(); k++) {
            EXPECT_GT(points[k].time_s, points[k - 1].time_s);
            EXPECT_LE(points[k].time_s - points[k - 1].time_s, 4.0 * length / static_cast<double>(most)) << k;
            EXPECT_EQ(points[k].primal_obj, -static_cast<double>(points[k].iterations)) << "points are never mixed";
        }
    }
}

/* ---- The log ---- */

TEST(stream_capture, gets_what_the_log_gets_though_nobody_listens)
{
    stream_set set;
    stream_capture capture;
    EXPECT_FALSE(streams_linked(&set, ZLR_STREAM_MSG));
    set.capture = &capture;
    EXPECT_TRUE(streams_linked(&set, ZLR_STREAM_MSG));
    streams_write(&set, ZLR_STREAM_LOG, "one\n");
    streams_printf(&set, ZLR_STREAM_MSG, "%d\n", 2);
    streams_printf(&set, ZLR_STREAM_ERR, "%s\n", std::string(5000, 'x').c_str());
    set.capture = nullptr;
    streams_write(&set, ZLR_STREAM_LOG, "after\n");
    stream_capture_end(&capture);
    EXPECT_EQ(capture.head + capture.tail, "one\n2\n" + std::string(5000, 'x') + "\n");
    EXPECT_EQ(capture.left_out_bytes, 0);
}

TEST(stream_capture, keeps_the_beginning_and_the_end_of_a_long_log)
{
    stream_capture capture;
    capture.limit_bytes = 1000;
    int64_t written = 0;
    std::string line;
    for (int k = 0; k < 5000; k++) {
        line = "line " + std::to_string(k) + "\n";
        stream_capture_add(&capture, line.c_str());
        written += static_cast<int64_t>(line.size());
        ASSERT_LE(capture.head.size() + capture.tail.size(), 1500U);
    }
    stream_capture_end(&capture);
    const auto kept = static_cast<int64_t>(capture.head.size() + capture.tail.size());
    EXPECT_LE(kept, 1000);
    EXPECT_GE(kept, 900);
    EXPECT_EQ(kept + capture.left_out_bytes, written);
    EXPECT_EQ(capture.head.substr(0, 7), "line 0\n");
    EXPECT_EQ(capture.tail.substr(0, 5), "line ") << "begins with a whole line";
    EXPECT_EQ(capture.tail.substr(capture.tail.size() - line.size()), line);
}

TEST(stream_capture, one_text_larger_than_all_of_it)
{
    stream_capture capture;
    capture.limit_bytes = 100;
    stream_capture_add(&capture, (std::string(1000, 'a') + "\nend\n").c_str());
    stream_capture_end(&capture);
    EXPECT_EQ(capture.head, std::string(50, 'a'));
    EXPECT_EQ(capture.tail, "end\n");
    EXPECT_EQ(capture.left_out_bytes, 1005 - 50 - 4);
}
