/* adapter.cpp - the Ipopt module: the one symbol that the library looks for, and the order of a solve.
 *
 * Ipopt is an interior-point method with a filter line search for smooth problems; what it finds is a local solution. It
 * takes such problems only, on the calling thread. Its C interface prints its complaints about options to the console
 * until a first start has told it not to: see `quieten`. */
#include "solver/engines/engine.h"
#include "solver/engines/ipopt/calls.h"
#include "solver/engines/ipopt/turn.h"

#include <IpoptConfig.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <limits>
#include <new>

static const char *version(void) { return IPOPT_VERSION; }

static constexpr const char *licence = IPOPT_VERSION_MAJOR > 3 ||
                                               (IPOPT_VERSION_MAJOR == 3 && IPOPT_VERSION_MINOR >= 13)
                                           ? "EPL-2.0"
                                           : "EPL-1.0";

static bool end_with(smooth_answer *answer, smooth_end end, const std::string &message)
{
    answer->end = end;
    answer->message = message;
    return false;
}

/* ---- what Ipopt says at the end */

struct status_row {
    int status;     /* as a number: those of newer versions are not in older headers */
    bool has_point; /* it hands over the point where it stood */
    smooth_end end;
    const char *message;
};

static constexpr status_row status_rows[] = {
    {0, true, SMOOTH_SOLVED, ""},
    {1, true, SMOOTH_ACCEPTABLE, ""},
    {2, true, SMOOTH_LOCALLY_INFEASIBLE, ""},
    {3, true, SMOOTH_SMALL_STEPS, ""},
    {4, true, SMOOTH_DIVERGING, ""},
    {5, true, SMOOTH_STOPPED, ""},
    {6, true, SMOOTH_SQUARE_SOLVED, ""},
    {-1, true, SMOOTH_ITERATION_LIMIT, ""},
    {-2, true, SMOOTH_RESTORATION_FAILED, ""},
    {-3, true, SMOOTH_STEP_FAILED, ""},
    {-4, true, SMOOTH_ITERATION_LIMIT, "ends at a limit of time of its own"},
    {-5, true, SMOOTH_ITERATION_LIMIT, "ends at a limit of time of its own"},
    {-10, false, SMOOTH_TOO_FEW_COLUMNS, ""},
    {-11, false, SMOOTH_FAILED, "takes the problem for one that is not well defined"},
    {-12, false, SMOOTH_REFUSED, "does not run with the options that it is given:"},
    {-13, true, SMOOTH_NO_VALUE, ""},
    {-100, false, SMOOTH_FAILED, "ended with an exception"},
    {-101, false, SMOOTH_FAILED, "ended with an exception of what it uses"},
    {-102, false, SMOOTH_MEMORY, ""},
    {-199, false, SMOOTH_FAILED, "ended with an internal error"},
};

static const status_row *find_status(int status)
{
    static constexpr status_row unknown = {0, false, SMOOTH_FAILED, "ended with a status that is not known"};
    for (const status_row &row : status_rows)
        if (row.status == status) return &row;
    return &unknown;
}

/* ---- options */

static bool put_word(IpoptProblem ipopt, const std::string &name, const std::string &word)
{
    return AddIpoptStrOption(ipopt, const_cast<char *>(name.c_str()), const_cast<char *>(word.c_str()));
}

static bool put_number(IpoptProblem ipopt, const std::string &name, double value)
{
    return AddIpoptNumOption(ipopt, const_cast<char *>(name.c_str()), value);
}

static bool put_whole(IpoptProblem ipopt, const std::string &name, int32_t value)
{
    return AddIpoptIntOption(ipopt, const_cast<char *>(name.c_str()), value);
}

/* A number that is given as a text. */
static bool put_text(IpoptProblem ipopt, const std::string &name, const std::string &text)
{
    char *end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || std::isnan(value)) return false;
    const bool is_whole = value == std::floor(value) && std::fabs(value) < INT32_MAX;
    return (is_whole && put_whole(ipopt, name, static_cast<int32_t>(value))) || put_number(ipopt, name, value);
}

