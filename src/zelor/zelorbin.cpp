/* zelorbin.cpp - `main`: makes the library's environment and one task, wires the output streams, has the options read,
 * reads the problem or hands over to the AMPL front end, and tears everything down in one fixed order.
 *
 * The library owns problems, files, optimisers, reports and return codes; the program owns the command line, the order of
 * the stages, the names of output files, CTRL-C and the exit status. Every library call leaves its code in run_status,
 * and the next stage runs only while that is 0; where a code is dropped, the call says so with (void). */
#include "ampl_entry.h"
#include "heap.h"
#include "interrupt.h"
#include "pipeline.h"
#include "scan.h"
#include "verdict.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

/* Everything that lives as long as the process. */
struct program_run {
    int32_t argc;
    char **argv;
    run_options options;
    ZLR_env *env;
    ZLR_task *task;
    char *remembered_log; /* the name last linked to the log stream; null: none */
    char *data_name;      /* the task's memory, with room for derived names */
    int32_t data_present; /* the task holds something that "-out" may write */
    int32_t ampl_exit;
    char code_name[OPTION_TEXT_BYTES];
};

/* Where clean-up begins: how much there is to undo. */
enum { CLEAN_ALL, CLEAN_FROM_OUT, CLEAN_FROM_TASK, CLEAN_FROM_ENV };

/* Bytes that derived names may need behind the data file name. */
enum { SPARE_NAME_BYTES = 128 };

/* ---- Environment, task and streams ---- */

static int32_t put_licence_settings(program_run *run)
{
    const run_options *options = &run->options;
    int32_t code = ZLR_RES_OK;
    if (options->licence_path[0] != 0) {
        code = ZLR_putlicensepath(run->env, options->licence_path);
    } else if (options->licence_codes != nullptr) {
        code = ZLR_putlicensecode(run->env, options->licence_codes);
    }
    if (code == ZLR_RES_OK) code = ZLR_putlicensewait(run->env, options->wait_for_licence);
    if (code == ZLR_RES_OK) code = ZLR_putlicensedebug(run->env, options->full_licence_info);
    return code;
}

static int32_t make_environment(program_run *run)
{
    int32_t code = ZLR_makeenv(&run->env, run->options.memory_debug_file);
    if (code == ZLR_RES_OK) code = ZLR_linkfunctoenvstream(run->env, ZLR_STREAM_MSG, nullptr, sysenv_print);
    if (code == ZLR_RES_OK) code = put_licence_settings(run);
    return code;
}

static void wire_task(program_run *run)
{
    sysenv_printcontext *handle = &run->options.task_log_handle;
    (void)ZLR_putcallbackfunc(run->task, break_callback, nullptr);
    handle->task = run->task;
    (void)ZLR_linkfunctotaskstream(run->task, ZLR_STREAM_LOG, handle, sysenv_printquiet);
}

/* Links the log file that a scan has found, unless it is linked already, and remembers its name. */
static void take_log_file(program_run *run)
{
    run_options *options = &run->options;
    const char *name = options->log_file;
    if (name != nullptr && name[0] != 0 && (run->remembered_log == nullptr || !same_text(name, run->remembered_log))) {
        (void)ZLR_linkfiletotaskstream(run->task, ZLR_STREAM_LOG, name, 0);
        (void)replace_text(&run->remembered_log, name);
    }
    std::free(options->log_file);
    options->log_file = nullptr;
}

static void print_banner(program_run *run)
{
    const run_options *options = &run->options;
    if (options->task_log_handle.silent) return;
    if (options->ampl_mode != AMPL_OFF && !options->full_licence_info) return;
    (void)ZLR_echointro(run->env, options->full_licence_info);
}

/* ---- Options ---- */

/* Applies the options before or after the read. Returns 1 to go on. */
static int32_t apply_options(program_run *run, int32_t before_read)
{
    run_options *options = &run->options;
    return apply_arguments(run->argc, run->argv, run->task, before_read, options) && options->run_status == ZLR_RES_OK;
}

