/* path_posix.cpp - on POSIX a slash ends a folder. A backslash does so too: names made on the other platform turn up in
 * parameter files and scripts. */
#include "path.h"

bool path_ends_at(char c) { return c == '\\' || c == '/'; }
