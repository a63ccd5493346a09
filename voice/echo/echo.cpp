// The echo canceller's public functions but those on blocks of samples: the life of an object, its
// settings, what it has achieved.

#include "voice/api/object.hpp"
#include "voice/api/record.hpp"
#include "voice/echo/echo_object.hpp"

#include <new>

namespace {

using namespace zsp::voice;
using namespace zsp::voice::echo;

struct Settings {
    CancellerSettings canceller;
    std::int32_t ringMs;
};

bool isSwitch(std::int32_t value)
{
    return value == zspvDefault || value == zspvOn || value == zspvOff;
}

bool validDelay(std::int32_t ms)
{
    return ms >= -Canceller::kLongestLeadMs && ms <= Canceller::kLongestDelayMs;
}

/// The settings with all defaults filled in.
ZspStatus resolve(const ZspvEchoConfig& given, Settings& settings)
{
    if (!plausible(given)) return zspStsSizeErr;
    const ZspvEchoConfig config = readRecord(given);
    const std::int32_t tailMs = config.tailMs == 0 ? 128 : config.tailMs;
    const std::int32_t ringMs = config.ringMs == 0 ? 200 : config.ringMs;
    if (config.sampleRate != 8000 && config.sampleRate != 16000) return zspStsRangeErr;
    if (tailMs < 8 || tailMs > 512 || ringMs < 10 || ringMs > 1000) return zspStsRangeErr;
    if (!isSwitch(config.suppressor) || !isSwitch(config.toneBypass)) return zspStsRangeErr;
    if (!validDelay(config.delayMs)) return zspStsRangeErr;
    settings = {.canceller = {.sampleRate = config.sampleRate,
                              .tailMs = tailMs,
                              .suppressor = config.suppressor == zspvOn,
                              .toneBypass = config.toneBypass != zspvOff,
                              .delayMs = config.delayMs},
                .ringMs = ringMs};
    return zspStsNoErr;
}

ZspStatus layOut(Object& object, const Settings& settings, Memory& memory)
{
    object.ring.layOut(memory,
                       static_cast<std::size_t>(settings.ringMs) * object.canceller.rate() / 1000);
    object.parts = memory.end();
    return object.canceller.layOut(memory);
}

ZspStatus sizeFor(const Settings& settings, std::int32_t& size)
{
    Memory nothing;
    Object object(settings.canceller);
    const ZspStatus status = layOut(object, settings, nothing);
    size = placedSize(padded(sizeof(Object)) + nothing.needed());
    return status;
}

ZspStatus start(Object& object)
{
    object.feed.start(object.canceller.rate());
    return object.canceller.start();
}

} // namespace

ZspStatus zspvEchoGetSize(const ZspvEchoConfig* config, std::int32_t* size)
{
    if (!config || !size) return zspStsNullPtrErr;
    Settings settings;
    const ZspStatus status = resolve(*config, settings);
    return status == zspStsNoErr ? sizeFor(settings, *size) : status;
}

ZspStatus zspvEchoInit(void* memory, std::int32_t capacity, const ZspvEchoConfig* config,
                       ZspvEcho** echo)
{
    if (!memory || !config || !echo) return zspStsNullPtrErr;
    Settings settings;
    std::int32_t size = 0;
    if (const ZspStatus status = resolve(*config, settings); status != zspStsNoErr) return status;
    if (const ZspStatus status = sizeFor(settings, size); status != zspStsNoErr) return status;
    if (capacity < size) return zspStsSizeErr;

    auto* handle = static_cast<ZspvEcho*>(memory);
    Object& object = *new (placed<Object>(handle)) Object(settings.canceller);
    Memory parts(behind(&object));
    Steps steps;
    steps.add(layOut(object, settings, parts));
    steps.add(start(object));
    if (!steps.failed()) *echo = handle;
    return steps.status();
}

ZspStatus zspvEchoCreate(const ZspvEchoConfig* config, ZspvEcho** echo)
{
    if (!config || !echo) return zspStsNullPtrErr;
    std::int32_t size = 0;
    if (const ZspStatus status = zspvEchoGetSize(config, &size); status != zspStsNoErr)
        return status;

    return createObject(
        size,
        [config](void* memory, std::int32_t capacity, ZspvEcho** made) {
            return zspvEchoInit(memory, capacity, config, made);
        },
        echo);
}

void zspvEchoDestroy(ZspvEcho* echo)
{
    std::free(echo);
}

ZspStatus zspvEchoReset(ZspvEcho* echo)
{
    if (!echo) return zspStsNullPtrErr;

    Object& object = *placed<Object>(echo); // whose ring may be in use by the other thread
    object.feed = Feed();
    object.blocks = 0;
    object.droppedBefore = object.ring.dropped();
    object.canceller = Canceller(object.canceller.settings());
    Memory parts(object.parts);
    Steps steps;
    steps.add(object.canceller.layOut(parts));
    steps.add(start(object));
    return steps.status();
}

ZspStatus zspvEchoGetDelay(const ZspvEcho* echo, std::int32_t* samples)
{
    if (!echo || !samples) return zspStsNullPtrErr;

    *samples = static_cast<std::int32_t>(placed<Object>(echo)->canceller.delay());
    return zspStsNoErr;
}

ZspStatus zspvEchoSetDelay(ZspvEcho* echo, std::int32_t delayMs)
{
    if (!echo) return zspStsNullPtrErr;
    if (!validDelay(delayMs)) return zspStsRangeErr;

    placed<Object>(echo)->canceller.setDelay(delayMs);
    return zspStsNoErr;
}

ZspStatus zspvEchoSetSuppressor(ZspvEcho* echo, std::int32_t suppressor)
{
    if (!echo) return zspStsNullPtrErr;
    if (suppressor != zspvOn && suppressor != zspvOff) return zspStsRangeErr;

    placed<Object>(echo)->canceller.setSuppressor(suppressor == zspvOn);
    return zspStsNoErr;
}

ZspStatus zspvEchoGetMetrics(const ZspvEcho* echo, ZspvEchoMetrics* metrics)
{
    if (!echo || !metrics) return zspStsNullPtrErr;
    if (!plausible(*metrics)) return zspStsSizeErr;

    const Object& object = *placed<Object>(echo);
    const Canceller& canceller = object.canceller;
    const Meter& meter = canceller.meter();
    ZspvEchoMetrics now{};
    now.echoLossDb = meter.echoLossDb();
    now.tailLossDb = meter.tailLossDb();
    now.pathDelayMs = static_cast<float>(canceller.pathDelayMs());
    now.doubleTalk = meter.doubleTalk() && !canceller.bypassed();
    now.converged = meter.converged();
    now.bypassed = canceller.bypassed();
    now.adaptFactor = canceller.filters().adaptFactor();
    now.framesProcessed = object.blocks;
    now.farMissing = object.feed.missing();
    now.farDropped = static_cast<std::int64_t>(object.ring.dropped() - object.droppedBefore) +
                     object.feed.skipped();
    now.restarts = canceller.restarts();
    writeRecord(*metrics, now);
    return zspStsNoErr;
}

ZspStatus zspvEchoGetUncertainty(const ZspvEcho* echo, float* perBin, std::int32_t capacity,
                                 std::int32_t* count)
{
    if (!echo || !perBin || !count) return zspStsNullPtrErr;
    const Canceller& canceller = placed<Object>(echo)->canceller;
    *count = static_cast<std::int32_t>(canceller.bins());
    if (capacity < *count) return zspStsSizeErr;

    canceller.filters().uncertainty({perBin, canceller.bins()});
    return zspStsNoErr;
}
