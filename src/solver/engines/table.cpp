/* table.cpp - see table.h. */
#include "solver/engines/table.h"
#include "solver/engines/engines.h"
#include "solver/engines/loader.h"

#include <algorithm>
#include <cctype>
#include <cstring>

static constexpr engine_source sources[] = {
    {"highs", "HiGHS",
     "run scripts/install-deps of the source tree, or install HiGHS 1.10 or later and build with -DHIGHS_ROOT",
     loader_get},
    {"clarabel", "Clarabel",
     "run scripts/install-deps of the source tree, which gets cargo 1.71 or later to build it with", loader_get},
    {"ipopt", "Ipopt", "run scripts/install-deps of the source tree, or install Ipopt 3.11 or later, and build again",
     loader_get},
};
static constexpr engine_table default_table = {&sources[0], &sources[1], &sources[2]};

const engine_table *engine_table_default() { return &default_table; }

std::vector<engine_about> engine_describe()
{
    std::vector<engine_about> all;
    for (const engine_source &source : sources) {
        engine_about about;
        std::string message;
        const engine_adapter *adapter = source.load(source.name, &message);
        about.name = source.title;
        about.installed = adapter != nullptr;
        if (adapter != nullptr) {
            about.version = adapter->version();
            about.licence = adapter->licence;
        } else {
            about.advice = source.advice;
        }
        all.push_back(std::move(about));
    }
    return all;
}

const char *plan_method_name(engine_method method)
{
    switch (method) {
    case METHOD_DUAL_SIMPLEX: return "dual simplex";
    case METHOD_PRIMAL_SIMPLEX: return "primal simplex";
    case METHOD_INTPNT: return "interior point";
    case METHOD_HIPO: return "interior point HiPO";
    case METHOD_PDLP: return "first-order method PDLP";
    case METHOD_ACTIVE_SET: return "active-set method";
    case METHOD_MIP: return "branch and cut";
    case METHOD_CHOOSE: break;
    }
    return "engine's choice";
}

engine_option plan_number_option(const char *name, double value)
{
    engine_option o;
    o.name = name;
    o.param_class = ZLR_PAR_DOUBLE;
    o.dou = value;
    return o;
}

engine_option plan_word_option(const char *name, const char *word, int32_t value)
{
    engine_option o;
    o.name = name;
    o.param_class = ZLR_PAR_INT;
    o.integer = value;
    o.str = word;
    return o;
}

/* The word of a value in "OFF=0 ON=1", in lower case as engines spell their options; empty where there are no words. */
static std::string word_of(const char *words, int32_t value)
{
    const std::string all = words != nullptr ? words : "";
    for (size_t at = 0; at < all.size();) {
        const size_t end = std::min(all.find(' ', at), all.size());
        const size_t equal = all.find('=', at);
        if (equal < end && all.substr(equal + 1, end - equal - 1) == std::to_string(value)) {
            std::string word = all.substr(at, equal - at);
            for (char &c : word) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            return word;
        }
        at = end + 1;
    }
    return "";
}

std::vector<engine_option> plan_options(const engine_source *source, const param_set *params)
{
    std::vector<engine_option> options;
    const std::string prefix = std::string(source->name) + ":";
    int32_t num = 0;
    const param_row *rows = param_table(&num);

    for (const param_row *row = rows; row != rows + num; row++) {
        if (row->engine_option == nullptr || std::strncmp(row->engine_option, prefix.c_str(), prefix.size()) != 0)
            continue;
        if (param_is_default(params, row)) continue;
        engine_option o;
        o.name = row->engine_option + prefix.size();
        o.param_class = row->param_class;
        if (row->param_class == ZLR_PAR_DOUBLE) o.dou = param_dou(params, row->number);
        if (row->param_class == ZLR_PAR_INT) {
            o.integer = param_int(params, row->number);
            o.str = word_of(row->words, o.integer);
        }
        if (row->param_class == ZLR_PAR_STR) o.str = param_str(params, row->number);
        options.push_back(std::move(o));
    }
    return options;
}

static plan_step step_of(const engine_source *source, engine_method method, int32_t threads)
{
    plan_step step;
    step.source = source;
    step.method = method;
    step.threads = threads;
    return step;
}

static plan_step without_presolve(const engine_source *source, engine_method method, int32_t threads)
{
    plan_step step = step_of(source, method, threads);
    step.extra.push_back(plan_word_option("presolve", "off", 0));
    step.what = " without presolve";
    return step;
}

