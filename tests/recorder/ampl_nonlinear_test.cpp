/* ampl_nonlinear_test.cpp - the transfer of a nonlinear stub: what is put, in which order, what it starts from, and what
 * becomes of failures. */
#include "evaluated_model.h"

#include <gtest/gtest.h>

#include <algorithm>

/* evaluated_stub as a maximisation with a start, statuses and an integer column among the linear ones. */
static nl_model started_model()
{
    nl_model m = evaluated_stub();
    m.objectives[0].maximise = true;
    m.niv = 1;
    m.x = {{0, 1.5}, {2, -2.0}};
    m.y = {{1, 0.25}};
    m.suffixes = {{0, "sstatus", {{0, 1}, {2, 3}}}, {1, "sstatus", {{1, 4}}}};
    return m;
}

static ampl_result run_model(const nl_model &model, const std::string &script = "", bool may_fail = false)
{
    return run_ampl({.stub = nl_text(model), .script = script, .may_fail = may_fail});
}

static const std::string start_entries = "putsolution solutionsummary";

TEST(ampl_nonlinear, calls)
{
    const ampl_result result = run_model(started_model());
    const std::string expected =
        "getintparam(task1, 172)\n"
        "getdouparam(task1, 11)\n"
        "getdouparam(task1, 8)\n"
        "putobjname(task1, \"_sobj[1]\")\n"
        "getnumcon(task1)\n"
        "getnumvar(task1)\n"
        "putobjsense(task1, 1)\n"
        "putmaxnumcon(task1, 3)\n"
        "putmaxnumvar(task1, 3)\n"
        "putmaxnumanz(task1, 2)\n"
        "appendcons(task1, 3)\n"
        "appendvars(task1, 3)\n"
        "putobjname(task1, \"_sobj[1]\")\n"
        "getnumcon(task1)\n"
        "getnumvar(task1)\n"
        "putcfix(task1, 0)\n"
        "putclist(task1, 1, {0}, {0})\n"
        "putclist(task1, 1, {1}, {0})\n"
        "putclist(task1, 1, {2}, {7})\n"
        "putconbound(task1, 0, 1, -inf, 50)\n"
        "putconbound(task1, 1, 0, -4, inf)\n"
        "putconbound(task1, 2, 0, 1, inf)\n"
        "putvarbound(task1, 0, 0, 0, inf)\n"
        "putvarbound(task1, 1, 0, 0, inf)\n"
        "putvarbound(task1, 2, 0, 0, inf)\n"
        "putacol(task1, 0, 1, {2}, {1})\n"
        "putacol(task1, 1, 0, {}, {})\n"
        "putacol(task1, 2, 1, {2}, {1})\n"
        "putvartype(task1, 2, 1)\n"
        "putcfix(task1, 0)\n"
        "putnlfunc(task1, MEM)\n"
        "getnumcon(task1)\n"
        "getnumvar(task1)\n"
        "getnumcone(task1)\n"
        "getnumintvar(task1)\n"
        "getprobtype(task1)\n"
        "putsolution(task1, 2, {0 4 0}, {1 0 3}, null, null, null, null, null, null, null, null, null)\n"
        "solutionsummary(task1, 1)\n";
    std::string found;
    for (const std::string &call : result.transfer)
        found += (call.rfind("putnlfunc(task1, mem", 0) == 0 ? "putnlfunc(task1, MEM)" : call) + "\n";
    EXPECT_EQ(found, expected);
    EXPECT_TRUE(result.has_sol);
    EXPECT_EQ(calls_of(result.run, "optimize").size(), 1U);
}

/* Initial values are those of the second read, which keeps none; AMPL_EXTENDED does. Statuses are kept by both. */
TEST(ampl_nonlinear, start)
{
    nl_model model = started_model();
    EXPECT_EQ(
        part_of(run_model(model, "int 172 1"), start_entries),
        "putsolution(task1, 2, {0 4 0}, {1 0 3}, null, null, {1.5 0 -2}, {0 0.25 0}, null, null, null, null, null)\n"
        "solutionsummary(task1, 1)\n");
    model.suffixes.clear();
    model.niv = 0;
    EXPECT_EQ(part_of(run_model(model, "type 4"), start_entries), "");
    EXPECT_EQ(
        part_of(run_model(model, "type 4\nint 172 1"), start_entries),
        "putsolution(task1, 0, {0 0 0}, {0 0 0}, null, null, {1.5 0 -2}, {0 0.25 0}, null, null, null, null, null)\n"
        "solutionsummary(task1, 1)\n");
    /* The model's own calls are the same in both modes. */
    std::vector<std::string> plain = run_model(model).transfer;
    std::vector<std::string> extended = run_model(model, "int 172 1").transfer;
    const auto is_start = [](const std::string &call) {
        return call.rfind("putsolution", 0) == 0 || call.rfind("solutionsummary", 0) == 0 ||
               call.rfind("linkfunctotaskstream", 0) == 0 || call.find("The start that the stub gives") != call.npos;
    };
    std::erase_if(plain, is_start);
    std::erase_if(extended, is_start);
    EXPECT_EQ(joined(plain), joined(extended));
}

