/* conic.cpp - the entry that rewrites a task's problem in conic form. */
#include "solver/api/api.h"
#include "solver/engines/quadratic.h"
#include "solver/report/clock.h"

static std::string counted(int32_t num, const char *one, const char *more)
{
    return std::to_string(num) + " " + (num == 1 ? one : more);
}

/* "the objective, 3 convex rows, 1 row that is a cone": what became cones. */
static std::string sources_text(const conic_map *map)
{
    std::string text;
    const auto add = [&](const std::string &what) { text += (text.empty() ? "" : ", ") + what; };
    const auto num_disguised = static_cast<int32_t>(map->disguised.size());
    if (map->moved_objective) add("the objective");
    if (map->convex_rows > 0) add(counted(map->convex_rows, "convex row", "convex rows"));
    if (num_disguised > 0) add(counted(num_disguised, "row that is a cone", "rows that are cones"));
    return text;
}

static void tell_form(stream_set *streams, const conic_map *map)
{
    const std::string sources = sources_text(map);
    std::string text = "Conic form: " + counted(map->new_cones, "cone", "cones");
    if (!sources.empty()) text += ", for " + sources;
    text += "\n  New        " + counted(map->new_var, "column", "columns") + ", " +
            counted(map->new_con, "row", "rows") + "\n";
    if (map->freed_rows > 0)
        text += "  Dropped    quadratic parts of " + counted(map->freed_rows, "row", "rows") + " without sides\n";
    streams_write(streams, ZLR_STREAM_MSG, text.c_str());
}

int32_t ZLR_toconic(ZLR_task *task)
{
    return api_task(task, [&]() -> int32_t {
        const int32_t res = api_refuse_functions(task, "The conic form");
        if (res != ZLR_RES_OK) return res;
        if (task->problem->qobj.empty() && task->problem->qcon.empty()) return ZLR_RES_OK;
        run_watch watch;
        quadratic_look found;
        watch.task = task;
        watch.start_s = clock_now_s();
        if (!quadratic_look_at(&watch, task->problem, QUADRATIC_EVERYTHING, &found)) return watch.stop_code;
        if (found.code != ZLR_RES_OK) {
            streams_write(&task->streams, ZLR_STREAM_ERR, found.message.c_str());
            return found.code;
        }
        task_drop_solutions(task);
        task->problem = std::move(found.form);
        tell_form(&task->streams, &found.map);
        return ZLR_RES_OK;
    });
}
