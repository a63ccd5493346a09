// ITU-T G.726 adaptive differential PCM at 16, 24, 32 and 40 kbit/s, encoder and decoder.
//
// Each block of the Recommendation is a function of its name, with its signal names. Nothing
// saturates except where the Recommendation limits: every signal is a register of a width of its
// own, and the few that can overflow wrap at 16 bits. A sign is 0 or 1, 1 for negative.

#include "codecs/g726/g726_adpcm.hpp"

#include "codecs/g726/g726_law.hpp"
#include "codecs/g726/g726_scale.hpp"
#include "codecs/g726/g726_tables.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace zsp::g726 {

namespace {

int wrap16(int v) noexcept
{
    return static_cast<std::int16_t>(v);
}

/// Number of bits of a magnitude, 0 for 0.
int bits(int magnitude) noexcept
{
    return 32 - std::countl_zero(static_cast<unsigned>(magnitude));
}

/// FLOATA, FLOATB: a magnitude as exponent * 64 + 6-bit mantissa.
std::int16_t floating(int magnitude) noexcept
{
    const int exponent = bits(magnitude);
    const int mantissa = magnitude == 0 ? 32 : (magnitude << 6) >> exponent;
    return static_cast<std::int16_t>(exponent * 64 + mantissa);
}

/// Coefficient (14 fraction bits) times delayed value. Of a coefficient 12 bits and a sign count.
int fmult(int an, int delayed, int sign) noexcept
{
    const int magnitude = an < 0 ? -(an >> 2) & 8191 : an >> 2;
    const int an_floating = floating(magnitude);
    const int exponent = (delayed >> 6) + (an_floating >> 6);
    const int mantissa = ((delayed & 63) * (an_floating & 63) + 48) >> 4;
    const int product = exponent <= 26 ? (mantissa << 7) >> (26 - exponent)
                                       : ((mantissa << 7) << (exponent - 26)) & 32767;
    return (an < 0) != (sign != 0) ? -product : product;
}

struct Estimate {
    int sez; // of the zero predictor
    int se;  // of both
};

/// ACCUM.
Estimate accum(const CoderState& s) noexcept
{
    int sum = 0;
    for (std::size_t i = 0; i < kZeros; ++i)
        sum += fmult(s.coefficient[i], s.delayed[i], s.sign[i]);
    const int sez = wrap16(sum) >> 1;
    for (std::size_t i = kZeros; i < kTaps; ++i)
        sum += fmult(s.coefficient[i], s.delayed[i], s.sign[i]);
    return {sez, wrap16(sum) >> 1};
}

/// LOG, SUBTB and QUAN: the code word of a difference.
int quan(const RateTables& rate, int d, int y) noexcept
{
    const int magnitude = std::abs(d) & 32767;
    const int exponent = bits(magnitude >> 1);
    const int dl = exponent * 128 + (((magnitude << 7) >> exponent) & 127);
    const int dln = dl - (y >> 2);
    const auto level = std::find_if(rate.decision.begin(), rate.decision.end(),
                                    [dln](int decision) { return decision <= dln; });
    const auto index = static_cast<std::size_t>(level - rate.decision.begin());
    return d < 0 ? rate.negativeCode[index] : rate.positiveCode[index];
}

/// RECONST, ADDA and ANTILOG: the magnitude of the quantised difference.
int reconst(const RateTables& rate, int code, int y) noexcept
{
    const int dql = rate.level[static_cast<std::size_t>(code)] + (y >> 2);
    return dql < 0 ? 0 : ((128 + (dql & 127)) << 7) >> (14 - (dql >> 7));
}

/// UPA2 and LIMC, UPA1 and LIMD, from p and the signs of the last three.
void adaptPoles(CoderState& s, int p) noexcept
{
    std::int16_t& a1 = s.coefficient[kZeros];
    std::int16_t& a2 = s.coefficient[kZeros + 1];
    const int pks1 = s.pk0 ^ s.pk1;
    const int pks2 = s.pk0 ^ s.pk2;

    const int fa1 = 4 * std::clamp<int>(a1, -8191, 8191);
    const int uga2 = p == 0 ? 0 : ((pks2 ? -16384 : 16384) + (pks1 ? fa1 : -fa1)) >> 7;
    a2 = static_cast<std::int16_t>(std::clamp(a2 + uga2 - (a2 >> 7), -12288, 12288));

    const int uga1 = p == 0 ? 0 : pks1 ? -192 : 192;
    const int limit = 15360 - a2;
    a1 = static_cast<std::int16_t>(std::clamp(a1 + uga1 - (a1 >> 8), -limit, limit));
}

/// XOR and UPB.
void adaptZeros(CoderState& s, int leakShift, int dqMagnitude, int dqSign) noexcept
{
    for (std::size_t i = 0; i < kZeros; ++i) {
        const int b = s.coefficient[i];
        const int ugb = dqMagnitude == 0 ? 0 : dqSign == s.sign[i] ? 128 : -128;
        s.coefficient[i] = static_cast<std::int16_t>(b + ugb - (b >> leakShift));
    }
}

/// DELAY of one of the two lines: `count` values from `first`, the newest one.
void shiftLine(CoderState& s, std::size_t first, std::size_t count, int magnitude,
               int sign) noexcept
{
    for (std::size_t i = first + count - 1; i > first; --i) {
        s.delayed[i] = s.delayed[i - 1];
        s.sign[i] = s.sign[i - 1];
    }
    s.delayed[first] = floating(magnitude);
    s.sign[first] = static_cast<std::int16_t>(sign);
}

/// The steps that encoder and decoder share once the code word is known. Returns sr.
int update(CoderState& s, const RateTables& rate, int code, Estimate estimate, int y) noexcept
{
    const int magnitude = reconst(rate, code, y);
    const int sign = code >> (rate.bits - 1);
    const int dq = sign ? -magnitude : magnitude;
    const int sr = wrap16(estimate.se + dq);
    const int p = wrap16(estimate.sez + dq);
    const bool transition = s.td != 0 && trans(s, magnitude);

    s.sez = static_cast<std::int16_t>(estimate.sez);
    s.pk0 = p < 0;
    adaptScale(s, 32 * rate.w[static_cast<std::size_t>(code)], y);
    adaptPoles(s, p);
    adaptZeros(s, rate.leakShift, magnitude, sign);
    s.td = s.coefficient[kZeros + 1] < -11776; // TONE
    adaptSpeed(s, rate.f[static_cast<std::size_t>(code)] << 9, y);
    if (transition) { // TRIGB
        s.coefficient.fill(0);
        s.td = 0;
        s.ap = 256;
    }
    shiftLine(s, 0, kZeros, magnitude, sign);
    shiftLine(s, kZeros, kTaps - kZeros, std::abs(sr) & 32767, sr < 0);
    s.pk2 = s.pk1;
    s.pk1 = s.pk0;
    return sr;
}

/// COMPRESS, EXPAND and SYNC: the G.711 code word of sr, moved by one step when coding it again
/// would not give the received code word.
int tandem(const RateTables& rate, Law law, int code, int sr, int se, int y) noexcept
{
    const int sp = compress(law, sr);
    const int dx = wrap16(expand(law, sp) - se);
    // When code words are ordered by value, the sign bit counts inverted.
    const int half = 1 << (rate.bits - 1);
    const int im = code ^ half;
    const int id = quan(rate, dx, y) ^ half;
    return id < im ? nextLarger(law, sp) : id > im ? nextSmaller(law, sp) : sp;
}

} // namespace

