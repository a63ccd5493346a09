// What a frame costs the DTX handler and the comfort-noise histories.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/gsmamr/gsmamr_dtx.hpp"

#include <array>

namespace {

using namespace zsp::bench;
using namespace zsp::gsmamr;

using Step = void (*)(zsp::In16);

/// The histories of a coder, which each frame enters.
void buffer(zsp::In16 frame)
{
    static constexpr std::array<std::int16_t, kLpcOrder> kLsp{30000, 26000, 21000,  15000,  8000,
                                                              0,     -8000, -15000, -21000, -26000};
    static std::array<std::int16_t, kDtxHistory * kLpcOrder> lspHistory{};
    static std::array<std::int16_t, kDtxHistory> energyHistory{};
    static std::int16_t index = 0;
    dtxBuffer(frame.first<kFrame>(), kLsp, index, lspHistory, energyHistory,
              LogEnergyScale::encoder);
    benchmark::DoNotOptimize(energyHistory.data());
}

void handler(zsp::In16 frame)
{
    static DtxCounters counters{7, 32767};
    benchmark::DoNotOptimize(encDtxHandler(counters, frame[0] > 0));
}

void frames(benchmark::State& state, Step kernel)
{
    WordPool pool(1, kLoudSpeech);
    loop(state, kFrame, [&] { kernel(pool.next(kFrame)); });
}

const bool registered[] = {
    add<Step>("gsmamrDtxBuffer", frames, {{"definition", buffer}}),
    add<Step>("gsmamrDtxHandler", frames, {{"definition", handler}}),
};

} // namespace
