// The same work as plain loops, compiled with -O3 -mavx2 alone: what a compiler makes of them is
// what the kernels have to beat. Each has the parameters of its kernel.
#pragma once

#include "core/spans.hpp"

namespace zsp::bench::plain {

struct Peak {
    std::int32_t corr;
    int lag;
};

struct PeakF {
    float corr;
    int lag;
};

/// Lags from b.size() - a.size() down to 0.
Peak lagMax(In16 a, In16 b);
PeakF lagMax(InF a, InF b);

bool autoCorr(In16 src, Out32 dst, std::int32_t& norm);
void crossCorr(In16 a, In16 b, Out32 dst, int shift);
void crossCorrNormM(In16 a, In16 b, Out16 dst);
void convPartial(In16 a, In16 b, Out16 dst, int shift);
std::int32_t energy(In16 x);
void invSqrt(Out32 x);
void autoScale(In16 src, Out16 dst, std::int32_t& scale);
void preemphasize(float factor, OutF x, float before);

} // namespace zsp::bench::plain
