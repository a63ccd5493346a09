// Puts code words into octets and takes them out again.

#include "tools/zsp/codec/packing.hpp"

namespace zsp::host {

namespace {

// Moves words of `from` bits to words of `to` bits. In little-end-first order the next bits enter
// above the pending ones, otherwise below them.
void regroup(bool lowFirst, int from, int to, std::uint32_t& pending, int& pendingBits,
             std::span<const std::uint8_t> in, std::vector<std::uint8_t>& out)
{
    const std::uint32_t mask = (1u << to) - 1u;
    for (const std::uint8_t word : in) {
        pending = lowFirst ? pending | std::uint32_t{word} << pendingBits : pending << from | word;
        pendingBits += from;
        while (pendingBits >= to) {
            pendingBits -= to;
            if (lowFirst) {
                out.push_back(static_cast<std::uint8_t>(pending & mask));
                pending >>= to;
            } else {
                out.push_back(static_cast<std::uint8_t>(pending >> pendingBits & mask));
            }
        }
    }
}

} // namespace

void Packer::pack(std::span<const std::uint8_t> codes, std::vector<std::uint8_t>& bytes)
{
    if (packing_ == Packing::unpacked)
        bytes.insert(bytes.end(), codes.begin(), codes.end());
    else
        regroup(packing_ == Packing::rfc3551, bits_, 8, pending_, pendingBits_, codes, bytes);
}

void Packer::finish(std::vector<std::uint8_t>& bytes)
{
    if (pendingBits_ == 0) return;
    const std::uint32_t byte =
        packing_ == Packing::rfc3551 ? pending_ : pending_ << (8 - pendingBits_);
    bytes.push_back(static_cast<std::uint8_t>(byte));
    pendingBits_ = 0;
    pending_ = 0;
}

void dropFilling(std::vector<std::uint8_t>& words, int bits)
{
    for (int most = bits > 2 ? 7 / bits : 0; most > 0 && !words.empty() && words.back() == 0;
         --most)
        words.pop_back();
}

void Unpacker::unpack(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& codes)
{
    if (packing_ == Packing::unpacked)
        codes.insert(codes.end(), bytes.begin(), bytes.end());
    else
        regroup(packing_ == Packing::rfc3551, 8, bits_, pending_, pendingBits_, bytes, codes);
}

} // namespace zsp::host
