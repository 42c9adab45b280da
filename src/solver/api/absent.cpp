/* absent.cpp - entries whose work is not part of this version. They say so and leave everything as it is. */
#include "solver/api/api.h"

static int32_t not_available(ZLR_task *task, const char *what)
{
    if (task == nullptr) return ZLR_RES_ERR_NULL_HANDLE;
    streams_write(&task->streams, ZLR_STREAM_ERR, what);
    streams_write(&task->streams, ZLR_STREAM_ERR, " is not available in this version.\n");
    return ZLR_RES_ERR_NOT_AVAILABLE;
}

int32_t ZLR_putnlfunc(ZLR_task *task, void *, ZLR_nlgetspfunc_t, ZLR_nlgetvafunc_t)
{
    return not_available(task, "A general nonlinear problem");
}