void encodeScalar(CoderState& state, In16 sl, Out8 code) noexcept
{
    const RateTables& rate = kRates[static_cast<std::size_t>(state.rateIndex)];
    for (std::size_t n = 0; n < sl.size(); ++n) {
        const Estimate estimate = accum(state);
        const int y = mix(state);
        const int i = quan(rate, wrap16(sl[n] - estimate.se), y);
        code[n] = static_cast<std::uint8_t>(i);
        update(state, rate, i, estimate, y);
    }
}

void decodeScalar(CoderState& state, Law law, In8 code, Out16 out) noexcept
{
    const RateTables& rate = kRates[static_cast<std::size_t>(state.rateIndex)];
    for (std::size_t n = 0; n < code.size(); ++n) {
        const Estimate estimate = accum(state);
        const int y = mix(state);
        const int received = code[n] & ((1 << rate.bits) - 1); // any byte stays in the tables
        const int sr = update(state, rate, received, estimate, y);
        out[n] = static_cast<std::int16_t>(law == Law::uniform
                                               ? std::clamp(sr, -8192, 8191)
                                               : tandem(rate, law, received, sr, estimate.se, y));
    }
}

namespace {

/// The index of a bit-rate code; negative when it is none of ours.
int rateIndex(std::int32_t rate) noexcept
{
    constexpr std::array<std::int32_t, 4> kCodes = {zspG726Rate16, zspG726Rate24, zspG726Rate32,
                                                    zspG726Rate40};
    const auto* const found = std::find(kCodes.begin(), kCodes.end(), rate);
    return found == kCodes.end() ? -1 : static_cast<int>(found - kCodes.begin());
}

CoderState freshState(std::int32_t rate) noexcept
{
    CoderState state;
    state.rateIndex = static_cast<std::int16_t>(rateIndex(rate));
    return state;
}

} // namespace

} // namespace zsp::g726

