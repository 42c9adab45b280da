/* bytes.h - the bytes of files: the one place through which readers get them and writers leave them, on streams of the
 * support library.
 *
 * Sources look through gzip by the first bytes of the file, whatever its name. Sinks compress when the name ends in
 * ".gz". A sink writes beside its target and renames when it is committed, so that a failed or interrupted write never
 * leaves half a file under the asked name; a target that is not a regular file (a device, a pipe) is written in place.
 * Names are UTF-8. All entries return ZLR_RES_OK or the code of the failure and say nothing; who calls knows the file's
 * role and tells. */
#pragma once

#include "cpub/sysenv.h" /* owns the memory of streams */
#include "zelor.h"

#include <cstddef>
#include <string>
#include <string_view>

struct byte_source;
struct byte_sink;

/* How a file is written. */
struct sink_options {
    bool sync = true;        /* its data are on the disk before it gets its name */
    int32_t gzip_level = 6;  /* 1 to 9, where it is compressed */
    bool may_replace = true; /* a file that is there already */
};

/* Opens a file for reading. ZLR_RES_ERR_FILE_READ: cannot be opened (errno tells why), or is a folder. */
[[nodiscard]] int32_t source_open(sysenv *sys, byte_source **source, const char *filename);

/* Up to `capacity` bytes; *got 0 is the end. ZLR_RES_ERR_FILE_READ for a read error, a damaged or cut gzip. */
[[nodiscard]] int32_t source_read(byte_source *source, char *buffer, size_t capacity, size_t *got);

/* Why the last source_read failed, in words. */
const char *source_error(const byte_source *source);

/* A source over bytes of the caller, which must outlive it; taken as they stand. */
[[nodiscard]] int32_t source_open_memory(byte_source **source, const char *data, size_t size);

/* Puts bytes that were read back before those to come: for a look at the beginning. They are copied. */
void source_unread(byte_source *source, const char *data, size_t size);

void source_close(byte_source **source);

/* Opens a target. ZLR_RES_ERR_FILE_OPEN (errno tells why; EEXIST for a file that may not be replaced). With `sync` a power
 * cut leaves the old file or the new one; that takes as long as the disk does. A new file gets the permissions that the
 * user's mask leaves, one that is replaced keeps its own; a link stays a link, and the file that it leads to is replaced.
 * What is no regular file is never replaced and always written. */
[[nodiscard]] int32_t sink_open(sysenv *sys, byte_sink **sink, const char *target, const sink_options &options);

/* Buffered. '\n' becomes the platform's line end. An error is kept and given again by every later call.
 * ZLR_RES_ERR_FILE_WRITE. */
int32_t sink_write(byte_sink *sink, const char *data, size_t size);
inline int32_t sink_text(byte_sink *sink, std::string_view text) { return sink_write(sink, text.data(), text.size()); }

/* Shortest text that reads back as the same bits; "inf" and "-inf" for infinities. */
int32_t sink_double(byte_sink *sink, double value);
int32_t sink_int(byte_sink *sink, int64_t value);

/* Completes the file and gives it its name (`commit`), or removes it. Frees the sink and sets it
 * to null. Returns the first error of all calls (errno tells why); what stood under the target's name before is left as
 * it was then. */
[[nodiscard]] int32_t sink_close(byte_sink **sink, bool commit);

/* Writes a whole text to a target in one go. */
[[nodiscard]] int32_t sink_whole_file(sysenv *sys, const char *target, const sink_options &options,
                                      std::string_view text);

/* Appends a text of at most a stream's buffer to a file, which is created where it is not there, by one write to a
 * descriptor opened for append: texts of several processes do not mix. A last line that an earlier failure has cut is
 * ended first, where the file is not compressed. ZLR_RES_ERR_FILE_OPEN, ZLR_RES_ERR_FILE_WRITE (errno tells why);
 * ZLR_RES_ERR_SPACE. */
[[nodiscard]] int32_t file_append(sysenv *sys, const char *target, const sink_options &options, std::string_view text);
