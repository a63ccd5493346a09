// What a chart needs of signals and values over time, gathered block by block in little memory:
// when there are more than a chart shows, neighbours are merged.
#pragma once

#include "tools/zsp/report/image.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zsp::host {

/// Least and largest sample over time.
class Envelope {
  public:
    explicit Envelope(int rate) : rate_(rate) {}
    Envelope(std::span<const std::int16_t> samples, int rate) : Envelope(rate) { add(samples); }

    void add(std::span<const std::int16_t> samples);

    struct Range {
        std::int16_t least, largest;
    };
    [[nodiscard]] std::span<const Range> ranges() const { return ranges_; }
    /// Seconds from one range to the next.
    [[nodiscard]] double interval() const { return static_cast<double>(width_) / rate_; }

  private:
    int rate_;
    std::vector<Range> ranges_;
    std::size_t width_ = 1, inLast_ = 0; // samples of a range, and of the one at the end
};

/// One point of a line; a y that is not a number interrupts the line.
struct Point {
    double x, y;
};

/// Values at equal distances in time, and their means once there are many. Values that are not
/// numbers count for nothing.
class Series {
  public:
    explicit Series(double interval) : interval_(interval) {}

    void add(double value);
    [[nodiscard]] std::vector<Point> points() const;
    [[nodiscard]] double largest() const { return largest_; }

  private:
    struct Sum {
        double total = 0;
        std::size_t count = 0;
    };
    double interval_, largest_ = -1e9;
    std::vector<Sum> sums_;
    std::size_t width_ = 1, inLast_ = 0;
};

/// A heat map and the time, in seconds, that it covers.
struct TimedMap {
    HeatMap map;
    double start, end;
};

/// Columns of values at equal distances in time, for a heat map.
class MapHistory {
  public:
    MapHistory(std::size_t rows, double interval) : rows_(rows), interval_(interval) {}

    void add(std::span<const float> column);
    [[nodiscard]] TimedMap map() const;

  private:
    std::size_t rows_;
    double interval_;
    std::size_t width_ = 1, inLast_ = 0;
    std::vector<float> sums_; // a column after the other
};

/// Power over time and frequency in dB relative to a sine at full scale, 0 Hz to half the rate.
class Spectrogram {
  public:
    explicit Spectrogram(int rate);
    Spectrogram(std::span<const std::int16_t> samples, int rate) : Spectrogram(rate)
    {
        add(samples);
    }

    void add(std::span<const std::int16_t> samples);
    [[nodiscard]] TimedMap map() const;

  private:
    int rate_;
    std::size_t length_, hop_, untilNext_;
    std::vector<double> window_;
    std::vector<std::int16_t> recent_; // the last length_ samples, in a ring
    std::size_t position_ = 0;
    std::vector<std::vector<float>> columns_;
};

} // namespace zsp::host
