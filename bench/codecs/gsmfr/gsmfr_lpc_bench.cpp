// Linear prediction of GSM full rate, over frames of speech.

#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"
#include "codecs/gsmfr/gsmfr_lpc.hpp"

#include <algorithm>
#include <array>

namespace {

using namespace zsp::bench;
using namespace zsp::gsmfr;

using AutoCorr = int (*)(Frame, Lags) noexcept;
using Schur = void (*)(InLags, Coefs) noexcept;

void correlate(benchmark::State& state, AutoCorr kernel)
{
    Blocks blocks(speech(), kFrame);
    std::array<std::int16_t, kFrame> frame;
    std::array<std::int32_t, kOrder + 1> acf;
    loop(state, std::size_t{1}, [&] {
        std::ranges::copy(blocks.next(), frame.begin());
        kernel(frame, acf);
    });
}

void reflect(benchmark::State& state, Schur kernel)
{
    const auto samples = speech();
    std::vector<std::int32_t> lags;
    std::array<std::int16_t, kFrame> frame;
    for (std::size_t i = 0; i + kFrame <= samples.size(); i += kFrame) {
        std::copy_n(&samples[i], kFrame, frame.begin());
        lags.resize(lags.size() + kOrder + 1);
        autoCorrScalar(frame, Lags(&lags[lags.size() - kOrder - 1], kOrder + 1));
    }
    Blocks blocks(lags, kOrder + 1);
    std::array<std::int16_t, kOrder> r;
    loop(state, std::size_t{1}, [&] { kernel(blocks.next().first<kOrder + 1>(), r); });
}

const bool registered[] = {
    add<AutoCorr>("gsmfrAutoCorr", correlate,
                  {{"definition", autoCorrScalar}, {"avx2", autoCorrAvx2}}),
    add<Schur>("gsmfrSchur", reflect, {{"definition", schurScalar}, {"avx2", schurAvx2}}),
};

} // namespace
