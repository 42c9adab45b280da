/* analysis.cpp - entries for models that misbehave. */
#include "solver/analysis/analysis.h"
#include "solver/api/api.h"
#include "solver/report/statistics.h"

int32_t ZLR_analyzeproblem(ZLR_task *task, int32_t stream)
{
    return api_task(task, [&]() -> int32_t {
        if (stream < 0 || stream >= ZLR_STREAM_COUNT) return ZLR_RES_ERR_INDEX;
        return problem_analysis_print(task, stream);
    });
}

int32_t ZLR_analyzesolution(ZLR_task *task, int32_t stream, int32_t kind)
{
    return api_task(task, [&]() -> int32_t {
        if (stream < 0 || stream >= ZLR_STREAM_COUNT || kind < 0 || kind > ZLR_SOL_ITG) return ZLR_RES_ERR_INDEX;
        return solution_analysis_print(task, stream, kind);
    });
}

int32_t ZLR_startstat(ZLR_task *task)
{
    return api_task(task, [&]() -> int32_t { return statistics_start(task); });
}

int32_t ZLR_stopstat(ZLR_task *task)
{
    return api_task(task, [&]() -> int32_t { return statistics_stop(task); });
}

int32_t ZLR_appendstat(ZLR_task *task)
{
    return api_task(task, [&]() -> int32_t { return statistics_append(task); });
}

int32_t ZLR_getinfeasiblesubproblem(ZLR_task *task, int32_t kind, ZLR_task **subproblem)
{
    if (subproblem == nullptr) return ZLR_RES_ERR_NULL_POINTER;
    *subproblem = nullptr;
    return api_task(task, [&]() -> int32_t {
        if (kind < 0 || kind > ZLR_SOL_ITG) return ZLR_RES_ERR_ARGUMENT;
        const int32_t res = api_refuse_functions(task, "An infeasible subproblem");
        return res == ZLR_RES_OK ? infeasible_subproblem(task, kind, subproblem) : res;
    });
}

int32_t ZLR_primalrepair(ZLR_task *task, const double *wlc, const double *wuc, const double *wlx, const double *wux)
{
    return api_task(task, [&]() -> int32_t {
        const int32_t res = api_refuse_functions(task, "A repair");
        return res == ZLR_RES_OK ? primal_repair(task, wlc, wuc, wlx, wux) : res;
    });
}

int32_t ZLR_sensitivityreport(ZLR_task *task, int32_t stream)
{
    return api_task(task, [&]() -> int32_t {
        if (stream < 0 || stream >= ZLR_STREAM_COUNT) return ZLR_RES_ERR_INDEX;
        return sensitivity_report(task, stream);
    });
}

/* NOLINTBEGIN(readability-non-const-parameter): what the records point to is written below */
int32_t ZLR_primalsensitivity(ZLR_task *task, int32_t numi, const int32_t *subi, const int32_t *marki, int32_t numj,
                              const int32_t *subj, const int32_t *markj, double *leftpricei, double *rightpricei,
                              double *leftrangei, double *rightrangei, double *leftpricej, double *rightpricej,
                              double *leftrangej, double *rightrangej)
{
    return api_task(task, [&]() -> int32_t {
        const sensitivity_sides rows = {numi, subi, marki, {leftpricei, rightpricei, leftrangei, rightrangei}};
        const sensitivity_sides columns = {numj, subj, markj, {leftpricej, rightpricej, leftrangej, rightrangej}};
        return primal_sensitivity(task, &rows, &columns);
    });
}

int32_t ZLR_dualsensitivity(ZLR_task *task, int32_t numj, const int32_t *subj, double *leftpricej, double *rightpricej,
                            double *leftrangej, double *rightrangej)
{
    return api_task(task, [&]() -> int32_t {
        const sensitivity_arrays arrays = {leftpricej, rightpricej, leftrangej, rightrangej};
        return dual_sensitivity(task, numj, subj, &arrays);
    });
}
/* NOLINTEND(readability-non-const-parameter) */
