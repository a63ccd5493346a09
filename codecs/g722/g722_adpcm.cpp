// Sub-band ADPCM of ITU-T G.722: two bands, each an adaptive quantiser around a predictor with two
// poles and six zeros. The bands share nothing; they differ in quantiser and scale-factor range.
//
// Functions are the Recommendation's blocks (clause 6.2) under their own names, with words that
// saturate after every operation. Coefficients are Q14 and enter mult() with a doubled signal. The
// versions with both bands in one vector are in g722_adpcm_avx2.cpp.

#include "codecs/g722/g722_adpcm.hpp"

#include "codecs/g722/g722_quantiser.hpp"
#include "codecs/g722/g722_tables.hpp"
#include "core/entries.hpp"
#include "core/fixed_point.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <cassert>

namespace zsp::g722 {

namespace {

/// Both are negative or neither is.
constexpr bool sameSign(Word a, Word b) noexcept
{
    return (a ^ b) >= 0;
}

// Quantisers

/// The magnitude that the decision levels are compared with.
constexpr Word magnitude(Word e) noexcept
{
    return static_cast<Word>(e < 0 ? ~e : e);
}

int quantl(Word el, Word detl) noexcept
{
    int m = 1;
    while (m < 30 && magnitude(el) >= scaled(kDecision6[static_cast<std::size_t>(m)], detl))
        ++m;
    if (el >= 0) return 62 - m;
    return m < 3 ? 64 - m : 34 - m;
}

int quanth(Word eh, Word deth) noexcept
{
    const bool small = magnitude(eh) < scaled(kDecision2, deth);
    return (eh < 0 ? 0 : 2) + (small ? 1 : 0);
}

// Predictor

/// The second pole coefficient; `p` is the new partially reconstructed signal.
Word uppol2(const Band& v, Word p) noexcept
{
    Word w = fx::shl(v.a1, 2);
    if (sameSign(p, v.p1)) w = fx::negate(w);
    const Word step = sameSign(p, v.p2) ? 128 : -128;
    const Word a2 = fx::add(fx::add(fx::shr(w, 7), step), fx::mult(v.a2, 32512));
    return limit(a2, -12288, 12288);
}

/// The first pole coefficient, limited by the new second one.
Word uppol1(const Band& v, Word p, Word a2) noexcept
{
    const Word step = sameSign(p, v.p1) ? 192 : -192;
    const Word bound = fx::sub(15360, a2);
    return limit(fx::add(step, fx::mult(v.a1, 32640)), fx::negate(bound), bound);
}

/// The zero coefficients, from the new difference and those of before it.
void upzero(Band& v, Word d) noexcept
{
    for (std::size_t i = 0; i < 6; ++i) {
        const Word gain = d == 0 ? 0 : 128;
        const Word step = sameSign(d, v.d[i]) ? gain : fx::negate(gain);
        v.b[i] = fx::add(step, fx::mult(v.b[i], 32640));
    }
}

/// Takes in the new values. DELAYA.
void delaya(Band& v, Word d, Word p, Word r) noexcept
{
    std::copy_backward(v.d.begin(), v.d.begin() + 5, v.d.begin() + 6);
    v.d[0] = d;
    v.p2 = v.p1;
    v.p1 = p;
    v.r2 = v.r1;
    v.r1 = r;
}

Word filtez(const Band& v) noexcept
{
    Word sz = 0;
    for (std::size_t i = 6; i-- > 0;)
        sz = fx::add(sz, fx::mult(fx::add(v.d[i], v.d[i]), v.b[i]));
    return sz;
}

Word filtep(const Band& v) noexcept
{
    return fx::add(fx::mult(v.a1, fx::add(v.r1, v.r1)), fx::mult(v.a2, fx::add(v.r2, v.r2)));
}

/// PARREC, RECONS and all that follows them: one band after its quantised difference.
void predict(Band& v, Word d) noexcept
{
    const Word p = fx::add(d, v.sz);
    const Word r = fx::add(v.s, d);
    v.a2 = uppol2(v, p); // reads the old a1
    v.a1 = uppol1(v, p, v.a2);
    upzero(v, d);
    delaya(v, d, p, r);
    v.sz = filtez(v);
    v.s = fx::add(filtep(v), v.sz); // PREDIC
}

/// What follows the codes in encoder and decoder: both bands take in their differences.
void adapt(State& state, int il, int ih) noexcept
{
    const Word dl = invqal(il, state.low.det);
    const Word dh = invqah(ih, state.high.det);
    adaptScaleLow(state.low, il);
    adaptScaleHigh(state.high, ih);
    predict(state.low, dl);
    predict(state.high, dh);
}

} // namespace

void encodeScalar(In16 pairs, Out16 codes, State& state) noexcept
{
    assert(pairs.size() == codes.size() && pairs.size() % 2 == 0);
    for (std::size_t k = 0; k < pairs.size(); k += 2) {
        const int il = quantl(fx::sub(pairs[k], state.low.s), state.low.det);
        const int ih = quanth(fx::sub(pairs[k + 1], state.high.s), state.high.det);
        codes[k] = static_cast<Word>(il);
        codes[k + 1] = static_cast<Word>(ih);
        adapt(state, il, ih);
    }
}

void decodeScalar(In16 codes, Out16 pairs, int mode, State& state) noexcept
{
    assert(pairs.size() == codes.size() && pairs.size() % 2 == 0);
    const OutputQuantiser output = invqbl(mode);
    for (std::size_t k = 0; k < codes.size(); k += 2) {
        const int il = codes[k] & 63;
        const int ih = codes[k + 1] & 3;
        const Word rl = fx::add(state.low.s, output(il, state.low.det));
        const Word rh = fx::add(state.high.s, invqah(ih, state.high.det));
        pairs[k] = limit(rl, -16384, 16383);
        pairs[k + 1] = limit(rh, -16384, 16383);
        adapt(state, il, ih);
    }
}

bool updateState(State& state, std::span<const std::int16_t, 2> low, std::int16_t x,
                 bool reset) noexcept
{
    Band& v = state.low;
    v.b = {};
    v.d = {};
    v.r1 = low[1];
    v.r2 = low[0];
    v.p1 = fx::shr(low[1], 1);
    v.p2 = fx::shr(low[0], 1);
    v.s = x;
    v.sz = fx::shr(x, 1);

    // Half the logarithmic scale factor becomes the new one. The table's steps of 64 of it are
    // steps of 128 of the old one, whose nine upper bits are the index.
    const auto index = std::size_t{static_cast<std::uint16_t>(state.high.nb)} >> 7;
    const bool inRange = index < kScaleFactor.size();
    if (inRange && reset) {
        state.low.nb = 0;
        state.low.det = kInitialDetl;
        state.high.nb = 0;
        state.high.det = kInitialDeth;
    } else {
        if (inRange) state.high.det = kScaleFactor[index];
        state.high.nb = fx::shr(state.high.nb, 1);
    }
    return inRange;
}

} // namespace zsp::g722

