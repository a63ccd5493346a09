#include "tools/zsp/report/chart.hpp"

#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <cmath>

namespace zsp::host {

namespace {

constexpr double kWidth = 960, kLeft = 62, kRight = 886;
constexpr double kLegendHeight = 24, kAxisHeight = 38;

/// 1, 2 or 5 times a power of ten, such that about `count` steps fill the range.
double tickStep(const Axis& axis, double count)
{
    const double rough = (axis.high - axis.low) / count;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= rough * 0.8) return factor * power;
    return 10.0 * power;
}

std::vector<double> tickValues(const Axis& axis, double count)
{
    std::vector<double> values;
    const double step = tickStep(axis, count);
    for (double k = std::ceil(axis.low / step - 1e-9); k * step <= axis.high + 1e-9 * step; ++k)
        values.push_back(k == 0 ? 0.0 : k * step); // not -0
    return values;
}

/// Pixels, to a tenth.
std::string px(double value)
{
    return format("%.1f", value);
}

/// With a proper minus sign.
std::string number(double value)
{
    return (value < 0 ? "\u2212" : "") + format("%g", std::abs(value));
}

std::string textAt(double x, double y, const char* style, const std::string& text)
{
    return "<text class=\"" + std::string(style) + "\" x=\"" + px(x) + "\" y=\"" + px(y) + "\">" +
           escaped(text) + "</text>";
}

} // namespace

Chart::Chart(Axis x, Axis y, int height)
    : x_(std::move(x)), y_(std::move(y)), top_(kLegendHeight), bottom_(kLegendHeight + height)
{
}

void Chart::caption(const std::string& text)
{
    caption_ = text;
}

double Chart::toX(double x) const
{
    return kLeft + (x - x_.low) / (x_.high - x_.low) * (kRight - kLeft);
}

double Chart::toY(double y) const
{
    return bottom_ - (y - y_.low) / (y_.high - y_.low) * (bottom_ - top_);
}

void Chart::addLegend(int colour, const std::string& name, bool area)
{
    const auto same = [&name](const LegendEntry& entry) { return entry.name == name; };
    if (!name.empty() && std::none_of(legend_.begin(), legend_.end(), same))
        legend_.push_back({colour, name, area});
}

void Chart::polyline(std::span<const Point> points, int colour)
{
    std::string path;
    bool down = false;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point& p = points[i];
        if (std::isnan(p.y)) {
            down = false;
            continue;
        }
        path += (down ? "L" : "M") + px(toX(p.x)) + " " + px(toY(std::clamp(p.y, y_.low, y_.high)));
        const bool alone = !down && (i + 1 == points.size() || std::isnan(points[i + 1].y));
        if (alone) path += "h0.1"; // shows as a dot
        down = true;
    }
    content_ += format("<path class=\"line c%d\" d=\"", colour) + path + "\"/>";
}

void Chart::line(std::span<const Point> points, int colour, const std::string& name)
{
    polyline(points, colour);
    addLegend(colour, name, false);
}

void Chart::steps(std::span<const Point> points, int colour, const std::string& name)
{
    std::vector<Point> corners;
    for (const Point& point : points) {
        if (!corners.empty() && corners.back().y != point.y)
            corners.push_back({point.x, corners.back().y});
        else if (corners.size() > 1 && corners[corners.size() - 2].y == point.y)
            corners.pop_back();
        corners.push_back(point);
    }
    line(corners, colour, name);
}

void Chart::waveform(std::span<const std::int16_t> samples, int rate, int colour,
                     const std::string& name)
{
    // Two columns per unit keep the outline crisp on dense screens.
    const auto columns = static_cast<std::size_t>((kRight - kLeft) * 2);
    std::string upper, lower;
    for (std::size_t column = 0; column < columns; ++column) {
        const auto at = [&](std::size_t edge) {
            const double x = x_.low + (x_.high - x_.low) * static_cast<double>(edge) /
                                          static_cast<double>(columns);
            return std::min(samples.size(), static_cast<std::size_t>(std::max(x * rate, 0.0)));
        };
        const std::size_t first = at(column);
        const std::size_t last = std::min(samples.size(), std::max(at(column + 1), first + 1));
        if (first >= last) continue;
        const auto [least, largest] =
            std::minmax_element(samples.begin() + static_cast<std::ptrdiff_t>(first),
                                samples.begin() + static_cast<std::ptrdiff_t>(last));
        const std::string x = px(kLeft + (static_cast<double>(column) + 0.5) / 2);
        const auto y = [this](int value) {
            return toY(std::clamp(value / 32768.0, y_.low, y_.high));
        };
        upper += (upper.empty() ? "M" : "L") + x + " " + px(y(*largest) - 0.3);
        lower.insert(0, "L" + x + " " + px(y(*least) + 0.3));
    }
    if (!upper.empty())
        content_ += format("<path class=\"area f%d\" d=\"", colour) + upper + lower + "Z\"/>";
    addLegend(colour, name, true);
}

