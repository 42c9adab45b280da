/* path_win32.cpp - on Windows only a backslash ends a folder. */
#include "path.h"

bool path_ends_at(char c) { return c == '\\'; }
