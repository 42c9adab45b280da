/* optimize.cpp - the optimiser, and solutions going out and in. */
#include "solver/api/api.h"
#include "solver/engines/engines.h"
#include "solver/report/clock.h"
#include "solver/report/html_report.h"
#include "solver/report/result_file.h"
#include "solver/report/statistics.h"

#include <algorithm>
#include <cmath>

int32_t ZLR_optimize(ZLR_task *task)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    task->run = run_record{};
    const int32_t code = api_task(task, [&]() -> int32_t {
        html_report_begin(task);
        return engines_optimize(task);
    });
    task->run.ran = true; /* also where memory ran out before there was a record */
    task->run.return_code = code;
    task->run.ended_ms = clock_unix_ms();
    /* The result is left for every outcome; an outcome that is an error itself is the one to return. */
    const int32_t written = api_task(task, [&]() -> int32_t { return result_file_write(task, code); });
    const int32_t reported = api_task(task, [&]() -> int32_t { return html_report_write(task, code); });
    const int32_t noted = api_task(task, [&]() -> int32_t {
        statistics_note(task);
        return ZLR_RES_OK;
    });
    if (code != ZLR_RES_OK) return code;
    if (noted != ZLR_RES_OK) return noted;
    return written != ZLR_RES_OK ? written : reported;
}

/* The solution of a kind that must exist, or the code that says why there is none. */
static int32_t find_solution(const ZLR_task *task, int32_t kind, const solution **sol)
{
    if (kind < 0 || kind > ZLR_SOL_ITG) return ZLR_RES_ERR_ARGUMENT;
    *sol = &task->sol[kind];
    return (*sol)->defined ? ZLR_RES_OK : ZLR_RES_ERR_NO_SOLUTION;
}

int32_t ZLR_solutiondef(ZLR_task *task, int32_t kind, int32_t *defined)
{
    return api_task(task, [&]() -> int32_t {
        const solution *sol = nullptr;
        const int32_t res = find_solution(task, kind, &sol);
        if (res == ZLR_RES_ERR_ARGUMENT) return res;
        api_put(defined, res == ZLR_RES_OK ? 1 : 0);
        return ZLR_RES_OK;
    });
}

/* Entries that give one value of a solution. */
template <class value_type>
static int32_t get_value(ZLR_task *task, int32_t kind, value_type solution::*field, value_type *out)
{
    return api_task(task, [&]() -> int32_t {
        const solution *sol = nullptr;
        const int32_t res = find_solution(task, kind, &sol);
        if (res != ZLR_RES_OK) return res;
        api_put(out, sol->*field);
        return ZLR_RES_OK;
    });
}

int32_t ZLR_getsolsta(ZLR_task *task, int32_t kind, int32_t *solsta)
{
    return get_value(task, kind, &solution::solsta, solsta);
}

int32_t ZLR_getprimalobj(ZLR_task *task, int32_t kind, double *value)
{
    return get_value(task, kind, &solution::primal_obj, value);
}

int32_t ZLR_getdualobj(ZLR_task *task, int32_t kind, double *value)
{
    return get_value(task, kind, &solution::dual_obj, value);
}

int32_t ZLR_getintinf(ZLR_task *task, int32_t item, int32_t *value)
{
    return api_task(task, [&]() -> int32_t {
        int64_t found = 0;
        switch (item) {
        case ZLR_IINF_IPM_ITERATIONS: found = task->run.ipm_iterations; break;
        case ZLR_IINF_SIMPLEX_ITERATIONS: found = task->run.simplex_iterations; break;
        case ZLR_IINF_NODES: found = task->run.nodes; break;
        default: return ZLR_RES_ERR_INDEX;
        }
        api_put(value, static_cast<int32_t>(std::min<int64_t>(found, INT32_MAX)));
        return ZLR_RES_OK;
    });
}

