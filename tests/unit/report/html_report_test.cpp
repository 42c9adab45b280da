/* The run report as a page: well-formed for every outcome, and with the values of the task in it. */
#include "solver/report/html_report.h"
#include "solver/report/progress.h"
#include "support/files.h"
#include "support/html.h"
#include "support/sys.h"

#include <cmath>
#include <gtest/gtest.h>

/* The reader that the tests below rely on must see what is wrong. */
TEST(html_complaint, sees_what_is_wrong)
{
    const auto complaint = [](const std::string &body) {
        return html_complaint("<!DOCTYPE html>\n<html><body>" + body + "</body></html>\n");
    };
    EXPECT_EQ(complaint("<p class=\"a b\" id=\"x\">a &lt; b<br></p><a href=\"#x\">x</a><path d=\"M1 2\"/>"), "");
    EXPECT_NE(html_complaint("<html></html>"), "");
    for (const char *wrong : {"<p>",
                              "</p>",
                              "<p><b></p></b>",
                              "a < b",
                              "a > b",
                              "&nbsp;",
                              "&",
                              "<p class=a></p>",
                              "<p class=\"a></p>",
                              "\x01",
                              "<p id=\"x\"></p><p id=\"x\"></p>",
                              "<a href=\"#y\">y</a>",
                              "<a href=\"http://z\">z</a>",
                              "<script></script>",
                              "<p onclick=\"f()\"></p>",
                              "<img alt=\"\"/>",
                              "<p src=\"x\"></p>",
                              "<style>a{background:url(x)}</style>",
                              "<style>a{</style>",
                              "<path d=\"Mnan 1\"/>",
                              "<circle cx=\"inf\"/>"})
        EXPECT_NE(complaint(wrong), "") << wrong;
}

class html_report : public testing::Test
{
protected:
    ZLR_env env;
    ZLR_task task;
    run_trace trace;
    std::string errors;

    void SetUp() override
    {
        env.sys = test_sys();
        task.env = &env;
        param_set_defaults(&task.params);
        task.problem = std::make_shared<model>();
        const auto append = [](void *text, const char *piece) { *static_cast<std::string *>(text) += piece; };
        task.streams.out[ZLR_STREAM_ERR] = {append, &errors, nullptr};
        trace.begun = std::chrono::system_clock::time_point(std::chrono::seconds(951782399)); /* a leap day's eve */
    }

    /* Two rows, three columns, one of them integer if asked for, and names that hold markup. */
    void make_problem(bool is_integer)
    {
        model *m = task.problem.get();
        model_append_cons(m, 2);
        model_append_vars(m, 3);
        m->name = "<script>&\"x\"";
        m->sense = ZLR_SENSE_MAX;
        m->c = {2.0, 0.0, -40.0};
        m->con_lower = {-model_inf, 1.0};
        m->con_upper = {300.0, 1.0};
        m->var_upper = {10.0, model_inf, model_inf};
        const int32_t rows[] = {0, 1};
        const double values[] = {1.0, 0.004};
        model_put_column(m, 0, 2, rows, values);
        model_put_column(m, 2, 1, rows, values);
        names_put(&m->con_names, 0, "r<1>&");
        names_put(&m->var_names, 0, "x\xff\x01'");
        if (is_integer) m->var_type[1] = ZLR_VAR_INT;
    }

    solution *solve(int32_t kind, int32_t solsta)
    {
        solution *sol = &task.sol[kind];
        solution_reset(sol, task.problem->num_con, task.problem->num_var);
        sol->defined = sol->has_primal = sol->has_keys = true;
        sol->has_dual = kind != ZLR_SOL_ITG;
        sol->solsta = solsta;
        sol->prosta = ZLR_PRO_PRIM_AND_DUAL_FEAS;
        sol->primal_obj = 1.0 / 3.0;
        sol->dual_obj = 0.75;
        sol->xx = {5.0, 0.0, -0.25};
        sol->xc = {4.75, 0.02};
        sol->y = {0.125, -2.0};
        sol->check.row = 2.5e-9;
        sol->check.worst_row = 0;
        sol->check.bound = 0.0;
        if (kind == ZLR_SOL_ITG) sol->check.integrality = 0.0;
        if (kind != ZLR_SOL_ITG) sol->check.dual = 1e-12;
        task.run.ran = true;
        task.run.engine = "HiGHS 1.15.1";
        task.run.method = kind == ZLR_SOL_ITG ? "branch and cut" : "dual simplex";
        task.run.time_total_s = 12.5;
        return sol;
    }

