// Detectors at both ends, and the quiet that ends the bypass.

#include "voice/echo/tone_bypass.hpp"
#include "zspsc/ec/tone.h"

namespace zsp::voice::echo {

namespace {

constexpr float kQuiet = 32768.0F * 5.6234133e-3F; // -45 dB below full scale, rms

bool quiet(std::span<const float> samples)
{
    return energy(samples) < kQuiet * kQuiet * static_cast<float>(samples.size());
}

bool detect(std::span<const float> samples, std::span<std::uint8_t> detector, Steps& steps)
{
    std::int32_t found = 0;
    steps.add(zspsToneDetect_EC_32f(samples.data(), count(samples), &found, detector.data()));
    return found != 0;
}

} // namespace

ZspStatus ToneBypass::layOut(Memory& memory, const Shape& shape)
{
    std::int32_t size = 0;
    const ZspStatus status =
        zspsToneDetectGetStateSize_EC_32f(static_cast<std::int32_t>(shape.rate), &size);
    for (auto* detector : {&farDetector_, &micDetector_})
        *detector = memory.take<std::uint8_t>(static_cast<std::size_t>(size));
    return status;
}

ZspStatus ToneBypass::start(const Shape& shape, bool enabled)
{
    enabled_ = enabled;
    framesToReturn_ = shape.rate * 2 / 5 / shape.hop; // 400 ms
    Steps steps;
    for (auto* detector : {&farDetector_, &micDetector_})
        steps.add(
            zspsToneDetectInit_EC_32f(detector->data(), static_cast<std::int32_t>(shape.rate)));
    return steps.status();
}

bool ToneBypass::update(std::span<const float> far, std::span<const float> mic, Steps& steps)
{
    if (!enabled_) return false;
    const bool farTone = detect(far, farDetector_, steps),
               micTone = detect(mic, micDetector_, steps);
    if (farTone || micTone) {
        quietFrames_ = 0;
        active_ = true;
    } else if (active_) {
        quietFrames_ = quiet(far) && quiet(mic) ? quietFrames_ + 1 : 0;
        active_ = quietFrames_ < framesToReturn_;
    }
    return active_;
}

} // namespace zsp::voice::echo
