/* ampl_run.cpp - see ampl_run.h. */
#include "ampl_run.h"

#include "case_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

static bool begins_with(const std::string &text, const std::string &begin) { return text.rfind(begin, 0) == 0; }

/* From the stub object to the line break that is printed before the optimiser, or to where the task goes. */
static void take_transfer(ampl_result *result)
{
    bool inside = false;
    for (const std::string &call : result->run.calls) {
        if (begins_with(call, "getversion")) inside = true;
        if (begins_with(call, "echotask(task1, 1, \"\\n\")") || begins_with(call, "deletetask")) inside = false;
        if (!inside) continue;
        bool is_memory = false;
        for (const char *name :
             {"calloctask", "freetask", "freedbgtask", "strduptask", "getparamname", "getversion", "!!"})
            is_memory |= begins_with(call, name);
        if (!is_memory) result->transfer.push_back(call);
    }
}

ampl_result run_ampl(const ampl_request &request)
{
    const temp_folder folder;
    if (!request.stub.empty()) file_write(folder.file("s.nl"), request.stub);
    if (!request.row_names.empty()) file_write(folder.file("s.row"), request.row_names);
    if (!request.column_names.empty()) file_write(folder.file("s.col"), request.column_names);

    run_request run;
    run.line = "s -AMPL" + (request.words.empty() ? "" : " " + request.words);
    if (!request.line.empty()) run.line = request.line;
    run.script = request.script;
    run.environment = {{"zelor_options", request.options}};
    run.may_print_errors = request.may_print_errors;
    run.may_keep_blocks = request.may_fail;

    ampl_result result;
    result.run = run_recorded(run, folder);
    result.has_sol = file_exists(folder.file("s.sol"));
    if (result.has_sol) result.sol = file_read(folder.file("s.sol"));
    result.num_kept = static_cast<int>(result.run.misuse.size());
    take_transfer(&result);
    return result;
}

std::string part_of(const ampl_result &result, const std::string &names)
{
    std::string text;
    for (const std::string &call : result.transfer)
        for (const std::string &name : split(names, " "))
            if (begins_with(call, name + "(")) text += call + "\n";
    return text;
}

nl_model small_model()
{
    nl_model m;
    m.columns = {{}, {}};
    m.rows = {{.lower = 1.0, .linear = {{0, 1.0}, {1, 1.0}}}, {.upper = 2.0, .linear = {{0, 1.0}, {1, -1.0}}}};
    m.objectives = {{.linear = {{0, 1.0}, {1, 2.0}}}};
    return m;
}

/* An empty line ends it. */
std::string report_of(const std::string &sol)
{
    const size_t end = sol.find("\n\n");
    return end == std::string::npos ? sol : sol.substr(0, end + 1);
}

int code_of(const std::string &sol)
{
    const size_t at = sol.find("\nobjno ");
    if (at == std::string::npos) return -1;
    const std::vector<std::string> words = words_of(sol.substr(at + 1, sol.find('\n', at + 1) - at - 1));
    return words.size() == 3 ? std::stoi(words[2]) : -1;
}
