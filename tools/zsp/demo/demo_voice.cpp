// The demo's voice processing: level control, and the voice detectors in noise.

#include "tools/zsp/demo/demo.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/io/text.hpp"
#include "tools/zsp/report/level_charts.hpp"
#include "tools/zsp/voice/level_control.hpp"
#include "tools/zsp/voice/vad_track.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

namespace zsp::host {

namespace {

/// Level of the 20 ms frames that hold speech.
double activeLevelDb(std::span<const std::int16_t> samples, int rate)
{
    const auto length = static_cast<std::size_t>(rate / 50);
    double power = 0;
    int count = 0;
    for (std::size_t i = 0; i + length <= samples.size(); i += length) {
        const double level = signals::levelDbfs(samples.subspan(i, length));
        if (level < -45) continue;
        power += std::pow(10.0, level / 10);
        ++count;
    }
    return signals::decibels(power / std::max(count, 1));
}

/// Speech in noise that falls with frequency, as in a car or a large room; the same at every call.
Audio inNoise(const Audio& speech, double snrDb)
{
    std::mt19937 engine(1);
    std::uniform_real_distribution<double> uniform(-1, 1);
    std::vector<double> noise(speech.samples.size());
    double slow = 0, power = 0;
    for (double& x : noise) {
        const double white = uniform(engine) + uniform(engine) + uniform(engine);
        slow += 0.05 * (white - slow);
        x = slow + 0.05 * white;
        power += x * x;
    }
    power /= static_cast<double>(noise.size());
    const double level = activeLevelDb(speech.samples, speech.rate) - snrDb;
    const double gain = 32768 * std::pow(10.0, level / 20) / std::sqrt(power);
    Audio result = speech;
    for (std::size_t i = 0; i < noise.size(); ++i)
        result.samples[i] = static_cast<std::int16_t>(
            std::clamp(speech.samples[i] + gain * noise[i], -32768.0, 32767.0));
    return result;
}

/// What a detector got right, judged by the level of the clean signal.
struct Score {
    double detected = 0;    ///< of the frames with speech, above -45 dBFS
    double falseAlarms = 0; ///< of the pauses, below -60 dBFS
};

constexpr int kLearning = 2; // seconds of noise alone at the start, not judged

Score scoreOf(const VadTrack& track, const Audio& clean)
{
    const auto length = static_cast<std::size_t>(clean.rate / 50);
    double speech = 0, pauses = 0;
    Score score;
    const std::size_t frames = std::min(track.speech.size(), clean.samples.size() / length);
    for (std::size_t i = kLearning * 50; i < frames; ++i) {
        const double level =
            signals::levelDbfs(std::span(clean.samples).subspan(i * length, length));
        if (level > -45) {
            ++speech;
            score.detected += track.speech[i] ? 1 : 0;
        } else if (level < -60) {
            ++pauses;
            score.falseAlarms += track.speech[i] ? 1 : 0;
        }
    }
    score.detected /= std::max(speech, 1.0);
    score.falseAlarms /= std::max(pauses, 1.0);
    return score;
}

} // namespace

void demoLevel(const Audio& speech, const std::string& directory, Report& report)
{
    // The talker moves away: 12 dB less in the second half.
    Audio input = speech;
    const auto half = input.samples.begin() + static_cast<std::ptrdiff_t>(input.samples.size() / 2);
    std::for_each(half, input.samples.end(),
                  [](std::int16_t& x) { x = static_cast<std::int16_t>(x / 4); });
    Audio output = input;
    LevelControl control;
    LevelHistory history(input.rate, {});
    const std::size_t frame = LevelHistory::frame(input.rate);
    std::vector<std::int16_t> block(frame);
    for (std::size_t at = 0; at < input.samples.size(); at += frame) {
        const std::size_t count = std::min(frame, input.samples.size() - at);
        const auto before = std::span<const std::int16_t>(input.samples).subspan(at, count);
        std::fill(std::copy(before.begin(), before.end(), block.begin()), block.end(), 0);
        control.process(block, block);
        const auto after = std::span<const std::int16_t>(block).first(count);
        std::copy(after.begin(), after.end(),
                  output.samples.begin() + static_cast<std::ptrdiff_t>(at));
        history.add(before, after, control);
    }
    writeWav(directory + "/level-input.wav", input.samples, input.rate);
    writeWav(directory + "/level-output.wav", output.samples, output.rate);

    const auto halfLevels = [](const Audio& audio) {
        const std::span<const std::int16_t> all(audio.samples);
        return std::pair(activeLevelDb(all.first(all.size() / 2), audio.rate),
                         activeLevelDb(all.subspan(all.size() / 2), audio.rate));
    };
    const auto before = halfLevels(input), after = halfLevels(output);
    std::printf("\nG.169 level control: speech of %.1f and %.1f dBFS becomes %.1f and %.1f dBFS\n",
                before.first, before.second, after.first, after.second);
    report.section("G.169 automatic level control",
                   "The wide-band speech, 12 dB quieter in its second half, as when a talker moves "
                   "away. The control aims at 26.1 dB below full scale and amplifies by 11.6 dB at "
                   "most.");
    report.tiles({{format("%.1f dBFS", before.first), "first half before"},
                  {format("%.1f dBFS", before.second), "second half before"},
                  {format("%.1f dBFS", after.first), "first half after"},
                  {format("%.1f dBFS", after.second), "second half after"}});
    report.players({{"level-input.wav", "Before"}, {"level-output.wav", "After"}});
    report.charts("Input, output, levels, gain", history.charts(), LevelHistory::note());
}

void demoVad(const Audio& speech, const std::string& directory, Report& report)
{
    Audio clean = resampled(speech, 16000);
    clean.samples.insert(clean.samples.begin(), kLearning * 16000, 0);
    std::printf("\nVoice activity detection: speech detected / pauses taken for speech\n"
                "  %-18s",
                "");
    std::vector<std::vector<std::string>> rows = {{"Detector"}};
    constexpr std::array kSnrDb = {30.0, 20.0, 10.0};
    for (const double snr : kSnrDb) {
        std::printf("%16s", format("%.0f dB SNR", snr).c_str());
        rows[0].push_back(format("%.0f dB SNR", snr));
    }
    std::printf("\n");

    Audio noisy;
    std::vector<VadTrack> shown; // at the last ratio
    for (const ZspvDetector kind : kDetectors) {
        rows.push_back({std::string(nameOf(kind))});
        std::printf("  %-18s", rows.back()[0].c_str());
        for (const double snr : kSnrDb) {
            noisy = inNoise(clean, snr);
            const VadTrack track = trackVoice(kind, noisy);
            const Score score = scoreOf(track, clean);
            std::printf("  %5.1f / %4.1f %%", 100 * score.detected, 100 * score.falseAlarms);
            rows.back().push_back(
                format("%.1f / %.1f %%", 100 * score.detected, 100 * score.falseAlarms));
            if (snr == kSnrDb.back()) shown.push_back(track);
        }
        std::printf("\n");
    }
    writeWav(directory + "/noisy.wav", noisy.samples, noisy.rate);

    report.section("Voice activity in noise: GSM-AMR options 1 and 2, AMR-WB",
                   "The telephone speech in noise that falls with frequency. The GSM-AMR detectors "
                   "hear it at 8 kHz, the AMR-WB one at 12.8 kHz.");
    report.table(rows, "Frames of speech that were detected / frames of pauses that were taken for "
                       "speech, the hangover after each word included. Speech and pauses are told "
                       "by the level of the clean signal; the first two seconds, of noise "
                       "alone, are left out.");
    report.players({{"noisy.wav", format("Input, %.0f dB SNR", kSnrDb.back())}});
    const Axis time{"time, s", 0, noisy.seconds()};
    const Axis above{"", 0, noisy.seconds(), false};
    std::vector<Chart> charts;
    charts.emplace_back(above, Axis{"of full scale", -1, 1}, 100);
    charts.back().waveform(noisy.samples, noisy.rate, 0, "with noise");
    charts.back().waveform(clean.samples, clean.rate, 1, "clean");
    charts.push_back(decisionChart(shown, above));
    charts.back().caption("Decision");
    for (const VadTrack& track : shown) {
        charts.push_back(levelChart(track, &track == &shown.back() ? time : above));
        charts.back().caption(std::string(nameOf(track.kind)));
    }
    report.charts(format("The three detectors at %.0f dB SNR", kSnrDb.back()), charts,
                  "Below the decisions: level and noise estimate of all bands together, in each "
                  "detector's own unit.");
}

} // namespace zsp::host
