/* turn.h - one thread at a time inside Ipopt.
 *
 * Ipopt before 3.14 numbers its objects by a counter that all solves share, and MUMPS, which solves its systems, keeps
 * what it works on in global variables: two solves at once end in failed factorisations (tried with 3.11.9 and MUMPS
 * 5.5.1). So whoever is inside holds the turn, and lends it while the problem's functions are evaluated. Neither is then
 * in the middle of anything that the other could disturb: two threads solve by turns, a solve may be started from inside
 * a function of another, and a stop waits for one step of the other at most. Turns are given in the order in which they
 * are asked for, or a thread that comes back at once would keep the others out. */
#pragma once

#include <atomic>
#include <cstdint>

/* Nothing that the end of the process takes down: a thread may be waiting then. */
inline std::atomic<uint32_t> turn_next{0}, turn_now{0};

inline void turn_take() noexcept
{
    const uint32_t mine = turn_next.fetch_add(1);
    for (uint32_t now = turn_now.load(); now != mine; now = turn_now.load()) turn_now.wait(now);
}

inline void turn_give() noexcept
{
    turn_now.fetch_add(1);
    turn_now.notify_all();
}

/* The turn for as long as the record lives, and, inside of one, its loan. */
struct turn_hold {
    turn_hold() { turn_take(); }
    ~turn_hold() { turn_give(); }
    turn_hold(const turn_hold &) = delete;
    turn_hold &operator=(const turn_hold &) = delete;
};

struct turn_loan {
    turn_loan() { turn_give(); }
    ~turn_loan() { turn_take(); }
    turn_loan(const turn_loan &) = delete;
    turn_loan &operator=(const turn_loan &) = delete;
};
