#include "tools/zsp/io/g722_codec.hpp"

#include "tools/zsp/io/failure.hpp"

#include "zspsc.h"

namespace zsp::host {

G722Encoder::G722Encoder(int mode) : mask_(static_cast<std::uint8_t>(0xff << (mode - 1)))
{
    std::int32_t size = 0;
    require(zspsSBADPCMEncodeStateSize_G722_16s(&size), "zspsSBADPCMEncodeStateSize_G722_16s");
    state_.resize(static_cast<std::size_t>(size));
    require(zspsSBADPCMEncodeInit_G722_16s(state_.data()), "zspsSBADPCMEncodeInit_G722_16s");
}

void G722Encoder::encode(std::span<const std::int16_t> samples, std::span<std::uint8_t> bytes)
{
    if (samples.empty()) return;
    pairs_.resize(samples.size());
    const auto length = static_cast<std::int32_t>(samples.size());
    require(zspsQMFEncode_G722_16s(samples.data(), pairs_.data(), length, delayLine_.data()),
            "zspsQMFEncode_G722_16s");
    require(zspsSBADPCMEncode_G722_16s(pairs_.data(), pairs_.data(), length, state_.data()),
            "zspsSBADPCMEncode_G722_16s");
    for (std::size_t i = 0; i < samples.size() / 2; ++i)
        bytes[i] = static_cast<std::uint8_t>((pairs_[2 * i + 1] << 6 | pairs_[2 * i]) & mask_);
}

G722Decoder::G722Decoder(int mode) : mode_(static_cast<std::int16_t>(mode))
{
    std::int32_t size = 0;
    require(zspsSBADPCMDecodeStateSize_G722_16s(&size), "zspsSBADPCMDecodeStateSize_G722_16s");
    state_.resize(static_cast<std::size_t>(size));
    require(zspsSBADPCMDecodeInit_G722_16s(state_.data()), "zspsSBADPCMDecodeInit_G722_16s");
}

void G722Decoder::decode(std::span<const std::uint8_t> bytes, std::span<std::int16_t> samples)
{
    if (bytes.empty()) return;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        samples[2 * i] = bytes[i] & 0x3f;
        samples[2 * i + 1] = bytes[i] >> 6;
    }
    const auto length = static_cast<std::int32_t>(2 * bytes.size());
    require(
        zspsSBADPCMDecode_G722_16s(samples.data(), samples.data(), length, mode_, state_.data()),
        "zspsSBADPCMDecode_G722_16s");
    require(zspsQMFDecode_G722_16s(samples.data(), samples.data(), length, delayLine_.data()),
            "zspsQMFDecode_G722_16s");
}

} // namespace zsp::host
