// Both filters of a canceller's bins.

#include "bench/support/canceller.hpp"
#include "ec/subband_filter.hpp"

#include <span>

namespace {

using namespace zsp::bench;
using namespace zsp::ec;
using Filter = void (*)(const FilterRows&, std::span<const Zsp32fc>, const FilterResults&);

void filter(benchmark::State& state, Filter kernel)
{
    Canceller c(state);
    const FilterRows rows = {c.pointers, c.adapt.rows.data(), c.fixed.rows.data(),
                             c.variance.rows.data()};
    const std::span<const Zsp32fc> src(c.errors.rows[2], c.bands);
    const FilterResults out = {c.errors.rows[0], c.errors.rows[1], c.powers.rows[0],
                               c.powers.rows[1]};
    loop(state, c.bands * c.taps, [&] { kernel(rows, src, out); });
}

const bool registered =
    add<Filter>("subbandFilter", filter,
                {{"definition", [](const FilterRows& rows, std::span<const Zsp32fc> src,
                                   const FilterResults& out) { filterScalar(rows, src, out, 0); }},
                 {"avx2", filterAvx2}},
                kCancellerRuns);

} // namespace
