// The update of a canceller's adaptive taps.

#include "bench/support/canceller.hpp"
#include "ec/subband_filter.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::ec;
using Adapt = void (*)(const AdaptRule&, const AdaptRows&);

void adapt(benchmark::State& state, Adapt kernel)
{
    Canceller c(state);
    const AdaptRule rule = {
        {c.errors.rows[0], c.bands}, c.gain.data(), c.forget.data(), 0.4F, 1e-9F};
    const AdaptRows rows = {c.pointers, c.adapt.rows.data(), c.variance.rows.data()};
    loop(state, c.bands * c.taps, [&] { kernel(rule, rows); });
}

const bool registered =
    add<Adapt>("subbandAdapt", adapt,
               {{"definition",
                 [](const AdaptRule& rule, const AdaptRows& rows) { adaptScalar(rule, rows, 0); }},
                {"avx2", adaptAvx2}},
               kCancellerRuns);

} // namespace
