/* function_model.cpp - see function_model.h. */
#include "function_model.h"

#include <limits>

jet jet_column(double value, size_t j, size_t n)
{
    jet x(value);
    x.grad.assign(n, 0.0);
    x.hess.assign(n * n, 0.0);
    x.grad[j] = 1.0;
    return x;
}

/* f(a, b) by its first and second partial derivatives. */
static jet combine(double value, const jet &a, const jet &b, double fa, double fb, double faa, double fab, double fbb)
{
    jet r(value);
    const size_t n = std::max(a.grad.size(), b.grad.size());
    const auto first = [](const jet &v, size_t i) { return v.grad.empty() ? 0.0 : v.grad[i]; };
    const auto second = [](const jet &v, size_t at) { return v.hess.empty() ? 0.0 : v.hess[at]; };
    r.grad.resize(n);
    r.hess.resize(n * n);
    for (size_t i = 0; i < n; i++) {
        r.grad[i] = fa * first(a, i) + fb * first(b, i);
        for (size_t j = 0; j < n; j++)
            r.hess[i * n + j] =
                fa * second(a, i * n + j) + fb * second(b, i * n + j) + faa * first(a, i) * first(a, j) +
                fab * (first(a, i) * first(b, j) + first(b, i) * first(a, j)) + fbb * first(b, i) * first(b, j);
    }
    return r;
}

static jet of_one(double value, const jet &a, double first, double second)
{
    return combine(value, a, jet(), first, 0.0, second, 0.0, 0.0);
}

jet operator+(const jet &a, const jet &b) { return combine(a.value + b.value, a, b, 1.0, 1.0, 0.0, 0.0, 0.0); }
jet operator-(const jet &a, const jet &b) { return combine(a.value - b.value, a, b, 1.0, -1.0, 0.0, 0.0, 0.0); }
jet operator*(const jet &a, const jet &b) { return combine(a.value * b.value, a, b, b.value, a.value, 0.0, 1.0, 0.0); }

jet jet_log(const jet &a)
{
    if (!(a.value > 0.0)) return {std::numeric_limits<double>::quiet_NaN()};
    return of_one(std::log(a.value), a, 1.0 / a.value, -1.0 / (a.value * a.value));
}

jet jet_exp(const jet &a) { return of_one(std::exp(a.value), a, std::exp(a.value), std::exp(a.value)); }

static std::vector<jet> columns_at(const function_model *m, const double *x)
{
    std::vector<jet> all;
    for (size_t j = 0; j < m->num_var; j++) all.push_back(jet_column(x[j], j, m->num_var));
    return all;
}

/* A constant has no derivatives of its own. */
static jet full(const jet_function &f, const std::vector<jet> &x)
{
    return f == nullptr ? jet() + jet_column(0.0, 0, x.size()) * 0.0 : f(x) + x[0] * 0.0;
}

std::vector<double> values_at(const function_model *m, const std::vector<double> &x)
{
    const std::vector<jet> columns = columns_at(m, x.data());
    std::vector<double> all = {full(m->objective, columns).value};
    for (const jet_function &row : m->rows) all.push_back(full(row, columns).value);
    return all;
}

