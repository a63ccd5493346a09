// zsp aec: removes the far end's echo from a microphone's signal.

#include "tools/zsp/cli/values.hpp"
#include "tools/zsp/commands/commands.hpp"

#include "tools/zsp/io/audio.hpp"
#include "tools/zsp/io/audio_writer.hpp"
#include "tools/zsp/io/progress.hpp"
#include "tools/zsp/io/text.hpp"
#include "tools/zsp/report/call_charts.hpp"
#include "tools/zsp/report/report.hpp"
#include "tools/zsp/report/sound_clip.hpp"
#include "tools/zsp/voice/send_path.hpp"

#include <array>
#include <cmath>
#include <cstdio>
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

const char* onOrOff(bool on)
{
    return on ? "on" : "off";
}

/// What a report says and plays of a signal.
struct Side {
    Side(const std::string& path, int rate) : history(rate), clip(path, rate) {}

    void add(std::span<const std::int16_t> samples)
    {
        history.add(samples);
        clip.add(samples);
    }

    SignalHistory history;
    SoundClip clip;
};

struct Sides {
    Side far, mic, output;
};

void writeReport(const AecOptions& options, int rate, const Sides& sides,
                 const SendPathTrace& trace, const MeasuredLoss& loss)
{
    const CallCharts charts{.rate = rate,
                            .far = sides.far.history,
                            .mic = sides.mic.history,
                            .out = sides.output.history,
                            .trace = trace,
                            .echoLoss = loss.points(),
                            .echoLossNote = "Enhancement: microphone over output per 100 ms, where "
                                            "only the far end seems to talk."};
    const auto mean = loss.mean();
    Report report("Echo cancellation",
                  format("%s against the far end %s: %.1f s at %d kHz, %d ms tail, suppressor %s.",
                         options.mic.c_str(), options.far.c_str(), sides.mic.history.seconds(),
                         rate / 1000, options.tailMs, onOrOff(options.suppressor)));
    report.tiles({{mean ? format("%.1f dB", *mean) : "-", "mean echo loss enhancement"},
                  {onOrOff(options.suppressor), "suppressor"},
                  {format("%.1f dBFS", sides.mic.history.levelDbfs()), "microphone"},
                  {format("%.1f dBFS", sides.output.history.levelDbfs()), "output"}});
    report.players({sides.far.clip.player("Far end", options.report),
                    sides.mic.clip.player("Microphone", options.report),
                    sides.output.clip.player("Output", options.report)});
    charts.addTo(report);
    report.write(options.report);
}

void runAec(const AecOptions& options)
{
    requireDistinct(std::array{options.far, options.mic},
                    std::array{options.output, options.report});
    AudioReader micReader(options.mic), farReader(options.far);
    const int rate = voiceRate(micReader.rate());
    VoiceInput mic(micReader, rate), far(farReader, rate);
    SendPath path({.echo = {.sampleRate = rate,
                            .tailMs = options.tailMs,
                            .suppressor = options.suppressor ? zspvOn : zspvOff},
                   .levelControl = options.levelControl});
    AudioWriter writer(options.output, options.format, std::nullopt, rate);
    MeasuredLoss loss(rate);
    std::optional<Sides> sides; // for a report
    if (!options.report.empty())
        sides.emplace(
            Sides{Side(options.far, rate), Side(options.mic, rate), Side(options.output, rate)});
    Progress progress("aec", mic.total());
    std::uint64_t done = 0;
    const auto read = [](VoiceInput& input) {
        return [&input](std::span<std::int16_t> samples) { return input.read(samples); };
    };
    streamSendPath(path, read(far), read(mic), [&](const SendPathBlock& block) {
        writer.write(block.output);
        loss.add(block);
        if (sides) {
            sides->far.add(block.far);
            sides->mic.add(block.mic);
            sides->output.add(block.output);
        }
        progress.update(done += block.mic.size());
    });
    // A far end that goes on is read to its end, where damage shows.
    for (std::array<std::int16_t, 4096> rest; far.read(rest) == rest.size();) {
    }
    writer.commit();
    if (sides) writeReport(options, rate, *sides, path.trace(), loss);
    const auto mean = loss.mean();
    std::fprintf(stderr, "zsp aec: echo %s, suppressor %s; %.1f s at %d Hz\n",
                 mean ? format("%.1f dB less while the far end talks", *mean).c_str()
                      : "nowhere alone",
                 onOrOff(options.suppressor), static_cast<double>(done) / rate, rate);
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
