/* filter_conic.cpp - see filter_conic.h. */
#include "solver/analysis/filter_conic.h"

#include "solver/conic/conic_form.h"
#include "solver/engines/answer.h"
#include "solver/engines/certificate.h"

#include <algorithm>
#include <utility>

/* An interior-point method shows less than the simplex: a ray of it is off by what it takes as converged. */
static constexpr double proof_tol = 1e-8;

bool filter_is_conic(const model *m) { return !m->qcon.empty() || !m->cones.empty(); }

/* The job is the engine's thread's while its work runs: the runner looks at its flags and its progress alone. */
static engine_answer solve_here(const engine_adapter *adapter, const std::shared_ptr<engine_job> &job,
                                const std::shared_ptr<const model> &problem, double time_limit_s)
{
    const std::shared_ptr<const model> own = job->problem;
    job->problem = problem;
    job->method = METHOD_INTPNT;
    job->time_limit_s = time_limit_s;
    adapter->solve(job);
    job->rest.reset();
    job->problem = own;
    const std::lock_guard<std::mutex> lock(job->mutex);
    return std::exchange(job->answer, {});
}

/* The problem that the engine gets, and the way back. */
struct asked_form {
    std::shared_ptr<const model> given;
    conic_map map;
};

static bool make_form(const std::shared_ptr<const model> &m, const std::shared_ptr<engine_job> &job, asked_form *form)
{
    form->given = m;
    if (m->qcon.empty()) return true;
    work_effort effort;
    std::shared_ptr<model> made;
    std::string message;
    effort.stop = &job->stop;
    if (conic_form(m.get(), true, &made, &form->map, &message, &effort) != ZLR_RES_OK || made == nullptr) return false;
    form->given = std::move(made);
    return true;
}

static bool is_proof(const model *m, const asked_form *form, const check_tolerances *tol, const engine_answer *answer,
                     solution *proof)
{
    solution at_form;
    check_tolerances sharp = *tol;
    sharp.dual = std::min(sharp.dual, proof_tol);
    solution_reset(&at_form, form->given->num_con, form->given->num_var, model_num_cones(form->given.get()));
    if (!certificate_from_dual_ray(form->given.get(), &sharp, answer->dual_ray, &at_form, answer->cone_dual))
        return false;
    if (form->given.get() == m)
        *proof = std::move(at_form);
    else
        conic_map_ray(m, &form->map, &at_form, proof);
    return true;
}

static bool is_point(const model *m, const check_tolerances *tol, engine_answer *answer)
{
    solution point;
    const auto columns = static_cast<size_t>(m->num_var);
    if (answer->x.size() < columns) return false;
    answer->x.resize(columns);
    answer->y.clear();
    return answer_to_solution(m, tol, answer, ZLR_SOL_ITR, &point).primal <= 1.0;
}

verdict filter_ask_conic(const engine_adapter *adapter, const std::shared_ptr<engine_job> &job,
                         const std::shared_ptr<const model> &m, const check_tolerances *tol, double time_limit_s,
                         solution *proof)
{
    asked_form form;
    if (!make_form(m, job, &form)) return NOT_SETTLED;
    engine_answer answer = solve_here(adapter, job, form.given, time_limit_s);
    const bool may_prove = answer.status == ENGINE_PRIMAL_INFEASIBLE || !answer.dual_ray.empty();
    if (may_prove && is_proof(m.get(), &form, tol, &answer, proof)) return IS_INFEASIBLE;
    return is_point(m.get(), tol, &answer) ? IS_FEASIBLE : NOT_SETTLED;
}
