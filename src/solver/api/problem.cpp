/* problem.cpp - the problem's data: rows, columns, bounds, objective, matrix, names. */
#include "solver/api/api.h"

#include <algorithm>
#include <cmath>

static bool bad_index(int32_t index, int32_t num) { return index < 0 || index >= num; }

static bool any_nan(int32_t num, const double *value)
{
    return std::any_of(value, value + num, [](double v) { return std::isnan(v); });
}

/* Size hints: they reserve room, so that filling a task of known size allocates once. */
int32_t ZLR_putmaxnumcon(ZLR_task *task, int32_t num)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (num < 0) return ZLR_RES_ERR_ARGUMENT;
        const auto size = static_cast<size_t>(num);
        model *m = task->problem.get();
        m->con_lower.reserve(size);
        m->con_upper.reserve(size);
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putmaxnumvar(ZLR_task *task, int32_t num)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (num < 0) return ZLR_RES_ERR_ARGUMENT;
        const auto size = static_cast<size_t>(num);
        model *m = task->problem.get();
        m->var_lower.reserve(size);
        m->var_upper.reserve(size);
        m->var_type.reserve(size);
        m->c.reserve(size);
        m->a.start.reserve(size + 1);
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putmaxnumanz(ZLR_task *task, int64_t num)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (num < 0) return ZLR_RES_ERR_ARGUMENT;
        model *m = task->problem.get();
        m->a.row.reserve(static_cast<size_t>(num));
        m->a.value.reserve(static_cast<size_t>(num));
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putmaxnumqnz(ZLR_task *task, int64_t num)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (num < 0) return ZLR_RES_ERR_ARGUMENT;
        /* The terms may belong to the objective or to any row: no place to reserve yet. */
        return ZLR_RES_OK;
    });
}

int32_t ZLR_appendcons(ZLR_task *task, int32_t num)
{
    return api_task(task, [&]() -> int32_t {
        if (num < 0 || task->problem->num_con > INT32_MAX - num) return ZLR_RES_ERR_ARGUMENT;
        model_append_cons(task_edit(task), num);
        return ZLR_RES_OK;
    });
}

int32_t ZLR_appendvars(ZLR_task *task, int32_t num)
{
    return api_task(task, [&]() -> int32_t {
        if (num < 0 || task->problem->num_var > INT32_MAX - num) return ZLR_RES_ERR_ARGUMENT;
        model_append_vars(task_edit(task), num);
        return ZLR_RES_OK;
    });
}

static int32_t put_bound(ZLR_task *task, int32_t accessor, int32_t index, int32_t key, double lower, double upper)
{
    const bool rows = accessor == ZLR_ACC_CON;
    if (bad_index(index, rows ? task->problem->num_con : task->problem->num_var)) return ZLR_RES_ERR_INDEX;
    const int32_t res =
        bounds_from_key(key, lower, upper, param_dou(&task->params, DPAR_BOUND_INFINITE), &lower, &upper);
    if (res != ZLR_RES_OK) return res;

    model *m = task_edit(task);
    const auto at = static_cast<size_t>(index);

    (rows ? m->con_lower : m->var_lower)[at] = lower;
    (rows ? m->con_upper : m->var_upper)[at] = upper;
    return ZLR_RES_OK;
}

int32_t ZLR_putconbound(ZLR_task *task, int32_t i, int32_t key, double lower, double upper)
{
    return api_task_filling(task, [&]() -> int32_t { return put_bound(task, ZLR_ACC_CON, i, key, lower, upper); });
}

int32_t ZLR_putvarbound(ZLR_task *task, int32_t j, int32_t key, double lower, double upper)
{
    return api_task_filling(task, [&]() -> int32_t { return put_bound(task, ZLR_ACC_VAR, j, key, lower, upper); });
}

