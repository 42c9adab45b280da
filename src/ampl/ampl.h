/* ampl.h - the AMPL front end: one job is a stub in, a task filled and optimised, a .sol file out.
 *
 *   run.cpp          the order of the job, and what is released at its end
 *   transfer.cpp     a stub becomes task data
 *   read_model.cpp   the read of a stub and the tests of what it holds
 *   stub_check.cpp   the look through a stub before it is read, with stub_header.cpp, stub_matrix.cpp, stub_expression.cpp,
 *                    stub_reader.cpp
 *   stub_stream.cpp  what is read of it then
 *   guard.cpp        calls of the AMPL Solver Library that could end the process
 *   nonlinear.cpp    a nonlinear stub as one that can be evaluated
 *   callbacks.cpp    what the optimiser asks of the structure of a nonlinear model
 *   evaluate.cpp     and of its values
 *   names.cpp        names, suffixes
 *   cones.cpp        cones by the suffix "cone"
 *   keywords.cpp     the settings of zelor_options, and where the log goes
 *   sensitivity.cpp  the analysis, and its suffixes
 *   start.cpp        what AMPL sends to start from
 *   solution.cpp     what AMPL gets back
 *   answer_file.cpp  the file that it is in
 *   extended.cpp     what AMPL_EXTENDED adds
 *
 * All memory of the front end comes from ZLR_calloctask and ZLR_strduptask and goes back through ZLR_freetask; what the
 * AMPL Solver Library is to keep comes from its M1alloc and goes with the stub object. Functions return a return code of
 * the library (ZLR_RES_...), and each step runs only while that is 0. */
#pragma once

#include "ampl/stub_matrix.h"

// Last: it defines macros of everyday names.
#include "ampl/asl_include.h"

/* The row sides' part of a sensitivity analysis; the arrays of the columns' bounds have the length 0. */
struct primal_sens {
    int32_t numi;
    int32_t *subi, *marki;
    int32_t numj;
    int32_t *subj, *markj;
    double *leftpricei, *rightpricei, *leftrangei, *rightrangei;
    double *leftpricej, *rightpricej, *leftrangej, *rightrangej;
};

/* The costs' part. */
struct dual_sens {
    int32_t numj;
    int32_t *subj;
    double *leftprice, *rightprice, *leftrange, *rightrange;
};

/* One job: the handle of the stream functions, the callbacks and the keyword function. Zeroed when it is made. */
struct ampl_data {
    ZLR_task *task;       /* not null: the record is live for ZLR_amplmsgstream */
    int32_t msgcount;     /* lines passed to the message stream */
    int32_t numobj;       /* n_obj of the stub that is evaluated; nonlinear models only */
    int32_t objno;        /* the objective in use, always 0 */
    int32_t numgrdobjnz;  /* entries of the objective's nonlinear gradient */
    int32_t numhesnz;     /* entries of the Hessian of the Lagrangian */
    int32_t hessianready; /* 1 once the Hessian's pattern was built */
    ASL *asl;             /* the stub that is evaluated; nonlinear models only, as the three arrays */
    double *work;         /* 2 n_var: gradients, and a dense column map that is all zero between uses */
    double *ow;           /* n_obj objective weights */
    double *y;            /* n_con multipliers, as the evaluator wants them */
    int32_t sensitivity;  /* not 0: sensitivity was asked for */
    primal_sens primalsens;
    dual_sens dualsens;
    int32_t extended;   /* AMPL_EXTENDED: set while keywords are read, for those behind it, and for good after them */
    const char *reason; /* extended: why there is no answer, one sentence without a full stop; null: `said` */
    char *fault;        /* what is wrong with the stub, where something is */
    char said[1024];    /* what was said of the failure of a read, and extended: on the error stream; no blank lines */
};

/* An array that is kept until the job ends, or null: code 1051 where the length is not 0. */
template <class value_type> [[nodiscard]] int32_t ampl_calloc(ZLR_task *task, int32_t num, value_type **out)
{
    *out = static_cast<value_type *>(ZLR_calloctask(task, static_cast<uint64_t>(num), sizeof(value_type)));
    return *out == nullptr && num > 0 ? ZLR_RES_ERR_SPACE : ZLR_RES_OK;
}

/* Columns that take part in nonlinear terms: they come first. */
inline int32_t ampl_nonlinear_columns(const ASL *asl) { return std::max(nlvc, nlvo); }

/* The path of a file that belongs to the stub: ".sol", ".row", ".col". */
inline std::string ampl_path_beside(const ASL *asl, const char *extension)
{
    return std::string(filename, static_cast<size_t>(stub_end - filename)) + extension;
}

/* Releases and forgets. */
template <class value_type> void ampl_free(ZLR_task *task, value_type **block)
{
    if (*block != nullptr) ZLR_freetask(task, *block);
    *block = nullptr;
}

/* ---- run.cpp: ZLR_amplrun stands in zelor/ampl_entry.h ---- */

/* Releases the option record, the stub object and the job, and forgets them. */
void ZLR_amplfree(ASL **stub, Option_Info **options, ampl_data **adat);

