/* case_check.cpp - checks one row of a table of whole runs. */
#include "case_check.h"

#include <gtest/gtest.h>

std::vector<std::string> split(const std::string &text, const std::string &separator)
{
    std::vector<std::string> parts;
    size_t begin = 0;
    while (begin < text.size()) {
        size_t end = text.find(separator, begin);
        if (end == std::string::npos) end = text.size();
        parts.push_back(text.substr(begin, end - begin));
        begin = end + separator.size();
    }
    return parts;
}

static void check_order(const recorded_run &run, const char *calls)
{
    size_t at = 0;
    for (const std::string &call : split(calls, "; ")) {
        while (at < run.calls.size() && run.calls[at] != call) ++at;
        ASSERT_LT(at, run.calls.size()) << "missing, or not in this order: " << call << "\n" << joined(run.calls);
        ++at;
    }
}

recorded_run check_case(const run_case &item)
{
    SCOPED_TRACE(std::string(item.name) + ": zelor " + item.line);
    const temp_folder folder;
    run_request request;
    request.line = item.line;
    request.script = item.script != nullptr ? item.script : "";
    request.may_keep_blocks = item.may_keep_blocks;
    const recorded_run run = run_recorded(request, folder);
    EXPECT_EQ(run.process.status, item.status) << run.process.out;
    if (item.calls != nullptr) check_order(run, item.calls);
    for (const std::string &text : split(item.absent != nullptr ? item.absent : "", "; ")) {
        EXPECT_TRUE(calls_of(run, text).empty()) << text << "\n" << joined(run.calls);
    }
    if (item.out != nullptr) {
        EXPECT_NE(run.process.out.find(item.out), std::string::npos) << item.out << "\n--- is not in\n"
                                                                     << run.process.out;
    }
    return run;
}
