// Block kernels that saturate, one step of their vectors against their definitions.
//
// cbmc: --unwind 18 -DZSP_ANY_PRODUCT

#include "common/scaling/mul_nr.cpp"

#include "proofs/proofs.hpp"

#include <array>

namespace {

using Block = std::array<std::int16_t, 16>;

Block anyBlock()
{
    Block block;
    for (auto& x : block)
        x = nondet_i16();
    return block;
}

void proveEqual(const Block& got, const Block& want)
{
    for (std::size_t i = 0; i < got.size(); ++i) {
        observe(static_cast<std::uint16_t>(got[i]));
        prove(got[i] == want[i]);
    }
}

} // namespace

namespace {

void checkProducts(int shift)
{
    const Block a = anyBlock(), b = anyBlock();
    Block got, want;
    zsp::common::mulNrScalar(a, b, want, shift);
    zsp::common::mulNrAvx2(a, b, got, shift);
    proveEqual(got, want);
}

} // namespace

// Each shift that has a vector form by itself; the others the definition computes.
#define SHIFT(n)                                                                                   \
    PROOF(mul_nr_##n)                                                                              \
    {                                                                                              \
        checkProducts(n);                                                                          \
    }
SHIFT(0)
SHIFT(1)
SHIFT(2)
SHIFT(3)
SHIFT(4)
SHIFT(5)
SHIFT(6)
SHIFT(7)
SHIFT(8)
SHIFT(9)
SHIFT(10)
SHIFT(11)
SHIFT(12)
SHIFT(13)
SHIFT(14)
SHIFT(15)
SHIFT(16)
