// What stands before and behind the coder of GSM full rate, over frames of speech.

#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"
#include "codecs/gsmfr/gsmfr_emphasis.hpp"

#include <array>

namespace {

using namespace zsp::bench;
using namespace zsp::gsmfr;

template <typename State>
void frames(benchmark::State& state, void (*kernel)(zsp::In16, zsp::Out16, State&) noexcept)
{
    Blocks blocks(speech(), 160);
    std::array<std::int16_t, 160> out;
    State record{};
    loop(state, out.size(), [&] { kernel(blocks.next(), out, record); });
}

const bool registered[] = {
    add<decltype(&preprocessScalar)>("gsmfrPreprocess", frames<PreprocessState>,
                                     {{"definition", preprocessScalar}, {"fast", preprocessFast}}),
    add<decltype(&deemphasisScalar)>("gsmfrDeemphasis", frames<std::int16_t>,
                                     {{"definition", deemphasisScalar}, {"fast", deemphasisFast}}),
};

} // namespace
