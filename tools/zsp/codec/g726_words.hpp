// G.726 by code words, for what the whole codec of libzspvoice does not offer: one code word per
// byte, and decoding straight to a law of G.711, which keeps a chain of coders from adding noise
// (synchronous coding adjustment).
#pragma once

#include "tools/zsp/io/audio_format.hpp"

#include <cstdint>
#include <span>
#include <vector>

namespace zsp::host {

class G726WordDecoder {
  public:
    /// `bits` 2 to 5 of a code word.
    G726WordDecoder(int bits, Encoding law);
    /// Appends 16-bit samples whose two lower bits are 0, or code words of the law.
    void decode(std::span<const std::uint8_t> words, std::vector<std::int16_t>& out);

  private:
    std::vector<std::uint8_t> state_;
    bool linear_;
};

/// Throws a Failure when a byte of `words` has more than `bits` bits; `offset` is that of the first
/// one in the file at `path`. The library trusts its code bytes.
void checkWords(const std::string& path, std::span<const std::uint8_t> words, std::uint64_t offset,
                int bits);

} // namespace zsp::host
