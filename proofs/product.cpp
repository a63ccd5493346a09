// The range of a product of two words, which proofs that leave the product itself open stand on.
//
// cbmc: --unwind 1

#include "proofs/proofs.hpp"

PROOF(product_range)
{
    const std::int16_t a = nondet_i16(), b = nondet_i16();
    const std::int64_t p = std::int64_t{a} * b;
    observe(static_cast<std::uint32_t>(p));
    prove(-1073709056 <= p && p <= 1073741824);
}
