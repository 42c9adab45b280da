/* ampl_absent.cpp - stands in for the AMPL front end in a build without it. */
#include "ampl_entry.h"

#include <cstdio>

/* The parameters are the front end's, which writes through them. */
// NOLINTNEXTLINE(readability-non-const-parameter)
int32_t ZLR_amplrun(char **argv, ZLR_task *task, int32_t optimize, int32_t *solve_code)
{
    (void)argv;
    (void)task;
    (void)optimize;
    (void)solve_code;
    std::printf("The AMPL front end is not part of this version: no stub can be read.\n");
    return ZLR_RES_ERR_AMPL_STUB;
}
