/* reduce.h - from an infeasible set of sides to one of which each member is needed.
 *
 * Linear problems: a vertex of the set of all proofs with the given sides names an irreducible set (Gleeson and Ryan,
 * "Identifying minimally infeasible subsystems of inequalities", 1990): one more linear problem. What rounding and
 * integrality leave is settled by leaving out each side in turn (Chinneck and Dravnieks, "Locating minimal infeasible
 * constraint sets in linear programs", 1991), which at the same time shows that each is needed. */
#pragma once

#include "solver/analysis/sides.h"
#include "solver/model/task.h"

struct reduction {
    std::vector<model_side> sides; /* the smallest infeasible set found */
    bool is_irreducible = false;   /* each member was shown to be needed */
    bool is_stopped = false;       /* by the progress callback or the time limit */
    int32_t num_open = 0;          /* members whose need could not be settled, each within its share of the time */
    int32_t num_solved = 0;        /* problems that were solved on the way */
    std::string failure;           /* why no engine could help; empty if one did */
};

/* Reduces `sides`, a set with which `m` is infeasible, for at most `time_limit_s` seconds; `proof`, all of them or some, is
 * where a proof has been found already. Integrality stays. */
reduction reduce_sides(ZLR_task *task, const model *m, std::vector<model_side> sides, std::vector<model_side> proof,
                       double time_limit_s);

/* A proof that the linear relaxation of `m` with `sides` alone is infeasible, as the sides that it needs; empty if there
 * is none. */
std::vector<model_side> reduce_by_relaxation(ZLR_task *task, const model *m, const std::vector<model_side> &sides,
                                             double time_limit_s, reduction *found);
