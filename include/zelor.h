/* zelor.h - the interface of the solver library libzelor64_8_1.
 *
 * The library owns problems (tasks), file formats, parameters, optimisers, reports and return codes. This header
 * compiles as C11 and as C++20.
 *
 * What holds for every entry, and is not repeated below:
 *
 * Handles    ZLR_env and ZLR_task are opaque. A null handle gives ZLR_RES_ERR_NULL_HANDLE, never a crash. A task
 *            belongs to the environment that made it and is deleted before it.
 * Results    Entries return a return code: ZLR_RES_OK (0), or a number of the code table. See ZLR_getresponseclass.
 *            After an error the task is as it was before the call, unless an entry says otherwise.
 * Messages   An error that has more to tell than its code (a line of a file, a name, a range) is written once to the
 *            error stream of the task, ZLR_STREAM_ERR, by the entry that returns the code.
 * Outputs    A null pointer for an output means "not wanted". Outputs are written only when the result is ZLR_RES_OK.
 * Indices    Rows (constraints), columns (variables) and parameters are numbered from 0. An index out of range gives
 *            ZLR_RES_ERR_INDEX.
 * Values     Doubles in the model's own units. A bound whose size is at least the parameter BOUND_INFINITE
 *            (default 1e16) is infinite. NaN is refused with ZLR_RES_ERR_NAN.
 * Text       UTF-8, ends in 0. Texts given are copied. Texts returned through `const char **` live as long as the
 *            process.
 * Ownership  Memory returned to the caller was allocated by the library and goes back through ZLR_freetask or
 *            ZLR_freeenv of the same handle (the debug forms are equivalent), at the latest before that handle is
 *            deleted. A pointer that the handle did not hand out is left alone.
 * Threads    Calls on one task come from one thread at a time; different tasks may be used in different threads.
 *            Functions given by the caller are called on the thread that called into the library.
 * Duals      For a minimisation the reduced cost of column j is c_j minus the sum over i of y_i a_ij, and y is the
 *            lower dual minus the upper dual of the row. In both senses y_i is the change of the optimal value for one
 *            unit more right-hand side, so the multiplier of an active lower side is at least 0 in a minimisation and
 *            at most 0 in a maximisation.
 */
#ifndef ZELOR_H
#define ZELOR_H

#include <stdint.h>

#if defined(_WIN32)
#if defined(ZLR_BUILD_LIBRARY)
#define ZLR_API __declspec(dllexport)
#else
#define ZLR_API __declspec(dllimport)
#endif
#else
#define ZLR_API __attribute__((visibility("default")))
#endif

#if defined(__MINGW32__) /* C++ programs get the C99 functions there, whatever the system's own can */
#define ZLR_PRINTF(fmt, args) __attribute__((format(gnu_printf, fmt, args)))
#elif defined(__GNUC__)
#define ZLR_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define ZLR_PRINTF(fmt, args)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Constants -------------------------------------------------------------------------------------------------- */

typedef struct ZLR_env ZLR_env;
typedef struct ZLR_task ZLR_task;

/* Solution kinds. */
enum { ZLR_SOL_ITR = 0 /* interior point */, ZLR_SOL_BAS = 1 /* basic */, ZLR_SOL_ITG = 2 /* integer */ };

/* Streams. Text written to the message, error or warning stream also reaches the log stream, which is their union. */
enum { ZLR_STREAM_LOG = 0, ZLR_STREAM_MSG = 1, ZLR_STREAM_ERR = 2, ZLR_STREAM_WRN = 3, ZLR_STREAM_COUNT = 4 };

/* Bound keys: which of the two bounds hold. ZLR_BK_RANGE: both, and they differ. */
enum { ZLR_BK_LO = 0, ZLR_BK_UP = 1, ZLR_BK_FX = 2, ZLR_BK_FR = 3, ZLR_BK_RA = 4 };

/* Objective sense. */
enum { ZLR_SENSE_MIN = 0, ZLR_SENSE_MAX = 1 };

/* Variable types. */
enum { ZLR_VAR_CONT = 0, ZLR_VAR_INT = 1 };

/* Cone types, x the members in their order: quadratic, x1 >= sqrt(x2^2 + ... + xk^2); rotated, 2 x1 x2 >= x3^2 + ... + xk^2
 * with x1 and x2 at least 0. Each is its own dual cone. */
enum { ZLR_CT_QUAD = 0, ZLR_CT_RQUAD = 1 };

/* Which side of the matrix an entry speaks of. */
enum { ZLR_ACC_VAR = 0 /* columns */, ZLR_ACC_CON = 1 /* rows */ };

/* Problem types. Integer columns do not change the type. */
enum {
    ZLR_PROBTYPE_LO = 0,   /* linear */
    ZLR_PROBTYPE_QO = 1,   /* quadratic objective */
    ZLR_PROBTYPE_QCQO = 2, /* quadratic constraints */
    ZLR_PROBTYPE_CONIC = 3,
    ZLR_PROBTYPE_NL = 4 /* general nonlinear, through callbacks */
};

/* Problem status. */
enum {
    ZLR_PRO_UNKNOWN = 0,
    ZLR_PRO_PRIM_AND_DUAL_FEAS = 1,
    ZLR_PRO_PRIM_FEAS = 2,
    ZLR_PRO_DUAL_FEAS = 3,
    ZLR_PRO_PRIM_INFEAS = 4,
    ZLR_PRO_DUAL_INFEAS = 5,
    ZLR_PRO_PRIM_AND_DUAL_INFEAS = 6,
    ZLR_PRO_ILL_POSED = 7,
    ZLR_PRO_PRIM_INFEAS_OR_UNBND = 8
};

