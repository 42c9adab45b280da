/* solution_names.h - the names of the files that a run leaves beside its data file. */
#pragma once

#include "run_options.h"

/* Gives `name` another extension, in place: what stands behind the last dot of the last name of the path is
 * overwritten; without a dot, one is appended. The buffer has room for strlen(extension) + 1 bytes more. */
void replace_extension(char *name, const char *extension);

/* Cuts ".gz" off the end of `name`, in place. */
void strip_compression_suffix(char *name);

/* Stores the derived name of each kind of solution in the task, unless it has one already, and writes the solutions that
 * exist. `data_name` is the task's copy of the data file name, with at least 4 spare bytes; it is edited in place. The
 * first failure goes to run_status. */
void derive_solution_names(ZLR_task *task, char *data_name, run_options *options);
