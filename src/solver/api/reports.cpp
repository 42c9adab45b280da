/* reports.cpp - the summaries. */
#include "solver/api/api.h"
#include "solver/report/summary.h"

static int32_t report(ZLR_task *task, int32_t stream, void (*print)(const ZLR_task *, stream_set *, int32_t))
{
    return api_task(task, [&]() -> int32_t {
        if (stream < 0 || stream >= ZLR_STREAM_COUNT) return ZLR_RES_ERR_INDEX;
        print(task, &task->streams, stream);
        return ZLR_RES_OK;
    });
}

int32_t ZLR_readsummary(ZLR_task *task, int32_t stream) { return report(task, stream, summary_read); }
int32_t ZLR_solutionsummary(ZLR_task *task, int32_t stream) { return report(task, stream, summary_solution); }
int32_t ZLR_optimizersummary(ZLR_task *task, int32_t stream) { return report(task, stream, summary_optimizer); }
