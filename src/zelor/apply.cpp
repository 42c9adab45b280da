/* apply.cpp - applies the options to the task and to the run's record.
 *
 * In file mode two passes: first all parameter files in their order, then everything else in its order, so that a
 * parameter given on the line beats every file of the same invocation. In AMPL mode one short scan. */
#include "scan.h"

#include <cstdio>
#include <cstdlib>

struct apply_scan {
    int32_t argc;
    char **argv;
    ZLR_task *task;
    int32_t before_read;
    int32_t ignore_errors; /* of parameters, from "-n" on */
    run_options *options;
};

/* Results of an option's function: how many tokens it took, or one of these. */
enum { REFUSED = 0 /* the caller prints the message */, STOPPED = -1 /* a message was printed */, NEXT = 1 };

/* ---- Parameter files ---- */

static int32_t read_parameter_file(apply_scan *scan, const char *filename)
{
    /* Set back by nobody: what follows in the run reads its parameter files in the same way. */
    if (scan->ignore_errors) (void)ZLR_putintparam(scan->task, ZLR_IPAR_PARAM_IGNORE_ERRORS, 1);
    return ZLR_readparamfile(scan->task, filename);
}

/* Walks token by token without knowing which is the value of another. Returns 0 at a marker behind the first one:
 * such a line ends the run without a message, which is kept. */
static int32_t parameter_file_pass(apply_scan *scan, int32_t start)
{
    for (int32_t i = start; i < scan->argc && scan->options->run_status == ZLR_RES_OK; ++i) {
        const char *token = scan->argv[i];
        if (!is_option(token)) continue;
        if (token[1] == '+') {
            if (!scan->before_read) return 0;
        } else if (same_text(token, "-n")) {
            scan->ignore_errors = 1;
        } else if ((same_text(token, "-p") || same_text(token, "-pari")) && i + 1 < scan->argc) {
            ++i;
            scan->options->run_status = read_parameter_file(scan, scan->argv[i]);
        }
    }
    return 1;
}

/* ---- Options, by key ---- */

/* An option with a text that the record keeps; without a value it is passed over. */
static int32_t keep_value(apply_scan *scan, token_list at, char **field)
{
    if (has_value(at)) run_status_keep(scan->options, replace_text(field, at.args[1]));
    return tokens_with_value(at);
}

/* An option with a text for a string parameter; without a value it is passed over. */
static int32_t put_value(const apply_scan *scan, token_list at, int32_t parameter)
{
    if (has_value(at)) (void)ZLR_putstrparam(scan->task, parameter, at.args[1]);
    return tokens_with_value(at);
}

static int32_t apply_a(apply_scan *scan, token_list at, const char *name)
{
    run_options *options = scan->options;
    if (same_text(name, "anapro")) options->analyse_problem = 1;
    if (same_text(name, "anasoli")) return scan_solution_flag(at, options->analyse_initial) ? 2 : STOPPED;
    if (same_text(name, "anasolo")) return scan_solution_flag(at, options->analyse_final) ? 2 : STOPPED;
    return NEXT;
}

static int32_t apply_b(apply_scan *scan, token_list at, const char *name)
{
    if (same_text(name, "basi")) return keep_value(scan, at, &scan->options->initial_solution[ZLR_SOL_BAS]);
    if (same_text(name, "baso")) return put_value(scan, at, ZLR_SPAR_BAS_SOL_FILE);
    return REFUSED; /* "-brni" and "-brno", which the pre-scan passes over, end here */
}

static int32_t apply_d(apply_scan *scan, token_list at, const char *name)
{
    if (same_text(name, "dbgmem")) return tokens_with_value(at);
    if (at.left < 3) return REFUSED;

    char parameter[OPTION_TEXT_BYTES];
    char value[OPTION_TEXT_BYTES];
    (void)sysenv_strncpy(sizeof parameter, parameter, at.args[1]);
    (void)sysenv_strncpy(sizeof value, value, at.args[2]);
    const int32_t code = ZLR_putparam(scan->task, parameter, value);
    scan->options->run_status = scan->ignore_errors ? ZLR_RES_OK : code;
    return 3;
}

static int32_t apply_i(apply_scan *scan, token_list at, const char *name)
{
    run_options *options = scan->options;
    if (same_text(name, "itri")) return keep_value(scan, at, &options->initial_solution[ZLR_SOL_ITR]);
    if (same_text(name, "inti")) return keep_value(scan, at, &options->initial_solution[ZLR_SOL_ITG]);
    if (same_text(name, "itro")) return put_value(scan, at, ZLR_SPAR_ITR_SOL_FILE);
    if (same_text(name, "into")) return put_value(scan, at, ZLR_SPAR_INT_SOL_FILE);
    if (same_text(name, "info")) return keep_value(scan, at, &options->infeasible_file);
    if (same_text(name, "infrepo")) return keep_value(scan, at, &options->repair_file);
    return REFUSED;
}

static int32_t apply_m(apply_scan *scan, const char *name)
{
    if (same_text(name, "min")) {
        scan->options->objective_sense = -1;
        return NEXT;
    }
    if (same_text(name, "max")) {
        scan->options->objective_sense = 1;
        return NEXT;
    }
    return REFUSED;
}

static int32_t apply_n(apply_scan *scan, const char *name)
{
    if (same_text(name, "n")) {
        scan->ignore_errors = 1;
        return NEXT;
    }
    return same_text(name, "nowrsol") ? NEXT : REFUSED;
}

static int32_t apply_o(apply_scan *scan, token_list at, const char *name)
{
    if (!same_text(name, "out")) return REFUSED;
    if (has_value(at)) (void)replace_text(&scan->options->out_file, at.args[1]);
    return tokens_with_value(at);
}

