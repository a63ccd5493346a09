// The long-term post-filter of ITU-T G.729, clause 4.2.1: the residual plus what lies a delay
// before, which is found in steps of 1/8 sample.

#include "codecs/g729/decoder/g729_longterm.hpp"

#include "core/entries.hpp"

namespace zsp::g729 {

namespace {

struct Definition {
    static int scale(PostResidual residual, Word* dst) noexcept
    {
        int bits = 0;
        for (const Word x : residual)
            bits |= fx::abs_s(x);
        const int shift = 3 - fx::norm_s(static_cast<Word>(bits));
        std::ranges::transform(residual, dst, [shift](Word x) { return fx::shr(x, shift); });
        return shift;
    }

    static Long energy(const Word* x) noexcept { return celp::energy({x, kSubframe}); }
    static Long cross(const Word* x, const Word* y) noexcept
    {
        return celp::dot({x, kSubframe}, y);
    }
    static Long longCross(const Word* x, const Word* y) noexcept { return cross(x, y); }

    template <std::size_t taps>
    static void interpolate(const std::array<Word, taps>& h, const Word* newest, std::size_t count,
                            Word* y) noexcept
    {
        for (std::size_t n = 0; n < count; ++n) {
            Long sum = 0;
            for (std::size_t i = 0; i < taps; ++i)
                sum = fx::l_mac(sum, h[i], *(newest + n - i));
            *(y + n) = fx::round_fx(sum);
        }
    }
    static void shortFilter(const std::array<Word, 4>& h, const Word* newest, Word* y) noexcept
    {
        interpolate(h, newest, longterm::kOutputs, y);
    }
    static void longFilter(const std::array<Word, 16>& h, const Word* newest, Word* y) noexcept
    {
        interpolate(h, newest, kSubframe, y);
    }

    static void allPhases(const Word* now, const Word* newest, longterm::Phases& phases) noexcept
    {
        for (std::size_t p = 0; p < longterm::kPhases; ++p) {
            std::array<Word, longterm::kOutputs> y;
            shortFilter(kShortInterpolation[p], newest, y.data());
            const Long inner = celp::energy(std::span(y).subspan<1, kSubframe - 1>());
            phases[p] = {y[0],
                         y[40],
                         {fx::l_mac(inner, y[0], y[0]), fx::l_mac(inner, y[40], y[40])},
                         {cross(now, y.data()), cross(now, &y[1])}};
        }
    }

    static void mix(Word gain_Q15, const Word* r, const Word* y, Out<kSubframe> dst) noexcept
    {
        const auto rest = static_cast<Word>(32768 - gain_Q15);
        for (std::size_t n = 0; n < kSubframe; ++n)
            dst[n] = fx::round_fx(fx::l_mac(fx::l_mult(gain_Q15, *(r + n)), rest, *(y + n)));
    }
};

} // namespace

Word longTermPostFilterScalar(Word lag, PostResidual residual, Out<kSubframe> dst) noexcept
{
    return longterm::longTermPostFilter<Definition>(lag, residual, dst);
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsLongTermPostFilter_G729_16s(std::int32_t lag, const std::int16_t* src,
                                          std::int16_t* dst, std::int16_t* delay)
{
    if (!src || !dst || !delay) return zspStsNullPtrErr;
    if (lag < g729::kLowestLag || lag > g729::kHighestLag) return zspStsCodecRangeErr;

    *delay = g729::longTermPostFilterAvx2(static_cast<std::int16_t>(lag), spanOf<192>(src),
                                          spanOf<40>(dst));
    return zspStsNoErr;
}

} // namespace zsp::entry
