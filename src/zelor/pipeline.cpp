/* pipeline.cpp - the stages around the optimiser, in their order. The first failure in front of the optimiser ends the
 * pipeline; behind it reports and files follow all the same, and the first failure is kept. */
#include "pipeline.h"

#include "infeasibility.h"
#include "interrupt.h"
#include "solution_names.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

/* ---- In front of the optimiser ---- */

static void remove_integers(ZLR_task *task)
{
    std::printf("Remove all integer constraints.\n");
    int32_t num_columns = 0;
    (void)ZLR_getnumvar(task, &num_columns);
    for (int32_t j = 0; j < num_columns; ++j) (void)ZLR_putvartype(task, j, ZLR_VAR_CONT);
}

/* Links a log file named behind the marker, but only in place of another one, and does not remember its name: the old
 * name is handed to the library, which leaves memory alone that is not its own, and stays the caller's. */
static void change_log_file(const pipeline_input *in, run_options *options)
{
    const char *name = options->log_file;
    if (name != nullptr && name[0] != 0 && in->remembered_log != nullptr &&
        std::strcmp(name, in->remembered_log) != 0) {
        (void)ZLR_linkfiletotaskstream(in->task, ZLR_STREAM_LOG, name, 0);
        ZLR_freeenv(in->env, const_cast<char *>(in->remembered_log));
    }
    std::free(options->log_file);
    options->log_file = nullptr;
}

static int32_t read_initial_solutions(ZLR_task *task, const run_options *options)
{
    int32_t code = ZLR_RES_OK;
    for (int32_t kind = 0; kind < NUM_SOLUTION_KINDS && code == ZLR_RES_OK; ++kind) {
        const char *name = options->initial_solution[kind];
        if (name != nullptr) code = ZLR_readsolution(task, kind, name);
    }
    return code;
}

/* Prepares the task. Returns the first failure that ends the pipeline. */
static int32_t prepare(const pipeline_input *in, run_options *options)
{
    ZLR_task *task = in->task;
    int32_t code = ZLR_RES_OK;

    if (options->remove_integers) remove_integers(task);
    change_log_file(in, options);
    if (options->to_conic) code = ZLR_toconic(task);
    if (options->write_parameters) (void)ZLR_writeparamfile(task, nullptr);
    if (options->stat_start) (void)ZLR_startstat(task);
    if (code == ZLR_RES_OK) code = read_initial_solutions(task, options);
    if (code == ZLR_RES_OK && options->analyse_problem) code = ZLR_analyzeproblem(task, ZLR_STREAM_MSG);
    if (code == ZLR_RES_OK && options->primal_repair) {
        code = ZLR_primalrepair(task, nullptr, nullptr, nullptr, nullptr);
    }
    return code;
}

/* ---- Behind the optimiser ---- */

static void print_summaries(ZLR_task *task, const run_options *options)
{
    (void)ZLR_solutionsummary(task, ZLR_STREAM_MSG);
    (void)ZLR_echotask(task, ZLR_STREAM_MSG, "\n");
    (void)ZLR_optimizersummary(task, ZLR_STREAM_MSG);
    for (int32_t kind = 0; kind < NUM_SOLUTION_KINDS; ++kind) {
        if (options->analyse_final[kind]) (void)ZLR_analyzesolution(task, ZLR_STREAM_MSG, kind);
    }
}

/* Names the result file and, with something to analyse, asks for the report. `data_name` has 6 spare bytes and keeps a
 * compression suffix, unlike the names of solution files: "model.mps.gz" gives "model.mps.sen". */
static void report_sensitivity(ZLR_task *task, const char *result_file, char *data_name, int32_t everything,
                               run_options *options)
{
    if ((result_file == nullptr || result_file[0] == 0) && data_name != nullptr) {
        replace_extension(data_name, "sen");
        (void)ZLR_putstrparam(task, ZLR_SPAR_SENSITIVITY_RES_FILE, data_name);
    }
    const char *file = options->sensitivity_file;
    if ((file != nullptr && file[0] != 0) || everything == 1) {
        (void)ZLR_putstrparam(task, ZLR_SPAR_SENSITIVITY_FILE, file);
        run_status_keep(options, ZLR_sensitivityreport(task, ZLR_STREAM_LOG));
    }
}

static void analyse_sensitivity(ZLR_task *task, run_options *options)
{
    int32_t response_class = ZLR_CLASS_OK;
    int32_t everything = 0;
    (void)ZLR_getresponseclass(options->run_status, &response_class);
    (void)ZLR_getintparam(task, ZLR_IPAR_SENSITIVITY_ALL, &everything);
    if (response_class == ZLR_CLASS_ERROR) return;
    if (!options->sensitivity_wanted && everything == 0) return;

    char *result_file = nullptr;
    char *data_name = nullptr;
    (void)ZLR_getstrparamal(task, ZLR_SPAR_SENSITIVITY_RES_FILE, 0, &result_file);
    (void)ZLR_getstrparamal(task, ZLR_SPAR_DATA_FILE, 6, &data_name);
    report_sensitivity(task, result_file, data_name, everything, options);
    ZLR_freedbgtask(task, result_file, ZELORBIN_SOURCE, __LINE__);
    ZLR_freedbgtask(task, data_name, ZELORBIN_SOURCE, __LINE__);
}

static void report(const pipeline_input *in, run_options *options)
{
    print_summaries(in->task, options);
    if (options->write_solutions) derive_solution_names(in->task, in->data_name, options);
    analyse_sensitivity(in->task, options);
    if (options->stat_append) (void)ZLR_appendstat(in->task);
    run_status_keep(options, write_infeasible_subproblems(in->task, options->infeasible_file));
    if (options->run_status == ZLR_RES_OK) {
        options->run_status = feasibility_repair_dump(in->task, options->repair_file);
    }
}

void pipeline_run(const pipeline_input *in, run_options *options)
{
    options->run_status = prepare(in, options);
    if (options->run_status != ZLR_RES_OK || !options->run_optimizer) return;

    options->run_status = ZLR_optimize(in->task); /* not tested: a failed or stopped run is reported too */
    interrupt_clear();
    report(in, options);
}
