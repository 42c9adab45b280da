/* functions.cpp - see functions.h. */
#include "solver/model/functions.h"

#include <algorithm>
#include <cmath>
#include <cstring>

static bool all_finite(const std::vector<double> &v)
{
    return std::all_of(v.begin(), v.end(), [](double value) { return std::isfinite(value); });
}

static int32_t count_of(const std::vector<int32_t> &v) { return static_cast<int32_t>(v.size()); }

static bool in_range(const std::vector<int32_t> &v, int32_t end)
{
    return std::all_of(v.begin(), v.end(), [end](int32_t k) { return k >= 0 && k < end; });
}

/* ---- the structure */

static int32_t learn_rows(model_functions *f)
{
    std::vector<int32_t> column(static_cast<size_t>(f->num_var));
    f->row.clear();
    f->start = {0};
    f->col.clear();
    for (int32_t i = 0; i < f->num_con; i++) {
        int32_t is_there = 0;
        int32_t num = 0; /* the count first: a row names a column once, and so has no more than there are columns */
        int32_t res = f->get_structure(f->handle, nullptr, nullptr, i, &is_there, &num, nullptr, 0, 0, nullptr, 0,
                                       nullptr, nullptr, nullptr);
        if (res != ZLR_RES_OK) return res;
        if (is_there == 0) continue;
        if (num < 0 || num > f->num_var) return ZLR_RES_ERR_INDEX;
        res = f->get_structure(f->handle, nullptr, nullptr, i, nullptr, nullptr, column.data(), 0, 0, nullptr, 0,
                               nullptr, nullptr, nullptr);
        if (res != ZLR_RES_OK) return res;
        f->row.push_back(i);
        f->col.insert(f->col.end(), column.begin(), column.begin() + num);
        f->start.push_back(count_of(f->col));
    }
    return ZLR_RES_OK;
}

static int32_t learn_objective(model_functions *f)
{
    int32_t num = 0;
    f->objective_col.assign(static_cast<size_t>(f->num_var), 0);
    const int32_t res = f->get_structure(f->handle, &num, f->objective_col.data(), -1, nullptr, nullptr, nullptr, 0, 0,
                                         nullptr, 0, nullptr, nullptr, nullptr);
    if (res != ZLR_RES_OK) return res;
    if (num < 0 || num > f->num_var) return ZLR_RES_ERR_INDEX;
    f->objective_col.resize(static_cast<size_t>(num));
    return in_range(f->objective_col, f->num_var) ? ZLR_RES_OK : ZLR_RES_ERR_INDEX;
}

/* With multipliers, so that it is the pattern of the whole Lagrangian. */
static int32_t learn_hessian(model_functions *f)
{
    const int32_t numi = count_of(f->row);
    int32_t num = 0;
    f->hes_row.clear();
    f->hes_col.clear();
    int32_t res = f->get_structure(f->handle, nullptr, nullptr, -1, nullptr, nullptr, nullptr, 1, numi, f->row.data(),
                                   0, &num, nullptr, nullptr);
    if (res != ZLR_RES_OK) return res;
    if (num < 0) return ZLR_RES_ERR_INDEX;
    if (num == 0) return ZLR_RES_OK;
    f->hes_row.resize(static_cast<size_t>(num));
    f->hes_col.resize(static_cast<size_t>(num));
    int32_t again = 0;
    res = f->get_structure(f->handle, nullptr, nullptr, -1, nullptr, nullptr, nullptr, 1, numi, f->row.data(), num,
                           &again, f->hes_row.data(), f->hes_col.data());
    if (res == ZLR_RES_OK && again != num) res = ZLR_RES_ERR_INDEX;
    return res;
}

int32_t functions_learn(int32_t num_con, int32_t num_var, model_functions *f, std::string *complaint)
{
    f->num_con = num_con;
    f->num_var = num_var;
    f->cache = function_cache{};
    int32_t res = learn_objective(f);
    if (res != ZLR_RES_OK) {
        *complaint = "the gradient of the objective names a column that is not there, or one twice";
        return res;
    }
    res = learn_rows(f);
    if (res == ZLR_RES_OK && !in_range(f->col, num_var)) res = ZLR_RES_ERR_INDEX;
    if (res != ZLR_RES_OK) {
        *complaint = "the gradient of a row names a column that is not there, or one twice";
        return res;
    }
    res = learn_hessian(f);
    const bool is_valid = in_range(f->hes_row, num_var) && in_range(f->hes_col, num_var);
    if (res == ZLR_RES_OK && !is_valid) res = ZLR_RES_ERR_INDEX;
    if (res != ZLR_RES_OK) *complaint = "the Hessian names a column that is not there, or its size changes";
    for (size_t k = 0; k < f->hes_row.size(); k++)
        if (f->hes_row[k] < f->hes_col[k]) std::swap(f->hes_row[k], f->hes_col[k]);
    return res;
}

/* ---- values */

