/* problem_support.h - problems for the analysis, its record and its text. */
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/analysis/problem_facts.h"
#include "unit/engines/small_models.h"

#include <algorithm>
#include <string>
#include <vector>

/* All finders at work on a model, which must outlive the record. */
inline problem_facts facts_of(const model *m)
{
    const check_tolerances tol;
    problem_facts facts;
    problem_find_all(m, &tol, &facts);
    return facts;
}

/* The rows or columns of a kind of finding, ascending. */
inline std::vector<int32_t> found(const problem_facts &facts, finding_kind kind)
{
    std::vector<int32_t> index;
    for (const finding &f : facts.found[kind]) index.push_back(f.index);
    std::sort(index.begin(), index.end());
    return index;
}

/* The kinds of which there is any finding, ascending. */
inline std::vector<int32_t> kinds_found(const problem_facts &facts)
{
    std::vector<int32_t> kinds;
    for (int32_t kind = 0; kind < NUM_FINDINGS; kind++)
        if (!facts.found[kind].empty()) kinds.push_back(kind);
    return kinds;
}

inline void make_integer(model *m, const std::vector<size_t> &columns)
{
    for (const size_t j : columns) m->var_type[j] = ZLR_VAR_INT;
}

/* The report as it reaches a function linked to the message stream. */
inline std::string report_of(const model &m, int32_t detail, int32_t *code)
{
    std::string text;
    ZLR_task task;
    param_set_defaults(&task.params);
    task.params.integer[IPAR_ANALYZE_DETAIL] = detail;
    task.problem = std::make_shared<model>(m);
    task.streams.out[ZLR_STREAM_MSG].handle = &text;
    task.streams.out[ZLR_STREAM_MSG].func = [](void *handle, const char *part) {
        *static_cast<std::string *>(handle) += part;
    };
    *code = problem_analysis_print(&task, ZLR_STREAM_MSG);
    return text;
}
