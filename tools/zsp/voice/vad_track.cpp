// Runs a detector over a signal and draws what it decided.

#include "tools/zsp/voice/vad_track.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/progress.hpp"
#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <cmath>
#include <memory>

namespace zsp::host {

namespace {

constexpr std::size_t kMaxColumns = 1648; // two per unit of a chart's width

/// Range of levels that a chart shows: from the least noise to the loudest level, in tens of dB.
std::pair<double, double> range(const VadTrack& track)
{
    float low = 1e9F, high = -1e9F;
    for (const auto& frame : track.levels)
        high = std::max(high, *std::max_element(frame.begin(), frame.end()));
    for (const auto& frame : track.noise)
        low = std::min(low, *std::min_element(frame.begin(), frame.end()));
    const double bottom = 10 * std::floor(low / 10.0);
    return {bottom, std::max(10 * std::ceil(high / 10.0), bottom + 10)};
}

/// Power sum over the bands of each frame, in dB, averaged down to at most kMaxColumns points.
std::vector<Point> totals(const std::vector<std::vector<float>>& frames)
{
    const std::size_t group = (frames.size() + kMaxColumns - 1) / kMaxColumns;
    std::vector<Point> points;
    for (std::size_t i = 0; i < frames.size(); i += group) {
        const std::size_t end = std::min(i + group, frames.size());
        double power = 0;
        for (std::size_t k = i; k < end; ++k)
            for (const float level : frames[k])
                power += std::pow(10.0, level / 10.0);
        points.push_back({static_cast<double>(i + end) / 2 * kVadFrame,
                          signals::decibels(power / static_cast<double>(end - i))});
    }
    return points;
}

/// The library's detector at one of its rates.
class Activity {
  public:
    Activity(ZspvDetector detector, int rate)
    {
        ZspvActivityConfig config{};
        config.structSize = sizeof config;
        config.detector = detector;
        config.sampleRate = rate;
        ZspvActivity* activity = nullptr;
        require(zspvActivityCreate(&config, &activity), "zspvActivityCreate");
        activity_.reset(activity);
    }

    [[nodiscard]] ZspvActivityInfo process(std::span<const std::int16_t> frame) const
    {
        ZspvActivityInfo info{};
        info.structSize = sizeof info;
        require(zspvActivityProcess(activity_.get(), frame.data(),
                                    static_cast<std::int32_t>(frame.size()), &info),
                "zspvActivityProcess");
        return info;
    }

    [[nodiscard]] std::vector<int> bandEdges() const
    {
        std::array<float, kMaxBands + 1> edges{};
        std::int32_t count = 0;
        require(zspvActivityGetBands(activity_.get(), edges.data(), nullptr, nullptr, kMaxBands,
                                     &count),
                "zspvActivityGetBands");
        return {edges.begin(), edges.begin() + count + 1};
    }

    /// Of the last frame.
    void bands(std::span<float> levels, std::span<float> noise) const
    {
        std::int32_t count = 0;
        require(zspvActivityGetBands(activity_.get(), nullptr, levels.data(), noise.data(),
                                     static_cast<std::int32_t>(levels.size()), &count),
                "zspvActivityGetBands");
    }

