// The short-term filters of GSM full rate, over frames of noise.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/gsmfr/gsmfr_shortterm.hpp"

#include <array>

namespace {

using namespace zsp::bench;
using namespace zsp::gsmfr;

using Filter = void (*)(InFrame, InReflect, Frame, Coefs) noexcept;

void filter(benchmark::State& state, Filter kernel)
{
    WordPool frames(10, kLoudSpeech), coefs(11, 8000);
    std::array<std::int16_t, kFrame> out;
    std::array<std::int16_t, kOrder> memory{};
    loop(state, kFrame, [&] {
        kernel(frames.next(kFrame).first<kFrame>(), coefs.next(32).first<32>(), out, memory);
    });
}

const bool registered[] = {
    add<Filter>("gsmfrAnalyse", filter, {{"definition", analyseScalar}, {"avx2", analyseAvx2}}),
    add<Filter>("gsmfrSynthesise", filter,
                {{"definition", synthesiseScalar}, {"avx2", synthesiseAvx2}}),
};

} // namespace
