// The coder of G.726: from every state that satisfies the invariants, a step of the definition
// overflows nowhere, shifts and indexes within bounds, and keeps the invariants.
//
// cbmc: --unwind 34

#include "codecs/g726/g726_adpcm.cpp"

#include "proofs/proofs.hpp"

namespace {

using namespace zsp::g726;
using zsp::proofs::wordBetween;

bool within(int x, int low, int high)
{
    return low <= x && x <= high;
}

/// What the Recommendation's limits keep.
bool holds(const CoderState& s)
{
    bool good = within(s.rateIndex, 0, 3) && within(s.yu, 544, 5120) &&
                within(s.yl, 544 * 64, 5120 * 64) && within(s.ap, 0, 512) &&
                within(s.dms, 0, 3584) && within(s.dml, 0, 14336) && within(s.td, 0, 1) &&
                within(s.pk0, 0, 1) && within(s.pk1, 0, 1) && within(s.pk2, 0, 1);
    for (std::size_t i = 0; i < kTaps; ++i) // exponent 0..15, mantissa 32..63
        good = good && within(s.delayed[i] >> 6, 0, 15) && within(s.delayed[i] & 63, 32, 63) &&
               within(s.sign[i], 0, 1);
    const int a1 = s.coefficient[kZeros], a2 = s.coefficient[kZeros + 1];
    return good && within(a2, -12288, 12288) && within(a1, -15360 + a2, 15360 - a2);
}

CoderState anyState(int rateIndex)
{
    CoderState s;
    s.rateIndex = static_cast<std::int16_t>(rateIndex);
    s.yu = wordBetween(544, 5120);
    s.yl = between(544 * 64, 5120 * 64);
    s.ap = wordBetween(0, 512);
    s.dms = wordBetween(0, 3584);
    s.dml = wordBetween(0, 14336);
    s.sez = nondet_i16();
    for (std::int16_t* bit : {&s.pk0, &s.pk1, &s.pk2, &s.td})
        *bit = wordBetween(0, 1);
    for (std::size_t i = 0; i < kTaps; ++i) {
        s.coefficient[i] = nondet_i16();
        const int exponent = between(0, 15);
        s.delayed[i] = static_cast<std::int16_t>(exponent * 64 + between(32, 63));
        s.sign[i] = wordBetween(0, 1);
    }
    std::int16_t& a2 = s.coefficient[kZeros + 1];
    a2 = wordBetween(-12288, 12288);
    s.coefficient[kZeros] = wordBetween(-15360 + a2, 15360 - a2);
    assume(holds(s));
    return s;
}

void proveKept(const CoderState& s)
{
    observe(static_cast<std::uint16_t>(s.yu));
    observe(static_cast<std::uint32_t>(s.yl));
    prove(holds(s));
}

void encodeStep(int rateIndex)
{
    CoderState s = anyState(rateIndex);
    const std::int16_t sample[] = {nondet_i16()};
    std::uint8_t code[1];
    encodeScalar(s, sample, code);
    prove(code[0] < 1 << kRates[static_cast<std::size_t>(rateIndex)].bits);
    proveKept(s);
}

void decodeStep(int rateIndex, Law law)
{
    CoderState s = anyState(rateIndex);
    const std::uint8_t code[] = {nondet_u8()};
    std::int16_t out[1];
    decodeScalar(s, law, code, out);
    if (law == Law::uniform)
        prove(within(out[0], -8192, 8191));
    else
        prove(within(out[0], 0, 255));
    proveKept(s);
}

} // namespace

PROOF(g726_fresh_state)
{
    for (const auto rate : {zspG726Rate16, zspG726Rate24, zspG726Rate32, zspG726Rate40})
        proveKept(freshState(rate));
}

#define RATE(kbits, index)                                                                         \
    PROOF(g726_encode_##kbits)                                                                     \
    {                                                                                              \
        encodeStep(index);                                                                         \
    }                                                                                              \
    PROOF(g726_decode_##kbits)                                                                     \
    {                                                                                              \
        decodeStep(index, Law::uniform);                                                           \
    }                                                                                              \
    PROOF(g726_decode_mulaw_##kbits)                                                               \
    {                                                                                              \
        decodeStep(index, Law::mulaw);                                                             \
    }                                                                                              \
    PROOF(g726_decode_alaw_##kbits)                                                                \
    {                                                                                              \
        decodeStep(index, Law::alaw);                                                              \
    }
RATE(16, 0)
RATE(24, 1)
RATE(32, 2)
RATE(40, 3)
