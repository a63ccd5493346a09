// Draws target, level and gain of the level control.

#include "tools/zsp/report/level_charts.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/io/text.hpp"
#include "zspsc/alc_g169.h"

#include <algorithm>
#include <cmath>

namespace zsp::host {

namespace {

constexpr double kSpeechDbfs = -45, kFloorDbfs = -90;

/// A mean magnitude or root mean square of samples in dBFS.
double amplitudeDb(float amplitude)
{
    return std::max(2 * signals::decibels(amplitude, 32768.0), kFloorDbfs);
}

double power(std::span<const std::int16_t> samples)
{
    return std::pow(10.0, signals::levelDbfs(samples) / 10);
}

double intervalOf(int rate)
{
    return static_cast<double>(LevelHistory::frame(rate)) / rate;
}

} // namespace

LevelHistory::LevelHistory(int rate, const LevelSettings& settings)
    : rate_(rate), settings_(settings), before_(rate), after_(rate), inputDb_(intervalOf(rate)),
      speechDb_(intervalOf(rate)), noiseDb_(intervalOf(rate)), gainDb_(intervalOf(rate))
{
}

std::size_t LevelHistory::frame(int rate)
{
    return std::max<std::size_t>(static_cast<std::size_t>(rate) / 400, 1) * LevelControl::kBlock;
}

void LevelHistory::add(std::span<const std::int16_t> before, std::span<const std::int16_t> after,
                       const LevelControl& control)
{
    samples_ += before.size();
    before_.add(before);
    after_.add(after);
    const ZspAlcState_G169& state = control.state();
    const double level = signals::levelDbfs(before);
    inputDb_.add(std::max(level, kFloorDbfs));
    speechDb_.add(amplitudeDb(state.rmsLevel));
    noiseDb_.add(amplitudeDb(state.noiseLevel));
    const double gain = std::max(2 * signals::decibels(state.gain), -40.0);
    gainDb_.add(gain);
    if (level < kSpeechDbfs) return;
    powerBefore_ += power(before);
    powerAfter_ += power(after);
    leastGainDb_ = std::min(leastGainDb_, gain);
    ++speechFrames_;
}

double LevelHistory::seconds() const
{
    return static_cast<double>(samples_) / rate_;
}

double LevelHistory::speechBefore() const
{
    return signals::decibels(powerBefore_ /
                             static_cast<double>(std::max<std::uint64_t>(speechFrames_, 1)));
}

double LevelHistory::speechAfter() const
{
    return signals::decibels(powerAfter_ /
                             static_cast<double>(std::max<std::uint64_t>(speechFrames_, 1)));
}

std::string LevelHistory::summary() const
{
    if (speechFrames_ == 0)
        return format("%.1f s, nothing above %.0f dBFS", seconds(), kSpeechDbfs);
    return format("%.1f s, speech at %.1f dBFS is now at %.1f dBFS (target %.1f); gain %+.1f to "
                  "%+.1f dB",
                  seconds(), speechBefore(), speechAfter(), -settings_.targetDb, leastGainDb_,
                  gainDb_.largest());
}

std::vector<Chart> LevelHistory::charts() const
{
    const Axis time{"time, s", 0, seconds()}, above{"", 0, seconds(), false};
    std::vector<Chart> charts;
    const auto wave = [&](const Envelope& envelope, int colour, const char* caption) {
        charts.emplace_back(above, Axis{"of full scale", -1, 1}, 90);
        charts.back().caption(caption);
        charts.back().waveform(envelope, colour);
    };
    wave(before_, 1, "Input");
    wave(after_, 3, "Output");
    charts.emplace_back(above, Axis{"dBFS", kFloorDbfs, 0}, 140);
    charts.back().caption("Levels");
    charts.back().line(inputDb_.points(), 1, "input, 20 ms");
    charts.back().line(speechDb_.points(), 4, "speech level");
    charts.back().line(noiseDb_.points(), 2, "noise level");
    charts.back().level(-settings_.targetDb, 6, "target");
    const double top =
        10 * std::ceil(std::max({gainDb_.largest(), settings_.maxGainDb, 10.1}) / 10);
    charts.emplace_back(time, Axis{"dB", -20, top}, 110);
    charts.back().caption("Gain");
    charts.back().line(gainDb_.points(), 5);
    charts.back().level(settings_.maxGainDb, 6, "largest allowed");
    return charts;
}

const char* LevelHistory::note()
{
    return "Levels of speech and noise are the control's own estimates. As the standard's text has "
           "it, the gain follows the syllables: it moves by several dB within some 20 ms, up in "
           "weak sounds and down in strong ones, rather than holding one value for a talker.";
}

} // namespace zsp::host
