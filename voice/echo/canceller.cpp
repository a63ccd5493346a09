// One frame through banks, filters, mixer, suppressor and tone bypass.

#include "voice/echo/canceller.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace zsp::voice::echo {

namespace {

// The microphone waits so many frames for the far end, whose spectra also reach half a window
// ahead: so the echo may begin before its reference does.
constexpr std::size_t kLeadFrames = 1;

std::size_t samplesOf(std::int32_t ms, std::size_t rate)
{
    return static_cast<std::size_t>(ms) * rate / 1000;
}

} // namespace

ZspStatus Canceller::layOut(Memory& memory)
{
    farDelay_.layOut(memory, samplesOf(kLongestDelayMs, shape_.rate), shape_.hop);
    micDelay_.layOut(memory, samplesOf(kLongestLeadMs, shape_.rate), shape_.hop);
    wait_.layOut(memory, Banks::delay(shape_) + kLeadFrames * shape_.hop, shape_.hop);
    Steps steps;
    steps.add(tones_.layOut(memory, shape_));
    steps.add(banks_.layOut(memory, shape_));
    steps.add(filters_.layOut(memory, shape_));
    divergence_.layOut(memory, shape_);
    mixer_.layOut(memory, shape_);
    suppressor_.layOut(memory, shape_);
    for (auto* row : {&mic_, &micNext_, &output_})
        *row = memory.take<Zsp32fc>(shape_.rowBins);
    return steps.status();
}

ZspStatus Canceller::start()
{
    setDelay(settings_.delayMs);
    // A sample leaves the last analysis block at its start, when synthesis puts it out.
    wait_.setDelay(Banks::delay(shape_) + kLeadFrames * shape_.hop);
    Steps steps;
    steps.add(tones_.start(shape_, settings_.toneBypass));
    steps.add(banks_.start(shape_));
    steps.add(filters_.start(shape_, settings_.tailMs));
    divergence_.start(shape_);
    mixer_.start(shape_);
    suppressor_.start(shape_);
    meter_.start(shape_);
    return steps.status();
}

void Canceller::setDelay(std::int32_t delayMs)
{
    // Until the history has come through the new delay it fits no path: nothing is learnt from it.
    if (delayMs != settings_.delayMs)
        settling_ = shape_.taps + Banks::delay(shape_) / shape_.hop + 1;
    settings_.delayMs = delayMs;
    farDelay_.setDelay(samplesOf(std::max(delayMs, 0), shape_.rate));
    micDelay_.setDelay(samplesOf(std::max(-delayMs, 0), shape_.rate));
}

std::size_t Canceller::delay() const
{
    return Banks::delay(shape_) + kLeadFrames * shape_.hop +
           samplesOf(std::max(-settings_.delayMs, 0), shape_.rate);
}

double Canceller::pathDelayMs() const
{
    const double centre = filters_.centre();
    return centre < 0 ? 0 : 1000 * shape_.seconds(centre - kLeadFrames);
}

ZspStatus Canceller::process(std::span<const float> far, std::span<const float> mic,
                             std::span<float> out)
{
    std::array<float, kMaxHop> farBlock, micBlock, waited, synthesis;
    const std::span farNow(farBlock.data(), shape_.hop), micNow(micBlock.data(), shape_.hop);
    farDelay_.run(far, farNow);
    micDelay_.run(mic, micNow);
    wait_.run(micNow, {waited.data(), shape_.hop});

    Steps steps;
    const bool before = tones_.active(), bypass = tones_.update(farNow, micNow, steps);
    if (bypass != before) steps.add(filters_.restartController(shape_));

    banks_.analyseFar(farNow, filters_.nextFar(), steps);
    std::swap(mic_, micNext_);
    banks_.analyseMic(micNow, micNext_.data(), steps);
    if (bypass)
        std::copy(mic_.begin(), mic_.end(), output_.begin());
    else
        cancel(steps);
    // The bank runs on during a bypass, so that it is warm afterwards.
    banks_.synthesise(output_.data(), {synthesis.data(), shape_.hop}, steps);
    std::copy_n(bypass || steps.failed() ? waited.begin() : synthesis.begin(), shape_.hop,
                out.begin());
    return steps.status();
}

void Canceller::cancel(Steps& steps)
{
    filters_.filter(mic_, steps);
    filters_.prepareSteps(mic_, steps);
    if (settling_ > 0)
        --settling_;
    else
        learn(steps);
    mixer_.mix(filters_, mic_, output_);
    suppressor_.follow(filters_, mic_, output_);
    if (settings_.suppressor) suppressor_.apply(output_);
    meter_.update(filters_, suppressor_, mic_, output_);
}

// A fixed filter that adds echo instead of removing it belongs to a path that is no more: start
// again from nothing, and expect nothing of the taps. Where only its estimate is found no more, as
// when the new echo is much louder than the old one, the taps are kept but learn fast again; during
// double talk that does little harm.
void Canceller::learn(Steps& steps)
{
    const Divergence::Verdict verdict = divergence_.judge(filters_, mixer_, mic_);
    if (verdict != Divergence::Verdict::none) {
        const bool wrong = verdict == Divergence::Verdict::wrong;
        filters_.doubt(wrong ? 1.0F : 0.3F);
        if (wrong) {
            filters_.clear(steps);
            suppressor_.beCautious();
            ++restarts_;
        }
        filters_.filter(mic_, steps);
    }
    filters_.adapt(steps);
    filters_.control(steps);
}

} // namespace zsp::voice::echo
