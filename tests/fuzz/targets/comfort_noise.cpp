// Comfort-noise payloads of any content, between pauses to learn from and noise to make.

#include "tests/fuzz/targets/target.hpp"
#include "zspvoice.h"

using namespace zsp::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Choices choices(std::span(data, size));
    const std::int32_t rate = choices.below(2) ? 8000 : 16000;
    std::int32_t bytes = 0;
    must(!zspvComfortNoiseGetSize(rate, &bytes), "the size is told");
    Exact<std::uint8_t> memory(static_cast<std::size_t>(bytes));
    ZspvComfortNoise* noise = nullptr;
    must(!zspvComfortNoiseInit(memory.data(), bytes, rate, &noise), "noise is built");
    while (choices.left() > 0) {
        switch (choices.below(4)) {
        case 0: {
            Exact<std::uint8_t> payload =
                take(choices, static_cast<std::size_t>(choices.below(40)));
            must((zspvComfortNoiseRead(noise, payload.data(), payload.count()) == zspStsNoErr) ==
                     (payload.count() > 0),
                 "any payload is read that is not empty");
            break;
        }
        case 1: {
            Exact<std::int16_t> pause(static_cast<std::size_t>(choices.between(80, 960)));
            choices.fill(pause.all());
            must(!zspvComfortNoiseAnalyse(noise, pause.data(), pause.count()), "a pause is learnt");
            break;
        }
        case 2: {
            const int order = choices.below(ZSPV_NOISE_MAX_ORDER + 1);
            Exact<std::uint8_t> payload(static_cast<std::size_t>(order + 1));
            std::int32_t length = 0;
            must(!zspvComfortNoiseWrite(noise, order, payload.data(), order + 1, &length) &&
                     length == order + 1,
                 "a payload has its length");
            payload.seen();
            must(!zspvComfortNoiseRead(noise, payload.data(), length), "what is written is read");
            break;
        }
        default: {
            Exact<std::int16_t> samples(static_cast<std::size_t>(choices.between(1, 700)));
            must(!zspvComfortNoiseGenerate(noise, samples.data(), samples.count()),
                 "noise is made");
            samples.seen();
        }
        }
    }
    return 0;
}
