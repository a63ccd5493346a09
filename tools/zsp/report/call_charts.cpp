// Charts of a call: signals, echo loss, adaptation, gain, spectrograms.

#include "tools/zsp/report/call_charts.hpp"

#include "signals/measure.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zsp::host {

namespace {

/// Of 100 ms; not a number where there is no echo.
double echoLoss(std::span<const std::int16_t> echo, std::span<const std::int16_t> left)
{
    constexpr double kSilentDbfs = -60;
    const double level = signals::levelDbfs(echo);
    // What is left cannot be measured below the rounding to words.
    const double rest = std::max(signals::levelDbfs(left), -100.0);
    return level < kSilentDbfs ? std::numeric_limits<double>::quiet_NaN() : level - rest;
}

} // namespace

void SignalHistory::add(std::span<const std::int16_t> samples)
{
    samples_ += samples.size();
    for (const std::int16_t x : samples)
        power_ += 1.0 * x * x;
    envelope_.add(samples);
    spectrogram_.add(samples);
}

double SignalHistory::levelDbfs() const
{
    constexpr double kFullScale = 32768.0 * 32768.0;
    return signals::decibels(power_, kFullScale *
                                         static_cast<double>(std::max<std::uint64_t>(samples_, 1)));
}

std::vector<Point> echoLossOverTime(std::span<const std::int16_t> echo,
                                    std::span<const std::int16_t> left, int rate)
{
    const auto step = static_cast<std::size_t>(rate / 10);
    std::vector<Point> points;
    for (std::size_t n = 0; n + step <= std::min(echo.size(), left.size()); n += step)
        points.push_back({(static_cast<double>(n) + 0.5 * static_cast<double>(step)) / rate,
                          echoLoss(echo.subspan(n, step), left.subspan(n, step))});
    return points;
}

void MeasuredLoss::add(const SendPathBlock& block)
{
    mic_.insert(mic_.end(), block.mic.begin(), block.mic.end());
    cancelled_.insert(cancelled_.end(), block.cancelled.begin(), block.cancelled.end());
    farOnly_.push_back(block.farOnly);
    const auto step = static_cast<std::size_t>(rate_ / 10), frame = step / 10;
    if (mic_.size() < step) return;
    const double middle = (static_cast<double>(start_) + 0.5 * static_cast<double>(step)) / rate_;
    const bool farOnly = farOnly_[static_cast<std::size_t>(middle * 100) - start_ / frame];
    const double loss =
        farOnly ? echoLoss(mic_, cancelled_) : std::numeric_limits<double>::quiet_NaN();
    series_.add(loss);
    if (!std::isnan(loss)) {
        sum_ += loss;
        ++count_;
    }
    start_ += step;
    mic_.clear();
    cancelled_.clear();
    farOnly_.clear();
}

std::optional<double> MeasuredLoss::mean() const
{
    return count_ > 0 ? std::optional(sum_ / static_cast<double>(count_)) : std::nullopt;
}

// Marks that follow one another closely share one text, so that it can be read.
void CallCharts::addMarks(Chart& chart) const
{
    std::vector<SendPathTrace::Mark> marks = events;
    marks.insert(marks.end(), trace.marks.begin(), trace.marks.end());
    std::stable_sort(marks.begin(), marks.end(),
                     [](const auto& a, const auto& b) { return a.seconds < b.seconds; });
    const double close = 0.07 * mic.seconds();
    for (std::size_t i = 0; i < marks.size();) {
        std::string text = marks[i].text;
        std::size_t next = i + 1;
        for (; next < marks.size() && marks[next].seconds < marks[i].seconds + close; ++next) {
            if (text.find(marks[next].text) == std::string::npos) text += ", " + marks[next].text;
            chart.mark(marks[next].seconds, "");
        }
        chart.mark(marks[i].seconds, text);
        i = next;
    }
}

void CallCharts::addTo(Report& report) const
{
    const double seconds = mic.seconds();
    const Axis time{"time, s", 0, seconds}, above{"", 0, seconds, false};
    const auto chart = [&](const Axis& x, const Axis& y, int height, const std::string& caption) {
        Chart result(x, y, height);
        result.caption(caption);
        for (const Range& range : nearTalks)
            result.shade(range.start, range.end, 3);
        return result;
    };
    const auto waveform = [&](const Axis& x, const SignalHistory& signal, int colour,
                              const std::string& caption) {
        Chart result = chart(x, {"of full scale", -1, 1}, 80, caption);
        result.waveform(signal.envelope(), colour);
        return result;
    };
    std::vector<Chart> waves;
    waves.push_back(waveform(above, far, 2, "Far end"));
    waves.push_back(waveform(above, mic, 1, "Microphone"));
    waves.push_back(waveform(above, out, 3, "Output"));
    const std::string shaded = nearTalks.empty() ? "" : " Shaded: the near end talks.";
    std::vector<Chart> work = std::move(waves);

    Chart loss = chart(above, {"dB", -10, 70}, 150, "Echo return loss enhancement");
    loss.line(echoLoss, 5);
    addMarks(loss);
    work.push_back(std::move(loss));

    Chart adaptation(!trace.gainDb ? time : above, {"kHz", 0, rate / 2000.0}, 110);
    adaptation.caption("Adaptation: expected error of the echo path's model");
    adaptation.heatMap(trace.uncertaintyDb.map(), -40, 0, "dB");
    work.push_back(std::move(adaptation));

    if (trace.gainDb) {
        Chart gain = chart(time, {"dB", -30, 15}, 90, "Gain of the level control");
        gain.line(trace.gainDb->points(), 4);
        work.push_back(std::move(gain));
    }
    report.charts("Echo canceller at work", work,
                  echoLossNote + shaded +
                      " Adaptation is dark where the model is good, bright where it knows nothing "
                      "yet, as at the start, after a change, and in bands without far-end signal.");

    std::vector<Chart> spectra;
    const auto addSpectrum = [&](const Axis& x, const SignalHistory& signal,
                                 const std::string& caption) {
        spectra.emplace_back(x, Axis{"kHz", 0, rate / 2000.0}, 100);
        spectra.back().caption(caption);
        spectra.back().heatMap(signal.spectrogram().map(), -100, -20, "dBFS");
    };
    addSpectrum(above, far, "Far end");
    addSpectrum(above, mic, "Microphone");
    addSpectrum(time, out, "Output");
    report.charts("Spectrograms", spectra);
}

} // namespace zsp::host
