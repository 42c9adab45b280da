/* usage.h - the usage text. */
#pragma once

/* Prints the usage: the program's name as it was called, then one line an option. */
void print_usage(const char *program);
