// The G.726 blocks behind C++ objects.

#include "tools/zsp/codec/g726_words.hpp"

#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/text.hpp"
#include "zspsc/g726.h"

#include <algorithm>
#include <array>

namespace zsp::host {

G726WordDecoder::G726WordDecoder(int bits, Encoding law) : linear_(law == Encoding::linear)
{
    constexpr std::array kRates = {zspG726Rate16, zspG726Rate24, zspG726Rate32, zspG726Rate40};
    const auto code = law == Encoding::linear  ? zspG726LawLinear
                      : law == Encoding::muLaw ? zspG726LawMu
                                               : zspG726LawA;
    std::int32_t size = 0;
    require(zspsDecodeGetStateSize_G726_8u16s(&size), "zspsDecodeGetStateSize_G726_8u16s");
    state_.resize(static_cast<std::size_t>(size));
    require(
        zspsDecodeInit_G726_8u16s(state_.data(), kRates[static_cast<std::size_t>(bits - 2)], code),
        "zspsDecodeInit_G726_8u16s");
}

void G726WordDecoder::decode(std::span<const std::uint8_t> words, std::vector<std::int16_t>& out)
{
    if (words.empty()) return;
    const std::size_t start = out.size();
    out.resize(start + words.size());
    require(zspsDecode_G726_8u16s(state_.data(), words.data(), out.data() + start,
                                  static_cast<std::int32_t>(words.size())),
            "zspsDecode_G726_8u16s");
    if (linear_)
        for (std::int16_t& x : std::span(out).subspan(start))
            x = static_cast<std::int16_t>(x * 4);
}

void checkWords(const std::string& path, std::span<const std::uint8_t> words, std::uint64_t offset,
                int bits)
{
    const auto wrong = std::find_if(words.begin(), words.end(),
                                    [bits](std::uint8_t word) { return word >> bits != 0; });
    if (wrong == words.end()) return;
    const auto position = offset + static_cast<std::uint64_t>(wrong - words.begin());
    throw Failure(path, "byte " + std::to_string(position) +
                            format(" is 0x%02x, no code word of %d bits (wrong rate, or a packed "
                                   "file?)",
                                   *wrong, bits));
}

} // namespace zsp::host