static int32_t structure(void *handle, int32_t *numgrdobjnz, int32_t *grdobjsub, int32_t i, int32_t *convali,
                         int32_t *grdconinz, int32_t *grdconisub, int32_t, int32_t, const int32_t *,
                         int32_t maxnumhesnz, int32_t *numhesnz, int32_t *hessubi, int32_t *hessubj)
{
    const auto *m = static_cast<const function_model *>(handle);
    const auto n = static_cast<int32_t>(m->num_var);
    const bool is_row = i >= 0 && static_cast<size_t>(i) < m->rows.size() && m->rows[static_cast<size_t>(i)] != nullptr;
    if (numgrdobjnz != nullptr) *numgrdobjnz = n;
    for (int32_t j = 0; j < n && grdobjsub != nullptr; j++) grdobjsub[j] = j;
    if (convali != nullptr) *convali = is_row ? 1 : 0;
    if (grdconinz != nullptr) *grdconinz = is_row ? n : 0;
    for (int32_t j = 0; j < n && is_row && grdconisub != nullptr; j++) grdconisub[j] = j;
    if (numhesnz != nullptr) *numhesnz = m->is_linear ? 0 : n * (n + 1) / 2;
    if (maxnumhesnz == 0) return 0;
    if (maxnumhesnz < *numhesnz) return 1;
    for (int32_t r = 0, k = 0; r < n && hessubi != nullptr; r++)
        for (int32_t c = 0; c <= r; c++, k++) {
            hessubi[k] = r;
            hessubj[k] = c;
        }
    return 0;
}

/* The Hessian as the front end's evaluator has it: the rows' share is lost where the weight is 0. */
static void put_hessian(const function_model *m, const std::vector<jet> &x, double yo, const double *yc, int32_t numi,
                        const int32_t *subi, int32_t *hessubi, int32_t *hessubj, double *hesval)
{
    const size_t n = m->num_var;
    jet sum = full(m->objective, x) * yo;
    for (int32_t k = 0; k < numi && yo != 0.0; k++)
        sum = sum - full(m->rows[static_cast<size_t>(subi[k])], x) * yc[subi[k]];
    for (size_t r = 0, at = 0; r < n; r++)
        for (size_t c = 0; c <= r; c++, at++) {
            hessubi[at] = static_cast<int32_t>(r);
            hessubj[at] = static_cast<int32_t>(c);
            hesval[at] = sum.hess[r * n + c];
        }
}

static int32_t values(void *handle, const double *xx, double yo, const double *yc, double *objval, int32_t *numgrdobjnz,
                      int32_t *grdobjsub, double *grdobjval, int32_t numi, const int32_t *subi, double *conval,
                      const int32_t *grdconptrb, const int32_t *grdconptre, const int32_t *grdconsub, double *grdconval,
                      double *, int32_t maxnumhesnz, int32_t *numhesnz, int32_t *hessubi, int32_t *hessubj,
                      double *hesval)
{
    auto *m = static_cast<function_model *>(handle);
    const std::vector<jet> x = columns_at(m, xx);
    const jet f = full(m->objective, x);
    if (objval != nullptr) m->asked.emplace_back(xx, xx + m->num_var);
    if (objval != nullptr) *objval = f.value;
    if (std::isnan(f.value)) return ZLR_RES_ERR_NL_EVALUATION;
    if (numgrdobjnz != nullptr) *numgrdobjnz = static_cast<int32_t>(m->num_var);
    for (size_t j = 0; j < m->num_var && numgrdobjnz != nullptr; j++) {
        grdobjsub[j] = static_cast<int32_t>(j);
        grdobjval[j] = f.grad[j];
    }
    for (int32_t k = 0; k < numi; k++) {
        const jet g = full(m->rows[static_cast<size_t>(subi[k])], x);
        if (std::isnan(g.value)) return ZLR_RES_ERR_NL_EVALUATION;
        if (conval != nullptr) conval[k] = g.value;
        for (int32_t p = grdconptrb != nullptr ? grdconptrb[k] : 0; grdconptrb != nullptr && p < grdconptre[k]; p++)
            grdconval[p] = g.grad[static_cast<size_t>(grdconsub[p])];
    }
    if (maxnumhesnz == 0) return 0;
    if (yo == 0.0) m->hessians_without_objective++;
    *numhesnz = static_cast<int32_t>(m->num_var * (m->num_var + 1) / 2);
    put_hessian(m, x, yo, yc, numi, subi, hessubi, hessubj, hesval);
    return 0;
}

int32_t put_functions(ZLR_task *task, function_model *model) { return ZLR_putnlfunc(task, model, structure, values); }
