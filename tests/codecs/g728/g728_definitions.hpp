// The exports of G.728 that have fast versions, made from the definitions alone and under the same
// names: what random calls are compared with, and what a coder in a benchmark is made of. They
// check nothing.
#pragma once

#include "codecs/g728/g728_blocks.hpp"
#include "core/spans.hpp"
#include "core/state.hpp"
#include "zspsc/g728/adapt.h"

#include <algorithm>

namespace zsp::g728::definitions {

inline void zspsSyntesisFilterZeroInput_G728_16s(const Word* lpc, const Word* src, const Word* srcQ,
                                                 Word* dst) noexcept
{
    storeVector(zeroInputScalar(spanOf<50>(lpc), spanOf<50>(src), spanOf<10>(srcQ)), dst);
}

inline void zspsWeightingFilter_G728_16s(const Word* zero, const Word* pole, const Word* src,
                                         Word* memory) noexcept
{
    weightScalar(spanOf<10>(zero), spanOf<10>(pole), spanOf<15>(src), spanOf<10>(memory));
}

inline void zspsImpulseResponseAndEnergy_G728_16s32s(const Word* lpc, const Word* zero,
                                                     const Word* pole, Word* impulse,
                                                     Long* energy) noexcept
{
    impulseResponse(spanOf<4>(lpc), spanOf<4>(zero), spanOf<4>(pole), spanOf<5>(impulse));
    shapeEnergiesScalar(spanOf<5>(impulse), spanOf<kShapes>(energy));
}

inline void zspsCodebookSearch_G728_16s(const Word* target, const Word* impulse, const Long* energy,
                                        Long* index) noexcept
{
    *index = searchScalar(reverseConvolve(vectorAt(target), spanOf<5>(impulse)),
                          spanOf<kShapes>(energy));
}

inline void zspsHybridWindow_G728_16s(Long window, const Word* src, const Word* srcQ,
                                      Word* recursion, Word* recursionQ, Word* dst,
                                      Long* ok) noexcept
{
    const WindowShape& shape = windowShape(window);
    const std::size_t length = shape.window.size();
    std::array<Word, kMostWindow> windowed;
    const std::span<Word> w(windowed.data(), length);
    const std::size_t vectors = window == zspG728WindowSynthesis ? length / kVector : 0;
    const int q = applyWindowScalar(shape, {src, length}, {srcQ, vectors}, w);
    int nextQ = *recursionQ;
    *ok = correlateScalar(shape, w, q, {recursion, shape.lags}, nextQ, {dst, shape.lags});
    *recursionQ = sat16(window == zspG728WindowWeighting ? std::min(nextQ, 41) : nextQ);
}

inline void zspsLevinsonDurbin_G728_16s(const Word* src, Long from, Long to, Word* lpc, Word* state,
                                        Long* ok) noexcept
{
    Predictor p;
    std::copy_n(lpc, from, p.a.begin());
    if (from > 0) {
        p.q = state[0];
        p.alpha = state[1];
        p.reflection = state[2];
    }
    *ok = levinsonScalar({src, static_cast<std::size_t>(to) + 1}, from, to, p);
    if (!*ok) return;
    std::copy_n(p.a.begin(), to, lpc);
    state[0] = static_cast<Word>(p.q);
    state[1] = p.alpha;
    state[2] = p.reflection;
}

inline void zspsBandwidthExpand_G728_16s(Long expansion, const Word* src, Long q, Word* dst,
                                         Long* ok) noexcept
{
    const auto weights = expansionWeights(expansion);
    *ok = expandBandwidthScalar({src, weights.size()}, q, weights, {dst, weights.size()});
}

inline void zspsInverseFilter_G728_16s(const Word* lpc, const Word* src, Word* memory,
                                       Word* dst) noexcept
{
    inverseFilterScalar(spanOf<10>(lpc), spanOf<5>(src), spanOf<10>(memory), spanOf<5>(dst));
}

inline void zspsPitchSearch_G728_16s(const Word* src, Word* decimated, Word* lowpass,
                                     Word* pitch) noexcept
{
    *pitch = static_cast<Word>(
        searchPitchScalar(spanOf<240>(src), spanOf<60>(decimated), spanOf<3>(lowpass), *pitch));
}

inline void zspsLongTermPostFilterCoefs_G728_16s(const Word* src, Long pitch, Word* dst) noexcept
{
    const LongTerm c = longTermCoefsScalar(spanOf<240>(src), pitch);
    dst[0] = c.gain;
    dst[1] = c.tap;
    dst[2] = c.measured_Q14;
}

inline void zspsPostFilter_G728_16s(const Word* src, Word* past, Long pitch, const Word* longTerm,
                                    const Word* shortTerm, Word* memory, Word* dst) noexcept
{
    std::array<Word, kVector> samples; // dst may be src
    std::copy_n(src, kVector, samples.begin());
    InPlace<PostMemory> m(memory);
    postFilterScalar(samples, spanOf<240>(past), pitch, readRecord<LongTerm>(longTerm),
                     readRecord<ShortTerm>(shortTerm), *m, spanOf<5>(dst));
}

} // namespace zsp::g728::definitions