/* Solution status. 8 to 11 are the near versions of 2, 3, 5 and 6. */
enum {
    ZLR_SOLSTA_UNKNOWN = 0,
    ZLR_SOLSTA_OPTIMAL = 1,
    ZLR_SOLSTA_PRIM_FEAS = 2,
    ZLR_SOLSTA_DUAL_FEAS = 3,
    ZLR_SOLSTA_PRIM_AND_DUAL_FEAS = 4,
    ZLR_SOLSTA_PRIM_INFEAS_CER = 5,
    ZLR_SOLSTA_DUAL_INFEAS_CER = 6,
    ZLR_SOLSTA_NEAR_OPTIMAL = 7,
    ZLR_SOLSTA_NEAR_PRIM_FEAS = 8,
    ZLR_SOLSTA_NEAR_DUAL_FEAS = 9,
    ZLR_SOLSTA_NEAR_PRIM_INFEAS_CER = 10,
    ZLR_SOLSTA_NEAR_DUAL_INFEAS_CER = 11,
    ZLR_SOLSTA_INTEGER_OPTIMAL = 15,
    ZLR_SOLSTA_NEAR_INTEGER_OPTIMAL = 16
};

/* Status keys of rows and columns in a solution. */
enum {
    ZLR_SK_UNDEF = 0,
    ZLR_SK_BASIC = 1,
    ZLR_SK_SUPBAS = 2, /* superbasic: strictly between its bounds, or free at zero, and not in the basis */
    ZLR_SK_LOWER = 3,
    ZLR_SK_UPPER = 4,
    ZLR_SK_FIXED = 5,
    ZLR_SK_INFINITE = 6
};

/* Response classes of return codes. */
enum { ZLR_CLASS_OK = 0, ZLR_CLASS_WARNING = 1, ZLR_CLASS_TERMINATION = 2, ZLR_CLASS_ERROR = 3 };

/* Parameter classes. */
enum { ZLR_PAR_DOUBLE = 1, ZLR_PAR_INT = 2, ZLR_PAR_STR = 3 };

/* Parameter numbers that do not change from version to version. All others are best reached by name; docs/parameters.md
 * lists them. */
enum {
    ZLR_DPAR_DATA_TOL_COEF = 8,        /* coefficients below this size are dropped */
    ZLR_DPAR_BOUND_INFINITE = 11,      /* bounds of at least this size are infinite */
    ZLR_IPAR_LOG_LEVEL = 34,           /* 0 silent, 10 default */
    ZLR_IPAR_PARAM_IGNORE_ERRORS = 92, /* 1: errors in parameter files are told and passed over */
    ZLR_IPAR_SENSITIVITY_ALL = 112,    /* 1: sensitivity for everything */
    ZLR_IPAR_AMPL_EXTENDED = 172,      /* 1: the AMPL front end's practical mode */
    ZLR_SPAR_BAS_SOL_FILE = 0,
    ZLR_SPAR_DATA_FILE = 1,
    ZLR_SPAR_INT_SOL_FILE = 3,
    ZLR_SPAR_ITR_SOL_FILE = 4,
    ZLR_SPAR_PARAM_WRITE_FILE = 8,
    ZLR_SPAR_SENSITIVITY_FILE = 14,
    ZLR_SPAR_SENSITIVITY_RES_FILE = 15,
    ZLR_SPAR_STAT_LABEL = 20
};

/* Integer information on the last optimisation; see ZLR_getintinf. */
enum { ZLR_IINF_IPM_ITERATIONS = 16, ZLR_IINF_NODES = 63, ZLR_IINF_SIMPLEX_ITERATIONS = 70 };

/* Return codes that a program is likely to test. The whole table, with texts, is docs/codes.md. */
enum {
    ZLR_RES_OK = 0,

    ZLR_RES_ERR_LICENSE = 1014,
    ZLR_RES_ERR_SPACE = 1051,     /* out of memory */
    ZLR_RES_ERR_FILE_OPEN = 1052, /* a file cannot be opened for writing */
    ZLR_RES_ERR_FILE_READ = 1053, /* a file cannot be opened or read */
    ZLR_RES_ERR_FILE_WRITE = 1054,
    ZLR_RES_ERR_NULL_HANDLE = 1070,
    ZLR_RES_ERR_NULL_POINTER = 1071,     /* an argument that must be given is null */
    ZLR_RES_ERR_FILE_FORMAT = 1100,      /* a file does not follow its format; the message tells where */
    ZLR_RES_ERR_FILE_UNSUPPORTED = 1101, /* a construct of the format that the library does not take */
    ZLR_RES_ERR_WRITE_FORMAT = 1102,     /* the format asked for cannot hold the task */
    ZLR_RES_ERR_PARAM_NAME = 1200,       /* no parameter of that name or number */
    ZLR_RES_ERR_PARAM_VALUE = 1201,      /* a value out of range, or no number, or no known word */
    ZLR_RES_ERR_ARGUMENT = 1230,         /* an argument has a value that the entry does not know */
    ZLR_RES_ERR_INDEX = 1235,
    ZLR_RES_ERR_NAN = 1236,
    ZLR_RES_ERR_BOUNDS = 1237,       /* lower bound above the upper one, or not as the bound key says */
    ZLR_RES_ERR_NO_SOLUTION = 1250,  /* that kind of solution is not defined */
    ZLR_RES_ERR_SOL_MISMATCH = 1251, /* a solution file does not fit the task */
    ZLR_RES_ERR_NO_REPAIR = 1252,    /* what may not be changed contradicts itself */
    ZLR_RES_ERR_QCON_EQUALITY = 1290,
    ZLR_RES_ERR_QCON_RANGE = 1292,
    ZLR_RES_ERR_NONCONVEX = 1293, /* a quadratic objective or row is not convex; the message names it */
    ZLR_RES_ERR_CONE = 1301, /* too few members, a column twice, an unknown type, a head that its bounds keep below 0 */
    ZLR_RES_ERR_NL_EVALUATION = 1433,
    ZLR_RES_ERR_NO_ENGINE = 1500,     /* no installed engine takes this type of problem */
    ZLR_RES_ERR_ENGINE = 1501,        /* every engine tried has failed; the log tells how */
    ZLR_RES_ERR_NOT_AVAILABLE = 1900, /* the entry is not available in this version */
    ZLR_RES_ERR_INTERNAL = 3000,
    ZLR_RES_ERR_AMPL_STUB = 3700,

