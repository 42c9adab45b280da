/* local_attempts.cpp - see local_attempts.h. */
#include "solver/engines/local_attempts.h"

#include "solver/engines/gradient.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <random>

/* ---- the start */

/* The given start, or the point next to 0, within the bounds. */
static std::vector<double> point_of(const optimization *o)
{
    const model *m = o->problem.get();
    std::vector<double> x = o->start.x;
    x.resize(static_cast<size_t>(m->num_var), 0.0);
    for (size_t j = 0; j < x.size(); j++) x[j] = std::min(std::max(x[j], m->var_lower[j]), m->var_upper[j]);
    return x;
}

/* Every column moves by up to a tenth of its size, and stays within its bounds. */
static void perturb(const optimization *o, std::vector<double> *x)
{
    const model *m = o->problem.get();
    std::mt19937 random(static_cast<uint32_t>(param_int(&o->task->params, IPAR_RANDOM_SEED)) + 1u);
    std::uniform_real_distribution<double> share(-0.1, 0.1);
    for (size_t j = 0; j < x->size(); j++) {
        (*x)[j] += share(random) * std::max(1.0, std::fabs((*x)[j]));
        (*x)[j] = std::min(std::max((*x)[j], m->var_lower[j]), m->var_upper[j]);
    }
}

/* Bounds that are missing or far away are taken as a hundred off the start. */
static void scatter(const optimization *o, std::vector<double> *x)
{
    constexpr double reach = 100.0;
    const model *m = o->problem.get();
    std::mt19937 random(static_cast<uint32_t>(param_int(&o->task->params, IPAR_RANDOM_SEED)) + 2u);
    for (size_t j = 0; j < x->size(); j++) {
        const double lower = std::max(m->var_lower[j], (*x)[j] - reach);
        const double upper = std::min(m->var_upper[j], (*x)[j] + reach);
        const double share = static_cast<double>(random()) / 4294967295.0;
        (*x)[j] = lower + share * (upper - lower);
    }
}

/* The engine's multipliers from the library's; see smooth.h and zelor.h for the signs. */
static void multipliers_of(const optimization *o, double sign, smooth_start *start)
{
    solution at;
    solution_reset(&at, o->problem->num_con, o->problem->num_var);
    at.xx = start->x;
    at.y = o->start.y;
    at.has_primal = at.has_dual = true;
    if (!gradient_exists(o->problem.get(), &at)) return;
    for (const double y : at.y) start->lambda.push_back(-sign * y);
    for (const reduced_cost &d : gradient_reduced_costs(o->problem.get(), nullptr, &at)) {
        start->z_lower.push_back(std::max(0.0, sign * d.value));
        start->z_upper.push_back(std::max(0.0, -sign * d.value));
    }
}

/* Multipliers of a start serve where the point is near an optimum already; far from it they mislead. */
static bool has_warm_start(const optimization *o)
{
    constexpr double near = 1e4; /* times the tolerances */
    const int32_t wanted = param_int(&o->task->params, IPAR_NLP_WARM_START);
    const model *m = o->problem.get();
    if (wanted == NLP_WARM_START_OFF || o->start.x.size() != static_cast<size_t>(m->num_var) ||
        o->start.y.size() != static_cast<size_t>(m->num_con))
        return false;
    if (wanted == NLP_WARM_START_ON) return true;
    engine_answer given;
    solution sol;
    given.x = o->start.x;
    given.y = o->start.y;
    const check_result found = answer_to_solution(m, &o->tol, &given, ZLR_SOL_ITR, &sol);
    return m->num_con > 0 && found.primal <= near && found.dual <= near;
}

smooth_start local_start(const optimization *o, const local_attempt *attempt, double sign)
{
    smooth_start start = {point_of(o), {}, {}, {}};
    if (attempt->is_warm) multipliers_of(o, sign, &start);
    if (attempt->is_perturbed) perturb(o, &start.x);
    if (attempt->is_random) scatter(o, &start.x);
    return start;
}

