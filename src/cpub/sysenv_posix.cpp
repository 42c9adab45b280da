/* sysenv_posix.cpp - where the code of this library stands, on POSIX. */
#include "cpub/sysenv.h"

#include <climits>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <unistd.h>

/* The absolute path of the object that holds this code, or false. The loader tells it as it was given, for the program
 * perhaps no more than the word on the command line: what cannot be found by that is the program, whose path the system
 * knows. */
static bool find_object(char path[PATH_MAX])
{
    Dl_info info;
    const bool is_known = dladdr(reinterpret_cast<const void *>(&sysenv_getdllname), &info) != 0;
    if (is_known && info.dli_fname != nullptr && std::strchr(info.dli_fname, '/') != nullptr &&
        realpath(info.dli_fname, path) != nullptr)
        return true;
    const ssize_t length = readlink("/proc/self/exe", path, PATH_MAX - 1);
    if (length <= 0) return false;
    path[length] = 0;
    return true;
}

int32_t sysenv_getdllname(sysenv *sys, uint64_t capacity, char *buffer)
{
    (void)sys;
    if (capacity == 0) return 1;
    buffer[0] = 0;
    char path[PATH_MAX];
    if (!find_object(path) || std::strlen(path) >= capacity) return 1;
    (void)sysenv_strncpy(capacity, buffer, path);
    return 0;
}
