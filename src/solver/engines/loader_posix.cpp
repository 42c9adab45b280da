/* loader_posix.cpp - see loader.h. */
#include "solver/engines/exit_guard.h"
#include "solver/engines/loader.h"

#include <cstring>
#include <dlfcn.h>
#include <mutex>
#include <string>

/* What was loaded, and what could not be: a failure is tried again, for the user may install what is missing while a
 * long-lived program runs. Never freed: threads left behind outlive static destructors. */
struct loaded_module {
    const char *name;
    const engine_adapter *adapter;
};

static std::mutex module_lock;
static loaded_module modules[16];
static size_t num_modules = 0;

/* The folder that holds this code: the shared library's, or the program's where it is linked statically. The library is
 * pinned as well: an engine's thread returns into it. */
static std::string own_folder()
{
    Dl_info info;
    if (dladdr(reinterpret_cast<const void *>(&loader_get), &info) == 0 || info.dli_fname == nullptr) return "";
    (void)dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
    const char *slash = std::strrchr(info.dli_fname, '/');
    return slash == nullptr ? "" : std::string(info.dli_fname, slash + 1);
}

static const engine_adapter *open_module(const char *name, std::string *message)
{
    const std::string path = own_folder() + "zelor_engine_" + name + ".so";
    void *handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (handle == nullptr) {
        const char *why = dlerror();
        *message = why != nullptr ? why : path + " cannot be loaded";
        return nullptr;
    }
    exit_guard_arm();
    const auto *adapter = static_cast<const engine_adapter *>(dlsym(handle, "zelor_engine"));
    if (adapter != nullptr && adapter->abi == engine_abi) return adapter;
    *message = path + " belongs to another version of the library";
    return nullptr;
}

const engine_adapter *loader_get(const char *name, std::string *message)
{
    const std::lock_guard<std::mutex> lock(module_lock);

    for (size_t i = 0; i < num_modules; i++)
        if (std::strcmp(modules[i].name, name) == 0) return modules[i].adapter;
    const engine_adapter *adapter = open_module(name, message);
    if (adapter != nullptr && num_modules < sizeof(modules) / sizeof(modules[0]))
        modules[num_modules++] = {name, adapter};
    return adapter;
}
