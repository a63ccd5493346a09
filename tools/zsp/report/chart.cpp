// Draws charts as SVG that stretches while its text keeps its size.

#include "tools/zsp/report/chart.hpp"

#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <cmath>

namespace zsp::host {

namespace {

constexpr double kWidth = 1000; // of the plot area, in units that stretch with the page
constexpr double kAxisHeight = 38;

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

/// To a tenth of a unit.
std::string px(double value)
{
    return format("%.1f", value);
}

/// A place in the plot's width, in per cent of it.
std::string across(double x)
{
    return format("%.2f%%", x / kWidth * 100);
}

/// With a proper minus sign.
std::string number(double value)
{
    return (value < 0 ? "\u2212" : "") + format("%g", std::abs(value));
}

/// Text at a place: `x` in pixels or per cent.
std::string textAt(const std::string& x, double y, const char* style, const std::string& text,
                   double shift = 0)
{
    return "<text class=\"" + std::string(style) + "\" x=\"" + x + "\" y=\"" + px(y) +
           (shift != 0 ? "\" dx=\"" + px(shift) : "") + "\">" + escaped(text) + "</text>";
}

std::string imageOf(const HeatMap& map, double low, double high, const std::string& place)
{
    return "<image preserveAspectRatio=\"none\" " + place + " href=\"" + map.pngUri(low, high) +
           "\"/>";
}

} // namespace

Chart::Chart(Axis x, Axis y, int height) : x_(std::move(x)), y_(std::move(y)), height_(height)
{
}

double Chart::toX(double x) const
{
    return (x - x_.low) / (x_.high - x_.low) * kWidth;
}

double Chart::toY(double y) const
{
    return height_ - (y - y_.low) / (y_.high - y_.low) * height_;
}

void Chart::addLegend(int colour, const std::string& name, const char* style)
{
    if (name.empty() ||
        std::find(legendNames_.begin(), legendNames_.end(), name) != legendNames_.end())
        return;
    legendNames_.push_back(name);
    legend_ += format("<span><i class=\"%s b%d\"></i>", style, colour) + escaped(name) + "</span>";
}

void Chart::line(std::span<const Point> points, int colour, const std::string& name)
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
    addLegend(colour, name, "stroke");
}

void Chart::waveform(const Envelope& envelope, int colour, const std::string& name)
{
    std::string upper, lower;
    double at = envelope.interval() / 2;
    for (const auto& [least, largest] : envelope.ranges()) {
        const std::string x = px(toX(at));
        const auto y = [this](int value) {
            return toY(std::clamp(value / 32768.0, y_.low, y_.high));
        };
        upper += (upper.empty() ? "M" : "L") + x + " " + px(y(largest) - 0.3);
        lower.insert(0, "L" + x + " " + px(y(least) + 0.3));
        at += envelope.interval();
    }
    if (!upper.empty())
        content_ += format("<path class=\"area f%d\" d=\"", colour) + upper + lower + "Z\"/>";
    addLegend(colour, name, "fill");
}

void Chart::heatMap(const TimedMap& timed, double low, double high, const std::string& unit)
{
    const double left = toX(timed.start), right = toX(timed.end);
    content_ += imageOf(timed.map, low, high,
                        "x=\"" + px(left) + "\" y=\"0\" width=\"" + px(right - left) +
                            "\" height=\"" + px(height_) + "\"");
    labels_ +=
        imageOf(HeatMap::scale(64), 0, 1,
                "class=\"scale\" x=\"100%\" y=\"0\" width=\"8\" height=\"" + px(height_) + "\"");
    const Axis scale{unit, low, high};
    for (const double value : tickValues(scale, height_ / 30)) {
        const double y = height_ - (value - low) / (high - low) * height_;
        labels_ += textAt("100%", std::clamp(y + 4, 10.0, height_), "tick", number(value), 20);
    }
    labels_ += textAt("100%", -9, "tick", unit, 8);
    covered_ = true;
}

