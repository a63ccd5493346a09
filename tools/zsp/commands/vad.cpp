// zsp vad: where there is speech in a file.

#include "tools/zsp/cli/values.hpp"
#include "tools/zsp/commands/commands.hpp"

#include "tools/zsp/io/progress.hpp"
#include "tools/zsp/io/text.hpp"
#include "tools/zsp/report/report.hpp"
#include "tools/zsp/report/sound_clip.hpp"
#include "tools/zsp/voice/vad_track.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <optional>

namespace zsp::host {

namespace {

struct VadOptions {
    std::string input;
    const AudioFormat* format = nullptr;
    ZspvDetector detector = zspvDetectorAmr1;
    bool dtx = false;        // print the frame types of discontinuous transmission
    std::string csv, report; // files, none when empty
};

char letterOf(ZspvFrameKind type)
{
    switch (type) {
    case zspvFrameSpeech:
        return 'S';
    case zspvFrameSidFirst:
        return 'F';
    case zspvFrameSidUpdate:
        return 'U';
    default:
        return '.';
    }
}

void printSegments(const VadTrack& track)
{
    std::printf("   start s     end s  length s\n");
    for (const VadTrack::Segment& segment : track.segments())
        std::printf("%10.2f%10.2f%10.2f\n", segment.start, segment.end,
                    segment.end - segment.start);
    std::printf("activity %.1f %% of %zu frames\n", 100 * track.activity(), track.speech.size());
}

/// A second per line.
void printSchedule(const VadTrack& track)
{
    constexpr std::size_t kLine = 50;
    std::printf("sent frames: S speech, F first comfort noise, U update, . nothing\n");
    for (std::size_t i = 0; i < track.sent.size(); i += kLine) {
        std::string line;
        for (std::size_t k = i; k < std::min(i + kLine, track.sent.size()); ++k)
            line += letterOf(static_cast<ZspvFrameKind>(track.sent[k]));
        std::printf("%8.0f s  %s\n", static_cast<double>(i) * kVadFrame, line.c_str());
    }
    const auto count = [&track](ZspvFrameKind type) {
        return std::count(track.sent.begin(), track.sent.end(), type);
    };
    std::printf("speech %td, first %td, update %td, nothing %td\n", count(zspvFrameSpeech),
                count(zspvFrameSidFirst), count(zspvFrameSidUpdate), count(zspvFrameNoData));
}

std::string csvHeading(const VadTrack& track)
{
    std::string text = "start_s,speech,sent";
    for (const char* kind : {"level", "noise"})
        for (std::size_t band = 0; band + 1 < track.bandEdges.size(); ++band)
            text += format(",%s_%d_Hz_dB", kind, track.bandEdges[band]);
    return text + '\n';
}

std::string csvLine(const VadFrame& frame, std::uint64_t number)
{
    std::string text = format("%.2f,%d,%c", static_cast<double>(number) * kVadFrame,
                              frame.speech ? 1 : 0, letterOf(frame.sent));
    for (const auto values : {frame.levels, frame.noise})
        for (const float value : values)
            text += format(",%.1f", static_cast<double>(value));
    return text + '\n';
}

/// The input, as far as a report shows it.
struct Heard {
    Envelope envelope;
    SoundClip clip;
};

void writeReport(const VadTrack& track, const Heard& heard, double seconds,
                 const VadOptions& options)
{
    Report report("Voice activity", format("%s, %.1f s, by the %s detector.", options.input.c_str(),
                                           seconds, std::string(nameOf(track.kind)).c_str()));
    report.tiles({{format("%.1f %%", 100 * track.activity()), "of the frames are speech"},
                  {std::to_string(track.segments().size()), "segments"},
                  {format("%.1f s", seconds), "of signal"}});
    report.players({heard.clip.player("Input", options.report)});
    const Axis time{"time, s", 0, seconds};
    const Axis above{"", 0, seconds, false};
    std::vector<Chart> charts;
    charts.emplace_back(above, Axis{"of full scale", -1, 1}, 110);
    charts.back().waveform(heard.envelope, 1, "waveform");
    for (const VadTrack::Segment& segment : track.segments())
        charts.back().shade(segment.start, segment.end, 3, "speech");
    charts.push_back(levelChart(track, above));
    charts.push_back(bandChart(track, track.levels, above, "Band levels"));
    charts.push_back(bandChart(track, track.noise, time, "Noise estimate"));
    report.charts("Signal, decision, levels", charts,
                  "Levels and noise estimates are the detector's own, on its own scale; one "
                  "estimate per band of the spectrum.");
    report.write(options.report);
}

void runVad(const VadOptions& options)
{
    requireDistinct({&options.input, 1}, std::array{options.csv, options.report});
    AudioReader reader(options.input, options.format);
    VoiceInput input(reader, 0);
    std::optional<OutputFile> csv;
    std::uint64_t frames = 0;
    VoiceTracker tracker(options.detector, input.rate(), [&](const VadFrame& frame) {
        if (csv) csv->write(csvLine(frame, frames++));
    });
    const VadTrack& track = tracker.track();
    if (!options.csv.empty()) csv.emplace(options.csv).write(csvHeading(track));
    Heard heard{Envelope(input.rate()), SoundClip(options.input, input.rate())};
    Progress progress("vad", input.total());
    std::array<std::int16_t, 4096> block;
    std::uint64_t samples = 0;
    for (std::size_t count = block.size(); count == block.size();) {
        count = input.read(block);
        const auto read = std::span(block).first(count);
        tracker.add(read, count < block.size());
        heard.envelope.add(read);
        heard.clip.add(read);
        progress.update(samples += count);
    }
    const double seconds = static_cast<double>(samples) / input.rate();
    std::printf("%s: %.2f s at %d Hz, %s\n", options.input.c_str(), seconds, input.rate(),
                std::string(nameOf(track.kind)).c_str());
    printSegments(track);
    if (options.dtx) printSchedule(track);
    if (csv) csv->commit();
    if (!options.report.empty()) writeReport(track, heard, seconds, options);
}

} // namespace

Command vadCommand()
{
    const auto options = std::make_shared<VadOptions>();
    return {
        .name = "vad",
        .summary = "Find speech in a file: segments, activity, what a sender would transmit",
        .description =
            "The signal is mixed down to one channel and converted to 8 kHz (amr1, amr2) or "
            "12.8 kHz (amrwb). As in the speech encoders, it is cut below 80 Hz and halved, for "
            "amrwb cut below 50 Hz and emphasised. Pitch and tone flags come from an open-loop "
            "pitch search of that signal; the encoders search perceptually weighted speech, so "
            "their flags may differ.",
        .files = {{"IN"},
                  "[OUT]",
                  "IN is an audio file, - for standard input. OUT is a table in CSV of decision, "
                  "levels and noise estimate per frame of 20 ms, if it is wanted."},
        .options = {{"--detector", 'd', "amr1|amr2|amrwb", "Which detector (default: amr1)",
                     takeChoice<ZspvDetector>({{"amr1", zspvDetectorAmr1},
                                               {"amr2", zspvDetectorAmr2},
                                               {"amrwb", zspvDetectorAmrWb}},
                                              options->detector)},
                    {"--dtx", 0, "",
                     "Print what is sent per frame: S speech, F first comfort-noise frame, U "
                     "update, . nothing",
                     takeSwitch(options->dtx)},
                    formatOption(options->format),
                    {"--csv", 0, "FILE", "The same as OUT", takeText(options->csv)},
                    {"--report", 0, "FILE",
                     "HTML page with waveform, decisions, levels and noise estimate",
                     takeText(options->report)}},
        .examples = "  zsp vad --detector amrwb speech.wav\n"
                    "  zsp vad speech.wav frames.csv --report activity.html\n",
        .run = [options](const Files& files) {
            requireProcessor();
            options->input = files.inputs[0];
            if (!files.output.empty()) options->csv = files.output;
            runVad(*options);
        }};
}

} // namespace zsp::host
