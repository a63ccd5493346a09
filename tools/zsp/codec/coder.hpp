// libzspvoice's encoders and decoders behind C++ objects that take any number of samples or bytes
// at a time.
#pragma once

#include "tools/zsp/codec/choice.hpp"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace zsp::host {

/// Bytes of the codec's smallest step, for codecs whose frames have one length.
std::size_t stepBytes(const ZspvCodec& codec);
/// Bits of a code word of G.726, 0 for other codecs.
int g726Bits(const CodecSetting& setting);
/// Whether G.726's code words fill the octets from their high bits.
bool highBitsFirst(const ZspvCodec& codec);

class SpeechEncoder {
  public:
    explicit SpeechEncoder(const CodecSetting& setting);

    /// Appends the bytes that are complete.
    void encode(std::span<const std::int16_t> samples, std::vector<std::uint8_t>& bytes);
    /// Appends the rest, filled up with silence. Of a code word of G.726 that would stand for
    /// silence alone, nothing is written.
    void finish(std::vector<std::uint8_t>& bytes);

  private:
    void encodeBlock(std::span<const std::int16_t> samples, std::vector<std::uint8_t>& bytes);

    struct Closer {
        void operator()(ZspvEncoder* encoder) const { zspvEncoderDestroy(encoder); }
    };
    CodecSetting setting_;
    std::unique_ptr<ZspvEncoder, Closer> encoder_;
    std::vector<std::int16_t> pending_;
};

class SpeechDecoder {
  public:
    explicit SpeechDecoder(const CodecSetting& setting);

    /// Appends the samples of the frames that are complete. Throws a Failure at bytes that are no
    /// frame of the codec.
    void decode(std::span<const std::uint8_t> bytes, std::vector<std::int16_t>& samples);
    /// Appends the samples of one frame.
    void decodeFrame(std::span<const std::uint8_t> bytes, std::vector<std::int16_t>& samples);
    /// Appends what stands in for a frame of which nothing is there: zspvFrameLost or
    /// zspvFrameNoData.
    void conceal(ZspvFrameKind kind, std::vector<std::int16_t>& samples);
    /// Appends the samples of the last code words of G.726, which need not fill an octet, and of a
    /// silence descriptor behind frames of G.729. Returns the number of bytes that are no whole
    /// frame.
    std::size_t finish(std::vector<std::int16_t>& samples);

  private:
    void decodeBlock(std::span<const std::uint8_t> bytes, std::vector<std::int16_t>& samples);

    struct Closer {
        void operator()(ZspvDecoder* decoder) const { zspvDecoderDestroy(decoder); }
    };
    CodecSetting setting_;
    std::size_t step_;
    std::unique_ptr<ZspvDecoder, Closer> decoder_;
    std::vector<std::uint8_t> pending_;
    std::uint64_t blocks_ = 0; // decoded, of codecs with frames one each
};

/// A whole signal, coded with as much silence behind it as the codec's delay.
std::vector<std::uint8_t> encodedWhole(const CodecSetting& setting,
                                       std::span<const std::int16_t> samples);
/// That decoded again: `count` samples, in time with the signal.
std::vector<std::int16_t> decodedInTime(const CodecSetting& setting,
                                        std::span<const std::uint8_t> bytes, std::size_t count);

} // namespace zsp::host
