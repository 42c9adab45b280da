/* guard.cpp - see ampl.h: what the AMPL Solver Library cannot do comes back as a code.
 *
 * The AMPL Solver Library reports what is wrong with a stub and ends the process. Before that it looks at an anchor of the
 * stub object to jump back to: the anchors are set here, around each call, by functions that have nothing to destroy. It
 * knows no other way back, whatever the static checks think of setjmp. */
#include <csetjmp>
#include <csignal>
#include <stdio_ext.h>

#include "ampl/stub_stream.h"

// Last: its macros must not meet the standard headers.
#include "ampl/ampl.h"

/* The stream that goes on where the header ends, without the coefficients that are known, and with a buffer of 32 KiB: the
 * library takes a stub in small pieces, 4 to 8 % slower through the usual buffer. Where that cannot be the stream stays as it
 * is. */
static FILE *segments_stream(ASL *asl, FILE *file, const stub_matrix *known)
{
    constexpr size_t buffer_bytes = 32768;
    FILE *stream = stub_stream_open(filename, std::ftell(file), known);
    if (stream == nullptr) return file;
    auto *buffer = static_cast<char *>(M1alloc(buffer_bytes)); /* goes with the stub object, behind the stream */
    if (std::setvbuf(stream, buffer, _IOFBF, buffer_bytes) != 0) {
        (void)std::fclose(stream);
        return file;
    }
    (void)std::fclose(file);
    return stream;
}

int32_t ampl_open_stub(ASL *asl, const char *name, FILE **file, const stub_matrix *known)
{
    Jmp_buf back;
    *file = nullptr;
    asl->i.err_jmp1_ = &back;
    if (setjmp(back.jb) != 0) {  // NOLINT(cert-err52-cpp)
        asl->i.err_jmp1_ = nullptr;
        *file = nullptr;
        return ZLR_RES_ERR_AMPL_STUB;
    }
    *file = jac0dim(name, static_cast<ftnlen>(std::strlen(name)));
    asl->i.err_jmp1_ = nullptr;
    if (*file == nullptr) return ZLR_RES_OK;
    *file = segments_stream(asl, *file, known);
    /* The reader takes a number a call, and nobody else has the file: locking it each time is felt. */
    (void)__fsetlocking(*file, FSETLOCKING_BYCALLER);
    return ZLR_RES_OK;
}

void ampl_name_stub(ASL *asl, const char *name, int32_t num_con, int32_t num_var)
{
    const size_t length = std::strlen(name);
    filename = static_cast<char *>(M1alloc(length + 5)); /* room for .nl, .sol and the like behind it */
    std::memcpy(filename, name, length + 1);
    const bool has_end = length > 3 && std::strcmp(name + length - 3, ".nl") == 0;
    stub_end = filename + (has_end ? length - 3 : length);
    n_con = asl->i.n_con0 = num_con; /* the answer goes by the second */
    n_var = asl->i.n_var0 = num_var;
}

static int32_t read_guarded(ASL *asl, FILE *file)
{
    Jmp_buf back;
    asl->i.err_jmp1_ = &back;
    if (setjmp(back.jb) != 0) {  // NOLINT(cert-err52-cpp)
        asl->i.err_jmp1_ = nullptr;
        return ZLR_RES_ERR_AMPL_STUB;
    }
    const bool is_evaluated = asl->i.ASLtype == ASL_read_pfgh;
    const int code = is_evaluated ? pfgh_read(file, ASL_return_read_err) : qp_read(file, ASL_return_read_err);
    asl->i.err_jmp1_ = nullptr;
    return code == ASL_readerr_none ? ZLR_RES_OK : ZLR_RES_ERR_AMPL_STUB;
}

/* What the library has to say goes to its own error file, which is a piece of memory for that while. */
int32_t ampl_read_stub(ASL *asl, FILE *file, ampl_data *adat)
{
    FILE *kept = Stderr;
    char *text = nullptr;
    size_t size = 0;
    FILE *heard = open_memstream(&text, &size);
    if (heard != nullptr) Stderr = heard;
    const int32_t res = read_guarded(asl, file);
    Stderr = kept;
    if (heard != nullptr && std::fclose(heard) == 0) {
        if (res != ZLR_RES_OK)
            ampl_note_error(adat, text);
        else
            Fprintf(Stderr, "%s", text);
    }
    std::free(text);
    return res;
}

/* ---- Quadratic parts ---- */

static sigjmp_buf quadratic_back;

/* Addresses below this are those of a null pointer's fields. */
static constexpr uintptr_t null_bytes = 4096;

static void leave_quadratic(int number, siginfo_t *info, void *)
{
    if (reinterpret_cast<uintptr_t>(info->si_addr) < null_bytes) siglongjmp(quadratic_back, 1);
    (void)std::signal(number, SIG_DFL); /* another fault: it comes again at once, and ends the process as it should */
}

/* The library follows a null pointer in a product one factor of which is left without variables but for a constant, as
 * (0*x + 1)*y. Nothing is held at that point: such a function is taken for one that is not quadratic. */
int32_t ampl_quadratic_part(ASL *asl, int32_t co, fint **row, fint **start, real **value)
{
    struct sigaction mine = {};
    struct sigaction before = {};
    mine.sa_sigaction = leave_quadratic;
    mine.sa_flags = SA_SIGINFO;
    (void)sigaction(SIGSEGV, &mine, &before);
    volatile fint num = -1;
    if (sigsetjmp(quadratic_back, 1) == 0) num = nqpcheck(co, row, start, value);
    (void)sigaction(SIGSEGV, &before, nullptr);
    return num;
}

/* ---- Evaluation ---- */

/* Common expressions are evaluated when a point is taken: after a failure there the library holds the point for known, and
 * would give values of the point before. It is made to look at the next point afresh. */
static void forget_point(ASL *asl)
{
    x0kind = ASL_first_x;
    asl->i.x_known = 0;
}

int32_t ampl_evaluate(ASL *asl, int32_t (*steps)(void *handle), void *handle)
{
    Jmp_buf back;
    const int first = n_conjac[0];
    const int end = n_conjac[1];
    const int mode = asl->i.congrd_mode;
    err_jmp = nullptr; /* failures come back in error words */
    err_jmp1 = &back;
    int32_t res = ZLR_RES_ERR_NL_EVALUATION;
    if (setjmp(back.jb) == 0) {  // NOLINT(cert-err52-cpp)
        res = steps(handle);
    } else {
        forget_point(asl);
        n_conjac[0] = first;
        n_conjac[1] = end;
        asl->i.congrd_mode = mode;
        res = ZLR_RES_ERR_NL_EVALUATION;
    }
    err_jmp = nullptr;
    err_jmp1 = nullptr;
    return res;
}
