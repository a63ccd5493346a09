// Pre-emphasis of a frame of floats.

#include "bench/support/plain.hpp"
#include "bench/support/versions.hpp"
#include "common/filter/preemphasis.hpp"

#include <vector>

namespace {

using namespace zsp::bench;
using namespace zsp::common;
using Preemphasize = void (*)(float, zsp::OutF, float);

void preemphasize(benchmark::State& state, Preemphasize kernel)
{
    std::vector<float> x(static_cast<std::size_t>(state.range(0)), 1.0F);
    loop(state, x.size(), [&] {
        kernel(0.01F, x, 1.0F);
        benchmark::DoNotOptimize(x.data());
    });
}

const bool registered = add<Preemphasize>("preemphasize", preemphasize,
                                          {{"definition", preemphasizeScalar},
                                           {"avx2", preemphasizeAvx2},
                                           {"plain", plain::preemphasize}},
                                          {{160}});

} // namespace
