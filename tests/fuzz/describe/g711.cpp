// Conversions of G.711.

#include "codecs/g711/g711_pcm.hpp"
#include "tests/fuzz/describe.hpp"

namespace zsp::fuzz {

namespace {

std::vector<Family> describe()
{
    const Argument law = number(zspG711LawMu, zspG711LawA);
    const std::vector<Check> checks = {nulls(), outside(2, zspStsSizeErr),
                                       outside(3, zspStsRangeErr)};
    return {
        {.name = "g711",
         .exports = {{ZSP_DESCRIBED(zspsEncode_G711_16s8u),
                      {in(arg(2)), out(arg(2)), length(), law},
                      checks,
                      [](const Word* src, std::uint8_t* dst, Long len, Long which) {
                          g711::encodeScalar({src, size(len)}, {dst, size(len)},
                                             static_cast<g711::Law>(which));
                      }},
                     {ZSP_DESCRIBED(zspsDecode_G711_8u16s),
                      {in(arg(2)), out(arg(2)), length(), law},
                      checks,
                      [](const std::uint8_t* src, Word* dst, Long len, Long which) {
                          g711::decodeScalar({src, size(len)}, {dst, size(len)},
                                             static_cast<g711::Law>(which));
                      }}}},
    };
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
