/* quadratic.cpp - see quadratic.h. */
#include "solver/engines/quadratic.h"

#include "solver/engines/own_work.h"

static void look(const model *m, quadratic_wish wish, const convexity_rules &rules, work_effort *effort,
                 quadratic_look *out)
{
    *out = {};
    if (wish == QUADRATIC_CHECK) {
        convexity found = convexity_check(m, effort, rules);
        out->code = found.code;
        out->message = std::move(found.message);
    } else {
        out->code = conic_form(m, wish == QUADRATIC_ROWS, &out->form, &out->map, &out->message, effort, rules);
    }
}

bool quadratic_look_at(run_watch *watch, const std::shared_ptr<const model> &problem, quadratic_wish wish,
                       quadratic_look *out)
{
    const auto found = std::make_shared<quadratic_look>();
    const convexity_rules rules = convexity_rules_of(&watch->task->params);
    const own_work work = [problem, wish, rules, found](work_effort *effort) {
        look(problem.get(), wish, rules, effort, found.get());
    };

    if (!own_work_do(watch, work)) return false;
    *out = std::move(*found);
    return true;
}
