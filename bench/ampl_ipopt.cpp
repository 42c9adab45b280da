/* ampl_ipopt.cpp - Ipopt alone on a stub: the AMPL Solver Library reads and evaluates it, Ipopt's C interface solves it,
 * with the settings that its engine module has, in one attempt, and the answer goes back in a .sol file. bench/nonlinear
 * measures zelor by it.
 *
 *   ampl_ipopt STUB [name=value ...]     a line "name value" each of status, objective, iterations and seconds */
#include <IpStdCInterface.h>

#include <cfloat>
#include <chrono>
#include <vector>

/* Last: it defines macros of everyday names. */
#include "ampl/asl_include.h"

struct peer_problem {
    ASL *asl;
    double sign; /* -1: maximised */
    int num_hessian, iterations;
    std::vector<double> weights; /* of the objectives: the first counts */
};

static double seconds_now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/* The library ends the process over a derivative that is not there, unless it has somewhere to go back to. */
template <typename call_type> static bool evaluate(ASL *asl, const call_type &call)
{
    Jmp_buf back;
    fint error = 0;
    err_jmp1 = &back;
    // NOLINTNEXTLINE(cert-err52-cpp): that is how the library goes back; nothing on the way has a destructor
    const bool has_value = setjmp(back.jb) == 0 && (call(&error), error == 0);
    err_jmp1 = nullptr;
    return has_value;
}

/* ---- what Ipopt asks for. Its word for a truth value is int in some versions and bool in others. */

template <typename boolean> static bool take_point(ASL *asl, double *x, boolean is_new)
{
    return !is_new || evaluate(asl, [&](fint *error) { xknowne(x, error); });
}

template <typename boolean> static boolean on_objective(int, double *x, boolean is_new, double *value, void *user)
{
    const auto *p = static_cast<peer_problem *>(user);
    ASL *asl = p->asl;
    *value = 0.0;
    return take_point(asl, x, is_new) &&
           (n_obj == 0 || evaluate(asl, [&](fint *error) { *value = p->sign * objval(0, x, error); }));
}

template <typename boolean> static boolean on_gradient(int n, double *x, boolean is_new, double *value, void *user)
{
    const auto *p = static_cast<peer_problem *>(user);
    ASL *asl = p->asl;
    std::fill_n(value, n, 0.0);
    if (!take_point(asl, x, is_new)) return 0;
    if (n_obj > 0 && !evaluate(asl, [&](fint *error) { objgrd(0, x, value, error); })) return 0;
    for (int j = 0; j < n && p->sign < 0.0; j++) value[j] = -value[j];
    return 1;
}

template <typename boolean> static boolean on_rows(int, double *x, boolean is_new, int, double *value, void *user)
{
    ASL *asl = static_cast<peer_problem *>(user)->asl;
    return take_point(asl, x, is_new) && evaluate(asl, [&](fint *error) { conval(x, value, error); });
}

template <typename boolean>
static boolean on_jacobian(int, double *x, boolean is_new, int m, int, int *row, int *col, double *value, void *user)
{
    ASL *asl = static_cast<peer_problem *>(user)->asl;
    if (value != nullptr)
        return take_point(asl, x, is_new) && evaluate(asl, [&](fint *error) { jacval(x, value, error); });
    for (int i = 0; i < m; i++)
        for (const cgrad *cg = Cgrad[i]; cg != nullptr; cg = cg->next) {
            row[cg->goff] = i;
            col[cg->goff] = cg->varno;
        }
    return 1;
}

template <typename boolean>
static boolean on_hessian(int n, double *x, boolean is_new, double weight, int, double *lambda, boolean, int, int *row,
                          int *col, double *value, void *user)
{
    auto *p = static_cast<peer_problem *>(user);
    ASL *asl = p->asl;
    if (value != nullptr) {
        p->weights[0] = p->sign * weight;
        return take_point(asl, x, is_new) &&
               evaluate(asl, [&](fint *) { sphes(value, -1, p->weights.data(), n_con > 0 ? lambda : nullptr); });
    }
    for (int j = 0; j < n; j++)
        for (fint k = sputinfo->hcolstarts[j]; k < sputinfo->hcolstarts[j + 1]; k++) {
            row[k] = j; /* the columns of the upper triangle are the rows of the lower one */
            col[k] = static_cast<int>(sputinfo->hrownos[k]);
        }
    return 1;
}

template <typename boolean>
static boolean on_iteration(int, int iteration, double, double, double, double, double, double, double, double, int,
                            void *user)
{
    static_cast<peer_problem *>(user)->iterations = iteration;
    return 1;
}

/* ---- */

