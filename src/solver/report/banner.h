/* banner.h - who speaks. `full` adds the versions and licences of the product and of every installed engine. */
#pragma once

#include "solver/report/streams.h"

void banner_print(stream_set *out, bool full);
