/* options.cpp - HiGHS's settings, the model and the start. See session.h. */
#include "solver/engines/highs/session.h"

#include <algorithm>
#include <cmath>
#include <cstring>

static bool refuse(engine_answer *answer, const std::string &message)
{
    answer->status = ENGINE_REFUSED;
    answer->message = message;
    return false;
}

/* An integer parameter that stands for one of HiGHS's texts. */
static const char *switch_word(int32_t value)
{
    static const char *const words[] = {"off", "on", "choose"};
    return value >= 0 && value < 3 ? words[value] : "choose";
}

/* Hands over one option in the type that HiGHS has for it, whatever type our parameter has. */
static bool put_option(void *highs, const engine_option &o)
{
    const char *name = o.name.c_str();
    HighsInt type = 0;

    if (Highs_getOptionType(highs, name, &type) != kHighsStatusOk) return false;
    const double number = o.param_class == ZLR_PAR_DOUBLE ? o.dou : static_cast<double>(o.integer);
    HighsInt status = kHighsStatusError;
    if (type == kHighsOptionTypeBool)
        status = Highs_setBoolOptionValue(highs, name, number != 0.0 ? 1 : 0);
    else if (type == kHighsOptionTypeInt)
        status = Highs_setIntOptionValue(highs, name, static_cast<HighsInt>(number));
    else if (type == kHighsOptionTypeDouble)
        status = Highs_setDoubleOptionValue(highs, name, number);
    else
        status = Highs_setStringOptionValue(highs, name, o.str.empty() ? switch_word(o.integer) : o.str.c_str());
    return status == kHighsStatusOk;
}

static bool put_method(highs_session *s)
{
    void *h = s->highs;
    switch (s->job->method) {
    case METHOD_DUAL_SIMPLEX:
        return Highs_setStringOptionValue(h, "solver", "simplex") == kHighsStatusOk &&
               Highs_setIntOptionValue(h, "simplex_strategy", 1) == kHighsStatusOk;
    case METHOD_PRIMAL_SIMPLEX:
        return Highs_setStringOptionValue(h, "solver", "simplex") == kHighsStatusOk &&
               Highs_setIntOptionValue(h, "simplex_strategy", 4) == kHighsStatusOk;
    case METHOD_INTPNT: /* before 1.12 the name "ipm" stands for this method, later for a choice of two */
        return Highs_setStringOptionValue(h, "solver", "ipx") == kHighsStatusOk ||
               Highs_setStringOptionValue(h, "solver", "ipm") == kHighsStatusOk;
    case METHOD_HIPO: highs_load_hipo(); return Highs_setStringOptionValue(h, "solver", "hipo") == kHighsStatusOk;
    case METHOD_ACTIVE_SET: return Highs_setStringOptionValue(h, "solver", "qpasm") == kHighsStatusOk;
    case METHOD_PDLP: return Highs_setStringOptionValue(h, "solver", "pdlp") == kHighsStatusOk;
    default: return Highs_setStringOptionValue(h, "solver", "choose") == kHighsStatusOk;
    }
}

/* Log lines come through the callback: they are where HiGHS tells objective and infeasibilities of an LP on its way. */
static void put_logging(void *h, engine_method method)
{
    /* The first-order code prints its own lines to the console, past every setting but this one. */
    (void)Highs_setBoolOptionValue(h, "output_flag", method == METHOD_PDLP ? 0 : 1);
    (void)Highs_setBoolOptionValue(h, "log_to_console", 0);
    (void)Highs_setStringOptionValue(h, "log_file", "");
}

/* Simplex and the older interior-point code have work for one thread only. */
static bool uses_threads(engine_method method)
{
    return method == METHOD_MIP || method == METHOD_HIPO || method == METHOD_PDLP || method == METHOD_CHOOSE;
}

/* The older interior-point code has no end of its own where it diverges, as it does on some tiny infeasible problems; what
 * it solves takes some hundred iterations at most. */
