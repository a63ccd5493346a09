// The shifting operations by more places than a long has, at once for all such counts.
//
// cbmc: --unwind 3

#include "core/fixed_point.hpp"

#include "proofs/proofs.hpp"

using namespace zsp::fx;

PROOF(word_shifts_beyond)
{
    const Word a = nondet_i16(), allSign = a < 0 ? -1 : 0;
    const int n = nondet_i32();
    assume(n < -40 || n > 40);
    const Word full = a == 0 ? 0 : a < 0 ? kMin16 : kMax16;
    prove(shl(a, n) == (n > 0 ? full : allSign));
    prove(shr(a, n) == (n > 0 ? allSign : full));
    prove(shr_r(a, n) == (n > 0 ? 0 : full));
}

PROOF(long_shifts_beyond)
{
    const Long a = nondet_i32(), allSign = a < 0 ? -1 : 0;
    const int n = nondet_i32();
    assume(n < -40 || n > 40);
    const Long full = a == 0 ? 0 : a < 0 ? kMin32 : kMax32;
    prove(l_shl(a, n) == (n > 0 ? full : allSign));
    prove(l_shr(a, n) == (n > 0 ? allSign : full));
    prove(l_shr_r(a, n) == (n > 0 ? 0 : full));
}