static int32_t first_application(program_run *run)
{
    run_options *options = &run->options;
    options->stat_start = 0;
    options->stat_stop = 0;
    options->stat_append = 0;
    if (!apply_options(run, 1)) return 0;
    take_log_file(run);
    return 1;
}

/* What is due between the options and the data. */
static int32_t prepare_input(program_run *run)
{
    int32_t code = ZLR_RES_OK;
    if (run->options.stat_start) code = ZLR_startstat(run->task);
    if (code == ZLR_RES_OK && run->options.write_parameters) code = ZLR_writeparamfile(run->task, nullptr);
    if (code == ZLR_RES_OK) {
        code = ZLR_getstrparamal(run->task, ZLR_SPAR_DATA_FILE, SPARE_NAME_BYTES, &run->data_name);
    }
    return code;
}

/* ---- AMPL mode ---- */

/* Copies the arguments that are the front end's: all up to "-a", without "-l" and what stands behind it. */
static int32_t copy_arguments(program_run *run, char **list, int32_t *num)
{
    for (int32_t i = 0; i < run->argc; ++i) {
        if (same_text(run->argv[i], "-a")) break;
        if (same_text(run->argv[i], "-l")) {
            ++i;
            continue;
        }
        list[*num] = ZLR_strduptask(run->task, run->argv[i]);
        if (list[*num] == nullptr) return ZLR_RES_ERR_SPACE;
        ++*num;
    }
    return ZLR_RES_OK;
}

/* Without memory for the list nothing is done and the run's code stays 0: kept. */
static void run_ampl(program_run *run)
{
    run_options *options = &run->options;
    const uint64_t size = static_cast<uint64_t>(run->argc) + 1;
    char **list = static_cast<char **>(ZLR_callocdbgtask(run->task, size, sizeof *list, ZELORBIN_SOURCE, __LINE__));
    if (list == nullptr) return;

    int32_t num = 0;
    int32_t code = copy_arguments(run, list, &num);
    if (code == ZLR_RES_OK) code = ZLR_amplrun(list, run->task, options->run_optimizer, &run->ampl_exit);
    options->run_status = code;
    run->data_present = code == ZLR_RES_OK;

    while (num > 0) ZLR_freedbgtask(run->task, list[--num], ZELORBIN_SOURCE, __LINE__);
    ZLR_freedbgtask(run->task, list, ZELORBIN_SOURCE, __LINE__);
}

/* ---- File mode ---- */

/* Printed for every failed read, with or without a name: the wording is kept. */
static void print_read_warning(void)
{
    std::printf("\n");
    std::printf("*** Warning: No input file specified.\n");
    std::printf("             Common usage of the ZELOR command line tool is: \n\n");
    std::printf("             zelor file_name\n\n");
}

/* Reads the problem. Returns 0 when there is nothing to go on with. */
static int32_t read_problem(program_run *run)
{
    run_options *options = &run->options;
    if (run->data_name == nullptr || run->data_name[0] == 0) {
        std::printf("\n*** No input file specfied. No optimization is performed.\n\n");
        options->run_optimizer = 0;
        return 1;
    }
    options->run_status = ZLR_readdata(run->task, nullptr);
    if (options->run_status != ZLR_RES_OK) {
        print_read_warning();
        return 0;
    }
    if (options->objective_sense < 0) options->run_status = ZLR_putobjsense(run->task, ZLR_SENSE_MIN);
    if (options->objective_sense > 0) options->run_status = ZLR_putobjsense(run->task, ZLR_SENSE_MAX);
    if (options->run_status == ZLR_RES_OK) options->run_status = ZLR_readsummary(run->task, ZLR_STREAM_MSG);
    return 1;
}

/* The second application clears run_status, so that a code left by the sense or the summary is lost: kept. */
static void run_file(program_run *run)
{
    if (!read_problem(run)) return;
    run->data_present = 1;
    if (!apply_options(run, 0)) return;

    const pipeline_input in = {run->env, run->task, run->data_name, run->remembered_log};
    pipeline_run(&in, &run->options);
}

/* ---- Clean-up ---- */

