/* calls.cpp - see calls.h. Ipopt's word for a truth value changes with its version: the functions that it calls are
 * templates of it, and the place where they are handed over settles which. */
#include "solver/engines/ipopt/calls.h"

#include "solver/engines/ipopt/turn.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <new>

bool ipopt_wants_entry(const smooth_problem *problem) { return problem->num_con > 0 && problem->jac_row.empty(); }

double ipopt_violation(const smooth_problem *problem, const double *rows)
{
    double most = 0.0;
    for (size_t i = 0; i < problem->con_lower.size(); i++)
        most = std::max({most, problem->con_lower[i] - rows[i], rows[i] - problem->con_upper[i]});
    return most;
}

static bool has_failed(const ipopt_session *s) { return s->is_out_of_memory || !s->failure.empty(); }

/* Keeps what is thrown: to be called where an exception was caught. */
static void keep_exception(ipopt_session *s) noexcept
{
    try {
        throw;
    } catch (const std::bad_alloc &) {
        s->is_out_of_memory = true;
    } catch (const std::exception &e) {
        try {
            s->failure = std::string("a function of the problem has thrown: ") + e.what();
        } catch (...) {
            s->is_out_of_memory = true;
        }
    } catch (...) {
        try {
            s->failure = "a function of the problem has thrown something";
        } catch (...) {
            s->is_out_of_memory = true;
        }
    }
}

/* Calls a function of the problem, `call(is_new)`, which fills `num` values; whether they are values. */
template <typename call_type>
static bool evaluate(ipopt_session *s, bool is_new, const double *value, size_t num, const call_type &call) noexcept
{
    if (is_new) s->point++;
    const bool is_new_here = is_new || s->is_new_due;
    s->is_new_due = has_failed(s) && is_new_here;
    if (has_failed(s)) return false;
    const turn_loan loan;
    try {
        return call(is_new_here) && std::all_of(value, value + num, [](double v) { return std::isfinite(v); });
    } catch (...) {
        keep_exception(s);
        return false;
    }
}

/* A call that asks for nothing: only that the point is new is to be kept. */
static void pass_over(ipopt_session *s, bool is_new)
{
    if (!is_new) return;
    s->point++;
    s->is_new_due = true;
}

template <typename boolean> static boolean on_objective(int n, double *x, boolean is_new, double *value, void *user)
{
    auto *s = static_cast<ipopt_session *>(user);
    (void)n;
    return evaluate(s, is_new != 0, value, 1,
                    [&](bool fresh) { return s->calls->objective(s->calls->handle, x, fresh, value); });
}

template <typename boolean> static boolean on_gradient(int n, double *x, boolean is_new, double *value, void *user)
{
    auto *s = static_cast<ipopt_session *>(user);
    return evaluate(s, is_new != 0, value, static_cast<size_t>(n),
                    [&](bool fresh) { return s->calls->gradient(s->calls->handle, x, fresh, value); });
}

template <typename boolean> static boolean on_rows(int n, double *x, boolean is_new, int m, double *value, void *user)
{
    auto *s = static_cast<ipopt_session *>(user);
    (void)n;
    if (m == 0) {
        pass_over(s, is_new != 0);
        return true;
    }
    const bool has_value = evaluate(s, is_new != 0, value, static_cast<size_t>(m),
                                    [&](bool fresh) { return s->calls->rows(s->calls->handle, x, fresh, value); });
    if (has_value) {
        s->violation = ipopt_violation(s->problem, value);
        s->rows_point = s->point;
    }
    return has_value;
}

static void copy_pattern(const std::vector<int32_t> &from_row, const std::vector<int32_t> &from_col, int *row, int *col)
{
    std::copy(from_row.begin(), from_row.end(), row);
    std::copy(from_col.begin(), from_col.end(), col);
}

/* Asked for without values once, for the pattern. */
template <typename boolean>
static boolean on_jacobian(int n, double *x, boolean is_new, int m, int num_entries, int *row, int *col, double *value,
                           void *user)
{
    auto *s = static_cast<ipopt_session *>(user);
    const bool has_entry_of_ours = ipopt_wants_entry(s->problem);
    (void)n;
    (void)m;
    if (value == nullptr) {
        copy_pattern(s->problem->jac_row, s->problem->jac_col, row, col);
        if (has_entry_of_ours) row[0] = col[0] = 0;
        return true;
    }
    if (s->problem->jac_row.empty()) {
        if (has_entry_of_ours) value[0] = 0.0;
        pass_over(s, is_new != 0);
        s->jacobian_point = s->point;
        return true;
    }
    const bool has_value = evaluate(s, is_new != 0, value, static_cast<size_t>(num_entries),
                                    [&](bool fresh) { return s->calls->jacobian(s->calls->handle, x, fresh, value); });
    s->jacobian_point = s->point;
    return has_value;
}