static plan_step without_scaling(const engine_source *source, engine_method method, int32_t threads)
{
    plan_step step = without_presolve(source, method, threads);
    step.extra.push_back(plan_word_option("simplex_scale_strategy", "off", 0));
    step.what = " without presolve and scaling";
    return step;
}

/* A method as the user wants it: the first-order one is of two codes. */
static plan_step chosen_step(const engine_source *source, engine_method method, int32_t threads,
                             const param_set *params)
{
    plan_step step = step_of(source, method, threads);
    if (method == METHOD_PDLP && param_int(params, IPAR_PDLP_CODE) == PDLP_HIPDLP)
        step.extra.push_back(plan_word_option("solver", "hipdlp", 0));
    return step;
}

/* Memory of one engine's copy and its work on a linear problem, from measurements: about 200 bytes a nonzero with the
 * factors, 500 a row or column. */
static double engine_bytes(const model *m)
{
    return 200.0 * static_cast<double>(m->a.row.size()) + 500.0 * (static_cast<double>(m->num_con) + m->num_var);
}

/* What a race may take of the memory, beyond the copy of its first engine. */
static bool fits(double bytes, const param_set *params, const plan_machine *machine)
{
    return machine->memory_bytes == 0 ||
           bytes <= param_dou(params, DPAR_RACE_MEMORY_SHARE) * static_cast<double>(machine->memory_bytes);
}

/* Whether a problem has as many nonzeros as the parameter says. The defaults of these are measured. RACE_MIN_NONZEROS, on
 * two cores over 47 problems: below 5000 a race is never quicker and up to 5 ms slower, above it costs nothing that shows
 * and is up to three times as quick. PRESOLVE_MIN_NONZEROS, over 70 problems: below 500 a run without presolve is up to
 * 8 % quicker, most of it code that is never paged in; from 1000 on either may win, and the large lose. */
static bool has_nonzeros(const model *m, const param_set *params, int32_t number)
{
    return m->a.row.size() >= static_cast<size_t>(param_int(params, number));
}

/* The methods that run side by side, the surest first. */
static std::vector<engine_method> racers_of(const model *m, int32_t threads, const param_set *params,
                                            const plan_machine *machine)
{
    std::vector<engine_method> racers = {METHOD_DUAL_SIMPLEX};
    if (param_int(params, IPAR_RACE_LINEAR) == 0 || !has_nonzeros(m, params, IPAR_RACE_MIN_NONZEROS)) return racers;
    racers.push_back(METHOD_INTPNT);
    if (has_nonzeros(m, params, IPAR_RACE_HIPO_MIN_NONZEROS)) racers.push_back(METHOD_HIPO);
    if (has_nonzeros(m, params, IPAR_RACE_PDLP_MIN_NONZEROS)) racers.push_back(METHOD_PDLP);
    const int32_t most = std::max(1, std::min(threads, param_int(params, IPAR_RACE_MAX_ENGINES)));
    if (racers.size() > static_cast<size_t>(most)) racers.resize(static_cast<size_t>(most));
    while (racers.size() > 1 && !fits(engine_bytes(m) * static_cast<double>(racers.size() - 1), params, machine))
        racers.pop_back();
    return racers;
}

static int32_t num_threads(const param_set *params, const plan_machine *machine)
{
    const int32_t asked = param_int(params, IPAR_THREADS);
    return asked > 0 ? asked : machine->cores;
}

static void plan_race(const engine_source *source, const model *m, const param_set *params, const plan_machine *machine,
                      engine_plan *plan)
{
    if (!has_nonzeros(m, params, IPAR_PRESOLVE_MIN_NONZEROS) &&
        param_int(params, IPAR_PRESOLVE_LEVEL) == PRESOLVE_CHOOSE) {
        plan->rounds.push_back({without_presolve(source, METHOD_DUAL_SIMPLEX, 1)});
        return;
    }
    std::vector<plan_step> round;
    for (const engine_method method : racers_of(m, num_threads(params, machine), params, machine))
        round.push_back(chosen_step(source, method, 1, params));
    plan->rounds.push_back(std::move(round));
}

static void limit_rounds(int32_t most, engine_plan *plan)
{
    if (most > 0 && plan->rounds.size() > static_cast<size_t>(most)) plan->rounds.resize(static_cast<size_t>(most));
}

