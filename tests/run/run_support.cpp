/* run_support.cpp - see run_support.h. */
#include "run_support.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fstream>
#include <sstream>

zelor_run run_zelor(const temp_folder &folder, std::vector<std::string> args, std::vector<process_signal> signals,
                    double limit_s)
{
    zelor_run run;
    process_options options;
    args.insert(args.begin(), {"-d", "RESULT_FILE", "result.json"});
    options.args = std::move(args);
    options.folder = folder.path;
    options.signals = std::move(signals);
    options.limit_s = limit_s;
    run.process = process_run(ZELOR_PROGRAM, options);

    const std::string text = file_read(folder.file("result.json"));
    if (!text.empty()) run.result = nlohmann::json::parse(text, nullptr, false);
    return run;
}

double result_number(const nlohmann::json &result, const char *key)
{
    if (!result.is_object() || !result.contains(key) || !result[key].is_number()) return NAN;
    return result[key].get<double>();
}

static std::vector<std::string> split_tabs(const std::string &line)
{
    std::vector<std::string> fields;
    std::stringstream in(line);
    for (std::string field; std::getline(in, field, '\t');) fields.push_back(field);
    return fields;
}

std::vector<data_row> data_rows(const std::string &folder)
{
    std::vector<data_row> rows;
    std::ifstream in(data_path("MANIFEST.tsv"));
    std::string line;
    std::getline(in, line); /* the header */
    while (std::getline(in, line)) {
        const std::vector<std::string> field = split_tabs(line);
        if (field.size() < 7 || field[0].rfind(folder + "/", 0) != 0) continue;
        data_row row = {field[0], field[1], field[5], NAN, field[0].substr(folder.size() + 1)};
        if (!field[6].empty()) row.optimal = std::strtod(field[6].c_str(), nullptr);
        std::replace_if(
            row.name.begin(), row.name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; },
            '_');
        rows.push_back(row);
    }
    std::sort(rows.begin(), rows.end(), [](const data_row &a, const data_row &b) { return a.path < b.path; });
    return rows;
}

void PrintTo(const data_row &row, std::ostream *out) { *out << row.path; }

std::string data_path(const std::string &path) { return std::string(ZELOR_DATA_DIR) + "/" + path; }

std::string copy_data(const temp_folder &folder, const std::string &path)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    file_write(folder.file(name), file_read(data_path(path)));
    return name;
}

bool close_to(double a, double b, double relative)
{
    return std::fabs(a - b) <= relative * std::max({1.0, std::fabs(a), std::fabs(b)});
}

bool have_command(const std::string &name)
{
    process_options options;
    options.args = {"-c", "command -v " + name};
    return process_run("/bin/sh", options).status == 0;
}
