// Found before Wine's header: adds the C library functions that libc++ refers to and that Wine's header lacks. They are
// only declared; no host calls them.
#pragma once
#include_next <math.h>
#ifdef __cplusplus
extern "C" {
#endif
// clang-format off
#define ONE(name) long double name##l(long double);
#define TWO(name) long double name##l(long double, long double);
ONE(acos) ONE(asin) ONE(atan) TWO(atan2) ONE(ceil) ONE(cos) ONE(cosh) ONE(exp) ONE(fabs) ONE(floor) TWO(fmod) ONE(log)
ONE(log10) TWO(pow) ONE(sin) ONE(sinh) ONE(sqrt) ONE(tan) ONE(tanh) ONE(acosh) ONE(asinh) ONE(atanh) ONE(cbrt)
TWO(copysign) ONE(erf) ONE(erfc) ONE(exp2) ONE(expm1) TWO(fdim) TWO(fmax) TWO(fmin) TWO(hypot) ONE(lgamma) ONE(log1p)
ONE(log2) ONE(logb) ONE(nearbyint) TWO(nextafter) TWO(remainder) ONE(rint) ONE(round) ONE(tgamma) ONE(trunc)
#undef ONE
#undef TWO
    // clang-format on
    long double frexpl(long double, int*);
long double ldexpl(long double, int);
long double modfl(long double, long double*);
long double fmal(long double, long double, long double);
int ilogbl(long double);
long long llrintl(long double);
long long llroundl(long double);
long lrintl(long double);
long lroundl(long double);
long double nanl(const char*);
float erfcf(float);
double nexttoward(double, long double);
float nexttowardf(float, long double);
long double nexttowardl(long double, long double);
long double remquol(long double, long double, int*);
long double scalblnl(long double, long);
long double scalbnl(long double, int);
#ifdef __cplusplus
}
#endif
