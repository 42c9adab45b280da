/* task.cpp - tasks: making and deleting them, streams, callback, memory, status texts. */
#include "solver/api/api.h"
#include "solver/codes/codes.h"
#include "solver/report/statistics.h"
#include "solver/report/words.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>

static const char source_name[] = "src/solver/api/task"; /* in memory traces */

int32_t ZLR_makeemptytask(ZLR_env *env, ZLR_task **task)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_POINTER;
    *task = nullptr;
    if (env == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    return api_guard(nullptr, [&]() -> int32_t {
        auto made = std::make_unique<ZLR_task>();
        made->env = env;
        made->problem = std::make_shared<model>();
        param_set_defaults(&made->params);
        *task = made.release();
        return ZLR_RES_OK;
    });
}

int32_t ZLR_deletetask(ZLR_task **task)
{
    if (task == nullptr || *task == nullptr) return ZLR_RES_OK;
    statistics_warn_of_loss(*task);
    blocks_close(&(*task)->blocks, (*task)->env->sys);
    const int32_t res = streams_close(&(*task)->streams);
    delete *task;
    *task = nullptr;
    return res;
}

int32_t ZLR_getenv(ZLR_task *task, ZLR_env **env)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    api_put(env, task->env);
    return ZLR_RES_OK;
}

void *ZLR_callocdbgtask(ZLR_task *task, uint64_t count, uint64_t size, const char *file, int32_t line)
{
    return task != nullptr ? blocks_calloc(&task->blocks, task->env->sys, count, size, file, line) : nullptr;
}

void *ZLR_calloctask(ZLR_task *task, uint64_t count, uint64_t size)
{
    return ZLR_callocdbgtask(task, count, size, source_name, __LINE__);
}

void ZLR_freedbgtask(ZLR_task *task, void *block, const char *file, int32_t line)
{
    if (task != nullptr) blocks_free(&task->blocks, task->env->sys, block, file, line);
}

void ZLR_freetask(ZLR_task *task, void *block) { ZLR_freedbgtask(task, block, source_name, __LINE__); }

char *ZLR_strduptask(ZLR_task *task, const char *text)
{
    if (task == nullptr || text == nullptr) return nullptr;
    const size_t size = std::strlen(text) + 1;
    auto *copy = static_cast<char *>(ZLR_calloctask(task, size, 1));
    if (copy != nullptr) std::memcpy(copy, text, size);
    return copy;
}

int32_t ZLR_putcallbackfunc(ZLR_task *task, ZLR_callbackfunc func, void *handle)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    task->callback = func;
    task->callback_handle = handle;
    return ZLR_RES_OK;
}

int32_t ZLR_linkfunctotaskstream(ZLR_task *task, int32_t stream, void *handle, ZLR_streamfunc func)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    if (stream < 0 || stream >= ZLR_STREAM_COUNT) return ZLR_RES_ERR_INDEX;
    task->streams.out[stream].func = func;
    task->streams.out[stream].handle = handle;
    return ZLR_RES_OK;
}

int32_t ZLR_linkfiletotaskstream(ZLR_task *task, int32_t stream, const char *filename, int32_t append)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    if (stream < 0 || stream >= ZLR_STREAM_COUNT) return ZLR_RES_ERR_INDEX;
    const int32_t res = streams_link_file(&task->streams, stream, filename, append != 0);
    if (res != ZLR_RES_OK)
        streams_printf(&task->streams, ZLR_STREAM_ERR, "%s: cannot be opened as a log file: %s.\n", filename,
                       std::strerror(errno));
    return res;
}

int32_t ZLR_echotask(ZLR_task *task, int32_t stream, const char *format, ...)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    if (format == nullptr) return ZLR_RES_ERR_NULL_POINTER;
    if (stream < 0 || stream >= ZLR_STREAM_COUNT) return ZLR_RES_ERR_INDEX;
    va_list args;
    va_start(args, format);
    const int32_t res = api_guard(task, [&]() -> int32_t {
        streams_vprintf(&task->streams, stream, format, args);
        return ZLR_RES_OK;
    });
    va_end(args);
    return res;
}

int32_t ZLR_getcodedesc(int32_t code, char *symbol, char *text)
{
    const code_row *row = code_find(code);
    api_copy_text(symbol, api_text_capacity, row != nullptr ? row->symbol : "ZLR_RES_UNKNOWN");
    api_copy_text(text, api_text_capacity, row != nullptr ? row->text : "Unknown return code");
    return row != nullptr ? ZLR_RES_OK : ZLR_RES_ERR_ARGUMENT;
}

int32_t ZLR_getresponseclass(int32_t code, int32_t *response_class)
{
    api_put(response_class, code_class(code));
    return ZLR_RES_OK;
}

static int32_t status_text(const char *word, char *text)
{
    api_copy_text(text, api_text_capacity, word != nullptr ? word : "UNKNOWN");
    return word != nullptr ? ZLR_RES_OK : ZLR_RES_ERR_ARGUMENT;
}

int32_t ZLR_prostatostr(ZLR_task *task, int32_t prosta, char *text)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    return status_text(words_problem_status(prosta), text);
}

int32_t ZLR_solstatostr(ZLR_task *task, int32_t solsta, char *text)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    const bool is_local = std::any_of(std::begin(task->sol), std::end(task->sol), [solsta](const solution &sol) {
        return sol.defined && sol.solsta == solsta && sol.is_local;
    });
    return status_text(words_solution_status(solsta, is_local), text);
}
