/* banner.cpp - see banner.h. */
#include "solver/report/banner.h"

#include "solver/codes/version.h"
#include "solver/engines/engines.h"

void banner_print(stream_set *out, bool full)
{
    streams_printf(out, ZLR_STREAM_MSG, "ZELOR %d.%d.%d (build %d)\n", version_major, version_minor, version_revision,
                   version_build);
    if (!full) return;

    streams_write(out, ZLR_STREAM_MSG, "  Licence    MIT; no licence file or server is needed\n");
    for (const engine_about &engine : engine_describe()) {
        if (engine.installed)
            streams_printf(out, ZLR_STREAM_MSG, "  Engine     %s %s, licence %s\n", engine.name.c_str(),
                           engine.version.c_str(), engine.licence.c_str());
        else
            streams_printf(out, ZLR_STREAM_MSG, "  Engine     %s: not installed; %s\n", engine.name.c_str(),
                           engine.advice.c_str());
    }
}