    std::string page(int32_t code = ZLR_RES_OK) const
    {
        std::string text = html_report_text(&task, &trace, code);
        EXPECT_EQ(html_complaint(text), "");
        EXPECT_EQ(text.find("nan"), std::string::npos);
        return text;
    }

    static bool has(const std::string &page, const std::string &what) { return page.find(what) != std::string::npos; }
};

TEST_F(html_report, without_anything)
{
    for (const run_trace *kept : {static_cast<const run_trace *>(nullptr), static_cast<const run_trace *>(&trace)}) {
        const std::string text = html_report_text(&task, kept, ZLR_RES_ERR_NO_ENGINE);
        EXPECT_EQ(html_complaint(text), "");
        EXPECT_TRUE(has(text, "No answer"));
        EXPECT_TRUE(has(text, "No installed engine takes this type of problem."));
        EXPECT_TRUE(has(text, "The matrix has no nonzeros."));
        EXPECT_TRUE(has(text, "The optimisation has printed nothing."));
        EXPECT_TRUE(has(text, "All parameters were at their defaults."));
        EXPECT_EQ(html_entry_text(text, "Objective"), "minimise");
    }
}

TEST_F(html_report, shapes_without_rows_or_columns)
{
    for (const auto &[rows, columns] : {std::pair{3, 0}, std::pair{0, 3}, std::pair{1, 1}}) {
        task.problem = std::make_shared<model>();
        model_append_cons(task.problem.get(), rows);
        model_append_vars(task.problem.get(), columns);
        solution *sol = &task.sol[ZLR_SOL_BAS];
        solution_reset(sol, rows, columns);
        sol->defined = sol->has_primal = sol->has_dual = true;
        sol->solsta = ZLR_SOLSTA_OPTIMAL;
        const std::string text = page();
        EXPECT_EQ(html_entry_text(text, "Rows").substr(0, 1), std::to_string(rows));
        EXPECT_EQ(html_entry_text(text, "Columns").substr(0, 1), std::to_string(columns));
    }
}

TEST_F(html_report, values_stand_where_they_belong)
{
    make_problem(false);
    solve(ZLR_SOL_BAS, ZLR_SOLSTA_OPTIMAL);
    task.data_file = "a&b.mps";
    const std::string text = page();
    EXPECT_TRUE(has(text, "<h1><bdi>&lt;script&gt;&amp;&quot;x&quot;</bdi></h1>"));
    EXPECT_TRUE(has(text, "class=\"verdict good\""));
    EXPECT_EQ(html_entry_text(text, "Objective"), "0.3333333333") << "the first one: of the outcome";
    EXPECT_EQ(html_entry_text(text, "Dual objective"), "0.75");
    EXPECT_EQ(html_entry_text(text, "Largest violation"), "2.5e-09");
    EXPECT_EQ(html_entry_text(text, "Time"), "12.5\u00a0s");
    EXPECT_EQ(html_entry_text(text, "Rows"), "2 (1 equal, 1 one-sided)");
    EXPECT_EQ(html_entry_text(text, "Nonzeros"), "3 (density 50 %)");
    EXPECT_EQ(html_entry_text(text, "Begun"), "2000-02-28 23:59:59 UTC");
    EXPECT_EQ(html_entry_text(text, "Return code"), "0 ZLR_RES_OK: No error");
    EXPECT_TRUE(has(text, "<td class=\"num\">0.3333333333333333</td>")) << "all digits in the table";
    EXPECT_TRUE(
        has(text, "<tr><th scope=\"row\">row limits</th><td><bdi>r&lt;1&gt;&amp;</bdi></td><td class=\"num\">2.5e-09"));
    /* 2 * 5 and -40 * -0.25 weigh the same: the first one comes first. The column in between weighs nothing. */
    const size_t first = text.find("<tr><th scope=\"row\"><bdi>x\ufffd\u2401&#39;</bdi></th><td class=\"num\">5</td>");
    const size_t second = text.find("<tr><th scope=\"row\"><bdi>x3</bdi></th>");
    ASSERT_NE(first, std::string::npos);
    ASSERT_NE(second, std::string::npos);
    EXPECT_LT(first, second);
    EXPECT_FALSE(has(text, "<bdi>x2</bdi>"));
    EXPECT_TRUE(
        has(text, "<tr><th scope=\"row\"><bdi>c2</bdi></th><td class=\"num\">0.02</td><td class=\"num\">= 1</td>"));
    EXPECT_TRUE(has(text, "<title>r&lt;1&gt;&amp;, x\ufffd\u2401&#39;: 1</title>")) << "an entry of the matrix";
}

