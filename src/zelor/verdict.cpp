/* verdict.cpp - console line, return-code file and exit status. */
#include "verdict.h"

#include <cstdio>
#include <cstdlib>

static void print_return_code(const run_options *options, const char *code_name)
{
    if (options->task_log_handle.silent || options->ampl_mode != AMPL_OFF) return;
    std::printf("Return code - %d ", options->run_status);
    if (code_name[0] != 0) std::printf(" [%s]", code_name);
    std::printf("\n");
}

/* The name alone, as one line: batch files test for it. A file that cannot be had is passed over in silence. */
static void write_return_code_file(const char *filename, const char *code_name)
{
    if (filename == nullptr || filename[0] == 0) return;
    std::FILE *file = std::fopen(filename, "wt");
    if (file == nullptr) return;
    std::fprintf(file, "%s\n", code_name);
    (void)std::fclose(file);
}

static int32_t exit_status(const run_options *options, int32_t ampl_exit)
{
    if (options->return_minus_one) {
        const bool is_error = options->run_status >= 1000 && options->run_status <= 9999;
        return is_error ? -1 : 0;
    }
    switch (options->ampl_mode) {
    case AMPL_BY_A: return ampl_exit;
    case AMPL_BY_NAME: return 0; /* modelling clients take everything else as a failed run */
    default: return options->run_status;
    }
}

int32_t verdict_report(run_options *options, const char *code_name, int32_t ampl_exit)
{
    std::free(options->log_file);
    std::free(options->memory_debug_file);
    std::free(options->licence_codes);
    options->log_file = nullptr;
    options->memory_debug_file = nullptr;
    options->licence_codes = nullptr;

    print_return_code(options, code_name);
    write_return_code_file(options->return_code_file, code_name);
    std::free(options->return_code_file);
    options->return_code_file = nullptr;
    return exit_status(options, ampl_exit);
}
