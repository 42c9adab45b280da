/* stub_judge.cpp - see ampl_support.h: judges a point by the stub's own data, read and evaluated by the AMPL Solver Library
 * without anything of the front end. */
#include "ampl_support.h"

#include "ampl/asl_include.h"

/* Sums up how a value stands between its bounds, and what its dual leaves open. */
struct side_check {
    double infeasibility = 0.0, gap = 0.0, complementarity = 0.0, loose_dual = 0.0;
};

/* `dual` is of a minimisation: positive pushes against the lower bound. `terms` is the size of what it is made of. */
static void check_side(side_check *c, double value, double lower, double upper, double dual, double terms)
{
    static constexpr double infinite = 1e20;
    const double below = lower > -infinite ? (lower - value) / (1.0 + std::fabs(lower)) : 0.0;
    const double above = upper < infinite ? (value - upper) / (1.0 + std::fabs(upper)) : 0.0;
    c->infeasibility = std::max({c->infeasibility, below, above});
    const double bound = dual > 0 ? lower : upper;
    if (std::fabs(bound) < infinite) {
        const double product = std::fabs(dual) * std::fabs(value - bound);
        c->gap += product;
        if (std::fabs(dual) > 1e-6 * (1.0 + terms)) c->complementarity = std::max(c->complementarity, product);
    } else
        c->loose_dual = std::max(c->loose_dual, std::fabs(dual) / (1.0 + terms));
}

static double integer_violation(ASL *asl, const double *x)
{
    double worst = 0.0;
    const int runs[4][2] = {{nlvb, nlvbi}, {nlvc, nlvci}, {nlvo, nlvoi}, {n_var, nbv + niv}};
    for (const auto &run : runs)
        for (int j = run[0] - run[1]; j < run[0]; ++j) worst = std::max(worst, std::fabs(x[j] - std::round(x[j])));
    return worst;
}

/* Reduced costs: the objective's gradient less the rows' gradients times the duals. */
static void judge_duals(ASL *asl, std::vector<double> *x, const std::vector<double> &y, side_check *c,
                        stub_judgement *j)
{
    fint error = 0;
    const auto num = static_cast<size_t>(n_var);
    std::vector<double> jacobian(static_cast<size_t>(nzc) + 1), row(static_cast<size_t>(n_con) + 1);
    std::vector<double> gradient(num + 1), terms(num + 1);
    if (n_obj > 0) objgrd(0, x->data(), gradient.data(), &error);
    for (size_t k = 0; k < num; ++k) terms[k] = std::fabs(gradient[k]);
    if (n_con > 0) conval(x->data(), row.data(), &error);
    if (n_con > 0) jacval(x->data(), jacobian.data(), &error);
    const double sign = j->maximise ? -1.0 : 1.0;
    for (size_t i = 0; i < static_cast<size_t>(n_con); ++i) {
        const double dual = y[i];
        for (const cgrad *cg = Cgrad[i]; cg != nullptr; cg = cg->next) {
            gradient[static_cast<size_t>(cg->varno)] -= dual * jacobian[static_cast<size_t>(cg->goff)];
            terms[static_cast<size_t>(cg->varno)] += std::fabs(dual * jacobian[static_cast<size_t>(cg->goff)]);
        }
        check_side(c, row[i], LUrhs[2 * i], LUrhs[2 * i + 1], sign * dual, std::fabs(dual));
    }
    for (size_t k = 0; k < num; ++k) check_side(c, (*x)[k], LUv[2 * k], LUv[2 * k + 1], sign * gradient[k], terms[k]);
    j->reduced_cost.assign(gradient.begin(), gradient.begin() + n_var);
    j->reduced_terms.assign(terms.begin(), terms.begin() + n_var);
}

stub_judgement judge_point(const std::string &stub, const std::vector<double> &x, const std::vector<double> &y)
{
    stub_judgement found;
    ASL *asl = ASL_alloc(ASL_read_fg);
    return_nofile = 1;
    FILE *file = jac0dim(stub.c_str(), static_cast<ftnlen>(stub.size()));
    if (file != nullptr && fg_read(file, 0) == 0 && x.size() == static_cast<size_t>(n_var)) {
        fint error = 0;
        side_check checked;
        std::vector<double> point = x, duals = y;
        point.resize(x.size() + 1);
        duals.resize(static_cast<size_t>(n_con) + 1);
        found.is_read = true;
        found.num_con = n_con;
        found.num_var = n_var;
        found.maximise = n_obj > 0 && objtype[0] == 1;
        if (n_obj > 0) found.objective = objval(0, point.data(), &error);
        judge_duals(asl, &point, duals, &checked, &found);
        found.infeasibility = std::max(checked.infeasibility, integer_violation(asl, point.data()));
        found.gap = checked.gap;
        found.complementarity = checked.complementarity;
        found.loose_dual = checked.loose_dual;
        found.is_read = error == 0;
    }
    ASL_free(&asl);
    return found;
}

bool read_sol_vectors(const std::string &stub, std::vector<double> *x, std::vector<double> *y)
{
    ASL *asl = ASL_alloc(ASL_read_f);
    double *x_found = nullptr;
    double *y_found = nullptr;
    char *message = nullptr;
    return_nofile = 1;
    FILE *file = jac0dim(stub.c_str(), static_cast<ftnlen>(stub.size()));
    if (file != nullptr && f_read(file, 0) == 0) message = read_soln(&x_found, &y_found);
    if (x_found != nullptr) x->assign(x_found, x_found + n_var);
    if (y_found != nullptr) y->assign(y_found, y_found + n_con);
    const bool is_read = message != nullptr;
    std::free(x_found);
    std::free(y_found);
    std::free(message);
    ASL_free(&asl);
    return is_read;
}