static constexpr HighsInt ipm_stall_iterations = 1000;

bool highs_set_options(highs_session *s, engine_answer *answer)
{
    void *h = s->highs;
    const engine_job *job = s->job.get();

    put_logging(h, job->method);
    /* Our reader has dropped what is too small to count, by a parameter of its own. */
    (void)Highs_setDoubleOptionValue(h, "small_matrix_value", 1e-12);
    (void)Highs_setIntOptionValue(h, "threads", uses_threads(job->method) ? std::max(job->threads, 1) : 1);
    (void)Highs_setIntOptionValue(h, "ipm_iteration_limit", ipm_stall_iterations);
    if (std::isfinite(job->time_limit_s)) (void)Highs_setDoubleOptionValue(h, "time_limit", job->time_limit_s);
    bool has_solver = false; /* one of two codes for a method, by the plan */
    for (const engine_option &o : job->options) {
        if (!put_option(h, o)) return refuse(answer, "does not take the option " + o.name);
        if (o.name == "run_crossover") s->crossover = o.integer != 0;
        if (o.name == "ipm_iteration_limit") s->has_ipm_limit = true;
        has_solver = has_solver || o.name == "solver";
    }
    if (!has_solver && !put_method(s)) return refuse(answer, "this build does not have the method");
    return true;
}

static HighsInt pass_arrays(void *h, const model *m, const std::vector<HighsInt> &start,
                            const std::vector<HighsInt> &integrality)
{
    static const HighsInt no_index = 0; /* HiGHS wants arrays even where there are no entries */
    static const double no_value = 0.0;
    const auto num_nz = static_cast<HighsInt>(m->a.row.size());
    const HighsInt *row = num_nz > 0 ? m->a.row.data() : &no_index;
    const double *value = num_nz > 0 ? m->a.value.data() : &no_value;
    const HighsInt sense = m->sense == ZLR_SENSE_MAX ? kHighsObjSenseMaximize : kHighsObjSenseMinimize;

    if (integrality.empty())
        return Highs_passLp(h, m->num_var, m->num_con, num_nz, kHighsMatrixFormatColwise, sense, m->cfix, m->c.data(),
                            m->var_lower.data(), m->var_upper.data(), m->con_lower.data(), m->con_upper.data(),
                            start.data(), row, value);
    return Highs_passMip(h, m->num_var, m->num_con, num_nz, kHighsMatrixFormatColwise, sense, m->cfix, m->c.data(),
                         m->var_lower.data(), m->var_upper.data(), m->con_lower.data(), m->con_upper.data(),
                         start.data(), row, value, integrality.data());
}

/* The lower triangle by column. */
static HighsInt pass_hessian(void *h, const model *m)
{
    std::vector<HighsInt> start(static_cast<size_t>(m->num_var) + 1, 0), row(m->qobj.size());
    std::vector<double> value(m->qobj.size());

    for (const quad_term &t : m->qobj) start[static_cast<size_t>(t.j) + 1]++;
    for (size_t j = 1; j < start.size(); j++) start[j] += start[j - 1];
    std::vector<HighsInt> at = start;
    for (const quad_term &t : m->qobj) { /* sorted by row, so that each column is as well */
        const auto place = static_cast<size_t>(at[static_cast<size_t>(t.j)]++);
        row[place] = t.i;
        value[place] = t.value;
    }
    return Highs_passHessian(h, m->num_var, static_cast<HighsInt>(row.size()), kHighsHessianFormatTriangular,
                             start.data(), row.data(), value.data());
}