    ZLR_RES_TRM_USER_STOP = 10000, /* the progress callback asked to stop */
    ZLR_RES_TRM_TIME_LIMIT = 10001,
    ZLR_RES_TRM_MAX_ITERATIONS = 10002,
    ZLR_RES_TRM_MAX_NODES = 10003,
    ZLR_RES_TRM_MAX_SOLUTIONS = 10004,
    ZLR_RES_TRM_OBJECTIVE = 10005, /* an objective limit was reached */
    ZLR_RES_TRM_MEMORY = 10006,
    ZLR_RES_TRM_STALL = 10007,            /* no engine got to an answer that passes the check */
    ZLR_RES_TRM_LOCAL_INFEASIBLE = 10008, /* nonlinear: the violation is least nearby, and not 0; proves nothing */
    ZLR_RES_TRM_DIVERGING = 10009         /* nonlinear: the columns grow without end; proves nothing */
};

/* ---- Functions given by the caller -------------------------------------------------------------------------------- */

/* Receives a piece of text of a stream. The text may hold several lines or a part of one. */
typedef void (*ZLR_streamfunc)(void *handle, const char *text);

/* What the optimiser knows of its progress. Infinite objective values mean "none yet". */
typedef struct ZLR_progress {
    double time_s;      /* since ZLR_optimize was called */
    int64_t iterations; /* simplex, interior-point and first-order iterations together */
    int64_t nodes;      /* of branch and bound; 0 for continuous problems */
    double primal_obj;  /* best known primal objective (integer: the incumbent) */
    double dual_obj;    /* best known dual objective (integer: the bound) */
} ZLR_progress;

/* The progress callback, polled at least twenty times a second while the optimiser runs, or another entry that asks engines
 * or makes factors. A result that is not 0 asks for a stop: ZLR_optimize then returns ZLR_RES_TRM_USER_STOP within 0.2 s and
 * keeps the best solution found. */
typedef int32_t (*ZLR_callbackfunc)(ZLR_task *task, void *handle, const ZLR_progress *progress);

/* Structure of the nonlinear part; null pointers are items that are not wanted. Returns 0, or not 0 for a failure.
 *
 *   numgrdobjnz, grdobjsub  columns of the objective's gradient; room for as many as there are columns. Columns of its linear
 *                           terms may lack
 *   i, convali              1 if row i has a function, else 0
 *   grdconinz, grdconisub   columns of the gradient of row i
 *   yo, numycnz, ycsub      not 0: the Hessian is to hold the objective's share; that of rows where numycnz is above 0
 *   maxnumhesnz, numhesnz   room for entries of the Hessian, and their count, which is always given
 *   hessubi, hessubj        the entries' places in the lower triangle, hessubi >= hessubj
 */
typedef int32_t (*ZLR_nlgetspfunc_t)(void *handle, int32_t *numgrdobjnz, int32_t *grdobjsub, int32_t i,
                                     int32_t *convali, int32_t *grdconinz, int32_t *grdconisub, int32_t yo,
                                     int32_t numycnz, const int32_t *ycsub, int32_t maxnumhesnz, int32_t *numhesnz,
                                     int32_t *hessubi, int32_t *hessubj);

/* Values of the nonlinear part at the point xx; null pointers are items that are not wanted. Returns 0,
 * ZLR_RES_ERR_NL_EVALUATION where a function has no value, or another code.
 *
 *   yo, yc                  weight of the objective and multipliers by row number, for the Lagrangian
 *                           yo f(x) - sum of yc_i g_i(x)
 *   objval                  value of the objective's function, its constant included
 *   numgrdobjnz, grdobjsub, grdobjval  its gradient
 *   numi, subi, conval      the rows asked for, in ascending order, and their values
 *   grdconptrb, grdconptre, grdconsub, grdconval  their gradients: of the k-th row the values of the columns grdconsub[p],
 *                           p from grdconptrb[k] up to but not including grdconptre[k]
 *   grdlag                  gradient of the Lagrangian, by column
 *   maxnumhesnz, numhesnz, hessubi, hessubj, hesval  its Hessian, in the order of the structure. With yo 0 it may be given as
 *                           0 throughout: the library never asks for it so
 *
 * The library asks for every row that has a function in each call that asks for rows, and for values before it asks for
 * derivatives, except where it looks for the one that has no value. */
typedef int32_t (*ZLR_nlgetvafunc_t)(void *handle, const double *xx, double yo, const double *yc, double *objval,
                                     int32_t *numgrdobjnz, int32_t *grdobjsub, double *grdobjval, int32_t numi,
                                     const int32_t *subi, double *conval, const int32_t *grdconptrb,
                                     const int32_t *grdconptre, const int32_t *grdconsub, double *grdconval,
                                     double *grdlag, int32_t maxnumhesnz, int32_t *numhesnz, int32_t *hessubi,
                                     int32_t *hessubj, double *hesval);

/* ---- Version, codes, status texts --------------------------------------------------------------------------------- */

