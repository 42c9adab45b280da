/* table.cpp - the one table of parameters. Everything else reads it.
 *
 * Rows are sorted by class, then number; the compiler checks it, and that defaults are in range. A row with an engine
 * option is handed to that engine as it stands when the parameter is not at its default, so that an engine's own default
 * holds otherwise. Where the engine's option is a text and the parameter an integer with words, the option gets the word
 * in lower case. */
#include "solver/params/params.h"

#include <iterator>
#include <limits>

static constexpr double inf = std::numeric_limits<double>::infinity();
static constexpr double int_max = std::numeric_limits<int32_t>::max();
static constexpr char off_on[] = "OFF=0 ON=1";

#define DOU(number, name, def, min, max, unit, engine, text)                                                           \
    {                                                                                                                  \
        ZLR_PAR_DOUBLE, number, name, def, min, max, "", nullptr, unit, engine, text                                   \
    }
#define INT(number, name, def, min, max, unit, engine, text)                                                           \
    {                                                                                                                  \
        ZLR_PAR_INT, number, name, def, min, max, "", nullptr, unit, engine, text                                      \
    }
#define WORD(number, name, def, min, max, words, engine, text)                                                         \
    {                                                                                                                  \
        ZLR_PAR_INT, number, name, def, min, max, "", words, "", engine, text                                          \
    }
#define STR(number, name, def, text)                                                                                   \
    {                                                                                                                  \
        ZLR_PAR_STR, number, name, 0.0, 0.0, 0.0, def, nullptr, "", nullptr, text                                      \
    }

