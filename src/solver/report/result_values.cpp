/* result_values.cpp - see result_values.h. */
#include "solver/report/result_values.h"

#include "solver/codes/codes.h"
#include "solver/codes/version.h"
#include "solver/report/reported.h"
#include "solver/report/word_list.h"
#include "solver/report/words.h"

#include <cctype>
#include <cmath>

/* ---- Values ---- */

json result_number(double value) { return std::isfinite(value) ? json(value) : json(nullptr); }

json result_text_or_null(const std::string &text) { return text.empty() ? json(nullptr) : json(text); }

json result_word(const char *word)
{
    std::string text = word != nullptr ? word : "unknown";
    for (char &c : text) c = c == ' ' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string result_version()
{
    return text_format("%d.%d.%d.%d", version_major, version_minor, version_revision, version_build);
}

/* ---- The parts ---- */

static json violations(const solution_check *check)
{
    return {
        {"rows", result_number(check->row)},
        {"bounds", result_number(check->bound)},
        {"integrality", result_number(check->integrality)},
        {"cones", result_number(check->cone)},
        {"dual", result_number(check->dual)},
        {"complementarity", result_number(check->complementarity)},
    };
}

void result_put_problem(json *result, const ZLR_task *task)
{
    const model *m = task->problem.get();
    (*result)["problem"] = result_text_or_null(m->name);
    (*result)["data_file"] = result_text_or_null(task->data_file);
    (*result)["label"] = result_text_or_null(param_str(&task->params, SPAR_STAT_LABEL));
    (*result)["sense"] = m->sense == ZLR_SENSE_MAX ? "max" : "min";
    (*result)["rows"] = m->num_con;
    (*result)["columns"] = m->num_var;
    (*result)["integer_columns"] = model_num_int(m);
    (*result)["nonzeros"] = model_num_nz(m);
}

void result_put_answer(json *result, const ZLR_task *task, int32_t kind)
{
    static const solution none;
    const solution *sol = kind >= 0 ? &task->sol[kind] : &none;
    (*result)["problem_status"] = result_word(words_problem_status(sol->prosta));
    (*result)["solution_status"] = result_word(words_solution_status(sol->solsta, sol->is_local));
    (*result)["solution_kind"] = kind >= 0 ? json(words_solution_kind(kind)) : json(nullptr);
    (*result)["primal_objective"] = reported_has_primal_objective(sol) ? result_number(sol->primal_obj) : json(nullptr);
    (*result)["dual_objective"] = reported_has_dual_objective(sol, kind) ? result_number(sol->dual_obj) : json(nullptr);
    (*result)["best_bound"] = result_number(task->run.best_bound);
    (*result)["relative_gap"] = result_number(task->run.relative_gap);
    (*result)["max_violation"] = violations(&sol->check);
}

json result_read_time(const ZLR_task *task)
{
    return task->data_file.empty() ? json(nullptr) : json(task->read_time_s);
}

void result_put_run(json *result, const ZLR_task *task, int32_t return_code)
{
    const run_record *run = &task->run;
    const code_row *code = code_find(return_code);
    (*result)["engine"] = result_text_or_null(run->engine);
    (*result)["method"] = result_text_or_null(run->method);
    (*result)["remark"] = result_text_or_null(run->remark);
    (*result)["threads"] = run->threads;
    (*result)["iterations"] = run->iterations;
    (*result)["nodes"] = run->nodes;
    (*result)["time"] = {{"read", result_read_time(task)}, {"solve", run->time_solve_s}, {"total", run->time_total_s}};
    (*result)["return_code"] = return_code;
    (*result)["return_code_name"] = code != nullptr ? json(code->symbol) : json(nullptr);
}

/* ---- Which fields ---- */

void result_keep_fields(json *result, const char *list)
{
    if (word_list_split(list).empty()) return;
    json kept;
    for (auto &[name, value] : result->items())
        if (name == "schema" || word_list_wants(list, name)) kept[name] = std::move(value);
    *result = std::move(kept);
}

void result_check_fields(const json &result, const char *list, const char *param, stream_set *out)
{
    std::vector<std::string_view> known;
    for (auto field = result.begin(); field != result.end(); ++field) known.push_back(field.key());
    word_list_check(list, known, param, out);
}
