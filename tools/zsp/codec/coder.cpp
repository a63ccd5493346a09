// Collects samples and bytes until they make whole frames.

#include "tools/zsp/codec/coder.hpp"

#include "tools/zsp/codec/packing.hpp"
#include "tools/zsp/io/failure.hpp"

#include <algorithm>
#include <array>
#include <string_view>

namespace zsp::host {

namespace {

std::size_t toSize(std::int32_t value)
{
    return static_cast<std::size_t>(value);
}

ZspvParams paramsOf(const CodecSetting& setting)
{
    ZspvParams params{};
    params.structSize = sizeof params;
    params.bitRate = setting.bitRate;
    params.dtx = setting.dtx;
    params.noHighPass = setting.highPass ? 0 : 1;
    params.noPostFilter = setting.postFilter ? 0 : 1;
    params.annexA = setting.annexA ? 1 : 0;
    return params;
}

bool isG723(const ZspvCodec& codec)
{
    return std::string_view(codec.family) == "g7231";
}

/// What stands in a file of G.723.1 for a frame that was not sent.
constexpr std::uint8_t kUntransmitted = 3;

/// Bytes of the frame that begins with this one.
std::size_t frameBytes(const ZspvCodec& codec, std::uint8_t first, std::size_t step)
{
    constexpr std::array<std::size_t, 4> kG723 = {24, 20, 4, 1};
    return isG723(codec) ? kG723[first & 3] : step;
}

/// A codec without frames takes what there is, others a frame at a time.
std::size_t blockOf(const ZspvCodec& codec, std::size_t available, std::size_t step,
                    std::size_t frame)
{
    return codec.stepSamples < codec.frameSamples ? available / step * step
           : available < frame                    ? 0
                                                  : frame;
}

std::size_t delayOf(const ZspvCodec& codec)
{
    return toSize(codec.lookAhead + codec.filterDelay);
}

} // namespace

std::size_t stepBytes(const ZspvCodec& codec)
{
    return toSize(codec.maxFrameBytes * codec.stepSamples / codec.frameSamples);
}

int g726Bits(const CodecSetting& setting)
{
    return std::string_view(setting.codec->family).starts_with("g726") ? setting.bitRate / 8000 : 0;
}

bool highBitsFirst(const ZspvCodec& codec)
{
    return std::string_view(codec.family) == "g726aal2";
}

SpeechEncoder::SpeechEncoder(const CodecSetting& setting) : setting_(setting)
{
    const ZspvParams params = paramsOf(setting);
    ZspvEncoder* encoder = nullptr;
    require(zspvEncoderCreate(setting.codec, &params, &encoder), "zspvEncoderCreate");
    encoder_.reset(encoder);
}

void SpeechEncoder::encode(std::span<const std::int16_t> samples, std::vector<std::uint8_t>& bytes)
{
    pending_.insert(pending_.end(), samples.begin(), samples.end());
    const ZspvCodec& codec = *setting_.codec;
    std::size_t at = 0;
    for (;;) {
        const std::size_t count = blockOf(codec, pending_.size() - at, toSize(codec.stepSamples),
                                          toSize(codec.frameSamples));
        if (count == 0) break;
        encodeBlock(std::span(pending_).subspan(at, count), bytes);
        at += count;
    }
    pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(at));
}

void SpeechEncoder::encodeBlock(std::span<const std::int16_t> samples,
                                std::vector<std::uint8_t>& bytes)
{
    const ZspvCodec& codec = *setting_.codec;
    const std::size_t start = bytes.size();
    const std::size_t frames = samples.size() / toSize(codec.frameSamples) + 1;
    bytes.resize(start + frames * toSize(codec.maxFrameBytes));
    std::int32_t length = 0;
    require(zspvEncode(encoder_.get(), samples.data(), static_cast<std::int32_t>(samples.size()),
                       bytes.data() + start, static_cast<std::int32_t>(bytes.size() - start),
                       &length, nullptr),
            "zspvEncode");
    bytes.resize(start + toSize(length));
    if (setting_.contained)
        bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(start),
                     static_cast<std::uint8_t>(length));
    if (length == 0 && isG723(codec)) bytes.push_back(kUntransmitted);
}

void SpeechEncoder::finish(std::vector<std::uint8_t>& bytes)
{
    const std::size_t count = pending_.size(), start = bytes.size();
    if (count == 0) return;
    pending_.resize(toSize(setting_.codec->stepSamples));
    encodeBlock(pending_, bytes);
    pending_.clear();
    if (const int bits = g726Bits(setting_)) {
        const auto used = static_cast<int>(count) * bits;
        bytes.resize(start + static_cast<std::size_t>(used + 7) / 8);
        const int free = (8 - used % 8) % 8;
        const int mask = highBitsFirst(*setting_.codec) ? 0xff << free : 0xff >> free;
        bytes.back() &= static_cast<std::uint8_t>(mask);
    }
}

