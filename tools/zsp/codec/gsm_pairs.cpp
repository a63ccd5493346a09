// The parameters are those of other frames in their order, but every one begins with its least
// significant bit, in the least significant free bit of a byte, and the second frame begins in the
// middle of one: 2 * 260 bits.

#include "tools/zsp/codec/gsm_pairs.hpp"

#include "tools/zsp/io/failure.hpp"
#include "zspsc/gsmfr/frame.h"

namespace zsp::host {

namespace {

/// Bits of the parameters of a frame, GSM 06.10, table 1.1.
constexpr auto kBits = [] {
    constexpr std::array<int, 8> kRatios = {6, 6, 5, 5, 4, 4, 3, 3};
    constexpr std::array<int, 4> kSegment = {7, 2, 2, 6}; // then thirteen pulses
    std::array<int, 76> bits{};
    for (std::size_t i = 0; i < bits.size(); ++i) {
        const std::size_t place = (i + 9) % 17; // in a sub-segment
        bits[i] = i < 8 ? kRatios[i] : place < 4 ? kSegment[place] : 3;
    }
    return bits;
}();

} // namespace

std::array<std::uint8_t, 66> gsmFrames(std::span<const std::uint8_t, kGsmPair> pair)
{
    std::array<std::uint8_t, 66> frames{};
    std::size_t at = 0; // bit of the pair
    for (std::size_t frame = 0; frame < 2; ++frame) {
        std::array<std::int16_t, 76> parameters{};
        for (std::size_t i = 0; i < parameters.size(); ++i)
            for (int bit = 0; bit < kBits[i]; ++bit, ++at)
                parameters[i] =
                    static_cast<std::int16_t>(parameters[i] | (pair[at / 8] >> at % 8 & 1) << bit);
        require(zspsPackFrame_GSMFR_16s8u(parameters.data(), &frames[33 * frame]),
                "zspsPackFrame_GSMFR_16s8u");
    }
    return frames;
}

} // namespace zsp::host
