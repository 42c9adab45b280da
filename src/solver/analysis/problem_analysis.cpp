/* problem_analysis.cpp - see analysis.h. */
#include "solver/analysis/analysis.h"

#include "solver/analysis/problem_facts.h"

void problem_find_all(const model *m, const check_tolerances *tol, problem_facts *facts)
{
    problem_collect(m, tol, facts);
    problem_find_rows(facts);
    problem_find_columns(facts);
    if (facts->rules.parallel) problem_find_parallel(facts);
    problem_find_network(facts);
    problem_find_quadratic(facts);
    problem_find_scaling(facts);
}

static problem_rules rules_of(const param_set *params)
{
    const int32_t num_names = param_int(params, IPAR_ANALYZE_NAMES);
    problem_rules rules;
    rules.large_value = param_dou(params, DPAR_ANALYZE_LARGE_VALUE);
    rules.tiny_coefficient = param_dou(params, DPAR_ANALYZE_SMALL_COEF);
    rules.big_ratio = param_dou(params, DPAR_ANALYZE_BIG_M_RATIO);
    rules.harmful_spread = param_dou(params, DPAR_ANALYZE_SPREAD);
    rules.full = param_int(params, IPAR_ANALYZE_DETAIL) == ANALYSIS_FULL;
    rules.advice = param_int(params, IPAR_ANALYZE_ADVICE) != 0;
    rules.sizes = param_int(params, IPAR_ANALYZE_SIZES) != 0;
    rules.structure = param_int(params, IPAR_ANALYZE_STRUCTURE) != 0;
    rules.parallel = param_int(params, IPAR_ANALYZE_PARALLEL) != 0;
    if (num_names >= 0) rules.names_grave = rules.names_simple = static_cast<size_t>(num_names);
    rules.most_lines = param_int(params, IPAR_ANALYZE_MAX_LINES);
    rules.num_longest = static_cast<size_t>(param_int(params, IPAR_ANALYZE_LONGEST));
    return rules;
}

int32_t problem_analysis_print(ZLR_task *task, int32_t stream)
{
    if (!streams_linked(&task->streams, stream)) return ZLR_RES_OK;
    const check_tolerances tol = check_tolerances_of(&task->params);
    problem_facts facts;

    facts.rules = rules_of(&task->params);
    /* What functions do nobody looks into: advice and structure of the rest alone would mislead. */
    if (task->problem->functions != nullptr) facts.rules.advice = facts.rules.structure = false;
    problem_find_all(task->problem.get(), &tol, &facts);
    streams_write(&task->streams, stream, problem_report(&facts).c_str());
    return ZLR_RES_OK;
}
