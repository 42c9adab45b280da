/* summary.h - the three summaries of a run: what was read, what was found, how. At most 80 columns, plain text. */
#pragma once

#include "solver/model/task.h"

void summary_read(const ZLR_task *task, stream_set *out, int32_t stream);
void summary_solution(const ZLR_task *task, stream_set *out, int32_t stream);
void summary_optimizer(const ZLR_task *task, stream_set *out, int32_t stream);
