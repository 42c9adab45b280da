/* user_functions.cpp - a function library as users of AMPL have them, loaded by the program. Derivatives are given, as
 * solvers ask for them. */
#include <cstdlib>
#include <funcadd.h>

/* (x - a)^2 */
static real square_from(arglist *al)
{
    const real distance = al->ra[0] - al->ra[1];
    if (al->derivs != nullptr) {
        al->derivs[0] = 2 * distance;
        al->derivs[1] = -2 * distance;
    }
    if (al->hes != nullptr) {
        al->hes[0] = 2;
        al->hes[1] = -2;
        al->hes[2] = 2;
    }
    return distance * distance;
}

extern "C" __attribute__((visibility("default"))) void funcadd_ASL(AmplExports *ae)
{
    addfunc("zelor_square_from", reinterpret_cast<rfunc>(square_from), FUNCADD_REAL_VALUED, 2, nullptr);
}
