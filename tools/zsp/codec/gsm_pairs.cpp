// The parameters are those of other frames in their order, but every one begins with its least
// significant bit, in the least significant free bit of a byte, and the second frame begins in the
// middle of one: 2 * 260 bits.

#include "tools/zsp/codec/gsm_pairs.hpp"

#include "tools/zsp/io/audio_format.hpp"
#include "tools/zsp/io/failure.hpp"
#include "zspsc/gsmfr/frame.h"

#include <string_view>
#include <unistd.h>

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

constexpr std::size_t kFrame = 33, kParameters = 76;
using Parameters = std::array<std::int16_t, kParameters>;

std::array<std::uint8_t, kGsmPair> pairOf(std::span<const std::uint8_t> frames)
{
    std::array<std::uint8_t, kGsmPair> pair{};
    std::size_t at = 0; // bit of the pair
    for (std::size_t frame = 0; frame < 2; ++frame) {
        Parameters parameters{};
        require(zspsUnpackFrame_GSMFR_8u16s(&frames[kFrame * frame], parameters.data()),
                "zspsUnpackFrame_GSMFR_8u16s");
        for (std::size_t i = 0; i < parameters.size(); ++i)
            for (int bit = 0; bit < kBits[i]; ++bit, ++at)
                pair[at / 8] |= static_cast<std::uint8_t>((parameters[i] >> bit & 1) << at % 8);
    }
    return pair;
}

/// What goes before the blocks. A size that is not known, or has no room, is that of pipes.
std::string headerOf(std::uint64_t bytes, std::uint64_t samples)
{
    constexpr std::uint64_t kMost = 0x7fff'f000;
    const auto known = [=](std::uint64_t size) {
        return static_cast<std::uint32_t>(bytes < kMost ? size : kMost);
    };
    std::string header;
    const auto chunk = [&](std::string_view name, std::uint32_t size) {
        header += name;
        for (int shift = 0; shift < 32; shift += 8)
            header += static_cast<char>(size >> shift);
    };
    const auto words = [&](std::initializer_list<std::uint32_t> values) {
        for (const std::uint32_t value : values)
            for (int shift = 0; shift < 16; shift += 8)
                header += static_cast<char>(value >> shift);
    };
    chunk("RIFF", known(bytes + bytes % 2 + 52));
    header += "WAVE";
    chunk("fmt ", 20);
    words({49, 1, 8000, 0, 1625, 0, kGsmPair, 0, 2, 320}); // the rates are longs
    chunk("fact", 4);
    chunk("", known(samples));
    chunk("data", known(bytes));
    return header;
}

} // namespace

std::array<std::uint8_t, 66> gsmFrames(std::span<const std::uint8_t, kGsmPair> pair)
{
    std::array<std::uint8_t, 66> frames{};
    std::size_t at = 0; // bit of the pair
    for (std::size_t frame = 0; frame < 2; ++frame) {
        Parameters parameters{};
        for (std::size_t i = 0; i < parameters.size(); ++i)
            for (int bit = 0; bit < kBits[i]; ++bit, ++at)
                parameters[i] =
                    static_cast<std::int16_t>(parameters[i] | (pair[at / 8] >> at % 8 & 1) << bit);
        require(zspsPackFrame_GSMFR_16s8u(parameters.data(), &frames[33 * frame]),
                "zspsPackFrame_GSMFR_16s8u");
    }
    return frames;
}

bool isGsmPairFile(const ZspvCodec& codec, const std::string& path)
{
    return std::string_view(codec.family) == "gsm" && lowerExtension(path) == ".wav";
}

GsmPairWriter::GsmPairWriter(OutputFile& output) : output_(output)
{
    output_.write(headerOf(~std::uint64_t{0}, 0));
}

void GsmPairWriter::write(std::span<const std::uint8_t> frames)
{
    half_.insert(half_.end(), frames.begin(), frames.end());
    std::size_t at = 0;
    for (; half_.size() - at >= 2 * kFrame; at += 2 * kFrame) {
        output_.write(pairOf(std::span(half_).subspan(at)));
        bytes_ += kGsmPair;
    }
    half_.erase(half_.begin(), half_.begin() + static_cast<std::ptrdiff_t>(at));
}

void GsmPairWriter::finish(std::uint64_t samples)
{
    if (bytes_ % 2 != 0) output_.write(std::string_view("\0", 1)); // chunks have even lengths
    if (!output_.seekable()) return;
    if (lseek(output_.descriptor(), 0, SEEK_SET) != 0) failWithErrno(output_.path());
    output_.write(headerOf(bytes_, samples));
}

} // namespace zsp::host
