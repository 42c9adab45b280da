/* evaluated_stubs.h - the stubs whose evaluation is tested, one open at a time. */
#pragma once

#include "ampl/ampl_support.h"
#include "ampl/evaluation/stub_callbacks.h"

/* Stubs of the data that are, or may be, nonlinear ones; without the data there are none. */
std::vector<data_row> evaluated_stubs();

/* A stub of the data or of a test's own, unpacked in a folder of its own and opened. */
struct open_stub {
    explicit open_stub(const data_row &row);
    explicit open_stub(const nl_model &model);
    ~open_stub();
    open_stub(const open_stub &) = delete;
    open_stub &operator=(const open_stub &) = delete;

    temp_folder folder;
    std::string path; /* of the stub, without ".nl" */
    stub_callbacks callbacks;
};

/* The stub's start, 1 where it has none (turn 0), or a point beside it, between the bounds and not on them. */
std::vector<double> point_about_start(const stub_callbacks &callbacks, unsigned turn);
