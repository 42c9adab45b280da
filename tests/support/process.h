/* process.h - starts a program as a user would and tells what came of it. Standard input is empty. */
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/* A signal for the program: `after_s` seconds from its start, or from the moment when its output holds `text`, where
 * that is given. */
struct process_signal {
    int number = 0;
    double after_s = 0;
    std::string text;
};

struct process_options {
    std::vector<std::string> args;                                /* without the program's own name */
    std::vector<std::pair<std::string, std::string>> environment; /* added to the caller's; an empty value removes */
    std::string folder;                                           /* working folder; empty: the caller's */
    std::string output;                                           /* standard output to this file; empty: captured */
    std::vector<process_signal> signals;
    double limit_s = 60;      /* then it is killed */
    int64_t memory_bytes = 0; /* no more address space than this; 0: no limit, as always under a sanitizer */
};

struct process_result {
    bool started = false;
    bool timed_out = false;
    int status = -1; /* exit status; -1 if a signal ended the program */
    int signal = 0;  /* that signal */
    double wall_s = 0;
    std::string out; /* standard output and standard error */
    std::string err;
};

process_result process_run(const std::string &program, const process_options &options);
