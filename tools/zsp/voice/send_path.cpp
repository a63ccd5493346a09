// Runs the canceller and the level control over a call and notes what they did.

#include "tools/zsp/voice/send_path.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/progress.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace zsp::host {

namespace {

constexpr std::int32_t kMaxBins = 33;

double smoothed(double old, double fresh)
{
    return 0.8 * old + 0.2 * fresh;
}

double power(std::span<const std::int16_t> samples)
{
    return std::pow(10.0, signals::levelDbfs(samples) / 10);
}

} // namespace

SendPath::SendPath(const SendPathOptions& options) : rate_(options.echo.sampleRate)
{
    ZspvEchoConfig config{};
    config.structSize = sizeof config;
    config.sampleRate = rate_;
    config.tailMs = options.echo.tailMs;
    config.suppressor = options.echo.suppressor;
    ZspvEcho* echo = nullptr;
    require(zspvEchoCreate(&config, &echo), "zspvEchoCreate");
    canceller_.reset(echo);
    std::int32_t delay = 0, bins = 0;
    require(zspvEchoGetDelay(echo, &delay), "zspvEchoGetDelay");
    delay_ = static_cast<std::size_t>(delay);
    std::array<float, kMaxBins> uncertainty;
    require(zspvEchoGetUncertainty(echo, uncertainty.data(), kMaxBins, &bins),
            "zspvEchoGetUncertainty");
    trace_.bins = static_cast<std::size_t>(bins);
    metrics_.structSize = sizeof metrics_;
    if (options.levelControl) levelControl_.emplace();
}

void SendPath::process(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
                       std::span<std::int16_t> cancelled, std::span<std::int16_t> out)
{
    cancel(far, mic, cancelled);
    const bool farOnly = onlyFarEndTalks(far);
    trace_.farOnly.push_back(farOnly);
    std::copy(cancelled.begin(), cancelled.end(), out.begin());
    if (levelControl_) controlLevel(farOnly, out);
}

void SendPath::cancel(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
                      std::span<std::int16_t> out)
{
    require(zspvEchoProcess(canceller_.get(), far.data(), mic.data(), out.data(),
                            static_cast<std::int32_t>(mic.size())),
            "zspvEchoProcess");
    ZspvEchoMetrics metrics = metrics_;
    require(zspvEchoGetMetrics(canceller_.get(), &metrics), "zspvEchoGetMetrics");
    mark(metrics);
    metrics_ = metrics;
    trace_.adaptFactor.push_back(metrics.adaptFactor);
    trace_.bypassed.push_back(metrics.bypassed != 0);
    std::array<float, kMaxBins> uncertainty;
    std::int32_t bins = 0;
    require(zspvEchoGetUncertainty(canceller_.get(), uncertainty.data(), kMaxBins, &bins),
            "zspvEchoGetUncertainty");
    for (std::size_t b = 0; b < trace_.bins; ++b)
        trace_.uncertaintyDb.push_back(static_cast<float>(signals::decibels(uncertainty[b])));
}

void SendPath::mark(const ZspvEchoMetrics& metrics)
{
    const double seconds = static_cast<double>(metrics.framesProcessed) / 100;
    if (metrics.bypassed > metrics_.bypassed) trace_.marks.push_back({seconds, "tone"});
    if (metrics.bypassed < metrics_.bypassed) trace_.marks.push_back({seconds, "on again"});
    if (metrics.restarts > metrics_.restarts) trace_.marks.push_back({seconds, "restart"});
}

bool SendPath::onlyFarEndTalks(std::span<const std::int16_t> far)
{
    constexpr double kFarTalks = 1e-5; // -50 dBFS
    farPower_ = std::max(power(far), smoothed(farPower_, 0.0));
    return farPower_ > kFarTalks && metrics_.doubleTalk == 0 && metrics_.bypassed == 0;
}

// Level control must not raise what is left of the echo, nor touch data.
void SendPath::controlLevel(bool farOnly, std::span<std::int16_t> samples)
{
    constexpr double kMaxGainDb = 11.6; // the level control's own
    if (metrics_.bypassed != 0) {
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
