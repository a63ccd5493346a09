// The blocks of libzspsc put together to the codecs of the table, for whole steps of samples.
#pragma once

#include "tools/zsp/codec/choice.hpp"
#include "tools/zsp/codec/packing.hpp"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace zsp::host {

/// Bytes of the codec's smallest step, for codecs whose frames have one length.
std::size_t stepBytes(const ZspvCodec& codec);
/// Bits of a code word of G.726, 0 for other codecs.
int g726Bits(const CodecSetting& setting);
/// Whether G.726's code words fill the octets from their high bits.
bool highBitsFirst(const ZspvCodec& codec);

class BlockEncoder {
  public:
    explicit BlockEncoder(const CodecSetting& setting);
    /// Appends the bytes of whole steps.
    void encode(std::span<const std::int16_t> samples, std::vector<std::uint8_t>& bytes);

  private:
    CodecSetting setting_;
    std::vector<std::uint8_t> state_;
    std::array<std::int16_t, 24> delayLine_{};
    Packer packer_;
};

class BlockDecoder {
  public:
    explicit BlockDecoder(const CodecSetting& setting);
    /// Appends the samples of whole steps.
    void decode(std::span<const std::uint8_t> bytes, std::vector<std::int16_t>& samples);

  private:
    CodecSetting setting_;
    std::vector<std::uint8_t> state_;
    std::array<std::int16_t, 24> delayLine_{};
    Unpacker unpacker_;
};

} // namespace zsp::host
