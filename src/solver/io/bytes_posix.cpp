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
constexpr int name_attempts = 1000; /* temporary names that are tried before giving up */

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
        const int file = open(temp->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file >= 0 || (errno != EEXIST && errno != EINTR)) return file;
    }
    return -1;
}
}  // namespace

bool os_can_reopen(const char *filename)
{
    struct stat info;
    return stat(filename, &info) == 0 && S_ISREG(info.st_mode);
}

int os_prepare_target(const char *target, os_target *out)
{
    const int standard = standard_stream(target);
    out->opened_name = target;
    if (standard >= 0) { /* whatever stands there already stays */
        out->opened_name = "/dev/fd/" + std::to_string(standard);
        out->append = true;
        return 0;
    }

    struct stat info;
    const bool exists = stat(target, &info) == 0;
    struct stat link_info;
    const bool dangling = !exists && lstat(target, &link_info) == 0;
    if (dangling || (exists && !S_ISREG(info.st_mode))) return 0;
    if (exists && access(target, W_OK) != 0) return -1;

    out->final_name = resolved_name(target);
    const int file = create_beside(out->final_name, &out->opened_name);
    if (file < 0) return -1;
    out->is_new = true;
    /* It is empty. To cut it to nothing would have the file system write it out when it is closed, a twentieth of the time
     * that a small run takes. */
    out->append = true;
    if (exists) (void)fchmod(file, info.st_mode & 07777); /* refused on some file systems: no harm */
    (void)close(file);
    return 0;
}

int os_finish_target(os_target *target, bool commit)
{
    if (!target->is_new) return 0;
    if (commit && rename(target->opened_name.c_str(), target->final_name.c_str()) == 0) return 0;
    const int why = errno;
    (void)unlink(target->opened_name.c_str());
    errno = why;
    return commit ? -1 : 0;
}
