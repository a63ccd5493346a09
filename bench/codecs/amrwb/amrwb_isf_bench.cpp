// The two conversions of sixteen immittance spectral frequencies.

#include "bench/support/isf.hpp"
#include "bench/support/versions.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::amrwb;
using Conversion = void (*)(zsp::In16, zsp::Out16);

void convert(benchmark::State& state, const std::vector<Isf>& inputs, Conversion kernel)
{
    Isf result{};
    std::size_t next = 0;
    loop(state, kIsfOrder, [&] {
        kernel(inputs[next], result);
        benchmark::DoNotOptimize(result.data());
        next = (next + 1) % inputs.size();
    });
}

std::vector<Isf> pairs()
{
    std::vector<Isf> all = frequencies();
    for (Isf& isf : all)
        isfToIspScalar(isf, isf);
    return all;
}

const bool registered[] = {
    add<Conversion>("isfToIsp",
                    [](auto& state, Conversion kernel) { convert(state, frequencies(), kernel); },
                    {{"definition", isfToIspScalar}, {"avx2", isfToIspAvx2}}),
    add<Conversion>("ispToIsf",
                    [](auto& state, Conversion kernel) { convert(state, pairs(), kernel); },
                    {{"definition", ispToIsfScalar}, {"avx2", ispToIsfAvx2}}),
};

} // namespace
