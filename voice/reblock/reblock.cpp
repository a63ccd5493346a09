// Frames of one length from blocks of any length.

#include "voice/api/object.hpp"
#include "voice/api/spans.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace zsp::voice {

namespace {

constexpr std::int32_t kLargest = 1048576;

/// Its samples stand behind, those held from `first` on.
struct ReblockObject {
    std::int32_t frame;
    std::int32_t room; // samples in all: less than a frame, and a block
    std::int32_t first;
    std::int32_t held;

    std::int16_t* samples() noexcept { return reinterpret_cast<std::int16_t*>(behind(this)); }

    /// Gives the oldest samples out.
    void take(std::int16_t* out, std::int32_t count) noexcept
    {
        std::copy_n(samples() + first, count, out);
        first += count;
        held -= count;
    }
};

bool allowed(std::int32_t frame, std::int32_t block) noexcept
{
    return frame >= 1 && frame <= kLargest && block >= 1 && block <= kLargest;
}

std::int32_t bytesFor(std::int32_t frame, std::int32_t block) noexcept
{
    const std::int32_t room = frame - 1 + block; // no more than 2^21
    return placedSize(padded(sizeof(ReblockObject)) +
                      static_cast<std::size_t>(room) * sizeof(std::int16_t));
}

} // namespace

} // namespace zsp::voice

using zsp::voice::placed;
using zsp::voice::ReblockObject;

ZspStatus zspvReblockGetSize(std::int32_t frame, std::int32_t block, std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;
    if (!zsp::voice::allowed(frame, block)) return zspStsSizeErr;

    *size = zsp::voice::bytesFor(frame, block);
    return zspStsNoErr;
}

ZspStatus zspvReblockInit(void* memory, std::int32_t capacity, std::int32_t frame,
                          std::int32_t block, ZspvReblock** reblock)
{
    if (!memory || !reblock) return zspStsNullPtrErr;
    if (!zsp::voice::allowed(frame, block)) return zspStsSizeErr;
    if (capacity < zsp::voice::bytesFor(frame, block)) return zspStsSizeErr;

    *placed<ReblockObject>(memory) = {
        .frame = frame, .room = frame - 1 + block, .first = 0, .held = 0};
    *reblock = static_cast<ZspvReblock*>(memory);
    return zspStsNoErr;
}

ZspStatus zspvReblockCreate(std::int32_t frame, std::int32_t block, ZspvReblock** reblock)
{
    if (!reblock) return zspStsNullPtrErr;
    if (!zsp::voice::allowed(frame, block)) return zspStsSizeErr;

    const auto init = [frame, block](void* memory, std::int32_t capacity, ZspvReblock** made) {
        return zspvReblockInit(memory, capacity, frame, block, made);
    };
    return zsp::voice::createObject(zsp::voice::bytesFor(frame, block), init, reblock);
}

void zspvReblockDestroy(ZspvReblock* reblock)
{
    std::free(reblock);
}

ZspStatus zspvReblockReset(ZspvReblock* reblock)
{
    if (!reblock) return zspStsNullPtrErr;

    auto* object = placed<ReblockObject>(reblock);
    object->first = 0;
    object->held = 0;
    return zspStsNoErr;
}

ZspStatus zspvReblockPush(ZspvReblock* reblock, const std::int16_t* samples, std::int32_t count)
{
    if (!reblock || !samples) return zspStsNullPtrErr;
    auto* object = placed<ReblockObject>(reblock);
    if (count < 0 || count > object->room - object->held) return zspStsSizeErr;

    std::int16_t* all = object->samples();
    if (object->first + object->held + count > object->room) {
        std::memmove(all, all + object->first,
                     static_cast<std::size_t>(object->held) * sizeof(std::int16_t));
        object->first = 0;
    }
    std::copy_n(samples, count, all + object->first + object->held);
    object->held += count;
    return zspStsNoErr;
}

ZspStatus zspvReblockPull(ZspvReblock* reblock, std::int16_t* samples, std::int32_t capacity,
                          std::int32_t* count)
{
    if (!reblock || !samples || !count) return zspStsNullPtrErr;
    auto* object = placed<ReblockObject>(reblock);
    if (capacity < object->frame) return zspStsSizeErr;

    *count = object->held >= object->frame ? object->frame : 0;
    object->take(samples, *count);
    return zspStsNoErr;
}

ZspStatus zspvReblockFlush(ZspvReblock* reblock, std::int16_t* samples, std::int32_t capacity,
                           std::int32_t* count)
{
    if (!reblock || !samples || !count) return zspStsNullPtrErr;
    auto* object = placed<ReblockObject>(reblock);
    if (capacity < object->frame || object->held >= object->frame) return zspStsSizeErr;

    *count = object->held;
    if (*count > 0) {
        object->take(samples, *count);
        std::fill(samples + *count, samples + object->frame, std::int16_t{0});
    }
    return zspStsNoErr;
}

ZspStatus zspvReblockGetHeld(const ZspvReblock* reblock, std::int32_t* held)
{
    if (!reblock || !held) return zspStsNullPtrErr;

    *held = placed<ReblockObject>(reblock)->held;
    return zspStsNoErr;
}
