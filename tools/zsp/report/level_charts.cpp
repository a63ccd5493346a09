#include "tools/zsp/report/level_charts.hpp"

#include <algorithm>
#include <cmath>

namespace zsp::host {

namespace {

std::vector<Point> overTime(const std::vector<double>& values, double interval)
{
    // At most two points per unit of the chart's width.
    const std::size_t group = values.size() / 1648 + 1;
    std::vector<Point> points;
    for (std::size_t i = 0; i < values.size(); i += group)
        points.push_back({static_cast<double>(i + 1) * interval, values[i]});
    return points;
}

} // namespace

std::vector<Chart> levelCharts(const Audio& before, const Audio& after, const LevelTrack& track)
{
    const Axis time{"time, s", 0, before.seconds()};
    const Axis above{"", 0, before.seconds(), false};
    std::vector<Chart> charts;
    charts.emplace_back(above, Axis{"of full scale", -1, 1}, 90);
    charts.back().waveform(before.samples, before.rate, 1, "input");
    charts.emplace_back(above, Axis{"of full scale", -1, 1}, 90);
    charts.back().waveform(after.samples, after.rate, 3, "output");
    charts.emplace_back(above, Axis{"dBFS", -90, 0}, 140);
    charts.back().line(overTime(track.inputDb, track.interval), 1, "input, 20 ms");
    charts.back().line(overTime(track.speechDb, track.interval), 4, "speech level");
    charts.back().line(overTime(track.noiseDb, track.interval), 2, "noise level");
    const double highest = *std::max_element(track.gainDb.begin(), track.gainDb.end());
    charts.emplace_back(time, Axis{"dB", -20, std::max(20.0, 10 * std::ceil(highest / 10))}, 110);
    charts.back().line(overTime(track.gainDb, track.interval), 5, "gain");
    return charts;
}

} // namespace zsp::host
