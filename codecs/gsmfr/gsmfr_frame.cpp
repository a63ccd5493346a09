// A stored frame, RFC 3551, section 4.5.8: the signature 1101, then the 76 parameters in the order
// of GSM 06.10, table 1.1, each with its most significant bit first. Signature and log area ratios
// fill five bytes, each of the four sub-segments seven.

#include "codecs/gsmfr/gsmfr_frame.hpp"

#include "core/entries.hpp"

#include <cassert>

namespace zsp::gsmfr {

namespace {

/// Fields one behind the other in the lower bits of a number, the last one lowest.
template <std::size_t n>
std::uint64_t joined(const std::array<int, n>& widths, const std::int16_t* fields,
                     std::uint64_t before = 0) noexcept
{
    for (std::size_t i = 0; i < n; ++i)
        before = before << widths[i] | static_cast<std::uint16_t>(fields[i]);
    return before;
}

template <std::size_t n>
void split(const std::array<int, n>& widths, std::uint64_t bits, std::int16_t* fields) noexcept
{
    for (std::size_t i = n; i-- > 0; bits >>= widths[i])
        fields[i] = static_cast<std::int16_t>(bits & ((1u << widths[i]) - 1));
}

/// The most significant byte first.
template <std::size_t n>
void storeBig(std::uint64_t value, std::uint8_t* bytes) noexcept
{
    for (std::size_t i = n; i-- > 0; value >>= 8)
        bytes[i] = static_cast<std::uint8_t>(value);
}

template <std::size_t n>
std::uint64_t loadBig(const std::uint8_t* bytes) noexcept
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < n; ++i)
        value = value << 8 | bytes[i];
    return value;
}

template <std::size_t n>
bool fit(const std::array<int, n>& widths, const std::int16_t* fields) noexcept
{
    int beyond = 0;
    for (std::size_t i = 0; i < n; ++i)
        beyond |= static_cast<std::uint16_t>(fields[i]) >> widths[i];
    return beyond == 0;
}

constexpr std::size_t kHeadBytes = 5, kSegmentBytes = 7;
constexpr std::size_t kSegmentFields = kSegmentBits.size();
static_assert(kHeadBytes + 4 * kSegmentBytes == kFrameBytes);
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
    storeBig<kHeadBytes>(joined(kLarBits, &parameters[0], kSignature), &bytes[0]);
    for (std::size_t j = 0; j < 4; ++j)
        storeBig<kSegmentBytes>(joined(kSegmentBits, &parameters[kOrder + j * kSegmentFields]),
                                &bytes[kHeadBytes + j * kSegmentBytes]);
}

void unpackFrame(InBytes bytes, Parameters parameters) noexcept
{
    split(kLarBits, loadBig<kHeadBytes>(&bytes[0]), &parameters[0]);
    for (std::size_t j = 0; j < 4; ++j)
        split(kSegmentBits, loadBig<kSegmentBytes>(&bytes[kHeadBytes + j * kSegmentBytes]),
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
