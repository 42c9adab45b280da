/* quadratic.cpp - see quadratic.h. */
#include "solver/engines/quadratic.h"

#include "solver/engines/own_work.h"

static void look(const model *m, quadratic_wish wish, work_effort *effort, quadratic_look *out)
{
    *out = {};
    if (wish == QUADRATIC_CHECK) {
        convexity found = convexity_check(m, effort);
        out->code = found.code;
        out->message = std::move(found.message);
    } else {
        out->code = conic_form(m, wish == QUADRATIC_ROWS, &out->form, &out->map, &out->message, effort);
    }
}

bool quadratic_look_at(run_watch *watch, const std::shared_ptr<const model> &problem, quadratic_wish wish,
                       quadratic_look *out)
{
    const auto found = std::make_shared<quadratic_look>();
    const own_work work = [problem, wish, found](work_effort *effort) {
        look(problem.get(), wish, effort, found.get());
    };

    if (!own_work_do(watch, work)) return false;
    *out = std::move(*found);
    return true;
}