// clang-format off
static constexpr param_row rows[] = {
    DOU(DPAR_TIME_LIMIT, "TIME_LIMIT", inf, 0.0, inf, "s", nullptr,
        "Wall-clock limit of an optimisation; inf: none"),
    DOU(DPAR_MIP_REL_GAP, "MIP_REL_GAP", 1e-4, 0.0, inf, "", "highs:mip_rel_gap",
        "Relative gap between incumbent and bound at which an integer solution is taken as optimal"),
    DOU(DPAR_MIP_ABS_GAP, "MIP_ABS_GAP", 1e-6, 0.0, inf, "", "highs:mip_abs_gap",
        "Absolute gap between incumbent and bound at which an integer solution is taken as optimal"),
    DOU(DPAR_PRIMAL_FEASIBILITY_TOL, "PRIMAL_FEASIBILITY_TOL", 1e-7, 1e-10, 1.0, "", "highs:primal_feasibility_tolerance",
        "Violation of rows and bounds that an engine takes as feasible"),
    DOU(DPAR_DUAL_FEASIBILITY_TOL, "DUAL_FEASIBILITY_TOL", 1e-7, 1e-10, 1.0, "", "highs:dual_feasibility_tolerance",
        "Violation of the signs of reduced costs that an engine takes as feasible"),
    DOU(DPAR_MIP_FEASIBILITY_TOL, "MIP_FEASIBILITY_TOL", 1e-6, 1e-10, 0.5, "", "highs:mip_feasibility_tolerance",
        "Distance from an integer that branch and cut takes as integer"),
    DOU(DPAR_IPM_OPTIMALITY_TOL, "IPM_OPTIMALITY_TOL", 1e-8, 1e-12, 1.0, "", "highs:ipm_optimality_tolerance",
        "Relative gap at which the interior-point method ends"),
    DOU(DPAR_PDLP_OPTIMALITY_TOL, "PDLP_OPTIMALITY_TOL", 1e-7, 1e-10, 1.0, "", "highs:pdlp_optimality_tolerance",
        "Relative gap at which the first-order method ends"),
    DOU(DPAR_DATA_TOL_COEF, "DATA_TOL_COEF", 1e-12, 0.0, 1.0, "", nullptr,
        "Matrix coefficients smaller than this are dropped when they are put or read"),
    DOU(DPAR_SIMPLEX_OBJECTIVE_BOUND, "SIMPLEX_OBJECTIVE_BOUND", inf, -inf, inf, "", "highs:objective_bound",
        "The dual simplex stops once the optimum of a minimisation is known to be above this; inf: none"),
    DOU(DPAR_MIP_OBJECTIVE_TARGET, "MIP_OBJECTIVE_TARGET", -inf, -inf, inf, "", "highs:objective_target",
        "Branch and cut stops once the objective is better than this; -inf: none"),
    DOU(DPAR_BOUND_INFINITE, "BOUND_INFINITE", 1e16, 1.0, inf, "", nullptr,
        "Bounds of at least this size are infinite"),
    DOU(DPAR_LOG_INTERVAL, "LOG_INTERVAL", 0.5, 0.0, 86400.0, "s", nullptr,
        "Least time between two lines of the progress table, after the first twenty"),
    DOU(DPAR_CHECK_TOL, "CHECK_TOL", 1e-6, 1e-12, 1.0, "", nullptr,
        "Relative violation up to which the check of an answer on the problem's own data takes it"),
    DOU(DPAR_MIP_HEURISTIC_EFFORT, "MIP_HEURISTIC_EFFORT", 0.05, 0.0, 1.0, "", "highs:mip_heuristic_effort",
        "Share of the work of branch and cut that is spent on heuristics"),
    DOU(DPAR_SIMPLEX_COST_PERTURBATION, "SIMPLEX_COST_PERTURBATION", 1.0, 0.0, inf, "",
        "highs:dual_simplex_cost_perturbation_multiplier",
        "Factor on the dual simplex's perturbation of costs; 0: none"),
    DOU(DPAR_SIMPLEX_BOUND_PERTURBATION, "SIMPLEX_BOUND_PERTURBATION", 1.0, 0.0, inf, "",
        "highs:primal_simplex_bound_perturbation_multiplier",
        "Factor on the primal simplex's perturbation of bounds; 0: none"),
    DOU(DPAR_ANALYZE_INFEAS_TIME_LIMIT, "ANALYZE_INFEAS_TIME_LIMIT", 60.0, 0.0, inf, "s", nullptr,
        "Seconds for reducing an infeasible subproblem; the smallest found so far is returned"),
    DOU(DPAR_CONIC_TOL_GAP_REL, "CONIC_TOL_GAP_REL", 1e-9, 0.0, 1.0, "", "clarabel:tol_gap_rel",
        "Clarabel: relative gap between primal and dual objective that it takes as closed"),
    DOU(DPAR_CONIC_TOL_GAP_ABS, "CONIC_TOL_GAP_ABS", 1e-9, 0.0, inf, "", "clarabel:tol_gap_abs",
        "Clarabel: absolute gap that it takes as closed; one of the two gaps is enough"),
    DOU(DPAR_CONIC_TOL_FEAS, "CONIC_TOL_FEAS", 1e-9, 0.0, 1.0, "", "clarabel:tol_feas",
        "Clarabel: relative residual of rows, bounds, cones and duals that it takes as feasible"),
    DOU(DPAR_CONIC_TOL_INFEAS_REL, "CONIC_TOL_INFEAS_REL", 1e-8, 0.0, 1.0, "", "clarabel:tol_infeas_rel",
        "Clarabel: residual, relative to its value, of a proof that there is no feasible point or no finite optimum"),
    DOU(DPAR_CONIC_TOL_INFEAS_ABS, "CONIC_TOL_INFEAS_ABS", 1e-8, 0.0, inf, "", "clarabel:tol_infeas_abs",
        "Clarabel: least value of such a proof"),
    DOU(DPAR_CONIC_TOL_KTRATIO, "CONIC_TOL_KTRATIO", 1e-6, 1e-12, 1.0, "", "clarabel:tol_ktratio",
        "Clarabel: smaller values make it surer before it looks for such a proof"),
    DOU(DPAR_CONIC_REDUCED_TOL_GAP_REL, "CONIC_REDUCED_TOL_GAP_REL", 5e-5, 0.0, 1.0, "", "clarabel:reduced_tol_gap_rel",
        "Clarabel: as CONIC_TOL_GAP_REL, for a point that it takes as nearly optimal where it stalls"),
    DOU(DPAR_CONIC_REDUCED_TOL_GAP_ABS, "CONIC_REDUCED_TOL_GAP_ABS", 5e-5, 0.0, inf, "", "clarabel:reduced_tol_gap_abs",
        "Clarabel: as CONIC_TOL_GAP_ABS, where it stalls"),
    DOU(DPAR_CONIC_REDUCED_TOL_FEAS, "CONIC_REDUCED_TOL_FEAS", 1e-4, 0.0, 1.0, "", "clarabel:reduced_tol_feas",
        "Clarabel: as CONIC_TOL_FEAS, where it stalls"),
    DOU(DPAR_CONIC_REDUCED_TOL_INFEAS_REL, "CONIC_REDUCED_TOL_INFEAS_REL", 5e-5, 0.0, 1.0, "", "clarabel:reduced_tol_infeas_rel",
        "Clarabel: as CONIC_TOL_INFEAS_REL, where it stalls"),
    DOU(DPAR_CONIC_REDUCED_TOL_INFEAS_ABS, "CONIC_REDUCED_TOL_INFEAS_ABS", 5e-12, 0.0, inf, "", "clarabel:reduced_tol_infeas_abs",
        "Clarabel: as CONIC_TOL_INFEAS_ABS, where it stalls"),
    DOU(DPAR_CONIC_REDUCED_TOL_KTRATIO, "CONIC_REDUCED_TOL_KTRATIO", 1e-4, 1e-12, 1.0, "", "clarabel:reduced_tol_ktratio",
        "Clarabel: as CONIC_TOL_KTRATIO, where it stalls"),
    DOU(DPAR_CONIC_MAX_STEP_FRACTION, "CONIC_MAX_STEP_FRACTION", 0.99, 0.1, 0.99999, "", "clarabel:max_step_fraction",
        "Clarabel: share of the way to the boundary that a step goes at most"),
    DOU(DPAR_CONIC_MIN_STEP, "CONIC_MIN_STEP", 1e-4, 0.0, 0.5, "", "clarabel:min_terminate_step_length",
        "Clarabel: steps shorter than this count as a stall"),
    DOU(DPAR_CONIC_EQUILIBRATE_MIN, "CONIC_EQUILIBRATE_MIN", 1e-4, 1e-12, 1.0, "", "clarabel:equilibrate_min_scaling",
        "Clarabel: least factor of its scaling of rows and columns"),
    DOU(DPAR_CONIC_EQUILIBRATE_MAX, "CONIC_EQUILIBRATE_MAX", 1e+4, 1.0, 1e12, "", "clarabel:equilibrate_max_scaling",
        "Clarabel: largest factor of its scaling of rows and columns"),
    DOU(DPAR_CONIC_STATIC_REG_CONSTANT, "CONIC_STATIC_REG_CONSTANT", 1e-8, 0.0, 1.0, "", "clarabel:static_regularization_constant",
        "Clarabel: what is added to the diagonal of its linear systems"),
    DOU(DPAR_CONIC_STATIC_REG_PROPORTIONAL, "CONIC_STATIC_REG_PROPORTIONAL", 4.930380657631324e-32, 0.0, 1.0, "", "clarabel:static_regularization_proportional",
        "Clarabel: the same, as a share of the largest entry of the diagonal"),
    DOU(DPAR_CONIC_DYNAMIC_REG_THRESHOLD, "CONIC_DYNAMIC_REG_THRESHOLD", 1e-13, 0.0, 1.0, "", "clarabel:dynamic_regularization_eps",
        "Clarabel: pivots smaller than this are replaced"),
    DOU(DPAR_CONIC_DYNAMIC_REG_SHIFT, "CONIC_DYNAMIC_REG_SHIFT", 2e-7, 0.0, 1.0, "", "clarabel:dynamic_regularization_delta",
        "Clarabel: what they are replaced by"),
    DOU(DPAR_CONIC_REFINEMENT_TOL_REL, "CONIC_REFINEMENT_TOL_REL", 1e-13, 0.0, 1.0, "", "clarabel:iterative_refinement_reltol",
        "Clarabel: relative residual of a linear system that needs no refinement"),
    DOU(DPAR_CONIC_REFINEMENT_TOL_ABS, "CONIC_REFINEMENT_TOL_ABS", 1e-12, 0.0, 1.0, "", "clarabel:iterative_refinement_abstol",
        "Clarabel: absolute residual of a linear system that needs no refinement"),
    DOU(DPAR_CONIC_REFINEMENT_STOP_RATIO, "CONIC_REFINEMENT_STOP_RATIO", 5.0, 1.0, 1e6, "", "clarabel:iterative_refinement_stop_ratio",
        "Clarabel: refinement ends when a step makes the residual less than so many times smaller"),

    WORD(IPAR_OPTIMIZER, "OPTIMIZER", OPTIMIZER_FREE, 0, 7,
         "FREE=0 INTPNT=1 DUAL_SIMPLEX=2 PRIMAL_SIMPLEX=3 HIPO=4 PDLP=5 CONIC=6 ACTIVE_SET=7", nullptr,
         "Method for continuous problems; FREE: the library chooses and may race several. HIPO and CONIC take quadratic "
         "objectives as well, ACTIVE_SET only these, CONIC cones"),
    INT(IPAR_THREADS, "THREADS", 0, 0, 1024, "", nullptr,
        "Threads that an optimisation may use; 0: as many as the machine has cores"),
    INT(IPAR_RANDOM_SEED, "RANDOM_SEED", 0, 0, int_max, "", "highs:random_seed",
        "Seed of the engines' random numbers"),
    WORD(IPAR_PRESOLVE_LEVEL, "PRESOLVE_LEVEL", PRESOLVE_CHOOSE, 0, 2, "OFF=0 ON=1 CHOOSE=2", "highs:presolve",
         "Whether the problem is reduced before it is solved; CHOOSE: tiny ones are not"),
    INT(IPAR_SIMPLEX_MAX_ITERATIONS, "SIMPLEX_MAX_ITERATIONS", -1, -1, int_max, "", "highs:simplex_iteration_limit",
        "Limit of simplex iterations; -1: none"),
    INT(IPAR_IPM_MAX_ITERATIONS, "IPM_MAX_ITERATIONS", -1, -1, int_max, "", "highs:ipm_iteration_limit",
        "Limit of interior-point iterations; -1: none, and with 1000 the method counts as stalled"),
    INT(IPAR_PDLP_MAX_ITERATIONS, "PDLP_MAX_ITERATIONS", -1, -1, int_max, "", "highs:pdlp_iteration_limit",
        "Limit of first-order iterations; -1: none"),
    INT(IPAR_MIP_MAX_NODES, "MIP_MAX_NODES", -1, -1, int_max, "", "highs:mip_max_nodes",
        "Limit of nodes of branch and cut; -1: none"),
    INT(IPAR_MIP_MAX_SOLUTIONS, "MIP_MAX_SOLUTIONS", 0, 0, int_max, "", "highs:mip_max_improving_sols",
        "Branch and cut stops after this many improving solutions; 0: no limit"),
    WORD(IPAR_IPM_CROSSOVER, "IPM_CROSSOVER", 1, 0, 2, "OFF=0 ON=1 CHOOSE=2", "highs:run_crossover",
         "Whether a basic solution is made from the interior one"),
    WORD(IPAR_WRITE_LP_RANGES, "WRITE_LP_RANGES", LP_RANGES_KEEP, 0, 1, "KEEP=0 SPLIT=1", nullptr,
         "LP files: SPLIT writes l <= row <= u as two rows, for readers that lack the form"),
    WORD(IPAR_READ_MPS_FORMAT, "READ_MPS_FORMAT", MPS_AUTO, 0, 2, "AUTO=0 FREE=1 FIXED=2", nullptr,
         "MPS files: fields by blanks (FREE) or by columns (FIXED); AUTO: told from the text"),
    WORD(IPAR_RESULT_SOLUTION, "RESULT_SOLUTION", 0, 0, 1, off_on, nullptr,
         "Whether RESULT_FILE holds the values of rows and columns"),
    WORD(IPAR_SIMPLEX_SCALING, "SIMPLEX_SCALING", 2, 0, 4,
         "OFF=0 CHOOSE=1 EQUILIBRATION=2 FORCED_EQUILIBRATION=3 MAX_VALUE=4", "highs:simplex_scale_strategy",
         "How the simplex scales rows and columns"),
    WORD(IPAR_SIMPLEX_DUAL_PRICING, "SIMPLEX_DUAL_PRICING", -1, -1, 2, "CHOOSE=-1 DANTZIG=0 DEVEX=1 STEEPEST_EDGE=2",
         "highs:simplex_dual_edge_weight_strategy", "How the dual simplex picks the leaving row"),
    WORD(IPAR_SIMPLEX_PRIMAL_PRICING, "SIMPLEX_PRIMAL_PRICING", -1, -1, 2,
         "CHOOSE=-1 DANTZIG=0 DEVEX=1 STEEPEST_EDGE=2", "highs:simplex_primal_edge_weight_strategy",
         "How the primal simplex picks the entering column"),
    WORD(IPAR_IPM_HIPO_SYSTEM, "IPM_HIPO_SYSTEM", 0, 0, 2, "CHOOSE=0 AUGMENTED=1 NORMALEQ=2", "highs:hipo_system",
         "Linear system that HiPO factorises"),
    WORD(IPAR_IPM_HIPO_ORDERING, "IPM_HIPO_ORDERING", 0, 0, 3, "CHOOSE=0 METIS=1 AMD=2 RCM=3", "highs:hipo_ordering",
         "How HiPO orders its linear system"),
    INT(IPAR_PRESOLVE_RULES_OFF, "PRESOLVE_RULES_OFF", 0, 0, int_max, "", "highs:presolve_rule_off",
        "Reductions that presolve leaves out: sum of HiGHS's numbers (64 forcing rows, 4096 aggregator, 32768 probing ...)"),
    WORD(IPAR_MIP_DETECT_SYMMETRY, "MIP_DETECT_SYMMETRY", 1, 0, 1, off_on, "highs:mip_detect_symmetry",
         "Whether branch and cut looks for symmetries"),
    WORD(IPAR_MIP_RESTARTS, "MIP_RESTARTS", 1, 0, 1, off_on, "highs:mip_allow_restart",
         "Whether branch and cut may start again with a smaller problem"),
    WORD(IPAR_MIP_CUTS_AT_NODES, "MIP_CUTS_AT_NODES", 1, 0, 1, off_on, "highs:mip_allow_cut_separation_at_nodes",
         "Whether cuts are looked for below the root node"),
    INT(IPAR_MIP_MAX_STALL_NODES, "MIP_MAX_STALL_NODES", -1, -1, int_max, "", "highs:mip_max_stall_nodes",
        "Limit of nodes without progress; -1: none"),
    INT(IPAR_MIP_MAX_START_NODES, "MIP_MAX_START_NODES", 500, 0, int_max, "", "highs:mip_max_start_nodes",
        "Nodes spent on completing a start whose continuous columns do not fit"),
    WORD(IPAR_MIP_LP_SOLVER, "MIP_LP_SOLVER", 0, 0, 4, "CHOOSE=0 SIMPLEX=1 IPM=2 IPX=3 HIPO=4", "highs:mip_lp_solver",
         "Method for the linear relaxations that need no basis to start from"),
    WORD(IPAR_MIP_FEASIBILITY_JUMP, "MIP_FEASIBILITY_JUMP", 1, 0, 1, off_on, "highs:mip_heuristic_run_feasibility_jump",
         "Heuristic: feasibility jump, before the root relaxation"),
    WORD(IPAR_MIP_RINS, "MIP_RINS", 1, 0, 1, off_on, "highs:mip_heuristic_run_rins",
         "Heuristic: search where relaxation and incumbent agree"),
    WORD(IPAR_MIP_RENS, "MIP_RENS", 1, 0, 1, off_on, "highs:mip_heuristic_run_rens",
         "Heuristic: search among the roundings of the relaxation"),
    WORD(IPAR_WRITE_SYNC, "WRITE_SYNC", 1, 0, 1, off_on, nullptr,
         "Whether a written file is on the disk before it gets its name; OFF is faster, and a power cut may cost it"),
    WORD(IPAR_ANALYZE_DETAIL, "ANALYZE_DETAIL", ANALYSIS_SCREEN, 0, 1, "SCREEN=0 FULL=1", nullptr,
         "Analyses of problem and solution: a screen, or all names and classes"),
    WORD(IPAR_ANALYZE_INFEAS_EFFORT, "ANALYZE_INFEAS_EFFORT", INFEAS_IRREDUCIBLE, 0, 1, "CERTIFICATE=0 IRREDUCIBLE=1", nullptr,
         "Infeasible subproblem: what the certificate names, or reduced until each member is needed"),
    INT(IPAR_CONIC_MAX_ITERATIONS, "CONIC_MAX_ITERATIONS", 200, 0, int_max, "", "clarabel:max_iter",
        "Limit of Clarabel's iterations; at the default it counts as stalled there"),
    WORD(IPAR_CONIC_PRESOLVE, "CONIC_PRESOLVE", 1, 0, 1, off_on, "clarabel:presolve_enable",
         "Clarabel: whether sides of 1e20 and more, where BOUND_INFINITE lets them through, are left out"),
    WORD(IPAR_CONIC_EQUILIBRATE, "CONIC_EQUILIBRATE", 1, 0, 1, off_on, "clarabel:equilibrate_enable",
         "Clarabel: whether it scales rows and columns"),
    INT(IPAR_LOG_LEVEL, "LOG_LEVEL", 10, 0, 10, "", nullptr,
        "How much an optimisation prints; 0: nothing"),
    INT(IPAR_CONIC_EQUILIBRATE_ITERATIONS, "CONIC_EQUILIBRATE_ITERATIONS", 10, 0, 1000, "", "clarabel:equilibrate_max_iter",
        "Clarabel: rounds of scaling"),
    WORD(IPAR_CONIC_STATIC_REGULARIZATION, "CONIC_STATIC_REGULARIZATION", 1, 0, 1, off_on, "clarabel:static_regularization_enable",
         "Clarabel: whether the diagonal of its linear systems is shifted; they are refined against the true ones"),
    WORD(IPAR_CONIC_REFINEMENT, "CONIC_REFINEMENT", 1, 0, 1, off_on, "clarabel:iterative_refinement_enable",
         "Clarabel: whether solutions of its linear systems are refined"),
    INT(IPAR_CONIC_REFINEMENT_MAX_ITERATIONS, "CONIC_REFINEMENT_MAX_ITERATIONS", 10, 0, 1000, "", "clarabel:iterative_refinement_max_iter",
        "Clarabel: steps of refinement of one linear system at most"),
    WORD(IPAR_PARAM_IGNORE_ERRORS, "PARAM_IGNORE_ERRORS", 0, 0, 1, off_on, nullptr,
         "Whether errors in parameter files are told as warnings and passed over"),
    WORD(IPAR_SENSITIVITY_ALL, "SENSITIVITY_ALL", 0, 0, 2, "OFF=0 ON=1 NAME_ONLY=2", nullptr,
         "Sensitivity report of every row and column at the end of a run; NAME_ONLY: the report's file name is set"),
    WORD(IPAR_NONCONVEX, "NONCONVEX", NONCONVEX_REFUSE, 0, 1, "REFUSE=0 LOCAL=1", nullptr,
         "What is done with a quadratic problem that is not convex. LOCAL, a local solution, waits for a nonlinear engine: "
         "the problem is refused until then, and told so"),
    WORD(IPAR_QP_POLISH, "QP_POLISH", 1, 0, 1, "OFF=0 ON=1", nullptr,
         "Whether an answer of a quadratic problem is made exact: bounds and rows that hold become equations, and where "
         "that does not do it, what is left is solved for once more, magnified"),
    INT(IPAR_QP_MAX_ATTEMPTS, "QP_MAX_ATTEMPTS", 0, 0, 100, "", nullptr,
        "Attempts at a quadratic or conic problem, the first one or race included; 0: as many as help"),

    STR(SPAR_BAS_SOL_FILE, "BAS_SOL_FILE", "", "File that the basic solution is written to"),
    STR(SPAR_DATA_FILE, "DATA_FILE", "", "Problem file that is read"),
    STR(SPAR_RESULT_FILE, "RESULT_FILE", "",
        "JSON file that every optimisation leaves its result in; empty: none"),
    STR(SPAR_INT_SOL_FILE, "INT_SOL_FILE", "", "File that the integer solution is written to"),
    STR(SPAR_ITR_SOL_FILE, "ITR_SOL_FILE", "", "File that the interior-point solution is written to"),
    STR(SPAR_PARAM_WRITE_FILE, "PARAM_WRITE_FILE", "", "File that parameters are written to"),
    STR(SPAR_SENSITIVITY_FILE, "SENSITIVITY_FILE", "", "File that tells what to analyse for sensitivity"),
    STR(SPAR_SENSITIVITY_RES_FILE, "SENSITIVITY_RES_FILE", "", "File that the sensitivity report is written to"),
    STR(SPAR_STAT_LABEL, "STAT_LABEL", "", "Label of a run, in RESULT_FILE and in statistics"),
    STR(SPAR_STAT_FILE, "STAT_FILE", "", "File that statistics are appended to, one JSON object a line"),
    STR(SPAR_REPORT_FILE, "REPORT_FILE", "", "HTML file that reports a run, written after each optimisation"),
};
// clang-format on

#undef DOU
#undef INT
#undef WORD
#undef STR

static constexpr bool rows_sorted(void)
{
    for (size_t i = 1; i < std::size(rows); i++) {
        const param_row &a = rows[i - 1], &b = rows[i];
        if (a.param_class > b.param_class || (a.param_class == b.param_class && a.number >= b.number)) return false;
    }
    return true;
}

static constexpr bool rows_in_range(void)
{
    for (const param_row &row : rows) {
        const int32_t num = row.param_class == ZLR_PAR_DOUBLE ? param_num_double
                            : row.param_class == ZLR_PAR_INT  ? param_num_int
                                                              : param_num_str;
        if (row.number < 0 || row.number >= num) return false;
        if (!(row.def >= row.min && row.def <= row.max)) return false;
    }
    return true;
}

static_assert(rows_sorted(), "rows must be sorted by class and number, each number once");
static_assert(rows_in_range(), "numbers and defaults must be in range");

const param_row *param_table(int32_t *num)
{
    *num = static_cast<int32_t>(std::size(rows));
    return rows;
}
