// Charts as HTML and SVG: axes with units, lines, waveforms, heat maps, bars and marks over one
// plot area. The plot stretches with the page; text keeps its size, so that a chart can be read on
// a phone.
#pragma once

#include "tools/zsp/report/history.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zsp::host {

struct Axis {
    std::string label; ///< with the unit
    double low = 0.0, high = 1.0;
    bool ticks = true; ///< numbers and grid lines
};

/// Colours are numbered 1 to 6 and named by the report's style sheet, which has a set for light
/// and one for dark surroundings; 0 is the colour of text. All charts of a report have the same
/// left and right edges, so that equal time axes below one another agree.
class Chart {
  public:
    /// An x axis without label and ticks takes little room: for charts above one that has them.
    Chart(Axis x, Axis y, int height);

    /// A heading above the plot, where the legend begins.
    void caption(const std::string& text) { caption_ = text; }

    /// A line through the points. A name puts it into the legend; so does every `name` below.
    void line(std::span<const Point> points, int colour, const std::string& name = "");
    /// Least to largest sample, scaled to -1..1; begins at x = 0, in seconds.
    void waveform(const Envelope& envelope, int colour, const std::string& name = "");
    void waveform(std::span<const std::int16_t> samples, int rate, int colour,
                  const std::string& name = "")
    {
        waveform(Envelope(samples, rate), colour, name);
    }
    /// Over the whole height, at its time; with a scale at the right edge labelled in `unit`.
    void heatMap(const TimedMap& timed, double low, double high, const std::string& unit);
    /// The same over the whole width.
    void heatMap(const HeatMap& map, double low, double high, const std::string& unit)
    {
        heatMap({map, x_.low, x_.high}, low, high, unit);
    }
    /// A filled rectangle.
    void bar(double x0, double x1, double y0, double y1, int colour, const std::string& name = "");
    /// A shaded range of x over the whole height, behind everything else.
    void shade(double x0, double x1, int colour, const std::string& name = "");
    /// A dashed line over the whole width, named in the legend.
    void level(double y, int colour, const std::string& name);
    /// A vertical dashed line with a text at its top, or below the chart where there is no room.
    void mark(double x, const std::string& text);
    /// A text in place of a number at the left edge, for y axes without numbers.
    void rowLabel(double y, const std::string& text);

    [[nodiscard]] std::string html() const;

  private:
    [[nodiscard]] double toX(double x) const;
    [[nodiscard]] double toY(double y) const;
    void rectangle(std::string& layer, const char* style, double x0, double x1, double y0,
                   double y1, int colour) const;
    void addLegend(int colour, const std::string& name, const char* style);
    [[nodiscard]] std::string grid() const;
    [[nodiscard]] std::string ticks() const;

    Axis x_, y_;
    double height_;
    // Layers: those of the stretched plot, and what keeps its size.
    std::string caption_, legend_, behind_, content_, labels_, marks_;
    std::vector<std::string> legendNames_;
    bool covered_ = false; // by a heat map: the grid would not be seen
};

} // namespace zsp::host
