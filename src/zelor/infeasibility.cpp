/* infeasibility.cpp - infeasible subproblems and the repair stage. The mathematics is the library's: here are the moment,
 * the file names and what a failure stops. */
#include "infeasibility.h"

#include "path.h"
#include "run_options.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

/* ---- Infeasible subproblems ---- */

char *infeasible_file_name(const char *base, const char *tag)
{
    /* Behind the base: a dot, seven characters of tag and the terminator. */
    const size_t length = std::strlen(base);
    const size_t size = length + 9;
    char *name = static_cast<char *>(std::calloc(size, 1));
    if (name == nullptr) return nullptr;

    size_t dot = length;
    while (dot > 0 && !path_ends_at(base[dot])) --dot;
    while (base[dot] != '.' && base[dot] != 0) ++dot; /* the first dot, where solution files go by the last */

    std::memcpy(name, base, dot);
    char *end = name + dot;
    const size_t room = size - dot;
    if (base[dot] == 0) {
        std::snprintf(end, room, ".%s", tag);
    } else {
        const char *rest = base + dot + 1;
        std::snprintf(end, room, ".%s%s%s", tag, rest[0] != 0 ? "." : "", rest);
    }
    return name;
}

/* Gets and writes the subproblem of one kind. The caller deletes it. */
static int32_t write_subproblem(ZLR_task *task, int32_t kind, const char *base, ZLR_task **subproblem)
{
    static const char *const tags[NUM_SOLUTION_KINDS] = {"itr.inf", "bas.inf", "int.inf"};

    int32_t code = ZLR_getinfeasiblesubproblem(task, kind, subproblem);
    if (code != ZLR_RES_OK) return code;
    char *name = infeasible_file_name(base, tags[kind]);
    if (name == nullptr) return ZLR_RES_ERR_SPACE;

    (void)ZLR_echotask(task, ZLR_STREAM_MSG, "\nWriting infeasible subproblem to file '%s'.\n", name);
    code = ZLR_writedata(*subproblem, name);
    std::free(name);
    return code;
}

static int32_t report_kind(ZLR_task *task, int32_t kind, const char *base)
{
    int32_t defined = 0;
    int32_t code = ZLR_solutiondef(task, kind, &defined);
    if (code != ZLR_RES_OK || !defined) return code;

    int32_t status = ZLR_SOLSTA_UNKNOWN;
    code = ZLR_getsolsta(task, kind, &status);
    if (code != ZLR_RES_OK) return code;

    ZLR_task *subproblem = nullptr;
    if (status == ZLR_SOLSTA_PRIM_INFEAS_CER || status == ZLR_SOLSTA_DUAL_INFEAS_CER) {
        code = write_subproblem(task, kind, base, &subproblem);
    }
    (void)ZLR_deletetask(&subproblem); /* also when there is none */
    return code;
}

int32_t write_infeasible_subproblems(ZLR_task *task, const char *file_name)
{
    if (file_name == nullptr || file_name[0] == 0) return ZLR_RES_OK;
    int32_t code = ZLR_RES_OK;
    for (int32_t kind = 0; kind < NUM_SOLUTION_KINDS && code == ZLR_RES_OK; ++kind) {
        code = report_kind(task, kind, file_name);
    }
    return code;
}

/* ---- Repair stage ---- */

/* Working memory: weights of the lower and upper sides of rows and columns, and a name. Absent where there are none. */
struct repair_memory {
    double *row_lower;
    double *row_upper;
    double *column_lower;
    double *column_upper;
    char *name;
};

static int32_t allocate_weights(ZLR_env *env, int32_t num, double **lower, double **upper)
{
    if (num <= 0) return ZLR_RES_OK;
    const uint64_t count = static_cast<uint64_t>(num);
    *lower = static_cast<double *>(ZLR_callocdbgenv(env, count, sizeof **lower, ZELORBIN_SOURCE, __LINE__));
    if (*lower == nullptr) return ZLR_RES_ERR_SPACE;
    *upper = static_cast<double *>(ZLR_callocdbgenv(env, count, sizeof **upper, ZELORBIN_SOURCE, __LINE__));
    if (*upper == nullptr) return ZLR_RES_ERR_SPACE;
    for (int32_t i = 0; i < num; ++i) (*lower)[i] = (*upper)[i] = 1.0;
    return ZLR_RES_OK;
}

static int32_t repair_allocate(ZLR_env *env, int32_t num_rows, int32_t num_columns, const char *repair_file,
                               repair_memory *memory)
{
    int32_t code = allocate_weights(env, num_rows, &memory->row_lower, &memory->row_upper);
    if (code == ZLR_RES_OK) {
        code = allocate_weights(env, num_columns, &memory->column_lower, &memory->column_upper);
    }
    if (code != ZLR_RES_OK) return code;
    const uint64_t size = std::strlen(repair_file) + 24;
    memory->name = static_cast<char *>(ZLR_callocdbgenv(env, size, 1, ZELORBIN_SOURCE, __LINE__));
    return memory->name != nullptr ? ZLR_RES_OK : ZLR_RES_ERR_SPACE;
}

static void repair_free(ZLR_env *env, const repair_memory *memory)
{
    ZLR_freedbgenv(env, memory->name, ZELORBIN_SOURCE, __LINE__);
    ZLR_freedbgenv(env, memory->row_lower, ZELORBIN_SOURCE, __LINE__);
    ZLR_freedbgenv(env, memory->row_upper, ZELORBIN_SOURCE, __LINE__);
    ZLR_freedbgenv(env, memory->column_lower, ZELORBIN_SOURCE, __LINE__);
    ZLR_freedbgenv(env, memory->column_upper, ZELORBIN_SOURCE, __LINE__);
}

/* Kept as it is: the stage announces the file and hands the library a relaxed problem that nobody has made, whose code
 * is dropped, so that a run reports success whether or not a file appeared. Scripts look for the announcement and for
 * the return code. */
int32_t feasibility_repair_dump(ZLR_task *task, const char *repair_file)
{
    if (repair_file == nullptr || repair_file[0] == 0) return ZLR_RES_OK;

    ZLR_env *env = nullptr;
    ZLR_task *relaxed = nullptr;
    repair_memory memory = {};
    int32_t num_columns = 0;
    int32_t num_rows = 0;

    (void)ZLR_getenv(task, &env);
    int32_t code = ZLR_getnumvar(task, &num_columns);
    if (code == ZLR_RES_OK) code = ZLR_getnumcon(task, &num_rows);
    if (code == ZLR_RES_OK) code = repair_allocate(env, num_rows, num_columns, repair_file, &memory);
    if (code == ZLR_RES_OK) {
        (void)ZLR_echotask(task, ZLR_STREAM_MSG, "Writing feasibility analysis problem to file - %s\n", repair_file);
        (void)ZLR_writedata(relaxed, repair_file);
    }
    repair_free(env, &memory);
    if (relaxed != nullptr) (void)ZLR_deletetask(&relaxed);
    return code;
}