/* Ipopt takes an option in its own type alone, and does not tell which that is. Most of its words have hyphens, some
 * underscores; words of parameters have underscores. */
static bool put_option(IpoptProblem ipopt, const engine_option &o)
{
    if (o.param_class == ZLR_PAR_STR) return put_word(ipopt, o.name, o.str) || put_text(ipopt, o.name, o.str);
    if (o.param_class == ZLR_PAR_DOUBLE) return !std::isnan(o.dou) && put_number(ipopt, o.name, o.dou);
    if (o.str.empty()) return put_whole(ipopt, o.name, o.integer) || put_number(ipopt, o.name, o.integer);
    std::string word = o.str;
    std::replace(word.begin(), word.end(), '_', '-');
    return put_word(ipopt, o.name, o.str) || put_word(ipopt, o.name, word) || put_whole(ipopt, o.name, o.integer);
}

/* What it would print it prints from its first start on only as far as the options say, complaints about options
 * included: the start without a point reads them and ends. A file ipopt.opt in the user's folder is not read. */
static smooth_end quieten(IpoptProblem ipopt)
{
    if (!put_whole(ipopt, "print_level", 0) || !put_word(ipopt, "sb", "yes") ||
        !put_word(ipopt, "option_file_name", ""))
        return SMOOTH_REFUSED;
    return find_status(IpoptSolve(ipopt, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr))->end;
}

/* Any finite bound is one. The user's options come last, so that they may say otherwise. */
static bool put_options(IpoptProblem ipopt, const std::vector<engine_option> &options, bool is_warm,
                        smooth_answer *answer)
{
    const smooth_end first = quieten(ipopt);
    if (first == SMOOTH_MEMORY) return end_with(answer, SMOOTH_MEMORY, "");
    if (first != SMOOTH_FAILED || /* as it should, for want of a point */
        !put_number(ipopt, "nlp_lower_bound_inf", -DBL_MAX) || !put_number(ipopt, "nlp_upper_bound_inf", DBL_MAX) ||
        !put_word(ipopt, "honor_original_bounds", "yes") ||
        !put_word(ipopt, "warm_start_init_point", is_warm ? "yes" : "no"))
        return end_with(answer, SMOOTH_FAILED, "does not take the options that every solve has");
    for (const engine_option &o : options)
        if (!put_option(ipopt, o))
            return end_with(answer, SMOOTH_REFUSED, "does not take the option " + o.name + " or its value");
    return true;
}

/* ---- problems that Ipopt is not asked about */

static bool has_length(const std::vector<double> &v, int32_t num) { return v.size() == static_cast<size_t>(num); }

static bool check_sides(const char *what, const std::vector<double> &lower, const std::vector<double> &upper,
                        smooth_answer *answer)
{
    for (size_t k = 0; k < lower.size(); k++)
        if (!(lower[k] <= upper[k]))
            return end_with(answer, SMOOTH_FAILED,
                            "is given " + std::string(what) + " " + std::to_string(k) +
                                " with a lower side that is not below its upper one");
    return true;
}

static bool check_problem(const smooth_problem *p, const smooth_start *start, smooth_answer *answer)
{
    constexpr size_t most = std::numeric_limits<int>::max();

    if (!has_length(p->var_lower, p->num_var) || !has_length(p->var_upper, p->num_var) ||
        !has_length(p->con_lower, p->num_con) || !has_length(p->con_upper, p->num_con) ||
        !has_length(start->x, p->num_var) || p->jac_row.size() != p->jac_col.size() ||
        p->hes_row.size() != p->hes_col.size())
        return end_with(answer, SMOOTH_FAILED, "is given arrays of lengths that do not fit");
    if (p->jac_row.size() > most || p->hes_row.size() > most)
        return end_with(answer, SMOOTH_REFUSED, "does not take as many derivatives, 2147483647 of a kind at most");
    return check_sides("column", p->var_lower, p->var_upper, answer) &&
           check_sides("row", p->con_lower, p->con_upper, answer);
}

