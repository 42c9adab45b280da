/* files.h - temporary folders and whole files, for tests. Failures show as empty or false results: a test notices by what
 * it then misses. */
#pragma once

#include <string>

/* A folder of its own for one test, removed with all that is in it. */
struct temp_folder {
    std::string path;

    temp_folder();
    ~temp_folder();
    temp_folder(const temp_folder &) = delete;
    temp_folder &operator=(const temp_folder &) = delete;

    /* The path of a file in it. */
    std::string file(const std::string &name) const;
};

bool file_exists(const std::string &path);
std::string file_read(const std::string &path);
bool file_write(const std::string &path, const std::string &text);
