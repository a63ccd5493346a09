// zsp aec: removes the far end's echo from a microphone's signal.

#include "tools/zsp/commands/commands.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/text.hpp"
#include "tools/zsp/report/call_charts.hpp"
#include "tools/zsp/report/report.hpp"
#include "tools/zsp/voice/send_path.hpp"

#include <cmath>
#include <cstdio>
#include <limits>

namespace zsp::host {

namespace {

Audio readSide(const std::string& path)
{
    AudioReader reader(path);
    Audio audio = readAsStored(reader);
    if (audio.rate != 8000 && audio.rate != 16000)
        throw Failure(path, format("is sampled at %d Hz; the echo canceller takes 8000 or 16000 Hz",
                                   audio.rate));
    return audio;
}

/// Microphone over output, where only the far end talks: without knowing the echo itself, that is
/// the loss one can measure.
std::vector<Point> measuredLoss(const Audio& mic, const SendPathRun& run)
{
    std::vector<Point> points = echoLossOverTime(mic.samples, run.cancelled, mic.rate);
    for (Point& point : points) {
        const auto frame = static_cast<std::size_t>(std::max(point.x * 100, 0.0));
        if (frame >= run.trace.farOnly.size() || !run.trace.farOnly[frame])
            point.y = std::numeric_limits<double>::quiet_NaN();
    }
    return points;
}

void writeReport(const AecOptions& options, const Audio& far, const Audio& mic,
                 const SendPathRun& run)
{
    CallCharts charts{.rate = mic.rate,
                      .far = far.samples,
                      .mic = mic.samples,
                      .out = run.output,
                      .trace = &run.trace,
                      .echoLoss = measuredLoss(mic, run),
                      .echoLossNote = "Enhancement: microphone over output per 100 ms, where only "
                                      "the far end seems to talk."};
    double sum = 0;
    int count = 0;
    for (const Point& point : charts.echoLoss) {
        if (std::isnan(point.y)) continue;
        sum += point.y;
        ++count;
    }
    Report report("Echo cancellation",
                  format("%s against the far end %s: %.1f s at %d kHz, %d ms tail, suppressor %s.",
                         options.mic.c_str(), options.far.c_str(), mic.seconds(), mic.rate / 1000,
                         options.tailMs, options.suppressor ? "on" : "off"));
    report.tiles({{count > 0 ? format("%.1f dB", sum / count) : "-", "mean echo loss enhancement"},
                  {format("%.1f dBFS", signals::levelDbfs(mic.samples)), "microphone"},
                  {format("%.1f dBFS", signals::levelDbfs(run.output)), "output"}});
    charts.addTo(report);
    report.write(options.report);
}

} // namespace

void runAec(const AecOptions& options)
{
    Audio far = readSide(options.far);
    const Audio mic = readSide(options.mic);
    if (far.rate != mic.rate)
        throw Failure(format("%s is sampled at %d Hz, but %s at %d Hz", options.far.c_str(),
                             far.rate, options.mic.c_str(), mic.rate));
    const SendPathRun run =
        runSendPath(far.samples, mic.samples,
                    {.echo = {.sampleRate = mic.rate,
                              .tailMs = options.tailMs,
                              .suppressor = options.suppressor ? zspvOn : zspvOff},
                     .levelControl = options.levelControl},
                    "aec");
    AudioWriter writer(options.output, Container::automatic, Encoding::linear, mic.rate);
    writer.write(run.output);
    writer.commit();
    if (options.report.empty()) return;
    far.samples.resize(mic.samples.size());
    writeReport(options, far, mic, run);
}

} // namespace zsp::host
