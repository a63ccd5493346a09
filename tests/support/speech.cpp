// Reads the bundled recordings.

#include "tests/support/speech.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numbers>
#include <string>

namespace zsp::test {

namespace {

/// Twice the rate: the samples in between by a windowed sinc of 32 points.
Words doubled(const Words& in)
{
    constexpr int kReach = 16;
    Words out;
    for (std::size_t n = 0; n < in.size(); ++n) {
        double between = 0;
        for (int i = 1 - kReach; i <= kReach; ++i) {
            const auto at = static_cast<std::ptrdiff_t>(n) + i;
            if (at < 0 || at >= static_cast<std::ptrdiff_t>(in.size())) continue;
            const double t = std::numbers::pi * (0.5 - i);
            between += in[static_cast<std::size_t>(at)] * std::sin(t) / t *
                       std::pow(std::cos(t / (2 * kReach + 1)), 2);
        }
        out.push_back(in[n]);
        out.push_back(
            static_cast<std::int16_t>(std::lrint(std::clamp(between, -32768.0, 32767.0))));
    }
    return out;
}

} // namespace

const Words& speech(int rate)
{
    static const Words narrow = [] {
        constexpr std::size_t kHeader = 44;
        std::ifstream file(ZSPSC_DATA_DIR "/speech_8k.wav", std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        Words words(bytes.size() < kHeader ? 0 : (bytes.size() - kHeader) / 2);
        EXPECT_GT(words.size(), 24 * 8000U) << "no " ZSPSC_DATA_DIR "/speech_8k.wav";
        if (!words.empty()) std::memcpy(words.data(), &bytes[kHeader], 2 * words.size());
        return words;
    }();
    static const Words wide = doubled(narrow);
    return rate == 8000 ? narrow : wide;
}

Words talk(int rate, double from, double seconds, double pause)
{
    const Words& all = speech(rate);
    Words words(static_cast<std::size_t>(pause * rate));
    const auto first = static_cast<std::size_t>(from * rate);
    for (std::size_t n = 0; n < static_cast<std::size_t>(seconds * rate) && !all.empty(); ++n)
        words.push_back(all[(first + n) % all.size()]);
    return words;
}

} // namespace zsp::test