/* Version numbers of the library. Needs no environment. Returns ZLR_RES_OK. */
ZLR_API int32_t ZLR_getversion(int32_t *major, int32_t *minor, int32_t *revision, int32_t *build);

/* Symbolic name and text of a return code. Each buffer, where given, has room for at least 1024 bytes. An unknown code
 * gives "ZLR_RES_UNKNOWN" and ZLR_RES_ERR_ARGUMENT, with both buffers filled all the same. */
ZLR_API int32_t ZLR_getcodedesc(int32_t code, char *symbol, char *text);

/* Response class of a code: ZLR_CLASS_OK and so on. Unknown codes are classed by their range: 1 to 999 warnings, 10000
 * and above terminations, all else errors. Returns ZLR_RES_OK. */
ZLR_API int32_t ZLR_getresponseclass(int32_t code, int32_t *response_class);

/* Words for a problem status and a solution status, such as "PRIMAL_AND_DUAL_FEASIBLE" and "OPTIMAL". The buffer has
 * room for at least 1024 bytes. An unknown number gives "UNKNOWN" and ZLR_RES_ERR_ARGUMENT. The status ZLR_SOLSTA_OPTIMAL
 * is "LOCALLY_OPTIMAL" where a solution of the task has it that is known to be optimal in its surroundings only: that of a
 * problem with nonlinear functions, or of a quadratic one that is not convex. */
ZLR_API int32_t ZLR_prostatostr(ZLR_task *task, int32_t prosta, char *text);
ZLR_API int32_t ZLR_solstatostr(ZLR_task *task, int32_t solsta, char *text);

/* ---- Environment -------------------------------------------------------------------------------------------------- */

/* Makes an environment. `dbgfile` names the file of the memory trace, or is null for none: each block that is handed out
 * or given back, with the caller's file and line, and at the end a report of those that are left.
 * Returns ZLR_RES_ERR_SPACE; ZLR_RES_ERR_FILE_OPEN for a trace that cannot be written; ZLR_RES_ERR_NULL_POINTER if `env`
 * is null. On failure *env is null. */
ZLR_API int32_t ZLR_makeenv(ZLR_env **env, const char *dbgfile);

/* Deletes an environment and sets *env to null. Null handles are harmless. All its tasks must have been deleted. */
ZLR_API int32_t ZLR_deleteenv(ZLR_env **env);

/* Sends text of stream `stream` of the environment to `func`, called with `handle`. A null `func` ends it.
 * Returns ZLR_RES_ERR_INDEX for an unknown stream. */
ZLR_API int32_t ZLR_linkfunctoenvstream(ZLR_env *env, int32_t stream, void *handle, ZLR_streamfunc func);

/* Licence settings, kept as given. The engines of this library are open and ask for no licence, so that none of these
 * can make a run fail. `code` is an array of integers that ends in 0. */
ZLR_API int32_t ZLR_putlicensepath(ZLR_env *env, const char *path);
ZLR_API int32_t ZLR_putlicensecode(ZLR_env *env, const int32_t *code);
ZLR_API int32_t ZLR_putlicensewait(ZLR_env *env, int32_t wait);
ZLR_API int32_t ZLR_putlicensedebug(ZLR_env *env, int32_t debug);

/* Prints the banner on stream 1 of the environment. `full` not 0 adds name, version and licence of the product and of
 * every engine that is installed, which loads them. */
ZLR_API int32_t ZLR_echointro(ZLR_env *env, int32_t full);

/* Memory of an environment. The block is zeroed. Null: no memory, or the size overflows. A count or size of 0 gives a
 * block all the same. The debug forms name the caller's source file and line for the memory trace. */
ZLR_API void *ZLR_callocenv(ZLR_env *env, uint64_t count, uint64_t size);
ZLR_API void *ZLR_callocdbgenv(ZLR_env *env, uint64_t count, uint64_t size, const char *file, int32_t line);
ZLR_API void ZLR_freeenv(ZLR_env *env, void *block);
ZLR_API void ZLR_freedbgenv(ZLR_env *env, void *block, const char *file, int32_t line);

/* ---- Task --------------------------------------------------------------------------------------------------------- */

/* Makes an empty task: no rows, no columns, minimisation, every parameter at its default.
 * Returns ZLR_RES_ERR_SPACE; ZLR_RES_ERR_NULL_POINTER if `task` is null. */
ZLR_API int32_t ZLR_makeemptytask(ZLR_env *env, ZLR_task **task);

/* Deletes a task and sets *task to null. Null handles are harmless. Returns a code when a file that is linked to one of
 * its streams cannot be completed; the task is deleted all the same. */
ZLR_API int32_t ZLR_deletetask(ZLR_task **task);

ZLR_API int32_t ZLR_getenv(ZLR_task *task, ZLR_env **env);

/* Memory of a task, as for the environment. */
ZLR_API void *ZLR_calloctask(ZLR_task *task, uint64_t count, uint64_t size);
ZLR_API void *ZLR_callocdbgtask(ZLR_task *task, uint64_t count, uint64_t size, const char *file, int32_t line);
ZLR_API void ZLR_freetask(ZLR_task *task, void *block);
ZLR_API void ZLR_freedbgtask(ZLR_task *task, void *block, const char *file, int32_t line);

/* A copy of `text` from the task's memory; null when there is no memory or `text` is null. */
ZLR_API char *ZLR_strduptask(ZLR_task *task, const char *text);

/* Registers the progress callback; null ends it. */
ZLR_API int32_t ZLR_putcallbackfunc(ZLR_task *task, ZLR_callbackfunc func, void *handle);

/* Streams of a task. A stream may have a function and a file at once. A later call replaces the earlier function or
 * file of that stream; null ends it. `append` not 0 adds to an existing file.
 * Returns ZLR_RES_ERR_INDEX for an unknown stream, ZLR_RES_ERR_FILE_OPEN (the earlier file stays). */