int32_t ZLR_getbound(ZLR_task *task, int32_t accessor, int32_t index, int32_t *key, double *lower, double *upper)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (accessor != ZLR_ACC_CON && accessor != ZLR_ACC_VAR) return ZLR_RES_ERR_ARGUMENT;
        const model *m = task->problem.get();
        const bool rows = accessor == ZLR_ACC_CON;
        if (bad_index(index, rows ? m->num_con : m->num_var)) return ZLR_RES_ERR_INDEX;
        const auto at = static_cast<size_t>(index);
        const double lo = (rows ? m->con_lower : m->var_lower)[at];
        const double up = (rows ? m->con_upper : m->var_upper)[at];
        api_put(key, bounds_to_key(lo, up));
        api_put(lower, lo);
        api_put(upper, up);
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putobjsense(ZLR_task *task, int32_t sense)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (sense != ZLR_SENSE_MIN && sense != ZLR_SENSE_MAX) return ZLR_RES_ERR_ARGUMENT;
        task_edit(task)->sense = sense;
        return ZLR_RES_OK;
    });
}

int32_t ZLR_getobjsense(ZLR_task *task, int32_t *sense)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    api_put(sense, task->problem->sense);
    return ZLR_RES_OK;
}

int32_t ZLR_putcfix(ZLR_task *task, double cfix)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (std::isnan(cfix)) return ZLR_RES_ERR_NAN;
        if (std::isinf(cfix)) return ZLR_RES_ERR_ARGUMENT;
        task_edit(task)->cfix = cfix;
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putclist(ZLR_task *task, int32_t num, const int32_t *sub, const double *value)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (num < 0) return ZLR_RES_ERR_ARGUMENT;
        if (num > 0 && (sub == nullptr || value == nullptr)) return ZLR_RES_ERR_NULL_POINTER;
        for (int32_t k = 0; k < num; ++k) {
            if (bad_index(sub[k], task->problem->num_var)) return ZLR_RES_ERR_INDEX;
            if (std::isnan(value[k])) return ZLR_RES_ERR_NAN;
            if (std::isinf(value[k])) return ZLR_RES_ERR_ARGUMENT;
        }
        model *m = task_edit(task);
        for (int32_t k = 0; k < num; ++k) m->c[static_cast<size_t>(sub[k])] = value[k];
        return ZLR_RES_OK;
    });
}

int32_t ZLR_getc(ZLR_task *task, double *c)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (c != nullptr) std::copy(task->problem->c.begin(), task->problem->c.end(), c);
        return ZLR_RES_OK;
    });
}

/* Checks the triples of a quadratic part and turns them into terms. */
static int32_t quad_terms(const model *m, int32_t num, const int32_t *subi, const int32_t *subj, const double *value,
                          std::vector<quad_term> *terms)
{
    if (num < 0) return ZLR_RES_ERR_ARGUMENT;
    if (num > 0 && (subi == nullptr || subj == nullptr || value == nullptr)) return ZLR_RES_ERR_NULL_POINTER;
    terms->reserve(static_cast<size_t>(num));
    for (int32_t k = 0; k < num; ++k) {
        if (bad_index(subi[k], m->num_var) || bad_index(subj[k], m->num_var)) return ZLR_RES_ERR_INDEX;
        if (subi[k] < subj[k]) return ZLR_RES_ERR_ARGUMENT;
        if (std::isnan(value[k])) return ZLR_RES_ERR_NAN;
        if (std::isinf(value[k])) return ZLR_RES_ERR_ARGUMENT;
        terms->push_back({subi[k], subj[k], value[k]});
    }
    quad_normalise(terms);
    return ZLR_RES_OK;
}

int32_t ZLR_putqobj(ZLR_task *task, int32_t num, const int32_t *subi, const int32_t *subj, const double *value)
{
    return api_task_filling(task, [&]() -> int32_t {
        std::vector<quad_term> terms;
        const int32_t res = quad_terms(task->problem.get(), num, subi, subj, value, &terms);
        if (res == ZLR_RES_OK) task_edit(task)->qobj = std::move(terms);
        return res;
    });
}

