/* entries_model.cpp - the entries that fill a task and those that give back what was put. Arrays show their values. */
#include "recorder.h"

#include <algorithm>
#include <cstdio>

/* ---- Sizes ---- */

int32_t ZLR_putmaxnumcon(ZLR_task *task, int32_t num) { return answer("ZLR_putmaxnumcon", task, num); }
int32_t ZLR_putmaxnumvar(ZLR_task *task, int32_t num) { return answer("ZLR_putmaxnumvar", task, num); }
int32_t ZLR_putmaxnumanz(ZLR_task *task, int64_t num) { return answer("ZLR_putmaxnumanz", task, num); }
int32_t ZLR_putmaxnumqnz(ZLR_task *task, int64_t num) { return answer("ZLR_putmaxnumqnz", task, num); }
int32_t ZLR_putmaxnumcone(ZLR_task *task, int32_t num) { return answer("ZLR_putmaxnumcone", task, num); }

int32_t ZLR_appendcons(ZLR_task *task, int32_t num)
{
    const int32_t res = answer("ZLR_appendcons", task, num);
    if (res == 0) task->rows.resize(task->rows.size() + static_cast<size_t>(num));
    return res;
}

int32_t ZLR_appendvars(ZLR_task *task, int32_t num)
{
    const int32_t res = answer("ZLR_appendvars", task, num);
    if (res != 0) return res;
    const size_t total = task->c.size() + static_cast<size_t>(num);
    task->c.resize(total);
    task->types.resize(total);
    task->names.resize(total);
    return res;
}

/* A count, as the script has it or as was put. */
static int32_t answer_count(const char *entry, ZLR_task *task, const char *word, size_t otherwise, int32_t *value)
{
    const int32_t res = answer(entry, task);
    if (res == 0) *value = static_cast<int32_t>(script_number(word, -1, static_cast<int64_t>(otherwise)));
    return res;
}

int32_t ZLR_getnumcon(ZLR_task *task, int32_t *num)
{
    return answer_count("ZLR_getnumcon", task, "rows", task->rows.size(), num);
}

int32_t ZLR_getnumvar(ZLR_task *task, int32_t *num)
{
    return answer_count("ZLR_getnumvar", task, "columns", task->c.size(), num);
}

int32_t ZLR_getnumcone(ZLR_task *task, int32_t *num)
{
    return answer_count("ZLR_getnumcone", task, "cones", static_cast<size_t>(task->num_cones), num);
}

int32_t ZLR_getnumintvar(ZLR_task *task, int32_t *num)
{
    const auto num_put = std::count(task->types.begin(), task->types.end(), ZLR_VAR_INT);
    return answer_count("ZLR_getnumintvar", task, "integers", static_cast<size_t>(num_put), num);
}

int32_t ZLR_getprobtype(ZLR_task *task, int32_t *type)
{
    return answer_count("ZLR_getprobtype", task, "type", ZLR_PROBTYPE_LO, type);
}

/* ---- Bounds ---- */

int32_t ZLR_putconbound(ZLR_task *task, int32_t i, int32_t key, double lower, double upper)
{
    const int32_t res = answer("ZLR_putconbound", task, i, key, lower, upper);
    if (res == 0) task->rows.at(static_cast<size_t>(i)) = {key, lower, upper};
    return res;
}

int32_t ZLR_putvarbound(ZLR_task *task, int32_t j, int32_t key, double lower, double upper)
{
    return answer("ZLR_putvarbound", task, j, key, lower, upper);
}

/* Of rows. */
int32_t ZLR_getbound(ZLR_task *task, int32_t accessor, int32_t index, int32_t *key, double *lower, double *upper)
{
    const int32_t res = answer("ZLR_getbound", task, accessor, index);
    if (res != 0) return res;
    const row_bound &row = task->rows.at(static_cast<size_t>(index));
    *key = row.key;
    *lower = row.lower;
    *upper = row.upper;
    return res;
}

/* ---- Terms ---- */

int32_t ZLR_putclist(ZLR_task *task, int32_t num, const int32_t *sub, const double *value)
{
    const int32_t res = record_result("ZLR_putclist", shown_list(task, num) + ", " + shown_array(num, sub) + ", " +
                                                          shown_array(num, value));
    for (int32_t k = 0; k < num && res == 0; ++k) task->c.at(static_cast<size_t>(sub[k])) = value[k];
    return res;
}

int32_t ZLR_getc(ZLR_task *task, double *c)
{
    const int32_t res = answer("ZLR_getc", task);
    if (res == 0) std::copy(task->c.begin(), task->c.end(), c);
    return res;
}

static std::string shown_triples(int32_t num, const int32_t *subi, const int32_t *subj, const double *value)
{
    return shown(num) + ", " + shown_array(num, subi) + ", " + shown_array(num, subj) + ", " + shown_array(num, value);
}

int32_t ZLR_putqobj(ZLR_task *task, int32_t num, const int32_t *subi, const int32_t *subj, const double *value)
{
    return record_result("ZLR_putqobj", shown(task) + ", " + shown_triples(num, subi, subj, value));
}

int32_t ZLR_putqconk(ZLR_task *task, int32_t i, int32_t num, const int32_t *subi, const int32_t *subj,
                     const double *value)
{
    return record_result("ZLR_putqconk", shown_list(task, i) + ", " + shown_triples(num, subi, subj, value));
}

int32_t ZLR_putacol(ZLR_task *task, int32_t j, int32_t num, const int32_t *sub, const double *value)
{
    return record_result("ZLR_putacol",
                         shown_list(task, j, num) + ", " + shown_array(num, sub) + ", " + shown_array(num, value));
}

int32_t ZLR_appendcone(ZLR_task *task, int32_t type, double param, int32_t num, const int32_t *sub)
{
    const int32_t res =
        record_result("ZLR_appendcone", shown_list(task, type, param, num) + ", " + shown_array(num, sub));
    if (res == 0) ++task->num_cones;
    return res;
}

/* Where the program says nothing of columns before, the script does. */
int32_t ZLR_putvartype(ZLR_task *task, int32_t j, int32_t type)
{
    const int32_t res = answer("ZLR_putvartype", task, j, type);
    if (res == 0 && j >= 0 && static_cast<size_t>(j) < task->types.size()) task->types[static_cast<size_t>(j)] = type;
    return res;
}

int32_t ZLR_putnlfunc(ZLR_task *task, void *handle, ZLR_nlgetspfunc_t getsp, ZLR_nlgetvafunc_t getva)
{
    task->nl_handle = handle;
    task->getsp = getsp;
    task->getva = getva;
    return answer("ZLR_putnlfunc", task, static_cast<const void *>(handle));
}

/* ---- Names ---- */

int32_t ZLR_putvarname(ZLR_task *task, int32_t j, const char *name)
{
    const int32_t res = answer("ZLR_putvarname", task, j, name);
    if (res == 0) task->names.at(static_cast<size_t>(j)) = name;
    return res;
}

int32_t ZLR_getvarname(ZLR_task *task, int32_t j, int32_t capacity, char *name)
{
    const int32_t res = answer("ZLR_getvarname", task, j, capacity);
    if (res == 0)
        std::snprintf(name, static_cast<size_t>(capacity), "%s", task->names.at(static_cast<size_t>(j)).c_str());
    return res;
}
