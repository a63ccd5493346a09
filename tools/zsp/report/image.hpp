// A picture of values on a colour scale, as a heat map in a report.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zsp::host {

/// Bytes as a data URI of a type such as "image/png".
std::string dataUri(const std::string& type, std::span<const std::uint8_t> bytes);

/// Columns run to the right, rows upwards, as the axes of a plot do.
class HeatMap {
  public:
    HeatMap(std::size_t columns, std::size_t rows)
        : columns_(columns), rows_(rows), values_(columns * rows)
    {
    }

    [[nodiscard]] std::size_t columns() const { return columns_; }
    [[nodiscard]] std::size_t rows() const { return rows_; }
    float& at(std::size_t column, std::size_t row) { return values_[row * columns_ + column]; }

    /// A PNG image as a data URI; `low` and below is the dark end of the scale, `high` the bright.
    [[nodiscard]] std::string pngUri(double low, double high) const;

    /// The scale alone, for a legend: `rows` shades from low to high.
    static HeatMap scale(std::size_t rows);

  private:
    std::size_t columns_, rows_;
    std::vector<float> values_;
};

} // namespace zsp::host
