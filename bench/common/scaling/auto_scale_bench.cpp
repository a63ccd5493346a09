// Block scaling, whose definition the compiler vectorises: beside a plain loop.

#include "bench/support/plain.hpp"
#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "common/scaling/auto_scale.hpp"

#include <vector>

namespace {

using namespace zsp::bench;
using AutoScale = void (*)(zsp::In16, zsp::Out16, std::int32_t&);

void autoScale(benchmark::State& state, AutoScale kernel)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    WordPool pool(1, kLoudSpeech);
    std::vector<std::int16_t> dst(len);
    loop(state, len, [&] {
        std::int32_t scale = 1;
        kernel(pool.next(len), dst, scale);
        benchmark::DoNotOptimize(scale);
        benchmark::DoNotOptimize(dst.data());
    });
}

void definition(zsp::In16 src, zsp::Out16 dst, std::int32_t& scale)
{
    scale = zsp::common::blockNorm(src) - scale;
    zsp::common::shiftBlock(src, dst, scale);
}

const bool registered =
    add<AutoScale>("autoScale", autoScale,
                   {{"definition", definition}, {"plain", plain::autoScale}}, {{40}, {240}});

} // namespace
