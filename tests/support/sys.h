/* sys.h - an environment of the support library for tests of parts that need one and do not look at it. */
#pragma once

#include "cpub/sysenv.h"

inline sysenv *test_sys()
{
    static sysenv *const sys = sysenv_create(__FILE__, __LINE__, 0, nullptr);
    return sys;
}
