// The demo's coders: the speech through each of them at every rate.

#include "tools/zsp/demo/demo.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/codec/coder.hpp"
#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace zsp::host {

namespace {

constexpr double kFloorDb = -100, kCeilingDb = -20;

/// One rate's outcome.
struct Run {
    double kbit = 0;
    std::vector<std::int16_t> decoded, error;
    double snr = 0, segmentalSnr = 0, encodeSpeed = 0, decodeSpeed = 0;
};

void measure(Run& run, const Audio& speech)
{
    run.error = signals::difference(speech.samples, run.decoded);
    run.snr = signals::snrDb(speech.samples, run.decoded);
    run.segmentalSnr = signals::segmentalSnrDb(speech.samples, run.decoded, speech.rate);
}

Run runCoder(const CodecSetting& setting, const Audio& speech)
{
    Run run;
    run.kbit = setting.bitRate / 1000.0;
    std::vector<std::uint8_t> bytes;
    run.encodeSpeed =
        timesRealTime(speech.seconds(), [&] { bytes = encodedWhole(setting, speech.samples); });
    run.decodeSpeed = timesRealTime(speech.seconds(), [&] {
        run.decoded = decodedInTime(setting, bytes, speech.samples.size());
    });
    measure(run, speech);
    return run;
}

/// Every rate of a family, the lowest first.
std::vector<Run> runFamily(const std::string& family, const Audio& speech)
{
    std::vector<Run> runs;
    for (const ZspvCodec* codec : codecsNamed(family))
        for (const std::int32_t rate :
             std::span(codec->bitRates, static_cast<std::size_t>(codec->bitRateCount)))
            runs.push_back(runCoder({codec, rate}, speech));
    std::sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) { return a.kbit < b.kbit; });
    return runs;
}

Chart spectrogramChart(const Axis& time, const std::string& caption,
                       std::span<const std::int16_t> samples, int rate, int height)
{
    Chart chart(time, {"kHz", 0, rate / 2000.0}, height);
    chart.caption(caption);
    chart.heatMap(Spectrogram(samples, rate).map(), kFloorDb, kCeilingDb, "dBFS");
    return chart;
}

/// Table and sound files.
void addFigures(const std::vector<Run>& runs, const std::string& name, const Audio& speech,
                const std::string& directory, Report& report)
{
    std::printf("  kbit/s   SNR dB   segmental dB   encode x real time   decode x real time\n");
    const std::string input = format("input-%dk.wav", speech.rate / 1000);
    writeWav(directory + "/" + input, speech.samples, speech.rate);
    std::vector<std::vector<std::string>> rows = {
        {"Rate", "SNR, dB", "Segmental SNR, dB", "Encoding", "Decoding"}};
    std::vector<Report::Player> players = {{input, "Input"}};
    for (const Run& run : runs) {
        std::printf("  %6g %8s %14s %20.0f %20.0f\n", run.kbit, ratioText(run.snr, 2).c_str(),
                    ratioText(run.segmentalSnr, 2).c_str(), run.encodeSpeed, run.decodeSpeed);
        rows.push_back({format("%g kbit/s", run.kbit), ratioText(run.snr, 2),
                        ratioText(run.segmentalSnr, 2), format("%.0f × real time", run.encodeSpeed),
                        format("%.0f × real time", run.decodeSpeed)});
        const std::string file = name + format("-%g.wav", run.kbit);
        writeWav(directory + "/" + file, run.decoded, speech.rate);
        players.push_back({file, format("Decoded, %g kbit/s", run.kbit)});
    }
    report.table(rows,
                 "Segmental SNR: mean over the 20 ms segments above -55 dBFS, each limited to "
                 "-10..45 dB. Speed: on one core of this machine.");
    report.players(players);
}

void addCharts(const std::vector<Run>& runs, const Audio& speech, Report& report)
{
    const Axis time{"time, s", 0, speech.seconds()};
    const Axis above{"", time.low, time.high, false};
    std::vector<Chart> input;
    input.emplace_back(above, Axis{"of full scale", -1, 1}, 110);
    input.back().waveform(speech.samples, speech.rate, 1);
    input.back().caption("Waveform");
    input.push_back(spectrogramChart(time, "Spectrogram", speech.samples, speech.rate, 150));
    report.charts("Input", input);

    Chart ratio(time, {"SNR, dB", 0, 50}, 240);
    int colour = 0;
    const auto segment = static_cast<std::size_t>(speech.rate / 5);
    for (const Run& run : runs) {
        const std::vector<double> values =
            signals::snrOverTime(speech.samples, run.decoded, segment);
        std::vector<Point> points;
        for (std::size_t i = 0; i < values.size(); ++i)
            points.push_back({(static_cast<double>(i) + 0.5) / 5, values[i]});
        ratio.line(points, ++colour, format("%g kbit/s", run.kbit));
    }
    report.chart("Signal-to-noise ratio over time", ratio,
                 "Per 200 ms; pauses, below -55 dBFS, are left out.");

    std::vector<Chart> errors;
    for (const Run& run : runs)
        errors.push_back(spectrogramChart(&run == &runs.back() ? time : above,
                                          format("%g kbit/s", run.kbit), run.error, speech.rate,
                                          90));
    report.charts("Spectrogram of the error", errors,
                  "Input minus decoded, on the scale of the input's spectrogram. The noise follows "
                  "the speech and falls with every bit.");
}

} // namespace

void demoG726(const Audio& speech, const std::string& directory, Report& report)
{
    std::printf("\nG.726\n");
    report.section("G.726 ADPCM, 16 to 40 kbit/s",
                   "Telephone speech at 8 kHz. Every further bit per sample buys speech some 4 to "
                   "6 dB.");
    const std::vector<Run> runs = runFamily("g726", speech);
    addFigures(runs, "g726", speech, directory, report);
    addCharts(runs, speech, report);
}

void demoByHearing(const Audio& speech, const std::string& directory, Report& report)
{
    struct Coder {
        const char *title, *family, *heading, *says;
    };
    constexpr Coder kCoders[] = {
        {"GSM full rate", "gsm", "GSM full rate, 13 kbit/s",
         "Telephone speech as a filter and a residual of 13 pulses in 5 ms, for hearing more than "
         "for the ratio to the input."},
        {"G.728", "g728", "G.728 LD-CELP, 16 kbit/s",
         "Telephone speech in vectors of five samples, each one of 1024, through a filter of order "
         "50 that both sides find in what they have decoded: a delay of 0.625 ms. Its post-filter "
         "is for hearing and costs some of the ratio."},
        {"G.723.1", "g7231", "G.723.1, 5.3 and 6.3 kbit/s",
         "Telephone speech in frames of 30 ms: a filter, a past that repeats, and few pulses."}};
    for (const Coder& coder : kCoders) {
        std::printf("\n%s\n", coder.title);
        report.section(coder.heading, coder.says);
        addFigures(runFamily(coder.family, speech), coder.family, speech, directory, report);
    }
}

void demoG722(const Audio& speech, const std::string& directory, Report& report)
{
    std::printf("\nG.722\n");
    report.section("G.722 sub-band ADPCM, 48 to 64 kbit/s",
                   "Wide-band speech at 16 kHz. The lower rates only leave bits of the lower band "
                   "out, so the error above 4 kHz stays. (The bundled speech has been "
                   "through this coder once before, which flatters the figures.)");
    const std::vector<Run> runs = runFamily("g722", speech);
    addFigures(runs, "g722", speech, directory, report);
    addCharts(runs, speech, report);
}

} // namespace zsp::host
