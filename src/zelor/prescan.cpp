/* prescan.cpp - the scan before any library object exists. Two sweeps over the line: the first for both ways of working,
 * the second for file mode alone.
 *
 * Neither sweep knows the values of options that it does not list, so that a value that begins with a dash is taken for
 * an option: kept, since scripts have come to rely on what such lines do. */
#include "scan.h"
#include "usage.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

/* Result of an option's function: how many tokens it took, or STOP after a message. */
enum { STOP = 0, NEXT = 1 };

/* ---- The licence list ---- */

/* Reads one integer of the list. Returns 1, or 0 if the text is something else. */
static int32_t read_licence_code(const char *text, int32_t *code)
{
    char *end = nullptr;
    errno = 0;
    const long value = std::strtol(text, &end, 10);
    if (end == text || *end != 0 || errno != 0 || value < INT32_MIN || value > INT32_MAX) return 0;
    *code = static_cast<int32_t>(value);
    return 1;
}

/* "-lb code code ...". A bad item is told and left out. A later list takes the place of an earlier one. */
static int32_t scan_licence_list(token_list at, run_options *options)
{
    const int32_t num = tokens_with_list(at);
    std::free(options->licence_codes);
    options->licence_codes = nullptr;
    if (num == 1) return num;

    /* One more than there are items: the list ends in 0. */
    int32_t *codes = static_cast<int32_t *>(std::calloc(static_cast<size_t>(num), sizeof *codes));
    if (codes == nullptr) return num;
    int32_t num_codes = 0;
    for (int32_t i = 1; i < num; ++i) {
        if (read_licence_code(at.args[i], &codes[num_codes])) {
            ++num_codes;
        } else {
            std::printf("Error in -lb argument\n");
        }
    }
    options->licence_codes = codes;
    return num;
}

/* ---- First sweep ---- */

static int32_t sweep_a(token_list at, const char *name, run_options *options)
{
    if (same_text(name, "anapro")) {
        options->analyse_problem = 1;
        return NEXT;
    }
    if (same_text(name, "anasoli")) {
        return scan_solution_flag(at, options->analyse_initial) ? 2 : STOP;
    }
    if (same_text(name, "anasolo")) {
        /* One token more than the option has: what stands behind its value is never looked at here. Kept. */
        return scan_solution_flag(at, options->analyse_final) ? 3 : STOP;
    }
    if (same_text(name, "a")) {
        options->ampl_mode = AMPL_BY_A;
        return NEXT;
    }
    std::printf("Error while procssing argument: '%s'\n", name);
    return STOP;
}

static int32_t sweep_d(token_list at, const char *name, run_options *options)
{
    if (!same_text(name, "dbgmem")) return NEXT;
    if (!has_value(at)) {
        print_argument_error(at.args[0]);
        return STOP;
    }
    (void)replace_text(&options->memory_debug_file, at.args[1]);
    return 2;
}

static int32_t sweep_l(token_list at, const char *name, run_options *options)
{
    return same_text(name, "lb") ? scan_licence_list(at, options) : tokens_with_value(at);
}

static int32_t sweep_q(token_list at, run_options *options)
{
    if (has_value(at)) (void)replace_text(&options->log_file, at.args[1]);
    return tokens_with_value(at);
}

static int32_t sweep_r(token_list at, const char *name, run_options *options)
{
    if (same_text(name, "removeitg")) {
        options->remove_integers = 1;
        return NEXT;
    }
    if (!same_text(name, "rout")) { /* "-r", and everything else that begins so */
        options->return_minus_one = 1;
        return NEXT;
    }
    if (!has_value(at)) {
        print_argument_error(name);
        return STOP;
    }
    (void)replace_text(&options->return_code_file, at.args[1]);
    return 2;
}

static int32_t first_sweep_option(token_list at, const char *name, run_options *options)
{
    switch (name[0]) {
    case 'a': return sweep_a(at, name, options);
    case 'A': options->ampl_mode = same_text(name, "AMPL") ? AMPL_BY_NAME : AMPL_BY_A; return NEXT;
    case 'd': return sweep_d(at, name, options);
    case 'l':
    case 'L': return sweep_l(at, name, options);
    case 'p':
        if (same_text(name, "primalrepair")) options->primal_repair = 1;
        return NEXT;
    case 'q': return sweep_q(at, options);
    case 'r': return sweep_r(at, name, options);
    case 's':
        if (same_text(name, "silent")) options->task_log_handle.silent = 1;
        return NEXT;
    case 't':
        if (same_text(name, "toconic")) options->to_conic = 1;
        return NEXT;
    case 'x': options->run_optimizer = !options->run_optimizer; return NEXT;
    default: return NEXT;
    }
}

/* Looks at every token, those behind "-+" too. */
static int32_t first_sweep(int32_t argc, char **argv, run_options *options)
{
    int32_t i = 1;
    while (i < argc) {
        if (!is_option(argv[i])) {
            ++i;
            continue;
        }
        char name[OPTION_TEXT_BYTES];
        (void)sysenv_strncpy(sizeof name, name, argv[i] + 1);
        const int32_t taken = first_sweep_option(tokens_from(argc, argv, i), name, options);
        if (taken == STOP) return 0;
        i += taken;
    }
    return 1;
}

/* ---- Second sweep ---- */

/* True for the options whose value this sweep passes over. */
static bool has_file_name(const char *name)
{
    static const char *const names[] = {"out",     "inti", "into", "itri", "itro", "info",
                                        "infrepo", "basi", "baso", "brni", "brno"};
    for (const char *known : names) {
        if (same_text(name, known)) return true;
    }
    return false;
}

static int32_t sweep_licence_path(token_list at, const char *name, run_options *options)
{
    if (same_text(name, "lb")) return tokens_with_list(at);
    if (has_value(at)) (void)sysenv_strncpy(sizeof options->licence_path, options->licence_path, at.args[1]);
    return tokens_with_value(at);
}

static int32_t second_sweep_option(token_list at, const char *name, run_options *options)
{
    switch (name[0]) {
    case '=': options->list_parameters = 1; return NEXT;
    case 'l':
    case 'L': return sweep_licence_path(at, name, options);
    case 'w': options->wait_for_licence = 1; return NEXT;
    case 'v': options->version_only = 1; return NEXT;
    case 'f': options->full_licence_info = 1; return NEXT;
    case 'n':
        if (same_text(name, "nowrsol")) options->write_solutions = 0;
        return NEXT;
    case 'b':
    case 'i':
    case 'o': return has_file_name(name) ? tokens_with_value(at) : NEXT;
    default: return NEXT;
    }
}

/* Ends at the first "-+". */
static int32_t second_sweep(int32_t argc, char **argv, run_options *options)
{
    int32_t i = 1;
    while (i < argc) {
        if (!is_option(argv[i])) {
            ++i;
            continue;
        }
        char name[OPTION_TEXT_BYTES];
        (void)sysenv_strncpy(sizeof name, name, argv[i] + 1);
        if (name[0] == '+') return 1;
        if (name[0] == '?' || name[0] == 'h') {
            print_usage(argv[0]);
            return 0;
        }
        i += second_sweep_option(tokens_from(argc, argv, i), name, options);
    }
    return 1;
}

int32_t prescan_arguments(int32_t argc, char **argv, run_options *options)
{
    *options = run_options{};
    options->write_solutions = 1;
    options->run_optimizer = 1;

    if (!first_sweep(argc, argv, options)) return 0;
    if (options->ampl_mode != AMPL_OFF) return 1;
    return second_sweep(argc, argv, options);
}
