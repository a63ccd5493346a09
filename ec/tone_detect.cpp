// Detector of the 2100 Hz tone with phase reversals that disables echo cancellers (the practice of
// ITU-T G.165 and G.168).
//
//   y = c0 x + c1 x2 - c2 y1 - c3 y2
//
// is a resonator at 2100 Hz. While its smoothed power stays near that of the input there is a tone;
// a reversal of the phase shows as a short dip of the ratio. Two reversals, each 413 to 466 ms
// after the one before, are the signal.
//
// Silence after a tone ends it because denormal numbers count as zero in every export: among them
// rounding would stop the powers from falling any further, and silence would look like the tone.

#include "ec/tone_detect.hpp"

#include "core/entries.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <array>
#include <limits>

namespace zsp::ec {

namespace {

struct Rate {
    std::int32_t sampleFreq;
    std::array<float, 4> coefs; // the poles' radius is 0.96145 at 8 kHz and 0.98055 at 16 kHz
    float smoothing;
    std::int32_t minCount, maxCount; // 413 and 466 ms
    std::int32_t dipLimit;           // 20 ms
};

constexpr Rate kRates[] = {
    {8000, {0.037804753F, -0.037804753F, 0.15110244F, 0.92439049F}, 0.96F, 3304, 3728, 160},
    {16000, {0.019259274F, -0.019259274F, -1.3317118F, 0.96148145F}, 0.92F, 6608, 7456, 320},
};

const Rate* findRate(std::int32_t sampleFreq) noexcept
{
    const auto* rate = std::ranges::find(kRates, sampleFreq, &Rate::sampleFreq);
    return rate == std::end(kRates) ? nullptr : rate;
}

constexpr std::int32_t kMaxCount = std::numeric_limits<std::int32_t>::max();

void countUp(std::int32_t& counter) noexcept
{
    if (counter < kMaxCount) ++counter;
}

/// Counts one sample: tone, or tone that is weakened, so much as by a reversal, or neither. Whether
/// it is the second or a later reversal.
bool count(ToneDetectState& s, bool tone, bool weak, bool dip) noexcept
{
    bool detected = false;
    if (tone) {
        countUp(s.toneCount);
        s.dipCount = 0;
    } else if (weak) {
        if (dip && s.minCount < s.toneCount && s.toneCount < s.maxCount) {
            countUp(s.reversals);
            detected = s.reversals >= 2;
            s.toneCount = 0;
        }
        if (++s.dipCount > s.dipLimit) s.toneCount = s.dipCount = s.reversals = 0;
    } else {
        s.toneCount = s.dipCount = 0;
    }
    return detected;
}

} // namespace

bool toneDetect(ToneDetectState& state, InF src) noexcept
{
    ToneDetectState s = state;
    const std::array<float, 4> c = {s.coefs[0], s.coefs[1], s.coefs[2], s.coefs[3]};
    const float a = s.smoothing, rest = 1 - a;
    bool detected = false;
    for (const float x : src) {
        const float y = c[0] * x + c[1] * s.x2 - c[2] * s.y1 - c[3] * s.y2;
        s.x2 = s.x1;
        s.x1 = x;
        s.y2 = s.y1;
        s.y1 = y;
        s.inputPower = a * s.inputPower + rest * (x * x);
        s.tonePower = a * s.tonePower + rest * (y * y);
        detected |=
            count(s, s.tonePower > 0.8F * s.inputPower && 10000 * s.inputPower > s.tonePower,
                  s.tonePower > 0.0008F * s.inputPower && s.inputPower > s.tonePower,
                  s.tonePower < 0.48F * s.inputPower);
    }
    state = s;
    return detected;
}

} // namespace zsp::ec

namespace zsp::entry {

ZspStatus zspsToneDetectGetStateSize_EC_32f(std::int32_t sampleFreq, std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;
    if (!ec::findRate(sampleFreq)) return zspStsRangeErr;

    *size = static_cast<std::int32_t>(sizeof(ec::ToneDetectState)) + kStateSlack;
    return zspStsNoErr;
}

ZspStatus zspsToneDetectInit_EC_32f(void* state, std::int32_t sampleFreq)
{
    if (!state) return zspStsNullPtrErr;
    const ec::Rate* rate = ec::findRate(sampleFreq);
    if (!rate) return zspStsRangeErr;

    *alignedState<ec::ToneDetectState>(state) = {.coefs = rate->coefs.data(),
                                                 .smoothing = rate->smoothing,
                                                 .minCount = rate->minCount,
                                                 .maxCount = rate->maxCount,
                                                 .dipLimit = rate->dipLimit};
    return zspStsNoErr;
}

ZspStatus zspsToneDetect_EC_32f(const float* src, std::int32_t len, std::int32_t* result,
                                void* state)
{
    if (!src || !result || !state) return zspStsNullPtrErr;
    if (len < 1) return zspStsBadArgErr;

    auto& s = *alignedState<ec::ToneDetectState>(state);
    *result = ec::toneDetect(s, {src, static_cast<std::size_t>(len)}) ? 1 : 0;
    return zspStsNoErr;
}

} // namespace zsp::entry