ZLR_API int32_t ZLR_linkfunctotaskstream(ZLR_task *task, int32_t stream, void *handle, ZLR_streamfunc func);
ZLR_API int32_t ZLR_linkfiletotaskstream(ZLR_task *task, int32_t stream, const char *filename, int32_t append);

/* Writes formatted text, as printf does, to a stream of the task. */
ZLR_API int32_t ZLR_echotask(ZLR_task *task, int32_t stream, const char *format, ...) ZLR_PRINTF(3, 4);

/* ---- Parameters --------------------------------------------------------------------------------------------------- */

/* Parameters by number. ZLR_RES_ERR_PARAM_NAME: no such number. ZLR_RES_ERR_PARAM_VALUE: out of range; the parameter
 * keeps its value, and the error stream tells name, value and what is allowed. */
ZLR_API int32_t ZLR_putdouparam(ZLR_task *task, int32_t param, double value);
ZLR_API int32_t ZLR_putintparam(ZLR_task *task, int32_t param, int32_t value);
ZLR_API int32_t ZLR_putstrparam(ZLR_task *task, int32_t param, const char *value);
ZLR_API int32_t ZLR_getdouparam(ZLR_task *task, int32_t param, double *value);
ZLR_API int32_t ZLR_getintparam(ZLR_task *task, int32_t param, int32_t *value);

/* A copy of a string parameter with `extra` (at least 0) zero bytes behind its terminator, to be released with
 * ZLR_freetask. Returns ZLR_RES_ERR_SPACE, ZLR_RES_ERR_ARGUMENT for a negative `extra`. On failure *value is null. */
ZLR_API int32_t ZLR_getstrparamal(ZLR_task *task, int32_t param, int32_t extra, char **value);

/* Sets a parameter by name, without regard to case, from its text: a number, or one of the parameter's words. An
 * unknown name or a bad value is told on the error stream with what is allowed and the nearest known name. */
ZLR_API int32_t ZLR_putparam(ZLR_task *task, const char *name, const char *value);

/* Name of a parameter of a class (ZLR_PAR_DOUBLE and so on) into a buffer with room for at least 1024 bytes. */
ZLR_API int32_t ZLR_getparamname(ZLR_task *task, int32_t param_class, int32_t param, char *name);

/* Reads a parameter file: `NAME value` or `NAME = value` a line, comments from # on. Every line is tried; the first
 * error is the result, unless the integer parameter PARAM_IGNORE_ERRORS is 1. Parameters of good lines are set. */
ZLR_API int32_t ZLR_readparamfile(ZLR_task *task, const char *filename);

/* Writes all parameters, those that are not at their default first, the others as comments. A null name stands for the
 * file named by string parameter PARAM_WRITE_FILE. */
ZLR_API int32_t ZLR_writeparamfile(ZLR_task *task, const char *filename);

/* Lists every parameter with its value, default, range and meaning on the message stream. */
ZLR_API int32_t ZLR_printparam(ZLR_task *task);

/* ---- The problem -------------------------------------------------------------------------------------------------- */

/* Size hints. They only save time; negative ones give ZLR_RES_ERR_ARGUMENT. */
ZLR_API int32_t ZLR_putmaxnumcon(ZLR_task *task, int32_t num);
ZLR_API int32_t ZLR_putmaxnumvar(ZLR_task *task, int32_t num);
ZLR_API int32_t ZLR_putmaxnumanz(ZLR_task *task, int64_t num);
ZLR_API int32_t ZLR_putmaxnumqnz(ZLR_task *task, int64_t num);
ZLR_API int32_t ZLR_putmaxnumcone(ZLR_task *task, int32_t num);

/* Appends `num` free rows, or `num` continuous columns fixed at 0. Existing solutions are dropped by this and by every
 * other entry of this family that changes the problem's data. */
ZLR_API int32_t ZLR_appendcons(ZLR_task *task, int32_t num);
ZLR_API int32_t ZLR_appendvars(ZLR_task *task, int32_t num);

/* Bounds of one row or column. Values that the key does not use are not looked at. A lower bound above the upper one
 * is taken (the task is then infeasible). Returns ZLR_RES_ERR_INDEX, ZLR_RES_ERR_NAN, ZLR_RES_ERR_ARGUMENT for an
 * unknown key, ZLR_RES_ERR_BOUNDS for a fixed bound that is infinite or has two values. */
ZLR_API int32_t ZLR_putconbound(ZLR_task *task, int32_t i, int32_t key, double lower, double upper);
ZLR_API int32_t ZLR_putvarbound(ZLR_task *task, int32_t j, int32_t key, double lower, double upper);

/* Bound key and bounds of row (`accessor` ZLR_ACC_CON) or column `index`. Sides that do not exist are -infinity or
 * +infinity. */
ZLR_API int32_t ZLR_getbound(ZLR_task *task, int32_t accessor, int32_t index, int32_t *key, double *lower,
                             double *upper);

/* Objective: sense, constant, linear coefficients. The quadratic part stands for x'Qx/2 and is given by the lower
 * triangle of Q (subi at least subj); repeated entries are added; the call replaces what was there. */
ZLR_API int32_t ZLR_putobjsense(ZLR_task *task, int32_t sense);
ZLR_API int32_t ZLR_getobjsense(ZLR_task *task, int32_t *sense);
ZLR_API int32_t ZLR_putcfix(ZLR_task *task, double cfix);
ZLR_API int32_t ZLR_putclist(ZLR_task *task, int32_t num, const int32_t *sub, const double *value);
ZLR_API int32_t ZLR_getc(ZLR_task *task, double *c); /* num columns values */
ZLR_API int32_t ZLR_putqobj(ZLR_task *task, int32_t num, const int32_t *subi, const int32_t *subj, const double *value);

