// The demo's G.726 part: the speech at all four rates.

#include "demo.hpp"

#include "g726_codec.hpp"
#include "measure.hpp"
#include "text.hpp"

#include <cmath>
#include <cstdio>

namespace zsp::host {

namespace {

constexpr int kRate = 8000;
constexpr std::size_t kColumns = 824; // of a spectrogram
constexpr double kFloorDb = -100, kCeilingDb = -20;

/// One rate's outcome.
struct Run {
    int kbit = 0;
    std::vector<std::int16_t> decoded, error;
    double snr = 0, segmentalSnr = 0, encodeSpeed = 0, decodeSpeed = 0;
};

Run codeAt(int kbit, const Audio& speech)
{
    const std::vector<std::int16_t>& in = speech.samples;
    Run run;
    run.kbit = kbit;
    run.decoded.resize(in.size());
    std::vector<std::uint8_t> codes(in.size());
    run.encodeSpeed = timesRealTime(speech.seconds(), [&] { G726Encoder(kbit).encode(in, codes); });
    run.decodeSpeed = timesRealTime(
        speech.seconds(), [&] { G726Decoder(kbit, G726Law::linear).decode(codes, run.decoded); });
    run.error = difference(in, run.decoded);
    run.snr = snrDb(in, run.decoded);
    run.segmentalSnr = segmentalSnrDb(in, run.decoded, kRate);
    return run;
}

Chart spectrogramChart(const Axis& time, const std::string& caption,
                       std::span<const std::int16_t> samples, int height)
{
    Chart chart(time, {"kHz", 0, kRate / 2000.0}, height);
    chart.caption(caption);
    chart.heatMap(spectrogram(samples, kRate, kColumns), kFloorDb, kCeilingDb, "dBFS");
    return chart;
}

} // namespace

void demoG726(const Audio& speech, const std::string& directory, Report& report)
{
    std::vector<Run> runs;
    for (const int kbit : kG726Rates)
        runs.push_back(codeAt(kbit, speech));

    std::printf(
        "\nG.726\n  kbit/s   SNR dB   segmental dB   encode x real time   decode x real time\n");
    std::vector<std::vector<std::string>> rows = {
        {"Rate", "SNR", "Segmental SNR", "Encoding", "Decoding"}};
    std::vector<Report::Player> players = {{"input-8k.wav", "Input"}};
    writeWav(directory + "/input-8k.wav", speech.samples, kRate);
    for (const Run& run : runs) {
        std::printf("  %6d %8.2f %14.2f %20.0f %20.0f\n", run.kbit, run.snr, run.segmentalSnr,
                    run.encodeSpeed, run.decodeSpeed);
        rows.push_back({format("%d kbit/s", run.kbit), format("%.2f dB", run.snr),
                        format("%.2f dB", run.segmentalSnr),
                        format("%.0f × real time", run.encodeSpeed),
                        format("%.0f × real time", run.decodeSpeed)});
        const std::string file = format("g726-%d.wav", run.kbit);
        writeWav(directory + "/" + file, run.decoded, kRate);
        players.push_back({file, format("Decoded, %d kbit/s", run.kbit)});
    }

    report.section("G.726 ADPCM, 16 to 40 kbit/s",
                   "Telephone speech at 8 kHz. Every further bit per sample buys speech some 4 to 6 dB.");
    report.table(rows,
                 "Segmental SNR: mean over the 20 ms segments above -55 dBFS, each limited to "
                 "-10..45 dB. Speed: on one core of this machine.");
    report.players(players);

    const Axis time{"time, s", 0, speech.seconds()};
    const Axis above{"", time.low, time.high, false};
    std::vector<Chart> input;
    input.emplace_back(above, Axis{"of full scale", -1, 1}, 110);
    input.back().waveform(speech.samples, kRate, 1);
    input.back().caption("Waveform");
    input.push_back(spectrogramChart(time, "Spectrogram", speech.samples, 150));
    report.charts("Input", input);

    Chart ratio(time, {"SNR, dB", 0, 50}, 240);
    int colour = 0;
    for (const Run& run : runs) {
        constexpr std::size_t kSegment = kRate / 5;
        const std::vector<double> values = snrOverTime(speech.samples, run.decoded, kSegment);
        std::vector<Point> points;
        for (std::size_t i = 0; i < values.size(); ++i)
            points.push_back({(static_cast<double>(i) + 0.5) * kSegment / kRate, values[i]});
        ratio.line(points, ++colour, format("%d kbit/s", run.kbit));
    }
    report.chart("Signal-to-noise ratio over time", ratio,
                 "Per 200 ms; pauses, below -55 dBFS, are left out.");

    std::vector<Chart> errors;
    for (const Run& run : runs)
        errors.push_back(spectrogramChart(run.kbit == 40 ? time : above,
                                          format("%d kbit/s", run.kbit), run.error, 90));
    report.charts("Spectrogram of the error", errors,
                  "Input minus decoded, on the scale of the input's spectrogram. The noise follows "
                  "the speech and falls with every bit.");
}

} // namespace zsp::host
