// Runs a detector over a signal and draws what it decided.

#include "tools/zsp/voice/vad_track.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zsp::host {

namespace {

constexpr std::int32_t kMaxBands = 16;

/// Range of levels that a chart shows: from the least noise to the loudest level, in tens of dB.
std::pair<double, double> range(const VadTrack& track)
{
    const double bottom = 10 * std::floor(track.leastNoise / 10.0);
    return {bottom, std::max(10 * std::ceil(track.largestLevel / 10.0), bottom + 10)};
}

/// Sum of the bands' powers.
double power(std::span<const float> levels)
{
    double sum = 0;
    for (const float level : levels)
        sum += std::pow(10.0, level / 10.0);
    return sum;
}

std::vector<Point> inDecibels(const Series& powers)
{
    std::vector<Point> points = powers.points();
    for (Point& point : points)
        point.y = signals::decibels(point.y);
    return points;
}

int rateOf(ZspvDetector kind)
{
    return kind == zspvDetectorAmrWb ? 12800 : 8000;
}

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

void VadTrack::add(const VadFrame& frame)
{
    speech.push_back(frame.speech);
    sent.push_back(static_cast<std::uint8_t>(frame.sent));
    levels.add(frame.levels);
    noise.add(frame.noise);
    levelPower.add(power(frame.levels));
    noisePower.add(power(frame.noise));
    leastNoise = std::min(leastNoise, *std::min_element(frame.noise.begin(), frame.noise.end()));
    largestLevel =
        std::max(largestLevel, *std::max_element(frame.levels.begin(), frame.levels.end()));
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

VoiceTracker::VoiceTracker(ZspvDetector kind, int rate, std::function<void(const VadFrame&)> take)
    : converter_(rate, rateOf(kind)), frame_(static_cast<std::size_t>(rateOf(kind)) / 50),
      take_(std::move(take))
{
    ZspvActivityConfig config{};
    config.structSize = sizeof config;
    config.detector = kind;
    config.sampleRate = rateOf(kind);
    ZspvActivity* activity = nullptr;
    require(zspvActivityCreate(&config, &activity), "zspvActivityCreate");
    activity_.reset(activity);
    std::array<float, kMaxBands + 1> edges{};
    std::int32_t count = 0;
    require(zspvActivityGetBands(activity, edges.data(), nullptr, nullptr, kMaxBands, &count),
            "zspvActivityGetBands");
    track_.kind = kind;
    track_.bandEdges.assign(edges.begin(), edges.begin() + count + 1);
    const auto bands = static_cast<std::size_t>(count);
    track_.levels = track_.noise = MapHistory(bands, kVadFrame);
}

void VoiceTracker::add(std::span<const std::int16_t> samples, bool last)
{
    converter_.convert(samples, last, waiting_);
    if (last) waiting_.resize((waiting_.size() + frame_ - 1) / frame_ * frame_);
    std::size_t done = 0;
    for (; waiting_.size() - done >= frame_; done += frame_)
        process(std::span(waiting_).subspan(done, frame_));
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(done));
}

void VoiceTracker::process(std::span<const std::int16_t> frame)
{
    ZspvActivityInfo info{};
    info.structSize = sizeof info;
    require(zspvActivityProcess(activity_.get(), frame.data(),
                                static_cast<std::int32_t>(frame.size()), &info),
            "zspvActivityProcess");
    std::array<float, kMaxBands> levels{}, noise{};
    std::int32_t count = 0;
    require(zspvActivityGetBands(activity_.get(), nullptr, levels.data(), noise.data(), kMaxBands,
                                 &count),
            "zspvActivityGetBands");
    const auto bands = static_cast<std::size_t>(count);
    const VadFrame made{info.active != 0, info.kind, std::span(levels).first(bands),
                        std::span(noise).first(bands)};
    track_.add(made);
    if (take_) take_(made);
}

VadTrack trackVoice(ZspvDetector kind, const Audio& audio)
{
    VoiceTracker tracker(kind, audio.rate);
    tracker.add(audio.samples, true);
    return tracker.track();
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
    chart.line(inDecibels(track.levelPower), 1, "level of all bands");
    chart.line(inDecibels(track.noisePower), 2, "noise estimate");
    for (const VadTrack::Segment& segment : track.segments())
        chart.shade(segment.start, segment.end, 3, "speech");
    return chart;
}

Chart bandChart(const VadTrack& track, const MapHistory& values, const Axis& time,
                const std::string& caption)
{
    const std::size_t bands = track.bandEdges.size() - 1;
    const auto [low, high] = range(track);
    Chart chart(time, {"band, Hz", 0, static_cast<double>(bands), false}, 120);
    chart.caption(caption);
    chart.heatMap(values.map().map, low, high, "dB");
    for (std::size_t edge = 0; edge <= bands; edge += bands > 10 ? 3 : 2)
        chart.rowLabel(static_cast<double>(edge), format("%d", track.bandEdges[edge]));
    return chart;
}

} // namespace zsp::host