/* Quadratic part of row `i`, x'Qx/2, by the lower triangle of Q, as for the objective. */
ZLR_API int32_t ZLR_putqconk(ZLR_task *task, int32_t i, int32_t num, const int32_t *subi, const int32_t *subj,
                             const double *value);

/* Appends a cone of type ZLR_CT_... over `num` columns, which its members keep in the order given; a column is in one cone
 * at most. `param` is not used by these types and must be finite. Returns ZLR_RES_ERR_CONE, with a message on the error
 * stream, for an unknown type, fewer than two members (rotated: three), a column that is in a cone already, a head (the
 * first member, of a rotated cone the first two) whose upper bound is below 0; ZLR_RES_ERR_INDEX. */
ZLR_API int32_t ZLR_appendcone(ZLR_task *task, int32_t type, double param, int32_t num, const int32_t *sub);

/* Type and members of cone `k`. `sub` has room for as many as `num` gives; either may be asked alone. */
ZLR_API int32_t ZLR_getcone(ZLR_task *task, int32_t k, int32_t *type, int32_t *num, int32_t *sub);

/* Replaces column `j` of the matrix. Entries below the parameter DATA_TOL_COEF are dropped. A row that occurs twice
 * gives ZLR_RES_ERR_ARGUMENT. Fast when columns are put in ascending order. */
ZLR_API int32_t ZLR_putacol(ZLR_task *task, int32_t j, int32_t num, const int32_t *sub, const double *value);

ZLR_API int32_t ZLR_putvartype(ZLR_task *task, int32_t j, int32_t type);

/* Names. Names need not be unique in the task, but reading and writing files asks for unique ones; writers tell and
 * replace names that their format cannot hold. ZLR_getvarname and ZLR_getconname copy at most `capacity` - 1 bytes and
 * a terminator; a row or column without a name gives the one that writers use: "c" or "x" and its number from 1 on. */
ZLR_API int32_t ZLR_puttaskname(ZLR_task *task, const char *name);
ZLR_API int32_t ZLR_putobjname(ZLR_task *task, const char *name);
ZLR_API int32_t ZLR_putconname(ZLR_task *task, int32_t i, const char *name);
ZLR_API int32_t ZLR_putvarname(ZLR_task *task, int32_t j, const char *name);
ZLR_API int32_t ZLR_getconname(ZLR_task *task, int32_t i, int32_t capacity, char *name);
ZLR_API int32_t ZLR_getvarname(ZLR_task *task, int32_t j, int32_t capacity, char *name);

ZLR_API int32_t ZLR_getnumcon(ZLR_task *task, int32_t *num);
ZLR_API int32_t ZLR_getnumvar(ZLR_task *task, int32_t *num);
ZLR_API int32_t ZLR_getnumanz(ZLR_task *task, int64_t *num);
ZLR_API int32_t ZLR_getnumcone(ZLR_task *task, int32_t *num);
ZLR_API int32_t ZLR_getnumintvar(ZLR_task *task, int32_t *num);
ZLR_API int32_t ZLR_getprobtype(ZLR_task *task, int32_t *type);

/* ---- Files -------------------------------------------------------------------------------------------------------- */

/* Reads a problem file into the task, in place of what the task holds. A null name stands for string parameter 1. The
 * format is chosen by extension (.mps, .qps, .lp, each also with .gz), else by content.
 * Returns ZLR_RES_ERR_FILE_READ, ZLR_RES_ERR_FILE_FORMAT, ZLR_RES_ERR_FILE_UNSUPPORTED, ZLR_RES_ERR_SPACE; the message
 * tells file, line, what was found and what was expected. On failure the task is as it was. */
ZLR_API int32_t ZLR_readdata(ZLR_task *task, const char *filename);

/* Writes the problem, in the format that the extension names, else in the one it was read in, else LP. The file is
 * written beside its target and renamed. Returns ZLR_RES_ERR_FILE_OPEN, ZLR_RES_ERR_FILE_WRITE,
 * ZLR_RES_ERR_WRITE_FORMAT (the message tells which formats can hold the task). */
ZLR_API int32_t ZLR_writedata(ZLR_task *task, const char *filename);

/* Reads and writes the solution of a kind in the library's own text form. A null name for writing stands for the kind's
 * string parameter. A solution that was read serves as the optimiser's start.
 * Writing leaves no file, and gives ZLR_RES_OK, where parameter WRITE_SOLUTION_STATUS asks for more than the solution is.
 * Returns ZLR_RES_ERR_FILE_FORMAT, ZLR_RES_ERR_SOL_MISMATCH (names or sizes are not the task's),
 * ZLR_RES_ERR_NO_SOLUTION. */
ZLR_API int32_t ZLR_readsolution(ZLR_task *task, int32_t kind, const char *filename);
ZLR_API int32_t ZLR_writesolution(ZLR_task *task, int32_t kind, const char *filename);

/* ---- Optimisation and solutions ----------------------------------------------------------------------------------- */

/* Optimises. An infeasible or unbounded task is an answer: the result is ZLR_RES_OK, and the solution has a certificate
 * status. A stop or a limit gives its code from 10000 up, and the best point found, a given start included, is kept
 * as the solution, with the status that its check on the task's data earns. Returns ZLR_RES_ERR_NO_ENGINE,
 * ZLR_RES_ERR_ENGINE, ZLR_RES_ERR_SPACE, ZLR_RES_ERR_BOUNDS never: a task with crossed bounds is infeasible.
 * An engine that does not come back in time after a stop, or that lost a race, is left to end by itself on its thread. If
 * the process ends before it, exit handlers that were registered before the first call of this entry are not run (POSIX). */
