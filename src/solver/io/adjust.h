/* adjust.h - what parameters make of a whole problem between a file and the task, whatever the format of the file.
 *
 * All of it is off by default and then costs nothing but the look at the parameters. */
#pragma once

#include "solver/io/io.h"

/* After a read, by the READ_ parameters: checks (names, large coefficients, crossed bounds) first, which speak of the
 * problem as the file has it, then what they change. Tells its own errors; on one the model is to be thrown away. */
[[nodiscard]] int32_t adjust_read(const io_context *io, model *m);

/* Before a write, by the WRITE_ parameters: the problem as it is to be written, which is `m` itself, or made in
 * *changed where a parameter asks for something else. */
const model *adjust_to_write(const io_context *io, const model *m, model *changed);

/* The lines of the comment that WRITE_HEADER and WRITE_COMMENT put at the top of a problem file, without the mark that
 * makes a comment of them in the format, and without control characters. */
std::vector<std::string> adjust_comment(const io_context *io);
