// Sizes of states: one family for all that only report a number.

#include "tests/fuzz/describe.hpp"

namespace zsp::fuzz {

namespace {

template <std::int32_t bytes>
void sizeIs(std::int32_t* size)
{
    *size = bytes;
}

} // namespace

Family sizes()
{
    const auto plain = [](std::string name, ZspStatus (*f)(std::int32_t*),
                          void (*is)(std::int32_t*)) {
        return Description(std::move(name), f, {out(1)}, {nulls()}, is);
    };
    return {.name = "sizes",
            .exports = {
                plain(ZSP_DESCRIBED(zspsSBADPCMEncodeStateSize_G722_16s), sizeIs<144>),
                plain(ZSP_DESCRIBED(zspsSBADPCMDecodeStateSize_G722_16s), sizeIs<144>),
                plain(ZSP_DESCRIBED(zspsEncodeGetStateSize_G726_16s8u), sizeIs<88>),
                plain(ZSP_DESCRIBED(zspsDecodeGetStateSize_G726_8u16s), sizeIs<92>),
                plain(ZSP_DESCRIBED(zspsHighPassFilterSize_G729), sizeIs<24>),
                plain(ZSP_DESCRIBED(zspsFilterHighpassGetStateSize_G7291_16s), sizeIs<24>),
                plain(ZSP_DESCRIBED(zspsAdaptiveCodebookDecodeGetSize_AMRWB_16s), sizeIs<24>),
                plain(ZSP_DESCRIBED(zspsVADGetSize_AMRWB_16s), sizeIs<172>),
                plain(ZSP_DESCRIBED(zspsALCGetStateSize_G169_16s), sizeIs<124>),
                {ZSP_DESCRIBED(zspsToneDetectGetStateSize_EC_32f),
                 {oneOf({8000, 16000}), out(1)},
                 {nulls(), outside(0, zspStsRangeErr)},
                 [](std::int32_t, std::int32_t* size) { *size = 80; }},
            }};
}

} // namespace zsp::fuzz
