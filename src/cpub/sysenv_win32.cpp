/* sysenv_win32.cpp - where the code of this library stands, on Windows. */
#include "cpub/sysenv.h"

#include <climits>

#include <windows.h>

/* The longest path that the system knows, in units. */
enum { LONGEST_PATH = 32768 };

/* Its length in units, or 0. */
static DWORD find_module(WCHAR path[LONGEST_PATH])
{
    HMODULE module = nullptr;
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (GetModuleHandleExW(flags, reinterpret_cast<const WCHAR *>(&sysenv_getdllname), &module) == 0) return 0;
    const DWORD length = GetModuleFileNameW(module, path, LONGEST_PATH);
    return length < LONGEST_PATH ? length : 0;
}

int32_t sysenv_getdllname(sysenv *sys, uint64_t capacity, char *buffer)
{
    (void)sys;
    if (capacity == 0) return 1;
    buffer[0] = 0;
    WCHAR path[LONGEST_PATH];
    const DWORD length = find_module(path);
    if (length == 0 || capacity == 1) return 1; /* no room at all would be a question for the length */
    const int room = static_cast<int>(capacity < INT_MAX ? capacity - 1 : INT_MAX);
    const int num = WideCharToMultiByte(CP_UTF8, 0, path, static_cast<int>(length), buffer, room, nullptr, nullptr);
    buffer[num] = 0; /* 0 bytes: it does not fit, though some may have been written */
    return num > 0 ? 0 : 1;
}
