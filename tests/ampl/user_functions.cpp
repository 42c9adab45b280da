/* user_functions.cpp - a function library as users of AMPL have them, loaded by the program. Derivatives are given, as
 * solvers ask for them. */
#include <cmath>
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

/* The root of x, with what a careful function says where it has none, or no derivative. */
static real root(arglist *al)
{
    static char no_value[] = "a negative number has no root";
    static char no_derivative[] = "'the root of 0 has no derivative";
    const real x = al->ra[0];
    if (x < 0) {
        al->Errmsg = no_value;
        return 0;
    }
    const real y = sqrt(x);
    if (al->derivs == nullptr) return y;
    if (x == 0) {
        al->Errmsg = no_derivative;
        return y;
    }
    al->derivs[0] = 0.5 / y;
    if (al->hes != nullptr) al->hes[0] = -0.25 / (x * y);
    return y;
}

extern "C" __attribute__((visibility("default"))) void funcadd_ASL(AmplExports *ae)
{
    addfunc("zelor_square_from", reinterpret_cast<rfunc>(square_from), FUNCADD_REAL_VALUED, 2, nullptr);
    addfunc("zelor_root", reinterpret_cast<rfunc>(root), FUNCADD_REAL_VALUED, 1, nullptr);
}
