// Pre-emphasis of half a frame and of a whole one.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/gsmamr/gsmamr_preemphasis.hpp"

#include <vector>

namespace {

using namespace zsp::bench;
using namespace zsp::gsmamr;
using Filter = void (*)(std::int16_t, zsp::In16, zsp::Out16, std::int16_t&);

void blocks(benchmark::State& state, Filter kernel)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    WordPool pool(1, kLoudSpeech);
    std::vector<std::int16_t> out(len);
    std::int16_t memory = 0;
    loop(state, len, [&] {
        kernel(-26214, pool.next(len), out, memory);
        benchmark::DoNotOptimize(out.data());
    });
}

const bool registered =
    add<Filter>("gsmamrPreemphasis", blocks,
                {{"definition", preEmphasiseScalar}, {"avx2", preEmphasiseAvx2}}, {{80}, {160}});

} // namespace
