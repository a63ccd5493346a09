// The excitation of comfort noise in ITU-T G.729 Annex B, clause B.4.4: a drawn adaptive vector, a
// Gaussian vector and four drawn pulses whose gain brings a sub-frame to its energy.

#include "codecs/g729/annexb/g729_annexb.hpp"
#include "codecs/g729/decoder/g729_decoder.hpp"
#include "codecs/shared/words.hpp"
#include "common/math/inv_sqrt.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

namespace {

/// Takes `count` bits off the lower end of a drawn word.
int takeBits(int& word, int count) noexcept
{
    const int bits = word & ((1 << count) - 1);
    word >>= count;
    return bits;
}

struct Drawn {
    Pulses pulses;
    Word lag, fraction, pitchGain;
};

Drawn draw(Word& seed) noexcept
{
    Drawn d{};
    int r = celp::random(seed);
    const auto pulse = [&r](int pos, int track) {
        return Pulse{static_cast<std::size_t>(5 * pos + track), takeBits(r, 1) != 0};
    };
    const int third = takeBits(r, 2);
    d.fraction = static_cast<Word>(third == 3 ? 0 : third - 1);
    d.lag = static_cast<Word>(takeBits(r, 6) + 40);
    d.pulses[0] = pulse(takeBits(r, 3), 0);
    d.pulses[1] = pulse(takeBits(r, 3), 1);
    r = celp::random(seed);
    d.pulses[2] = pulse(takeBits(r, 3), 2);
    const int last = takeBits(r, 4);
    d.pulses[3] = pulse(last >> 1, 3 + (last & 1));
    d.pitchGain = static_cast<Word>(celp::random(seed) & 8191);
    return d;
}

/// Sums of twelve words each, scaled to a root mean square that follows the gain.
void gaussian(Word gain, Word& seed, Out<kSubframe> dst) noexcept
{
    Long energy = 0;
    for (Word& x : dst) {
        Long sum = 0;
        for (int i = 0; i < 12; ++i)
            sum += celp::random(seed);
        x = fx::extract_l(sum >> 7);
        energy = fx::l_mac(energy, x, x);
    }
    const Word most = fx::add(gain, fx::mult_r(gain, 19043));
    const Long factor = fx::mpy_32_16(common::invSqrt(energy >> 1), most);
    const int shift = fx::norm_l(factor);
    const Word mantissa = fx::extract_h(fx::l_shl(factor, shift));
    for (Word& x : dst)
        x = fx::shr_r(fx::mult_r(x, mantissa), shift - 14);
}

/// The largest root of a long whose square does not exceed it.
Word squareRoot(Long x) noexcept
{
    Word root = 0;
    for (Word bit = 16384; bit > 1; bit = static_cast<Word>(bit / 2)) {
        const Word with = fx::add(root, bit);
        if (fx::l_sub(x, fx::l_mult(with, with)) >= 0) root = with;
    }
    return root;
}

/// The smaller of the two gains of pulses that fulfil G^2 + ... = rest, clause B.4.4.
Word pulseGain(Long rest, Word correlation, int shift) noexcept
{
    const Word root = squareRoot(rest);
    const Word first = fx::sub(root, correlation);
    const Word second = fx::negate(fx::add(correlation, root));
    const Word least = fx::abs_s(second) < fx::abs_s(first) ? second : first;
    return std::clamp<Word>(fx::shr_r(least, 2 - shift), -5000, 5000);
}

/// The signed sum of what lies at the pulses, shifted right.
Word atPulses(In<kSubframe> x, const Pulses& pulses, int shift) noexcept
{
    Word sum = 0;
    for (const auto& [at, positive] : pulses) {
        const auto value = static_cast<Word>(x[at] >> shift);
        sum = positive ? fx::add(sum, value) : fx::sub(sum, value);
    }
    return sum;
}

} // namespace

NoiseShape comfortNoise(Word gain, Word& seed, Out<kPast + kSubframe> excitation) noexcept
{
    const Out<kSubframe> e = excitation.last<kSubframe>();
    if (gain == 0) {
        std::ranges::fill(e, Word{0});
        return {41, 0, 0};
    }
    Drawn d = draw(seed);
    std::array<Word, kSubframe> noise;
    gaussian(gain, seed, noise);

    adaptiveVector(d.lag, d.fraction, excitation);
    const auto twice = static_cast<Word>(2 * d.pitchGain);
    for (std::size_t n = 0; n < kSubframe; ++n)
        e[n] = fx::add(fx::mult_r(e[n], twice), noise[n]);

    const Word most = codecs::largest(e);
    int shift = most == 0 ? 0 : std::max(3 - fx::norm_s(most), 0);
    Long own = 0;
    for (const Word x : e)
        own = fx::l_mac(own, static_cast<Word>(x >> shift), static_cast<Word>(x >> shift));
    const Long wanted = fx::l_mult(gain, fx::extract_l(fx::l_mult(gain, 40) >> 6));
    auto correlation = static_cast<Word>(atPulses(e, d.pulses, shift) >> 1);
    Long rest = fx::l_sub(fx::l_shr(wanted, 1 + 2 * shift), own);
    rest = fx::l_mac(rest, correlation, correlation);
    ++shift;
    if (rest < 0) { // too much of the past: the Gaussian vector alone
        std::ranges::copy(noise, e.begin());
        int bits = 0;
        for (const auto& [at, positive] : d.pulses)
            bits |= fx::abs_s(noise[at]);
        shift = (bits & 0x4000) != 0 ? 2 : 1;
        correlation = atPulses(e, d.pulses, shift);
        rest = fx::l_shr(fx::mpy_32_16(wanted, 24576), 2 * shift - 1);
        rest = fx::l_mac(rest, correlation, correlation);
        d.pitchGain = 0;
    }
    const Word height = pulseGain(rest, correlation, shift);
    for (const auto& [at, positive] : d.pulses)
        e[at] = positive ? fx::add(e[at], height) : fx::sub(e[at], height);
    return {d.lag, d.pitchGain, height};
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsComfortNoise_G729B_16s_I(std::int16_t gain, std::int16_t* seed, std::int16_t* srcDst,
                                       std::int16_t* lag, std::int16_t* pitchGain)
{
    if (!seed || !srcDst || !lag || !pitchGain) return zspStsNullPtrErr;
    if (gain < 0) return zspStsRangeErr;

    const g729::NoiseShape shape =
        g729::comfortNoise(gain, *seed, spanOf<g729::kPast + g729::kSubframe>(srcDst));
    *lag = shape.lag;
    *pitchGain = shape.pitchGain_Q14;
    return zspStsNoErr;
}

} // namespace zsp::entry