  private:
    static constexpr std::int32_t kMaxBands = 16;
    struct Deleter {
        void operator()(ZspvActivity* activity) const { zspvActivityDestroy(activity); }
    };
    std::unique_ptr<ZspvActivity, Deleter> activity_;
};

} // namespace

std::string_view nameOf(ZspvDetector detector)
{
    switch (detector) {
    case zspvDetectorAmr1:
        return "GSM-AMR option 1";
    case zspvDetectorAmr2:
        return "GSM-AMR option 2";
    default:
        return "AMR-WB";
    }
}

double VadTrack::activity() const
{
    return static_cast<double>(std::count(speech.begin(), speech.end(), true)) /
           static_cast<double>(std::max<std::size_t>(speech.size(), 1));
}

std::vector<VadTrack::Segment> VadTrack::segments() const
{
    std::vector<Segment> found;
    for (std::size_t i = 0; i < speech.size(); ++i) {
        if (!speech[i]) continue;
        const double start = static_cast<double>(i) * kVadFrame;
        if (i == 0 || !speech[i - 1]) found.push_back({start, start});
        found.back().end = static_cast<double>(i + 1) * kVadFrame;
    }
    return found;
}

VadTrack trackVoice(ZspvDetector kind, const Audio& audio)
{
    const int rate = kind == zspvDetectorAmrWb ? 12800 : 8000;
    const Activity activity(kind, rate);
    Audio signal = resampled(audio, rate);
    const auto length = static_cast<std::size_t>(rate) / 50;
    signal.samples.resize((signal.samples.size() + length - 1) / length * length);
    Progress progress("vad", signal.samples.size());
    VadTrack track;
    track.kind = kind;
    track.bandEdges = activity.bandEdges();
    const std::size_t bands = track.bandEdges.size() - 1;
    for (std::size_t at = 0; at < signal.samples.size(); at += length) {
        const ZspvActivityInfo info =
            activity.process(std::span(signal.samples).subspan(at, length));
        track.speech.push_back(info.active != 0);
        track.sent.push_back(info.kind);
        activity.bands(track.levels.emplace_back(bands), track.noise.emplace_back(bands));
        progress.update(at);
    }
    return track;
}

Chart decisionChart(const std::vector<VadTrack>& tracks, const Axis& time)
{
    const auto rows = static_cast<double>(tracks.size());
    Chart chart(time, {"", 0, rows, false}, static_cast<int>(30 * tracks.size()));
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        const double bottom = rows - 1 - static_cast<double>(i);
        constexpr std::array<const char*, 3> kShort = {"option 1", "option 2", "AMR-WB"};
        chart.rowLabel(bottom + 0.5, kShort[static_cast<std::size_t>(tracks[i].kind) - 1]);
        const int colour = static_cast<int>(tracks[i].kind);
        for (const VadTrack::Segment& segment : tracks[i].segments())
            chart.bar(segment.start, segment.end, bottom + 0.18, bottom + 0.82, colour);
    }
    return chart;
}

Chart levelChart(const VadTrack& track, const Axis& time)
{
    const auto [low, high] = range(track);
    Chart chart(time, {"dB", low, high + 10}, 150);
    chart.line(totals(track.levels), 1, "level of all bands");
    chart.line(totals(track.noise), 2, "noise estimate");
    for (const VadTrack::Segment& segment : track.segments())
        chart.shade(segment.start, segment.end, 3, "speech");
    return chart;
}

Chart bandChart(const VadTrack& track, const std::vector<std::vector<float>>& values,
                const Axis& time, const std::string& caption)
{
    const std::size_t bands = track.bandEdges.size() - 1;
    const std::size_t columns = std::clamp<std::size_t>(values.size(), 1, kMaxColumns);
    HeatMap map(columns, bands);
    for (std::size_t column = 0; column < columns; ++column) {
        const std::size_t first = column * values.size() / columns;
        const std::size_t last = std::max((column + 1) * values.size() / columns, first + 1);
        for (std::size_t band = 0; band < bands; ++band) {
            float sum = 0;
            for (std::size_t i = first; i < last; ++i)
                sum += values[i][band];
            map.at(column, band) = sum / static_cast<float>(last - first);
        }
    }
    const auto [low, high] = range(track);
    Chart chart(time, {"band, Hz", 0, static_cast<double>(bands), false}, 120);
    chart.caption(caption);
    chart.heatMap(map, low, high, "dB");
    for (std::size_t edge = 0; edge <= bands; edge += bands > 10 ? 3 : 2)
        chart.rowLabel(static_cast<double>(edge), format("%d", track.bandEdges[edge]));
    return chart;
}

} // namespace zsp::host
