/* bytes_win32.cpp - see bytes_os.h. */
#include "solver/io/bytes_os.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <windows.h>

const bool os_text_crlf = true;

namespace
{
constexpr int name_attempts = 1000;

std::wstring wide(const std::string &text)
{
    const int size = static_cast<int>(text.size());
    const int needed = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
    std::wstring out(static_cast<size_t>(needed), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, out.data(), needed);
    return out;
}

int create_beside(const std::string &name, std::string *temp)
{
    static std::atomic<unsigned> counter{0};
    const size_t slash = name.find_last_of("\\/:");
    const std::string folder = slash == std::string::npos ? "" : name.substr(0, slash + 1);

    for (int attempt = 0; attempt < name_attempts; ++attempt) {
        *temp = folder + "zelor-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(counter++) + ".tmp";
        const int file = _wopen(wide(*temp).c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT,
                                _S_IREAD | _S_IWRITE);
        if (file >= 0 || errno != EEXIST) return file;
    }
    return -1;
}
}  // namespace

bool os_can_reopen(const char *filename)
{
    struct _stat64 info;
    return _wstat64(wide(filename).c_str(), &info) == 0 && (info.st_mode & _S_IFMT) == _S_IFREG;
}

int os_prepare_target(const char *target, os_target *out)
{
    struct _stat64 info;
    const std::wstring name = wide(target);
    const bool exists = _wstat64(name.c_str(), &info) == 0;
    out->opened_name = target;
    if (exists && (info.st_mode & _S_IFMT) != _S_IFREG) return 0;
    if (exists && _waccess(name.c_str(), 2) != 0) return -1;

    out->final_name = target;
    const int file = create_beside(out->final_name, &out->opened_name);
    if (file < 0) return -1;
    out->is_new = true;
    (void)_close(file);
    return 0;
}

int os_finish_target(os_target *target, bool commit)
{
    if (!target->is_new) return 0;
    const std::wstring opened = wide(target->opened_name);
    if (commit && MoveFileExW(opened.c_str(), wide(target->final_name).c_str(),
                              MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0)
        return 0;
    (void)_wunlink(opened.c_str());
    errno = EACCES; /* the usual reason: somebody has the old file open */
    return commit ? -1 : 0;
}
