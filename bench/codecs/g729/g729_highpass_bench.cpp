// G.729's high-pass filter over speech in blocks of 10 ms.

#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g729/g729_highpass.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

using namespace zsp::bench;
using zsp::g729::HighPassState;
using HighPass = void (*)(zsp::Out16, int, HighPassState&) noexcept;

void run(benchmark::State& state, HighPassState filter, int scaleFactor, HighPass kernel)
{
    constexpr std::size_t kBlock = 80;
    Blocks blocks(speech(), kBlock);
    std::array<std::int16_t, kBlock> samples;
    loop(state, kBlock, [&] {
        std::ranges::copy(blocks.next(), samples.begin());
        kernel(samples, scaleFactor, filter);
    });
}

void pre(benchmark::State& state, HighPass kernel)
{
    run(state, {.coeffs = {4096, 7807, -3733, 1899, -3798, 1899}}, 12, kernel);
}

void post(benchmark::State& state, HighPass kernel)
{
    run(state, {.coeffs = {8192, 15836, -7667, 7699, -15398, 7699}}, 13, kernel);
}

using zsp::g729::highPassAvx2, zsp::g729::highPassScalar;

const bool registered = add<HighPass>("g729HighPass/pre", pre,
                                      {{"definition", highPassScalar}, {"avx2", highPassAvx2}}) &&
                        add<HighPass>("g729HighPass/post", post,
                                      {{"definition", highPassScalar}, {"avx2", highPassAvx2}});

} // namespace
