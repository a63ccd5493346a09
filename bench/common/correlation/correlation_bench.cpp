// Correlation, lag search and scaling: definition, fast version, and the plain loop of
// common_plain.cpp, all on the same input.

#include "bench/support/plain.hpp"
#include "bench/support/pool.hpp"
#include "common/correlation/correlation.hpp"
#include "common/correlation/lag_search.hpp"
#include "common/scaling/scaling.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>

namespace {

using namespace zsp::bench;
using namespace zsp::common;

// Loud speech: the energy of 240 samples is below 2^30.
constexpr int kSpeech = 3000;

template <typename Call>
void loop(benchmark::State& state, std::int64_t items, Call call)
{
    for (auto _ : state) {
        call();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * items);
}

enum class Version { definition, avx2, plain };

void lagSearch(benchmark::State& state, Version version)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    const auto lags = static_cast<std::size_t>(state.range(1));
    WordPool a(1, kSpeech), b(2, kSpeech);
    std::int32_t corr = 0, lag = 0;
    loop(state, state.range(0) * state.range(1), [&] {
        const auto x = a.next(len), y = b.next(len + lags - 1);
        if (version == Version::plain) {
            plain::crossCorrLagMax(x.data(), y.data(), static_cast<int>(len),
                                   static_cast<int>(lags - 1), &corr, &lag);
        } else {
            const auto best = version == Version::avx2 ? lagMaxAvx2(x, y, Scan::down)
                                                       : lagMaxScalar(x, y, Scan::down);
            corr = best.corr;
            lag = static_cast<std::int32_t>(best.offset);
        }
        benchmark::DoNotOptimize(corr);
        benchmark::DoNotOptimize(lag);
    });
}

BENCHMARK_CAPTURE(lagSearch, definition, Version::definition)->Args({40, 144});
BENCHMARK_CAPTURE(lagSearch, avx2, Version::avx2)->Args({40, 144})->Args({80, 124});
BENCHMARK_CAPTURE(lagSearch, plain, Version::plain)->Args({40, 144})->Args({80, 124});

void lagSearchFloat(benchmark::State& state, Version version)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    const auto lags = static_cast<std::size_t>(state.range(1));
    WordPool words(1, kSpeech);
    std::vector<float> pool(8192);
    std::ranges::copy(words.next(4096), pool.begin());
    std::ranges::copy(words.next(4096), pool.begin() + 4096);
    std::size_t at = 0;
    float corr = 0;
    std::int32_t lag = 0;
    loop(state, state.range(0) * state.range(1), [&] {
        at = (at + 331) % 4096;
        const std::span<const float> past(&pool[at], len + lags - 1), now = past.last(len);
        if (version == Version::plain) {
            plain::autoCorrLagMax(now.data(), static_cast<int>(len), 0, static_cast<int>(lags - 1),
                                  &corr, &lag);
        } else {
            const auto best = version == Version::avx2 ? lagMaxAvx2(now, past, Scan::down)
                                                       : lagMaxScalar(now, past, Scan::down);
            corr = best.corr;
            lag = static_cast<std::int32_t>(best.offset);
        }
        benchmark::DoNotOptimize(corr);
        benchmark::DoNotOptimize(lag);
    });
}

BENCHMARK_CAPTURE(lagSearchFloat, definition, Version::definition)->Args({40, 144});
BENCHMARK_CAPTURE(lagSearchFloat, avx2, Version::avx2)->Args({40, 144});
BENCHMARK_CAPTURE(lagSearchFloat, plain, Version::plain)->Args({40, 144});

void autoCorr(benchmark::State& state, Version version)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    WordPool pool(1, kSpeech);
    std::vector<std::int32_t> dst(static_cast<std::size_t>(state.range(1)));
    std::int32_t norm = 0;
    loop(state, state.range(0), [&] {
        const auto x = pool.next(len);
        bool fits = false;
        if (version == Version::plain)
            fits = plain::autoCorr(x.data(), static_cast<int>(len), dst.data(),
                                   static_cast<int>(dst.size()), &norm);
        else
            fits = version == Version::avx2 ? autoCorrNormEAvx2(x, dst, norm)
                                            : autoCorrNormEScalar(x, dst, norm);
        if (!fits) state.SkipWithError("too loud");
        benchmark::DoNotOptimize(dst.data());
        benchmark::DoNotOptimize(norm);
    });
}

BENCHMARK_CAPTURE(autoCorr, definition, Version::definition)->Args({240, 11});
BENCHMARK_CAPTURE(autoCorr, avx2, Version::avx2)->Args({240, 11})->Args({160, 9});
BENCHMARK_CAPTURE(autoCorr, plain, Version::plain)->Args({240, 11})->Args({160, 9});

template <typename Out, typename Call>
void twoSources(benchmark::State& state, Call call)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    WordPool a(1, kSpeech), b(2, kSpeech);
    std::vector<Out> dst(static_cast<std::size_t>(state.range(1)));
    loop(state, state.range(0), [&] {
        call(a.next(len), b.next(len), std::span<Out>(dst));
        benchmark::DoNotOptimize(dst.data());
    });
}

