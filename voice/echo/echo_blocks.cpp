// The echo canceller's public functions on blocks of samples.

#include "voice/api/object.hpp"
#include "voice/echo/echo_object.hpp"

#include <array>
#include <cmath>

namespace {

using namespace zsp::voice;
using namespace zsp::voice::echo;

constexpr float kScale = 32768.0F;
constexpr float kLoudest = 8 * kScale; // 18 dB above full scale

/// Full scale to 16 bits. What is no number would stay in the filters for ever.
float widen(float x)
{
    return std::isnan(x) ? 0.0F : std::clamp(kScale * x, -kLoudest, kLoudest);
}

float widen(std::int16_t x)
{
    return x;
}

void narrow(float x, float& out)
{
    out = x / kScale;
}

void narrow(float x, std::int16_t& out)
{
    out = static_cast<std::int16_t>(std::lrintf(std::clamp(x, -kScale, kScale - 1)));
}

/// One block, frame by frame; `far` gives the far end of each frame.
template <typename Sample, typename Far>
ZspStatus cancel(Object& object, Far far, const Sample* mic, Sample* out, std::size_t count)
{
    std::array<float, kMaxHop> farFrame, frame;
    const std::size_t hop = object.canceller.hop();
    Steps steps;
    for (std::size_t n = 0; n < count; n += hop) {
        far(n, std::span(farFrame).first(hop));
        for (std::size_t i = 0; i < hop; ++i)
            frame[i] = widen(mic[n + i]);
        const std::span samples(frame.data(), hop);
        steps.add(object.canceller.process({farFrame.data(), hop}, samples, samples));
        for (std::size_t i = 0; i < hop; ++i)
            narrow(frame[i], out[n + i]);
    }
    object.blocks += static_cast<std::int64_t>(count / (4 * hop));
    return steps.status();
}

bool wholeBlocks(const Object& object, std::int32_t count)
{
    return count > 0 && static_cast<std::size_t>(count) % (4 * object.canceller.hop()) == 0;
}

template <typename Sample>
ZspStatus process(ZspvEcho* echo, const Sample* far, const Sample* mic, Sample* out,
                  std::int32_t count)
{
    if (!echo || !far || !mic || !out) return zspStsNullPtrErr;
    Object& object = *placed<Object>(echo);
    if (!wholeBlocks(object, count)) return zspStsSizeErr;

    const auto take = [far](std::size_t n, std::span<float> frame) {
        for (std::size_t i = 0; i < frame.size(); ++i)
            frame[i] = widen(far[n + i]);
    };
    return cancel(object, take, mic, out, static_cast<std::size_t>(count));
}

template <typename Sample>
ZspStatus render(ZspvEcho* echo, const Sample* far, std::int32_t count)
{
    if (!echo || !far) return zspStsNullPtrErr;
    if (count < 1) return zspStsSizeErr;

    const bool all = placed<Object>(echo)->ring.push(
        std::span(far, static_cast<std::size_t>(count)), [](Sample x) { return widen(x); });
    return all ? zspStsNoErr : zspStsOverflow;
}

template <typename Sample>
ZspStatus capture(ZspvEcho* echo, const Sample* mic, Sample* out, std::int32_t count)
{
    if (!echo || !mic || !out) return zspStsNullPtrErr;
    Object& object = *placed<Object>(echo);
    if (!wholeBlocks(object, count)) return zspStsSizeErr;

    const auto length = static_cast<std::size_t>(count);
    object.feed.begin(object.ring, length);
    const ZspStatus status = cancel(
        object,
        [&object](std::size_t, std::span<float> frame) { object.feed.take(object.ring, frame); },
        mic, out, length);
    object.feed.end(object.ring, length);
    return status;
}

} // namespace

ZspStatus zspvEchoProcess(ZspvEcho* echo, const std::int16_t* far, const std::int16_t* mic,
                          std::int16_t* out, std::int32_t count)
{
    return process(echo, far, mic, out, count);
}

ZspStatus zspvEchoProcessFloat(ZspvEcho* echo, const float* far, const float* mic, float* out,
                               std::int32_t count)
{
    return process(echo, far, mic, out, count);
}

ZspStatus zspvEchoRender(ZspvEcho* echo, const std::int16_t* far, std::int32_t count)
{
    return render(echo, far, count);
}

ZspStatus zspvEchoRenderFloat(ZspvEcho* echo, const float* far, std::int32_t count)
{
    return render(echo, far, count);
}

ZspStatus zspvEchoCapture(ZspvEcho* echo, const std::int16_t* mic, std::int16_t* out,
                          std::int32_t count)
{
    return capture(echo, mic, out, count);
}

ZspStatus zspvEchoCaptureFloat(ZspvEcho* echo, const float* mic, float* out, std::int32_t count)
{
    return capture(echo, mic, out, count);
}
