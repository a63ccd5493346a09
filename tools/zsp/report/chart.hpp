// Charts as SVG: axes with units, lines, waveforms, heat maps, bars and marks over one plot area.
#pragma once

#include "tools/zsp/report/image.hpp"

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

/// One point of a line; a y that is not a number interrupts the line.
struct Point {
    double x, y;
};

/// Colours are numbered 1 to 6 and named by the report's style sheet, which has a set for light
/// and one for dark surroundings; 0 is the colour of text. All charts of a report have the same
/// left and right edges, so that equal time axes below one another agree.
class Chart {
  public:
    /// An x axis without label and ticks takes little room: for charts above one that has them.
    Chart(Axis x, Axis y, int height);

    /// A heading above the plot, where the legend begins.
    void caption(const std::string& text);

    /// A line through the points. A name puts it into the legend; so does every `name` below.
    void line(std::span<const Point> points, int colour, const std::string& name = "");
    /// A line that keeps each value until the next point.
    void steps(std::span<const Point> points, int colour, const std::string& name = "");
    /// Least to largest sample per pixel column, scaled to -1..1; begins at x = 0, in seconds.
    void waveform(std::span<const std::int16_t> samples, int rate, int colour,
                  const std::string& name = "");
    /// Fills the plot area; with a scale at the right edge that is labelled in `unit`.
    void heatMap(const HeatMap& map, double low, double high, const std::string& unit);
    /// A filled rectangle.
    void bar(double x0, double x1, double y0, double y1, int colour, const std::string& name = "");
    /// A shaded range of x over the whole height, behind everything else.
    void shade(double x0, double x1, int colour, const std::string& name = "");
    /// A vertical dashed line with a text at its top.
    void mark(double x, const std::string& text);
    /// A text in place of a number at the left edge, for y axes without numbers.
    void rowLabel(double y, const std::string& text);

    [[nodiscard]] std::string svg() const;

  private:
    [[nodiscard]] double toX(double x) const;
    [[nodiscard]] double toY(double y) const;
    void polyline(std::span<const Point> points, int colour);
    void rectangle(std::string& layer, const char* style, double x0, double x1, double y0,
                   double y1, int colour) const;
    void addLegend(int colour, const std::string& name, bool area);
    [[nodiscard]] std::string axes() const;

    struct LegendEntry {
        int colour;
        std::string name;
        bool area;
    };

    Axis x_, y_;
    double top_, bottom_; // of the plot area
    std::string caption_, behind_, content_, labels_;
    std::vector<LegendEntry> legend_;
    bool covered_ = false; // by a heat map: the grid would not be seen
};

} // namespace zsp::host
