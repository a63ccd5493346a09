// The short-term post-filter of ITU-T G.729, clauses 4.2.2 to 4.2.4: poles and zeros, tilt, and the
// gain that they have taken.

#include "codecs/g729/decoder/g729_decoder.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <cstdlib>

namespace zsp::g729 {

namespace {

constexpr std::size_t kResponse = 20; // words of the response that are looked at

struct Response {
    Word reflection_Q15;
    Word scale_Q15; // 0: as it is
};

/// First reflection coefficient of the response of zeros and poles, and what keeps its gain at 1.
Response responseOf(In<kTaps> zeros_Q12, In<kTaps> poles_Q12) noexcept
{
    std::array<Word, kResponse> h{};
    std::array<Word, kOrder> memory{};
    std::ranges::copy(zeros_Q12, h.begin());
    celp::synthesis(poles_Q12, h, h.data(), memory);

    Response result{0, 0};
    const Long own = celp::energy(h);
    const int shift = fx::norm_l(own);
    const Word r0 = fx::extract_h(fx::l_shl(own, shift));
    const Long neighbours = celp::dot(std::span(h).first<kResponse - 1>(), &h[1]);
    const Word r1 = fx::extract_h(fx::l_shl(neighbours, shift));
    if (r0 >= fx::abs_s(r1) && r0 > 0) {
        const Word ratio = fx::div_s(fx::abs_s(r1), r0);
        result.reflection_Q15 = r1 > 0 ? fx::negate(ratio) : ratio;
    }
    Long sum = 0;
    for (const Word x : h)
        sum = fx::l_add(sum, fx::abs_s(x));
    const Word gain_Q10 = fx::extract_h(fx::l_shl(sum, 14));
    if (gain_Q10 > 1024) result.scale_Q15 = fx::div_s(1024, gain_Q10);
    return result;
}

} // namespace

Word shortTermPostFilter(In<kTaps> zeros_Q12, In<kTaps> poles_Q12, In<kSubframe> src,
                         Out<kSubframe + 1> dst, Out<kOrder> memory) noexcept
{
    const Response response = responseOf(zeros_Q12, poles_Q12);
    std::array<Word, kSubframe> scaled;
    if (response.scale_Q15 != 0)
        std::ranges::transform(src, scaled.begin(),
                               [&response](Word x) { return fx::mult_r(x, response.scale_Q15); });
    else
        std::ranges::copy(src, scaled.begin());
    dst[0] = memory[kOrder - 1];
    celp::synthesis(poles_Q12, scaled, &dst[1], memory);
    return response.reflection_Q15;
}

namespace {

/// Half of the tilt factor, and what makes up for its gain, with the shift of the result.
struct Tilt {
    Word half_Q15, gain, half;
    int shift;
};

Tilt tiltOf(Word reflection_Q15) noexcept
{
    const bool falls = reflection_Q15 > 0;
    const Word factor = fx::mult_r(reflection_Q15, falls ? Word{6554} : Word{29491});
    const Word half = falls ? Word{16384} : Word{2048};
    const Word rest = fx::add(32767, fx::sub(1, fx::abs_s(factor)));
    return {static_cast<Word>(factor >> 1), fx::div_s(half, rest), half, falls ? 15 : 12};
}

} // namespace

void tiltCompensationScalar(Word reflection_Q15, In<kSubframe + 1> src, Out<kSubframe> dst) noexcept
{
    const Tilt t = tiltOf(reflection_Q15);
    for (std::size_t n = 0; n < kSubframe; ++n) {
        const Long sum =
            fx::l_add(fx::l_mac(fx::l_shl(src[n + 1], 15), t.half_Q15, src[n]), 0x4000);
        const Long product = fx::l_add(fx::l_mult(fx::extract_l(sum >> 15), t.gain), t.half);
        dst[n] = fx::sat16(product >> t.shift);
    }
}

/// The sum is within 2^31 and the quotient's product too, so that plain 32 bits hold both; t wraps
/// to a word as in the definition. A compiler makes vectors of it.
void tiltCompensationFast(Word reflection_Q15, In<kSubframe + 1> src, Out<kSubframe> dst) noexcept
{
    const Tilt t = tiltOf(reflection_Q15);
    const std::int32_t factor = 2 * t.half_Q15, gain = 2 * t.gain;
    for (std::size_t n = 0; n < kSubframe; ++n) {
        const auto word = static_cast<Word>((src[n + 1] * 32768 + factor * src[n] + 0x4000) >> 15);
        dst[n] = static_cast<Word>(std::clamp((word * gain + t.half) >> t.shift, -32768, 32767));
    }
}

namespace {

/// Follows a gain on its way to a target.
Word targetOf(Long before, Long after) noexcept
{
    if (before == 0) return 0;
    const int shiftBefore = fx::norm_l(before), shiftAfter = fx::norm_l(after);
    const Word in = fx::extract_h(fx::l_shl(before, shiftBefore));
    const Word out = fx::extract_h(fx::l_shl(after, shiftAfter));
    int shift = shiftBefore + 1 - shiftAfter;
    Word ratio = 0;
    if (in < out) {
        ratio = fx::div_s(in, out);
    } else {
        ratio = fx::add(static_cast<Word>(fx::div_s(fx::sub(in, out), out) >> 1), 16384);
        --shift;
    }
    return fx::mult_r(fx::shr(ratio, shift), 410);
}

Long magnitudes(In<kSubframe> x) noexcept
{
    Long sum = 0;
    for (const Word v : x)
        sum += std::min(std::abs(std::int32_t{v}), 32767);
    return sum;
}

} // namespace

void gainControlScalar(In<kSubframe> before, Out<kSubframe> samples, Word& gain_Q14) noexcept
{
    const Long in = magnitudes(before), out = magnitudes(samples);
    if (in != 0 && out == 0) {
        gain_Q14 = 0;
        return;
    }
    const Word target = targetOf(in, out);
    for (Word& x : samples) {
        gain_Q14 = fx::add(fx::mult_r(32358, gain_Q14), target);
        x = fx::round_fx(fx::l_shl(fx::l_mult(gain_Q14, x), 1));
    }
}

/// The gain never saturates: 32358/32768 of 32767, rounded, and a target of 410 at most are 32767.
void gainControlFast(In<kSubframe> before, Out<kSubframe> samples, Word& gain_Q14) noexcept
{
    const Long in = magnitudes(before), out = magnitudes(samples);
    if (in != 0 && out == 0) {
        gain_Q14 = 0;
        return;
    }
    const std::int32_t target = targetOf(in, out) * 32768 + 0x4000;
    std::array<std::int32_t, kSubframe> gains;
    std::int32_t g = gain_Q14;
    for (std::int32_t& each : gains)
        each = g = (32358 * g + target) >> 15;
    gain_Q14 = static_cast<Word>(g);
    for (std::size_t n = 0; n < kSubframe; ++n)
        samples[n] =
            static_cast<Word>(std::clamp((gains[n] * samples[n] + 0x2000) >> 14, -32768, 32767));
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsShortTermPostFilter_G729_16s(const std::int16_t* zeros, const std::int16_t* poles,
                                           const std::int16_t* src, std::int16_t* dst,
                                           std::int16_t* memory, std::int16_t* reflection)
{
    if (!zeros || !poles || !src || !dst || !memory || !reflection) return zspStsNullPtrErr;

    *reflection = g729::shortTermPostFilter(spanOf<11>(zeros), spanOf<11>(poles), spanOf<40>(src),
                                            spanOf<41>(dst), spanOf<10>(memory));
    return zspStsNoErr;
}

ZspStatus zspsTiltCompensation_G729_16s(std::int16_t reflection, const std::int16_t* src,
                                        std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;

    g729::tiltCompensationFast(reflection, spanOf<41>(src), spanOf<40>(dst));
    return zspStsNoErr;
}

ZspStatus zspsGainControl_G729_16s_I(const std::int16_t* src, std::int16_t* srcDst,
                                     std::int16_t* gain)
{
    if (!src || !srcDst || !gain) return zspStsNullPtrErr;

    g729::gainControlFast(spanOf<40>(src), spanOf<40>(srcDst), *gain);
    return zspStsNoErr;
}

} // namespace zsp::entry