void Chart::heatMap(const HeatMap& map, double low, double high, const std::string& unit)
{
    const auto image = [](const std::string& uri, double x, double width, double y, double height) {
        return "<image preserveAspectRatio=\"none\" x=\"" + px(x) + "\" y=\"" + px(y) +
               "\" width=\"" + px(width) + "\" height=\"" + px(height) + "\" href=\"" + uri +
               "\"/>";
    };
    content_ += image(map.pngUri(low, high), kLeft, kRight - kLeft, top_, bottom_ - top_);
    const double scaleLeft = kRight + 12, scaleWidth = 10;
    labels_ += image(HeatMap::scale(64).pngUri(0, 1), scaleLeft, scaleWidth, top_, bottom_ - top_);
    const Axis scale{unit, low, high};
    for (const double value : tickValues(scale, (bottom_ - top_) / 30)) {
        const double y = bottom_ - (value - low) / (high - low) * (bottom_ - top_);
        labels_ += textAt(scaleLeft + scaleWidth + 5, y + 4, "tick", number(value));
    }
    labels_ += textAt(scaleLeft + scaleWidth + 36, top_ - 9, "tick end", unit);
    covered_ = true;
}

void Chart::rectangle(std::string& layer, const char* style, double x0, double x1, double y0,
                      double y1, int colour) const
{
    const double left = std::max(toX(x0), kLeft), right = std::min(toX(x1), kRight);
    if (right <= left) return;
    layer += format("<rect class=\"%s f%d\" x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\"/>",
                    style, colour, left, toY(y1), right - left, toY(y0) - toY(y1));
}

void Chart::bar(double x0, double x1, double y0, double y1, int colour, const std::string& name)
{
    rectangle(content_, "bar", x0, x1, y0, y1, colour);
    addLegend(colour, name, true);
}

void Chart::shade(double x0, double x1, int colour, const std::string& name)
{
    rectangle(behind_, "shade", x0, x1, y_.low, y_.high, colour);
    addLegend(colour, name, true);
}

void Chart::mark(double x, const std::string& text)
{
    const std::string at = px(toX(x));
    labels_ += "<path class=\"mark\" d=\"M" + at + " " + px(top_) + "V" + px(bottom_) + "\"/>";
    const bool nearEnd = toX(x) > kRight - 120;
    labels_ += textAt(toX(x) + (nearEnd ? -4 : 4), top_ + 12, nearEnd ? "tick end" : "tick", text);
}

void Chart::rowLabel(double y, const std::string& text)
{
    labels_ += textAt(kLeft - 8, toY(y) + 4, "tick end", text);
}

std::string Chart::axes() const
{
    std::string grid;
    const char* style = covered_ ? "tickmark" : "grid";
    if (y_.ticks)
        for (const double value : tickValues(y_, std::max((bottom_ - top_) / 34, 2.0))) {
            const double y = toY(value);
            grid += format("<path class=\"%s\" d=\"M%.1f %.1fH%.1f\"/>", style, kLeft - 4, y,
                           covered_ ? kLeft : kRight);
            grid += textAt(kLeft - 8, y + 4, "tick end", number(value));
        }
    if (x_.ticks)
        for (const double value : tickValues(x_, 12)) {
            const double x = toX(value);
            grid += format("<path class=\"tickmark\" d=\"M%.1f %.1fv4\"/>", x, bottom_);
            grid += textAt(x, bottom_ + 17, "tick middle", number(value));
        }
    grid += format("<path class=\"frame\" d=\"M%.1f %.1fH%.1f\"/>", kLeft, bottom_, kRight);
    grid += textAt((kLeft + kRight) / 2, bottom_ + 33, "label middle", x_.label);
    const double middle = (top_ + bottom_) / 2;
    grid += format("<text class=\"label middle\" transform=\"translate(14 %.1f) rotate(-90)\">",
                   middle) +
            escaped(y_.label) + "</text>";
    return grid;
}

std::string Chart::svg() const
{
    std::string legend;
    double x = kLeft;
    if (!caption_.empty()) {
        legend += textAt(x, 13, "label strong", caption_);
        x += 7.2 * static_cast<double>(caption_.size()) + 24;
    }
    for (const LegendEntry& entry : legend_) {
        const double height = entry.area ? 10 : 3;
        legend +=
            format("<rect class=\"bar f%d\" x=\"%.1f\" y=\"%.1f\" width=\"16\" height=\"%.0f\" "
                   "rx=\"1.5\"/>",
                   entry.colour, x, 9 - height / 2, height);
        legend += textAt(x + 22, 13, "tick", entry.name);
        x += 22 + 6.6 * static_cast<double>(entry.name.size()) + 20;
    }
    return format("<svg viewBox=\"0 0 %.0f %.0f\" role=\"img\">", kWidth,
                  bottom_ + (x_.ticks ? kAxisHeight : 8)) +
           legend + behind_ + (covered_ ? content_ + axes() : axes() + content_) + labels_ +
           "</svg>";
}

} // namespace zsp::host
