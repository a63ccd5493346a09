// Concealment of lost frames by ITU-T G.728 Annex I: the excitation before the loss goes on, with
// its pitch or shuffled, and fades.

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_tables.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

namespace zsp::g728 {

namespace {

Wide magnitude(std::span<const Word> x) noexcept
{
    Wide sum = 0;
    for (const Word v : x)
        sum += std::abs(Long{v});
    return sum;
}

/// The sum's upper word in Q `q` after normalisation.
Scalar upper(Wide sum, int q) noexcept
{
    const int n = nrm(sum, 32);
    return {rh(shifted(sum, -n)), n - 16 + q};
}

/// 15 random bits.
Long draw(Random& r) noexcept
{
    r.first = r.first == 16 ? 0 : r.first + 1;
    r.second = r.second == 16 ? 0 : r.second + 1;
    const auto i = static_cast<std::size_t>(r.first), j = static_cast<std::size_t>(r.second);
    const auto sum =
        static_cast<std::uint32_t>(r.words[i]) + static_cast<std::uint32_t>(r.words[j]);
    r.words[i] = static_cast<Long>(sum);
    return static_cast<Long>(sum >> 15 & 32767);
}

/// 10 * log10 of the energy of a sample, less 32 dB, Q9.
Word logGainOf(const Vector& v) noexcept
{
    Wide sum = 0;
    for (const Word x : v.m)
        sum += Wide{x} * x;
    int n = nrm(sum, 32);
    int q = n + 2 * v.q - 16;
    const Wide fifth = (shifted(sum, -n) >> 16) * 13107; // Q16
    n = nrm(fifth, 32);
    q += n;
    Wide m = shifted(fifth, -n) >> 16;
    if (q > 14) { // below 1
        m = 16384;
        q = 14;
    }
    const Wide x = 2 * (m - 24576);
    const auto& c = kLogCoefficients;
    Wide t = 0;
    for (std::size_t i = c.size() - 1; i > 0; --i)
        t = ((t + c[i]) * x) >> 16;
    const Wide octaves = (15 - q) * 1024 + ((t + c[0]) >> 3);
    return sat16((octaves * 24660 - 16384 * 16384) >> 14);
}

} // namespace

Random freshRandom() noexcept
{
    return {.words = kErasureRandom, .first = 0, .second = 12};
}

void setUpErasure(int phase, Word tap_Q14, int pitch, In<kPastExcitation> past,
                  Erasure& erasure) noexcept
{
    if (phase == 0) {
        erasure.delay = tap_Q14 > 7022 ? pitch - static_cast<int>(kVector) : -1;
        erasure.mean = upper(magnitude(past.first(40)), 3 + 2); // an eighth of it
    }
    const auto n = static_cast<std::size_t>(phase);
    erasure.scale = {0, 15};
    if (erasure.delay >= 0 && n < kErasureVoiced.size()) erasure.scale.m = kErasureVoiced[n];
    if (erasure.delay < 0 && n < kErasureUnvoiced.size())
        erasure.scale = upper(Wide{erasure.mean.m} * kErasureUnvoiced[n], erasure.mean.q + 15);
}

Vector erasedExcitation(const Erasure& erasure, In<kPastExcitation> past, Random& random,
                        Word& logGain_Q9) noexcept
{
    Scalar scale = erasure.scale;
    int delay = erasure.delay;
    if (delay < 0) {
        delay = 0;
        if (scale.m == 0) {
            scale = {0, 14};
        } else {
            delay = draw(random) / 243;
            const Scalar here =
                upper(magnitude(past.subspan(static_cast<std::size_t>(delay), kVector)), 2);
            scale = here.m == 0 ? Scalar{16384, 14} : divide(scale, here);
        }
    }
    Vector v;
    for (std::size_t i = 0; i < kVector; ++i)
        v.m[i] = sat16(shifted(Wide{scale.m} * past[static_cast<std::size_t>(delay) + i], scale.q));
    v.q = 2 + normalise(v.m, 15);
    logGain_Q9 = logGainOf(v);
    return v;
}

} // namespace zsp::g728

namespace zsp::entry {

using namespace g728;

namespace {

bool hasDelay(Long delay) noexcept
{
    return -1 <= delay && delay <= kMostPitch - static_cast<Long>(kVector);
}

} // namespace

ZspStatus zspsErasureSetup_G728_16s(std::int32_t phase, std::int16_t tap, std::int32_t pitch,
                                    const std::int16_t* past, std::int16_t* delay,
                                    std::int16_t* mean, std::int16_t* scale)
{
    if (!past || !delay || !mean || !scale) return zspStsNullPtrErr;
    if (phase != 0 && !hasQ(mean[1])) return zspStsScaleRangeErr;
    if (pitch < kLeastPitch || pitch > kMostPitch) return zspStsCodecRangeErr;
    if (phase != 0 && !hasDelay(*delay)) return zspStsCodecRangeErr;
    if (phase < 0) return zspStsRangeErr;

    Erasure erasure{*delay, scalarAt(mean), {}};
    setUpErasure(phase, tap, pitch, In<kPastExcitation>(past, kPastExcitation), erasure);
    *delay = static_cast<Word>(erasure.delay);
    storeScalar(erasure.mean, mean);
    storeScalar(erasure.scale, scale);
    return zspStsNoErr;
}

ZspStatus zspsErasedExcitationGetStateSize_G728_16s(std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;

    *size = sizeof(Random);
    return zspStsNoErr;
}

ZspStatus zspsErasedExcitationInit_G728_16s(void* state)
{
    if (!state) return zspStsNullPtrErr;

    placeRecord(state, freshRandom());
    return zspStsNoErr;
}

ZspStatus zspsErasedExcitation_G728_16s(std::int32_t delay, const std::int16_t* scale,
                                        const std::int16_t* past, void* state, std::int16_t* dst,
                                        std::int16_t* logGain)
{
    if (!scale || !past || !state || !dst || !logGain) return zspStsNullPtrErr;
    if (!hasQ(scale[1])) return zspStsScaleRangeErr;
    if (!hasDelay(delay)) return zspStsCodecRangeErr;

    InPlace<Random> random(state);
    storeVector(erasedExcitation({delay, {}, scalarAt(scale)},
                                 In<kPastExcitation>(past, kPastExcitation), *random, *logGain),
                dst);
    return zspStsNoErr;
}

} // namespace zsp::entry
