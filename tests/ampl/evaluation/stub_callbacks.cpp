/* stub_callbacks.cpp - see stub_callbacks.h. */
#include "ampl/evaluation/stub_callbacks.h"

#include <limits>

// Last: its macros must not meet the standard headers.
#include "ampl/ampl.h"

struct stub_objects {
    ASL *stub = nullptr;
    Option_Info *options = nullptr;
    ampl_data *job = nullptr;
};

/* ---- What the stub says ---- */

static void take_columns(const ASL *asl, stub_callbacks *c)
{
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinite = std::numeric_limits<double>::infinity();
    c->num_var = n_var;
    c->num_con = n_con;
    c->num_rows = nlc;
    c->num_columns = ampl_nonlinear_columns(asl);
    for (int32_t j = 0; j < n_var; ++j) {
        int32_t key = 0;
        double lower = 0.0;
        double upper = 0.0;
        (void)ZLR_getbound(c->task, 0, j, &key, &lower, &upper);
        c->lower.push_back(key == ZLR_BK_UP || key == ZLR_BK_FR ? -infinite : lower);
        c->upper.push_back(key == ZLR_BK_LO || key == ZLR_BK_FR ? infinite : upper);
        c->start.push_back(X0 != nullptr && (havex0 == nullptr || havex0[j]) ? X0[j] : none);
    }
    c->linear.resize(static_cast<size_t>(n_var) + 1);
    (void)ZLR_getc(c->task, c->linear.data());
}

static void take_structure(stub_callbacks *c)
{
    std::vector<int32_t> sub(static_cast<size_t>(c->num_var) + 1);
    for (int32_t i = 0; i < c->num_rows; ++i) {
        int32_t num = 0;
        (void)ZLR_nlgetspfunc(c->handle, nullptr, nullptr, i, nullptr, &num, sub.data(), 0, 0, nullptr, 0, nullptr,
                              nullptr, nullptr);
        c->row_columns.emplace_back(sub.begin(), sub.begin() + num);
    }
    int32_t num = 0;
    (void)ZLR_nlgetspfunc(c->handle, nullptr, nullptr, 0, nullptr, nullptr, nullptr, 1, c->num_rows, nullptr, 0, &num,
                          nullptr, nullptr);
    c->hes_i.resize(static_cast<size_t>(num) + 1);
    c->hes_j.resize(static_cast<size_t>(num) + 1);
    (void)ZLR_nlgetspfunc(c->handle, nullptr, nullptr, 0, nullptr, nullptr, nullptr, 1, c->num_rows, nullptr,
                          std::max(num, 1), &num, c->hes_i.data(), c->hes_j.data());
    c->hes_i.resize(static_cast<size_t>(num));
    c->hes_j.resize(static_cast<size_t>(num));
}

bool open_callbacks(const std::string &stub, stub_callbacks *c)
{
    if (ZLR_makeenv(&c->env, nullptr) != ZLR_RES_OK || ZLR_makeemptytask(c->env, &c->task) != ZLR_RES_OK) return false;
    (void)ZLR_putintparam(c->task, ZLR_IPAR_AMPL_EXTENDED, 1);
    c->made = new stub_objects;
    std::string program = "zelor";
    std::string name = stub;
    char *argv[] = {program.data(), name.data(), nullptr};
    (void)ZLR_amplin(argv, &c->made->stub, &c->made->options, 0, c->task, &c->made->job);
    const ampl_data *job = c->made->job;
    if (job == nullptr || c->made->stub == nullptr) return false;
    if (job->asl == nullptr) return true;
    c->handle = c->made->job;
    take_columns(job->asl, c);
    take_structure(c);
    return true;
}

void close_callbacks(stub_callbacks *c)
{
    if (c->made != nullptr) ZLR_amplfree(&c->made->stub, &c->made->options, &c->made->job);
    delete c->made;
    (void)ZLR_deletetask(&c->task);
    (void)ZLR_deleteenv(&c->env);
    *c = stub_callbacks();
}

/* ---- Values ---- */

/* The arrays of a call, whatever of them is used. */
struct call_arrays {
    std::vector<int32_t> subi, begin, end, sub, gradsub, hes_i, hes_j;
    std::vector<double> yc, gradval, jac;
};

static call_arrays make_arrays(const stub_callbacks &c, const std::vector<double> &y)
{
    call_arrays a;
    a.yc.resize(static_cast<size_t>(c.num_con) + 1);
    for (int32_t i = 0; i < c.num_rows; ++i) {
        const auto k = static_cast<size_t>(i);
        a.subi.push_back(i);
        a.begin.push_back(static_cast<int32_t>(a.sub.size()));
        a.sub.insert(a.sub.end(), c.row_columns[k].begin(), c.row_columns[k].end());
        a.end.push_back(static_cast<int32_t>(a.sub.size()));
        if (k < y.size()) a.yc[k] = -y[k]; /* the callbacks take them away */
    }
    a.jac.resize(a.sub.size() + 1);
    a.sub.push_back(0);
    a.gradsub.resize(static_cast<size_t>(c.num_var) + 1);
    a.gradval.resize(static_cast<size_t>(c.num_var) + 1);
    a.hes_i.resize(c.hes_i.size() + 1);
    a.hes_j.resize(c.hes_i.size() + 1);
    return a;
}

point_values values_at(const stub_callbacks &c, const std::vector<double> &x)
{
    point_values v;
    call_arrays a = make_arrays(c, {});
    v.rows.resize(static_cast<size_t>(c.num_rows) + 1);
    v.code = ZLR_nlgetvafunc(c.handle, x.data(), 1.0, nullptr, &v.objective, nullptr, nullptr, nullptr, c.num_rows,
                             a.subi.data(), v.rows.data(), nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr,
                             nullptr, nullptr, nullptr);
    v.rows.pop_back();
    return v;
}

point_values derivatives_at(const stub_callbacks &c, const std::vector<double> &x, double weight,
                            const std::vector<double> &y)
{
    point_values v = values_at(c, x);
    if (v.code != 0) return v;
    call_arrays a = make_arrays(c, y);
    const auto num_hes = static_cast<int32_t>(c.hes_i.size());
    int32_t num_gradient = 0;
    int32_t found = 0;
    v.gradient.resize(static_cast<size_t>(c.num_var));
    v.lagrangian.resize(static_cast<size_t>(c.num_var) + 1);
    v.hessian.resize(c.hes_i.size() + 1);
    v.code = ZLR_nlgetvafunc(
        c.handle, x.data(), weight, a.yc.data(), nullptr, &num_gradient, a.gradsub.data(), a.gradval.data(), c.num_rows,
        a.subi.data(), nullptr, c.num_rows > 0 ? a.begin.data() : nullptr, a.end.data(), a.sub.data(), a.jac.data(),
        v.lagrangian.data(), std::max(num_hes, 1), &found, a.hes_i.data(), a.hes_j.data(), v.hessian.data());
    v.lagrangian.pop_back();
    v.hessian.pop_back();
    a.hes_i.pop_back();
    a.hes_j.pop_back();
    if (v.code == 0 && (found != num_hes || a.hes_i != c.hes_i || a.hes_j != c.hes_j)) v.code = -1;
    for (int32_t k = 0; k < num_gradient; ++k)
        v.gradient[static_cast<size_t>(a.gradsub[static_cast<size_t>(k)])] = a.gradval[static_cast<size_t>(k)];
    for (size_t i = 0; i < c.row_columns.size(); ++i)
        v.row_gradients.emplace_back(a.jac.begin() + a.begin[i], a.jac.begin() + a.end[i]);
    return v;
}
