/* files.cpp - temporary folders and whole files. */
#include "files.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <system_error>

temp_folder::temp_folder()
{
    std::error_code failed;
    const std::filesystem::path parent = std::filesystem::temp_directory_path(failed);
    std::random_device random;
    for (int attempt = 0; attempt < 100 && path.empty(); attempt++) { /* a name that nobody has yet */
        const std::filesystem::path made = parent / ("zelor-test-" + std::to_string(random()));
        if (std::filesystem::create_directory(made, failed)) path = made.generic_string();
    }
}

temp_folder::~temp_folder()
{
    std::error_code ignored;
    if (!path.empty()) std::filesystem::remove_all(path, ignored);
}

std::string temp_folder::file(const std::string &name) const { return path + "/" + name; }

bool file_exists(const std::string &path)
{
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

std::string file_read(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

bool file_write(const std::string &path, const std::string &text)
{
    std::ofstream out(path, std::ios::binary);
    out << text;
    out.close();
    return out.good();
}
