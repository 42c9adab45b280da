/* calls.h - a solve by Ipopt, and the functions of its problem as Ipopt calls them.
 *
 * Nothing is thrown through Ipopt: what a function throws is kept in the record, the functions have no value from then
 * on, and the next iteration ends the solve. A function that claims a value which is no finite number has none: Ipopt
 * looks at sums only, and not at all at those of the Hessian. */
#pragma once

#include "solver/engines/smooth.h"

#include <IpStdCInterface.h>

struct ipopt_session {
    const smooth_problem *problem = nullptr;
    const smooth_calls *calls = nullptr;
    IpoptProblem ipopt = nullptr;
    int64_t iterations = 0;

    bool is_out_of_memory = false;
    std::string failure; /* what else a function has thrown */

    /* Whether the functions have been left out at a new point: it is still new to the next that is called. */
    bool is_new_due = false;

    /* Ipopt tells the violation of the rows as it scales them. The own one is known where rows and Jacobian, which it
     * asks for at each point that it goes to, were last evaluated at the same point. */
    uint64_t point = 0, rows_point = 0, jacobian_point = 0;
    double violation = 0.0;

    ipopt_session() = default;
    ipopt_session(const ipopt_session &) = delete;
    ipopt_session &operator=(const ipopt_session &) = delete;
    ~ipopt_session()
    {
        if (ipopt != nullptr) FreeIpoptProblem(ipopt);
    }
};

/* Hands the problem over; false where Ipopt does not take it. There is a column at least. */
bool ipopt_create(ipopt_session *s);

/* Whether `problem` has a row, but no entry in the Jacobian: Ipopt wants one then, which is 0. */
bool ipopt_wants_entry(const smooth_problem *problem);

/* The multipliers of fixed columns at the answer's point: what balances the gradient there. Ipopt takes such columns for
 * constants, and older versions give them none. They stay as they are where a derivative has no value. */
void ipopt_balance_fixed(ipopt_session *s, smooth_answer *answer);

/* How far the values of the rows are out of their sides. */
double ipopt_violation(const smooth_problem *problem, const double *rows);