static void free_file_names(run_options *options)
{
    for (char *&name : options->initial_solution) {
        std::free(name);
        name = nullptr;
    }
    char **const names[] = {&options->out_file, &options->infeasible_file, &options->repair_file,
                            &options->sensitivity_file};
    for (char **name : names) {
        std::free(*name);
        *name = nullptr;
    }
}

/* "-out" is served at the very end: after a failed optimisation and with "-x" too, which makes a converter of the
 * program. */
static void write_out_file(program_run *run)
{
    run_options *options = &run->options;
    if (run->task == nullptr || options->out_file == nullptr || !run->data_present) return;
    run_status_keep(options, ZLR_writedata(run->task, options->out_file));
}

static void delete_task(program_run *run)
{
    run_options *options = &run->options;
    if (options->list_parameters) (void)ZLR_printparam(run->task);
    run_status_keep(options, ZLR_deletetask(&run->task));
    options->task_log_handle.task = nullptr;
}

static void print_licence_advice(void)
{
    std::printf("*** The solver library asks for a licence and has not found a valid one.\n");
    std::printf("    The library that belongs to this program asks for none: its engines are open.\n");
    std::printf("    Check that no other library of that name is found in front of it, or give that one\n");
    std::printf("    its licence: -l dir names the directory, and -w waits until one is free.\n");
}

static void delete_environment(program_run *run)
{
    run_options *options = &run->options;
    std::free(run->remembered_log);
    run->remembered_log = nullptr;
    if (options->run_status == ZLR_RES_ERR_LICENSE) print_licence_advice();
    const int32_t code = ZLR_deleteenv(&run->env);
    if (code != ZLR_RES_OK) options->run_status = code; /* the one call that replaces an earlier failure */
}

static void clean_up(program_run *run, int32_t from)
{
    if (from <= CLEAN_ALL) {
        ZLR_freedbgtask(run->task, run->data_name, ZELORBIN_SOURCE, __LINE__);
        run->data_name = nullptr;
        if (run->options.stat_stop && run->task != nullptr) (void)ZLR_stopstat(run->task);
    }
    if (from <= CLEAN_FROM_OUT) write_out_file(run);
    free_file_names(&run->options);
    if (from <= CLEAN_FROM_TASK) delete_task(run);
    delete_environment(run);
}

/* ---- The run ---- */

/* Runs up to the clean-up and returns where that begins. */
static int32_t run_stages(program_run *run)
{
    run_options *options = &run->options;

    options->run_status = make_environment(run);
    if (options->run_status != ZLR_RES_OK) return CLEAN_FROM_ENV;
    options->run_status = ZLR_makeemptytask(run->env, &run->task);
    if (options->run_status != ZLR_RES_OK) return CLEAN_FROM_TASK;

    wire_task(run);
    take_log_file(run);
    print_banner(run);
    if (!first_application(run)) return CLEAN_FROM_OUT;

    options->run_status = prepare_input(run);
    if (options->run_status != ZLR_RES_OK) return CLEAN_ALL;
    if (options->ampl_mode != AMPL_OFF) {
        run_ampl(run);
    } else {
        run_file(run);
    }
    return CLEAN_ALL;
}

static int32_t print_version(void)
{
    int32_t major = 0;
    int32_t minor = 0;
    int32_t revision = 0;
    int32_t build = 0;
    const int32_t code = ZLR_getversion(&major, &minor, &revision, &build);
    if (code == ZLR_RES_OK) {
        std::printf("ZELOR version %d.%d (Revision: %d Build %d)\n", major, minor, revision, build);
    }
    return code;
}

int main(int argc, char **argv)
{
    program_run run = {};
    run.argc = argc;
    run.argv = argv;

    heap_prepare();
    interrupt_install();
    if (prescan_arguments(argc, argv, &run.options)) {
        if (run.options.version_only && run.options.ampl_mode == AMPL_OFF) {
            run.options.run_status = print_version();
        } else {
            clean_up(&run, run_stages(&run));
        }
        (void)ZLR_getcodedesc(run.options.run_status, run.code_name, nullptr);
    }
    return verdict_report(&run.options, run.code_name, run.ampl_exit);
}
