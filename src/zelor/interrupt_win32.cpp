/* interrupt_win32.cpp - the signal that counts on Windows. It is delivered on a thread of its own. */
#include "interrupt.h"

#include <csignal>

void interrupt_install(void) { (void)std::signal(SIGINT, sigint_handler); }
