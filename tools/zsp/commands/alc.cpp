// zsp alc: brings the speech of a file to a level.

#include "tools/zsp/cli/values.hpp"
#include "tools/zsp/commands/commands.hpp"

#include "tools/zsp/io/audio.hpp"
#include "tools/zsp/io/audio_writer.hpp"
#include "tools/zsp/io/progress.hpp"
#include "tools/zsp/io/text.hpp"
#include "tools/zsp/report/level_charts.hpp"
#include "tools/zsp/report/report.hpp"
#include "tools/zsp/report/sound_clip.hpp"
#include "tools/zsp/voice/level_control.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

namespace zsp::host {

namespace {

struct AlcOptions {
    std::string input, output;
    const AudioFormat* format = nullptr; // of both
    LevelSettings levels;
    bool gainGiven = false, levelsGiven = false;
    std::string report; // empty for none
};

void writeReport(const AlcOptions& options, const LevelHistory& history, const SoundClip& before,
                 const SoundClip& after)
{
    const LevelSettings& levels = options.levels;
    Report report(
        "Automatic level control",
        format("%s, %.1f s, through the G.169 level control: target %.1f dB and peak %.1f "
               "dB below full scale, largest gain %.1f dB.",
               options.input.c_str(), history.seconds(), levels.targetDb, levels.peakDb,
               levels.maxGainDb));
    report.tiles({{format("%.1f dBFS", history.speechBefore()), "speech before"},
                  {format("%.1f dBFS", history.speechAfter()), "speech after"},
                  {format("%.1f dBFS", 0 - levels.targetDb), "target"},
                  {format("%.1f dBFS", 0 - levels.peakDb), "peak"},
                  {format("%.1f dB", levels.maxGainDb), "largest gain"}});
    report.players(
        {before.player("Before", options.report), after.player("After", options.report)});
    report.charts("Input, output, levels, gain", history.charts(), LevelHistory::note());
    report.write(options.report);
}

void runAlc(const AlcOptions& options)
{
    requireDistinct({&options.input, 1}, std::array{options.output, options.report});
    AudioReader reader(options.input, options.format);
    VoiceInput input(reader, voiceRate(reader.rate()));
    if (input.rate() != 8000)
        std::fprintf(stderr,
                     "zsp: %s: at %d Hz the control's times are half of what they are at "
                     "8000 Hz\n",
                     options.input.c_str(), input.rate());
    LevelControl control;
    if (options.gainGiven) control.setMaxGain(options.levels.maxGainDb);
    if (options.levelsGiven) control.setLevels(options.levels.targetDb, options.levels.peakDb);
    AudioWriter writer(options.output, options.format, std::nullopt, input.rate());
    LevelHistory history(input.rate(), options.levels);
    SoundClip before(options.input, input.rate()), after(options.output, input.rate());
    Progress progress("alc", input.total());

    std::vector<std::int16_t> in(LevelHistory::frame(input.rate())), out(in.size());
    std::uint64_t done = 0;
    for (std::size_t count = in.size(); count == in.size();) {
        count = input.read(in);
        if (count == 0) break;
        std::fill(in.begin() + static_cast<std::ptrdiff_t>(count), in.end(), std::int16_t{0});
        control.process(in, out);
        const auto read = std::span(in).first(count), made = std::span(out).first(count);
        writer.write(made);
        history.add(read, made, control);
        before.add(read);
        after.add(made);
        progress.update(done += count);
    }
    writer.commit();
    if (!options.report.empty()) writeReport(options, history, before, after);
    std::fprintf(stderr, "zsp alc: %s\n", history.summary().c_str());
}

} // namespace

Command alcCommand()
{
    const auto options = std::make_shared<AlcOptions>();
    const auto level = [](double& target, bool& given, double most, const char* unit) {
        return takeNumber(0, most, unit, [target = &target, given = &given](double db) {
            *target = db;
            *given = true;
        });
    };
    return {
        .name = "alc",
        .summary = "Bring speech to a level, ITU-T G.169",
        .description =
            "The control is made for 8 kHz and works at 16 kHz too, with half its time "
            "constants; signals at other rates are converted to one of the two. The gain "
            "follows the syllables.",
        .files = {{"IN"},
                  "OUT",
                  "IN is an audio file, - for standard input; channels are mixed down "
                  "to one."},
        .options =
            {{"--max-gain", 0, "DB", "Largest gain, 0 to 60 dB (default: 11.6)",
              level(options->levels.maxGainDb, options->gainGiven, 60, " dB")},
             {"--target", 0, "DB",
              "Speech level to reach, 0 to 90 dB below full scale (default: 26.1)",
              level(options->levels.targetDb, options->levelsGiven, 90, " dB below full scale")},
             {"--peak", 0, "DB", "Largest output, 0 to 90 dB below full scale (default: 0)",
              level(options->levels.peakDb, options->levelsGiven, 90, " dB below full scale")},
             formatOption(options->format),
             {"--report", 0, "FILE", "HTML page with levels and gain over time",
              takeText(options->report)}},
        .examples = "  zsp alc speech.wav level.wav\n"
                    "  zsp alc --target 20 --report levels.html speech.wav level.wav\n",
        .run = [options](const Files& files) {
            requireProcessor();
            options->input = files.inputs[0];
            options->output = files.output;
            runAlc(*options);
        }};
}

} // namespace zsp::host