/* What is tried when the first round has no answer that passes, in the order of what helped most often. */
static void plan_linear_chain(const engine_source *source, engine_plan *plan)
{
    const std::vector<plan_step> first = plan->rounds[0];
    for (const engine_method method : {METHOD_INTPNT, METHOD_DUAL_SIMPLEX})
        if (std::none_of(first.begin(), first.end(), [&](const plan_step &s) { return s.method == method; }))
            plan->rounds.push_back({step_of(source, method, 1)});
    plan->rounds.push_back({first[0].extra.empty() ? without_presolve(source, METHOD_DUAL_SIMPLEX, 1)
                                                   : step_of(source, METHOD_DUAL_SIMPLEX, 1)});
    plan->rounds.push_back({step_of(source, METHOD_PRIMAL_SIMPLEX, 1)});
    plan->rounds.push_back({without_presolve(source, METHOD_INTPNT, 1)});
    plan->rounds.push_back({without_scaling(source, METHOD_DUAL_SIMPLEX, 1)});
}

static engine_method method_of(int32_t optimizer)
{
    switch (optimizer) {
    case OPTIMIZER_INTPNT: return METHOD_INTPNT;
    case OPTIMIZER_PRIMAL_SIMPLEX: return METHOD_PRIMAL_SIMPLEX;
    case OPTIMIZER_HIPO: return METHOD_HIPO;
    case OPTIMIZER_PDLP: return METHOD_PDLP;
    default: return METHOD_DUAL_SIMPLEX;
    }
}

static void plan_continuous(const engine_source *source, const model *m, const param_set *params,
                            const plan_machine *machine, engine_plan *plan)
{
    const int32_t optimizer = param_int(params, IPAR_OPTIMIZER);
    const engine_method method = method_of(optimizer);
    const bool crosses = param_int(params, IPAR_IPM_CROSSOVER) != 0;
    const bool interior = method == METHOD_INTPNT || method == METHOD_HIPO || method == METHOD_PDLP;
    const bool keeps = method == METHOD_INTPNT && param_int(params, IPAR_IPM_KEEP_INTERIOR) != 0;

    plan->want_interior = keeps || (interior && !crosses);
    plan->sought[ZLR_SOL_ITR] = plan->want_interior;
    plan->sought[ZLR_SOL_BAS] = !interior || crosses;
    if (optimizer == OPTIMIZER_FREE)
        plan_race(source, m, params, machine, plan);
    else
        plan->rounds.push_back({chosen_step(source, method, interior ? num_threads(params, machine) : 1, params)});
    plan_linear_chain(source, plan);
    limit_rounds(param_int(params, IPAR_OPTIMIZER_MAX_ATTEMPTS), plan);
}

/* ---- quadratic and conic */

static plan_step tightened(const engine_source *source, double tolerance, const char *what)
{
    plan_step step = step_of(source, METHOD_INTPNT, 1);
    for (const char *name : {"tol_gap_abs", "tol_gap_rel", "tol_feas"})
        step.extra.push_back(plan_number_option(name, tolerance));
    step.what = what;
    return step;
}

/* By the user's tolerances, whose defaults are below the engine's own: an answer has to pass the check. */
static plan_step first_conic(const engine_source *source, const param_set *params)
{
    plan_step step = step_of(source, METHOD_INTPNT, 1);
    step.extra.push_back(plan_number_option("tol_gap_abs", param_dou(params, DPAR_CONIC_TOL_GAP_ABS)));
    step.extra.push_back(plan_number_option("tol_gap_rel", param_dou(params, DPAR_CONIC_TOL_GAP_REL)));
    step.extra.push_back(plan_number_option("tol_feas", param_dou(params, DPAR_CONIC_TOL_FEAS)));
    return step;
}

/* HiPO goes on to where it stalls: the nearer the optimum, the surer the bounds and rows that hold there. What it reaches by
 * its own tolerance is another point to polish. */
static plan_step first_hipo(const engine_source *source, const param_set *params)
{
    plan_step step = step_of(source, METHOD_HIPO, 1);
    if (param_is_default(params, param_find(ZLR_PAR_DOUBLE, DPAR_IPM_OPTIMALITY_TOL)))
        step.extra.push_back(plan_number_option("ipm_optimality_tolerance", 1e-11));
    return step;
}

/* Less is added to the systems that are solved, which then are solved less surely but more exactly. */
plan_step plan_sharp_step(const engine_source *source)
{
    plan_step step = tightened(source, 1e-11, " with tightened tolerances");
    step.extra.push_back(plan_number_option("static_regularization_constant", 1e-10));
    return step;
}

static plan_step unscaled(const engine_source *source, double tolerance)
{
    plan_step step = tightened(source, tolerance, " on unscaled data");
    step.extra.push_back(plan_word_option("equilibrate_enable", "", 0));
    return step;
}

