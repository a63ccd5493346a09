// The library's G.722 parts put together to an encoder and a decoder of the packed byte stream.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace zsp::host {

/// Samples by which a decoded signal lags behind the coded one: two filters of 24 taps.
inline constexpr std::size_t kG722Delay = 22;

/// Bit rate of modes 1 to 3 in kbit/s.
constexpr int g722Rate(int mode)
{
    return 72 - 8 * mode;
}

class G722Encoder {
  public:
    /// In modes 2 and 3 the lowest one and two bits of every byte carry no speech and are 0.
    explicit G722Encoder(int mode);
    /// Two 16 kHz samples per byte: I_H in the upper two bits, I_L below.
    void encode(std::span<const std::int16_t> samples, std::span<std::uint8_t> bytes);

  private:
    std::vector<std::uint8_t> state_;
    std::array<std::int16_t, 24> delayLine_{};
    std::vector<std::int16_t> pairs_;
    std::uint8_t mask_;
};

class G722Decoder {
  public:
    explicit G722Decoder(int mode);
    void decode(std::span<const std::uint8_t> bytes, std::span<std::int16_t> samples);

  private:
    std::vector<std::uint8_t> state_;
    std::array<std::int16_t, 24> delayLine_{};
    std::int16_t mode_;
};

} // namespace zsp::host
