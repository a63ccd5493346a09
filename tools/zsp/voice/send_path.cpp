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
    trace_.uncertaintyDb = MapHistory(static_cast<std::size_t>(bins), SendPathTrace::kFrame);
    metrics_.structSize = sizeof metrics_;
    if (!options.levelControl) return;
    levelControl_.emplace();
    trace_.gainDb.emplace(SendPathTrace::kFrame);
}

bool SendPath::process(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
                       std::span<std::int16_t> cancelled, std::span<std::int16_t> out)
{
    cancel(far, mic, cancelled);
    const bool farOnly = onlyFarEndTalks(far);
    std::copy(cancelled.begin(), cancelled.end(), out.begin());
    if (levelControl_) controlLevel(farOnly, out);
    return farOnly;
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
    std::array<float, kMaxBins> uncertainty;
    std::int32_t bins = 0;
    require(zspvEchoGetUncertainty(canceller_.get(), uncertainty.data(), kMaxBins, &bins),
            "zspvEchoGetUncertainty");
    const auto column = std::span(uncertainty).first(static_cast<std::size_t>(bins));
    for (float& value : column)
        value = static_cast<float>(signals::decibels(value));
    trace_.uncertaintyDb.add(column);
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
        trace_.gainDb->add(0);
        return;
    }
    levelControl_->setMaxGain(farOnly ? 0 : kMaxGainDb);
    levelControl_->process(samples, samples);
    const double gain = levelControl_->state().gain;
    trace_.gainDb->add(signals::decibels(gain * gain));
}

void streamSendPath(SendPath& path, const SampleSource& far, const SampleSource& mic,
                    const std::function<void(const SendPathBlock&)>& take)
{
    const std::size_t frame = path.frame();
    std::vector<std::int16_t> farHeld, micHeld, cancelled, out; // what is not taken yet
    std::vector<bool> farOnly;                                  // per frame of it
    std::size_t early = path.delay();                           // samples of the output to drop
    std::size_t left = 0;                                       // of the microphone, to be taken
    const auto drop = [](auto& values, std::size_t count) {
        values.erase(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count));
    };
    const auto grown = [frame](std::vector<std::int16_t>& samples) {
        samples.resize(samples.size() + frame);
        return std::span(samples).last(frame);
    };
    for (bool ended = false;;) {
        const auto farFrame = grown(farHeld), micFrame = grown(micHeld);
        far(farFrame);
        if (!ended) {
            const std::size_t count = mic(micFrame);
            left += count;
            ended = count < frame;
        }
        if (ended && left == 0) return;
        farOnly.push_back(path.process(farFrame, micFrame, grown(cancelled), grown(out)));
        const std::size_t dropped = std::min(early, frame);
        drop(cancelled, dropped);
        drop(out, dropped);
        early -= dropped;
        for (std::size_t count = 0; (count = std::min(frame, left)) > 0 && out.size() >= count;
             left -= count) {
            take({std::span(farHeld).first(count), std::span(micHeld).first(count),
                  std::span(cancelled).first(count), std::span(out).first(count), farOnly[0]});
            for (auto* samples : {&farHeld, &micHeld, &cancelled, &out})
                drop(*samples, count);
            drop(farOnly, 1);
        }
    }
}

SendPathRun runSendPath(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
                        const SendPathOptions& options, const std::string& progressLabel)
{
    SendPath path(options);
    Progress progress(progressLabel, mic.size());
    SendPathRun run;
    const auto source = [](std::span<const std::int16_t>& left) {
        return [&left](std::span<std::int16_t> samples) {
            const std::size_t count = std::min(samples.size(), left.size());
            std::copy_n(left.begin(), count, samples.begin());
            left = left.subspan(count);
            return count;
        };
    };
    streamSendPath(path, source(far), source(mic), [&](const SendPathBlock& block) {
        run.cancelled.insert(run.cancelled.end(), block.cancelled.begin(), block.cancelled.end());
        run.output.insert(run.output.end(), block.output.begin(), block.output.end());
        progress.update(run.output.size());
    });
    run.trace = path.trace();
    return run;
}

} // namespace zsp::host
