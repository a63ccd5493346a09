// WAV files with the format tag 49: two frames of GSM full rate in a block of 65 bytes.
#pragma once

#include "tools/zsp/codec/choice.hpp"
#include "tools/zsp/io/files.hpp"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zsp::host {

inline constexpr std::size_t kGsmPair = 65;

/// The two frames as they stand in .gsm files, 33 bytes each.
std::array<std::uint8_t, 66> gsmFrames(std::span<const std::uint8_t, kGsmPair> pair);

/// Whether a file of this name and codec is one to write.
bool isGsmPairFile(const ZspvCodec& codec, const std::string& path);

class GsmPairWriter {
  public:
    /// Writes the header as one of a pipe.
    explicit GsmPairWriter(OutputFile& output);

    /// Takes whole frames as they stand in .gsm files.
    void write(std::span<const std::uint8_t> frames);
    /// Whether a frame waits for another one.
    [[nodiscard]] bool hasHalf() const { return !half_.empty(); }
    /// Writes the sizes into the header, where there is a way back to it.
    void finish(std::uint64_t samples);

  private:
    OutputFile& output_;
    std::vector<std::uint8_t> half_;
    std::uint64_t bytes_ = 0;
};

} // namespace zsp::host
