/* recorded_run.h - runs the program on the recorder and gives what it printed, left and called. */
#pragma once

#include "support/files.h"
#include "support/process.h"

#include <string>
#include <utility>
#include <vector>

struct recorded_run {
    process_result process;
    std::vector<std::string> calls; /* as recorded, "ZLR_" cut off */
    std::vector<std::string> misuse;
};

struct run_request {
    std::string line = "";   /* arguments, one blank between two; {} stands for the run's folder */
    std::string script = ""; /* answers of the recorder, one line each */
    std::vector<process_signal> signals = {};
    std::string output = ""; /* standard output to this file */
    std::vector<std::pair<std::string, std::string>> environment = {};
    bool may_keep_blocks = false; /* where the program leaves memory to the end of its task */
    bool may_end_early = false;   /* handles may be left over */
    bool may_print_errors = false;
};

/* Runs in `folder`, which the caller may look at afterwards. */
recorded_run run_recorded(const run_request &request, const temp_folder &folder);

/* The same in a folder that is gone afterwards. Fails the test when the record tells misuse. */
recorded_run run_recorded(const std::string &line, const std::string &script = "");

std::vector<std::string> words_of(const std::string &line);

/* Names of the calls, in order, one blank between two. */
std::string names_of(const std::vector<std::string> &calls);

/* Calls of one entry, or of those whose line begins with `text`. */
std::vector<std::string> calls_of(const recorded_run &run, const std::string &text);

/* Position of the first call that begins with `text`, or -1. */
int position_of(const recorded_run &run, const std::string &text);

/* All lines in one text, for messages. */
std::string joined(const std::vector<std::string> &lines);
