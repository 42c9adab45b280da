/* params.cpp - parameters. */
#include "solver/api/api.h"

#include <cstring>

/* The log follows LOG_FILE from the next text on. */
static int32_t follow_log_file(ZLR_task *task, int32_t code)
{
    streams_name_log_file(&task->streams, param_str(&task->params, SPAR_LOG_FILE),
                          param_int(&task->params, IPAR_LOG_FILE_MODE) == LOG_FILE_APPEND);
    return code;
}

int32_t ZLR_putdouparam(ZLR_task *task, int32_t param, double value)
{
    return api_task(task, [&] { return param_put_double(&task->params, param, value, &task->streams); });
}

int32_t ZLR_putintparam(ZLR_task *task, int32_t param, int32_t value)
{
    return api_task(task,
                    [&] { return follow_log_file(task, param_put_int(&task->params, param, value, &task->streams)); });
}

int32_t ZLR_putstrparam(ZLR_task *task, int32_t param, const char *value)
{
    return api_task(task, [&]() -> int32_t {
        if (value == nullptr) return ZLR_RES_ERR_NULL_POINTER;
        return follow_log_file(task, param_put_str(&task->params, param, value, &task->streams));
    });
}

int32_t ZLR_getdouparam(ZLR_task *task, int32_t param, double *value)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    if (param_find(ZLR_PAR_DOUBLE, param) == nullptr) return ZLR_RES_ERR_PARAM_NAME;
    api_put(value, param_dou(&task->params, param));
    return ZLR_RES_OK;
}

int32_t ZLR_getintparam(ZLR_task *task, int32_t param, int32_t *value)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    if (param_find(ZLR_PAR_INT, param) == nullptr) return ZLR_RES_ERR_PARAM_NAME;
    api_put(value, param_int(&task->params, param));
    return ZLR_RES_OK;
}

int32_t ZLR_getstrparamal(ZLR_task *task, int32_t param, int32_t extra, char **value)
{
    if (value != nullptr) *value = nullptr;
    return api_task(task, [&]() -> int32_t {
        if (param_find(ZLR_PAR_STR, param) == nullptr) return ZLR_RES_ERR_PARAM_NAME;
        if (extra < 0) return ZLR_RES_ERR_ARGUMENT;
        if (value == nullptr) return ZLR_RES_OK;
        const char *text = param_str(&task->params, param);
        const size_t length = std::strlen(text);
        auto *copy = static_cast<char *>(ZLR_calloctask(task, length + 1 + static_cast<size_t>(extra), 1));
        if (copy == nullptr) return ZLR_RES_ERR_SPACE;
        std::memcpy(copy, text, length + 1);
        *value = copy;
        return ZLR_RES_OK;
    });
}

int32_t ZLR_putparam(ZLR_task *task, const char *name, const char *value)
{
    return api_task(task, [&]() -> int32_t {
        if (name == nullptr || value == nullptr) return ZLR_RES_ERR_NULL_POINTER;
        return follow_log_file(task, param_put_text(&task->params, name, value, &task->streams));
    });
}

int32_t ZLR_getparamname(ZLR_task *task, int32_t param_class, int32_t param, char *name)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    const param_row *row = param_find(param_class, param);
    if (row == nullptr) return ZLR_RES_ERR_PARAM_NAME;
    api_copy_text(name, api_text_capacity, row->name);
    return ZLR_RES_OK;
}

int32_t ZLR_readparamfile(ZLR_task *task, const char *filename)
{
    return api_task(task, [&]() -> int32_t {
        if (filename == nullptr) return ZLR_RES_ERR_NULL_POINTER;
        return follow_log_file(task, param_read_file(&task->params, task->env->sys, filename, &task->streams));
    });
}

int32_t ZLR_writeparamfile(ZLR_task *task, const char *filename)
{
    return api_task(task, [&] {
        const char *name = filename != nullptr ? filename : param_str(&task->params, SPAR_PARAM_WRITE_FILE);
        return param_write_file(&task->params, task->env->sys, name, &task->streams);
    });
}

int32_t ZLR_printparam(ZLR_task *task)
{
    return api_task(task, [&]() -> int32_t {
        param_print(&task->params, &task->streams, ZLR_STREAM_MSG);
        return ZLR_RES_OK;
    });
}
