#include "tools/zsp/codec/block_coder.hpp"

#include "tools/zsp/io/failure.hpp"

#include "zspsc.h"

#include <string_view>

namespace zsp::host {

namespace {

enum class Kind { g711, g722, g726 };

Kind kindOf(const CodecSetting& setting)
{
    const std::string_view family = setting.codec->family;
    return family == "g722" ? Kind::g722 : family.starts_with("g726") ? Kind::g726 : Kind::g711;
}

std::int32_t lawOf(const CodecSetting& setting)
{
    return std::string_view(setting.codec->family) == "pcma" ? zspG711LawA : zspG711LawMu;
}

/// 1, 2 or 3 at 64, 56 or 48 kbit/s: so many bits of a byte, less one, are not used.
int g722Mode(const CodecSetting& setting)
{
    return (72000 - setting.bitRate) / 8000;
}

Packing packingOf(const CodecSetting& setting)
{
    return highBitsFirst(*setting.codec) ? Packing::aal2 : Packing::rfc3551;
}

constexpr std::array kRates = {zspG726Rate16, zspG726Rate24, zspG726Rate32, zspG726Rate40};

std::int32_t g726Rate(const CodecSetting& setting)
{
    return kRates[static_cast<std::size_t>(g726Bits(setting) - 2)];
}

} // namespace

std::size_t stepBytes(const ZspvCodec& codec)
{
    return static_cast<std::size_t>(codec.maxFrameBytes * codec.stepSamples / codec.frameSamples);
}

int g726Bits(const CodecSetting& setting)
{
    return kindOf(setting) == Kind::g726 ? setting.bitRate / 8000 : 0;
}

bool highBitsFirst(const ZspvCodec& codec)
{
    return std::string_view(codec.family) == "g726aal2";
}

BlockEncoder::BlockEncoder(const CodecSetting& setting)
    : setting_(setting), packer_(packingOf(setting), g726Bits(setting))
{
    std::int32_t size = 0;
    if (kindOf(setting) == Kind::g722) {
        require(zspsSBADPCMEncodeStateSize_G722_16s(&size), "zspsSBADPCMEncodeStateSize_G722_16s");
        state_.resize(static_cast<std::size_t>(size));
        require(zspsSBADPCMEncodeInit_G722_16s(state_.data()), "zspsSBADPCMEncodeInit_G722_16s");
    } else if (kindOf(setting) == Kind::g726) {
        require(zspsEncodeGetStateSize_G726_16s8u(&size), "zspsEncodeGetStateSize_G726_16s8u");
        state_.resize(static_cast<std::size_t>(size));
        require(zspsEncodeInit_G726_16s8u(state_.data(), g726Rate(setting)),
                "zspsEncodeInit_G726_16s8u");
    }
}

void BlockEncoder::encode(std::span<const std::int16_t> samples, std::vector<std::uint8_t>& bytes)
{
    const auto length = static_cast<std::int32_t>(samples.size());
    std::vector<std::int16_t> words(samples.begin(), samples.end());
    if (kindOf(setting_) == Kind::g711) {
        bytes.resize(bytes.size() + samples.size());
        require(zspsEncode_G711_16s8u(samples.data(), bytes.data() + bytes.size() - samples.size(),
                                      length, lawOf(setting_)),
                "zspsEncode_G711_16s8u");
    } else if (kindOf(setting_) == Kind::g722) {
        require(zspsQMFEncode_G722_16s(words.data(), words.data(), length, delayLine_.data()),
                "zspsQMFEncode_G722_16s");
        require(zspsSBADPCMEncode_G722_16s(words.data(), words.data(), length, state_.data()),
                "zspsSBADPCMEncode_G722_16s");
        const int mask = 0xff << (g722Mode(setting_) - 1);
        for (std::size_t i = 0; i < words.size(); i += 2)
            bytes.push_back(static_cast<std::uint8_t>((words[i + 1] << 6 | words[i]) & mask));
    } else {
        for (std::int16_t& x : words)
            x = static_cast<std::int16_t>(x >> 2);
        std::vector<std::uint8_t> codes(words.size());
        require(zspsEncode_G726_16s8u(state_.data(), words.data(), codes.data(), length),
                "zspsEncode_G726_16s8u");
        packer_.pack(codes, bytes);
    }
}

BlockDecoder::BlockDecoder(const CodecSetting& setting)
    : setting_(setting), unpacker_(packingOf(setting), g726Bits(setting))
{
    std::int32_t size = 0;
    if (kindOf(setting) == Kind::g722) {
        require(zspsSBADPCMDecodeStateSize_G722_16s(&size), "zspsSBADPCMDecodeStateSize_G722_16s");
        state_.resize(static_cast<std::size_t>(size));
        require(zspsSBADPCMDecodeInit_G722_16s(state_.data()), "zspsSBADPCMDecodeInit_G722_16s");
    } else if (kindOf(setting) == Kind::g726) {
        require(zspsDecodeGetStateSize_G726_8u16s(&size), "zspsDecodeGetStateSize_G726_8u16s");
        state_.resize(static_cast<std::size_t>(size));
        require(zspsDecodeInit_G726_8u16s(state_.data(), g726Rate(setting), zspG726LawLinear),
                "zspsDecodeInit_G726_8u16s");
    }
}

void BlockDecoder::decode(std::span<const std::uint8_t> bytes, std::vector<std::int16_t>& samples)
{
    std::vector<std::uint8_t> codes(bytes.begin(), bytes.end());
    if (kindOf(setting_) == Kind::g726) {
        codes.clear();
        unpacker_.unpack(bytes, codes);
    }
    const bool pairs = kindOf(setting_) == Kind::g722;
    const std::size_t start = samples.size();
    samples.resize(start + codes.size() * (pairs ? 2 : 1));
    const std::span<std::int16_t> out = std::span(samples).subspan(start);
    const auto length = static_cast<std::int32_t>(out.size());
    if (kindOf(setting_) == Kind::g711) {
        require(zspsDecode_G711_8u16s(codes.data(), out.data(), length, lawOf(setting_)),
                "zspsDecode_G711_8u16s");
    } else if (pairs) {
        for (std::size_t i = 0; i < codes.size(); ++i) {
            out[2 * i] = codes[i] & 0x3f;
            out[2 * i + 1] = codes[i] >> 6;
        }
        require(zspsSBADPCMDecode_G722_16s(out.data(), out.data(), length,
                                           static_cast<std::int16_t>(g722Mode(setting_)),
                                           state_.data()),
                "zspsSBADPCMDecode_G722_16s");
        require(zspsQMFDecode_G722_16s(out.data(), out.data(), length, delayLine_.data()),
                "zspsQMFDecode_G722_16s");
    } else {
        require(zspsDecode_G726_8u16s(state_.data(), codes.data(), out.data(), length),
                "zspsDecode_G726_8u16s");
        for (std::int16_t& x : out)
            x = static_cast<std::int16_t>(x * 4);
    }
}

} // namespace zsp::host
