/* run_support.h - what the whole-run tests share: starting zelor, reading its JSON result, the list of real files. */
#pragma once

#include "support/files.h"
#include "support/process.h"

#include <nlohmann/json.hpp>

#include <iosfwd>
#include <string>
#include <vector>

/* A run of the program in a folder of its own, with RESULT_FILE. */
struct zelor_run {
    process_result process;
    nlohmann::json result; /* null if the program left none */
};

zelor_run run_zelor(const temp_folder &folder, std::vector<std::string> args, std::vector<process_signal> signals = {},
                    double limit_s = 120);

/* A number of the result; NaN where it is null or absent. */
double result_number(const nlohmann::json &result, const char *key);

/* One line of the list of real files. */
struct data_row {
    std::string path, problem_class, status;
    double optimal;
    std::string name; /* of a test: letters, digits, underscores */
};

void PrintTo(const data_row &row, std::ostream *out); /* for GoogleTest */

/* The files of a folder of the data, sorted by path; empty without the data. */
std::vector<data_row> data_rows(const std::string &folder);

/* Full path of a data file; and the copy of one into a test's folder. */
std::string data_path(const std::string &path);
std::string copy_data(const temp_folder &folder, const std::string &path);

/* |a - b| within `relative`, measured against the larger of 1 and the values. */
bool close_to(double a, double b, double relative);

/* Whether a command is there to ask for a second opinion. */
bool have_command(const std::string &name);
