/* api.h - what the entries of zelor.h have in common: each checks its handle and arguments, calls down, and lets no
 * exception out. */
#pragma once

#include "solver/model/task.h"
#include "zelor.h"

#include <new>
#include <stdexcept>

/* Runs an entry's body, which returns a code. Records of the library hold containers, so that memory can run out
 * anywhere below; here is the one place where that becomes a code. `task` may be null. */
template <class body_type> int32_t api_guard(ZLR_task *task, body_type &&body) noexcept
{
    try {
        return body();
    } catch (const std::bad_alloc &) {
        if (task != nullptr) streams_write(&task->streams, ZLR_STREAM_ERR, "Out of memory.\n");
        return ZLR_RES_ERR_SPACE;
    } catch (const std::length_error &) { /* a size beyond what a container can ever hold */
        if (task != nullptr) streams_write(&task->streams, ZLR_STREAM_ERR, "Out of memory.\n");
        return ZLR_RES_ERR_SPACE;
    } catch (...) {
        if (task != nullptr) streams_write(&task->streams, ZLR_STREAM_ERR, "Internal error.\n");
        return ZLR_RES_ERR_INTERNAL;
    }
}

/* The same for entries of a task, with the check of the handle. */
template <class body_type> int32_t api_task(ZLR_task *task, body_type &&body) noexcept
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    model_close_columns(task->problem.get());
    return api_guard(task, body);
}

/* For entries that do not look at the matrix, so that a task that is filled column by column, with the bounds, costs and
 * names of each between, is filled in linear time. */
template <class body_type> int32_t api_task_filling(ZLR_task *task, body_type &&body) noexcept
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    return api_guard(task, body);
}

template <class value_type> void api_put(value_type *out, value_type value)
{
    if (out != nullptr) *out = value;
}

/* The code for what is not done with general nonlinear functions, after it was said; ZLR_RES_OK: the task has none. */
[[nodiscard]] int32_t api_refuse_functions(ZLR_task *task, const char *what);

/* Copies at most `capacity` - 1 bytes of a text and a terminator. */
void api_copy_text(char *buffer, size_t capacity, std::string_view text);

/* Room that the interface promises for buffers of symbols and texts. */
inline constexpr size_t api_text_capacity = 1024;
