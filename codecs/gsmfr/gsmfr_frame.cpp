// A stored frame, RFC 3551, section 4.5.8: the signature 1101, then the 76 parameters in the order
// of GSM 06.10, table 1.1, each with its most significant bit first. Signature and log area ratios
// fill five bytes, each of the four sub-segments seven.

#include "codecs/gsmfr/gsmfr_frame.hpp"

#include "codecs/shared/bits.hpp"
#include "core/entries.hpp"

#include <cassert>

namespace zsp::gsmfr {

namespace {

using Writer = codecs::BitWriter<codecs::BitOrder::highestFirst>;
using Reader = codecs::BitReader<codecs::BitOrder::highestFirst>;

template <std::size_t n>
bool fit(const std::array<int, n>& widths, const std::int16_t* fields) noexcept
{
    int beyond = 0;
    for (std::size_t i = 0; i < n; ++i)
        beyond |= static_cast<std::uint16_t>(fields[i]) >> widths[i];
    return beyond == 0;
}

constexpr int kHeadBits = 36, kSegmentWidth = 56;
constexpr std::size_t kSegmentFields = kSegmentBits.size();
static_assert(4 + kHeadBits + 4 * kSegmentWidth == 8 * kFrameBytes);
static_assert(kOrder + 4 * kSegmentFields == kParameters);

} // namespace

bool parametersInRange(InParameters parameters) noexcept
{
    bool all = fit(kLarBits, &parameters[0]);
    for (std::size_t j = 0; j < 4; ++j)
        all &= fit(kSegmentBits, &parameters[kOrder + j * kSegmentFields]);
    return all;
}

bool hasSignature(InBytes bytes) noexcept
{
    return bytes[0] >> 4 == kSignature;
}

void packFrame(InParameters parameters, Bytes bytes) noexcept
{
    assert(parametersInRange(parameters));
    Writer to(bytes);
    to.put(kSignature, 4);
    to.put(codecs::joined(kLarBits, &parameters[0]), kHeadBits);
    for (std::size_t j = 0; j < 4; ++j)
        to.put(codecs::joined(kSegmentBits, &parameters[kOrder + j * kSegmentFields]),
               kSegmentWidth);
}

void unpackFrame(InBytes bytes, Parameters parameters) noexcept
{
    Reader from(bytes);
    from.take(4);
    codecs::split(kLarBits, from.takeWide(kHeadBits), &parameters[0]);
    for (std::size_t j = 0; j < 4; ++j)
        codecs::split(kSegmentBits, from.takeWide(kSegmentWidth),
                      &parameters[kOrder + j * kSegmentFields]);
}

} // namespace zsp::gsmfr

namespace zsp::entry {

using gsmfr::kFrameBytes;
using gsmfr::kParameters;

ZspStatus zspsPackFrame_GSMFR_16s8u(const std::int16_t* src, std::uint8_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (!gsmfr::parametersInRange(spanOf<kParameters>(src))) return zspStsCodecRangeErr;

    gsmfr::packFrame(spanOf<kParameters>(src), spanOf<kFrameBytes>(dst));
    return zspStsNoErr;
}

ZspStatus zspsUnpackFrame_GSMFR_8u16s(const std::uint8_t* src, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (!gsmfr::hasSignature(spanOf<kFrameBytes>(src))) return zspStsCodecRangeErr;

    gsmfr::unpackFrame(spanOf<kFrameBytes>(src), spanOf<kParameters>(dst));
    return zspStsNoErr;
}

} // namespace zsp::entry
