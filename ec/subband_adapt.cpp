// Update of a sub-band canceller's adaptive taps, each with a step of its own: the variance p that
// its error is expected to have, like in a Kalman filter with a diagonal covariance.
//
//   w[t][k] += p g[k] e[k] conj(x[t][k])
//   p        = (1 - q[k]) (p - (learnt g[k] p |x[t][k]|^2) p) + q[k] (|w[t][k]|^2 + floor)
//
// with the new tap in the second line.

#include "ec/subband_filter.hpp"

#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <cmath>

namespace zsp::ec {

namespace {

float power(Zsp32fc v) noexcept
{
    return v.re * v.re + v.im * v.im;
}

} // namespace

void adaptScalar(const AdaptRule& rule, const AdaptRows& rows, std::size_t first) noexcept
{
    for (std::size_t k = first; k < rule.adaptErr.size(); ++k) {
        const Zsp32fc e = {rule.gain[k] * rule.adaptErr[k].re, rule.gain[k] * rule.adaptErr[k].im};
        const float learning = rule.learnt * rule.gain[k];
        const float q = rule.forget[k], keep = 1 - q;
        for (std::size_t t = 0; t < rows.history.size(); ++t) {
            const Zsp32fc x = rows.history[t][k];
            Zsp32fc& w = rows.adaptCoefs[t][k];
            float& p = rows.coefVariance[t][k];
            w.re = std::fma(p, std::fma(e.re, x.re, e.im * x.im), w.re);
            w.im = std::fma(p, std::fma(e.im, x.re, -(e.re * x.im)), w.im);
            const float learnt = learning * p * power(x);
            const float left = keep * std::fma(-learnt, p, p);
            p = std::fma(q, power(w) + rule.coefFloor, left);
        }
    }
}

namespace {

// Eight and four bins a vector, real and imaginary parts apart. The parts of eight bins leave the
// shuffle in the order 0 1 4 5 2 3 6 7, which every other operand takes on.
struct Eight {
    using Vector = __m256;
    static constexpr std::size_t kBins = 8;

    static Vector all(float v) noexcept { return _mm256_set1_ps(v); }
    static Vector load(const float* p) noexcept { return avx2::swapMiddle(avx2::load(p)); }
    static void store(float* p, Vector v) noexcept { avx2::store(p, avx2::swapMiddle(v)); }
    static void load(const Zsp32fc* p, Vector& re, Vector& im) noexcept
    {
        const __m256 low = avx2::load(&p[0].re), high = avx2::load(&p[4].re);
        re = _mm256_shuffle_ps(low, high, 0x88);
        im = _mm256_shuffle_ps(low, high, 0xdd);
    }
    static void store(Zsp32fc* p, Vector re, Vector im) noexcept
    {
        avx2::store(&p[0].re, _mm256_unpacklo_ps(re, im));
        avx2::store(&p[4].re, _mm256_unpackhi_ps(re, im));
    }
    static Vector add(Vector a, Vector b) noexcept { return _mm256_add_ps(a, b); }
    static Vector sub(Vector a, Vector b) noexcept { return _mm256_sub_ps(a, b); }
    static Vector mul(Vector a, Vector b) noexcept { return _mm256_mul_ps(a, b); }
    static Vector fma(Vector a, Vector b, Vector c) noexcept { return _mm256_fmadd_ps(a, b, c); }
    static Vector fms(Vector a, Vector b, Vector c) noexcept { return _mm256_fmsub_ps(a, b, c); }
    static Vector fnma(Vector a, Vector b, Vector c) noexcept { return _mm256_fnmadd_ps(a, b, c); }
};

struct Four {
    using Vector = __m128;
    static constexpr std::size_t kBins = 4;

