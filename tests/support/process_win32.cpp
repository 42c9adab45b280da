/* process_win32.cpp - stands in for process.cpp, which is POSIX's: nothing can be started, so that tests that need another
 * program skip. */
#include "support/process.h"

process_result process_run(const std::string &program, const process_options &options)
{
    (void)program;
    (void)options;
    return process_result();
}
