/* bytes_os.h - what bytes.cpp asks of the platform: bytes_posix.cpp and bytes_win32.cpp.
 *
 * Names are UTF-8. Failures give -1 and set errno. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

extern const bool os_text_crlf; /* lines of text end in CR LF */

/* Opens a file for reading. A folder is refused with EISDIR. */
int os_open_read(const char *filename);

/* One read of up to `capacity` bytes; the count, 0 at the end. */
int64_t os_read(int file, char *buffer, size_t capacity);

/* How a target is written. `temp` is empty where the target is written in place. */
struct os_target {
    int file = -1;
    std::string temp;
    std::string final_name;
};

/* Opens a target: a new file with a name of its own in the target's folder, or the target itself where that is no
 * regular file. */
int os_open_target(const char *target, os_target *out);

int os_write_all(int file, const char *data, size_t size);

/* Closes a target. `commit`: its data goes to disk first, then it gets its final name. A target that is not to be
 * committed, or cannot be, is removed. Does nothing but close for one that is written in place. */
int os_close_target(os_target *target, bool commit);

void os_close(int file);
