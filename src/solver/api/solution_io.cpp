/* solution_io.cpp - solution files. */
#include "solver/api/api.h"
#include "solver/io/solution_file.h"
#include "solver/report/words.h"

static bool kind_known(int32_t kind) { return kind >= ZLR_SOL_ITR && kind <= ZLR_SOL_ITG; }

/* Whether a solution is what WRITE_SOLUTION_STATUS asks for. */
static bool is_good_enough(const solution *sol, int32_t wanted)
{
    switch (sol->solsta) {
    case ZLR_SOLSTA_OPTIMAL:
    case ZLR_SOLSTA_INTEGER_OPTIMAL: return true;
    case ZLR_SOLSTA_PRIM_FEAS:
    case ZLR_SOLSTA_PRIM_AND_DUAL_FEAS:
    case ZLR_SOLSTA_NEAR_OPTIMAL:
    case ZLR_SOLSTA_NEAR_PRIM_FEAS:
    case ZLR_SOLSTA_NEAR_INTEGER_OPTIMAL: return wanted != SOLUTION_STATUS_OPTIMAL;
    default: return wanted == SOLUTION_STATUS_ANY;
    }
}

int32_t ZLR_readsolution(ZLR_task *task, int32_t kind, const char *filename)
{
    return api_task(task, [&]() -> int32_t {
        if (!kind_known(kind)) return ZLR_RES_ERR_ARGUMENT;
        if (filename == nullptr) return ZLR_RES_ERR_NULL_POINTER;
        const io_context io = {filename, &task->params, &task->streams, task->env->sys};
        return solution_file_read(&io, task->problem.get(), kind, &task->sol[kind]);
    });
}

int32_t ZLR_writesolution(ZLR_task *task, int32_t kind, const char *filename)
{
    static const int32_t file_param[] = {SPAR_ITR_SOL_FILE, SPAR_BAS_SOL_FILE, SPAR_INT_SOL_FILE};
    return api_task(task, [&]() -> int32_t {
        if (!kind_known(kind)) return ZLR_RES_ERR_ARGUMENT;
        const char *name = filename != nullptr ? filename : param_str(&task->params, file_param[kind]);
        const io_context io = {name, &task->params, &task->streams, task->env->sys};
        if (!task->sol[kind].defined) {
            streams_printf(&task->streams, ZLR_STREAM_ERR, "There is no %s solution to write.\n",
                           words_solution_kind(kind));
            return ZLR_RES_ERR_NO_SOLUTION;
        }
        if (name[0] == '\0') {
            streams_printf(&task->streams, ZLR_STREAM_ERR, "No name is given for the file of the %s solution.\n",
                           words_solution_kind(kind));
            return ZLR_RES_ERR_FILE_OPEN;
        }
        if (!is_good_enough(&task->sol[kind], param_int(&task->params, IPAR_WRITE_SOLUTION_STATUS))) {
            streams_printf(&task->streams, ZLR_STREAM_MSG, "The %s solution is %s: '%s' is not written.\n",
                           words_solution_kind(kind),
                           words_solution_status(task->sol[kind].solsta, task->sol[kind].is_local), name);
            return ZLR_RES_OK;
        }
        return solution_file_write(&io, task->problem.get(), &task->sol[kind], kind);
    });
}
