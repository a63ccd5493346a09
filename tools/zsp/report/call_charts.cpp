// Charts of a call: signals, echo loss, adaptation, gain, spectrograms.

#include "tools/zsp/report/call_charts.hpp"

#include "signals/measure.hpp"

#include <algorithm>
#include <limits>

namespace zsp::host {

namespace {

constexpr std::size_t kColumns = 1024; // of a heat map
constexpr double kFrame = 0.01;        // s, of a trace

/// The trace's uncertainty over time and frequency, thinned out to the width of a chart.
HeatMap adaptationMap(const SendPathTrace& trace)
{
    const std::size_t frames = trace.adaptFactor.size();
    const std::size_t columns = std::clamp<std::size_t>(frames, 1, kColumns);
    HeatMap map(columns, trace.bins);
    for (std::size_t c = 0; c < columns; ++c)
        for (std::size_t b = 0; b < trace.bins && frames > 0; ++b)
            map.at(c, b) = trace.uncertaintyDb[c * frames / columns * trace.bins + b];
    return map;
}

std::vector<Point> overFrames(const std::vector<float>& values)
{
    std::vector<Point> points;
    for (std::size_t i = 0; i < values.size(); i += values.size() / 1648 + 1)
        points.push_back({static_cast<double>(i) * kFrame, static_cast<double>(values[i])});
    return points;
}

} // namespace

std::vector<Point> echoLossOverTime(std::span<const std::int16_t> echo,
                                    std::span<const std::int16_t> left, int rate)
{
    constexpr double kSilentDbfs = -60;
    const auto step = static_cast<std::size_t>(rate / 10);
    std::vector<Point> points;
    for (std::size_t n = 0; n + step <= std::min(echo.size(), left.size()); n += step) {
        const double level = signals::levelDbfs(echo.subspan(n, step));
        // What is left cannot be measured below the rounding to words.
        const double rest = std::max(signals::levelDbfs(left.subspan(n, step)), -100.0);
        points.push_back(
            {(static_cast<double>(n) + 0.5 * static_cast<double>(step)) / rate,
             level < kSilentDbfs ? std::numeric_limits<double>::quiet_NaN() : level - rest});
    }
    return points;
}

// Marks that follow one another closely share one text, so that it can be read.
void CallCharts::addMarks(Chart& chart) const
{
    std::vector<SendPathTrace::Mark> marks = events;
    marks.insert(marks.end(), trace->marks.begin(), trace->marks.end());
    std::stable_sort(marks.begin(), marks.end(),
                     [](const auto& a, const auto& b) { return a.seconds < b.seconds; });
    const double close = 0.07 * static_cast<double>(mic.size()) / rate;
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
    const double seconds = static_cast<double>(mic.size()) / rate;
    const Axis time{"time, s", 0, seconds}, above{"", 0, seconds, false};
    const auto chart = [&](const Axis& x, const Axis& y, int height, const std::string& caption) {
        Chart result(x, y, height);
        result.caption(caption);
        for (const Range& range : nearTalks)
            result.shade(range.start, range.end, 3);
        return result;
    };
    const auto waveform = [&](const Axis& x, std::span<const std::int16_t> samples, int colour,
                              const std::string& caption) {
        Chart result = chart(x, {"of full scale", -1, 1}, 80, caption);
        result.waveform(samples, rate, colour);
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

    Chart adaptation(trace->gainDb.empty() ? time : above, {"kHz", 0, rate / 2000.0}, 110);
    adaptation.caption("Adaptation: expected error of the echo path's model");
    adaptation.heatMap(adaptationMap(*trace), -40, 0, "dB");
    work.push_back(std::move(adaptation));

    if (!trace->gainDb.empty()) {
        Chart gain = chart(time, {"dB", -30, 15}, 90, "Gain of the level control");
        gain.line(overFrames(trace->gainDb), 4);
        work.push_back(std::move(gain));
    }
    report.charts("Echo canceller at work", work,
                  echoLossNote + shaded +
                      " Adaptation is dark where the model is good, bright where it knows nothing "
                      "yet, as at the start, after a change, and in bands without far-end signal.");

    std::vector<Chart> spectra;
    const auto addSpectrum = [&](const Axis& x, std::span<const std::int16_t> samples,
                                 const std::string& caption) {
        spectra.emplace_back(x, Axis{"kHz", 0, rate / 2000.0}, 100);
        spectra.back().caption(caption);
        spectra.back().heatMap(Spectrogram(samples, rate).map(), -100, -20, "dBFS");
    };
    addSpectrum(above, far, "Far end");
    addSpectrum(above, mic, "Microphone");
    addSpectrum(time, out, "Output");
    report.charts("Spectrograms", spectra);
}

} // namespace zsp::host
