/* interrupt_posix.cpp - the signals that count on POSIX. An interrupt that the parent had ignored counts as well: a run
 * put into the background by a script can then still be stopped in order. */
#include "interrupt.h"

#include <csignal>

void interrupt_install(void)
{
    (void)std::signal(SIGINT, sigint_handler);
    (void)std::signal(SIGTERM, sigint_handler);
}
