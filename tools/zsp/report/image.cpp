#include "tools/zsp/report/image.hpp"

#include "signals/measure.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <string_view>
#include <zlib.h>

namespace zsp::host {

namespace {

using Bytes = std::vector<std::uint8_t>;
using Colour = std::array<double, 3>;

/// Corners of the colour scale, dark violet over red to pale yellow; brightness rises evenly.
constexpr std::array<Colour, 7> kCorners = {{{8, 7, 26},
                                             {58, 15, 98},
                                             {120, 28, 109},
                                             {184, 50, 86},
                                             {236, 98, 52},
                                             {249, 170, 60},
                                             {252, 246, 190}}};

void append32(Bytes& bytes, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

void appendChunk(Bytes& png, std::string_view type, std::span<const std::uint8_t> data)
{
    append32(png, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = png.size();
    png.insert(png.end(), type.begin(), type.end());
    png.insert(png.end(), data.begin(), data.end());
    append32(png, static_cast<std::uint32_t>(
                      crc32(0, png.data() + start, static_cast<uInt>(png.size() - start))));
}

Bytes palette()
{
    Bytes colours;
    for (int i = 0; i < 256; ++i) {
        const double position = i / 255.0 * (kCorners.size() - 1);
        const auto corner = std::min(static_cast<std::size_t>(position), kCorners.size() - 2);
        const double part = position - static_cast<double>(corner);
        for (std::size_t c = 0; c < 3; ++c)
            colours.push_back(static_cast<std::uint8_t>(std::lround(
                kCorners[corner][c] + part * (kCorners[corner + 1][c] - kCorners[corner][c]))));
    }
    return colours;
}

std::string base64(std::span<const std::uint8_t> bytes)
{
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(bytes.size() - i, 3);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (k < count ? bytes[i + k] : 0u);
        for (std::size_t k = 0; k < 4; ++k)
            text += k <= count ? kDigits[group >> (18 - 6 * k) & 63] : '=';
    }
    return text;
}

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

std::string HeatMap::pngUri(double low, double high) const
{
    Bytes lines; // top line first, each behind a zero that says "no filter"
    for (std::size_t row = rows_; row-- > 0;) {
        lines.push_back(0);
        for (std::size_t column = 0; column < columns_; ++column) {
            const double value = values_[row * columns_ + column];
            const double part = std::clamp((value - low) / (high - low), 0.0, 1.0);
            lines.push_back(
                static_cast<std::uint8_t>(std::isnan(part) ? 0 : std::lround(part * 255)));
        }
    }
    Bytes packed(compressBound(static_cast<uLong>(lines.size())));
    auto size = static_cast<uLongf>(packed.size());
    compress2(packed.data(), &size, lines.data(), static_cast<uLong>(lines.size()), 9);
    packed.resize(size);

    Bytes png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    Bytes header;
    append32(header, static_cast<std::uint32_t>(columns_));
    append32(header, static_cast<std::uint32_t>(rows_));
    header.insert(header.end(), {8, 3, 0, 0, 0}); // a palette of 8-bit indices
    appendChunk(png, "IHDR", header);
    appendChunk(png, "PLTE", palette());
    appendChunk(png, "IDAT", packed);
    appendChunk(png, "IEND", {});
    return "data:image/png;base64," + base64(png);
}

HeatMap HeatMap::scale(std::size_t rows)
{
    HeatMap map(1, rows);
    for (std::size_t row = 0; row < rows; ++row)
        map.at(0, row) = static_cast<float>(row) / static_cast<float>(rows - 1);
    return map;
}

HeatMap spectrogram(std::span<const std::int16_t> samples, int rate, std::size_t columns)
{
    // 32 ms of a Hann window: 31 Hz per row, speech harmonics stay apart.
    const std::size_t length = rate <= 8000 ? 256 : 512;
    std::vector<double> window(length);
    for (std::size_t i = 0; i < length; ++i)
        window[i] = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * (static_cast<double>(i) + 0.5) /
                                         static_cast<double>(length));
    // A sine of amplitude 32768 has the magnitude 32768 * length / 4 in its bin.
    const double fullScale = 32768.0 * static_cast<double>(length) / 4.0;

    HeatMap map(columns, length / 2);
    std::vector<std::complex<double>> block(length);
    for (std::size_t column = 0; column < columns; ++column) {
        const auto centre = static_cast<std::ptrdiff_t>((static_cast<double>(column) + 0.5) *
                                                        static_cast<double>(samples.size()) /
                                                        static_cast<double>(columns));
        for (std::size_t i = 0; i < length; ++i) {
            const std::ptrdiff_t at =
                centre + static_cast<std::ptrdiff_t>(i) - static_cast<std::ptrdiff_t>(length / 2);
            const bool inside = at >= 0 && at < static_cast<std::ptrdiff_t>(samples.size());
            block[i] = inside ? window[i] * samples[static_cast<std::size_t>(at)] : 0.0;
        }
        fourier(block);
        for (std::size_t row = 0; row < length / 2; ++row)
            map.at(column, row) =
                static_cast<float>(signals::decibels(std::norm(block[row]), fullScale * fullScale));
    }
    return map;
}

} // namespace zsp::host
