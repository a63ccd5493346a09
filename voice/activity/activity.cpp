// Voice activity's public functions.

#include "voice/activity/decimator.hpp"
#include "voice/activity/detector.hpp"
#include "voice/activity/dtx_schedule.hpp"
#include "voice/api/object.hpp"
#include "voice/api/record.hpp"

#include <algorithm>
#include <new>
#include <numeric>

namespace {

using namespace zsp::voice;
using namespace zsp::voice::activity;

constexpr std::int32_t kFrameMs = 20, kLongestHangoverMs = 2000;
constexpr float kSilenceDbov = -127;

struct Settings {
    ZspvDetector detector;
    std::int32_t sampleRate;
    std::int32_t hangoverFrames;
};

struct Object {
    explicit Object(const Settings& s) : settings(s), detector(s.detector) {}

    [[nodiscard]] std::size_t inputLength() const
    {
        return static_cast<std::size_t>(settings.sampleRate) / 50;
    }

    Settings settings;
    Detector detector;
    Decimator decimator;
    DtxSchedule schedule;
    std::int32_t hangover = 0; // frames left
};

ZspStatus resolve(const ZspvActivityConfig& given, Settings& settings)
{
    if (!plausible(given)) return zspStsSizeErr;
    const ZspvActivityConfig config = readRecord(given);
    switch (config.detector) {
    case zspvDetectorAmr1:
    case zspvDetectorAmr2:
        if (config.sampleRate != 8000) return zspStsRangeErr;
        break;
    case zspvDetectorAmrWb:
        if (config.sampleRate != 16000 && config.sampleRate != 12800) return zspStsRangeErr;
        break;
    default:
        return zspStsRangeErr;
    }
    if (config.hangoverMs < 0 || config.hangoverMs > kLongestHangoverMs) return zspStsRangeErr;
    if (config.hangoverMs % kFrameMs != 0) return zspStsRangeErr;
    settings = {static_cast<ZspvDetector>(config.detector), config.sampleRate,
                config.hangoverMs / kFrameMs};
    return zspStsNoErr;
}

float levelOf(In16 frame)
{
    std::int64_t sum = 0;
    for (const std::int16_t x : frame)
        sum += std::int32_t{x} * x;
    const double mean = static_cast<double>(sum) / static_cast<double>(frame.size());
    const double level = 10 * std::log10(std::max(mean, 1e-9) / (32768.0 * 32768.0));
    return std::max(static_cast<float>(level), kSilenceDbov);
}

float scoreOf(const Detector& detector)
{
    const auto levels = detector.levels(), noise = detector.noise();
    const float excess = std::accumulate(levels.begin(), levels.end(), 0.0F) -
                         std::accumulate(noise.begin(), noise.end(), 0.0F);
    return excess / static_cast<float>(levels.size());
}

ZspStatus process(Object& object, In16 samples, ZspvActivityInfo& info)
{
    std::array<std::int16_t, Detector::kMaxFrame> decimated{};
    In16 frame = samples;
    if (object.settings.sampleRate == 16000) {
        object.decimator.run(samples, decimated);
        frame = decimated;
    }
    bool speech = false;
    Steps steps;
    steps.add(object.detector.detect(frame, speech));
    const bool held = !speech && object.hangover > 0;
    object.hangover = speech ? object.settings.hangoverFrames : object.hangover - (held ? 1 : 0);
    const ZspvFrameKind kind = object.schedule.next(speech || held, steps);
    if (steps.failed()) return steps.status();

    ZspvActivityInfo result{};
    result.active = speech || held;
    result.kind = kind;
    result.levelDbov = levelOf(samples);
    result.scoreDb = scoreOf(object.detector);
    writeRecord(info, result);
    return zspStsNoErr;
}

} // namespace

ZspStatus zspvActivityGetSize(const ZspvActivityConfig* config, std::int32_t* size)
{
    if (!config || !size) return zspStsNullPtrErr;
    Settings settings;
    if (const ZspStatus status = resolve(*config, settings); status != zspStsNoErr) return status;

    *size = placedSize(sizeof(Object));
    return zspStsNoErr;
}

ZspStatus zspvActivityInit(void* memory, std::int32_t capacity, const ZspvActivityConfig* config,
                           ZspvActivity** activity)
{
    if (!memory || !config || !activity) return zspStsNullPtrErr;
    Settings settings;
    const ZspStatus status = resolve(*config, settings);
    if (status == zspStsSizeErr || capacity < placedSize(sizeof(Object))) return zspStsSizeErr;
    if (status != zspStsNoErr) return status;

    auto* handle = static_cast<ZspvActivity*>(memory);
    Object& object = *new (placed<Object>(handle)) Object(settings);
    *activity = handle;
    return object.detector.start();
}

ZspStatus zspvActivityCreate(const ZspvActivityConfig* config, ZspvActivity** activity)
{
    if (!config || !activity) return zspStsNullPtrErr;
    std::int32_t size = 0;
    if (const ZspStatus status = zspvActivityGetSize(config, &size); status != zspStsNoErr)
        return status;

    return createObject(
        size,
        [config](void* memory, std::int32_t capacity, ZspvActivity** made) {
            return zspvActivityInit(memory, capacity, config, made);
        },
        activity);
}

void zspvActivityDestroy(ZspvActivity* activity)
{
    std::free(activity);
}

ZspStatus zspvActivityReset(ZspvActivity* activity)
{
    if (!activity) return zspStsNullPtrErr;

    Object& object = *placed<Object>(activity);
    object = Object(object.settings);
    return object.detector.start();
}

ZspStatus zspvActivityProcess(ZspvActivity* activity, const std::int16_t* samples,
                              std::int32_t count, ZspvActivityInfo* info)
{
    if (!activity || !samples || !info) return zspStsNullPtrErr;
    Object& object = *placed<Object>(activity);
    if (!plausible(*info)) return zspStsSizeErr;
    if (count != static_cast<std::int32_t>(object.inputLength())) return zspStsSizeErr;

    return process(object, {samples, object.inputLength()}, *info);
}

ZspStatus zspvActivityGetBands(const ZspvActivity* activity, float* edgesHz, float* levels,
                               float* noise, std::int32_t capacity, std::int32_t* count)
{
    if (!activity || !count) return zspStsNullPtrErr;
    const Detector& detector = placed<Object>(activity)->detector;
    *count = countOf(detector.levels());
    if (capacity < *count) return zspStsSizeErr;

    const auto edges = detector.bandEdges();
    if (edgesHz) std::copy(edges.begin(), edges.end(), edgesHz);
    if (levels) std::ranges::copy(detector.levels(), levels);
    if (noise) std::ranges::copy(detector.noise(), noise);
    return zspStsNoErr;
}
