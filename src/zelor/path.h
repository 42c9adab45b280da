/* path.h - the one rule that says where the last name of a path begins. Everything that takes a name apart asks it. */
#pragma once

/* True for a character that ends a folder: a backslash on every platform, a slash too where it does so for the
 * system. */
bool path_ends_at(char c);
