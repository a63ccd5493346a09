#include "bench/support/plain.hpp"

namespace zsp::bench::plain {

namespace {

int norm(std::int32_t x)
{
    return x == 0 ? 0 : __builtin_clz(static_cast<unsigned>(x < 0 ? ~x : x)) - 1;
}

std::int16_t sat16(std::int64_t x)
{
    return static_cast<std::int16_t>(x > 32767 ? 32767 : x < -32768 ? -32768 : x);
}

std::int32_t sat32(std::int64_t x)
{
    return static_cast<std::int32_t>(x > INT32_MAX ? INT32_MAX : x < INT32_MIN ? INT32_MIN : x);
}

constexpr std::int16_t kRoots[49] = {
    32767, 31790, 30894, 30070, 29309, 28602, 27945, 27330, 26755, 26214, 25705, 25225, 24770,
    24339, 23930, 23541, 23170, 22817, 22479, 22155, 21845, 21548, 21263, 20988, 20724, 20470,
    20225, 19988, 19760, 19539, 19326, 19119, 18919, 18725, 18536, 18354, 18176, 18004, 17837,
    17674, 17515, 17361, 17211, 17064, 16921, 16782, 16646, 16514, 16384};

} // namespace

void crossCorrLagMax(const std::int16_t* a, const std::int16_t* b, int len, int lagMax,
                     std::int32_t* maxCorr, std::int32_t* bestLag)
{
    std::int32_t best = 0;
    int at = lagMax;
    for (int lag = lagMax; lag >= 0; --lag) {
        std::uint32_t sum = 0;
        for (int i = 0; i < len; ++i)
            sum += static_cast<std::uint32_t>(a[i] * b[i + lag]);
        const auto c = static_cast<std::int32_t>(sum);
        if (c > best) {
            best = c;
            at = lag;
        }
    }
    *maxCorr = best;
    *bestLag = at;
}

void autoCorrLagMax(const float* src, int len, int lagMin, int lagMax, float* maxCorr,
                    std::int32_t* bestLag)
{
    float best = 0;
    int at = lagMin;
    for (int lag = lagMin; lag <= lagMax; ++lag) {
        float sum = 0;
        for (int i = 0; i < len; ++i)
            sum += src[i] * src[i - lag];
        if (sum > best) {
            best = sum;
            at = lag;
        }
    }
    *maxCorr = best;
    *bestLag = at;
}

// The energy bounds the other lags, so only it needs 64 bits.
bool autoCorr(const std::int16_t* src, int len, std::int32_t* dst, int lagCount,
              std::int32_t* normOut)
{
    std::int64_t energy = 0;
    for (int i = 0; i < len; ++i)
        energy += src[i] * src[i];
    if (energy > 1073741823) return false;
    const auto r0 = static_cast<std::int32_t>(2 * energy + 1);
    const int n = norm(r0);
    *normOut = n;
    dst[0] = r0 << n;
    for (int k = 1; k < lagCount; ++k) {
        std::int32_t sum = 0;
        for (int i = k; i < len; ++i)
            sum += src[i] * src[i - k];
        dst[k] = static_cast<std::int32_t>(static_cast<std::uint32_t>(sum) << (n + 1));
    }
    return true;
}

void crossCorr(const std::int16_t* a, const std::int16_t* b, int len, std::int32_t* dst,
               int lagCount, int shift)
{
    const std::int64_t half = shift > 0 ? std::int64_t{1} << (shift - 1) : 0;
    for (int k = 0; k < lagCount; ++k) {
        std::int64_t sum = half;
        for (int i = 0; i < len - k; ++i)
            sum += a[i + k] * b[i];
        dst[k] = sat32(sum >> shift);
    }
}

void crossCorrNormM(const std::int16_t* a, const std::int16_t* b, int len, std::int16_t* dst)
{
    std::int32_t c[512];
    std::int32_t largest = 0;
    for (int k = 0; k < len; ++k) {
        std::int32_t sum = 0;
        for (int i = 0; i < len - k; ++i)
            sum = sat32(std::int64_t{sum} + sat32(std::int64_t{2} * a[i + k] * b[i]));
        c[k] = sum;
        const std::int32_t magnitude = sum == INT32_MIN ? INT32_MAX : sum < 0 ? -sum : sum;
        if (magnitude > largest) largest = magnitude;
    }
    const int n = norm(largest);
    for (int k = 0; k < len; ++k)
        dst[k] = static_cast<std::int16_t>(c[k] >> (18 - (n < 16 ? n : 16)));
}

void convPartial(const std::int16_t* a, const std::int16_t* b, std::int16_t* dst, int len,
                 int shift)
{
    const std::int64_t half = shift > 0 ? std::int64_t{1} << (shift - 1) : 0;
    for (int n = 0; n < len; ++n) {
        std::int64_t sum = half;
        for (int i = 0; i <= n; ++i)
            sum += a[i] * b[n - i];
        dst[n] = sat16(sum >> shift);
    }
}

void invSqrt(std::int32_t* x, int len)
{
    for (int i = 0; i < len; ++i) {
        std::int32_t v = x[i];
        if (v <= 0) {
            x[i] = 0x3fffffff;
            continue;
        }
        const int e = norm(v);
        v <<= e;
        const int k = 32 - e;
        if (k % 2 == 0) v >>= 1;
        const int index = (v >> 25) - 16;
        const int fraction = (v >> 10) & 0x7fff;
        const int slope = 2 * (kRoots[index] - kRoots[index + 1]);
        x[i] = ((kRoots[index] << 16) - fraction * slope) >> (k / 2);
    }
}

void autoScale(const std::int16_t* src, std::int16_t* dst, int len, std::int32_t* scale)
{
    int largest = 0;
    for (int i = 0; i < len; ++i) {
        const int magnitude = src[i] < 0 ? -src[i] : src[i];
        if (magnitude > largest) largest = magnitude;
    }
    int shift = 0;
    if (largest > 0) shift = largest > 32767 ? 0 : norm(largest) - 16;
    shift -= *scale;
    for (int i = 0; i < len; ++i)
        dst[i] = static_cast<std::int16_t>(shift >= 0     ? src[i] * (1 << shift)
                                           : shift <= -15 ? src[i] >> 15
                                                          : src[i] >> -shift);
    *scale = shift;
}

void preemphasize(float factor, float* x, int len, float* memory)
{
    float before = *memory;
    for (int i = 0; i < len; ++i) {
        const float input = x[i];
        x[i] = input - factor * before;
        before = input;
    }
    *memory = before;
}

} // namespace zsp::bench::plain