static bool read_stub(peer_problem *p, const char *stub)
{
    ASL *asl = p->asl = ASL_alloc(ASL_read_pfgh);
    return_nofile = 1;
    amplflag = 1; /* an answer is wanted in a file */
    want_xpi0 = 1;
    FILE *file = jac0dim(stub, static_cast<ftnlen>(std::strlen(stub)));
    if (file == nullptr || pfgh_read(file, ASL_return_read_err) != 0) return false;
    p->sign = n_obj > 0 && objtype[0] != 0 ? -1.0 : 1.0;
    p->weights.resize(static_cast<size_t>(n_obj) + 1);
    p->num_hessian = static_cast<int>(sphsetup(-1, 1, n_con > 0, 1));
    return true;
}

/* As the engine module has them, and as it does with a first start without a point: until then Ipopt prints. */
static bool put_options(IpoptProblem ipopt, int num, char **pairs)
{
    const auto text = [](const char *c) { return const_cast<char *>(c); };
    if (!AddIpoptIntOption(ipopt, text("print_level"), 0) || !AddIpoptStrOption(ipopt, text("sb"), text("yes")) ||
        !AddIpoptStrOption(ipopt, text("option_file_name"), text("")))
        return false;
    (void)IpoptSolve(ipopt, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    if (!AddIpoptStrOption(ipopt, text("honor_original_bounds"), text("yes")) ||
        !AddIpoptNumOption(ipopt, text("nlp_lower_bound_inf"), -DBL_MAX) ||
        !AddIpoptNumOption(ipopt, text("nlp_upper_bound_inf"), DBL_MAX))
        return false;
    for (int k = 0; k < num; k++) {
        char *value = std::strchr(pairs[k], '=');
        if (value == nullptr) return false;
        *value++ = '\0';
        if (!AddIpoptStrOption(ipopt, pairs[k], value) &&
            !AddIpoptIntOption(ipopt, pairs[k], static_cast<int>(std::strtol(value, nullptr, 10))) &&
            !AddIpoptNumOption(ipopt, pairs[k], strtod(value, nullptr)))
            return false;
    }
    return true;
}

/* The point of the stub, or the one next to 0, within the bounds. */
static std::vector<double> start_of(const ASL *asl)
{
    std::vector<double> x(static_cast<size_t>(n_var), 0.0);
    for (ptrdiff_t j = 0; j < n_var; j++) {
        const double given = X0 != nullptr ? X0[j] : 0.0;
        x[static_cast<size_t>(j)] = std::min(std::max(given, LUv[2 * j]), LUv[2 * j + 1]);
    }
    return x;
}

/* Every other entry from `first` on. */
static std::vector<double> sides_of(const double *both, int num, int first)
{
    std::vector<double> side(static_cast<size_t>(num) + 1, 0.0);
    for (int k = 0; k < num; k++) side[static_cast<size_t>(k)] = both[2 * k + first];
    return side;
}

int main(int argc, char **argv)
{
    const double begin = seconds_now();
    peer_problem p = {};
    if (argc < 2 || !read_stub(&p, argv[1])) return 1;
    ASL *asl = p.asl;
    std::vector<double> x = start_of(asl), lambda(static_cast<size_t>(n_con) + 1), z_lower(x), z_upper(x);
    std::vector<double> lower = sides_of(LUv, n_var, 0), upper = sides_of(LUv, n_var, 1);
    std::vector<double> row_lower = sides_of(LUrhs, n_con, 0), row_upper = sides_of(LUrhs, n_con, 1);
    IpoptProblem ipopt =
        CreateIpoptProblem(n_var, lower.data(), upper.data(), n_con, row_lower.data(), row_upper.data(), nzc,
                           p.num_hessian, 0, on_objective, on_rows, on_gradient, on_jacobian, on_hessian);
    if (ipopt == nullptr || !SetIntermediateCallback(ipopt, on_iteration) || !put_options(ipopt, argc - 2, argv + 2))
        return 1;

    double objective = 0.0;
    const double start = seconds_now();
    const int status =
        IpoptSolve(ipopt, x.data(), nullptr, &objective, lambda.data(), z_lower.data(), z_upper.data(), &p);
    const double end = seconds_now();
    FreeIpoptProblem(ipopt);
    Printf("status %d\nobjective %.16g\niterations %d\nsolve %.6f\n", status, p.sign * objective, p.iterations,
           end - start);
    solve_code = status == Solve_Succeeded || status == Solved_To_Acceptable_Level ? 0 : 500;
    write_sol("Ipopt alone", x.data(), lambda.data(), nullptr);
    ASL_free(&p.asl);
    Printf("total %.6f\n", seconds_now() - begin);
    return 0;
}
