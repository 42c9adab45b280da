/* ampl_read.cpp - reads a stub with the AMPL Solver Library and nothing more: the floor that bench/ampl measures the
 * transfer of a stub by. Matrix values go straight into an array where the model is linear, as the front end has it. */
#include <vector>

// Last: it defines macros of everyday names.
#include "ampl/asl_include.h"

int main(int argc, char **argv)
{
    if (argc != 2) return 2;
    ASL *asl = ASL_alloc(ASL_read_fg);
    return_nofile = 1;
    FILE *file = jac0dim(argv[1], static_cast<ftnlen>(std::strlen(argv[1])));
    if (file == nullptr) return 1;
    std::vector<double> value(static_cast<size_t>(nzc) + 1);
    if (nlc == 0) A_vals = value.data();
    want_xpi0 = 7;
    const int code = qp_read(file, 0);
    Printf("%d columns, %d rows, %d nonzeros\n", n_var, n_con, nzc);
    ASL_free(&asl);
    return code;
}
