// Merges neighbours when there are more than a chart shows.

#include "tools/zsp/report/history.hpp"

#include "signals/measure.hpp"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>

namespace zsp::host {

namespace {

// At most; once there are many, at least half of it.
constexpr std::size_t kRanges = 2048, kPoints = 2048, kColumns = 1024;

/// In place, for a power of two of values.
void fourier(std::span<std::complex<double>> x)
{
    const std::size_t n = x.size();
    if (n == 1) return;
    std::vector<std::complex<double>> even(n / 2), odd(n / 2);
    for (std::size_t i = 0; i < n / 2; ++i) {
        even[i] = x[2 * i];
        odd[i] = x[2 * i + 1];
    }
    fourier(even);
    fourier(odd);
    for (std::size_t k = 0; k < n / 2; ++k) {
        const double angle =
            -2.0 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n);
        const std::complex<double> turned = std::polar(1.0, angle) * odd[k];
        x[k] = even[k] + turned;
        x[k + n / 2] = even[k] - turned;
    }
}

} // namespace

void Envelope::add(std::span<const std::int16_t> samples)
{
    for (const std::int16_t x : samples) {
        if (inLast_ == 0 || inLast_ == width_) {
            if (ranges_.size() == kRanges) {
                for (std::size_t i = 0; i < kRanges / 2; ++i)
                    ranges_[i] = {std::min(ranges_[2 * i].least, ranges_[2 * i + 1].least),
                                  std::max(ranges_[2 * i].largest, ranges_[2 * i + 1].largest)};
                ranges_.resize(kRanges / 2);
                width_ *= 2;
            }
            ranges_.push_back({x, x});
            inLast_ = 0;
        }
        ranges_.back() = {std::min(ranges_.back().least, x), std::max(ranges_.back().largest, x)};
        ++inLast_;
    }
}

void Series::add(double value)
{
    if (inLast_ == 0 || inLast_ == width_) {
        if (sums_.size() == kPoints) {
            for (std::size_t i = 0; i < kPoints / 2; ++i)
                sums_[i] = {sums_[2 * i].total + sums_[2 * i + 1].total,
                            sums_[2 * i].count + sums_[2 * i + 1].count};
            sums_.resize(kPoints / 2);
            width_ *= 2;
        }
        sums_.emplace_back();
        inLast_ = 0;
    }
    ++inLast_;
    if (std::isnan(value)) return;
    sums_.back().total += value;
    ++sums_.back().count;
    largest_ = std::max(largest_, value);
}

std::vector<Point> Series::points() const
{
    std::vector<Point> points;
    for (std::size_t i = 0; i < sums_.size(); ++i) {
        const Sum& sum = sums_[i];
        points.push_back({(static_cast<double>(i) + 0.5) * static_cast<double>(width_) * interval_,
                          sum.count > 0 ? sum.total / static_cast<double>(sum.count)
                                        : std::numeric_limits<double>::quiet_NaN()});
    }
    return points;
}

void MapHistory::add(std::span<const float> column)
{
    if (inLast_ == 0 || inLast_ == width_) {
        if (sums_.size() == kColumns * rows_) {
            for (std::size_t i = 0; i < kColumns / 2; ++i)
                for (std::size_t row = 0; row < rows_; ++row)
                    sums_[i * rows_ + row] =
                        sums_[2 * i * rows_ + row] + sums_[(2 * i + 1) * rows_ + row];
            sums_.resize(kColumns / 2 * rows_);
            width_ *= 2;
        }
        sums_.resize(sums_.size() + rows_);
        inLast_ = 0;
    }
    ++inLast_;
    for (std::size_t row = 0; row < rows_; ++row)
        sums_[sums_.size() - rows_ + row] += column[row];
}

TimedMap MapHistory::map() const
{
    const std::size_t columns = std::max<std::size_t>(sums_.size() / rows_, 1);
    HeatMap map(columns, rows_);
    for (std::size_t i = 0; i < sums_.size() / rows_; ++i)
        for (std::size_t row = 0; row < rows_; ++row) {
            const std::size_t count = i + 1 < columns ? width_ : inLast_;
            map.at(i, row) = sums_[i * rows_ + row] / static_cast<float>(count);
        }
    const double end = static_cast<double>((columns - 1) * width_ + inLast_) * interval_;
    return {std::move(map), 0, end};
}

// 32 ms of a Hann window: 31 Hz per row, speech harmonics stay apart.
Spectrogram::Spectrogram(int rate)
    : rate_(rate), length_(rate <= 8000 ? 256 : 512), hop_(length_ / 2), untilNext_(length_),
      window_(length_), recent_(length_)
{
    for (std::size_t i = 0; i < length_; ++i)
        window_[i] = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * (static_cast<double>(i) + 0.5) /
                                          static_cast<double>(length_));
}

void Spectrogram::add(std::span<const std::int16_t> samples)
{
    // A sine of amplitude 32768 has the magnitude 32768 * length / 4 in its bin.
    const double fullScale = 32768.0 * static_cast<double>(length_) / 4.0;
    std::vector<std::complex<double>> block(length_);
    for (const std::int16_t x : samples) {
        recent_[position_++ % length_] = x;
        if (--untilNext_ > 0) continue;
        if (columns_.size() == kColumns) { // every other one stays
            for (std::size_t i = 1; i < kColumns / 2; ++i)
                columns_[i] = std::move(columns_[2 * i]);
            columns_.resize(kColumns / 2);
            hop_ *= 2;
        }
        untilNext_ = hop_;
        for (std::size_t i = 0; i < length_; ++i)
            block[i] = window_[i] * recent_[(position_ + i) % length_];
        fourier(block);
        columns_.emplace_back(length_ / 2);
        for (std::size_t row = 0; row < length_ / 2; ++row)
            columns_.back()[row] =
                static_cast<float>(signals::decibels(std::norm(block[row]), fullScale * fullScale));
    }
}

TimedMap Spectrogram::map() const
{
    HeatMap map(std::max<std::size_t>(columns_.size(), 1), length_ / 2);
    for (std::size_t column = 0; column < columns_.size(); ++column)
        for (std::size_t row = 0; row < length_ / 2; ++row)
            map.at(column, row) = columns_[column][row];
    if (columns_.empty())
        for (std::size_t row = 0; row < length_ / 2; ++row)
            map.at(0, row) = -200;
    const auto seconds = [this](std::size_t samples) {
        return static_cast<double>(samples) / rate_;
    };
    const double start = seconds(length_) / 2 - seconds(hop_) / 2;
    return {std::move(map), start, start + seconds(columns_.size() * hop_)};
}

} // namespace zsp::host