static bool is_all_fixed(const smooth_problem *p) { return p->var_lower == p->var_upper; }

/* The values of all functions at x, under a first call with a new point. */
static bool evaluate_point(const smooth_problem *p, const smooth_calls *calls, const double *x,
                           std::vector<double> *gradient, std::vector<double> *rows)
{
    double objective = 0.0;
    const auto is_finite = [](double v) { return std::isfinite(v); };

    gradient->assign(static_cast<size_t>(p->num_var), 0.0);
    rows->assign(static_cast<size_t>(p->num_con), 0.0);
    return calls->objective(calls->handle, x, true, &objective) && is_finite(objective) &&
           (p->num_con == 0 || calls->rows(calls->handle, x, false, rows->data())) &&
           std::all_of(rows->begin(), rows->end(), is_finite) &&
           (p->num_var == 0 || calls->gradient(calls->handle, x, false, gradient->data())) &&
           std::all_of(gradient->begin(), gradient->end(), is_finite);
}

/* No column, or none that can move: the one point is the solution if the rows hold there, and the gradient is then
 * balanced by the bounds alone. Ipopt takes no problem without columns, and gives no multipliers where all are fixed. */
static void answer_fixed(const smooth_problem *p, const smooth_calls *calls, smooth_answer *answer)
{
    constexpr double tol = 1e-8; /* Ipopt's own for rows */
    std::vector<double> gradient, rows;
    double most = 0.0;

    if (!evaluate_point(p, calls, p->var_lower.data(), &gradient, &rows)) {
        (void)end_with(answer, SMOOTH_NO_VALUE, "");
        return;
    }
    for (const double v : rows) most = std::max(most, std::fabs(v));
    answer->end =
        ipopt_violation(p, rows.data()) <= tol * std::max(1.0, most) ? SMOOTH_SOLVED : SMOOTH_LOCALLY_INFEASIBLE;
    answer->x = p->var_lower;
    answer->lambda.assign(rows.size(), 0.0);
    answer->z_lower.resize(gradient.size());
    answer->z_upper.resize(gradient.size());
    for (size_t j = 0; j < gradient.size(); j++) {
        answer->z_lower[j] = std::max(gradient[j], 0.0);
        answer->z_upper[j] = std::max(-gradient[j], 0.0);
    }
}

/* ---- the solve */

static bool is_warm(const smooth_problem *p, const smooth_start *start)
{
    return has_length(start->lambda, p->num_con) && has_length(start->z_lower, p->num_var) &&
           has_length(start->z_upper, p->num_var);
}

/* Ipopt leaves optimality out of what it demands where there are as many equations as columns that can move. */
static bool is_square(const smooth_problem *p)
{
    int32_t num_equations = 0, num_free = 0;
    for (size_t i = 0; i < p->con_lower.size(); i++) num_equations += p->con_lower[i] == p->con_upper[i] ? 1 : 0;
    for (size_t j = 0; j < p->var_lower.size(); j++) num_free += p->var_lower[j] < p->var_upper[j] ? 1 : 0;
    return num_equations > 0 && num_equations == num_free;
}

static bool all_finite(const std::vector<double> &v)
{
    return std::all_of(v.begin(), v.end(), [](double value) { return std::isfinite(value); });
}

/* Which option it does not run with Ipopt prints, but does not hand over. */
static void set_end(const ipopt_session *s, const status_row *row, const std::vector<engine_option> &options,
                    smooth_answer *answer)
{
    (void)end_with(answer, row->end, row->message);
    if (row->end == SMOOTH_REFUSED)
        for (const engine_option &o : options) answer->message += " " + o.name;
    if (s->is_out_of_memory) (void)end_with(answer, SMOOTH_MEMORY, "");
    if (!s->failure.empty()) (void)end_with(answer, SMOOTH_FAILED, s->failure);
    if (answer->end == SMOOTH_SOLVED && is_square(s->problem)) answer->end = SMOOTH_SQUARE_SOLVED;
    answer->iterations = s->iterations;
}