bool highs_pass_model(highs_session *s, engine_answer *answer)
{
    static_assert(sizeof(HighsInt) == sizeof(int32_t), "a HiGHS with 64-bit indices needs converted arrays");
    const model *m = s->problem.get();

    if (m->a.row.size() > static_cast<size_t>(INT32_MAX))
        return refuse(answer, "takes no more than 2147483647 nonzeros");
    std::vector<HighsInt> start(m->a.start.size());
    for (size_t j = 0; j < start.size(); j++) start[j] = static_cast<HighsInt>(m->a.start[j]);
    std::vector<HighsInt> integrality;
    if (s->is_mip) integrality.assign(m->var_type.begin(), m->var_type.end());
    if (pass_arrays(s->highs, m, start, integrality) == kHighsStatusError ||
        (!m->qobj.empty() && pass_hessian(s->highs, m) == kHighsStatusError))
        return refuse(answer, "does not take the model" + (s->last_error.empty() ? "" : ": " + s->last_error));
    return true;
}

/* HiGHS's basis status of one of our keys. A free nonbasic column is "zero" there. */
static HighsInt basis_status(int32_t key, double lower, double upper)
{
    switch (key) {
    case ZLR_SK_BASIC: return kHighsBasisStatusBasic;
    case ZLR_SK_UPPER: return kHighsBasisStatusUpper;
    case ZLR_SK_LOWER:
    case ZLR_SK_FIXED: return kHighsBasisStatusLower;
    default:
        if (std::isfinite(lower)) return kHighsBasisStatusLower;
        return std::isfinite(upper) ? kHighsBasisStatusUpper : kHighsBasisStatusZero;
    }
}

void highs_pass_basis(highs_session *s, const std::vector<int32_t> &row_key, const std::vector<int32_t> &col_key)
{
    const model *m = s->problem.get();
    std::vector<HighsInt> col(col_key.size()), row(row_key.size());

    for (size_t j = 0; j < col.size(); j++) col[j] = basis_status(col_key[j], m->var_lower[j], m->var_upper[j]);
    for (size_t i = 0; i < row.size(); i++) row[i] = basis_status(row_key[i], m->con_lower[i], m->con_upper[i]);
    (void)Highs_setBasis(s->highs, col.data(), row.data());
}

void highs_pass_start(highs_session *s)
{
    const model *m = s->problem.get();
    const engine_start &start = s->job->start;
    const bool simplex = s->job->method == METHOD_DUAL_SIMPLEX || s->job->method == METHOD_PRIMAL_SIMPLEX ||
                         s->job->method == METHOD_CHOOSE;

    if (s->is_mip && start.x.size() == static_cast<size_t>(m->num_var))
        (void)Highs_setSolution(s->highs, start.x.data(), nullptr, nullptr, nullptr);
    if (!s->is_mip && simplex && start.col_key.size() == static_cast<size_t>(m->num_var) &&
        start.row_key.size() == static_cast<size_t>(m->num_con))
        highs_pass_basis(s, start.row_key, start.col_key);
}

static HighsInt status_near(double value, double lower, double upper)
{
    const double room = 1e-6 * std::max(1.0, std::fabs(value));
    if (value - lower <= room) return kHighsBasisStatusLower;
    return upper - value <= room ? kHighsBasisStatusUpper : kHighsBasisStatusBasic;
}

std::vector<double> highs_activity(const model *m, const std::vector<double> &x)
{
    std::vector<double> activity(static_cast<size_t>(m->num_con), 0.0);
    for (size_t j = 0; j < x.size(); j++)
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++)
            activity[static_cast<size_t>(m->a.row[k])] += m->a.value[k] * x[j];
    return activity;
}

void highs_set_basis_from_point(highs_session *s, const engine_answer *point)
{
    const model *m = s->problem.get();
    const std::vector<double> activity = highs_activity(m, point->x);
    std::vector<HighsInt> col(point->x.size()), row(activity.size());

    for (size_t j = 0; j < col.size(); j++) col[j] = status_near(point->x[j], m->var_lower[j], m->var_upper[j]);
    for (size_t i = 0; i < row.size(); i++) row[i] = status_near(activity[i], m->con_lower[i], m->con_upper[i]);
    (void)Highs_setBasis(s->highs, col.data(), row.data());
}
