/* problem_analysis.cpp - see analysis.h. */
#include "solver/analysis/analysis.h"

#include "solver/analysis/problem_facts.h"

void problem_find_all(const model *m, const check_tolerances *tol, problem_facts *facts)
{
    problem_collect(m, tol, facts);
    problem_find_rows(facts);
    problem_find_columns(facts);
    problem_find_parallel(facts);
    problem_find_network(facts);
    problem_find_quadratic(facts);
    problem_find_scaling(facts);
}

int32_t problem_analysis_print(ZLR_task *task, int32_t stream)
{
    if (!streams_linked(&task->streams, stream)) return ZLR_RES_OK;
    const check_tolerances tol = check_tolerances_of(&task->params);
    problem_facts facts;

    problem_find_all(task->problem.get(), &tol, &facts);
    const bool full = param_int(&task->params, IPAR_ANALYZE_DETAIL) == ANALYSIS_FULL;
    streams_write(&task->streams, stream, problem_report(&facts, full).c_str());
    return ZLR_RES_OK;
}
