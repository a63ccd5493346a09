// Speech for benchmarks of coders, whose speed depends on what they code.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace zsp::bench {

inline constexpr const char* kVoice8 = "g726/voice.sl";    ///< 8 kHz, 14-bit uniform PCM
inline constexpr const char* kVoice16 = "g722/speech.pcm"; ///< 16 kHz

/// A recording. Without it there is nothing to measure: a missing file ends the program.
std::vector<std::int16_t> speech(const char* name = kVoice8);

/// The one at 8 kHz, with its 14 bits as the upper ones of 16.
std::vector<std::int16_t> fullScaleSpeech();

/// Walks through a signal in blocks, again and again.
template <typename T>
class Blocks {
  public:
    Blocks(std::vector<T> signal, std::size_t block) : signal_(std::move(signal)), block_(block) {}

    std::span<const T> next()
    {
        if (position_ + block_ > signal_.size()) position_ = 0;
        const std::span<const T> block(&signal_[position_], block_);
        position_ += block_;
        return block;
    }

  private:
    std::vector<T> signal_;
    std::size_t block_;
    std::size_t position_ = 0;
};

} // namespace zsp::bench
