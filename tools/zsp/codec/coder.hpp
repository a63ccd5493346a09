// Encoders and decoders of the table's codecs that take any number of samples or bytes at a time.
#pragma once

#include "tools/zsp/codec/block_coder.hpp"

#include <cstdint>
#include <span>
#include <vector>

namespace zsp::host {

class SpeechEncoder {
  public:
    explicit SpeechEncoder(const CodecSetting& setting);

    /// Appends the bytes that are complete.
    void encode(std::span<const std::int16_t> samples, std::vector<std::uint8_t>& bytes);
    /// Appends the rest, filled up with silence. Of a code word of G.726 that would stand for
    /// silence alone, nothing is written.
    void finish(std::vector<std::uint8_t>& bytes);

  private:
    CodecSetting setting_;
    BlockEncoder encoder_;
    std::vector<std::int16_t> pending_;
};

class SpeechDecoder {
  public:
    explicit SpeechDecoder(const CodecSetting& setting);

    /// Appends the samples of the frames that are complete.
    void decode(std::span<const std::uint8_t> bytes, std::vector<std::int16_t>& samples);
    /// Appends the samples of the last code words of G.726, which need not fill an octet. Returns
    /// the number of bytes that are no whole frame.
    std::size_t finish(std::vector<std::int16_t>& samples);

  private:
    CodecSetting setting_;
    std::size_t step_;
    BlockDecoder decoder_;
    std::vector<std::uint8_t> pending_;
};

/// A whole signal, coded with as much silence behind it as the codec's delay.
std::vector<std::uint8_t> encodedWhole(const CodecSetting& setting,
                                       std::span<const std::int16_t> samples);
/// That decoded again: `count` samples, in time with the signal.
std::vector<std::int16_t> decodedInTime(const CodecSetting& setting,
                                        std::span<const std::uint8_t> bytes, std::size_t count);

} // namespace zsp::host