/* ---- transfer.cpp ---- */

/* Makes the stub object, the option record and the job, applies the keywords and fills the task. On a failure all three
 * stay as far as they were made. */
[[nodiscard]] int32_t ZLR_amplin(char **argv, ASL **stub, Option_Info **options, int32_t objno, ZLR_task *task,
                                 ampl_data **adat);

/* ---- read_model.cpp ---- */

/* A stub as it was read. Arrays are from ZLR_calloctask; stub_model_free releases them. */
struct stub_model {
    stub_matrix matrix;          /* of nzc coefficients at most */
    int32_t linear_are_known;    /* 1: the matrix has the coefficients of rows from nlc on, from before the read */
    const int32_t *row;          /* what the rows are taken from: the matrix's, or the library's own array */
    double *conlower, *conupper; /* n_con */
    double *varlower, *varupper; /* n_var */
    double *c;                   /* n_var, linear objective */
    double cfix;                 /* constant of the objective */
    int32_t maximise;            /* 1: it is a maximisation */
    int32_t nonlinear;           /* 1: some part is not quadratic; known before the read or found after it */
    int32_t num_quad;            /* nlc + 1, entries of the next four; 0: they do not exist */
    int32_t *qnz;                /* triples of the objective, then of each row */
    int32_t **qsubi, **qsubj;    /* places in the symmetric matrix */
    double **qval;               /* values, of x'Qx/2 */
    double *conlower_as_given,
        *conupper_as_given; /* nlc, from before the quadratic check, which moves constants into them */
};

/* Where coefficients are known already the file lacks them, or has the same ones. */
[[nodiscard]] int32_t ZLR_amplreadmodel(ZLR_task *task, double droptol, double bigbound, ASL *asl, FILE **file,
                                        int32_t objno, ampl_data *adat, stub_model *model);
void stub_model_free(ZLR_task *task, stub_model *model);

/* ---- guard.cpp: where the library would end the process, by intent or not, these come back with a code ---- */

/* jac0dim. *file is null for a stub that cannot be opened; otherwise it holds the segments, without the coefficients that are
 * known, if any. ZLR_RES_ERR_AMPL_STUB: it is no stub. */
[[nodiscard]] int32_t ampl_open_stub(ASL *asl, const char *name, FILE **file, const stub_matrix *known = nullptr);

/* Gives the stub object the name and the sizes that jac0dim would, for the .sol file of a stub that is not opened. */
void ampl_name_stub(ASL *asl, const char *name, int32_t num_con, int32_t num_var);

/* qp_read or, by the kind of the stub object, pfgh_read of the open file, which is closed where that goes well.
 * ZLR_RES_ERR_AMPL_STUB: it is damaged, or it needs what is not there: `said` has the line or the function's name. */
[[nodiscard]] int32_t ampl_read_stub(ASL *asl, FILE *file, ampl_data *adat);

/* nqpcheck: the count of entries of the quadratic part of an objective (co is its number) or a row (-1 less its number),
 * negative where it is not quadratic. The arrays stay with the stub object. */
[[nodiscard]] int32_t ampl_quadratic_part(ASL *asl, int32_t co, fint **row, fint **start, real **value);

/* Takes `steps` of an evaluation. ZLR_RES_ERR_NL_EVALUATION where the library would have ended the process: the stub object
 * is then as before, but that it knows no point. Steps that call what has no error word point err_jmp to where err_jmp1
 * points for that while, so that nothing is printed. */
[[nodiscard]] int32_t ampl_evaluate(ASL *asl, int32_t (*steps)(void *handle), void *handle);

/* ---- nonlinear.cpp ---- */

/* Puts a stub object that can be evaluated in the place of the one there is, and returns it: without a name, nothing read. It
 * is told no more than how the answer goes back, and what is wanted of a start: none but with AMPL_EXTENDED, for an optimiser
 * of nonlinear functions begins at a point of its own. */
ASL *ampl_replace_stub(const ampl_data *adat, ASL **stub, const Option_Info *options);

/* Installs the callbacks. A stub object that cannot be evaluated is replaced before by one that can, read from the stub of
 * that name. */
struct stub_suffixes;
[[nodiscard]] int32_t ampl_put_nonlinear(ampl_data *adat, ASL **stub, const Option_Info *options, const char *name,
                                         stub_suffixes *suffixes);

/* ---- callbacks.cpp, evaluate.cpp: see ZLR_putnlfunc; the handle is the job ---- */

extern "C" {
int32_t ZLR_nlgetspfunc(void *handle, int32_t *numgrdobjnz, int32_t *grdobjsub, int32_t i, int32_t *convali,
                        int32_t *grdconinz, int32_t *grdconisub, int32_t yo, int32_t numycnz, const int32_t *ycsub,
                        int32_t maxnumhesnz, int32_t *numhesnz, int32_t *hessubi, int32_t *hessubj);
int32_t ZLR_nlgetvafunc(void *handle, const double *xx, double yo, const double *yc, double *objective,
                        int32_t *numgrdobjnz, int32_t *grdobjsub, double *grdobjval, int32_t numi, const int32_t *subi,
                        double *rows, const int32_t *grdconptrb, const int32_t *grdconptre, const int32_t *grdconsub,
                        double *grdconval, double *grdlag, int32_t maxnumhesnz, int32_t *numhesnz, int32_t *hessubi,
                        int32_t *hessubj, double *hesval);
}

