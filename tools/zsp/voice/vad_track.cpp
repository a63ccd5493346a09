#include "tools/zsp/voice/vad_track.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/io/progress.hpp"
#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <cmath>

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

} // namespace

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

VadTrack trackVoice(DetectorKind kind, const Audio& audio)
{
    VoiceDetector detector(kind);
    Audio signal = resampled(audio, detector.rate());
    const std::size_t length = detector.frameLength();
    signal.samples.resize((signal.samples.size() + length - 1) / length * length);
    Progress progress("vad", signal.samples.size());
    DtxSchedule schedule;
    VadTrack track;
    track.kind = kind;
    track.bandEdges.assign(detector.bandEdges().begin(), detector.bandEdges().end());
    for (std::size_t at = 0; at < signal.samples.size(); at += length) {
        track.speech.push_back(detector.detect(std::span(signal.samples).subspan(at, length)));
        track.sent.push_back(schedule.next(track.speech.back()));
        track.levels.emplace_back(detector.levels().begin(), detector.levels().end());
        track.noise.emplace_back(detector.noise().begin(), detector.noise().end());
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
        chart.rowLabel(bottom + 0.5, kShort[static_cast<std::size_t>(tracks[i].kind)]);
        const int colour = static_cast<int>(tracks[i].kind) + 1;
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
