/* clarabel_shim.h - the interior-point engine Clarabel by a C interface, which the crate in this folder makes.
 *
 *   minimise x'Px/2 + q'x   subject to   Ax + s = b,  s in K = K1 x K2 x ...
 *
 * with the dual z in the dual cone, so that Px + q + A'z = 0 at an optimum. Each Ki is self-dual, but for the zero cone,
 * whose dual is the whole space.
 *
 * Codes       Every entry that can fail returns ZLR_CLARABEL_...; 0 is success. Nothing is thrown and no panic of the
 *             engine leaves an entry: it becomes ZLR_CLARABEL_PANIC. A solver that panicked can only be freed.
 *             The one exception is the engine running out of memory, which ends the process, as Rust's allocator does.
 * Ownership   What is passed in is read during the call and copied where it is kept. Settings and solvers are handles of
 *             the engine's, each freed by its own entry; null is taken by those. Arrays of a result belong to the solver
 *             and live as long as it does. Texts that come back are written to the caller's buffer.
 * Threads     Different handles may be used at one time; one handle by one thread at a time.
 * Messages    `message` and `size` are a buffer, which may be null, for a text that explains a code: cut to fit, always
 *             terminated, empty where there is nothing to say. */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    ZLR_CLARABEL_OK = 0,
    ZLR_CLARABEL_NULL = 1,   /* a pointer that must be given is null */
    ZLR_CLARABEL_DATA = 2,   /* dimensions that do not fit, indices out of range or order, values that are not finite */
    ZLR_CLARABEL_OPTION = 3, /* no setting of that name */
    ZLR_CLARABEL_VALUE = 4,  /* a setting does not take the value */
    ZLR_CLARABEL_STATE = 5,  /* a result is asked for before a solve, or after a panic */
    ZLR_CLARABEL_PANIC = 6   /* an assertion inside the engine */
};

enum {
    ZLR_CLARABEL_UNSOLVED = 0,
    ZLR_CLARABEL_SOLVED = 1,
    ZLR_CLARABEL_PRIMAL_INFEASIBLE = 2, /* z is the proof: A'z = 0, b'z < 0 */
    ZLR_CLARABEL_DUAL_INFEASIBLE = 3,   /* x is the proof: Px = 0, q'x < 0, -Ax in K */
    ZLR_CLARABEL_ALMOST_SOLVED = 4,     /* these three: to the reduced tolerances */
    ZLR_CLARABEL_ALMOST_PRIMAL_INFEASIBLE = 5,
    ZLR_CLARABEL_ALMOST_DUAL_INFEASIBLE = 6,
    ZLR_CLARABEL_MAX_ITERATIONS = 7,
    ZLR_CLARABEL_MAX_TIME = 8,
    ZLR_CLARABEL_NUMERICAL_ERROR = 9,
    ZLR_CLARABEL_INSUFFICIENT_PROGRESS = 10,
    ZLR_CLARABEL_STOPPED = 11 /* by the callback */
};

enum {
    ZLR_CLARABEL_ZERO = 0,        /* s = 0: equations */
    ZLR_CLARABEL_NONNEGATIVE = 1, /* s >= 0 */
    ZLR_CLARABEL_SECOND_ORDER = 2 /* s1 >= |s2, s3 ...| */
};

/* A sparse matrix by column, the rows of a column ascending. Arrays may be null where they would be empty. */
typedef struct zlr_clarabel_matrix {
    int64_t rows, columns;
    const int64_t *start; /* columns + 1; may be null where there are no columns */
    const int64_t *row;
    const double *value;
} zlr_clarabel_matrix;

typedef struct zlr_clarabel_cone {
    int32_t kind;
    int64_t size;
} zlr_clarabel_cone;

typedef struct zlr_clarabel_problem {
    zlr_clarabel_matrix p; /* upper triangle, with the diagonal */
    const double *q;
    zlr_clarabel_matrix a;
    const double *b;
    const zlr_clarabel_cone *cones; /* their sizes add up to the rows of a, and follow its order */
    int64_t num_cones;
} zlr_clarabel_problem;

/* What is known at an iteration. Objectives are those of the problem as passed, residuals relative. */
typedef struct zlr_clarabel_progress {
    int64_t iterations;
    double primal_obj, dual_obj;
    double primal_residual, dual_residual;
    double gap_abs, gap_rel;
    double time_s; /* since the solver was made */
} zlr_clarabel_progress;

typedef struct zlr_clarabel_result {
    int32_t status;
    int64_t num_columns, num_rows;
    const double *x;   /* columns */
    const double *z;   /* rows: duals */
    const double *s;   /* rows: slacks */
    double primal_obj; /* NaN where the status is one of infeasibility */
    double dual_obj;
    double primal_residual, dual_residual;
    double time_s;
    int64_t iterations;
} zlr_clarabel_result;

typedef struct zlr_clarabel_settings zlr_clarabel_settings;
typedef struct zlr_clarabel_solver zlr_clarabel_solver;

/* Called at every iteration on the solver's thread. Not 0 stops the solve. Must not throw. */
typedef int32_t (*zlr_clarabel_callback)(void *user, const zlr_clarabel_progress *progress);

/* The engine's version, "0.11.1"; a constant. */
const char *zlr_clarabel_version(void);

/* Settings with the engine's defaults, or null where the engine panicked. Printing is off. */
zlr_clarabel_settings *zlr_clarabel_settings_new(void);
void zlr_clarabel_settings_free(zlr_clarabel_settings *settings);

/* Sets a setting of the engine's own name. Numbers serve switches too (0 or 1) and counts (whole numbers). Returns OK,
 * NULL, OPTION, VALUE (NaN, negative, not whole, a text for a number or a number for a text). */
int32_t zlr_clarabel_put_number(zlr_clarabel_settings *settings, const char *name, double value);
int32_t zlr_clarabel_put_text(zlr_clarabel_settings *settings, const char *name, const char *value);

/* Reads a setting that is a number, a switch or a count. */
int32_t zlr_clarabel_get_number(const zlr_clarabel_settings *settings, const char *name, double *value);

/* Loads a problem: checks it, copies, scales and orders it. Returns OK with *solver set; otherwise *solver is null. */
int32_t zlr_clarabel_new(const zlr_clarabel_problem *problem, const zlr_clarabel_settings *settings,
                         zlr_clarabel_solver **solver, char *message, int64_t size);
void zlr_clarabel_free(zlr_clarabel_solver *solver);

/* Solves. The callback may be null. */
int32_t zlr_clarabel_solve(zlr_clarabel_solver *solver, zlr_clarabel_callback callback, void *user, char *message,
                           int64_t size);

/* The outcome of the last solve: an iterate whatever the status. */
int32_t zlr_clarabel_get_result(const zlr_clarabel_solver *solver, zlr_clarabel_result *result);

/* Fails inside the engine's guard, on purpose: returns PANIC. What tests that nothing gets out. */
int32_t zlr_clarabel_provoke(char *message, int64_t size);

#ifdef __cplusplus
}
#endif