/* Whether a second engine may have a copy as well. */
static bool fits_twice(const model *m, const param_set *params, const plan_machine *machine)
{
    return fits(engine_bytes(m) + 200.0 * static_cast<double>(m->qobj.size()), params, machine);
}

/* What an answer that misses the check, or only just passes it, is followed by: HiPO and the conic code stop for different
 * reasons, and each often ends where the other stalls. */
static void plan_quadratic(const engine_table *table, const model *m, const param_set *params,
                           const plan_machine *machine, bool cones, engine_plan *plan)
{
    const int32_t optimizer = param_int(params, IPAR_OPTIMIZER);
    const bool races = num_threads(params, machine) > 1 && param_int(params, IPAR_RACE_QUADRATIC) != 0 &&
                       param_int(params, IPAR_RACE_MAX_ENGINES) > 1 && fits_twice(m, params, machine);
    const bool any_conic = table->conic != nullptr && optimizer != OPTIMIZER_HIPO && optimizer != OPTIMIZER_ACTIVE_SET;
    const bool any_hipo = !cones && optimizer != OPTIMIZER_CONIC && optimizer != OPTIMIZER_ACTIVE_SET;

    plan->sought[ZLR_SOL_ITR] = true;
    std::vector<plan_step> round;
    if (any_hipo) round.push_back(first_hipo(table->linear, params));
    if (any_conic && (round.empty() || races)) round.push_back(first_conic(table->conic, params));
    if (!round.empty()) plan->rounds.push_back(std::move(round));
    if (any_hipo) plan->rounds.push_back({step_of(table->linear, METHOD_HIPO, 1)});
    plan->num_better = static_cast<int32_t>(plan->rounds.size());
    if (table->conic != nullptr) {
        plan->rounds.push_back({plan_sharp_step(table->conic)});
        plan->rounds.push_back({unscaled(table->conic, 1e-10)});
    }
    if (!cones) plan->rounds.push_back({step_of(table->linear, METHOD_ACTIVE_SET, 1)});
    if (optimizer == OPTIMIZER_ACTIVE_SET)
        std::rotate(plan->rounds.begin(), plan->rounds.end() - 1, plan->rounds.end());
    limit_rounds(param_int(params, IPAR_QP_MAX_ATTEMPTS), plan);
}

static void plan_integer(const engine_source *source, const param_set *params, const plan_machine *machine,
                         engine_plan *plan)
{
    const int32_t asked = param_int(params, IPAR_THREADS);
    /* The engine's own default: half of the cores. More did not pay. */
    const int32_t threads = asked > 0 ? asked : (machine->cores + 1) / 2;

    plan->sought[ZLR_SOL_ITG] = true;
    plan->rounds.push_back({step_of(source, METHOD_MIP, threads)});
    plan->rounds.push_back({without_presolve(source, METHOD_MIP, threads)});
    plan_step other = without_presolve(source, METHOD_MIP, threads);
    other.extra.push_back(plan_word_option("random_seed", "", param_int(params, IPAR_RANDOM_SEED) ^ 1));
    other.what = " without presolve, with another seed";
    plan->rounds.push_back({std::move(other)});
    limit_rounds(param_int(params, IPAR_OPTIMIZER_MAX_ATTEMPTS), plan);
}

static const char *quadratic_part(int32_t type)
{
    switch (type) {
    case ZLR_PROBTYPE_QO: return "a quadratic objective";
    case ZLR_PROBTYPE_QCQO: return "quadratic constraints";
    case ZLR_PROBTYPE_CONIC: return "cones";
    default: return "general nonlinear functions";
    }
}

engine_plan plan_make(const engine_table *table, const model *m, const param_set *params, const plan_machine *machine)
{
    engine_plan plan;
    const int32_t type = model_problem_type(m);

    if (type == ZLR_PROBTYPE_NL && model_num_int(m) == 0) {
        plan.sought[ZLR_SOL_ITR] = true; /* no rounds: see local.h */
    } else if (type != ZLR_PROBTYPE_LO && model_num_int(m) > 0) {
        plan.refusal = std::string("The problem has integer columns together with ") + quadratic_part(type) +
                       ", which this version does not solve; -removeitg relaxes them.";
    } else if (type != ZLR_PROBTYPE_LO) {
        plan_quadratic(table, m, params, machine, type != ZLR_PROBTYPE_QO, &plan);
        if (plan.rounds.empty())
            plan.refusal = std::string("The problem has ") + quadratic_part(type) + ", and no engine takes that.";
    } else if (model_num_int(m) > 0)
        plan_integer(table->linear, params, machine, &plan);
    else
        plan_continuous(table->linear, m, params, machine, &plan);
    return plan;
}
