/* answer_file.cpp - see ampl.h: the .sol file, and what becomes of a run that cannot leave one.
 *
 * The AMPL Solver Library does not look whether what it writes arrives: on a full disk it would leave a file cut short, or an
 * empty one, and the run would end as if all were well. So it writes into a file in memory, which is copied with care. */
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

// Last: its macros must not meet the standard headers.
#include "ampl/ampl.h"

static bool write_all(int to, const char *bytes, ssize_t num)
{
    while (num > 0) {
        const ssize_t done = write(to, bytes, static_cast<size_t>(num));
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) return false;
        bytes += done;
        num -= done;
    }
    return true;
}

static bool copy_all(int from, int to)
{
    char block[65536];
    off_t at = 0;
    for (;;) {
        const ssize_t got = pread(from, block, sizeof block, at);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return got == 0;
        if (!write_all(to, block, got)) return false;
        at += got;
    }
}

/* A limit on the size of files holds for the one in memory as well: where it is reached, the rest is missing there already. */
static bool is_cut_short(off_t size)
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return false;
    return static_cast<rlim_t>(size) >= limit.rlim_cur;
}

/* A half of an answer is worse than none: clients take a file that is there for the answer. */
static bool copy_answer(int from, const char *path)
{
    const int to = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (to < 0) return false;
    struct stat about = {};
    const bool is_file = fstat(to, &about) == 0 && S_ISREG(about.st_mode);
    const bool is_cut = is_cut_short(lseek(from, 0, SEEK_END));
    bool is_done = !is_cut && copy_all(from, to);
    int why = is_cut ? EFBIG : errno;
    if (close(to) != 0 && is_done) {
        is_done = false;
        why = errno;
    }
    if (!is_done && is_file) (void)unlink(path);
    errno = why;
    return is_done;
}

/* The answer in a file in memory. False: that cannot be. */
static bool compose_answer(ASL *asl, int memory, const char *report, double *x, double *y, Option_Info *options)
{
    if (memory < 0 || filename == nullptr) return false;
    const std::string name = "/proc/self/fd/" + std::to_string(memory);
    return write_solf_ASL(asl, report, x, y, options, name.c_str()) == 0;
}

static void write_with_care(ASL *asl, int memory)
{
    const std::string path = ampl_path_beside(asl, ".sol");
    if (copy_answer(memory, path.c_str())) return;
    Fprintf(Stderr, "can't write %s: %s\n", path.c_str(), std::strerror(errno));
    mainexit_ASL(2);
}

/* The tables that "wantsol" may ask for are printed by the library's usual call alone, which writes the file as well. */
void ampl_write_answer(ASL *asl, const char *report, double *x, double *y, Option_Info *options)
{
    constexpr int file_bit = 1, table_bits = 6, silent_bit = 8;
    const int wish = options != nullptr ? options->wantsol : 0;
    const bool is_wanted = ((amplflag | wish) & file_bit) != 0;
    const bool has_tables = (wish & table_bits) != 0;
    if (has_tables || !is_wanted) write_sol(report, x, y, options);
    if (!is_wanted) return;

    const int memory = memfd_create("zelor.sol", MFD_CLOEXEC);
    if (has_tables) options->wantsol |= silent_bit;
    if (compose_answer(asl, memory, report, x, y, options))
        write_with_care(asl, memory);
    else if (!has_tables)
        write_sol(report, x, y, options);
    if (has_tables) options->wantsol = wish;
    if (memory >= 0) (void)close(memory);
}
