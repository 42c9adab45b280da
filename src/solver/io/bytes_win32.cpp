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
constexpr size_t call_max = 1U << 30U; /* the C library's calls count in 32 bits */

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

int os_open_read(const char *filename)
{
    const std::wstring name = wide(filename);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        errno = EISDIR;
        return -1;
    }
    return _wopen(name.c_str(), _O_RDONLY | _O_BINARY | _O_SEQUENTIAL | _O_NOINHERIT);
}

int64_t os_read(int file, char *buffer, size_t capacity)
{
    return _read(file, buffer, static_cast<unsigned>(capacity < call_max ? capacity : call_max));
}

int os_open_target(const char *target, os_target *out)
{
    struct _stat64 info;
    const std::wstring name = wide(target);
    const bool exists = _wstat64(name.c_str(), &info) == 0;
    out->final_name = target;
    if (exists && (info.st_mode & _S_IFMT) != _S_IFREG) {
        out->temp.clear();
        out->file = _wopen(name.c_str(), _O_WRONLY | _O_BINARY | _O_NOINHERIT);
        return out->file < 0 ? -1 : 0;
    }
    if (exists && _waccess(name.c_str(), 2) != 0) return -1;
    out->file = create_beside(target, &out->temp);
    return out->file < 0 ? -1 : 0;
}

int os_write_all(int file, const char *data, size_t size)
{
    while (size > 0) {
        const int done = _write(file, data, static_cast<unsigned>(size < call_max ? size : call_max));
        if (done < 0) return -1;
        data += done;
        size -= static_cast<size_t>(done);
    }
    return 0;
}

int os_close_target(os_target *target, bool commit)
{
    int result = 0;
    const int file = target->file;
    target->file = -1;
    if (target->temp.empty()) return _close(file);

    if (commit) result = _commit(file);
    int error = errno;
    if (_close(file) != 0 && result == 0) {
        result = -1;
        error = errno;
    }
    const std::wstring temp = wide(target->temp);
    if (commit && result == 0 &&
        MoveFileExW(temp.c_str(), wide(target->final_name).c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
        result = -1;
        error = EACCES; /* the usual reason: somebody has the old file open */
    }
    if (!commit || result != 0) _wunlink(temp.c_str());
    errno = error;
    return result;
}

void os_close(int file) { _close(file); }
