// The search at 5.3 kbit/s of G.723.1, once a sub-frame.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void correlate(benchmark::State& state)
{
    const auto r = response();
    const ZspG723Frame f = frameOf(zspG723Rate53, 80);
    std::array<std::int16_t, 60> sharpened{};
    std::array<std::int16_t, 416> corr{};
    loop(state, kSubframe, [&] { acelpCorrelations(r, f, 0, sharpened, corr); });
}

void search(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    ZspG723Frame f = frameOf(zspG723Rate53, 80);
    std::array<std::int16_t, 60> sharpened{}, filtered{};
    std::array<std::int16_t, 416> corr{};
    acelpCorrelations(response(), f, 0, sharpened, corr);
    loop(state, kSubframe, [&] {
        std::int16_t budget = 0;
        acelpSearch(take<60>(pool), sharpened, corr, 0, budget, f, filtered);
    });
}

BENCHMARK(correlate)->Name("g723AcelpCorrelations/definition");
BENCHMARK(search)->Name("g723AcelpSearch/definition");

} // namespace
