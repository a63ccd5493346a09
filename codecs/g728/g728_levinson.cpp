// The Levinson-Durbin recursion of ITU-T G.728, which can be left at one order and taken up again
// later, and the bandwidth expansion: blocks 37, 38, 44, 45, 50, 51 and 85.

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_tables.hpp"
#include "core/entries.hpp"

namespace zsp::g728 {

bool reflect(std::span<Word> a, Long k, int& halved) noexcept
{
    for (std::size_t lo = 0, hi = a.size() - 1; lo <= hi && hi < a.size(); ++lo, --hi) {
        const auto step = [&](std::size_t x, std::size_t y) {
            return a[x] * Wide{65536} + k * Wide{a[y]};
        };
        Wide u = step(lo, hi), v = step(hi, lo);
        if (u != sat32(u) || v != sat32(v)) {
            if (++halved > 2) return false;
            for (Word& x : a)
                x = static_cast<Word>(x >> 1);
            u = step(lo, hi);
            v = step(hi, lo);
        }
        a[lo] = rh(u);
        a[hi] = rh(v);
    }
    return true;
}

bool levinsonScalar(std::span<const Word> r, int from, int to, Predictor& p) noexcept
{
    Predictor next = p;
    auto& a = next.a;
    int halved = 15 - p.q;
    if (from == 0) {
        if (r[0] <= 0) return false;
        halved = 0;
        const Word k = rh(Wide{quotient(std::abs(r[1]), r[0])} << 15);
        a[0] = next.reflection = static_cast<Word>(r[1] > 0 ? -k : k);
        next.alpha = rh(r[0] * Wide{65536} + 2 * Wide{a[0]} * r[1]);
        from = 1;
    }
    for (auto i = static_cast<std::size_t>(from); i < static_cast<std::size_t>(to); ++i) {
        Wide sum = 0;
        for (std::size_t j = 0; j < i; ++j)
            sum += Wide{r[1 + j]} * a[i - 1 - j];
        const Long e = rh(r[i + 1] * Wide{65536} + sum * (Wide{2} << halved));
        if (std::abs(e) >= next.alpha) return false;
        const Wide t = Wide{quotient(std::abs(e), next.alpha)} << 15;
        const Long k = e > 0 ? -2 * rh(t) : 2 * rh(t);
        const Wide alpha = next.alpha * Wide{65536} + Wide{k} * e;
        if (alpha <= 0) return false;
        next.alpha = rh(alpha);
        if (!reflect(std::span(a).first(i), k, halved)) return false;
        a[i] = rh(t >> halved);
        if (e > 0) a[i] = static_cast<Word>(-a[i]);
    }
    next.q = 15 - halved;
    p = next;
    return true;
}

std::span<const Word> expansionWeights(int kind) noexcept
{
    static constexpr std::span<const Word> kWeights[] = {
        kExpandSynthesis, kExpandGain, kWeightingPole, kWeightingZero,
        kPostPole,        kPostZero,   kExpandErasure};
    return kWeights[kind];
}

bool expandBandwidthScalar(std::span<const Word> a, int q, std::span<const Word> weights,
                           std::span<Word> dst) noexcept
{
    const int shift = 16 - q; // 1, 2, 3: to Q30
    for (std::size_t i = 0; i < weights.size(); ++i) {
        const Wide x = shifted(Wide{a[i]} * weights[i], -shift);
        if (x != sat32(x)) return false;
    }
    for (std::size_t i = 0; i < weights.size(); ++i)
        dst[i] = rh(shifted(Wide{a[i]} * weights[i], -shift));
    return true;
}

} // namespace zsp::g728

namespace zsp::entry {

using namespace g728;

ZspStatus zspsLevinsonDurbin_G728_16s(const std::int16_t* src, std::int32_t from, std::int32_t to,
                                      std::int16_t* lpc, std::int16_t* state, std::int32_t* ok)
{
    if (!src || !lpc || !state || !ok) return zspStsNullPtrErr;
    if (from < 0 || to <= from || to > static_cast<std::int32_t>(kLong)) return zspStsSizeErr;
    if (from > 0 && (state[0] < 13 || state[0] > 15)) return zspStsScaleRangeErr;

    Predictor p;
    std::copy_n(lpc, from, p.a.begin());
    if (from > 0) {
        p.q = state[0];
        p.alpha = state[1];
        p.reflection = state[2];
    }
    *ok = levinsonAvx2({src, static_cast<std::size_t>(to) + 1}, from, to, p);
    if (*ok) {
        std::copy_n(p.a.begin(), to, lpc);
        state[0] = static_cast<Word>(p.q);
        state[1] = p.alpha;
        state[2] = p.reflection;
    }
    return zspStsNoErr;
}

ZspStatus zspsBandwidthExpand_G728_16s(std::int32_t expansion, const std::int16_t* src,
                                       std::int32_t q, std::int16_t* dst, std::int32_t* ok)
{
    if (!src || !dst || !ok) return zspStsNullPtrErr;
    if (q < 13 || q > 15) return zspStsScaleRangeErr;
    if (expansion < zspG728ExpandSynthesis || expansion > zspG728ExpandErasure)
        return zspStsCodecRangeErr;

    const auto weights = expansionWeights(expansion);
    *ok = expandBandwidthAvx2({src, weights.size()}, q, weights, {dst, weights.size()});
    return zspStsNoErr;
}

} // namespace zsp::entry
