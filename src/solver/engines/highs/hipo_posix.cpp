/* hipo_posix.cpp - see highs_load_hipo in session.h. */
#include "solver/engines/highs/session.h"

#include <cstring>
#include <dlfcn.h>

void highs_load_hipo()
{
    Dl_info info;
    if (dladdr(reinterpret_cast<const void *>(&Highs_create), &info) == 0 || info.dli_fname == nullptr) return;
    const char *slash = std::strrchr(info.dli_fname, '/');
    if (slash == nullptr) return;
    const std::string path = std::string(info.dli_fname, slash + 1) + "hipo/libhighs_extras.so";
    (void)dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
}