namespace zsp::entry {

ZspStatus zspsEncodeGetStateSize_G726_16s8u(std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;

    *size = sizeof(g726::EncoderState);
    return zspStsNoErr;
}

ZspStatus zspsDecodeGetStateSize_G726_8u16s(std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;

    *size = sizeof(g726::DecoderState);
    return zspStsNoErr;
}

ZspStatus zspsEncodeInit_G726_16s8u(void* state, std::int32_t rate)
{
    if (!state) return zspStsNullPtrErr;
    if (g726::rateIndex(rate) < 0) return zspStsRangeErr;

    placeRecord(state, g726::EncoderState{g726::freshState(rate)});
    return zspStsNoErr;
}

ZspStatus zspsDecodeInit_G726_8u16s(void* state, std::int32_t rate, std::int32_t law)
{
    if (!state) return zspStsNullPtrErr;
    if (g726::rateIndex(rate) < 0) return zspStsRangeErr;
    if (law < zspG726LawMu || law > zspG726LawLinear) return zspStsRangeErr;

    placeRecord(state, g726::DecoderState{.coder = g726::freshState(rate),
                                          .law = static_cast<g726::Law>(law)});
    return zspStsNoErr;
}

ZspStatus zspsEncode_G726_16s8u(void* state, const std::int16_t* src, std::uint8_t* dst,
                                std::int32_t len)
{
    if (!state || !src || !dst) return zspStsNullPtrErr;
    if (len == 0) return zspStsSizeErr;
    if (len < 0) return zspStsNoErr;

    const auto n = static_cast<std::size_t>(len);
    InPlace<g726::EncoderState> record(state);
    g726::encodeAvx2(record->coder, {src, n}, {dst, n});
    return zspStsNoErr;
}

ZspStatus zspsDecode_G726_8u16s(void* state, const std::uint8_t* src, std::int16_t* dst,
                                std::int32_t len)
{
    if (!state || !src || !dst) return zspStsNullPtrErr;
    if (len == 0) return zspStsSizeErr;
    if (len < 0) return zspStsNoErr;

    const auto n = static_cast<std::size_t>(len);
    InPlace<g726::DecoderState> record(state);
    g726::decodeAvx2(record->coder, record->law, {src, n}, {dst, n});
    return zspStsNoErr;
}

} // namespace zsp::entry