TEST_F(html_report, every_status_has_a_verdict_of_its_own)
{
    static const struct {
        int32_t kind, solsta;
        const char *tone, *title;
        bool objective, proof;
    } cases[] = {
        {ZLR_SOL_BAS, ZLR_SOLSTA_OPTIMAL, "good", "Optimal", true, false},
        {ZLR_SOL_ITG, ZLR_SOLSTA_INTEGER_OPTIMAL, "good", "Optimal", true, false},
        {ZLR_SOL_ITR, ZLR_SOLSTA_NEAR_OPTIMAL, "part", "Nearly optimal", true, false},
        {ZLR_SOL_ITG, ZLR_SOLSTA_PRIM_FEAS, "part", "Feasible, not known to be optimal", true, false},
        {ZLR_SOL_BAS, ZLR_SOLSTA_DUAL_FEAS, "part", "A bound, and no feasible point", true, false},
        {ZLR_SOL_BAS, ZLR_SOLSTA_PRIM_INFEAS_CER, "bad", "Infeasible", false, true},
        {ZLR_SOL_ITG, ZLR_SOLSTA_PRIM_INFEAS_CER, "bad", "Infeasible", false, false},
        {ZLR_SOL_BAS, ZLR_SOLSTA_DUAL_INFEAS_CER, "bad", "Unbounded", false, false},
        {ZLR_SOL_BAS, ZLR_SOLSTA_UNKNOWN, "bad", "No answer", true, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.title);
        task.problem = std::make_shared<model>();
        for (solution &sol : task.sol) solution_clear(&sol);
        make_problem(c.kind == ZLR_SOL_ITG);
        solve(c.kind, c.solsta);
        const std::string text = page();
        EXPECT_TRUE(has(text, std::string("class=\"verdict ") + c.tone + "\""));
        EXPECT_TRUE(has(text, std::string("</svg>") + c.title + "</h2>"));
        EXPECT_EQ(html_entry_text(text, "Objective") == "0.3333333333", c.objective);
        EXPECT_EQ(has(text, "Rows that weigh most in the proof"), c.proof);
        EXPECT_EQ(has(text, "Columns that move most along the ray"), c.solsta == ZLR_SOLSTA_DUAL_INFEAS_CER);
    }
}

TEST_F(html_report, stop_is_told_beside_what_was_found)
{
    make_problem(true);
    solve(ZLR_SOL_ITG, ZLR_SOLSTA_PRIM_FEAS);
    task.run.best_bound = 0.5;
    task.run.relative_gap = 0.5;
    const std::string text = page(ZLR_RES_TRM_TIME_LIMIT);
    EXPECT_TRUE(has(text, "<p>Stopped at the time limit.</p>"));
    EXPECT_EQ(html_entry_text(text, "Bound"), "0.5");
    EXPECT_EQ(html_entry_text(text, "Gap"), "50 %");
    EXPECT_TRUE(has(text, "3 columns of which 1 integer"));
}

/* ---- Progress ---- */

static void add_progress(run_history *history, const char *method, bool is_integer, double time_s, double primal,
                         double dual)
{
    progress_line line;
    line.method = method;
    line.is_integer = is_integer;
    line.time_s = time_s;
    line.iterations = static_cast<int64_t>(100.0 * time_s);
    line.nodes = line.iterations / 2;
    line.has_primal = line.has_dual = true;
    line.primal_obj = primal;
    line.dual_obj = dual;
    run_history_add(history, &line);
}

