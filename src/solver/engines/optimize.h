/* optimize.h - the order of an optimisation: plan, rounds of engines, judgement of their answers, proofs, outcome. */
#pragma once

#include "solver/conic/conic_form.h"
#include "solver/engines/answer.h"
#include "solver/engines/runner.h"

#include <string>
#include <vector>

/* What engines say of the problem that is not proven yet. */
enum claim { CLAIM_NONE, CLAIM_INFEASIBLE, CLAIM_UNBOUNDED, CLAIM_EITHER };

struct optimization {
    ZLR_task *task = nullptr;
    const engine_table *table = nullptr;
    std::shared_ptr<const model> problem;
    std::shared_ptr<const model> given; /* what engines get: the problem, or its form without quadratic rows */
    conic_map map;                      /* from that form back */
    int32_t refusal_code = ZLR_RES_OK;  /* the problem is not convex */
    bool is_integer = false;
    bool is_linear = true;    /* no quadratic parts, no cones */
    bool wants_local = false; /* functions, or not convex and taken all the same: see local.h */
    engine_plan plan;
    check_tolerances tol;
    engine_start start;
    run_watch watch;

    solution best[3];                                         /* the best of each kind so far */
    double best_ratio[3] = {model_inf, model_inf, model_inf}; /* of its worst residual to what is allowed */
    bool is_settled = false;
    int32_t limit_code = ZLR_RES_OK; /* a limit that an engine has reached */
    claim claimed = CLAIM_NONE;
    std::vector<double> ray; /* of the engine that takes the problem for unbounded */
    bool is_clean = true;    /* the incumbent: see answer_to_incumbent */
    bool has_bound = false;  /* branch and cut's bound on the objective */
    double bound = 0.0;

    bool any_engine = false; /* some module could be loaded */
    bool any_answer = false; /* some engine ended without failing */
    int32_t round = 0;
    int32_t round_threads = 1; /* of all racers together */
    std::string missing;       /* why a module could not be loaded */
    std::string failures;      /* what engines failed by, for the remark */
    run_record run;
};

/* Optimises with the engines of a table: the library's own, or a test's. */
[[nodiscard]] int32_t optimize_with(ZLR_task *task, const engine_table *table);

/* judge.cpp: takes over what an engine that came back has to say. Returns whether the round is over: the task is
 * settled, or there is a claim to be settled. */
bool judge_answer(optimization *o, const run_entry *entry);

/* Whether the best answer is optimal with residuals that are small as they are, whatever the numbers they belong to. */
bool judge_is_exact(const optimization *o);

/* Polishes an answer of our own making and takes it where it is better than the best. */
void judge_refined(optimization *o, const engine_answer *answer);

/* Takes an incumbent of branch and cut, if it passes and is better than the one there is. */
void judge_incumbent(optimization *o, const std::vector<double> &x);

/* Takes a bound on the objective. */
void judge_bound(optimization *o, double bound);

/* Makes `certificate` the solution of every kind that is sought; an integer one has its status alone. */
void judge_certificate(optimization *o, const solution *certificate);

/* The same for a dual ray of the form that engines get. */
void judge_dual_ray(optimization *o, const solution *certificate);

/* Keeps for the record who answered. */
void judge_credit(optimization *o, const run_entry *entry);

/* Notes why an engine's answer is not taken, in the log and for the remark. */
void judge_failure(optimization *o, const std::string &who, const std::string &why);

/* settle.cpp: proves or refutes the claim with problems of our own. Clears it. */
void settle_claim(optimization *o);

/* Runs one engine on a problem of our own to the end or a stop. True: it came back, with *entry filled. */
bool run_aside(optimization *o, const std::shared_ptr<const model> &problem, const plan_step &step, run_entry *entry);

/* Puts the integer columns of the incumbent on integers, with the continuous ones solved for again. */
void settle_integers(optimization *o);

/* improve.cpp: gives the best answer of a quadratic problem more digits where no engine's has enough of them. */
void improve_answer(optimization *o);
