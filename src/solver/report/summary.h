/* summary.h - the three summaries of a run: what was read, what was found, how. At most 80 columns, plain text. */
#pragma once

#include "solver/model/task.h"

void summary_read(const ZLR_task *task, stream_set *out, int32_t stream);
void summary_solution(const ZLR_task *task, stream_set *out, int32_t stream);
void summary_optimizer(const ZLR_task *task, stream_set *out, int32_t stream);

/* Pieces of them, for other reports: "8 equal, 19 one-sided"; "3 integer, 2 binary"; "density 0.5 %"; "6 simplex
 * iterations, 2 nodes", or why there were none. */
std::string summary_rows(const model *m);
std::string summary_columns(const model *m);
std::string summary_nonzeros(const model *m);

/* The cones by type and size: "4 quadratic of 3 columns", "2 rotated of 3 to 51 columns". Empty where there are none. */
std::vector<std::string> summary_cone_items(const model *m);
std::string summary_cones(const model *m);

/* A cone is named by its head, as cones have no names. Empty for -1. */
std::string summary_cone_name(const model *m, int32_t cone);
std::string summary_work(const run_record *run);

/* What a certificate means, in place of objectives; null for a status that has a point to show. */
const char *summary_certificate(int32_t kind, int32_t solsta);