ZLR_API int32_t ZLR_optimize(ZLR_task *task);

/* Whether a solution of that kind exists (1) or not (0). */
ZLR_API int32_t ZLR_solutiondef(ZLR_task *task, int32_t kind, int32_t *defined);
ZLR_API int32_t ZLR_getsolsta(ZLR_task *task, int32_t kind, int32_t *solsta);
ZLR_API int32_t ZLR_getprimalobj(ZLR_task *task, int32_t kind, double *value);
ZLR_API int32_t ZLR_getdualobj(ZLR_task *task, int32_t kind, double *value);

/* The solution of a kind. Arrays have one entry a row (skc, xc, y, slc, suc), a column (skx, xx, slx, sux, snx) or a cone
 * (skn). Of a column that is in no cone snx is 0; in a minimisation the members' entries of a cone are in the cone, in a
 * maximisation their negatives are.
 *   skc, skx, skn  status keys           slc, suc  duals of the rows' lower and upper sides
 *   xc             row activities        slx, sux  duals of the columns' bounds
 *   xx             column values         snx       cone duals
 *   y              row multipliers
 * Returns ZLR_RES_ERR_NO_SOLUTION. */
ZLR_API int32_t ZLR_getsolution(ZLR_task *task, int32_t kind, int32_t *prosta, int32_t *solsta, int32_t *skc,
                                int32_t *skx, int32_t *skn, double *xc, double *xx, double *y, double *slc, double *suc,
                                double *slx, double *sux, double *snx);

/* Installs a solution of a kind, as a start for the optimiser. Null arrays are "not known". Its status is unknown. */
ZLR_API int32_t ZLR_putsolution(ZLR_task *task, int32_t kind, const int32_t *skc, const int32_t *skx,
                                const int32_t *skn, const double *xc, const double *xx, const double *y,
                                const double *slc, const double *suc, const double *slx, const double *sux,
                                const double *snx);

/* A piece of integer information on the last optimisation (ZLR_IINF_...): 0 where there was none or it does not apply, the
 * largest value where it is larger. Returns ZLR_RES_ERR_INDEX for an unknown item. */
ZLR_API int32_t ZLR_getintinf(ZLR_task *task, int32_t item, int32_t *value);

/* ---- Reports ------------------------------------------------------------------------------------------------------ */

/* What was read (sizes, types, ranges), what was found (statuses, objectives, largest violations on the task's own
 * data), and how (engine, iterations, nodes, times), on the given stream. */
ZLR_API int32_t ZLR_readsummary(ZLR_task *task, int32_t stream);
ZLR_API int32_t ZLR_solutionsummary(ZLR_task *task, int32_t stream);
ZLR_API int32_t ZLR_optimizersummary(ZLR_task *task, int32_t stream);

/* ---- Models that misbehave ---------------------------------------------------------------------------------------- */

/* What the problem is made of and what is odd about it: sizes, ranges of the data, special structure, duplicates, and
 * advice that names rows and columns. ANALYZE_DETAIL=FULL prints more than a screen. ZLR_RES_ERR_INDEX: no such stream. */
ZLR_API int32_t ZLR_analyzeproblem(ZLR_task *task, int32_t stream);

/* How good the solution of a kind is on the task's own data: statuses, objectives and gap, violations (largest, total,
 * how many above the tolerance, names of the worst), sizes of values and duals, status keys, whether the keys of a basic
 * solution are an optimal basis, what a certificate proves and through which rows. ANALYZE_DETAIL=FULL names up to a
 * hundred where the default names a few. Returns ZLR_RES_ERR_NO_SOLUTION, with a line that says so on the stream;
 * ZLR_RES_ERR_INDEX for an unknown stream or kind. */
ZLR_API int32_t ZLR_analyzesolution(ZLR_task *task, int32_t stream, int32_t kind);

/* Statistics: one line of JSON for each optimisation, appended to the file that the parameter STAT_FILE names; see
 * docs/statistics.md. An optimisation is written once, whichever of the entries comes first to it.
 *   ZLR_startstat   begins to collect: from now on a line is made of every optimisation when it ends, whatever its
 *                   outcome, with the parameters (STAT_LABEL among them) as they are then. Nothing is written. A second
 *                   call while collecting changes nothing
 *   ZLR_stopstat    writes the collected lines that no file has yet, oldest first, and ends the collection; harmless
 *                   where there was none
 *   ZLR_appendstat  writes the last optimisation now: its collected line, or, where it was not collected, one made from
 *                   the task as it is. Where a file has it already, nothing is written. ZLR_RES_ERR_NO_SOLUTION when
 *                   there was no optimisation, or the problem has been changed since and it was not collected
 * A line goes out by one write to a file opened for append, so that processes may share a file. Without a name in STAT_FILE
 * each of them tells so and returns ZLR_RES_ERR_FILE_OPEN, as for a file that cannot be opened; ZLR_RES_ERR_FILE_WRITE.
 * After an error lines that are not in the file wait for another call. ZLR_deletetask drops them, with a warning. */
ZLR_API int32_t ZLR_startstat(ZLR_task *task);
ZLR_API int32_t ZLR_stopstat(ZLR_task *task);
ZLR_API int32_t ZLR_appendstat(ZLR_task *task);

