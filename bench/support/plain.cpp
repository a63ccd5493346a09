// The plain loops, written as one would without a thought of vectors.

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

Peak lagMax(In16 a, In16 b)
{
    Peak best{0, static_cast<int>(b.size() - a.size())};
    for (int lag = best.lag; lag >= 0; --lag) {
        const std::int16_t* const y = &b[static_cast<std::size_t>(lag)];
        std::uint32_t sum = 0;
        for (std::size_t i = 0; i < a.size(); ++i)
            sum += static_cast<std::uint32_t>(a[i] * y[i]);
        const auto c = static_cast<std::int32_t>(sum);
        if (c > best.corr) best = {c, lag};
    }
    return best;
}

PeakF lagMax(InF a, InF b)
{
    PeakF best{0, static_cast<int>(b.size() - a.size())};
    for (int lag = best.lag; lag >= 0; --lag) {
        const float* const y = &b[static_cast<std::size_t>(lag)];
        float sum = 0;
        for (std::size_t i = 0; i < a.size(); ++i)
            sum += a[i] * y[i];
        if (sum > best.corr) best = {sum, lag};
    }
    return best;
}

// The energy bounds the other lags, so only it needs 64 bits.
bool autoCorr(In16 src, Out32 dst, std::int32_t& shift)
{
    std::int64_t energy = 0;
    for (const int x : src)
        energy += x * x;
    if (energy > 1073741823) return false;
    const auto r0 = static_cast<std::int32_t>(2 * energy + 1);
    shift = norm(r0);
    dst[0] = r0 << shift;
    for (std::size_t k = 1; k < dst.size(); ++k) {
        std::int32_t sum = 0;
        for (std::size_t i = k; i < src.size(); ++i)
            sum += src[i] * src[i - k];
        dst[k] = static_cast<std::int32_t>(static_cast<std::uint32_t>(sum) << (shift + 1));
    }
    return true;
}

void crossCorr(In16 a, In16 b, Out32 dst, int shift)
{
    const std::int64_t half = shift > 0 ? std::int64_t{1} << (shift - 1) : 0;
    for (std::size_t k = 0; k < dst.size(); ++k) {
        std::int64_t sum = half;
        for (std::size_t i = 0; i + k < a.size(); ++i)
            sum += a[i + k] * b[i];
        dst[k] = sat32(sum >> shift);
    }
}

void crossCorrNormM(In16 a, In16 b, Out16 dst)
{
    std::int32_t c[512];
    std::int32_t largest = 0;
    for (std::size_t k = 0; k < dst.size(); ++k) {
        std::int32_t sum = 0;
        for (std::size_t i = 0; i + k < a.size(); ++i)
            sum = sat32(std::int64_t{sum} + sat32(std::int64_t{2} * a[i + k] * b[i]));
        c[k] = sum;
        const std::int32_t magnitude = sum == INT32_MIN ? INT32_MAX : sum < 0 ? -sum : sum;
        if (magnitude > largest) largest = magnitude;
    }
    const int n = norm(largest);
    for (std::size_t k = 0; k < dst.size(); ++k)
        dst[k] = static_cast<std::int16_t>(c[k] >> (18 - (n < 16 ? n : 16)));
}

void convPartial(In16 a, In16 b, Out16 dst, int shift)
{
    const std::int64_t half = shift > 0 ? std::int64_t{1} << (shift - 1) : 0;
    for (std::size_t n = 0; n < dst.size(); ++n) {
        std::int64_t sum = half;
        for (std::size_t i = 0; i <= n; ++i)
            sum += a[i] * b[n - i];
        dst[n] = sat16(sum >> shift);
    }
}

std::int32_t energy(In16 x)
{
    std::int64_t sum = 0;
    for (const int w : x)
        sum += w * w;
    return sat32(2 * sum);
}

void invSqrt(Out32 x)
{
    for (std::int32_t& value : x) {
        std::int32_t v = value;
        if (v <= 0) {
            value = 0x3fffffff;
            continue;
        }
        const int e = norm(v);
        v <<= e;
        const int k = 32 - e;
        if (k % 2 == 0) v >>= 1;
        const int index = (v >> 25) - 16;
        const int fraction = (v >> 10) & 0x7fff;
        const int slope = 2 * (kRoots[index] - kRoots[index + 1]);
        value = ((kRoots[index] << 16) - fraction * slope) >> (k / 2);
    }
}

void autoScale(In16 src, Out16 dst, std::int32_t& scale)
{
    int largest = 0;
    for (const int x : src) {
        const int magnitude = x < 0 ? -x : x;
        if (magnitude > largest) largest = magnitude;
    }
    int shift = 0;
    if (largest > 0) shift = largest > 32767 ? 0 : norm(largest) - 16;
    shift -= scale;
    for (std::size_t i = 0; i < dst.size(); ++i)
        dst[i] = static_cast<std::int16_t>(shift >= 0     ? src[i] * (1 << shift)
                                           : shift <= -15 ? src[i] >> 15
                                                          : src[i] >> -shift);
    scale = shift;
}

void preemphasize(float factor, OutF x, float before)
{
    for (float& value : x) {
        const float input = value;
        value = input - factor * before;
        before = input;
    }
}

} // namespace zsp::bench::plain