/* ---- names.cpp ---- */

/* Puts the names that the stub carries on what the task has of objective, rows and columns. */
[[nodiscard]] int32_t ampl_put_names(ZLR_task *task, ASL *asl, int32_t objno);

/* The suffixes of a stub: declared, the status array (columns, then rows) tied to "sstatus". */
struct stub_suffixes {
    int *status; /* n_var + n_con, M1alloc, zeroed */
    SufDesc *varstatus, *constatus;
};
[[nodiscard]] int32_t ampl_declare_suffixes(ASL *asl, const ampl_data *adat, int32_t num_var, int32_t num_con,
                                            stub_suffixes *suffixes);

/* ---- cones.cpp ---- */

/* Cones of the columns' suffix "cone": |value| is the cone's number from 1, a negative value marks a root. */
[[nodiscard]] int32_t ZLR_amplputcones(ZLR_task *task, int32_t num_var, const SufDesc *cone);

/* ---- keywords.cpp ---- */

/* Fills the option record with the keyword table of all parameters and three of our own. */
[[nodiscard]] int32_t ampl_make_options(ZLR_task *task, ampl_data *adat, Option_Info *options);
void ampl_free_options(ZLR_task *task, Option_Info **options);

extern "C" {
char *ZLR_amplkeyword(Option_Info *options, keyword *row, char *value);
void ZLR_amplmsgstream(void *handle, const char *text);
void ZLR_amplerrstream(void *handle, const char *text);
}

/* ---- sensitivity.cpp ---- */

[[nodiscard]] int32_t ampl_analyse_sensitivity(ampl_data *adat);
[[nodiscard]] int32_t ampl_put_sensitivity(ASL *asl, ampl_data *adat);
void ampl_free_sensitivity(ampl_data *adat);

/* ---- start.cpp ---- */

/* Hands what AMPL sent (point, multipliers, statuses) to the task. Does nothing when *result is not 0. */
void ZLR_amplwarmstart(int32_t *result, ZLR_task *task, ASL *asl, const SufDesc *condesc, const SufDesc *vardesc,
                       const int *constatus, const int *varstatus);

/* ---- solution.cpp ---- */

/* Reports to AMPL: the solution of a kind, or why there is none. `result` is the job's code so far; *code, where given,
 * gets the solve result code. Returns 0 or ZLR_RES_ERR_SPACE. */
int32_t ZLR_amplout(ASL *asl, Option_Info *options, int32_t result, int32_t kind, ampl_data *adat, int32_t *code);

/* ---- answer_file.cpp ---- */

/* write_sol, with an eye on whether the file is written: where it cannot be, what stood there is gone, the cause is printed, and
 * the process ends with 2, as the library ends it where it cannot open the file. */
void ampl_write_answer(ASL *asl, const char *report, double *x, double *y, Option_Info *options);

/* ---- extended.cpp ---- */

/* Refuses a stub: why is printed, and kept as the job's reason. Returns ZLR_RES_ERR_AMPL_STUB. */
[[nodiscard]] int32_t ampl_refuse(ZLR_task *task, ampl_data *adat, const char *why);

/* What is never solved as something else is refused, in both modes: complementarity and logical constraints, special
 * ordered sets. */
[[nodiscard]] int32_t ampl_refuse_by_header(ZLR_task *task, const ASL *asl, ampl_data *adat);
[[nodiscard]] int32_t ampl_refuse_sets(ZLR_task *task, ampl_data *adat);

/* Reads AMPL_EXTENDED, once, after the keywords. */
void ampl_take_extended(ampl_data *adat);

/* Adds a text to `said`. */
void ampl_note_error(ampl_data *adat, const char *text);

/* A bad option: its name in `said`, and the stub opened for its sizes, so that the .sol file fits it. */
void ampl_note_bad_option(ASL *asl, const Option_Info *options, char **words, const char *stub, ampl_data *adat);

/* Why there is no answer, behind a report; nothing where nothing is known. */
void ampl_add_reason(const ampl_data *adat, char *report);

/* A job that failed before the optimiser: the .sol file says why. */
void ampl_report_failure(ASL *asl, Option_Info *options, int32_t result, const ampl_data *adat, int32_t *code);

/* The solve result code of a failed job, below 600. */
[[nodiscard]] int32_t ampl_failure_code(int32_t result);

/* Integer marks of exactly the stub's integer columns. */
[[nodiscard]] int32_t ampl_mark_integers(ZLR_task *task, ASL *asl);

/* Reduced costs as the suffix "rc". */
[[nodiscard]] int32_t ampl_put_reduced_costs(ASL *asl, ampl_data *adat, int32_t kind);
