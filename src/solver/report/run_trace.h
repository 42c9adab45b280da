/* run_trace.h - what is kept of a run while it goes, for its report. There only while a report is asked for. */
#pragma once

#include "solver/report/run_history.h"
#include "solver/report/stream_capture.h"

#include <chrono>

struct run_trace {
    std::chrono::system_clock::time_point begun;
    run_history history;
    stream_capture log;
};
