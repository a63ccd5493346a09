#include "tools/zsp/voice/send_path.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/io/progress.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace zsp::host {

namespace {

constexpr std::size_t kLateFrames = 2; // of the canceller's output, 20 ms

double smoothed(double old, double fresh)
{
    return 0.8 * old + 0.2 * fresh;
}

double power(std::span<const std::int16_t> samples)
{
    return std::pow(10.0, signals::levelDbfs(samples) / 10);
}

} // namespace

SendPath::SendPath(const SendPathOptions& options)
    : rate_(options.echo.sampleRate), canceller_(options.echo), micPowers_(kLateFrames + 1)
{
    trace_.bins = canceller_.bins();
    if (options.levelControl) levelControl_.emplace();
}

void SendPath::process(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
                       std::span<std::int16_t> cancelled, std::span<std::int16_t> out)
{
    cancel(far, mic, cancelled);
    const bool farOnly = onlyFarEndTalks(far, mic, cancelled);
    trace_.farOnly.push_back(farOnly);
    std::copy(cancelled.begin(), cancelled.end(), out.begin());
    if (levelControl_) controlLevel(farOnly, out);
}

void SendPath::cancel(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
                      std::span<std::int16_t> out)
{
    const std::size_t hop = canceller_.hop();
    std::vector<float> farHop(hop), micHop(hop), outHop(hop);
    for (std::size_t n = 0; n < mic.size(); n += hop) {
        std::copy_n(far.begin() + static_cast<std::ptrdiff_t>(n), hop, farHop.begin());
        std::copy_n(mic.begin() + static_cast<std::ptrdiff_t>(n), hop, micHop.begin());
        canceller_.process(farHop, micHop, outHop);
        std::transform(outHop.begin(), outHop.end(), out.begin() + static_cast<std::ptrdiff_t>(n),
                       [](float x) {
                           return static_cast<std::int16_t>(
                               std::lrintf(std::clamp(x, -32768.0F, 32767.0F)));
                       });
        const EchoCancellerStatus& status = canceller_.status();
        const double seconds = static_cast<double>(hop * ++hops_) / rate_;
        markTones(status.farTone, status.micTone, status.restarted, seconds);
    }
    trace_.adaptFactor.push_back(canceller_.status().adaptFactor);
    trace_.bypassed.push_back(bypassed_);
    std::vector<float> uncertainty(trace_.bins);
    canceller_.uncertainty(uncertainty);
    for (const float value : uncertainty)
        trace_.uncertaintyDb.push_back(static_cast<float>(signals::decibels(value)));
}

void SendPath::markTones(bool farTone, bool micTone, bool restarted, double seconds)
{
    const bool bypassed = canceller_.status().bypassed;
    if (bypassed && !bypassed_)
        trace_.marks.push_back({seconds, farTone ? "tone from far" : "tone from near"});
    else if (farTone || micTone)
        trace_.marks.push_back({seconds, "reversal"});
    if (!bypassed && bypassed_) trace_.marks.push_back({seconds, "on again"});
    if (restarted) trace_.marks.push_back({seconds, "restart"});
    bypassed_ = bypassed;
}

// The canceller has taken away nearly all of what the microphone heard while the far end talked.
bool SendPath::onlyFarEndTalks(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
                               std::span<const std::int16_t> out)
{
    constexpr double kFarTalks = 1e-5; // -50 dBFS
    constexpr double kNearlyAll = 0.1;
    farPower_ = std::max(power(far), smoothed(farPower_, 0.0));
    outPower_ = smoothed(outPower_, power(out));
    std::rotate(micPowers_.begin(), micPowers_.begin() + 1, micPowers_.end());
    micPowers_.back() = smoothed(micPowers_[kLateFrames - 1], power(mic));
    return farPower_ > kFarTalks && outPower_ < kNearlyAll * micPowers_.front();
}

// Level control must not raise what is left of the echo, nor touch data.
void SendPath::controlLevel(bool farOnly, std::span<std::int16_t> samples)
{
    constexpr double kMaxGainDb = 11.6; // the level control's own
    if (bypassed_) {
        trace_.gainDb.push_back(0);
        return;
    }
    levelControl_->setMaxGain(farOnly ? 0 : kMaxGainDb);
    levelControl_->process(samples, samples);
    const double gain = levelControl_->state().gain;
    trace_.gainDb.push_back(static_cast<float>(signals::decibels(gain * gain)));
}

SendPathRun runSendPath(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
                        const SendPathOptions& options, const std::string& progressLabel)
{
    SendPath path(options);
    const std::size_t frame = path.frame();
    const std::size_t total = (mic.size() + path.delay() + frame - 1) / frame * frame;
    std::vector<std::int16_t> farPadded(far.begin(), far.end()), micPadded(mic.begin(), mic.end());
    farPadded.resize(total);
    micPadded.resize(total);
    std::vector<std::int16_t> cancelled(total), out(total);
    Progress progress(progressLabel, total);
    for (std::size_t n = 0; n < total; n += frame) {
        path.process(std::span(farPadded).subspan(n, frame), std::span(micPadded).subspan(n, frame),
                     std::span(cancelled).subspan(n, frame), std::span(out).subspan(n, frame));
        progress.update(n + frame);
    }
    for (auto* signal : {&cancelled, &out}) {
        signal->erase(signal->begin(), signal->begin() + static_cast<std::ptrdiff_t>(path.delay()));
        signal->resize(mic.size());
    }
    return {std::move(cancelled), std::move(out), path.trace()};
}

} // namespace zsp::host
