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
        "Least time between two lines of the progress table, after the first ones (LOG_FIRST_LINES)"),
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
    DOU(DPAR_READ_TOL_CROSSED, "READ_TOL_CROSSED", 0.0, 0.0, 1.0, "", nullptr,
        "Lower bounds and sides that a file has above the upper ones by at most this become equal to them"),
    DOU(DPAR_READ_HUGE_COEF, "READ_HUGE_COEF", inf, 1.0, inf, "", nullptr,
        "Coefficients of a file of at least this size are warned of; inf: none"),
    DOU(DPAR_WRITE_TINY_COEF, "WRITE_TINY_COEF", 0.0, 0.0, 1.0, "", nullptr,
        "Matrix coefficients smaller than this are left out of problem files"),
    DOU(DPAR_WRITE_SOLUTION_ZERO_TOL, "WRITE_SOLUTION_ZERO_TOL", 0.0, 0.0, 1.0, "", nullptr,
        "Values and duals smaller than this are written as 0 into solution files"),
    DOU(DPAR_LOG_DELAY, "LOG_DELAY", 0.0, 0.0, 86400.0, "s", nullptr,
        "The progress table begins when an optimisation has taken this long"),

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
    WORD(IPAR_READ_FORMAT, "READ_FORMAT", READ_FORMAT_AUTO, 0, 4, "AUTO=0 CONTENT=1 MPS=2 LP=3 CBF=4", nullptr,
         "Format of a problem file: AUTO by the name, else by the content; CONTENT whatever the name; or one of them"),
    WORD(IPAR_READ_NAMES, "READ_NAMES", READ_NAMES_KEEP, 0, 1, "DROP=0 KEEP=1", nullptr,
         "Names of rows and columns of a problem file; DROP: they are numbered, which saves memory"),
    WORD(IPAR_READ_SENSE, "READ_SENSE", SENSE_KEEP, 0, 2, "KEEP=0 MIN=1 MAX=2", nullptr,
         "Sense of a problem that is read: as the file has it, or minimise or maximise whatever it says"),
    WORD(IPAR_READ_INTEGERS, "READ_INTEGERS", READ_INTEGERS_KEEP, 0, 1, "KEEP=0 RELAX=1", nullptr,
         "Integer columns of a problem file; RELAX: they are read as continuous ones, with their bounds"),
    WORD(IPAR_READ_FREE_ROWS, "READ_FREE_ROWS", READ_FREE_ROWS_KEEP, 0, 1, "KEEP=0 DROP=1", nullptr,
         "Rows of a problem file without a finite side, such as further ones of type N; DROP: left out"),
    WORD(IPAR_READ_CROSSED_BOUNDS, "READ_CROSSED_BOUNDS", CROSSED_TAKE, 0, 2, "TAKE=0 WARN=1 ERROR=2", nullptr,
         "What is done where a file has a lower bound or side above the upper one, so that nothing is feasible"),
    WORD(IPAR_READ_ENCODING, "READ_ENCODING", ENCODING_ANY, 0, 2, "ANY=0 UTF=1 ASCII=2", nullptr,
         "What names of a problem file must be made of: any bytes, UTF-8, or ASCII; others are an error"),
    INT(IPAR_READ_MAX_WARNINGS, "READ_MAX_WARNINGS", -1, -1, int_max, "", nullptr,
        "Warnings that are told of one problem file; further ones are counted; -1: all"),
    WORD(IPAR_READ_WARNINGS_AS_ERRORS, "READ_WARNINGS_AS_ERRORS", 0, 0, 1, off_on, nullptr,
         "Whether a problem file that gives cause for a warning is refused"),
    WORD(IPAR_READ_NEGATIVE_UPPER, "READ_NEGATIVE_UPPER", NEGATIVE_UPPER_FORMAT, 0, 3,
         "FORMAT=0 INFINITE=1 ZERO=2 ERROR=3", nullptr,
         "Lower bound of a column with an upper one below 0 and no other in the file; FORMAT: none in MPS, 0 in LP files"),
    WORD(IPAR_READ_MISSING_END, "READ_MISSING_END", MISSING_END_FORMAT, 0, 2, "FORMAT=0 WARN=1 ERROR=2", nullptr,
         "A file without ENDATA or End; FORMAT: an MPS file with its whole matrix is taken with a warning, an LP file is not"),
    WORD(IPAR_READ_MPS_DUPLICATES, "READ_MPS_DUPLICATES", DUPLICATES_ERROR, 0, 3, "ERROR=0 FIRST=1 LAST=2 ADD=3", nullptr,
         "MPS files: an entry of a row and column given again with another value is refused, or one counts, or the sum"),
    WORD(IPAR_READ_MPS_INTEGER_BOUNDS, "READ_MPS_INTEGER_BOUNDS", INTEGER_BOUNDS_BINARY, 0, 1, "BINARY=0 INFINITE=1", nullptr,
         "MPS files: upper bound of integer columns for which the file has no bounds, 1 or none"),
    WORD(IPAR_READ_MPS_OBJECTIVE_RHS, "READ_MPS_OBJECTIVE_RHS", OBJECTIVE_RHS_NEGATE, 0, 2, "NEGATE=0 KEEP=1 IGNORE=2", nullptr,
         "MPS files: the objective's right-hand side is minus its constant, the constant itself, or nothing"),
    WORD(IPAR_READ_LP_NEW_COLUMNS, "READ_LP_NEW_COLUMNS", NEW_COLUMNS_TAKE, 0, 1, "TAKE=0 ERROR=1", nullptr,
         "LP files: columns first met behind the constraints, which may be misspelt, are taken with a warning, or refused"),
    INT(IPAR_WRITE_DIGITS, "WRITE_DIGITS", 0, 0, 17, "", nullptr,
        "Significant digits of numbers in problem and solution files; 0: as few as read back as the same number"),
    WORD(IPAR_WRITE_NAMES, "WRITE_NAMES", WRITE_NAMES_KEEP, 0, 1, "NUMBER=0 KEEP=1", nullptr,
         "Names in problem files; NUMBER: c1, c2 ... and x1, x2 ..., for problems that go to others"),
    WORD(IPAR_WRITE_SENSE, "WRITE_SENSE", SENSE_KEEP, 0, 2, "KEEP=0 MIN=1 MAX=2", nullptr,
         "Sense in problem files: where it is not the problem's, the objective is written with its sign turned"),
    WORD(IPAR_WRITE_CONSTANT, "WRITE_CONSTANT", CONSTANT_KEEP, 0, 2, "KEEP=0 COLUMN=1 OMIT=2", nullptr,
         "Constant of the objective in problem files: as it is, as cost of a column fixed at 1, or left out"),
    WORD(IPAR_SENSITIVITY_ALL, "SENSITIVITY_ALL", 0, 0, 2, "OFF=0 ON=1 NAME_ONLY=2", nullptr,
         "Sensitivity report of every row and column at the end of a run; NAME_ONLY: the report's file name is set"),
    WORD(IPAR_NONCONVEX, "NONCONVEX", NONCONVEX_REFUSE, 0, 1, "REFUSE=0 LOCAL=1", nullptr,
         "What is done with a quadratic problem that is not convex. LOCAL, a local solution, waits for a nonlinear engine: "
         "the problem is refused until then, and told so"),
    WORD(IPAR_QP_POLISH, "QP_POLISH", 1, 0, 1, "OFF=0 ON=1", nullptr,
         "Whether an answer of a quadratic problem is made exact: bounds and rows that hold become equations"),
    INT(IPAR_QP_MAX_ATTEMPTS, "QP_MAX_ATTEMPTS", 0, 0, 100, "", nullptr,
        "Attempts at a quadratic or conic problem, the first one or race included; 0: as many as help"),
    WORD(IPAR_WRITE_HEADER, "WRITE_HEADER", HEADER_NONE, 0, 2, "NONE=0 PROGRAM=1 DATE=2", nullptr,
         "Comment at the top of problem files: none, what has written it, or that and when"),
    WORD(IPAR_WRITE_EXISTING, "WRITE_EXISTING", EXISTING_REPLACE, 0, 1, "REPLACE=0 REFUSE=1", nullptr,
         "What is done where a file of a problem, a solution or parameters is there already"),
    INT(IPAR_WRITE_GZIP_LEVEL, "WRITE_GZIP_LEVEL", 6, 1, 9, "", nullptr,
        "Compression of files whose names end in .gz, from 1, the fastest, to 9, the smallest"),
    WORD(IPAR_WRITE_MPS_LAYOUT, "WRITE_MPS_LAYOUT", MPS_LAYOUT_FREE, 0, 1, "FREE=0 FIXED=1", nullptr,
         "MPS files: FIXED keeps every field to its columns, with names of 8 and numbers of 12 characters"),
    WORD(IPAR_WRITE_MPS_OBJECTIVE_RHS, "WRITE_MPS_OBJECTIVE_RHS", OBJECTIVE_RHS_NEGATE, 0, 1, "NEGATE=0 KEEP=1", nullptr,
         "MPS files: whether the objective's constant stands in RHS with its sign turned"),
    WORD(IPAR_WRITE_MPS_INTEGERS, "WRITE_MPS_INTEGERS", MPS_INTEGERS_MARKERS, 0, 1, "MARKERS=0 BOUNDS=1", nullptr,
         "MPS files: integer columns stand between markers, or are told by bounds of the types BV, LI and UI"),
    WORD(IPAR_WRITE_MPS_QUADRATIC, "WRITE_MPS_QUADRATIC", MPS_QUADRATIC_QUADOBJ, 0, 2,
         "QUADOBJ=0 QMATRIX=1 QSECTION=2", nullptr,
         "MPS files: section of the objective's quadratic part; QSECTION: rows get it as well, in place of QCMATRIX"),
    INT(IPAR_WRITE_LP_LINE_LENGTH, "WRITE_LP_LINE_LENGTH", 78, 20, 100000, "", nullptr,
        "LP files: longest line, but for single terms that are longer"),
    WORD(IPAR_WRITE_SOLUTION_PARTS, "WRITE_SOLUTION_PARTS", SOLUTION_PARTS_ALL, 0, 2, "ALL=0 PRIMAL=1 COLUMNS=2", nullptr,
         "Solution files: all, without the duals, or the columns without duals alone"),
    WORD(IPAR_WRITE_SOLUTION_STATUS, "WRITE_SOLUTION_STATUS", SOLUTION_STATUS_ANY, 0, 2, "ANY=0 FEASIBLE=1 OPTIMAL=2", nullptr,
         "What a solution must be at least for its file to be written; one that is not is passed over with a message"),
    WORD(IPAR_LOG_PROBLEM, "LOG_PROBLEM", LOG_PROBLEM_ALL, 0, 2, "OFF=0 SIZES=1 ALL=2", nullptr,
         "Summary of the problem: none, without the ranges of its coefficients, or all"),
    WORD(IPAR_LOG_PROGRESS, "LOG_PROGRESS", LOG_PROGRESS_ALL, 0, 2, "OFF=0 NOTES=1 ALL=2", nullptr,
         "What an optimisation prints while it runs: nothing, who is at work and why, or the progress table as well"),
    WORD(IPAR_LOG_SOLUTION, "LOG_SOLUTION", LOG_SOLUTION_ALL, 0, 2, "OFF=0 STATUS=1 ALL=2", nullptr,
         "Summary of the solution: none, status and objective, or the largest violations as well"),
    WORD(IPAR_LOG_ENGINE, "LOG_ENGINE", 1, 0, 1, off_on, nullptr,
         "Whether the summary of the run is printed: engine, work, times"),
    INT(IPAR_LOG_DIGITS, "LOG_DIGITS", 11, 2, 17, "", nullptr,
        "Significant digits of objective values in the summary of the solution"),
    INT(IPAR_LOG_FIRST_LINES, "LOG_FIRST_LINES", 20, 0, int_max, "", nullptr,
        "Lines of the progress table that are printed as they come, before LOG_INTERVAL holds"),
    INT(IPAR_LOG_HEADER_EVERY, "LOG_HEADER_EVERY", 0, 0, int_max, "", nullptr,
        "Lines of the progress table after which its heading is printed again; 0: never"),
    WORD(IPAR_LOG_INCUMBENTS, "LOG_INCUMBENTS", 0, 0, 1, off_on, nullptr,
         "Whether every new incumbent that is seen gets a line of the progress table, whatever LOG_INTERVAL says"),
    WORD(IPAR_LOG_FILE_MODE, "LOG_FILE_MODE", LOG_FILE_REPLACE, 0, 1, "REPLACE=0 APPEND=1", nullptr,
         "What is done where LOG_FILE is there already"),
    INT(IPAR_RESULT_INDENT, "RESULT_INDENT", 2, -1, 16, "", nullptr,
        "Blanks by which each level of RESULT_FILE is indented; -1: all in one line"),
    WORD(IPAR_RESULT_VALUES, "RESULT_VALUES", RESULT_VALUES_ALL, 0, 2, "ALL=0 COLUMNS=1 NONZEROS=2", nullptr,
         "Which values RESULT_SOLUTION is about: of rows and columns, of columns, or those where value or dual is not 0"),
    WORD(IPAR_STAT_EVENTS, "STAT_EVENTS", STAT_EVENTS_ALL, 0, 2, "ALL=0 ANSWERED=1 FAILED=2", nullptr,
         "Optimisations that statistics collect: all, those with return code 0, or the others"),
    WORD(IPAR_REPORT_THEME, "REPORT_THEME", REPORT_THEME_AUTO, 0, 2, "AUTO=0 LIGHT=1 DARK=2", nullptr,
         "Colours of REPORT_FILE on a screen: as its reader's machine is set, or light or dark for all"),
    INT(IPAR_REPORT_LISTED, "REPORT_LISTED", 10, 1, 1000, "", nullptr,
        "Rows and columns that REPORT_FILE lists as those that matter most"),
    INT(IPAR_REPORT_MATRIX_CELLS, "REPORT_MATRIX_CELLS", 160, 4, 1000, "", nullptr,
        "Cells of the picture of the matrix in REPORT_FILE, in each direction at most"),

    STR(SPAR_BAS_SOL_FILE, "BAS_SOL_FILE", "", "File that the basic solution is written to"),
    STR(SPAR_DATA_FILE, "DATA_FILE", "", "Problem file that is read"),
    STR(SPAR_RESULT_FILE, "RESULT_FILE", "",
        "JSON file that every optimisation leaves its result in; empty: none"),
    STR(SPAR_INT_SOL_FILE, "INT_SOL_FILE", "", "File that the integer solution is written to"),
    STR(SPAR_ITR_SOL_FILE, "ITR_SOL_FILE", "", "File that the interior-point solution is written to"),
    STR(SPAR_READ_OBJECTIVE_ROW, "READ_OBJECTIVE_ROW", "",
        "MPS files: row of type N that is the objective, whatever OBJNAME says; empty: the first, or OBJNAME's"),
    STR(SPAR_READ_RHS_SET, "READ_RHS_SET", "", "MPS files: name of the right-hand sides that are taken; empty: the first"),
    STR(SPAR_READ_RANGES_SET, "READ_RANGES_SET", "", "MPS files: name of the ranges that are taken; empty: the first"),
    STR(SPAR_PARAM_WRITE_FILE, "PARAM_WRITE_FILE", "", "File that parameters are written to"),
    STR(SPAR_READ_BOUNDS_SET, "READ_BOUNDS_SET", "", "MPS files: name of the bounds that are taken; empty: the first"),
    STR(SPAR_WRITE_PROBLEM_NAME, "WRITE_PROBLEM_NAME", "", "Name of the problem in files; empty: its own"),
    STR(SPAR_WRITE_COMMENT, "WRITE_COMMENT", "", "Text that stands as a comment at the top of problem files"),
    STR(SPAR_LOG_FILE, "LOG_FILE", "", "File that all that is printed goes to as well, from then on"),
    STR(SPAR_RESULT_FIELDS, "RESULT_FIELDS", "",
        "Fields of RESULT_FILE that are written, with commas between; empty: all"),
    STR(SPAR_SENSITIVITY_FILE, "SENSITIVITY_FILE", "", "File that tells what to analyse for sensitivity"),
    STR(SPAR_SENSITIVITY_RES_FILE, "SENSITIVITY_RES_FILE", "", "File that the sensitivity report is written to"),
    STR(SPAR_STAT_FIELDS, "STAT_FIELDS", "", "Fields of statistics that are written, with commas between; empty: all"),
    STR(SPAR_REPORT_TITLE, "REPORT_TITLE", "", "Title of REPORT_FILE; empty: the problem's name"),
    STR(SPAR_STAT_LABEL, "STAT_LABEL", "", "Label of a run, in RESULT_FILE and in statistics"),
    STR(SPAR_STAT_FILE, "STAT_FILE", "", "File that statistics are appended to, one JSON object a line"),
    STR(SPAR_REPORT_FILE, "REPORT_FILE", "", "HTML file that reports a run, written after each optimisation"),
    STR(SPAR_REPORT_SECTIONS, "REPORT_SECTIONS", "",
        "Sections of REPORT_FILE, with commas between, by the names behind # in its links; empty: all"),
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