/* Sensitivity of a linear task without integer columns at its optimum. Each item is one number of the problem: a side of a
 * row (subi with marki 0 lower, 1 upper), a bound of a column (subj, markj), a cost. For each the price is given, which is
 * the change of the optimal value for one unit more of the number, for moves to the left (down) and to the right, and how
 * far it holds, as a change: left at most 0, right at least 0, infinite where there is no end. A side that is not met has
 * the price 0 up to the activity. An infinite price with a range of 0: no feasible, or no bounded task lies that way. Sides
 * of an equality move together. Arrays that are null are not wanted.
 * Returns ZLR_RES_ERR_ARGUMENT (not such a task, or an unknown mark), ZLR_RES_ERR_NO_SOLUTION (not optimal),
 * ZLR_RES_ERR_INDEX, ZLR_RES_ERR_ENGINE, the code of a stop. */
ZLR_API int32_t ZLR_primalsensitivity(ZLR_task *task, int32_t numi, const int32_t *subi, const int32_t *marki,
                                      int32_t numj, const int32_t *subj, const int32_t *markj, double *leftpricei,
                                      double *rightpricei, double *leftrangei, double *rightrangei, double *leftpricej,
                                      double *rightpricej, double *leftrangej, double *rightrangej);
ZLR_API int32_t ZLR_dualsensitivity(ZLR_task *task, int32_t numj, const int32_t *subj, double *leftpricej,
                                    double *rightpricej, double *leftrangej, double *rightrangej);

/* The same as a report, on a stream and in the file that string parameter SENSITIVITY_RES_FILE names. String parameter
 * SENSITIVITY_FILE names the file that tells what to analyse; without one, everything is. */
ZLR_API int32_t ZLR_sensitivityreport(ZLR_task *task, int32_t stream);

/* The part of the task that the certificate in the solution of a kind speaks of, as a new task, which the caller deletes
 * with ZLR_deletetask before the environment. Names and integrality stay.
 * Infeasible (status 5): single sides of rows and bounds of columns that contradict each other, without an objective. By
 * default the set is reduced until the rest is feasible without any one of them, where a smaller one is found also to sides
 * that the certificate does not name; ANALYZE_INFEAS_EFFORT=CERTIFICATE leaves it as the certificate names it. A stop, or
 * ANALYZE_INFEAS_TIME_LIMIT, ends the reduction with the smallest set so far.
 * Unbounded (status 6): the columns of the ray with their rows, finite sides and bounds 0: it is unbounded.
 * What was found is told on the message stream. Returns ZLR_RES_ERR_NO_SOLUTION where that kind of solution does not exist
 * or is no certificate, ZLR_RES_ERR_ARGUMENT for an unknown kind. On failure *subproblem is null. */
ZLR_API int32_t ZLR_getinfeasiblesubproblem(ZLR_task *task, int32_t kind, ZLR_task **subproblem);

/* Changes sides and bounds so that the task is feasible, with the least weighted sum of changes, and tells on the message
 * stream what was changed by how much. Weights of the rows' lower and upper sides and of the columns' lower and upper
 * bounds; null: REPAIR_ROW_WEIGHT or REPAIR_COLUMN_WEIGHT (1) each; negative: may not be changed. Cones do not change, and neither do sides of rows that are cones in
 * disguise (ZLR_toconic). A feasible task stays as it is, with its solutions.
 * Returns ZLR_RES_ERR_NO_REPAIR where what may not be changed contradicts itself (the error stream names it), the code of a
 * stop or limit, ZLR_RES_ERR_NAN; the task is then as it was. */
ZLR_API int32_t ZLR_primalrepair(ZLR_task *task, const double *wlc, const double *wuc, const double *wlx,
                                 const double *wux);

/* Rewrites a problem with quadratic parts in conic form, the objective too, with the same optimal values of its columns.
 * Rows and columns keep their numbers and names; new columns and rows are appended, named after the row, or the objective,
 * that they come from: NAME.w is at least the quadratic part and stands in its place, NAME.t1, ... are its squares, by rows
 * of the same name, and NAME.h is fixed. A row that is a cone in disguise, one negative square or one negative product of
 * columns that are at least 0 by their bounds, as x^2 + y^2 <= t^2, becomes that cone, and stays as a row without sides.
 * Solutions are dropped. What became what is told on the message stream. A task without quadratic parts stays as it is.
 * Returns ZLR_RES_ERR_NONCONVEX, ZLR_RES_ERR_QCON_EQUALITY or ZLR_RES_ERR_QCON_RANGE, with the row or the objective named on
 * the error stream, or ZLR_RES_TRM_USER_STOP where the progress callback asks for it, within 0.2 s; then with the task as
 * it was. TIME_LIMIT is for optimisations, and does not end this. */
ZLR_API int32_t ZLR_toconic(ZLR_task *task);

/* ---- General nonlinear functions ---------------------------------------------------------------------------------- */

/* Gives the task functions that are added to its objective and rows: smooth ones, with first and second derivatives. The
 * rows, columns, bounds and linear parts are the task's; its fixed term (ZLR_putcfix) does not count, for the function of
 * the objective holds it. `handle` is handed to each call and stays the program's; the functions are called from this entry,
 * from ZLR_optimize and from entries that need values (solutions put or read, analyses), on the caller's thread, one at a
 * time. Their structure is asked for here, and again by ZLR_optimize where the task has other sizes then. Two null pointers
 * take the functions away. Solutions are dropped.
 *
 * Such a problem is solved locally, as is a quadratic one with NONCONVEX=LOCAL: see docs/nonlinear.md for what statuses and
 * codes say then. Returns ZLR_RES_ERR_NULL_POINTER where one of the two is null, ZLR_RES_ERR_INDEX for a structure that
 * names columns that are not there, or the code of a call that failed. */
ZLR_API int32_t ZLR_putnlfunc(ZLR_task *task, void *handle, ZLR_nlgetspfunc_t getsp, ZLR_nlgetvafunc_t getva);

#ifdef __cplusplus
}
#endif

#endif
