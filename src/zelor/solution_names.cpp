/* solution_names.cpp - names of solution files, and the writing of the solutions under them. */
#include "solution_names.h"

#include "path.h"

#include <cstring>

void replace_extension(char *name, const char *extension)
{
    char *at = name + std::strlen(name);
    while (at != name && *at != '.' && !path_ends_at(*at)) --at;
    if (*at != '.') {
        at = name + std::strlen(name);
        *at = '.';
    }
    std::memcpy(at + 1, extension, std::strlen(extension) + 1);
}

void strip_compression_suffix(char *name)
{
    char *dot = std::strrchr(name, '.');
    if (dot != nullptr && std::strcmp(dot, ".gz") == 0) *dot = 0;
}

/* What belongs to a kind of solution: the extension of its file and the parameter that holds its name. */
static const struct {
    const char *extension;
    int32_t parameter;
} kind_file[NUM_SOLUTION_KINDS] = {
    {"sol", ZLR_SPAR_ITR_SOL_FILE},
    {"bas", ZLR_SPAR_BAS_SOL_FILE},
    {"int", ZLR_SPAR_INT_SOL_FILE},
};

/* Puts the derived name where the parameter is empty: a name given by an option or a parameter file wins. */
static int32_t put_derived_name(ZLR_task *task, int32_t parameter, const char *derived)
{
    char *given = nullptr;
    int32_t code = ZLR_getstrparamal(task, parameter, 0, &given);
    if (code == ZLR_RES_OK && (given == nullptr || given[0] == 0)) code = ZLR_putstrparam(task, parameter, derived);
    ZLR_freedbgtask(task, given, ZELORBIN_SOURCE, __LINE__);
    return code;
}

static int32_t put_derived_names(ZLR_task *task, char *data_name)
{
    int32_t code = ZLR_RES_OK;
    for (int32_t kind = 0; kind < NUM_SOLUTION_KINDS && code == ZLR_RES_OK; ++kind) {
        replace_extension(data_name, kind_file[kind].extension);
        code = put_derived_name(task, kind_file[kind].parameter, data_name);
    }
    return code;
}

static int32_t write_solutions(ZLR_task *task)
{
    int32_t code = ZLR_RES_OK;
    for (int32_t kind = 0; kind < NUM_SOLUTION_KINDS && code == ZLR_RES_OK; ++kind) {
        int32_t defined = 0;
        (void)ZLR_solutiondef(task, kind, &defined);
        if (defined) code = ZLR_writesolution(task, kind, nullptr);
    }
    return code;
}

void derive_solution_names(ZLR_task *task, char *data_name, run_options *options)
{
    strip_compression_suffix(data_name);
    run_status_keep(options, put_derived_names(task, data_name));
    run_status_keep(options, write_solutions(task)); /* also after a failure: what exists is not lost */
}
