/* nonlinear.cpp - see ampl.h: a nonlinear model is read as one whose functions can be evaluated, a second time where it was
 * not known for one before. */
#include "ampl/ampl.h"

static int32_t make_evaluation_arrays(const ASL *asl, ampl_data *adat)
{
    int32_t res = ampl_calloc(adat->task, 2 * n_var, &adat->work);
    if (res == ZLR_RES_OK) res = ampl_calloc(adat->task, n_obj, &adat->ow);
    if (res == ZLR_RES_OK) res = ampl_calloc(adat->task, n_con, &adat->y);
    return res;
}

ASL *ampl_replace_stub(const ampl_data *adat, ASL **stub, const Option_Info *options)
{
    ASL_free(stub);
    ASL *asl = *stub = ASL_alloc(ASL_read_pfgh);
    amplflag = options->wantsol & 1;
    return_nofile = 1;
    if (adat->extended) want_xpi0 = 7;
    return asl;
}

/* The stub was there a moment ago: where it is gone now, or is another one, that is a failure as any other. */
static int32_t read_again(ASL *asl, const char *name, ampl_data *adat)
{
    const int num_var = n_var;
    const int num_con = n_con;
    FILE *file = nullptr;
    int32_t res = ampl_open_stub(asl, name, &file);
    if (res == ZLR_RES_OK && file == nullptr) {
        ZLR_echotask(adat->task, ZLR_STREAM_MSG, "** Fatal error: Could not read AMPL stub: %s\n", name);
        return ZLR_RES_ERR_FILE_READ;
    }
    if (res == ZLR_RES_OK && (n_var != num_var || n_con != num_con)) {
        (void)std::fclose(file);
        res = ZLR_RES_ERR_AMPL_STUB;
    }
    return res == ZLR_RES_OK ? ampl_read_stub(asl, file, adat) : res;
}

static int32_t replace_stub(ampl_data *adat, ASL **stub, const Option_Info *options, const char *name,
                            stub_suffixes *suffixes)
{
    const int32_t num_var = (*stub)->i.n_var_;
    const int32_t num_con = (*stub)->i.n_con_;
    ASL *asl = ampl_replace_stub(adat, stub, options);
    const int32_t res = ampl_declare_suffixes(asl, adat, num_var, num_con, suffixes);
    ampl_name_stub(asl, name, num_con, num_var);
    return res == ZLR_RES_OK ? read_again(asl, name, adat) : res;
}

int32_t ampl_put_nonlinear(ampl_data *adat, ASL **stub, const Option_Info *options, const char *name,
                           stub_suffixes *suffixes)
{
    int32_t res = make_evaluation_arrays(*stub, adat);
    if (res == ZLR_RES_OK && (*stub)->i.ASLtype != ASL_read_pfgh)
        res = replace_stub(adat, stub, options, name, suffixes);
    ASL *asl = *stub;
    if (res == ZLR_RES_OK) res = ZLR_putcfix(adat->task, objconst(adat->objno));
    if (res != ZLR_RES_OK) return res;
    adat->numobj = n_obj;
    adat->asl = asl;
    return ZLR_putnlfunc(adat->task, adat, ZLR_nlgetspfunc, ZLR_nlgetvafunc);
}
