// The mode of an AMR or AMR-WB encoder, from what the peer asks for. RFC 4867, clauses 3.6 and 8.1.

#include "voice/api/record.hpp"
#include "zspvoice.h"

#include <bit>
#include <cstdint>

namespace zsp::voice {
namespace {

constexpr std::uint32_t kInitialModes = 0x0FF; // without a mode set, of AMR and AMR-WB

constexpr std::uint32_t upTo(std::int32_t mode) noexcept
{
    return (2U << mode) - 1;
}

constexpr std::int32_t lowest(std::uint32_t set) noexcept
{
    return std::countr_zero(set);
}

constexpr std::int32_t highest(std::uint32_t set) noexcept
{
    return static_cast<std::int32_t>(std::bit_width(set)) - 1;
}

/// The mode of the set that comes closest without being above; the lowest if all are above.
constexpr std::int32_t atMost(std::uint32_t set, std::int32_t mode) noexcept
{
    const std::uint32_t below = set & upTo(mode);
    return below ? highest(below) : lowest(set);
}
static_assert(atMost(0x95, 7) == 7 && atMost(0x95, 6) == 4 && atMost(0x94, 1) == 2);

/// Of an even number of modes, the lower one of the middle two.
constexpr std::int32_t middle(std::uint32_t set) noexcept
{
    for (int above = std::popcount(set) / 2; above > 0; --above)
        set &= upTo(highest(set)) >> 1;
    return highest(set);
}
static_assert(middle(0x01) == 0 && middle(0x95) == 2 && middle(0x07) == 1 && middle(0xFF) == 3);

/// The next mode of the set on the way from one to the other, both in the set.
constexpr std::int32_t neighbour(std::uint32_t set, std::int32_t from, std::int32_t to) noexcept
{
    if (to > from) return lowest(set & ~upTo(from));
    return to < from ? highest(set & (upTo(from) >> 1)) : from;
}
static_assert(neighbour(0x95, 0, 7) == 2 && neighbour(0x95, 7, 0) == 4);

} // namespace
} // namespace zsp::voice

ZspStatus zspvSelectMode(const ZspvCodec* codec, const ZspvParams* params, int32_t requested,
                         int32_t current, int32_t frames, int32_t* mode)
{
    using namespace zsp::voice;
    if (!codec || !mode) return zspStsNullPtrErr;
    if (params && !plausible(*params)) return zspStsSizeErr;
    const std::int32_t modes = codec->bitRateCount;
    if (modes < 1 || modes > ZSPV_NO_REQUEST) return zspStsBadArgErr;
    if (requested < 0 || requested > ZSPV_NO_REQUEST) return zspStsRangeErr;
    if (current < -1 || current >= ZSPV_NO_REQUEST || frames < 0) return zspStsRangeErr;

    const ZspvParams given = params ? readRecord(*params) : ZspvParams{};
    const std::uint32_t agreed = static_cast<std::uint32_t>(given.modeSet) & upTo(modes - 1);
    const std::uint32_t set = agreed ? agreed : upTo(modes - 1);
    const bool isRequest = requested < modes; // what is reserved asks for nothing

    const bool inUse = current >= 0 && (set >> current & 1) != 0;
    if (!inUse) { // at the start, or after the set was agreed anew
        if (isRequest)
            *mode = atMost(set, requested);
        else
            *mode =
                current < 0 ? middle(agreed ? agreed : set & kInitialModes) : atMost(set, current);
        return zspStsNoErr;
    }
    const bool mayChange = given.modeChangePeriod != 2 || (frames > 0 && frames % 2 == 0);
    const std::int32_t wanted = isRequest && mayChange ? atMost(set, requested) : current;
    *mode = given.modeChangeNeighbor ? neighbour(set, current, wanted) : wanted;
    return zspStsNoErr;
}
