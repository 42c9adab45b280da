/* task.cpp - see task.h. */
#include "solver/model/task.h"

#include <atomic>

model *task_own_problem(ZLR_task *task)
{
    if (task->problem.use_count() > 1) task->problem = std::make_shared<model>(*task->problem);
    /* use_count is read without ordering: what the last other holder did before it let go must have happened. */
    std::atomic_thread_fence(std::memory_order_acquire);
    return task->problem.get();
}

model *task_edit(ZLR_task *task)
{
    task_drop_solutions(task);
    return task_own_problem(task);
}

void task_drop_solutions(ZLR_task *task)
{
    /* Called by every single edit of a task that is being filled: cheap when there is nothing to drop. */
    for (solution &sol : task->sol)
        if (sol.defined || !sol.skx.empty() || !sol.skc.empty()) solution_clear(&sol);
    if (task->run.ran) task->run = run_record{};
}
