// The library's G.726 coder behind C++ objects that own their state.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zsp::host {

inline constexpr int kG726Rates[] = {16, 24, 32, 40}; // kbit/s

/// Bits per code word: one per 8 kbit/s.
constexpr int g726Bits(int kbitPerSecond)
{
    return kbitPerSecond / 8;
}

/// What a decoder writes; the values are the library's law codes.
enum class G726Law : std::int32_t { muLaw = 0, aLaw = 1, linear = 2 };

class G726Encoder {
  public:
    explicit G726Encoder(int kbitPerSecond);
    /// Codes 16-bit samples, of which the upper 14 bits count, to one code word per byte.
    void encode(std::span<const std::int16_t> samples, std::span<std::uint8_t> codes);

  private:
    std::vector<std::uint8_t> state_;
    std::vector<std::int16_t> uniform_; // 14-bit samples
};

class G726Decoder {
  public:
    G726Decoder(int kbitPerSecond, G726Law law);
    /// Decodes to 16-bit samples whose two lower bits are 0, or to code words of the law.
    void decode(std::span<const std::uint8_t> codes, std::span<std::int16_t> out);

  private:
    std::vector<std::uint8_t> state_;
    bool linear_;
};

} // namespace zsp::host
