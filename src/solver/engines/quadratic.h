/* quadratic.h - the look at quadratic parts in front of the engines, which do not see that a problem is not convex, or see
 * it late. Factors are made for it, which may take long: it is stopped as engines are. */
#pragma once

#include "solver/conic/conic_form.h"
#include "solver/engines/runner.h"

enum quadratic_wish {
    QUADRATIC_CHECK,     /* whether the problem is convex */
    QUADRATIC_ROWS,      /* and the form without quadratic rows */
    QUADRATIC_EVERYTHING /* and the form without a quadratic objective as well */
};

struct quadratic_look {
    int32_t code = ZLR_RES_OK; /* of conic_form */
    std::string message;       /* why, in whole lines */
    std::shared_ptr<model> form;
    conic_map map;
};

/* False: stopped; watch->stop_code tells by what, and *out is as it was. */
[[nodiscard]] bool quadratic_look_at(run_watch *watch, const std::shared_ptr<const model> &problem, quadratic_wish wish,
                                     quadratic_look *out);