/* The constant comes from the second read; rows alone have an objective without one. */
TEST(ampl_nonlinear, constant)
{
    nl_model model = evaluated_stub();
    model.objectives[0] = {.linear = {{2, 1.0}}, .constant = 5.5};
    model.nlvo = model.nlvb = 0;
    EXPECT_EQ(part_of(run_model(model), "putcfix"), "putcfix(task1, 5.5)\nputcfix(task1, 5.5)\n");
    model.objectives.clear();
    const ampl_result result =
        run_model(model, "evaluate structure yo=1 y=2 want=grad,gradsub,count\n"
                         "evaluate values x=1,2,3 yo=1 y=-1,0,0 rows=0,1 room=3 want=obj,grad,con,lag,count,hes");
    EXPECT_EQ(part_of(result, "putcfix"), "putcfix(task1, 0)\nputcfix(task1, 0)\n");
    const std::vector<callback_answer> answers = answers_of(result.run);
    ASSERT_EQ(answers.size(), 2U);
    EXPECT_EQ(answers[0].arrays.at("grad")[0], 0);
    EXPECT_EQ(answers[1].code, 0);
    const evaluated_model m = evaluated_at({1, 2, 3});
    EXPECT_TRUE(are_close(answers[1].arrays.at("obj"), {0}));
    EXPECT_TRUE(are_close(answers[1].arrays.at("grad"), {0}));
    EXPECT_TRUE(are_close(answers[1].arrays.at("lag"), {m.dg[0][0], m.dg[0][1], m.dg[0][2]}));
    EXPECT_TRUE(are_close(answers[1].arrays.at("hes"), {m.ddg[0][0], m.ddg[0][1], m.ddg[0][2]}));
}

/* The objective in use is the first. */
TEST(ampl_nonlinear, several_objectives)
{
    nl_model model = evaluated_stub();
    model.objectives.push_back({.linear = {{0, 3.0}, {1, 0.0}}, .nonlinear = nl_exp(nl_variable(1)), .maximise = true});
    const point x = {1.25, 0.75, 2.0};
    const ampl_result result =
        run_model(model, "evaluate structure yo=1 y=2 want=count\n" +
                             values_line(x, "yo=1 y=1,1,1 rows=0,1 room=3 want=obj,lag,count,hes"));
    EXPECT_EQ(part_of(result, "putobjsense"), "");
    const std::vector<callback_answer> answers = answers_of(result.run);
    ASSERT_EQ(answers.size(), 2U);
    const evaluated_model m = evaluated_at(x);
    EXPECT_TRUE(are_close(answers[1].arrays.at("obj"), {m.f}));
    std::vector<double> hessian;
    for (size_t k = 0; k < 3; ++k) hessian.push_back(m.ddf[k] - m.ddg[0][k] - m.ddg[1][k]);
    EXPECT_TRUE(are_close(answers[1].arrays.at("hes"), hessian));
}

/* A row without variables that has two sides: with AMPL_EXTENDED the model is a nonlinear one, without a nonlinear column. */
TEST(ampl_nonlinear, no_nonlinear_columns)
{
    nl_model model = small_model();
    model.rows[0].nonlinear = nl_number(2);
    model.rows[0].lower = model.rows[0].upper = 3.0;
    const ampl_result result =
        run_model(model, "int 172 1\nevaluate structure i=0 yo=1 y=1 room=1 want=grad,con,row,count,sub\n"
                         "evaluate values x=4,5 yo=1 y=1,1 rows=0 room=1 want=obj,grad,con,jac,lag,count,hes");
    EXPECT_NE(part_of(result, "putnlfunc"), "");
    const std::vector<callback_answer> answers = answers_of(result.run);
    ASSERT_EQ(answers.size(), 2U);
    EXPECT_EQ(answers[0].arrays.at("count")[0], 0);
    EXPECT_EQ(answers[0].arrays.at("row")[0], 2);
    EXPECT_EQ(answers[1].code, 0);
    EXPECT_TRUE(are_close(answers[1].arrays.at("obj"), {0})) << "all of it is in the task";
    EXPECT_TRUE(are_close(answers[1].arrays.at("con"), {2 + 4 + 5}));
    EXPECT_TRUE(are_close(answers[1].arrays.at("jac"), {1, 1}));
    EXPECT_TRUE(are_close(answers[1].arrays.at("lag"), {-1, -1}));
    EXPECT_EQ(part_of(result, "putclist"), "putclist(task1, 1, {0}, {1})\nputclist(task1, 1, {1}, {2})\n");
}

