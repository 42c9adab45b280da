/* sysfile_win32.cpp - files by name, and data on the disk, on Windows. */
#include "sysfile_internal.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

int sysfile_opendescriptor(const uint16_t *wide, const char *utf8, int32_t read, int32_t write, int32_t append)
{
    (void)utf8;
    if (wide == nullptr) return -1;
    int flags = _O_BINARY | _O_CREAT | _O_RDWR;
    if (read != 0 && write == 0) flags = _O_BINARY | _O_RDONLY;
    if (read == 0 && write != 0) flags = _O_BINARY | _O_CREAT | _O_WRONLY;
    if (append != 0)
        flags |= _O_APPEND;
    else if (write != 0)
        flags |= _O_TRUNC;
    const int permission = (flags & _O_CREAT) != 0 ? _S_IREAD | _S_IWRITE : 0;
    static_assert(sizeof(wchar_t) == sizeof(uint16_t), "names are handed over as they are");
    return _wopen(reinterpret_cast<const wchar_t *>(wide), flags, permission);
}

void sysfile_closedescriptor(int descriptor) { (void)_close(descriptor); }

FILE *sysfile_attach(int descriptor, const char *mode) { return _fdopen(descriptor, mode); }

int sysfile_descriptor(FILE *stream) { return _fileno(stream); }

/* Any seek takes the mark down. The system's C library sets it for text files alone, Wine's for binary ones as well. */
void sysfile_forgetend(int descriptor) { (void)_lseeki64(descriptor, 0, SEEK_CUR); }

int32_t sysfile_todisk(int descriptor)
{
    const HANDLE handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    if (GetFileType(handle) != FILE_TYPE_DISK) return SYSFILE_OK; /* for a pipe it would wait for the reader */
    return FlushFileBuffers(handle) != 0 ? SYSFILE_OK : SYSFILE_WRITE;
}