void crossCorr(benchmark::State& state, Version version)
{
    twoSources<std::int32_t>(state, [&](zsp::In16 a, zsp::In16 b, zsp::Out32 dst) {
        if (version == Version::plain)
            plain::crossCorr(a.data(), b.data(), static_cast<int>(a.size()), dst.data(),
                             static_cast<int>(dst.size()), 4);
        else
            (version == Version::avx2 ? crossCorrAvx2 : crossCorrScalar)(a, b, dst, 4);
    });
}

void normM(benchmark::State& state, Version version)
{
    twoSources<std::int16_t>(state, [&](zsp::In16 a, zsp::In16 b, zsp::Out16 dst) {
        if (version == Version::plain)
            plain::crossCorrNormM(a.data(), b.data(), static_cast<int>(a.size()), dst.data());
        else
            (version == Version::avx2 ? crossCorrNormMAvx2 : crossCorrNormMScalar)(a, b, dst);
    });
}

void convPartial(benchmark::State& state, Version version)
{
    twoSources<std::int16_t>(state, [&](zsp::In16 a, zsp::In16 b, zsp::Out16 dst) {
        if (version == Version::plain)
            plain::convPartial(a.data(), b.data(), dst.data(), static_cast<int>(a.size()), 12);
        else
            (version == Version::avx2 ? convPartialAvx2 : convPartialScalar)(a, b, dst, 12);
    });
}

BENCHMARK_CAPTURE(crossCorr, definition, Version::definition)->Args({240, 11});
BENCHMARK_CAPTURE(crossCorr, avx2, Version::avx2)->Args({240, 11})->Args({40, 40});
BENCHMARK_CAPTURE(crossCorr, plain, Version::plain)->Args({240, 11})->Args({40, 40});
BENCHMARK_CAPTURE(normM, definition, Version::definition)->Args({40, 40});
BENCHMARK_CAPTURE(normM, avx2, Version::avx2)->Args({40, 40});
BENCHMARK_CAPTURE(normM, plain, Version::plain)->Args({40, 40});
BENCHMARK_CAPTURE(convPartial, definition, Version::definition)->Args({40, 40});
BENCHMARK_CAPTURE(convPartial, avx2, Version::avx2)->Args({40, 40});
BENCHMARK_CAPTURE(convPartial, plain, Version::plain)->Args({40, 40});

void invSqrt(benchmark::State& state, Version version)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    WordPool pool(1);
    std::vector<std::int32_t> all(8192), x(len);
    for (auto& value : all) {
        const auto words = pool.next(2);
        value = (words[0] * 65536 + words[1] + 32768) >> (words[1] & 15);
    }
    std::size_t at = 0;
    loop(state, state.range(0), [&] {
        at = (at + 331) % 4096;
        std::copy_n(all.begin() + static_cast<std::ptrdiff_t>(at), len, x.begin());
        if (version == Version::plain)
            plain::invSqrt(x.data(), static_cast<int>(len));
        else
            (version == Version::avx2 ? invSqrtAvx2 : invSqrtScalar)(x);
        benchmark::DoNotOptimize(x.data());
    });
}

BENCHMARK_CAPTURE(invSqrt, definition, Version::definition)->Arg(160);
BENCHMARK_CAPTURE(invSqrt, avx2, Version::avx2)->Arg(40)->Arg(160);
BENCHMARK_CAPTURE(invSqrt, plain, Version::plain)->Arg(40)->Arg(160);

void autoScale(benchmark::State& state, Version version)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    WordPool pool(1, kSpeech);
    std::vector<std::int16_t> dst(len);
    loop(state, state.range(0), [&] {
        const auto x = pool.next(len);
        std::int32_t scale = 1;
        if (version == Version::plain) {
            plain::autoScale(x.data(), dst.data(), static_cast<int>(len), &scale);
        } else {
            scale = blockNorm(x) - scale;
            shiftBlock(x, dst, scale);
        }
        benchmark::DoNotOptimize(scale);
        benchmark::DoNotOptimize(dst.data());
    });
}

BENCHMARK_CAPTURE(autoScale, definition, Version::definition)->Arg(40)->Arg(240);
BENCHMARK_CAPTURE(autoScale, plain, Version::plain)->Arg(40)->Arg(240);

void preemphasize(benchmark::State& state, Version version)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    std::vector<float> x(len, 1.0F);
    float memory = 0;
    loop(state, state.range(0), [&] {
        if (version == Version::plain)
            plain::preemphasize(0.01F, x.data(), static_cast<int>(len), &memory);
        else
            (version == Version::avx2 ? preemphasizeAvx2 : preemphasizeScalar)(0.01F, x, 1.0F);
        benchmark::DoNotOptimize(x.data());
    });
}

BENCHMARK_CAPTURE(preemphasize, definition, Version::definition)->Arg(160);
BENCHMARK_CAPTURE(preemphasize, avx2, Version::avx2)->Arg(160);
BENCHMARK_CAPTURE(preemphasize, plain, Version::plain)->Arg(160);

} // namespace