template <class value_type> static void copy_out(const std::vector<value_type> &from, value_type *to)
{
    if (to != nullptr) std::copy(from.begin(), from.end(), to);
}

int32_t ZLR_getsolution(ZLR_task *task, int32_t kind, int32_t *prosta, int32_t *solsta, int32_t *skc, int32_t *skx,
                        int32_t *skn, double *xc, double *xx, double *y, double *slc, double *suc, double *slx,
                        double *sux, double *snx)
{
    return api_task(task, [&]() -> int32_t {
        const solution *sol = nullptr;
        const int32_t res = find_solution(task, kind, &sol);
        if (res != ZLR_RES_OK) return res;
        api_put(prosta, sol->prosta);
        api_put(solsta, sol->solsta);
        copy_out(sol->skc, skc);
        copy_out(sol->skx, skx);
        copy_out(sol->xc, xc);
        copy_out(sol->xx, xx);
        copy_out(sol->y, y);
        copy_out(sol->slc, slc);
        copy_out(sol->suc, suc);
        copy_out(sol->slx, slx);
        copy_out(sol->sux, sux);
        copy_out(sol->skn, skn);
        copy_out(sol->snx, snx);
        return ZLR_RES_OK;
    });
}

/* An array given by the caller into one of the solution's. */
static int32_t copy_values(const double *from, std::vector<double> *to)
{
    if (from == nullptr) return ZLR_RES_OK;
    if (std::any_of(from, from + to->size(), [](double value) { return std::isnan(value); })) return ZLR_RES_ERR_NAN;
    std::copy(from, from + to->size(), to->begin());
    return ZLR_RES_OK;
}

static int32_t copy_keys(const int32_t *from, std::vector<int32_t> *to)
{
    if (from == nullptr) return ZLR_RES_OK;
    const bool known =
        std::all_of(from, from + to->size(), [](int32_t key) { return key >= ZLR_SK_UNDEF && key <= ZLR_SK_INFINITE; });
    if (!known) return ZLR_RES_ERR_ARGUMENT;
    std::copy(from, from + to->size(), to->begin());
    return ZLR_RES_OK;
}

int32_t ZLR_putsolution(ZLR_task *task, int32_t kind, const int32_t *skc, const int32_t *skx, const int32_t *skn,
                        const double *xc, const double *xx, const double *y, const double *slc, const double *suc,
                        const double *slx, const double *sux, const double *snx)
{
    return api_task(task, [&]() -> int32_t {
        if (kind < 0 || kind > ZLR_SOL_ITG) return ZLR_RES_ERR_ARGUMENT;
        const model *m = task->problem.get();
        solution sol;
        solution_reset(&sol, m->num_con, m->num_var, model_num_cones(m));
        int32_t res = copy_keys(skc, &sol.skc);
        const auto keys = [&](const int32_t *from, std::vector<int32_t> *to) {
            if (res == ZLR_RES_OK) res = copy_keys(from, to);
        };
        const auto values = [&](const double *from, std::vector<double> *to) {
            if (res == ZLR_RES_OK) res = copy_values(from, to);
        };
        keys(skx, &sol.skx);
        keys(skn, &sol.skn);
        values(xc, &sol.xc);
        values(xx, &sol.xx);
        values(y, &sol.y);
        values(slc, &sol.slc);
        values(suc, &sol.suc);
        values(slx, &sol.slx);
        values(sux, &sol.sux);
        values(snx, &sol.snx);
        if (res != ZLR_RES_OK) return res;
        sol.has_keys = skx != nullptr && (skc != nullptr || m->num_con == 0);
        sol.has_primal = xx != nullptr;
        sol.has_dual = y != nullptr;
        if (sol.has_primal && xc == nullptr) model_activity(m, sol.xx.data(), sol.xc.data());
        if (sol.has_primal) sol.primal_obj = model_objective(m, sol.xx.data());
        sol.defined = true;
        task->sol[kind] = std::move(sol);
        return ZLR_RES_OK;
    });
}
