// G.726 code words in bytes: one word per byte, or packed in one of the two usual orders.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zsp::host {

enum class Packing {
    unpacked, ///< one code word per byte, right-aligned
    rfc3551,  ///< the first code word in the least significant bits, RFC 3551 section 4.5.4
    aal2      ///< the first code word in the most significant bits, ITU-T I.366.2 Annex E
};

/// Packs code words of `bits` bits, block after block; a word may continue in the next byte.
class Packer {
  public:
    Packer(Packing packing, int bits) : packing_(packing), bits_(bits) {}

    /// Appends the bytes that `codes` complete.
    void pack(std::span<const std::uint8_t> codes, std::vector<std::uint8_t>& bytes);
    /// Appends the last, partly filled byte; its free bits are 0.
    void finish(std::vector<std::uint8_t>& bytes);

  private:
    Packing packing_;
    int bits_;
    std::uint32_t pending_ = 0; // bits that do not fill a byte yet
    int pendingBits_ = 0;
};

/// Drops code words of 0 at the end, as many as may fill up the last byte. From 3 bits on they are
/// told from code words, since no encoder sends 0.
void dropFilling(std::vector<std::uint8_t>& words, int bits);

/// The opposite of Packer. Bits behind the last whole code word are dropped.
class Unpacker {
  public:
    Unpacker(Packing packing, int bits) : packing_(packing), bits_(bits) {}

    void unpack(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& codes);

  private:
    Packing packing_;
    int bits_;
    std::uint32_t pending_ = 0;
    int pendingBits_ = 0;
};

} // namespace zsp::host
