/* files.cpp - problem files. */
#include "solver/api/api.h"
#include "solver/io/io.h"
#include "solver/report/clock.h"

int32_t ZLR_readdata(ZLR_task *task, const char *filename)
{
    return api_task(task, [&]() -> int32_t {
        const char *name = filename != nullptr ? filename : param_str(&task->params, SPAR_DATA_FILE);
        const double started = clock_now_s();
        io_context io = {name, &task->params, &task->streams, task->env->sys};
        auto fresh = std::make_shared<model>();
        int32_t format = -1;
        const int32_t res = problem_read(&io, fresh.get(), &format);
        if (res != ZLR_RES_OK) return res;

        task_drop_solutions(task);
        task->problem = std::move(fresh);
        task->data_file = name;
        task->data_format = format;
        task->read_time_s = clock_now_s() - started;
        return ZLR_RES_OK;
    });
}

int32_t ZLR_writedata(ZLR_task *task, const char *filename)
{
    return api_task(task, [&]() -> int32_t {
        if (filename == nullptr) return ZLR_RES_ERR_NULL_POINTER;
        io_context io = {filename, &task->params, &task->streams, task->env->sys};
        int32_t format = task->data_format;
        return problem_write(&io, task->problem.get(), &format);
    });
}
