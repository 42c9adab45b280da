/* recorded_run.cpp - running the program on the recorder. */
#include "recorded_run.h"

#include <gtest/gtest.h>

#include <sstream>

std::vector<std::string> words_of(const std::string &line)
{
    std::istringstream in(line);
    std::vector<std::string> words;
    std::string word;
    while (std::getline(in, word, ' ')) words.push_back(word);
    return words;
}

static std::string with_folder(std::string word, const std::string &folder)
{
    const size_t at = word.find("{}");
    if (at != std::string::npos) word.replace(at, 2, folder);
    return word;
}

static bool ends_with(const std::string &line, const std::string &end)
{
    return line.size() > end.size() && line.compare(line.size() - end.size(), end.size(), end) == 0;
}

static void take_record(const std::string &text, recorded_run *run)
{
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("!!", 0) == 0) run->misuse.push_back(line);
        if (line.rfind("ZLR_", 0) == 0) line.erase(0, 4);
        run->calls.push_back(line);
    }
}

recorded_run run_recorded(const run_request &request, const temp_folder &folder)
{
    const std::string script = folder.file("recorder.script");
    const std::string record = folder.file("recorder.calls");
    EXPECT_TRUE(file_write(script, request.script + "\n"));

    process_options options;
    for (const std::string &word : words_of(request.line)) options.args.push_back(with_folder(word, folder.path));
    options.environment = {{"LD_LIBRARY_PATH", ZELOR_RECORDER_DIR}, {"ZELOR_RECORD", record}, {"ZELOR_SCRIPT", script}};
    options.environment.insert(options.environment.end(), request.environment.begin(), request.environment.end());
    options.folder = folder.path;
    options.output = request.output;
    options.signals = request.signals;

    recorded_run run;
    run.process = process_run(ZELOR_PROGRAM, options);
    EXPECT_TRUE(run.process.started) << ZELOR_PROGRAM;
    EXPECT_FALSE(run.process.timed_out) << request.line;
    EXPECT_EQ(run.process.signal, 0) << request.line;
    if (!request.may_print_errors) {
        EXPECT_EQ(run.process.err, "") << request.line;
    }
    take_record(file_read(record), &run);
    std::vector<std::string> misuse = run.misuse;
    if (request.may_keep_blocks)
        std::erase_if(misuse, [](const auto &line) { return ends_with(line, " never freed"); });
    if (request.may_end_early) std::erase_if(misuse, [](const auto &line) { return ends_with(line, " left over"); });
    EXPECT_EQ(joined(misuse), "") << request.line << "\n" << joined(run.calls);
    return run;
}

recorded_run run_recorded(const std::string &line, const std::string &script)
{
    const temp_folder folder;
    return run_recorded({.line = line, .script = script}, folder);
}

std::string names_of(const std::vector<std::string> &calls)
{
    std::string names;
    for (const std::string &call : calls) {
        const size_t end = call.find('(');
        if (end == std::string::npos) continue;
        names += (names.empty() ? "" : " ") + call.substr(0, end);
    }
    return names;
}

std::vector<std::string> calls_of(const recorded_run &run, const std::string &text)
{
    std::vector<std::string> found;
    for (const std::string &call : run.calls) {
        if (call.rfind(text, 0) == 0) found.push_back(call);
    }
    return found;
}

int position_of(const recorded_run &run, const std::string &text)
{
    for (size_t i = 0; i < run.calls.size(); ++i) {
        if (run.calls[i].rfind(text, 0) == 0) return static_cast<int>(i);
    }
    return -1;
}

std::string joined(const std::vector<std::string> &lines)
{
    std::string text;
    for (const std::string &line : lines) text += line + "\n";
    return text;
}
