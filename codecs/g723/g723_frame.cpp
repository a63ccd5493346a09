// Frames of ITU-T G.723.1, clause 4, and of its Annex A: 24, 20, 4 or 1 octets whose two lowest
// bits tell the type. Fields follow each other from the lowest bit up.

#include "codecs/g723/g723.hpp"
#include "codecs/shared/bits.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <array>
#include <cassert>

namespace zsp::g723 {

namespace {

constexpr std::array<std::size_t, 4> kBytes = {24, 20, 4, 1};

constexpr bool inRange(std::int32_t x, std::int32_t low, std::int32_t high) noexcept
{
    return x >= low && x <= high;
}

using Writer = codecs::BitWriter<codecs::BitOrder::lowestFirst>;
using Reader = codecs::BitReader<codecs::BitOrder::lowestFirst>;

/// The low bits of the position codes at 6.3 kbit/s; what is above them shares 13 bits.
constexpr std::array<int, 4> kLowBits = {16, 14, 16, 14};
constexpr int kHighBits = 13;

void packActive(const ZspG723Frame& f, Writer& to) noexcept
{
    const bool high = f.type == zspG723Rate63;
    to.put(f.lspIndex, 24);
    for (std::size_t pair = 0; pair < 2; ++pair) {
        to.put(f.lag[pair] - kLowestLag, 7);
        to.put(f.lagOffset[2 * pair + 1], 2);
    }
    for (std::size_t i = 0; i < 4; ++i) {
        const bool train = f.train[i] != 0 && usesSmallBook(f.type, f.lag[i / 2]);
        to.put(f.acbGain[i] * 24 + f.fcbGain[i] + (train ? 2048 : 0), 12);
    }
    for (const Word grid : f.grid)
        to.put(grid, 1);
    if (high) {
        to.put(0, 1);
        const std::int32_t* p = f.position;
        to.put(((p[0] >> 16) * 9 + (p[1] >> 14)) * 90 + (p[2] >> 16) * 9 + (p[3] >> 14), kHighBits);
    }
    for (std::size_t i = 0; i < 4; ++i)
        to.put(f.position[i], high ? kLowBits[i] : 12);
    for (std::size_t i = 0; i < 4; ++i)
        to.put(f.signs[i], high ? kPulseCount[i] : 4);
}

/// False for a lag or a gain that is none.
bool unpackActive(Reader& from, ZspG723Frame& f) noexcept
{
    const bool high = f.type == zspG723Rate63;
    f.lspIndex = from.take(24);
    for (std::size_t pair = 0; pair < 2; ++pair) {
        const Word lag = from.takeWord(7);
        if (lag > 123) return false;
        f.lag[pair] = static_cast<Word>(lag + kLowestLag);
        f.lagOffset[2 * pair] = 1;
        f.lagOffset[2 * pair + 1] = from.takeWord(2);
    }
    for (std::size_t i = 0; i < 4; ++i) {
        const bool small = usesSmallBook(f.type, f.lag[i / 2]);
        const std::int32_t field = from.take(12);
        f.train[i] = static_cast<Word>(small ? field >> 11 : 0);
        const std::int32_t gains = small ? field & 2047 : field;
        f.acbGain[i] = static_cast<Word>(gains / 24);
        f.fcbGain[i] = static_cast<Word>(gains % 24);
        if (f.acbGain[i] >= (small ? 85 : 170)) return false;
    }
    for (Word& grid : f.grid)
        grid = from.takeWord(1);
    std::array<std::int32_t, 4> upper{};
    if (high) {
        from.take(1);
        const std::int32_t code = from.take(kHighBits), first = code / 90, second = code % 90;
        upper = {first / 9, first % 9, second / 9, second % 9};
    }
    for (std::size_t i = 0; i < 4; ++i)
        f.position[i] = from.take(high ? kLowBits[i] : 12) | upper[i] << kLowBits[i];
    for (std::size_t i = 0; i < 4; ++i)
        f.signs[i] = from.takeWord(high ? kPulseCount[i] : 4);
    return true;
}

bool activePacks(const ZspG723Frame& f) noexcept
{
    const bool high = f.type == zspG723Rate63;
    for (std::size_t i = 0; i < 4; ++i) {
        if (!inRange(f.lag[i / 2], kLowestLag, kLowestLag + 123)) return false;
        if (i % 2 == 0 ? f.lagOffset[i] != 1 : !inRange(f.lagOffset[i], 0, 3)) return false;
        if (!adaptiveFits(f, i) || !inRange(f.fcbGain[i], 0, 23)) return false;
        if (!inRange(f.train[i], 0, 1) || !inRange(f.grid[i], 0, 1)) return false;
        if (!inRange(f.position[i], 0, high ? kMaxPosition[i] : 4095)) return false;
        if (!inRange(f.signs[i], 0, (1 << (high ? kPulseCount[i] : 4)) - 1)) return false;
    }
    return true;
}

} // namespace

bool adaptiveFits(const ZspG723Frame& f, std::size_t subframe) noexcept
{
    const Word lag = f.lag[subframe / 2], offset = f.lagOffset[subframe];
    return inRange(f.type, zspG723Rate63, zspG723Untransmitted) &&
           inRange(lag, kLowestLag, kHighestLag) && inRange(offset, 0, 3) &&
           lag + offset - 1 <= kHighestLag &&
           inRange(f.acbGain[subframe], 0, usesSmallBook(f.type, lag) ? 84 : 169);
}

std::size_t frameBytes(std::int32_t type) noexcept
{
    assert(inRange(type, zspG723Rate63, zspG723Untransmitted));
    return kBytes[static_cast<std::size_t>(type)];
}

bool framePacks(const ZspG723Frame& f) noexcept
{
    if (!inRange(f.type, zspG723Rate63, zspG723Untransmitted)) return false;
    if (f.type == zspG723Untransmitted) return true;
    if (!inRange(f.lspIndex, 0, 0xffffff)) return false;
    return f.type == zspG723Sid ? inRange(f.sidGain, 0, 63) : activePacks(f);
}

void packFrame(const ZspG723Frame& f, std::span<std::uint8_t> bytes) noexcept
{
    Writer to(bytes.first(frameBytes(f.type)));
    to.put(f.type, 2);
    if (f.type == zspG723Sid) {
        to.put(f.lspIndex, 24);
        to.put(f.sidGain, 6);
    } else if (f.type != zspG723Untransmitted) {
        packActive(f, to);
    }
    to.finish();
}

bool unpackFrame(std::span<const std::uint8_t> bytes, ZspG723Frame& f) noexcept
{
    Reader from(bytes);
    ZspG723Frame read{};
    read.type = from.take(2);
    if (read.type == zspG723Sid) {
        read.lspIndex = from.take(24);
        read.sidGain = from.takeWord(6);
    } else if (read.type != zspG723Untransmitted && !unpackActive(from, read)) {
        return false;
    }
    f = read;
    return true;
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsPackFrame_G723_8u(const ZspG723Frame* frame, std::uint8_t* dst, std::int32_t* len)
{
    if (!frame || !dst || !len) return zspStsNullPtrErr;
    const auto f = readRecord<ZspG723Frame>(frame);
    if (!g723::framePacks(f)) return zspStsCodecRangeErr;

    const std::size_t bytes = g723::frameBytes(f.type);
    g723::packFrame(f, {dst, bytes});
    *len = static_cast<std::int32_t>(bytes);
    return zspStsNoErr;
}

ZspStatus zspsUnpackFrame_G723_8u(const std::uint8_t* src, std::int32_t len, ZspG723Frame* frame)
{
    if (!src || !frame) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;
    if (static_cast<std::size_t>(len) != g723::frameBytes(src[0] & 3)) return zspStsSizeErr;
    ZspG723Frame f{};
    if (!g723::unpackFrame({src, static_cast<std::size_t>(len)}, f)) return zspStsCodecRangeErr;

    placeRecord(frame, f);
    return zspStsNoErr;
}

} // namespace zsp::entry
