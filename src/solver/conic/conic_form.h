/* conic_form.h - a problem without quadratic parts that says the same, and the way back for its solutions.
 *
 * Rows and columns keep their numbers; new ones stand behind them. With row r, or the objective, in place of NAME:
 *   a convex row          a_r x + x'Qx/2 <= u becomes a_r x + w <= u, with t = Fx, F'F = Q, and 2 w h >= |t|^2, h = 1;
 *                         of a lower side -w stands in the row. New columns NAME.w, NAME.h, NAME.t1 ..., new rows
 *                         NAME.t1 ... The row's multiplier stays what it was.
 *   a cone in disguise    becomes a cone (disguise.h), and the row stays as one without sides. A member that is a
 *                         column alone is that column itself where no other cone has it; else a new column NAME.t1 ...
 *                         equal to it by a row; a constant is a fixed column NAME.h
 *   the objective         where it is not kept as it is, like a convex row, with w in the objective
 *   a row without sides   loses its quadratic part
 * A name that is taken already gets underscores behind it. */
#pragma once

#include "solver/conic/convexity.h"
#include "solver/model/model.h"
#include "solver/model/solution.h"

#include <memory>
#include <string>
#include <vector>

/* One member of a cone in disguise, other than a constant: the form entry first .. first + num - 1 of the map. */
struct conic_member {
    int32_t column; /* of the form */
    int32_t link;   /* row of the form that makes the column equal to its linear form; -1: it is a column of the task */
    int64_t first, num;
};

struct conic_disguised {
    int32_t row;
    int32_t type;
    int64_t first, num; /* members */
};

/* What leads from the form back to the problem. */
struct conic_map {
    int32_t num_con = 0, num_var = 0, num_cones = 0; /* of the problem */
    std::vector<conic_disguised> disguised;
    std::vector<conic_member> member;
    linear_forms forms; /* of the members, in their order */

    /* What became of what, for logs. */
    int32_t convex_rows = 0, freed_rows = 0;
    bool moved_objective = false;
    int32_t new_con = 0, new_var = 0, new_cones = 0;
};

/* Makes the form. `keep_objective` leaves a quadratic objective to engines that take one. On failure (the codes of
 * convexity_check, or ZLR_RES_ERR_SPACE beyond the numbers of rows and columns there can be) *form is null and *message
 * says why, in whole lines. Where the effort was given up *form is null, and nothing else means anything. */
int32_t conic_form(const model *m, bool keep_objective, std::shared_ptr<model> *form, conic_map *map,
                   std::string *message, work_effort *effort = nullptr, const convexity_rules &rules = {});

/* The solution of the problem that a solution of the form is: x, y, the duals of cones that the problem has itself, the
 * reduced costs and activities computed anew from the problem's data. Works on what has_primal and has_dual say is
 * there; keys are copied. Statuses and objectives are the form's: a check on the problem's data follows. A cone in
 * disguise gives its row the multiplier that fits stationarity best. At its apex the gradient of the row is 0 and no
 * multiplier does: the remainder is then in the reduced costs. */
void conic_map_point(const model *m, const conic_map *map, const solution *form, solution *out);

/* The same for a certificate. A dual ray keeps y and the reduced costs, in which the parts of the cones are accounted
 * for; rows that are cones in disguise get the size of their cone's dual. A primal ray keeps x. */
void conic_map_ray(const model *m, const conic_map *map, const solution *form, solution *out);
