/* solution_report.h - a task with a model and a solution in it, the analysis of that solution, and the numbers in its
 * text. */
#pragma once

#include "solver/analysis/analysis.h"
#include "support/sys.h"
#include "unit/engines/small_models.h"

#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

class solution_report : public testing::Test
{
protected:
    void SetUp() override
    {
        const auto append = [](void *to, const char *piece) { *static_cast<std::string *>(to) += piece; };
        env.sys = test_sys();
        task.env = &env;
        param_set_defaults(&task.params);
        task.streams.out[ZLR_STREAM_MSG] = {append, &text, nullptr};
    }

    /* An undefined solution of the right size for a new model. */
    solution *renew(const model &m, int32_t kind = ZLR_SOL_BAS)
    {
        task.problem = std::make_shared<model>(m);
        task.run = run_record{};
        for (solution &sol : task.sol) solution_clear(&sol);
        solution_reset(&task.sol[kind], m.num_con, m.num_var);
        task.sol[kind].defined = true;
        return &task.sol[kind];
    }

    int32_t analyse(int32_t kind = ZLR_SOL_BAS)
    {
        text.clear();
        const int32_t res = solution_analysis_print(&task, ZLR_STREAM_MSG, kind);
        EXPECT_EQ(text.find("nan"), std::string::npos) << text;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);) EXPECT_LE(line.size(), 80U) << line;
        return res;
    }

    /* The line that begins with `title` behind blanks; empty if there is none. */
    std::string line_of(const std::string &title) const
    {
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);) {
            const size_t at = line.find_first_not_of(' ');
            if (at != std::string::npos && line.compare(at, title.size(), title) == 0) return line;
        }
        return "";
    }

    /* Number `which` (from 0 on) behind the title in its line; NaN if it is not there. */
    double number_of(const std::string &title, int32_t which) const
    {
        const std::string line = line_of(title);
        std::vector<double> numbers;
        if (line.empty()) return std::nan("");
        std::istringstream in(line.substr(line.find(title) + title.size()));
        for (std::string word; in >> word;) {
            char *end = nullptr;
            const double value = std::strtod(word.c_str(), &end);
            if (end != word.c_str() && (*end == '\0' || *end == ',' || *end == ':')) numbers.push_back(value);
        }
        return static_cast<size_t>(which) < numbers.size() ? numbers[static_cast<size_t>(which)] : std::nan("");
    }

    bool has(const std::string &piece) const { return text.find(piece) != std::string::npos; }

    std::string text;
    ZLR_env env;
    ZLR_task task;
};

/* The optimum of two_row_model, with its duals and keys. */
inline void put_optimum(solution *sol, int32_t sense)
{
    const double s = sense == ZLR_SENSE_MAX ? -1.0 : 1.0;
    sol->has_primal = sol->has_dual = sol->has_keys = true;
    sol->xx = {3.0, 1.0};
    sol->y = {0.0, s * -2.0 / 3.0};
    sol->suc = {0.0, s * 2.0 / 3.0};
    sol->slc = sol->slx = {0.0, 0.0};
    sol->sux = {s * 1.0 / 3.0, 0.0};
    sol->skc = {ZLR_SK_BASIC, ZLR_SK_UPPER};
    sol->skx = {ZLR_SK_UPPER, ZLR_SK_BASIC};
    sol->solsta = ZLR_SOLSTA_OPTIMAL;
    sol->prosta = ZLR_PRO_PRIM_AND_DUAL_FEAS;
}
