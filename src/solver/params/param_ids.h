/* param_ids.h - numbers of parameters, by class. Included by params.h. Fixed numbers stand in zelor.h. */
#pragma once

#include "zelor.h"

/* double */
enum {
    DPAR_TIME_LIMIT = 0,
    DPAR_MIP_REL_GAP = 1,
    DPAR_MIP_ABS_GAP = 2,
    DPAR_PRIMAL_FEASIBILITY_TOL = 3,
    DPAR_DUAL_FEASIBILITY_TOL = 4,
    DPAR_MIP_FEASIBILITY_TOL = 5,
    DPAR_IPM_OPTIMALITY_TOL = 6,
    DPAR_PDLP_OPTIMALITY_TOL = 7,
    DPAR_DATA_TOL_COEF = ZLR_DPAR_DATA_TOL_COEF, /* 8 */
    DPAR_SIMPLEX_OBJECTIVE_BOUND = 9,
    DPAR_MIP_OBJECTIVE_TARGET = 10,
    DPAR_BOUND_INFINITE = ZLR_DPAR_BOUND_INFINITE, /* 11 */
    DPAR_LOG_INTERVAL = 12,
    DPAR_CHECK_TOL = 13, /* what the check of an answer takes, relative */
    DPAR_MIP_HEURISTIC_EFFORT = 14,
    DPAR_SIMPLEX_COST_PERTURBATION = 15,
    DPAR_SIMPLEX_BOUND_PERTURBATION = 16,
    DPAR_ANALYZE_INFEAS_TIME_LIMIT = 17 /* seconds for making an infeasible subproblem small */
};

/* integer */
enum {
    IPAR_OPTIMIZER = 0,
    IPAR_THREADS = 1,
    IPAR_RANDOM_SEED = 2,
    IPAR_PRESOLVE_LEVEL = 3,
    IPAR_SIMPLEX_MAX_ITERATIONS = 4,
    IPAR_IPM_MAX_ITERATIONS = 5,
    IPAR_PDLP_MAX_ITERATIONS = 6,
    IPAR_MIP_MAX_NODES = 7,
    IPAR_MIP_MAX_SOLUTIONS = 8,
    IPAR_IPM_CROSSOVER = 9,
    IPAR_WRITE_LP_RANGES = 10,
    IPAR_READ_MPS_FORMAT = 11,
    IPAR_RESULT_SOLUTION = 12, /* the solution in RESULT_FILE */
    IPAR_SIMPLEX_SCALING = 13,
    IPAR_SIMPLEX_DUAL_PRICING = 14,
    IPAR_SIMPLEX_PRIMAL_PRICING = 15,
    IPAR_IPM_HIPO_SYSTEM = 16,
    IPAR_IPM_HIPO_ORDERING = 17,
    IPAR_PRESOLVE_RULES_OFF = 18,
    IPAR_MIP_DETECT_SYMMETRY = 19,
    IPAR_MIP_RESTARTS = 20,
    IPAR_MIP_CUTS_AT_NODES = 21,
    IPAR_MIP_MAX_STALL_NODES = 22,
    IPAR_MIP_MAX_START_NODES = 23,
    IPAR_MIP_LP_SOLVER = 24,
    IPAR_MIP_FEASIBILITY_JUMP = 25,
    IPAR_MIP_RINS = 26,
    IPAR_MIP_RENS = 27,
    IPAR_WRITE_SYNC = 28,                                    /* written files are on the disk when a call returns */
    IPAR_ANALYZE_DETAIL = 29,                                /* how much the analyses print */
    IPAR_ANALYZE_INFEAS_EFFORT = 30,                         /* how far an infeasible subproblem is made small */
    IPAR_LOG_LEVEL = ZLR_IPAR_LOG_LEVEL,                     /* 34 */
    IPAR_PARAM_IGNORE_ERRORS = ZLR_IPAR_PARAM_IGNORE_ERRORS, /* 92 */
    IPAR_SENSITIVITY_ALL = ZLR_IPAR_SENSITIVITY_ALL,         /* 112 */
    IPAR_NONCONVEX = 113                                     /* what is done with a problem that is not convex */
};

/* string */
enum {
    SPAR_BAS_SOL_FILE = ZLR_SPAR_BAS_SOL_FILE, /* 0 */
    SPAR_DATA_FILE = ZLR_SPAR_DATA_FILE,       /* 1 */
    SPAR_RESULT_FILE = 2,
    SPAR_INT_SOL_FILE = ZLR_SPAR_INT_SOL_FILE,                 /* 3 */
    SPAR_ITR_SOL_FILE = ZLR_SPAR_ITR_SOL_FILE,                 /* 4 */
    SPAR_PARAM_WRITE_FILE = ZLR_SPAR_PARAM_WRITE_FILE,         /* 8 */
    SPAR_SENSITIVITY_FILE = ZLR_SPAR_SENSITIVITY_FILE,         /* 14 */
    SPAR_SENSITIVITY_RES_FILE = ZLR_SPAR_SENSITIVITY_RES_FILE, /* 15 */
    SPAR_STAT_LABEL = ZLR_SPAR_STAT_LABEL,                     /* 20 */
    SPAR_STAT_FILE = 21,
    SPAR_REPORT_FILE = 22
};

/* Values of NONCONVEX. */
enum { NONCONVEX_REFUSE = 0, NONCONVEX_LOCAL = 1 };

/* Values of OPTIMIZER. */
enum {
    OPTIMIZER_FREE = 0, /* the library chooses; large linear tasks race */
    OPTIMIZER_INTPNT = 1,
    OPTIMIZER_DUAL_SIMPLEX = 2,
    OPTIMIZER_PRIMAL_SIMPLEX = 3,
    OPTIMIZER_HIPO = 4,
    OPTIMIZER_PDLP = 5,
    OPTIMIZER_CONIC = 6,
    OPTIMIZER_ACTIVE_SET = 7
};

/* Values of PRESOLVE_LEVEL. */
enum { PRESOLVE_OFF = 0, PRESOLVE_ON = 1, PRESOLVE_CHOOSE = 2 };

/* Values of READ_MPS_FORMAT. */
enum { MPS_AUTO = 0, MPS_FREE = 1, MPS_FIXED = 2 };

/* Values of ANALYZE_DETAIL. */
enum { ANALYSIS_SCREEN = 0, ANALYSIS_FULL = 1 };

/* Values of ANALYZE_INFEAS_EFFORT. */
enum { INFEAS_CERTIFICATE = 0, INFEAS_IRREDUCIBLE = 1 };

/* Values of WRITE_LP_RANGES. */
enum { LP_RANGES_KEEP = 0, LP_RANGES_SPLIT = 1 };
