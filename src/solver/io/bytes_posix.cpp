/* bytes_posix.cpp - see bytes_os.h. */
#include "solver/io/bytes_os.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

const bool os_text_crlf = false;

namespace
{
constexpr int name_attempts = 1000;     /* temporary names that are tried before giving up */
constexpr size_t write_max = 1U << 30U; /* one call never writes more than 2 GiB on Linux */

int open_retrying(const char *filename, int flags, mode_t mode)
{
    int file = -1;
    do {
        file = open(filename, flags | O_CLOEXEC, mode);
    } while (file < 0 && errno == EINTR);
    return file;
}

/* The open file that a name such as /dev/stdout stands for, or -1. Opening such a name would start over at the
 * beginning of a file that the output was redirected to. */
int standard_stream(const char *target)
{
    if (std::strcmp(target, "/dev/stdout") == 0) return STDOUT_FILENO;
    if (std::strcmp(target, "/dev/stderr") == 0) return STDERR_FILENO;
    if (std::strncmp(target, "/dev/fd/", 8) != 0) return -1;
    char *end = nullptr;
    const long number = std::strtol(target + 8, &end, 10);
    return end != target + 8 && *end == '\0' && number >= 0 && number <= INT_MAX ? static_cast<int>(number) : -1;
}

/* Follows links to the name of the file itself, so that replacing it leaves them in place. */
std::string resolved_name(const char *target)
{
    char *real = realpath(target, nullptr);
    std::string name = real != nullptr ? real : target;
    std::free(real); /* NOLINT: realpath allocates */
    return name;
}

int create_beside(const std::string &name, std::string *temp)
{
    static std::atomic<unsigned> counter{0};
    const size_t slash = name.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : name.substr(0, slash + 1);

    for (int attempt = 0; attempt < name_attempts; ++attempt) {
        *temp = folder + "zelor-" + std::to_string(getpid()) + "-" + std::to_string(counter++) + ".tmp";
        const int file = open_retrying(temp->c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
        if (file >= 0 || errno != EEXIST) return file;
    }
    return -1;
}

int open_in_place(const char *target, os_target *out)
{
    out->temp.clear();
    out->final_name = target;
    out->file = open_retrying(target, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    return out->file < 0 ? -1 : 0;
}
}  // namespace

int os_open_read(const char *filename)
{
    const int file = open_retrying(filename, O_RDONLY, 0);
    if (file < 0) return -1;
    struct stat info;
    if (fstat(file, &info) == 0 && S_ISDIR(info.st_mode)) {
        close(file);
        errno = EISDIR;
        return -1;
    }
    return file;
}

int64_t os_read(int file, char *buffer, size_t capacity)
{
    ssize_t got = 0;
    do {
        got = read(file, buffer, capacity);
    } while (got < 0 && errno == EINTR);
    return got;
}

int os_open_target(const char *target, os_target *out)
{
    const int standard = standard_stream(target);
    if (standard >= 0) {
        out->temp.clear();
        out->final_name = target;
        out->file = fcntl(standard, F_DUPFD_CLOEXEC, 0);
        return out->file < 0 ? -1 : 0;
    }

    struct stat info;
    const bool exists = stat(target, &info) == 0;
    struct stat link_info;
    const bool dangling = !exists && lstat(target, &link_info) == 0;
    if (dangling || (exists && !S_ISREG(info.st_mode))) return open_in_place(target, out);
    if (exists && access(target, W_OK) != 0) return -1;

    out->final_name = resolved_name(target);
    out->file = create_beside(out->final_name, &out->temp);
    if (out->file < 0) return -1;
    if (exists) (void)fchmod(out->file, info.st_mode & 07777); /* refused on some file systems: no harm */
    return 0;
}

int os_write_all(int file, const char *data, size_t size)
{
    while (size > 0) {
        const ssize_t done = write(file, data, size < write_max ? size : write_max);
        if (done < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
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
    if (target->temp.empty()) return close(file);

    /* No fsync: it would take longer than all the rest of a small run, and what a full disk or a failing write has to
     * tell comes with the writes and the close. */
    int error = errno;
    if (close(file) != 0 && result == 0) {
        result = -1;
        error = errno;
    }
    if (commit && result == 0 && rename(target->temp.c_str(), target->final_name.c_str()) != 0) {
        result = -1;
        error = errno;
    }
    if (!commit || result != 0) unlink(target->temp.c_str());
    errno = error;
    return result;
}

void os_close(int file) { close(file); }
