// The sub-band coder of G.722: from every state that satisfies the invariants, a step of the
// definition overflows nowhere, shifts and indexes within bounds, and keeps the invariants.
//
// cbmc: --unwind 32

#include "codecs/g722/g722_adpcm.cpp"

#include "proofs/proofs.hpp"

namespace {

using namespace zsp::g722;

using zsp::proofs::wordBetween;

/// What the Recommendation's limits keep: the scale factors, and the predictor's second pole. All
/// other words may hold anything.
bool holds(const Band& band, std::int16_t mostNb)
{
    return band.nb >= 0 && band.nb <= mostNb && band.det >= 8 && band.det <= 16384 &&
           band.a2 >= -12288 && band.a2 <= 12288;
}

Band anyBand(std::int16_t mostNb)
{
    Band band;
    for (std::int16_t* word : {&band.a1, &band.r1, &band.r2, &band.p1, &band.p2, &band.sz, &band.s})
        *word = nondet_i16();
    band.nb = wordBetween(0, mostNb);
    band.det = wordBetween(8, 16384);
    band.a2 = wordBetween(-12288, 12288);
    for (std::size_t i = 0; i < 6; ++i) {
        band.b[i] = nondet_i16();
        band.d[i] = nondet_i16();
    }
    assume(holds(band, mostNb));
    return band;
}

constexpr std::int16_t kMostLow = 18432, kMostHigh = 22528;

State anyState()
{
    return {.low = anyBand(kMostLow), .high = anyBand(kMostHigh)};
}

void proveKept(const State& state)
{
    observe(static_cast<std::uint16_t>(state.low.s));
    observe(static_cast<std::uint16_t>(state.high.s));
    prove(holds(state.low, kMostLow));
    prove(holds(state.high, kMostHigh));
}

} // namespace

PROOF(g722_fresh_state)
{
    proveKept(State{});
}

PROOF(g722_encode)
{
    State state = anyState();
    const std::int16_t pair[] = {nondet_i16(), nondet_i16()};
    std::int16_t codes[2];
    encodeScalar(pair, codes, state);
    prove(0 <= codes[0] && codes[0] <= 63 && 0 <= codes[1] && codes[1] <= 3);
    proveKept(state);
}

PROOF(g722_decode)
{
    State state = anyState();
    const std::int16_t codes[] = {nondet_i16(), nondet_i16()};
    std::int16_t pair[2];
    decodeScalar(codes, pair, nondet_i32(), state);
    for (const int x : pair)
        prove(-16384 <= x && x <= 16383);
    proveKept(state);
}

PROOF(g722_update)
{
    State state = anyState();
    const std::int16_t low[] = {nondet_i16(), nondet_i16()};
    const std::int16_t x = nondet_i16();
    const bool reset = nondet_u8() & 1;
    prove(updateState(state, low, x, reset));
    proveKept(state);
}