int32_t ZLR_putqconk(ZLR_task *task, int32_t i, int32_t num, const int32_t *subi, const int32_t *subj,
                     const double *value)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (bad_index(i, task->problem->num_con)) return ZLR_RES_ERR_INDEX;
        std::vector<quad_term> terms;
        const int32_t res = quad_terms(task->problem.get(), num, subi, subj, value, &terms);
        if (res != ZLR_RES_OK) return res;

        std::vector<quad_row> &rows = task_edit(task)->qcon;
        auto at =
            std::lower_bound(rows.begin(), rows.end(), i, [](const quad_row &r, int32_t row) { return r.row < row; });
        const bool found = at != rows.end() && at->row == i;
        if (found && terms.empty())
            rows.erase(at);
        else if (found)
            at->terms = std::move(terms);
        else if (!terms.empty())
            rows.insert(at, quad_row{i, std::move(terms)});
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putmaxnumcone(ZLR_task *task, int32_t num)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (num < 0) return ZLR_RES_ERR_ARGUMENT;
        task_edit(task)->cones.reserve(static_cast<size_t>(num));
        return ZLR_RES_OK;
    });
}

int32_t ZLR_appendcone(ZLR_task *task, int32_t type, double param, int32_t num, const int32_t *sub)
{
    return api_task_filling(task, [&]() -> int32_t {
        const model *m = task->problem.get();
        if (num < 0 || !std::isfinite(param)) return ZLR_RES_ERR_ARGUMENT;
        if (num > 0 && sub == nullptr) return ZLR_RES_ERR_NULL_POINTER;
        const std::vector<int32_t> member(sub, sub + num);
        if (std::any_of(member.begin(), member.end(), [&](int32_t j) { return bad_index(j, m->num_var); }))
            return ZLR_RES_ERR_INDEX;
        const std::string complaint = model_cone_complaint(m, type, member);
        if (!complaint.empty()) {
            streams_printf(&task->streams, ZLR_STREAM_ERR, "Cone %d is not valid: %s.\n", model_num_cones(m) + 1,
                           complaint.c_str());
            return ZLR_RES_ERR_CONE;
        }
        task_edit(task)->cones.push_back({type, member});
        return ZLR_RES_OK;
    });
}

int32_t ZLR_getcone(ZLR_task *task, int32_t k, int32_t *type, int32_t *num, int32_t *sub)
{
    return api_task(task, [&]() -> int32_t {
        if (bad_index(k, model_num_cones(task->problem.get()))) return ZLR_RES_ERR_INDEX;
        const model_cone &cone = task->problem->cones[static_cast<size_t>(k)];
        api_put(type, cone.type);
        api_put(num, static_cast<int32_t>(cone.member.size()));
        if (sub != nullptr) std::copy(cone.member.begin(), cone.member.end(), sub);
        return ZLR_RES_OK;
    });
}

/* Whether an index occurs twice. Columns are short as a rule: those are compared as they stand. */
static bool has_twice(int32_t num, const int32_t *sub)
{
    constexpr int32_t few = 24;
    if (num > few) {
        std::vector<int32_t> sorted(sub, sub + num);
        std::sort(sorted.begin(), sorted.end());
        return std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end();
    }
    for (int32_t k = 1; k < num; ++k)
        if (std::find(sub, sub + k, sub[k]) != sub + k) return true;
    return false;
}

int32_t ZLR_putacol(ZLR_task *task, int32_t j, int32_t num, const int32_t *sub, const double *value)
{
    return api_task_filling(task, [&]() -> int32_t {
        const model *m = task->problem.get();
        if (bad_index(j, m->num_var)) return ZLR_RES_ERR_INDEX;
        if (num < 0) return ZLR_RES_ERR_ARGUMENT;
        if (num > 0 && (sub == nullptr || value == nullptr)) return ZLR_RES_ERR_NULL_POINTER;
        if (any_nan(num, value)) return ZLR_RES_ERR_NAN;

        const double drop = param_dou(&task->params, DPAR_DATA_TOL_COEF);
        int32_t num_dropped = 0;
        for (int32_t k = 0; k < num; ++k) {
            if (bad_index(sub[k], m->num_con)) return ZLR_RES_ERR_INDEX;
            if (std::isinf(value[k])) return ZLR_RES_ERR_ARGUMENT;
            if (std::fabs(value[k]) < drop || value[k] == 0.0) ++num_dropped;
        }
        if (has_twice(num, sub)) return ZLR_RES_ERR_ARGUMENT;
        if (num_dropped == 0) {
            model_put_column_open(task_edit(task), j, num, sub, value);
            return ZLR_RES_OK;
        }

        std::vector<int32_t> row;
        std::vector<double> coef;
        for (int32_t k = 0; k < num; ++k) {
            if (std::fabs(value[k]) < drop || value[k] == 0.0) continue;
            row.push_back(sub[k]);
            coef.push_back(value[k]);
        }
        model_put_column_open(task_edit(task), j, static_cast<int32_t>(row.size()), row.data(), coef.data());
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putvartype(ZLR_task *task, int32_t j, int32_t type)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (bad_index(j, task->problem->num_var)) return ZLR_RES_ERR_INDEX;
        if (type != ZLR_VAR_CONT && type != ZLR_VAR_INT) return ZLR_RES_ERR_ARGUMENT;
        task_edit(task)->var_type[static_cast<size_t>(j)] = static_cast<uint8_t>(type);
        return ZLR_RES_OK;
    });
}

