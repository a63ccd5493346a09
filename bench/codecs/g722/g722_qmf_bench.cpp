// The two filters of G.722 over speech in blocks of 20 ms.

#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g722/g722_qmf.hpp"

#include <array>

namespace {

using namespace zsp::bench;
using namespace zsp::g722;

constexpr std::size_t kBlock = 320;
using Filter = void (*)(zsp::In16, zsp::Out16, DelayLine);

void filter(benchmark::State& state, Filter kernel)
{
    Blocks blocks(speech(kVoice16), kBlock);
    std::array<std::int16_t, 24> line{};
    std::array<std::int16_t, kBlock> out;
    loop(state, kBlock, [&] { kernel(blocks.next(), out, line); });
}

const bool registered[] = {
    add<Filter>("g722Analysis", filter, {{"definition", analyseScalar}, {"avx2", analyseAvx2}}),
    add<Filter>("g722Synthesis", filter,
                {{"definition", synthesiseScalar}, {"avx2", synthesiseAvx2}}),
};

} // namespace