/* An objective with more nonlinear entries than columns: the process ends, with status 0 and without a .sol file. */
TEST(ampl_nonlinear, column_twice_in_the_objective)
{
    nl_model model = evaluated_stub();
    model.objectives[0].linear = {{0, 1.0}, {0, 2.0}, {1, 0.0}};
    const temp_folder folder;
    file_write(folder.file("s.nl"), nl_text(model));
    run_request request;
    request.line = "s -AMPL";
    request.script = "evaluate structure want=gradsub";
    request.may_keep_blocks = request.may_end_early = true;
    const recorded_run run = run_recorded(request, folder);
    EXPECT_EQ(run.process.status, 0);
    EXPECT_NE(run.process.out.find("ZLR_nlgetspfunc: Too large num. num: 3 nlvo: 2\n"), std::string::npos)
        << run.process.out;
    EXPECT_FALSE(file_exists(folder.file("s.sol")));
    EXPECT_EQ(position_of(run, "structure"), -1) << "the call does not come back";
}

/* Operators that the AMPL Solver Library cannot evaluate are refused before they are read. */
TEST(ampl_nonlinear, broken_operators)
{
    const char *const names[] = {"div", "precision", "round", "trunc"};
    for (int k = 0; k < 4; ++k) {
        nl_model model = evaluated_stub();
        model.objectives[0].nonlinear = "o" + std::to_string(55 + k) + "\nv0\nv1\n";
        for (const nl_form form : {NL_TEXT, NL_BINARY}) {
            const ampl_result result = run_ampl({.stub = nl_text(model, form)});
            EXPECT_EQ(calls_of(result.run, "getcodedesc(3700, null)").size(), 1U);
            const std::string words = "operator " + std::to_string(55 + k) + " (" + names[k] + ") cannot be evaluated";
            EXPECT_NE(result.run.process.out.find(words), std::string::npos) << result.run.process.out;
            EXPECT_FALSE(result.has_sol);
        }
    }
}

/* ---- Failures ---- */

static int final_code(const recorded_run &run)
{
    int code = -1;
    for (const std::string &call : calls_of(run, "getcodedesc("))
        if (call.find(", null)") != std::string::npos) code = std::stoi(call.substr(12));
    return code;
}

/* Each call of the nonlinear part in turn: no .sol file, and in the practical mode one that says why. */
TEST(ampl_nonlinear, each_call_fails)
{
    for (const char *script : {"code ZLR_putcfix 2 1999", "code ZLR_putnlfunc 1 1999", "code ZLR_getnumcon 3 1999",
                               "code ZLR_getprobtype 1 1999", "code ZLR_putsolution 1 1999"}) {
        SCOPED_TRACE(script);
        const ampl_result plain = run_model(started_model(), script, true);
        EXPECT_EQ(final_code(plain.run), 1999);
        EXPECT_FALSE(plain.has_sol);
        EXPECT_EQ(position_of(plain.run, "optimize"), -1);
        const ampl_result extended = run_model(started_model(), std::string(script) + "\nint 172 1");
        EXPECT_EQ(final_code(extended.run), 1999);
        EXPECT_EQ(code_of(extended.sol), 500);
        EXPECT_EQ(position_of(extended.run, "optimize"), -1);
    }
    /* An optimiser that ends with the code of an evaluation is reported as any other. */
    const ampl_result result = run_model(started_model(), "code ZLR_optimize 1 1433\nint 172 1");
    EXPECT_EQ(final_code(result.run), 1433);
    EXPECT_EQ(code_of(result.sol), 550);
    EXPECT_NE(report_of(result.sol).find("ZELOR return code - 1433 (text of 1433)\n"), std::string::npos) << result.sol;
}

/* Every allocation in turn, from the first of the nonlinear part on: 1051 or no effect, and nothing is left. */
TEST(ampl_nonlinear, each_allocation_fails)
{
    const std::string script = "int 172 1\nevaluate structure yo=1 y=2 want=count\nevaluate values x=1,1,1 want=obj\n";
    const ampl_result whole = run_model(started_model(), script);
    std::vector<std::string> blocks;
    size_t first = 0;
    for (const std::string &call : whole.run.calls) {
        const bool is_block = call.rfind("calloctask(", 0) == 0 || call.rfind("strduptask(", 0) == 0 ||
                              call.rfind("callocdbgtask(", 0) == 0;
        if (is_block) blocks.push_back(call);
        if (call.rfind("putvartype", 0) == 0) first = blocks.size();
    }
    ASSERT_GT(first, 0U);
    EXPECT_EQ(blocks[first], "calloctask(task1, 6, 8)") << "work";
    EXPECT_EQ(blocks[first + 1], "calloctask(task1, 1, 8)") << "ow";
    EXPECT_EQ(blocks[first + 2], "calloctask(task1, 3, 8)") << "y";
    for (size_t k = first; k < blocks.size(); ++k) {
        SCOPED_TRACE(blocks[k]);
        const ampl_result result = run_model(started_model(), script + "nomem " + std::to_string(k + 1));
        const bool was_optimized = position_of(result.run, "optimize(") >= 0;
        EXPECT_EQ(was_optimized, k >= first + 7) << "three of the evaluation and four of the start";
        EXPECT_EQ(final_code(result.run), was_optimized ? 0 : 1051);
        EXPECT_TRUE(result.has_sol);
    }
}
