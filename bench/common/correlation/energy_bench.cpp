// The energy of a subframe and of a window.

#include "bench/support/plain.hpp"
#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "common/correlation/energy.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::common;
using Energy = std::int32_t (*)(zsp::In16);

void energy(benchmark::State& state, Energy kernel)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    WordPool pool(1, kLoudSpeech);
    loop(state, len, [&] { benchmark::DoNotOptimize(kernel(pool.next(len))); });
}

const bool registered = add<Energy>(
    "energy", energy,
    {{"definition", energyScalar}, {"avx2", energyAvx2}, {"plain", plain::energy}}, {{40}, {240}});

} // namespace