TEST_F(html_report, integer_progress_ends_with_the_outcome)
{
    make_problem(true);
    solve(ZLR_SOL_ITG, ZLR_SOLSTA_INTEGER_OPTIMAL);
    task.run.best_bound = 1.0 / 3.0;
    add_progress(&trace.history, "branch and cut", true, 1.0, -8.0, 40.0);
    add_progress(&trace.history, "branch and cut", true, 5.0, 0.25, 20.0);
    const std::string text = page();
    EXPECT_TRUE(has(text, "<figcaption>Incumbent and bound</figcaption>"));
    EXPECT_TRUE(has(text, "<figcaption>Gap, relative to the incumbent</figcaption>"));
    EXPECT_TRUE(has(text, "<title>incumbent \u22128 at 1.00\u00a0s</title>"));
    EXPECT_TRUE(has(text, "The incumbent ends at 0.33333333. The bound ends at 0.33333333."));
    EXPECT_TRUE(has(
        text, "<tr><th scope=\"row\" class=\"num\">1.00\u00a0s</th><td class=\"num\">50</td><td class=\"num\">100</td>"
              "<td class=\"num\">\u22128</td><td class=\"num\">40</td><td class=\"num\">600 %</td></tr>"));
    EXPECT_TRUE(has(text, "<td class=\"num\">0 %</td></tr>\n</tbody>")) << "no gap is left at the end";
}

TEST_F(html_report, of_a_race_the_method_that_answered_is_shown)
{
    make_problem(false);
    solve(ZLR_SOL_BAS, ZLR_SOLSTA_OPTIMAL);
    task.run.method = "interior point HiPO with crossover";
    for (const double t : {1.0, 2.0, 3.0, 4.0})
        add_progress(&trace.history, "dual simplex", false, t, 10.0 - t, 10.0 - t);
    for (const double t : {1.0, 6.0}) add_progress(&trace.history, "interior point", false, t, 3.0, -3.0);
    std::string text = page();
    EXPECT_TRUE(has(text, "Shown is interior point, which gave the answer. Also at work: dual simplex."));
    EXPECT_TRUE(has(text, "<figcaption>Primal and dual objective</figcaption>"));
    add_progress(&trace.history, "interior point HiPO", false, 2.0, 5.0, 4.0);
    EXPECT_TRUE(has(page(), "Shown is interior point HiPO,")) << "the longer name fits better";

    task.run.method = "first-order method PDLP";
    text = page();
    EXPECT_TRUE(has(text, "Shown is dual simplex; the method that gave the answer ended before it was looked at."));
    EXPECT_TRUE(has(text, "<figcaption>Objective</figcaption>")) << "both sides of a simplex objective are one line";
}

TEST_F(html_report, progress_of_one_moment_is_no_chart)
{
    make_problem(false);
    solve(ZLR_SOL_BAS, ZLR_SOLSTA_OPTIMAL);
    add_progress(&trace.history, "dual simplex", false, 12.4, 1.0, 1.0);
    EXPECT_TRUE(has(page(), "The run was over before there was any progress to draw."));
}

/* ---- Parameters, log, size ---- */

TEST_F(html_report, parameters_and_log_are_shown_as_text)
{
    ASSERT_EQ(param_put_str(&task.params, SPAR_STAT_LABEL, "<i>'run'", &task.streams), ZLR_RES_OK);
    ASSERT_EQ(param_put_int(&task.params, IPAR_OPTIMIZER, OPTIMIZER_INTPNT, &task.streams), ZLR_RES_OK);
    stream_capture_add(&trace.log, "first <line> & \x1b[0m\n");
    trace.log.left_out_bytes = 12345;
    stream_capture_add(&trace.log, "last line\n");
    const std::string text = page();
    EXPECT_TRUE(has(text, "<code>OPTIMIZER</code></th><td><code>INTPNT</code></td><td><code>FREE</code></td>"));
    EXPECT_EQ(html_entry_text(text, "Label"), "&lt;i&gt;&#39;run&#39;");
    EXPECT_FALSE(has(text, "TIME_LIMIT"));
    EXPECT_TRUE(has(text, "<details open>"));
    EXPECT_TRUE(has(
        text,
        "<pre>first &lt;line&gt; &amp; \u241b[0m\n\n[12\u202f345 bytes of the log are left out here]\nlast line\n</pre>"));
}

