/* sysfile_posix.cpp - files by name, and data on the disk, on POSIX. */
#include "sysfile_internal.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

/* ---- Names ---- */

/* The character at *at, which is not the terminator, and moves behind it. Half of a pair on its own stands for itself. */
static uint32_t read_character(const uint16_t **at)
{
    const uint32_t first = *(*at)++;
    const uint32_t second = **at;
    if ((first & 0xFC00) != 0xD800 || (second & 0xFC00) != 0xDC00) return first;
    ++*at;
    return 0x10000 + ((first & 0x3FF) << 10) + (second & 0x3FF);
}

/* Its bytes, and how many they are. */
static size_t character_bytes(uint32_t value, char bytes[4])
{
    if (value < 0x80) {
        bytes[0] = static_cast<char>(value);
        return 1;
    }
    const size_t length = value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
    for (size_t i = length - 1; i > 0; --i) {
        bytes[i] = static_cast<char>(0x80 | (value & 0x3F));
        value >>= 6;
    }
    bytes[0] = static_cast<char>((0xF00 >> length & 0xF0) | value);
    return length;
}

/* False if the name does not fit. The system takes no longer ones. */
static bool to_utf8(const uint16_t *wide, char (&name)[PATH_MAX])
{
    size_t length = 0;
    while (*wide != 0) {
        if (length + 4 >= sizeof name) return false;
        length += character_bytes(read_character(&wide), name + length);
    }
    name[length] = 0;
    return true;
}

/* ---- Files ---- */

static int open_flags(int32_t read, int32_t write, int32_t append)
{
    int flags = O_CREAT | O_RDWR;
    if (read != 0 && write == 0) flags = O_RDONLY;
    if (read == 0 && write != 0) flags = O_CREAT | O_WRONLY;
    if (append != 0) return flags | O_APPEND;
    return write != 0 ? flags | O_TRUNC : flags;
}

int sysfile_opendescriptor(const uint16_t *wide, const char *utf8, int32_t read, int32_t write, int32_t append)
{
    char name[PATH_MAX];
    if (utf8 == nullptr) {
        if (wide == nullptr || !to_utf8(wide, name)) return -1;
        utf8 = name;
    }
    const int descriptor = open(utf8, open_flags(read, write, append), 0666);
    struct stat about = {};
    /* A directory can be opened for reading here, and would pass for an empty file. */
    if (descriptor != -1 && fstat(descriptor, &about) == 0 && S_ISDIR(about.st_mode)) {
        (void)close(descriptor);
        errno = EISDIR;
        return -1;
    }
    return descriptor;
}

void sysfile_closedescriptor(int descriptor) { (void)close(descriptor); }

FILE *sysfile_attach(int descriptor, const char *mode) { return fdopen(descriptor, mode); }

int sysfile_descriptor(FILE *stream) { return fileno(stream); }

void sysfile_forgetend(int descriptor) { (void)descriptor; } /* there is no such mark */

int32_t sysfile_todisk(int descriptor)
{
    while (fdatasync(descriptor) != 0) {
        if (errno == EINTR) continue;
        const bool is_no_disk = errno == EINVAL || errno == ENOTSUP || errno == EROFS; /* pipes, devices */
        return is_no_disk ? SYSFILE_OK : SYSFILE_WRITE;
    }
    return SYSFILE_OK;
}
