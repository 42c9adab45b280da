/* run_options.h - what one run was asked to do, and its return code.
 *
 * The record is filled by the two scanners (scan.h) and owned by `main`. Its texts come from the C library and go back
 * with `free`. Arrays of three are indexed by solution kind. */
#pragma once

#include "cpub/sysformat.h"
#include "zelor.h"

#include <cstdint>

enum { NUM_SOLUTION_KINDS = 3 };

/* Room for names and values of options, terminator included. Longer ones are cut. */
enum { OPTION_TEXT_BYTES = 1024 };

/* Values of `ampl_mode`. The two differ in where the arguments of the front end begin and in the exit status. */
enum { AMPL_OFF = 0, AMPL_BY_A = 1, AMPL_BY_NAME = 2 };

struct run_options {
    /* filled by the pre-scan */
    char licence_path[OPTION_TEXT_BYTES];
    int32_t *licence_codes; /* ends in 0; null: none */
    char *return_code_file;
    char *log_file; /* by both scanners; consumed and cleared after each scan */
    char *memory_debug_file;
    int32_t full_licence_info;
    int32_t wait_for_licence;
    int32_t version_only;
    int32_t ampl_mode;
    int32_t analyse_problem; /* this and primal_repair by both scanners */
    int32_t primal_repair;
    int32_t list_parameters;
    int32_t write_solutions; /* 1 unless asked otherwise */
    int32_t remove_integers;
    int32_t to_conic;
    int32_t run_optimizer;                       /* 1 unless asked otherwise; by both scanners and `main` */
    int32_t analyse_initial[NUM_SOLUTION_KINDS]; /* checked and kept; no stage reads it */
    int32_t analyse_final[NUM_SOLUTION_KINDS];
    int32_t return_minus_one;

    /* Handle of the task's log stream. Its `silent` is the run's: the pre-scan writes it here, and the sink reads it
     * at every call. Its `env` stays empty. */
    sysenv_printcontext task_log_handle;

    /* filled when the options are applied */
    int32_t sensitivity_wanted;
    char *infeasible_file;
    char *repair_file;
    char *sensitivity_file;
    int32_t write_parameters; /* reset by each application, as is objective_sense */
    int32_t objective_sense;  /* -1 minimise, 1 maximise, 0 as the file says */
    char *initial_solution[NUM_SOLUTION_KINDS];
    char *out_file;
    int32_t stat_start;
    int32_t stat_stop;
    int32_t stat_append;

    int32_t run_status; /* return code of the run: the first failure */
};

/* The source named in memory traces, for the debug forms of the library's memory entries. */
#define ZELORBIN_SOURCE "src/zelor/zelorbin"

/* Keeps the first failure: a code becomes the run's status only while that is 0. */
inline void run_status_keep(run_options *options, int32_t code)
{
    if (options->run_status == ZLR_RES_OK) options->run_status = code;
}