    static Vector all(float v) noexcept { return _mm_set1_ps(v); }
    static Vector load(const float* p) noexcept { return _mm_loadu_ps(p); }
    static void store(float* p, Vector v) noexcept { _mm_storeu_ps(p, v); }
    static void load(const Zsp32fc* p, Vector& re, Vector& im) noexcept
    {
        const __m128 low = _mm_loadu_ps(&p[0].re), high = _mm_loadu_ps(&p[2].re);
        re = _mm_shuffle_ps(low, high, 0x88);
        im = _mm_shuffle_ps(low, high, 0xdd);
    }
    static void store(Zsp32fc* p, Vector re, Vector im) noexcept
    {
        _mm_storeu_ps(&p[0].re, _mm_unpacklo_ps(re, im));
        _mm_storeu_ps(&p[2].re, _mm_unpackhi_ps(re, im));
    }
    static Vector add(Vector a, Vector b) noexcept { return _mm_add_ps(a, b); }
    static Vector sub(Vector a, Vector b) noexcept { return _mm_sub_ps(a, b); }
    static Vector mul(Vector a, Vector b) noexcept { return _mm_mul_ps(a, b); }
    static Vector fma(Vector a, Vector b, Vector c) noexcept { return _mm_fmadd_ps(a, b, c); }
    static Vector fms(Vector a, Vector b, Vector c) noexcept { return _mm_fmsub_ps(a, b, c); }
    static Vector fnma(Vector a, Vector b, Vector c) noexcept { return _mm_fnmadd_ps(a, b, c); }
};

template <typename V>
void adaptBins(const AdaptRule& rule, const AdaptRows& rows, std::size_t k) noexcept
{
    using Vector = typename V::Vector;
    const auto power = [](Vector re, Vector im) { return V::add(V::mul(re, re), V::mul(im, im)); };
    const Vector gain = V::load(&rule.gain[k]);
    Vector errRe, errIm;
    V::load(&rule.adaptErr[k], errRe, errIm);
    errRe = V::mul(gain, errRe);
    errIm = V::mul(gain, errIm);
    const Vector learning = V::mul(V::all(rule.learnt), gain);
    const Vector q = V::load(&rule.forget[k]), keep = V::sub(V::all(1), q);
    const Vector floor = V::all(rule.coefFloor);
    for (std::size_t t = 0; t < rows.history.size(); ++t) {
        Vector re, im, tapRe, tapIm;
        V::load(&rows.history[t][k], re, im);
        V::load(&rows.adaptCoefs[t][k], tapRe, tapIm);
        const Vector p = V::load(&rows.coefVariance[t][k]);
        tapRe = V::fma(p, V::fma(errRe, re, V::mul(errIm, im)), tapRe);
        tapIm = V::fma(p, V::fms(errIm, re, V::mul(errRe, im)), tapIm);
        V::store(&rows.adaptCoefs[t][k], tapRe, tapIm);
        const Vector learnt = V::mul(V::mul(learning, p), power(re, im));
        const Vector left = V::mul(keep, V::fnma(learnt, p, p));
        V::store(&rows.coefVariance[t][k], V::fma(q, V::add(power(tapRe, tapIm), floor), left));
    }
}

} // namespace

void adaptAvx2(const AdaptRule& rule, const AdaptRows& rows) noexcept
{
    std::size_t k = 0;
    for (; k + Eight::kBins <= rule.adaptErr.size(); k += Eight::kBins)
        adaptBins<Eight>(rule, rows, k);
    for (; k + Four::kBins <= rule.adaptErr.size(); k += Four::kBins)
        adaptBins<Four>(rule, rows, k);
    adaptScalar(rule, rows, k);
}

} // namespace zsp::ec

namespace zsp::entry {

ZspStatus zspsSubbandAdapt_EC_32fc(const Zsp32fc* adaptErr, const float* gain, const float* forget,
                                   const Zsp32fc* const* inputHistory, Zsp32fc* const* adaptCoefs,
                                   float* const* coefVariance, std::int32_t numBands,
                                   std::int32_t numTaps, float learnt, float coefFloor)
{
    if (!adaptErr || !gain || !forget || !inputHistory || !adaptCoefs || !coefVariance)
        return zspStsNullPtrErr;
    if (numBands < 1) return zspStsSizeErr;
    if (numTaps < 1 || numTaps > ec::kMaxFilterTaps) return zspStsFIRLenErr;
    if (!(learnt >= 0 && learnt <= 1 && coefFloor >= 0)) return zspStsRangeErr; // or no numbers

    ec::adaptAvx2({.adaptErr = {adaptErr, static_cast<std::size_t>(numBands)},
                   .gain = gain,
                   .forget = forget,
                   .learnt = learnt,
                   .coefFloor = coefFloor},
                  {.history = {inputHistory, static_cast<std::size_t>(numTaps)},
                   .adaptCoefs = adaptCoefs,
                   .coefVariance = coefVariance});
    return zspStsNoErr;
}

} // namespace zsp::entry
