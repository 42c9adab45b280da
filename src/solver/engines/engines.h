/* engines.h - what the rest of the library sees of the engines: to optimise a task, and to tell what is installed. */
#pragma once

#include "solver/model/task.h"

#include <string>
#include <vector>

/* Optimises the task: see ZLR_optimize. Fills task->sol and task->run. */
[[nodiscard]] int32_t engines_optimize(ZLR_task *task);

/* An engine as the banner shows it. */
struct engine_about {
    std::string name, version, licence;
    bool installed = false;
    std::string advice; /* how to get it, when it is not installed */
};

/* Every engine that the library knows. Loads them. */
std::vector<engine_about> engine_describe();
