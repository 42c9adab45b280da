/* evaluated_model.cpp - see evaluated_model.h. */
#include "evaluated_model.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <sstream>

nl_model evaluated_stub()
{
    const nl_expression product = nl_product(nl_variable(0), nl_variable(1));
    nl_model m;
    m.columns.resize(3);
    m.nlvc = m.nlvo = m.nlvb = 2;
    m.rows = {{.upper = 50.0,
               .linear = {{0, 0.0}, {1, 0.0}, {2, 3.0}},
               .nonlinear = nl_exp(nl_product(nl_number(0.25), product))},
              {.lower = -4.0,
               .linear = {{0, 0.0}, {1, 2.0}},
               .nonlinear = nl_plus("o5\nv0\nn3\n", nl_product(nl_variable(0), "o41\nv1\n"))},
              {.lower = 1.0, .linear = {{0, 1.0}, {2, 1.0}}}};
    m.objectives = {{.linear = {{0, 1.0}, {1, 0.0}, {2, 7.0}},
                     .nonlinear = nl_plus("o43\nv0\n", nl_plus("o43\nv1\n", nl_number(10)))}};
    return m;
}

evaluated_model evaluated_at(const point &x)
{
    const double e = std::exp(x[0] * x[1] / 4);
    evaluated_model m;
    m.f = std::log(x[0]) + std::log(x[1]) + x[0] + 10;
    m.df = {1 / x[0] + 1, 1 / x[1]};
    m.ddf = {-1 / (x[0] * x[0]), 0.0, -1 / (x[1] * x[1])};
    m.g = {e + 3 * x[2], x[0] * x[0] * x[0] + x[0] * std::sin(x[1]) + 2 * x[1]};
    m.dg[0] = {e * x[1] / 4, e * x[0] / 4, 3.0};
    m.dg[1] = {3 * x[0] * x[0] + std::sin(x[1]), x[0] * std::cos(x[1]) + 2, 0.0};
    m.ddg[0] = {e * x[1] * x[1] / 16, e * (0.25 + x[0] * x[1] / 16), e * x[0] * x[0] / 16};
    m.ddg[1] = {6 * x[0], std::cos(x[1]), -x[0] * std::sin(x[1])};
    return m;
}

/* "name {1 2 ?}" behind "; ". */
static void take_array(const std::string &text, callback_answer *answer)
{
    const size_t open = text.find(" {");
    if (open == std::string::npos) return;
    std::string name = text.substr(0, open);
    for (int turn = 2; answer->arrays.count(name) != 0; ++turn) name = text.substr(0, open) + std::to_string(turn);
    std::istringstream in(text.substr(open + 2, text.size() - open - 3));
    std::vector<double> &values = answer->arrays[name];
    std::string word;
    while (in >> word) values.push_back(word == "?" ? std::numeric_limits<double>::quiet_NaN() : std::stod(word));
}

std::vector<callback_answer> answers_of(const recorded_run &run)
{
    std::vector<callback_answer> answers;
    for (const std::string &line : run.calls) {
        const bool is_answer = line.rfind("structure = ", 0) == 0 || line.rfind("values = ", 0) == 0;
        if (!is_answer) continue;
        callback_answer answer;
        answer.code = std::stoi(line.substr(line.find('=') + 1));
        for (size_t at = line.find("; "); at != std::string::npos;) {
            const size_t end = line.find("; ", at + 2);
            take_array(line.substr(at + 2, end == std::string::npos ? end : end - at - 2), &answer);
            at = end;
        }
        answers.push_back(answer);
    }
    return answers;
}

std::string values_line(const point &x, const std::string &words)
{
    char text[200];
    std::snprintf(text, sizeof text, "evaluate values x=%.17g,%.17g,%.17g ", x[0], x[1], x[2]);
    return text + words + "\n";
}

bool are_close(const std::vector<double> &a, const std::vector<double> &b)
{
    if (a.size() != b.size()) return false;
    for (size_t k = 0; k < a.size(); ++k) {
        if (std::isnan(a[k]) && std::isnan(b[k])) continue;
        if (!(std::fabs(a[k] - b[k]) <= 1e-12 * std::max({1.0, std::fabs(a[k]), std::fabs(b[k])}))) return false;
    }
    return true;
}
