#include "tools/zsp/io/g726_codec.hpp"

#include "tools/zsp/io/failure.hpp"

#include "zspsc.h"

#include <algorithm>

namespace zsp::host {

namespace {

/// The library's code of a bit rate.
std::int32_t rateCode(int kbitPerSecond)
{
    switch (kbitPerSecond) {
    case 16:
        return 17;
    case 24:
        return 22;
    case 32:
        return 23;
    default:
        return 24;
    }
}

} // namespace

G726Encoder::G726Encoder(int kbitPerSecond)
{
    std::int32_t size = 0;
    require(zspsEncodeGetStateSize_G726_16s8u(&size), "zspsEncodeGetStateSize_G726_16s8u");
    state_.resize(static_cast<std::size_t>(size));
    require(zspsEncodeInit_G726_16s8u(state_.data(), rateCode(kbitPerSecond)),
            "zspsEncodeInit_G726_16s8u");
}

void G726Encoder::encode(std::span<const std::int16_t> samples, std::span<std::uint8_t> codes)
{
    if (samples.empty()) return;
    uniform_.resize(samples.size());
    std::transform(samples.begin(), samples.end(), uniform_.begin(),
                   [](std::int16_t x) { return static_cast<std::int16_t>(x >> 2); });
    require(zspsEncode_G726_16s8u(state_.data(), uniform_.data(), codes.data(),
                                  static_cast<std::int32_t>(samples.size())),
            "zspsEncode_G726_16s8u");
}

G726Decoder::G726Decoder(int kbitPerSecond, G726Law law) : linear_(law == G726Law::linear)
{
    std::int32_t size = 0;
    require(zspsDecodeGetStateSize_G726_8u16s(&size), "zspsDecodeGetStateSize_G726_8u16s");
    state_.resize(static_cast<std::size_t>(size));
    require(zspsDecodeInit_G726_8u16s(state_.data(), rateCode(kbitPerSecond),
                                      static_cast<std::int32_t>(law)),
            "zspsDecodeInit_G726_8u16s");
}

void G726Decoder::decode(std::span<const std::uint8_t> codes, std::span<std::int16_t> out)
{
    if (codes.empty()) return;
    require(zspsDecode_G726_8u16s(state_.data(), codes.data(), out.data(),
                                  static_cast<std::int32_t>(codes.size())),
            "zspsDecode_G726_8u16s");
    if (linear_)
        for (std::int16_t& x : out)
            x = static_cast<std::int16_t>(x * 4);
}

} // namespace zsp::host