/* ---- settings */

/* Settings for a start next to a solution. */
static std::vector<engine_option> near_options(const param_set *params, double mu)
{
    std::vector<engine_option> options;
    for (const char *name : {"warm_start_bound_push", "warm_start_slack_bound_push", "warm_start_mult_bound_push"})
        options.push_back(plan_number_option(name, 1e-8));
    if (param_is_default(params, param_find(ZLR_PAR_DOUBLE, DPAR_NLP_MU_INIT)))
        options.push_back(plan_number_option("mu_init", mu));
    return options;
}

local_attempt local_sharper(const param_set *params)
{
    local_attempt attempt = {" from there, without scaling and relaxation", near_options(params, 1e-9)};
    attempt.goes_on = true;
    attempt.extra.push_back(plan_word_option("nlp_scaling_method", "none"));
    attempt.extra.push_back(plan_number_option("bound_relax_factor", 0.0));
    attempt.extra.push_back(plan_number_option("constr_viol_tol", 1e-8));
    return attempt;
}

/* From the measured settings: what helps a solve that has started badly is above all another path to the solution. */
std::vector<local_attempt> local_attempts(const optimization *o)
{
    const param_set *params = &o->task->params;
    const bool has_warm = has_warm_start(o);
    std::vector<local_attempt> all;
    if (has_warm) {
        all.push_back({" from the multipliers of the start", near_options(params, 1e-7), true});
    }
    const bool is_adaptive = param_int(params, IPAR_NLP_MU_STRATEGY) != 0;
    const bool is_scaled = param_int(params, IPAR_NLP_SCALING) != 0;
    all.push_back({"", {}});
    all.push_back({" from further within the bounds",
                   {plan_number_option("bound_push", 1.0), plan_number_option("bound_frac", 0.5)}});
    all.push_back({is_adaptive ? " with a monotone barrier" : " with an adaptive barrier",
                   {plan_word_option("mu_strategy", is_adaptive ? "monotone" : "adaptive")}});
    all.push_back({is_scaled ? " without scaling" : " with scaling",
                   {plan_word_option("nlp_scaling_method", is_scaled ? "none" : "gradient-based")}});
    local_attempt perturbed = {" from a perturbed start", {}};
    perturbed.is_perturbed = true;
    all.push_back(std::move(perturbed));
    local_attempt random = {" from a random start", {}};
    random.is_random = true;
    all.push_back(std::move(random));
    const int32_t most = param_int(params, IPAR_NLP_MAX_ATTEMPTS);
    if (most > 0 && all.size() > static_cast<size_t>(most)) all.resize(static_cast<size_t>(most));
    return all;
}

/* "name=value" pairs with blanks or commas between. Names are in small letters, as the engine has them: AMPL keywords may
 * have come in capitals. */
static std::vector<engine_option> options_of_text(const char *text)
{
    std::vector<engine_option> all;
    for (const char *c = text; *c != '\0';) {
        const size_t length = std::strcspn(c, " ,");
        const std::string pair(c, length);
        const size_t equal = pair.find('=');
        c += length + (c[length] != '\0' ? 1 : 0);
        if (pair.empty()) continue;
        engine_option o;
        o.name = pair.substr(0, equal);
        for (char &letter : o.name) letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        o.param_class = ZLR_PAR_STR; /* the engine takes the text for what the option is */
        o.str = equal == std::string::npos ? "" : pair.substr(equal + 1);
        all.push_back(std::move(o));
    }
    return all;
}

std::vector<engine_option> local_options(const optimization *o, const local_attempt *attempt)
{
    const param_set *params = &o->task->params;
    std::vector<engine_option> all = plan_options(o->table->smooth, params);
    all.insert(all.end(), attempt->extra.begin(), attempt->extra.end());
    for (engine_option &option : options_of_text(param_str(params, SPAR_NLP_OPTIONS))) all.push_back(std::move(option));
    return all;
}
