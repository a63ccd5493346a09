// zsp aec: removes the far end's echo from a microphone's signal.

#include "tools/zsp/cli/values.hpp"
#include "tools/zsp/commands/commands.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/io/audio.hpp"
#include "tools/zsp/io/audio_writer.hpp"
#include "tools/zsp/io/text.hpp"
#include "tools/zsp/report/call_charts.hpp"
#include "tools/zsp/report/report.hpp"
#include "tools/zsp/report/sound_clip.hpp"
#include "tools/zsp/voice/send_path.hpp"

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>

namespace zsp::host {

namespace {

struct AecOptions {
    std::string far, mic, output;
    const AudioFormat* format = nullptr; // of the output
    int tailMs = 128;
    bool suppressor = false, levelControl = false;
    std::string report; // empty for none
};

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

/// Mean of the points that are numbers.
std::optional<double> meanOf(std::span<const Point> points)
{
    double sum = 0;
    int count = 0;
    for (const Point& point : points) {
        if (std::isnan(point.y)) continue;
        sum += point.y;
        ++count;
    }
    return count > 0 ? std::optional(sum / count) : std::nullopt;
}

const char* onOrOff(bool on)
{
    return on ? "on" : "off";
}

void writeReport(const AecOptions& options, const Audio& far, const Audio& mic,
                 const SendPathRun& run, const std::vector<Point>& loss)
{
    CallCharts charts{.rate = mic.rate,
                      .far = far.samples,
                      .mic = mic.samples,
                      .out = run.output,
                      .trace = &run.trace,
                      .echoLoss = loss,
                      .echoLossNote = "Enhancement: microphone over output per 100 ms, where only "
                                      "the far end seems to talk."};
    const auto mean = meanOf(loss);
    Report report("Echo cancellation",
                  format("%s against the far end %s: %.1f s at %d kHz, %d ms tail, suppressor %s.",
                         options.mic.c_str(), options.far.c_str(), mic.seconds(), mic.rate / 1000,
                         options.tailMs, onOrOff(options.suppressor)));
    report.tiles({{mean ? format("%.1f dB", *mean) : "-", "mean echo loss enhancement"},
                  {onOrOff(options.suppressor), "suppressor"},
                  {format("%.1f dBFS", signals::levelDbfs(mic.samples)), "microphone"},
                  {format("%.1f dBFS", signals::levelDbfs(run.output)), "output"}});
    std::vector<Report::Player> players;
    const auto play = [&](const std::string& path, std::span<const std::int16_t> samples,
                          const char* label) {
        SoundClip clip(path, mic.rate);
        clip.add(samples);
        players.push_back(clip.player(label, options.report));
    };
    play(options.far, far.samples, "Far end");
    play(options.mic, mic.samples, "Microphone");
    play(options.output, run.output, "Output");
    report.players(players);
    charts.addTo(report);
    report.write(options.report);
}

void runAec(const AecOptions& options)
{
    requireDistinct(std::array{options.far, options.mic},
                    std::array{options.output, options.report});
    AudioReader micReader(options.mic), farReader(options.far);
    const int rate = voiceRate(micReader.rate());
    const Audio mic = readMono(micReader, rate);
    Audio far = readMono(farReader, rate);
    const SendPathRun run =
        runSendPath(far.samples, mic.samples,
                    {.echo = {.sampleRate = mic.rate,
                              .tailMs = options.tailMs,
                              .suppressor = options.suppressor ? zspvOn : zspvOff},
                     .levelControl = options.levelControl},
                    "aec");
    AudioWriter writer(options.output, options.format, std::nullopt, mic.rate);
    writer.write(run.output);
    writer.commit();
    const std::vector<Point> loss = measuredLoss(mic, run);
    if (!options.report.empty()) {
        far.samples.resize(mic.samples.size());
        writeReport(options, far, mic, run, loss);
    }
    const auto mean = meanOf(loss);
    std::fprintf(stderr, "zsp aec: echo %s, suppressor %s; %.1f s at %d Hz\n",
                 mean ? format("%.1f dB less while the far end talks", *mean).c_str()
                      : "nowhere alone",
                 onOrOff(options.suppressor), mic.seconds(), mic.rate);
}

} // namespace

Command aecCommand()
{
    const auto options = std::make_shared<AecOptions>();
    const std::vector<std::pair<std::string, bool>> onOff = {{"on", true}, {"off", false}};
    return {
        .name = "aec",
        .summary = "Remove the echo of the far end from a microphone's or line's signal",
        .files = {{"FAR", "MIC"},
                  "OUT",
                  "FAR is what the loudspeaker or line was given, MIC what came back; - for "
                  "standard input. Both are mixed down to one channel and converted to 16 kHz, or "
                  "to 8 kHz where MIC is sampled at that. OUT is in time with MIC and as long."},
        .options = {{"--far", 0, "FILE", "FAR, instead of naming it first", takeText(options->far)},
                    {"--mic", 0, "FILE", "MIC, instead of naming it", takeText(options->mic)},
                    {"--tail", 't', "MS", "Longest echo, 8 to 512 ms (default: 128)",
                     takeNumber(8, 512, " ms",
                                [options](double ms) {
                                    options->tailMs = static_cast<int>(std::lround(ms));
                                })},
                    {"--suppressor", 0, "on|off", "Attenuate what the filters leave (default: off)",
                     takeChoice(onOff, options->suppressor)},
                    {"--alc", 0, "on|off", "Level control after it (default: off)",
                     takeChoice(onOff, options->levelControl)},
                    formatOption(options->format),
                    {"--report", 0, "FILE", "HTML page with what was done",
                     takeText(options->report)}},
        .examples = "  zsp aec far.wav mic.wav clean.wav\n"
                    "  zsp aec far.wav mic.wav -o clean.wav --suppressor on --report echo.html\n",
        .inputsByOption =
            [options] {
                return static_cast<std::size_t>(!options->far.empty()) +
                       static_cast<std::size_t>(!options->mic.empty());
            },
        .run =
            [options](const Files& files) {
                requireProcessor();
                auto next = files.inputs.begin();
                for (std::string* side : {&options->far, &options->mic})
                    if (side->empty()) *side = *next++;
                options->output = files.output;
                runAec(*options);
            }};
}

} // namespace zsp::host