static int32_t apply_p(apply_scan *scan, token_list at, const char *name)
{
    run_options *options = scan->options;
    if (same_text(name, "primalrepair")) {
        options->primal_repair = 1;
        return NEXT;
    }
    if (!has_value(at)) return REFUSED; /* "-p", "-pari" and "-paro" without a value */
    if (same_text(name, "paro")) {
        options->write_parameters = 1;
        options->run_status = ZLR_putstrparam(scan->task, ZLR_SPAR_PARAM_WRITE_FILE, at.args[1]);
        return 2;
    }
    return same_text(name, "p") || same_text(name, "pari") ? 2 : REFUSED;
}

/* "-stat start", "stop" or "append", or a label for the statistics. */
static int32_t apply_stat(apply_scan *scan, token_list at)
{
    run_options *options = scan->options;
    if (!has_value(at)) return NEXT;
    const char *word = at.args[1];
    if (same_text(word, "start")) {
        options->stat_start = 1;
    } else if (same_text(word, "stop")) {
        options->stat_stop = 1;
    } else if (same_text(word, "append")) {
        options->stat_append = 1;
    } else {
        (void)ZLR_putstrparam(scan->task, ZLR_SPAR_STAT_LABEL, word);
    }
    return 2;
}

static int32_t apply_s(apply_scan *scan, token_list at, const char *name)
{
    if (same_text(name, "stat")) return apply_stat(scan, at);
    if (same_text(name, "sen")) {
        scan->options->sensitivity_wanted = 1;
        return keep_value(scan, at, &scan->options->sensitivity_file);
    }
    return same_text(name, "silent") ? NEXT : REFUSED;
}

/* Applies one option. Returns the tokens that it took, or why not. */
static int32_t apply_option(apply_scan *scan, token_list at)
{
    const char *name = at.args[0] + 1;
    switch (name[0]) {
    case '+':
    case '-':
    case '=':
    case '?':
    case 'h':
    case 't':
    case 'w': return NEXT; /* the pre-scan's */
    case 'A':
    case 'f':
    case 'r': return same_text(name, "rout") ? 2 : NEXT;
    case 'l':
    case 'L': return same_text(name, "lb") ? tokens_with_list(at) : tokens_with_value(at);
    case 'a': return apply_a(scan, at, name);
    case 'b': return apply_b(scan, at, name);
    case 'd': return apply_d(scan, at, name);
    case 'i': return apply_i(scan, at, name);
    case 'm': return apply_m(scan, name);
    case 'n': return apply_n(scan, name);
    case 'o': return apply_o(scan, at, name);
    case 'p': return apply_p(scan, at, name);
    case 'q':
        if (has_value(at)) (void)replace_text(&scan->options->log_file, at.args[1]);
        return tokens_with_value(at);
    case 's': return apply_s(scan, at, name);
    case 'x': scan->options->run_optimizer = 0; return NEXT;
    default: return REFUSED; /* 'v' too: in front of the marker the run has ended before this */
    }
}

static int32_t option_pass(apply_scan *scan, int32_t start)
{
    int32_t i = start;
    while (i < scan->argc && scan->options->run_status == ZLR_RES_OK) {
        const char *token = scan->argv[i];
        if (!is_option(token)) { /* the last one is the name of the data file */
            (void)ZLR_putstrparam(scan->task, ZLR_SPAR_DATA_FILE, token);
            ++i;
            continue;
        }
        const int32_t taken = apply_option(scan, tokens_from(scan->argc, scan->argv, i));
        if (taken == REFUSED) std::printf("Error in argument: %s\n", token);
        if (taken <= 0) return 0;
        i += taken;
    }
    return 1;
}

/* ---- AMPL mode ---- */

/* Of the options only "-out" counts everywhere and "-d" behind "-a": what stands between the stub and "-a" belongs to
 * the front end, which may use the same words for something else. */
static int32_t ampl_argument_scan(apply_scan *scan)
{
    run_options *options = scan->options;
    int32_t seen_a = 0;

    for (int32_t i = 1; i < scan->argc && options->run_status == ZLR_RES_OK; ++i) {
        const token_list at = tokens_from(scan->argc, scan->argv, i);
        const char *token = at.args[0];
        if (!is_option(token)) {
            (void)ZLR_putstrparam(scan->task, ZLR_SPAR_DATA_FILE, token);
        } else if (token[1] == '+') {
            if (!scan->before_read) return 1;
        } else if (same_text(token, "-a")) {
            seen_a = 1;
        } else if (same_text(token, "-out") && has_value(at)) {
            (void)replace_text(&options->out_file, at.args[1]);
            ++i;
        } else if (seen_a && same_text(token, "-d") && scan->before_read) {
            if (at.left < 3) return 1;
            options->run_status = ZLR_putparam(scan->task, at.args[1], at.args[2]);
            i += 2;
        }
    }
    return 1;
}

/* ---- Entry ---- */

/* Where the second invocation begins: behind the first marker. */
static int32_t behind_marker(int32_t argc, char **argv)
{
    int32_t i = 1;
    while (i < argc && !(is_option(argv[i]) && argv[i][1] == '+')) ++i;
    return i < argc ? i + 1 : argc;
}

int32_t apply_arguments(int32_t argc, char **argv, ZLR_task *task, int32_t before_read, run_options *options)
{
    options->run_status = ZLR_RES_OK;
    options->write_parameters = 0;
    options->objective_sense = 0;

    apply_scan scan = {argc, argv, task, before_read, 0, options};
    if (options->ampl_mode != AMPL_OFF) return ampl_argument_scan(&scan);

    const int32_t start = before_read ? 1 : behind_marker(argc, argv);
    if (!parameter_file_pass(&scan, start)) return 0;
    return option_pass(&scan, start);
}