namespace zsp::entry {

ZspStatus zspsSBADPCMEncodeStateSize_G722_16s(std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;

    *size = g722::kStateSize;
    return zspStsNoErr;
}

ZspStatus zspsSBADPCMEncodeInit_G722_16s(void* state)
{
    if (!state) return zspStsNullPtrErr;

    *alignedState<g722::State>(state) = {};
    return zspStsNoErr;
}

ZspStatus zspsSBADPCMEncode_G722_16s(const std::int16_t* src, std::int16_t* dst, std::int32_t len,
                                     void* state)
{
    if (!src || !dst || !state) return zspStsNullPtrErr;
    if (len < 1 || len % 2 != 0) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    g722::encodeAvx2({src, n}, {dst, n}, *alignedState<g722::State>(state));
    return zspStsNoErr;
}

ZspStatus zspsSBADPCMDecode_G722_16s(const std::int16_t* src, std::int16_t* dst, std::int32_t len,
                                     std::int16_t mode, void* state)
{
    if (!src || !dst || !state) return zspStsNullPtrErr;
    if (len < 1 || len % 2 != 0) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    g722::decodeAvx2({src, n}, {dst, n}, mode, *alignedState<g722::State>(state));
    return zspStsNoErr;
}

ZspStatus zspsSBADPCMDecodeStateUpdate_G722_16s(const std::int16_t* low, std::int16_t x,
                                                std::int32_t reset, void* state)
{
    if (!low || !state) return zspStsNullPtrErr;

    const bool inRange = g722::updateState(*alignedState<g722::State>(state),
                                           std::span<const std::int16_t, 2>{low, 2}, x, reset != 0);
    return inRange ? zspStsNoErr : zspStsCodecRangeErr;
}

} // namespace zsp::entry