static int32_t ask_values(const model_functions *f, const double *x, function_values *out)
{
    const int32_t numi = count_of(f->row);
    out->row.resize(f->row.size());
    out->objective = 0.0;
    const int32_t res = f->get_values(f->handle, x, 0.0, nullptr, &out->objective, nullptr, nullptr, nullptr, numi,
                                      f->row.data(), numi > 0 ? out->row.data() : nullptr, nullptr, nullptr, nullptr,
                                      nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
    if (res != ZLR_RES_OK) return res;
    return std::isfinite(out->objective) && all_finite(out->row) ? ZLR_RES_OK : ZLR_RES_ERR_NL_EVALUATION;
}

/* The count of the objective's entries is the evaluation's: the structure may name fewer. */
static int32_t ask_gradients(const model_functions *f, const double *x, function_values *out)
{
    function_cache *cache = &f->cache;
    const int32_t numi = count_of(f->row);
    int32_t num = 0;
    cache->sub.resize(static_cast<size_t>(f->num_var));
    cache->value.resize(cache->sub.size());
    out->gradient.resize(f->col.size());
    out->objective_gradient.assign(cache->sub.size(), 0.0);
    const int32_t res = f->get_values(f->handle, x, 0.0, nullptr, nullptr, &num, cache->sub.data(), cache->value.data(),
                                      numi, f->row.data(), nullptr, f->start.data(), f->start.data() + 1, f->col.data(),
                                      out->gradient.data(), nullptr, 0, nullptr, nullptr, nullptr, nullptr);
    if (res != ZLR_RES_OK) return res;
    for (size_t k = 0; k < static_cast<size_t>(num); k++)
        out->objective_gradient[static_cast<size_t>(cache->sub[k])] += cache->value[k];
    return all_finite(out->gradient) && all_finite(out->objective_gradient) ? ZLR_RES_OK : ZLR_RES_ERR_NL_EVALUATION;
}

/* The same bits mostly, which is told faster. */
static bool is_point(const std::vector<double> &x, size_t num, const double *other)
{
    if (x.size() != num) return false;
    return num == 0 || std::memcmp(x.data(), other, num * sizeof(double)) == 0 || std::equal(x.begin(), x.end(), other);
}

const function_values *functions_at(const model_functions *f, const double *x, bool gradients, int32_t *code)
{
    function_cache *cache = &f->cache;
    const auto n = static_cast<size_t>(f->num_var);
    const bool is_same = is_point(cache->x, n, x);
    if (!is_same) {
        cache->x.assign(x, x + n);
        cache->has_values = cache->has_gradients = false;
    }
    *code = ZLR_RES_OK;
    if (!cache->has_values) {
        *code = ask_values(f, x, &cache->at_x);
        cache->has_values = *code == ZLR_RES_OK;
    }
    if (cache->has_values && gradients && !cache->has_gradients) {
        *code = ask_gradients(f, x, &cache->at_x);
        cache->has_gradients = *code == ZLR_RES_OK;
    }
    return *code == ZLR_RES_OK ? &cache->at_x : nullptr;
}

static int32_t ask_hessian(const model_functions *f, const double *x, double weight, const double *y, double *out)
{
    function_cache *cache = &f->cache;
    const int32_t size = count_of(f->hes_row);
    int32_t num = 0;
    cache->sub.resize(f->hes_row.size());
    cache->other_sub.resize(f->hes_row.size());
    const int32_t res =
        f->get_values(f->handle, x, weight, y, nullptr, nullptr, nullptr, nullptr, y != nullptr ? count_of(f->row) : 0,
                      f->row.data(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, size, &num,
                      cache->sub.data(), cache->other_sub.data(), out);
    if (res != ZLR_RES_OK) return res;
    return num == size ? ZLR_RES_OK : ZLR_RES_ERR_NL_EVALUATION;
}

/* The program's call scales the rows' share by the weight and divides by it, and gives nothing at 0: there the share is got
 * as a difference of two calls with weight 1. */
int32_t functions_hessian(const model_functions *f, const double *x, double weight, const double *y, double *out)
{
    constexpr double least_weight = 1e-100;
    const size_t size = f->hes_row.size();
    const double *rows = f->row.empty() ? nullptr : y;
    int32_t res = ZLR_RES_OK;
    if (size == 0 || functions_at(f, x, false, &res) == nullptr) return res; /* values come before derivatives */
    if (rows == nullptr || std::fabs(weight) > least_weight) {
        res = ask_hessian(f, x, weight, rows, out);
    } else {
        res = ask_hessian(f, x, 1.0, rows, out);
        f->cache.value.resize(size);
        if (res == ZLR_RES_OK) res = ask_hessian(f, x, 1.0, nullptr, f->cache.value.data());
        for (size_t k = 0; k < size && res == ZLR_RES_OK; k++) out[k] -= f->cache.value[k];
    }
    if (res != ZLR_RES_OK) return res;
    return std::all_of(out, out + size, [](double value) { return std::isfinite(value); }) ? ZLR_RES_OK
                                                                                           : ZLR_RES_ERR_NL_EVALUATION;
}

int32_t functions_find_failure(const model_functions *f, const double *x)
{
    double value = 0.0;
    int32_t res = f->get_values(f->handle, x, 0.0, nullptr, &value, nullptr, nullptr, nullptr, 0, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
    if (res != ZLR_RES_OK || !std::isfinite(value)) return -1;
    for (const int32_t i : f->row) {
        value = 0.0;
        res = f->get_values(f->handle, x, 0.0, nullptr, nullptr, nullptr, nullptr, nullptr, 1, &i, &value, nullptr,
                            nullptr, nullptr, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
        if (res != ZLR_RES_OK || !std::isfinite(value)) return i;
    }
    return -2;
}
