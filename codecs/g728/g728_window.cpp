// The hybrid windows of ITU-T G.728, blocks 36, 43 and 49: an autocorrelation of the past whose
// older part is a recursion and whose newer part has a window of its own.
//
//   R[l] = (1 - 2^-decay) R[l] + sum(w[n] w[n+l], n = M..M+N-1)
//   r[l] = R[l] + sum(w[n] w[n+l], n = 0..M-1), a 257th of it on top at lag 0

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_tables.hpp"
#include "core/entries.hpp"

namespace zsp::g728 {

namespace {

constexpr WindowShape kWindows[] = {
    {.lags = 51, .entering = 20, .fresh = 35, .decay = 2, .window = kWindowSynthesis},
    {.lags = 11, .entering = 20, .fresh = 30, .decay = 1, .window = kWindowWeighting},
    {.lags = 11, .entering = 4, .fresh = 20, .decay = 2, .window = kWindowGain}};

} // namespace

const WindowShape& windowShape(int kind) noexcept
{
    return kWindows[kind];
}

int applyWindowScalar(const WindowShape& shape, std::span<const Word> src, std::span<const Word> q,
                      std::span<Word> windowed) noexcept
{
    if (q.empty()) {
        const int n = vectorNrm(src, 15);
        for (std::size_t i = 0; i < src.size(); ++i)
            windowed[i] = rh(shifted(Wide{src[i]} * shape.window[i], -n));
        return n;
    }
    const int least = *std::min_element(q.begin(), q.end());
    for (std::size_t i = 0; i < src.size(); ++i) {
        const int shift = q[i / kVector] - least - 1;
        windowed[i] = rh(shifted(Wide{src[i]} * shape.window[i], shift));
    }
    return least;
}

LagShifts renewLag0(const WindowShape& shape, int windowedQ, Wide entering, Wide fresh,
                    Word& recursion, int& recursionQ, Word& r) noexcept
{
    // Shifts that bring the recursion and the products, whose Q is twice the window's, together.
    const auto bring = [&](int& recursionShift, int& productShift) {
        recursionShift = 1 + std::max(recursionQ - 2 * windowedQ, 0);
        productShift = 1 + std::max(2 * windowedQ - recursionQ, 0);
    };
    LagShifts s{};
    bring(s.old, s.entering);
    recursionQ = std::min(recursionQ, 2 * windowedQ);
    Wide a = shifted(recursion * keptOf(shape), s.old) + shifted(entering, s.entering);
    s.recursion = nrm(a, 32);
    recursion = rh(shifted(a, -s.recursion));
    recursionQ += s.recursion - 1;
    bring(s.total, s.fresh);
    a = shifted(recursion * Wide{65536}, s.total) + shifted(fresh, s.fresh);
    a += a >> 8; // white noise 24 dB below
    s.correlation = nrm(a, 32);
    r = rh(shifted(a, -s.correlation));
    return s;
}

bool correlateScalar(const WindowShape& shape, std::span<const Word> windowed, int windowedQ,
                     std::span<Word> recursion, int& recursionQ, std::span<Word> r) noexcept
{
    const auto sum = [&](std::size_t first, std::size_t count, std::size_t lag) {
        Wide s = 0;
        for (std::size_t n = first; n < first + count; ++n)
            s += Wide{windowed[n]} * windowed[n + lag];
        return s;
    };
    const auto entering = [&](std::size_t lag) { return sum(shape.fresh, shape.entering, lag); };
    const auto fresh = [&](std::size_t lag) { return sum(0, shape.fresh, lag); };
    const LagShifts s =
        renewLag0(shape, windowedQ, entering(0), fresh(0), recursion[0], recursionQ, r[0]);
    Wide a = 0;
    for (std::size_t l = 1; l < r.size(); ++l) {
        a = shifted(recursion[l] * keptOf(shape), s.old) + shifted(entering(l), s.entering);
        recursion[l] = rh(sat32(shifted(a, -s.recursion)));
        a = shifted(recursion[l] * Wide{65536}, s.total) + shifted(fresh(l), s.fresh);
        a = sat32(shifted(a, -s.correlation));
        r[l] = rh(a);
    }
    return a != 0;
}

} // namespace zsp::g728

namespace zsp::entry {

using namespace g728;

ZspStatus zspsHybridWindow_G728_16s(std::int32_t window, const std::int16_t* src,
                                    const std::int16_t* srcQ, std::int16_t* recursion,
                                    std::int16_t* recursionQ, std::int16_t* dst, std::int32_t* ok)
{
    if (!src || !srcQ || !recursion || !recursionQ || !dst || !ok) return zspStsNullPtrErr;
    if (window < zspG728WindowSynthesis || window > zspG728WindowLogGain)
        return zspStsCodecRangeErr;
    if (*recursionQ < -256 || *recursionQ > 256) return zspStsScaleRangeErr;
    if (!std::all_of(srcQ, srcQ + kMostWindow / kVector, hasQ)) return zspStsScaleRangeErr;

    const bool hasVectors = window == zspG728WindowSynthesis;
    const WindowShape& shape = windowShape(window);
    const std::size_t length = shape.window.size(), lags = shape.lags;
    std::array<Word, kMostWindow> windowed;
    const std::span<Word> w(windowed.data(), length);
    const int q =
        applyWindowAvx2(shape, {src, length}, {srcQ, hasVectors ? kMostWindow / kVector : 0}, w);
    int nextQ = *recursionQ;
    *ok = correlateAvx2(shape, w, q, {recursion, lags}, nextQ, {dst, lags});
    if (window == zspG728WindowWeighting) nextQ = std::min(nextQ, 41);
    *recursionQ = sat16(nextQ);
    return zspStsNoErr;
}

} // namespace zsp::entry
