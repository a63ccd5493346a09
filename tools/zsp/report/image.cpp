// Colour maps and PNG images inside of a report.

#include "tools/zsp/report/image.hpp"

#include <algorithm>
#include <array>
#include <cmath>
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

} // namespace

std::string dataUri(const std::string& type, std::span<const std::uint8_t> bytes)
{
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text = "data:" + type + ";base64,";
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
    return dataUri("image/png", png);
}

HeatMap HeatMap::scale(std::size_t rows)
{
    HeatMap map(1, rows);
    for (std::size_t row = 0; row < rows; ++row)
        map.at(0, row) = static_cast<float>(row) / static_cast<float>(rows - 1);
    return map;
}

} // namespace zsp::host