TEST_F(html_report, stays_small_for_a_large_problem)
{
    model *m = task.problem.get();
    constexpr int32_t size = 3000;
    model_append_cons(m, size);
    model_append_vars(m, size);
    std::vector<int32_t> sub;
    std::vector<double> value;
    for (int32_t j = 0; j < size; j++) {
        sub.clear();
        value.clear();
        for (int32_t i = j * 7919 % 29; i < size;
             i += 29 + (i * 31 + j) % 57) { /* spread so that shades change all the time */
            sub.push_back(i);
            value.push_back(std::pow(10.0, (i + j) % 40 - 20));
        }
        model_put_column(m, j, static_cast<int32_t>(sub.size()), sub.data(), value.data());
    }
    solve(ZLR_SOL_BAS, ZLR_SOLSTA_OPTIMAL)->xx.assign(size, 1.0);
    task.sol[ZLR_SOL_BAS].y.assign(size, 1.0);
    task.sol[ZLR_SOL_BAS].xc.assign(size, 1.0);
    EXPECT_LT(page().size(), 300000U);
}

/* Full on the diagonal of blocks and empty elsewhere: one shade, and strokes where the blocks are. */
TEST_F(html_report, picture_of_blocks)
{
    model *m = task.problem.get();
    constexpr int32_t size = 320, block = 80;
    model_append_cons(m, size);
    model_append_vars(m, size);
    for (int32_t j = 0; j < size; j++) {
        std::vector<int32_t> sub;
        for (int32_t i = j / block * block; i < (j / block + 1) * block; i++) sub.push_back(i);
        model_put_column(m, j, block, sub.data(), std::vector<double>(block, 1.0).data());
    }
    const std::string text = page();
    EXPECT_TRUE(has(text, "33 to 100 % filled"));
    EXPECT_FALSE(has(text, "to 33 % filled")) << "shades that do not occur are not explained";
    EXPECT_TRUE(has(text, "A cell of the picture stands for 2 rows and 2 columns"));
    std::string strokes = "d=\"";
    for (int32_t r = 0; r < 160; r++) /* relative to the end of the stroke above, 40 cells long */
        strokes += "m" + std::to_string(r == 0 ? 0 : r % 40 == 0 ? 0 : -40) + " " + (r == 0 ? "0" : "1") + "h40";
    EXPECT_TRUE(has(text, strokes + "\"/>"));
}

/* ---- The file ---- */

TEST_F(html_report, nothing_is_kept_without_a_name)
{
    html_report_begin(&task);
    EXPECT_EQ(task.trace, nullptr);
    EXPECT_EQ(task.streams.capture, nullptr);
    EXPECT_EQ(html_report_write(&task, ZLR_RES_OK), ZLR_RES_OK);
}

TEST_F(html_report, file_holds_the_log_of_the_run_and_no_more)
{
    const temp_folder folder;
    make_problem(false);
    ASSERT_EQ(param_put_str(&task.params, SPAR_REPORT_FILE, folder.file("r.html").c_str(), &task.streams), ZLR_RES_OK);
    streams_write(&task.streams, ZLR_STREAM_MSG, "before\n");
    html_report_begin(&task);
    streams_write(&task.streams, ZLR_STREAM_MSG, "during\n");
    EXPECT_EQ(html_report_write(&task, ZLR_RES_OK), ZLR_RES_OK);
    EXPECT_EQ(task.trace, nullptr);
    EXPECT_EQ(task.streams.capture, nullptr);
    const std::string text = file_read(folder.file("r.html"));
    EXPECT_EQ(html_complaint(text), "");
    EXPECT_TRUE(has(text, "<pre>during\n</pre>"));
}

TEST_F(html_report, failure_is_told_with_the_name)
{
    const temp_folder folder;
    const std::string absent = folder.file("no/r.html");
    ASSERT_EQ(param_put_str(&task.params, SPAR_REPORT_FILE, absent.c_str(), &task.streams), ZLR_RES_OK);
    html_report_begin(&task);
    EXPECT_EQ(html_report_write(&task, ZLR_RES_OK), ZLR_RES_ERR_FILE_OPEN);
    EXPECT_NE(errors.find("r.html: the run report cannot be written: "), std::string::npos) << errors;
    EXPECT_EQ(task.trace, nullptr);
}
