/* bytes_os.h - what bytes.cpp asks of the platform about targets: bytes_posix.cpp and bytes_win32.cpp.
 *
 * Names are UTF-8. Failures give -1 and set errno. */
#pragma once

#include <string>

extern const bool os_text_crlf; /* lines of text end in CR LF */

/* Whether a name leads to the same bytes each time that it is opened. */
bool os_can_reopen(const char *filename);

/* How a target is written. */
struct os_target {
    std::string opened_name; /* to be opened for writing; a new file beside the target, or the target itself */
    std::string final_name;  /* what a new file becomes */
    bool is_new = false;
    bool append = false; /* open at the end: a new file, or an output stream that the process has already */
};

/* Chooses, and creates a new file with a name of its own in the target's folder; a target that is no regular file is
 * written in place. */
int os_prepare_target(const char *target, os_target *out);

/* When it has been closed again. `commit`: a new file gets its final name. One that is not to be committed, or cannot
 * be, is removed. */
int os_finish_target(os_target *target, bool commit);
