/* exit_guard_win32.cpp - see exit_guard.h: the system ends all other threads before static data go. */
#include "solver/engines/exit_guard.h"

#include <utility>

guarded_thread exit_guard_start(std::function<void()> body)
{
    guarded_thread made;
    made.thread = std::thread(std::move(body));
    return made;
}

void exit_guard_retire(guarded_thread thread) { thread.thread.detach(); }
void exit_guard_leave(guarded_thread thread) { thread.thread.detach(); }
void exit_guard_arm() {}
void exit_guard_arm_again() {}
