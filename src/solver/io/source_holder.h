/* source_holder.h - closes a source at the end of a scope, also when memory runs out in it. */
#pragma once

#include "solver/io/bytes.h"

#include <memory>

struct source_closer {
    void operator()(byte_source *source) const { source_close(&source); }
};
using source_holder = std::unique_ptr<byte_source, source_closer>;
