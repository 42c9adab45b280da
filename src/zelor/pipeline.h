/* pipeline.h - everything between a task that holds a problem and the clean-up, in file mode. */
#pragma once

#include "run_options.h"

/* What the pipeline works on. It owns nothing of it. */
struct pipeline_input {
    ZLR_env *env;
    ZLR_task *task;
    char *data_name;            /* the task's copy of the data file name, with 128 spare bytes; edited in place */
    const char *remembered_log; /* the name last linked to the log stream; null: none */
};

/* Runs all stages. Failures are left in run_status; clean-up follows in every case. */
void pipeline_run(const pipeline_input *in, run_options *options);
