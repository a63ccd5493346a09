// The three filter banks of a canceller in its memory.

#include "voice/echo/subband/banks.hpp"

#include "voice/echo/subband/prototype.hpp"
#include "zspsc/ec/bank.h"

#include <algorithm>

namespace zsp::voice::echo {

namespace {

std::int32_t windowLength(const Shape& shape)
{
    return static_cast<std::int32_t>(kWindowBlocks * shape.fftLen());
}

} // namespace

std::size_t Banks::delay(const Shape& shape)
{
    return kWindowBlocks * shape.fftLen() - shape.hop;
}

ZspStatus Banks::layOut(Memory& memory, const Shape& shape)
{
    std::int32_t state = 0, start = 0, work = 0;
    const ZspStatus status =
        zspsSubbandProcessGetSize_32f(shape.order, windowLength(shape), &state, &start, &work);
    for (auto* bank : {&far_, &mic_, &out_})
        *bank = memory.take<std::uint8_t>(static_cast<std::size_t>(state));
    work_ = memory.take<std::uint8_t>(static_cast<std::size_t>(work));
    start_ = memory.take<std::uint8_t>(static_cast<std::size_t>(start) + 1);
    scaled_ = memory.take<float>(shape.hop);
    return status;
}

ZspStatus Banks::start(const Shape& shape)
{
    const auto window = prototype(shape.fftLen(), shape.hop);
    Steps steps;
    for (auto* bank : {&far_, &mic_, &out_})
        steps.add(zspsSubbandProcessInit_32f(bank->data(), shape.order,
                                             static_cast<std::int32_t>(shape.hop),
                                             windowLength(shape), window.data(), start_.data()));
    return steps.status();
}

void Banks::analyseFar(std::span<const float> far, Zsp32fc* row, Steps& steps)
{
    std::transform(far.begin(), far.end(), scaled_.begin(), [](float x) { return kFarScale * x; });
    steps.add(zspsSubbandAnalysis_32f32fc(scaled_.data(), row, far_.data(), work_.data()));
}

void Banks::analyseMic(std::span<const float> mic, Zsp32fc* row, Steps& steps)
{
    steps.add(zspsSubbandAnalysis_32f32fc(mic.data(), row, mic_.data(), work_.data()));
}

void Banks::synthesise(const Zsp32fc* row, std::span<float> out, Steps& steps)
{
    steps.add(zspsSubbandSynthesis_32fc32f(row, out.data(), out_.data(), work_.data()));
}

} // namespace zsp::voice::echo
