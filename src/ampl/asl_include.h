/* asl_include.h - the AMPL Solver Library, for src/ampl alone; nothing else names its headers.
 *
 * They define macros of everyday names (solve_code, filename, n_var, mem, exit, fprintf ...), which must not meet the
 * standard headers: those come first, and this header comes last in every file that includes it. Most of the library's
 * calls and all of its field names are macros that work on a local variable named `asl`. */
#pragma once

#include <algorithm>
#include <cctype>
#include <cmath>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "zelor.h"

#include <asl.h>
// asl.h first: getstub.h uses its types.
#include <getstub.h>