void Chart::rectangle(std::string& layer, const char* style, double x0, double x1, double y0,
                      double y1, int colour) const
{
    const double left = std::max(toX(x0), 0.0), right = std::min(toX(x1), kWidth);
    if (right <= left) return;
    layer += format("<rect class=\"%s f%d\" x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\"/>",
                    style, colour, left, toY(y1), right - left, toY(y0) - toY(y1));
}

void Chart::bar(double x0, double x1, double y0, double y1, int colour, const std::string& name)
{
    rectangle(content_, "bar", x0, x1, y0, y1, colour);
    addLegend(colour, name, "fill");
}

void Chart::shade(double x0, double x1, int colour, const std::string& name)
{
    rectangle(behind_, "shade", x0, x1, y_.low, y_.high, colour);
    addLegend(colour, name, "fill faint");
}

void Chart::level(double y, int colour, const std::string& name)
{
    content_ +=
        format("<path class=\"line dashed c%d\" d=\"M0 %.1fH%.0f\"/>", colour, toY(y), kWidth);
    addLegend(colour, name, "stroke dashed");
}

void Chart::mark(double x, const std::string& text)
{
    const std::string at = across(toX(x));
    labels_ += "<line class=\"mark\" x1=\"" + at + "\" x2=\"" + at + "\" y1=\"0\" y2=\"" +
               px(height_) + "\"/>";
    if (text.empty()) return;
    const bool nearEnd = toX(x) > kWidth * 0.86;
    labels_ +=
        textAt(at, 12, nearEnd ? "tick marktext end" : "tick marktext", text, nearEnd ? -4 : 4);
    marks_ += (marks_.empty() ? "" : "; ") + format("%.1f s ", x) + text;
}

void Chart::rowLabel(double y, const std::string& text)
{
    labels_ += textAt("-8", toY(y) + 4, "tick end", text);
}

std::string Chart::grid() const
{
    std::string lines;
    if (y_.ticks && !covered_)
        for (const double value : tickValues(y_, std::max(height_ / 34, 2.0)))
            lines += format("<path class=\"grid\" d=\"M0 %.1fH%.0f\"/>", toY(value), kWidth);
    return lines;
}

std::string Chart::ticks() const
{
    std::string text;
    if (y_.ticks)
        for (const double value : tickValues(y_, std::max(height_ / 34, 2.0)))
            text += textAt("-8", toY(value) + 4, "tick end", number(value));
    const std::string bottom = px(height_);
    if (x_.ticks) {
        bool odd = false;
        for (const double value : tickValues(x_, 12)) {
            const std::string x = across(toX(value));
            text += "<line class=\"frame\" x1=\"" + x + "\" x2=\"" + x + "\" y1=\"" + bottom +
                    "\" y2=\"" + px(height_ + 4) + "\"/>";
            text += textAt(x, height_ + 17, odd ? "tick middle odd" : "tick middle", number(value));
            odd = !odd;
        }
        text += textAt("50%", height_ + 33, "label middle", x_.label);
    }
    return text + "<line class=\"frame\" x1=\"0\" x2=\"100%\" y1=\"" + bottom + "\" y2=\"" +
           bottom + "\"/>";
}

std::string Chart::html() const
{
    const std::string unit = y_.label.empty() || caption_.empty() ? y_.label : ", " + y_.label;
    const std::string heading = "<b>" + escaped(caption_) + "<em>" + escaped(unit) + "</em></b>";
    const double total = height_ + (x_.ticks ? kAxisHeight : 6);
    return "<figure><figcaption>" + heading + legend_ + "</figcaption><div class=\"plot\">" +
           format("<svg height=\"%.0f\" role=\"img\">", total) +
           format("<svg width=\"100%%\" height=\"%.0f\" viewBox=\"0 0 %.0f %.0f\" "
                  "preserveAspectRatio=\"none\">",
                  height_, kWidth, height_) +
           behind_ + grid() + content_ + "</svg>" + ticks() + labels_ + "</svg></div>" +
           (marks_.empty() ? "" : "<p class=\"marks\">Marks: " + escaped(marks_) + ".</p>") +
           "</figure>";
}

} // namespace zsp::host
