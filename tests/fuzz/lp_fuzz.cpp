/* lp_fuzz.cpp - any bytes into the LP reader; what it takes must be a valid model, and come back from the writer. */
#include "solver/io/io.h"

#include <cstdint>
#include <cstdlib>
#include <string>

static void require(bool holds)
{
    if (!holds) abort();
}

static int32_t read_bytes(const io_context *io, const char *data, size_t size, model *m)
{
    byte_source *in = nullptr;
    require(source_open(&in, "/dev/null") == ZLR_RES_OK);
    source_unread(in, data, size);
    const int32_t res = lp_read(io, in, m);
    source_close(&in);
    return res;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    param_set params;
    param_set_defaults(&params);
    stream_set streams{};
    const io_context io = {"fuzz.lp", &params, &streams};
    model m;
    if (read_bytes(&io, reinterpret_cast<const char *>(data), size, &m) != ZLR_RES_OK) return 0;

    const auto num_var = static_cast<size_t>(m.num_var);
    require(m.a.start.size() == num_var + 1 && m.c.size() == num_var && m.var_names.start.size() == num_var);
    for (const int32_t row : m.a.row) require(row >= 0 && row < m.num_con);

    byte_sink *out = nullptr;
    require(sink_open(&out, "/dev/null") == ZLR_RES_OK);
    require(lp_write(&io, out, &m) == ZLR_RES_OK);
    require(sink_close(&out, true) == ZLR_RES_OK);
    return 0;
}
