/* result_file.cpp - see result_file.h. What a result consists of stands in result_values.cpp. */
#include "solver/report/result_file.h"

#include "solver/io/io.h"
#include "solver/report/reported.h"
#include "solver/report/result_values.h"
#include "solver/report/words.h"

#include <cerrno>
#include <cstring>

/* ---- The solution ---- */

static json key_word(int32_t key)
{
    const char *word = words_status_key(key);
    return word != nullptr ? json(word) : json(nullptr);
}

/* What the bounds of a column take, and the cone that it is in. */
static double reduced_cost_at(const solution *sol, size_t at)
{
    return sol->slx[at] - sol->sux[at] + (sol->snx.empty() ? 0.0 : sol->snx[at]);
}

/* What of a solution is listed. */
struct listed_values {
    bool primal, dual;
    bool nonzeros; /* only where one of them is not 0 */
};

/* One list of rows or columns. Absent parts of the solution are null in every entry. */
static json values_of(const model *m, const solution *sol, bool rows, const listed_values &listed)
{
    const int32_t num = rows ? m->num_con : m->num_var;
    json list = json::array();
    for (int32_t i = 0; i < num; i++) {
        const auto at = static_cast<size_t>(i);
        const double value = listed.primal ? (rows ? sol->xc : sol->xx)[at] : 0.0;
        const double dual = listed.dual ? (rows ? sol->y[at] : reduced_cost_at(sol, at)) : 0.0;
        if (listed.nonzeros && value == 0.0 && dual == 0.0) continue;
        json item = {{"name", names_shown(rows ? &m->con_names : &m->var_names, i, rows ? 'c' : 'x')}};
        item["key"] = sol->has_keys ? key_word((rows ? sol->skc : sol->skx)[at]) : json(nullptr);
        item["value"] = listed.primal ? result_number(value) : json(nullptr);
        item["dual"] = listed.dual ? result_number(dual) : json(nullptr);
        list.push_back(std::move(item));
    }
    return list;
}

static json solution_values(const ZLR_task *task, int32_t kind)
{
    if (kind < 0 || param_int(&task->params, IPAR_RESULT_SOLUTION) == 0) return nullptr;
    const solution *sol = &task->sol[kind];
    const int32_t which = param_int(&task->params, IPAR_RESULT_VALUES);
    listed_values listed = {};
    listed.primal = solution_is_primal_ray(sol) || (sol->has_primal && !solution_is_dual_ray(sol));
    listed.dual = kind != ZLR_SOL_ITG && (solution_is_dual_ray(sol) || (sol->has_dual && !solution_is_primal_ray(sol)));
    listed.nonzeros = which == RESULT_VALUES_NONZEROS;
    const model *m = task->problem.get();
    json values;
    values["rows"] = which == RESULT_VALUES_COLUMNS ? json(nullptr) : values_of(m, sol, true, listed);
    values["columns"] = values_of(m, sol, false, listed);
    return values;
}

/* ---- The file ---- */

static json result_of(const ZLR_task *task, int32_t return_code)
{
    const int32_t kind = reported_kind(task);
    json result;
    result["schema"] = result_schema;
    result["version"] = result_version();
    result_put_problem(&result, task);
    result_put_answer(&result, task, kind);
    result_put_run(&result, task, return_code);
    result["solution"] = solution_values(task, kind);
    return result;
}

static std::string text_of(const ZLR_task *task, json *result)
{
    result_keep_fields(result, param_str(&task->params, SPAR_RESULT_FIELDS));
    /* Names may hold any bytes; JSON may not. */
    return result->dump(param_int(&task->params, IPAR_RESULT_INDENT), ' ', false, json::error_handler_t::replace) +
           "\n";
}

std::string result_text(const ZLR_task *task, int32_t return_code)
{
    json result = result_of(task, return_code);
    return text_of(task, &result);
}

int32_t result_file_write(ZLR_task *task, int32_t return_code)
{
    const char *target = param_str(&task->params, SPAR_RESULT_FILE);
    if (target[0] == '\0') return ZLR_RES_OK;
    const io_context io = {target, &task->params, &task->streams, task->env->sys};
    json result = result_of(task, return_code);
    result_check_fields(result, param_str(&task->params, SPAR_RESULT_FIELDS), "RESULT_FIELDS", io.out);
    const std::string text = text_of(task, &result);
    errno = 0;
    const int32_t res = sink_whole_file(io.sys, target, io_sink_options_replacing(&io), text);
    if (res == ZLR_RES_OK) return res;
    return io_error(&io, res, 0, "the result file cannot be written%s%s", errno != 0 ? ": " : "",
                    errno != 0 ? std::strerror(errno) : "");
}
