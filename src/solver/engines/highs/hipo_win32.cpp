/* hipo_win32.cpp - see highs_load_hipo in session.h. HiGHS finds its extra library beside itself. */
#include "solver/engines/highs/session.h"

void highs_load_hipo() {}
