// One frame of 20 ms through the level control.

#include "alc/alc_g169.hpp"
#include "alc/alc_g169_rule.hpp"
#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"

#include <vector>

namespace {

using namespace zsp::alc;
using namespace zsp::bench;

void levelControlScalar(zsp::In16 src, zsp::Out16 dst, State& s) noexcept
{
    for (std::size_t i = 0; i < src.size(); i += kBlock) {
        const InBlock x = src.subspan(i).first<kBlock>();
        update(s, measureScalar(x));
        amplifyScalar(x, s.gain, dst.subspan(i).first<kBlock>());
    }
}

using Control = void (*)(zsp::In16, zsp::Out16, State&);

// A frame of 20 ms. The pool's level moves between frames, so that spurts open and close.
void frames(benchmark::State& state, Control kernel)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    WordPool loud(1, kLoudSpeech), quiet(2, 20);
    std::vector<std::int16_t> dst(len);
    State s = initialState();
    std::size_t frame = 0;
    loop(state, len, [&] {
        kernel((++frame & 64 ? quiet : loud).next(len), dst, s);
        benchmark::DoNotOptimize(dst.data());
    });
}

const bool registered = add<Control>(
    "levelControl", frames, {{"definition", levelControlScalar}, {"avx2", levelControl}}, {{160}});

} // namespace
