/* platform.h - what tests must know of the platform that they run on. Cases that only POSIX has stand in *_posix_test.cpp. */
#pragma once

#include "cpub/sysfile.h"
#include "support/files.h"

#include <cstdarg>
#include <cstdio>
#include <string>
#include <zlib.h>

#ifdef _WIN32

#include <fcntl.h>
#include <io.h>

static const char NULL_DEVICE[] = "NUL";

/* One or more, in the regular expressions of GoogleTest, which here has its own. */
#define DIGITS "\\d+"

/* The exit status that is seen of a process that has ended with `status`. */
inline int shown_status(int status) { return status; }
inline bool has_aborted(int exit_status) { return exit_status == 3; }

/* The formatter that the layer stands on. The compiler's own library has another one, with another form of pointers. */
inline void library_format(size_t capacity, char *text, const char *format, va_list args)
{
    (void)_vsnprintf(text, capacity - 1, format, args);
    text[capacity - 1] = 0;
}

/* Text files have CR LF. */
inline std::string text_file_read(const std::string &path)
{
    std::string text = file_read(path);
    for (size_t at = 0; (at = text.find("\r\n", at)) != std::string::npos;) text.erase(at, 1);
    return text;
}

/* Of the C library's descriptors, through which the layer opens everything. Handles of the process are no measure: the
 * system opens and closes some of its own. */
inline int64_t count_descriptors()
{
    int64_t num_open = 0;
    for (int i = 0; i < 2048; ++i) num_open += _get_osfhandle(i) != -1 ? 1 : 0; /* it has no more */
    return num_open;
}

/* A file under the name that the layer makes of `path`, for reading or writing without it. */
inline gzFile gzip_open(const std::string &path, const char *mode)
{
    uint16_t wide[4096];
    if (sysenv_utf8towide(nullptr, 4096, nullptr, wide, nullptr, path.c_str()) != 0) return nullptr;
    return gzopen_w(reinterpret_cast<const wchar_t *>(wide), mode);
}

/* The first unit of U+1F600 in a name: bits 12 to 15 of a character are lost, see sysformat.h. */
static const uint16_t UNIT_OF_1F600 = 0xD801;

/* What a stream for reading and appending reads after its write was refused: the C library was at the end by then. */
static const int32_t READ_BEHIND_REFUSED_APPEND = SYSFILE_EOF;

#else

#include <csignal>
#include <filesystem>
#include <iterator>
#include <sys/wait.h>

static const char NULL_DEVICE[] = "/dev/null";

#define DIGITS "[0-9]+"

inline int shown_status(int status) { return status & 0xFF; }
inline bool has_aborted(int exit_status) { return WIFSIGNALED(exit_status) && WTERMSIG(exit_status) == SIGABRT; }

inline void library_format(size_t capacity, char *text, const char *format, va_list args)
{
    (void)std::vsnprintf(text, capacity, format, args);
}

inline std::string text_file_read(const std::string &path) { return file_read(path); }

inline int64_t count_descriptors()
{
    const std::filesystem::directory_iterator begin("/proc/self/fd");
    return std::distance(begin, std::filesystem::directory_iterator());
}

inline gzFile gzip_open(const std::string &path, const char *mode) { return gzopen(path.c_str(), mode); }

static const uint16_t UNIT_OF_1F600 = 0xD83D; /* the standard's: names are bytes here */

static const int32_t READ_BEHIND_REFUSED_APPEND = SYSFILE_OK;

#endif
