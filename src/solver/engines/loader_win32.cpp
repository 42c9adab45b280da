/* loader_win32.cpp - see loader.h. */
#include "solver/engines/loader.h"

#include <cstring>
#include <mutex>
#include <string>
#include <windows.h>

struct loaded_module {
    const char *name;
    const engine_adapter *adapter;
};

static std::mutex module_lock;
static loaded_module modules[16];
static size_t num_modules = 0;

/* The folder of this library, which is pinned: an engine's thread returns into it. */
static std::wstring own_folder()
{
    HMODULE self = nullptr;
    wchar_t path[32768];
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                           reinterpret_cast<LPCWSTR>(&loader_get), &self) == 0)
        return L"";
    const DWORD length = GetModuleFileNameW(self, path, static_cast<DWORD>(sizeof(path) / sizeof(path[0])));
    std::wstring folder(path, length);
    const size_t end = folder.find_last_of(L'\\');
    return end == std::wstring::npos ? L"" : folder.substr(0, end + 1);
}

static const engine_adapter *open_module(const char *name, std::string *message)
{
    const std::string file = std::string("zelor_engine_") + name + ".dll";
    const std::wstring path = own_folder() + std::wstring(file.begin(), file.end());
    HMODULE handle = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (handle == nullptr) {
        *message =
            file + " or a library that it needs cannot be loaded (system error " + std::to_string(GetLastError()) + ")";
        return nullptr;
    }
    const auto *adapter = reinterpret_cast<const engine_adapter *>(GetProcAddress(handle, "zelor_engine"));
    if (adapter != nullptr && adapter->abi == engine_abi) return adapter;
    *message = file + " belongs to another version of the library";
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