int32_t ZLR_puttaskname(ZLR_task *task, const char *name)
{
    return api_task(task, [&]() -> int32_t {
        task_own_problem(task)->name = name != nullptr ? name : "";
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putobjname(ZLR_task *task, const char *name)
{
    return api_task_filling(task, [&]() -> int32_t {
        task_own_problem(task)->obj_name = name != nullptr ? name : "";
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putconname(ZLR_task *task, int32_t i, const char *name)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (bad_index(i, task->problem->num_con)) return ZLR_RES_ERR_INDEX;
        names_put(&task_own_problem(task)->con_names, i, name != nullptr ? name : "");
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putvarname(ZLR_task *task, int32_t j, const char *name)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (bad_index(j, task->problem->num_var)) return ZLR_RES_ERR_INDEX;
        names_put(&task_own_problem(task)->var_names, j, name != nullptr ? name : "");
        return ZLR_RES_OK;
    });
}

int32_t ZLR_getconname(ZLR_task *task, int32_t i, int32_t capacity, char *name)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (bad_index(i, task->problem->num_con)) return ZLR_RES_ERR_INDEX;
        if (capacity < 1) return ZLR_RES_ERR_ARGUMENT;
        api_copy_text(name, static_cast<size_t>(capacity), names_shown(&task->problem->con_names, i, 'c'));
        return ZLR_RES_OK;
    });
}

int32_t ZLR_getvarname(ZLR_task *task, int32_t j, int32_t capacity, char *name)
{
    return api_task_filling(task, [&]() -> int32_t {
        if (bad_index(j, task->problem->num_var)) return ZLR_RES_ERR_INDEX;
        if (capacity < 1) return ZLR_RES_ERR_ARGUMENT;
        api_copy_text(name, static_cast<size_t>(capacity), names_shown(&task->problem->var_names, j, 'x'));
        return ZLR_RES_OK;
    });
}

int32_t ZLR_getnumcon(ZLR_task *task, int32_t *num)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    api_put(num, task->problem->num_con);
    return ZLR_RES_OK;
}

int32_t ZLR_getnumvar(ZLR_task *task, int32_t *num)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    api_put(num, task->problem->num_var);
    return ZLR_RES_OK;
}

int32_t ZLR_getnumanz(ZLR_task *task, int64_t *num)
{
    return api_task(task, [&]() -> int32_t {
        api_put(num, model_num_nz(task->problem.get()));
        return ZLR_RES_OK;
    });
}

int32_t ZLR_getnumcone(ZLR_task *task, int32_t *num)
{
    return api_task_filling(task, [&]() -> int32_t {
        api_put(num, model_num_cones(task->problem.get()));
        return ZLR_RES_OK;
    });
}

int32_t ZLR_getnumintvar(ZLR_task *task, int32_t *num)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    api_put(num, model_num_int(task->problem.get()));
    return ZLR_RES_OK;
}

int32_t ZLR_getprobtype(ZLR_task *task, int32_t *type)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    api_put(type, model_problem_type(task->problem.get()));
    return ZLR_RES_OK;
}
