/* entries_solution.cpp - solutions and sensitivity: what the script says. */
#include "recorder.h"

#include <cstdio>

int32_t ZLR_solutiondef(ZLR_task *task, int32_t kind, int32_t *defined)
{
    const int32_t res = answer("ZLR_solutiondef", task, kind);
    if (res == 0) *defined = static_cast<int32_t>(script_number("defined", kind, 0));
    if (kind == ZLR_SOL_BAS) run_evaluations(task, "later"); /* asked for once a job */
    return res;
}

static int32_t answer_status(const char *entry, ZLR_task *task, int32_t kind, const char *word, int32_t *status)
{
    const int32_t res = answer(entry, task, kind);
    if (res == 0) *status = static_cast<int32_t>(script_number(word, kind, 0));
    return res;
}

int32_t ZLR_getsolsta(ZLR_task *task, int32_t kind, int32_t *solsta)
{
    return answer_status("ZLR_getsolsta", task, kind, "status", solsta);
}

static int32_t answer_value(const char *entry, ZLR_task *task, int32_t kind, const char *word, double *value)
{
    const int32_t res = answer(entry, task, kind);
    if (res == 0) *value = script_real(word, kind, 0.0);
    return res;
}

int32_t ZLR_getprimalobj(ZLR_task *task, int32_t kind, double *value)
{
    return answer_value("ZLR_getprimalobj", task, kind, "primal", value);
}

int32_t ZLR_getdualobj(ZLR_task *task, int32_t kind, double *value)
{
    return answer_value("ZLR_getdualobj", task, kind, "dual", value);
}

int32_t ZLR_prostatostr(ZLR_task *task, int32_t prosta, char *text)
{
    std::snprintf(text, 1024, "PROBLEM_%d", prosta);
    return answer("ZLR_prostatostr", task, prosta);
}

int32_t ZLR_solstatostr(ZLR_task *task, int32_t solsta, char *text)
{
    std::snprintf(text, 1024, "SOLUTION_%d", solsta);
    return answer("ZLR_solstatostr", task, solsta);
}

int32_t ZLR_getintinf(ZLR_task *task, int32_t item, int32_t *value)
{
    const int32_t res = answer("ZLR_getintinf", task, item);
    if (res == 0) *value = 0;
    return res;
}

/* ---- Whole solutions ---- */

static void give_keys(const char *word, size_t num, int32_t *keys)
{
    for (size_t k = 0; k < num && keys != nullptr; ++k)
        keys[k] = static_cast<int32_t>(script_number(word, static_cast<int64_t>(k), 0));
}

static void give_values(const char *word, size_t num, double *values)
{
    for (size_t k = 0; k < num && values != nullptr; ++k) values[k] = script_real(word, static_cast<int64_t>(k), 0.0);
}

/* Gives what the front end asks for. A call that fails has filled the arrays all the same. */
int32_t ZLR_getsolution(ZLR_task *task, int32_t kind, int32_t *prosta, int32_t *solsta, int32_t *skc, int32_t *skx,
                        int32_t *, double *, double *xx, double *y, double *, double *, double *slx, double *sux,
                        double *)
{
    const int32_t res = answer("ZLR_getsolution", task, kind);
    if (prosta != nullptr) *prosta = static_cast<int32_t>(script_number("prosta", kind, 0));
    if (solsta != nullptr) *solsta = static_cast<int32_t>(script_number("status", kind, 0));
    give_keys("rowkey", task->rows.size(), skc);
    give_keys("columnkey", task->c.size(), skx);
    give_values("x", task->c.size(), xx);
    give_values("y", task->rows.size(), y);
    give_values("slx", task->c.size(), slx);
    give_values("sux", task->c.size(), sux);
    return res;
}

int32_t ZLR_putsolution(ZLR_task *task, int32_t kind, const int32_t *skc, const int32_t *skx, const int32_t *skn,
                        const double *xc, const double *xx, const double *y, const double *slc, const double *suc,
                        const double *slx, const double *sux, const double *snx)
{
    const auto num_con = static_cast<int64_t>(task->rows.size());
    const auto num_var = static_cast<int64_t>(task->c.size());
    std::string args = shown_list(task, kind);
    for (const std::string &text :
         {shown_array(num_con, skc), shown_array(num_var, skx), shown_array(task->num_cones, skn),
          shown_array(num_con, xc), shown_array(num_var, xx), shown_array(num_con, y), shown_array(num_con, slc),
          shown_array(num_con, suc), shown_array(num_var, slx), shown_array(num_var, sux), shown_array(num_var, snx)})
        args += ", " + text;
    return record_result("ZLR_putsolution", args);
}

/* ---- Sensitivity ---- */

int32_t ZLR_primalsensitivity(ZLR_task *task, int32_t numi, const int32_t *subi, const int32_t *marki, int32_t numj,
                              const int32_t *subj, const int32_t *markj, double *leftpricei, double *rightpricei,
                              double *leftrangei, double *rightrangei, double *, double *, double *, double *)
{
    const int32_t res =
        record_result("ZLR_primalsensitivity", shown_list(task, numi) + ", " + shown_array(numi, subi) + ", " +
                                                   shown_array(numi, marki) + ", " + shown(numj) + ", " +
                                                   shown_array(numj, subj) + ", " + shown_array(numj, markj));
    const auto num = static_cast<size_t>(numi);
    give_values("leftpricei", num, leftpricei);
    give_values("rightpricei", num, rightpricei);
    give_values("leftrangei", num, leftrangei);
    give_values("rightrangei", num, rightrangei);
    return res;
}

int32_t ZLR_dualsensitivity(ZLR_task *task, int32_t numj, const int32_t *subj, double *leftpricej, double *rightpricej,
                            double *leftrangej, double *rightrangej)
{
    const int32_t res = record_result("ZLR_dualsensitivity", shown_list(task, numj) + ", " + shown_array(numj, subj));
    const auto num = static_cast<size_t>(numj);
    give_values("leftpricej", num, leftpricej);
    give_values("rightpricej", num, rightpricej);
    give_values("leftrangej", num, leftrangej);
    give_values("rightrangej", num, rightrangej);
    return res;
}