/* Multipliers that are not there stand as zeros at the start; Ipopt looks at them in a warm one only. */
static void run(ipopt_session *s, const std::vector<engine_option> &options, const smooth_start *start,
                smooth_answer *answer)
{
    const auto num_var = static_cast<size_t>(s->problem->num_var), num_con = static_cast<size_t>(s->problem->num_con);
    const bool warm = is_warm(s->problem, start);
    double objective = 0.0, no_value = 0.0;

    answer->x = start->x;
    answer->lambda = warm ? start->lambda : std::vector<double>(num_con, 0.0);
    answer->z_lower = warm ? start->z_lower : std::vector<double>(num_var, 0.0);
    answer->z_upper = warm ? start->z_upper : std::vector<double>(num_var, 0.0);
    double *lambda = num_con > 0 ? answer->lambda.data() : &no_value;
    const status_row *row = find_status(IpoptSolve(s->ipopt, answer->x.data(), nullptr, &objective, lambda,
                                                   answer->z_lower.data(), answer->z_upper.data(), s));
    set_end(s, row, options, answer);
    const bool has_point = row->has_point && all_finite(answer->x);
    if (!has_point) answer->x.clear();
    if (has_point && all_finite(answer->lambda) && all_finite(answer->z_lower) && all_finite(answer->z_upper)) {
        ipopt_balance_fixed(s, answer);
        return;
    }
    answer->lambda.clear();
    answer->z_lower.clear();
    answer->z_upper.clear();
}

static void solve_problem(const smooth_problem *problem, const smooth_calls *calls,
                          const std::vector<engine_option> &options, const smooth_start *start, smooth_answer *answer)
{
    if (!check_problem(problem, start, answer)) return;
    if (is_all_fixed(problem)) {
        answer_fixed(problem, calls, answer);
        return;
    }
    const turn_hold hold;
    ipopt_session session; /* freed under the turn as well */
    session.problem = problem;
    session.calls = calls;
    if (!ipopt_create(&session))
        (void)end_with(answer, SMOOTH_FAILED, "does not take the problem");
    else if (put_options(session.ipopt, options, is_warm(problem, start), answer))
        run(&session, options, start, answer);
}

static void solve_smooth(const smooth_problem *problem, const smooth_calls *calls,
                         const std::vector<engine_option> &options, const smooth_start *start, smooth_answer *answer)
{
    *answer = smooth_answer{};
    try {
        solve_problem(problem, calls, options, start, answer);
    } catch (const std::bad_alloc &) {
        *answer = smooth_answer{};
        answer->end = SMOOTH_MEMORY;
    } catch (const std::exception &e) {
        *answer = smooth_answer{};
        (void)end_with(answer, SMOOTH_FAILED, e.what());
    } catch (...) {
        *answer = smooth_answer{};
        answer->message = "something was thrown";
    }
}

/* ---- what all adapters have */

static bool accepts(const model *problem, engine_method method)
{
    (void)problem;
    (void)method;
    return false;
}

static void solve(const std::shared_ptr<engine_job> &job)
{
    if (job == nullptr) return;
    const std::lock_guard<std::mutex> lock(job->mutex);
    job->answer = engine_answer{};
    job->answer.status = ENGINE_REFUSED;
    job->answer.message = "smooth only"; /* short: needs no memory */
}

extern "C" {
extern __attribute__((visibility("default"))) const engine_adapter zelor_engine;
const engine_adapter zelor_engine = {engine_abi, "Ipopt", version, licence, accepts, solve, nullptr, solve_smooth};
}
