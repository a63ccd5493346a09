// The filter bank's two loops over its window: 256 taps, 64 points.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "ec/subband_fold.hpp"

#include <cstdint>
#include <span>
#include <vector>

namespace {

using namespace zsp::bench;
using namespace zsp::ec;

template <typename Sample, typename Folded>
using Fold = void (*)(std::span<const Sample>, std::span<const Sample>, std::span<Folded>);

template <typename Sample, typename Folded>
void fold(benchmark::State& state, Fold<Sample, Folded> kernel)
{
    WordPool pool(1);
    const auto words = pool.next(512);
    const std::vector<Sample> delay(words.begin(), words.begin() + 256);
    const std::vector<Sample> window(words.begin() + 256, words.end());
    std::vector<Folded> block(64);
    loop(state, delay.size(), [&] { kernel(delay, window, block); });
}

template <typename Sample, typename Folded>
using OverlapAdd = void (*)(std::span<const Folded>, std::span<const Sample>, std::span<Sample>);

template <typename Sample, typename Folded>
void overlapAdd(benchmark::State& state, OverlapAdd<Sample, Folded> kernel)
{
    WordPool pool(1);
    const auto words = pool.next(512);
    const std::vector<Folded> time(words.begin(), words.begin() + 64);
    const std::vector<Sample> window(words.begin() + 256, words.end());
    std::vector<Sample> delay(256);
    loop(state, delay.size(), [&] { kernel(time, window, delay); });
}

/// Both loops on one type of sample.
template <typename Sample, typename Folded>
bool addBoth(const std::string& tag)
{
    return add<Fold<Sample, Folded>>("fold_" + tag, fold<Sample, Folded>,
                                     {{"definition", foldScalar}, {"avx2", foldAvx2}}, {{256}}) &&
           add<OverlapAdd<Sample, Folded>>(
               "overlapAdd_" + tag, overlapAdd<Sample, Folded>,
               {{"definition", overlapAddScalar}, {"avx2", overlapAddAvx2}}, {{256}});
}

const bool registered[] = {addBoth<float, float>("32f"),
                           addBoth<std::int16_t, std::int32_t>("16s")};

} // namespace
