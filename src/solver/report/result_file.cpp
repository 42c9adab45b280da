/* result_file.cpp - see result_file.h. The only file that includes the JSON library, which is slow to compile.
 *
 * Rule for values: what does not exist is null, never 0 and never left out, so that a reader can ask for every field. */
#include "solver/report/result_file.h"

#include "solver/codes/codes.h"
#include "solver/codes/version.h"
#include "solver/io/io.h"
#include "solver/report/words.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>

typedef nlohmann::ordered_json json; /* fields in the order of the documentation */

/* ---- Values ---- */

static json number_or_null(double value) { return std::isfinite(value) ? json(value) : json(nullptr); }

static json text_or_null(const std::string &text) { return text.empty() ? json(nullptr) : json(text); }

static json status_word(const char *word)
{
    std::string text = word != nullptr ? word : "unknown";
    for (char &c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

/* ---- Which solution, and what it has ---- */

/* The kind that a run of this problem leaves, as far as it is there; -1: none. */
static int32_t kind_reported(const ZLR_task *task)
{
    static const int32_t integer[] = {ZLR_SOL_ITG, ZLR_SOL_BAS, ZLR_SOL_ITR};
    static const int32_t continuous[] = {ZLR_SOL_BAS, ZLR_SOL_ITR, ZLR_SOL_ITG};
    for (const int32_t kind : model_num_int(task->problem.get()) > 0 ? integer : continuous)
        if (task->sol[kind].defined) return kind;
    return -1;
}

static bool is_primal_ray(const solution *sol)
{
    return sol->solsta == ZLR_SOLSTA_DUAL_INFEAS_CER || sol->solsta == ZLR_SOLSTA_NEAR_DUAL_INFEAS_CER;
}

static bool is_dual_ray(const solution *sol)
{
    return sol->solsta == ZLR_SOLSTA_PRIM_INFEAS_CER || sol->solsta == ZLR_SOLSTA_NEAR_PRIM_INFEAS_CER;
}

/* The objective of a ray is no objective of the problem. */
static bool has_primal_objective(const solution *sol)
{
    return sol->has_primal && !is_primal_ray(sol) && !is_dual_ray(sol);
}

static bool has_dual_objective(const solution *sol, int32_t kind)
{
    return kind != ZLR_SOL_ITG && sol->has_dual && !is_primal_ray(sol) && !is_dual_ray(sol);
}

/* ---- The parts ---- */

static json violations(const solution_check *check)
{
    return {
        {"rows", number_or_null(check->row)},
        {"bounds", number_or_null(check->bound)},
        {"integrality", number_or_null(check->integrality)},
        {"cones", number_or_null(check->cone)},
        {"dual", number_or_null(check->dual)},
        {"complementarity", number_or_null(check->complementarity)},
    };
}

static json key_word(int32_t key)
{
    const char *word = words_status_key(key);
    return word != nullptr ? json(word) : json(nullptr);
}

/* One list of rows or columns. Absent parts of the solution are null in every entry. */
static json values_of(const model *m, const solution *sol, bool rows, bool primal, bool dual)
{
    const int32_t num = rows ? m->num_con : m->num_var;
    json list = json::array();
    for (int32_t i = 0; i < num; i++) {
        const auto at = static_cast<size_t>(i);
        json item = {{"name", names_shown(rows ? &m->con_names : &m->var_names, i, rows ? 'c' : 'x')}};
        item["key"] = sol->has_keys ? key_word((rows ? sol->skc : sol->skx)[at]) : json(nullptr);
        item["value"] = primal ? number_or_null((rows ? sol->xc : sol->xx)[at]) : json(nullptr);
        item["dual"] = dual ? number_or_null(rows ? sol->y[at] : sol->slx[at] - sol->sux[at]) : json(nullptr);
        list.push_back(std::move(item));
    }
    return list;
}

static json solution_values(const ZLR_task *task, int32_t kind)
{
    if (kind < 0 || param_int(&task->params, IPAR_RESULT_SOLUTION) == 0) return nullptr;
    const solution *sol = &task->sol[kind];
    const bool primal = is_primal_ray(sol) || (sol->has_primal && !is_dual_ray(sol));
    const bool dual = kind != ZLR_SOL_ITG && (is_dual_ray(sol) || (sol->has_dual && !is_primal_ray(sol)));
    const model *m = task->problem.get();
    return {
        {"rows", values_of(m, sol, true, primal, dual)},
        {"columns", values_of(m, sol, false, primal, dual)},
    };
}

static void put_problem(json *result, const ZLR_task *task)
{
    const model *m = task->problem.get();
    (*result)["problem"] = text_or_null(m->name);
    (*result)["data_file"] = text_or_null(task->data_file);
    (*result)["label"] = text_or_null(param_str(&task->params, SPAR_STAT_LABEL));
    (*result)["sense"] = m->sense == ZLR_SENSE_MAX ? "max" : "min";
    (*result)["rows"] = m->num_con;
    (*result)["columns"] = m->num_var;
    (*result)["integer_columns"] = model_num_int(m);
    (*result)["nonzeros"] = model_num_nz(m);
}

static void put_answer(json *result, const ZLR_task *task, int32_t kind)
{
    static const solution none;
    const solution *sol = kind >= 0 ? &task->sol[kind] : &none;
    (*result)["problem_status"] = status_word(words_problem_status(sol->prosta));
    (*result)["solution_status"] = status_word(words_solution_status(sol->solsta));
    (*result)["solution_kind"] = kind >= 0 ? json(words_solution_kind(kind)) : json(nullptr);
    (*result)["primal_objective"] = has_primal_objective(sol) ? number_or_null(sol->primal_obj) : json(nullptr);
    (*result)["dual_objective"] = has_dual_objective(sol, kind) ? number_or_null(sol->dual_obj) : json(nullptr);
    (*result)["best_bound"] = number_or_null(task->run.best_bound);
    (*result)["relative_gap"] = number_or_null(task->run.relative_gap);
    (*result)["max_violation"] = violations(&sol->check);
}

static void put_run(json *result, const ZLR_task *task, int32_t return_code)
{
    const run_record *run = &task->run;
    const code_row *code = code_find(return_code);
    (*result)["engine"] = text_or_null(run->engine);
    (*result)["method"] = text_or_null(run->method);
    (*result)["remark"] = text_or_null(run->remark);
    (*result)["threads"] = run->threads;
    (*result)["iterations"] = run->iterations;
    (*result)["nodes"] = run->nodes;
    (*result)["time"] = {{"read", task->data_file.empty() ? json(nullptr) : json(task->read_time_s)},
                         {"solve", run->time_solve_s},
                         {"total", run->time_total_s}};
    (*result)["return_code"] = return_code;
    (*result)["return_code_name"] = code != nullptr ? json(code->symbol) : json(nullptr);
}

std::string result_text(const ZLR_task *task, int32_t return_code)
{
    const int32_t kind = kind_reported(task);
    json result;
    result["schema"] = result_schema;
    result["version"] = text_format("%d.%d.%d.%d", version_major, version_minor, version_revision, version_build);
    put_problem(&result, task);
    put_answer(&result, task, kind);
    put_run(&result, task, return_code);
    result["solution"] = solution_values(task, kind);
    /* Names may hold any bytes; JSON may not. */
    return result.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

int32_t result_file_write(ZLR_task *task, int32_t return_code)
{
    const char *target = param_str(&task->params, SPAR_RESULT_FILE);
    if (target[0] == '\0') return ZLR_RES_OK;
    const io_context io = {target, &task->params, &task->streams, task->env->sys};
    errno = 0;
    const int32_t res = sink_whole_file(io.sys, target, io_sync(&io), result_text(task, return_code));
    if (res == ZLR_RES_OK) return res;
    return io_error(&io, res, 0, "the result file cannot be written%s%s", errno != 0 ? ": " : "",
                    errno != 0 ? std::strerror(errno) : "");
}
