// The same work as plain loops, compiled with -O3 -mavx2 alone: what a compiler makes of them is
// what the kernels have to beat.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zsp::bench::plain {

void crossCorrLagMax(const std::int16_t* a, const std::int16_t* b, int len, int lagMax,
                     std::int32_t* maxCorr, std::int32_t* bestLag);
void autoCorrLagMax(const float* src, int len, int lagMin, int lagMax, float* maxCorr,
                    std::int32_t* bestLag);
bool autoCorr(const std::int16_t* src, int len, std::int32_t* dst, int lagCount,
              std::int32_t* norm);
void crossCorr(const std::int16_t* a, const std::int16_t* b, int len, std::int32_t* dst,
               int lagCount, int shift);
void crossCorrNormM(const std::int16_t* a, const std::int16_t* b, int len, std::int16_t* dst);
void convPartial(const std::int16_t* a, const std::int16_t* b, std::int16_t* dst, int len,
                 int shift);
void invSqrt(std::int32_t* x, int len);
void autoScale(const std::int16_t* src, std::int16_t* dst, int len, std::int32_t* scale);
void preemphasize(float factor, float* x, int len, float* memory);

} // namespace zsp::bench::plain
