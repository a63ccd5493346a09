// A picture of values on a colour scale, as a heat map in a report.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zsp::host {

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

/// Power over time and frequency in dB relative to a sine at full scale, 0 Hz to half the rate.
HeatMap spectrogram(std::span<const std::int16_t> samples, int rate, std::size_t columns);

} // namespace zsp::host