template <typename boolean>
static boolean on_hessian(int n, double *x, boolean is_new, double weight, int m, double *lambda, boolean is_new_lambda,
                          int num_entries, int *row, int *col, double *value, void *user)
{
    auto *s = static_cast<ipopt_session *>(user);
    (void)n;
    (void)m;
    (void)is_new_lambda;
    if (value == nullptr) {
        copy_pattern(s->problem->hes_row, s->problem->hes_col, row, col);
        return true;
    }
    return evaluate(s, is_new != 0, value, static_cast<size_t>(num_entries),
                    [&](bool fresh) { return s->calls->hessian(s->calls->handle, x, fresh, weight, lambda, value); });
}

template <typename boolean>
static boolean on_iteration(int mode, int iteration, double objective, double primal_infeas, double dual_infeas,
                            double mu, double step, double shift, double dual_length, double primal_length, int trials,
                            void *user)
{
    auto *s = static_cast<ipopt_session *>(user);
    smooth_news news;
    (void)mu;
    (void)step;
    (void)shift;
    (void)dual_length;
    (void)primal_length;
    (void)trials;

    s->iterations = iteration;
    news.iterations = iteration;
    news.objective = objective;
    news.primal_infeas = s->point > 0 && s->rows_point == s->jacobian_point ? s->violation : primal_infeas;
    news.dual_infeas = dual_infeas;
    news.in_restoration = mode == RestorationPhaseMode;
    if (has_failed(s)) return false;
    const turn_loan loan;
    try {
        return s->calls->iterate(s->calls->handle, &news);
    } catch (...) {
        keep_exception(s);
        return false;
    }
}

void ipopt_balance_fixed(ipopt_session *s, smooth_answer *answer)
{
    const smooth_problem *p = s->problem;
    const auto is_fixed = [p](size_t j) { return p->var_lower[j] == p->var_upper[j]; };
    std::vector<double> gradient(answer->x.size()), jacobian(p->jac_row.size());
    bool any = false;

    for (size_t j = 0; j < gradient.size(); j++) any = any || is_fixed(j);
    if (!any || !on_gradient<int>(p->num_var, answer->x.data(), 1, gradient.data(), s)) return;
    if (!jacobian.empty() && !on_jacobian<int>(p->num_var, answer->x.data(), 0, p->num_con,
                                               static_cast<int>(jacobian.size()), nullptr, nullptr, jacobian.data(), s))
        return;
    for (size_t k = 0; k < jacobian.size(); k++)
        gradient[static_cast<size_t>(p->jac_col[k])] +=
            answer->lambda[static_cast<size_t>(p->jac_row[k])] * jacobian[k];
    for (size_t j = 0; j < gradient.size(); j++) {
        if (!is_fixed(j)) continue;
        answer->z_lower[j] = std::max(gradient[j], 0.0);
        answer->z_upper[j] = std::max(-gradient[j], 0.0);
    }
}

bool ipopt_create(ipopt_session *s)
{
    const smooth_problem *p = s->problem;
    double no_side = 0.0;
    /* It takes what it copies, and what it leaves alone, by pointers to what may be changed. */
    const auto data = [&](const std::vector<double> &v) {
        return v.empty() ? &no_side : const_cast<double *>(v.data());
    };
    const auto num_jac = static_cast<int>(ipopt_wants_entry(p) ? 1 : p->jac_row.size());

    try {
        s->ipopt =
            CreateIpoptProblem(p->num_var, data(p->var_lower), data(p->var_upper), p->num_con, data(p->con_lower),
                               data(p->con_upper), num_jac, static_cast<int>(p->hes_row.size()), 0, on_objective,
                               on_rows, on_gradient, on_jacobian, on_hessian);
    } catch (...) { /* for want of memory it throws something of its own */
        throw std::bad_alloc();
    }
    return s->ipopt != nullptr && SetIntermediateCallback(s->ipopt, on_iteration);
}