SpeechDecoder::SpeechDecoder(const CodecSetting& setting)
    : setting_(setting), step_(stepBytes(*setting.codec))
{
    const ZspvParams params = paramsOf(setting);
    ZspvDecoder* decoder = nullptr;
    require(zspvDecoderCreate(setting.codec, &params, &decoder), "zspvDecoderCreate");
    decoder_.reset(decoder);
}

void SpeechDecoder::decode(std::span<const std::uint8_t> bytes, std::vector<std::int16_t>& samples)
{
    pending_.insert(pending_.end(), bytes.begin(), bytes.end());
    // The last code words of G.726 wait for finish().
    const std::size_t held = g726Bits(setting_) && !pending_.empty() ? 1 : 0;
    std::size_t at = 0;
    for (;;) {
        if (at == pending_.size()) break;
        const ZspvCodec& codec = *setting_.codec;
        const std::size_t count = blockOf(codec, pending_.size() - held - at, step_,
                                          frameBytes(codec, pending_[at], step_));
        if (count == 0) break;
        decodeBlock(std::span(pending_).subspan(at, count), samples);
        at += count;
    }
    pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(at));
}

void SpeechDecoder::decodeBlock(std::span<const std::uint8_t> bytes,
                                std::vector<std::int16_t>& samples)
{
    const std::size_t start = samples.size();
    samples.resize(start + std::max<std::size_t>(bytes.size() / step_, 1) *
                               toSize(setting_.codec->stepSamples));
    std::int32_t count = 0;
    const ZspStatus status = zspvDecode(
        decoder_.get(), zspvFrameSpeech, bytes.data(), static_cast<std::int32_t>(bytes.size()),
        samples.data() + start, static_cast<std::int32_t>(samples.size() - start), &count);
    ++blocks_;
    if (status == zspStsCodecRangeErr)
        throw Failure("frame " + std::to_string(blocks_) + " is none of " +
                      setting_.codec->rtpName);
    require(status, "zspvDecode");
    samples.resize(start + toSize(count));
}

void SpeechDecoder::decodeFrame(std::span<const std::uint8_t> bytes,
                                std::vector<std::int16_t>& samples)
{
    decodeBlock(bytes, samples);
}

void SpeechDecoder::conceal(ZspvFrameKind kind, std::vector<std::int16_t>& samples)
{
    const std::size_t start = samples.size();
    samples.resize(start + toSize(setting_.codec->frameSamples));
    std::int32_t count = 0;
    require(zspvDecode(decoder_.get(), kind, nullptr, 0, samples.data() + start,
                       setting_.codec->frameSamples, &count),
            "zspvDecode");
}

std::size_t SpeechDecoder::finish(std::vector<std::int16_t>& samples)
{
    const int bits = g726Bits(setting_);
    constexpr std::size_t kSilenceDescriptor = 2;
    if (pending_.size() == kSilenceDescriptor && (setting_.codec->flags & zspvCodecSid) != 0 &&
        !isG723(*setting_.codec)) {
        decodeBlock(pending_, samples);
        pending_.clear();
    }
    if (bits == 0 || pending_.empty()) return pending_.size();
    std::vector<std::uint8_t> words;
    Unpacker(highBitsFirst(*setting_.codec) ? Packing::aal2 : Packing::rfc3551, bits)
        .unpack(pending_, words);
    dropFilling(words, bits);
    pending_.resize(step_);
    const std::size_t start = samples.size();
    decodeBlock(pending_, samples);
    samples.resize(start + words.size());
    pending_.clear();
    return 0;
}

std::vector<std::uint8_t> encodedWhole(const CodecSetting& setting,
                                       std::span<const std::int16_t> samples)
{
    std::vector<std::uint8_t> bytes;
    SpeechEncoder encoder(setting);
    encoder.encode(samples, bytes);
    encoder.encode(std::vector<std::int16_t>(delayOf(*setting.codec)), bytes);
    encoder.finish(bytes);
    return bytes;
}

std::vector<std::int16_t> decodedInTime(const CodecSetting& setting,
                                        std::span<const std::uint8_t> bytes, std::size_t count)
{
    std::vector<std::int16_t> samples;
    SpeechDecoder decoder(setting);
    decoder.decode(bytes, samples);
    decoder.finish(samples);
    samples.erase(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                         delayOf(*setting.codec), samples.size())));
    samples.resize(count);
    return samples;
}

} // namespace zsp::host
