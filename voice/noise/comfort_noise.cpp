// Comfort noise, RFC 3389: white noise through a lattice filter of the reflection coefficients.

#include "voice/api/object.hpp"
#include "voice/noise/spectrum_model.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace zsp::voice {

namespace {

/// Of a new block's statistics; the rest is what was known before.
constexpr double kNewShare = 0.3;

/// White noise of power 1: the sum of three uniform values, close enough to a normal distribution.
class WhiteNoise {
  public:
    float next() noexcept { return (uniform() + uniform() + uniform()) * 2.0F; }

  private:
    /// In -0.5..0.5, of power 1/12.
    float uniform() noexcept
    {
        state_ = state_ * 1664525U + 1013904223U;
        return static_cast<float>(static_cast<std::int32_t>(state_) >> 8) * 0x1p-24F;
    }

    std::uint32_t state_ = 1;
};

struct NoiseObject {
    std::int32_t sampleRate = 0;
    std::int32_t analysed = 0; // whether something was learnt
    NoiseStatistics learnt{};
    float wantedAmplitude = 0; // of the payload
    Reflection wanted{};
    float amplitude = 0; // on the way there
    Reflection reflection{};
    Reflection memory{}; // the lattice's backward values, each a sample old
    WhiteNoise white{};

    void generate(Out16 samples) noexcept;
};

/// Amplitude and coefficients follow in 5 ms to all but 1/e, in 20 ms to all but 2 %. Between two
/// sets of coefficients below 1 every mean is below 1, so the filter is stable all the way.
void NoiseObject::generate(Out16 samples) noexcept
{
    const float share = 200.0F / static_cast<float>(sampleRate);
    for (std::int16_t& sample : samples) {
        amplitude += (wantedAmplitude - amplitude) * share;
        float gain = 1; // power of the excitation for a power of 1 behind the filter
        for (std::size_t m = 0; m < kNoiseOrder; ++m) {
            const float rest = wanted[m] - reflection[m];
            // The end of the way at once: denormal numbers would slow everything down.
            reflection[m] = std::abs(rest) < 1e-6F ? wanted[m] : reflection[m] + rest * share;
            gain *= 1 - reflection[m] * reflection[m];
        }
        // The forward value of each stage from the one above, the highest first.
        float forward = amplitude * std::sqrt(gain) * white.next();
        for (std::size_t m = kNoiseOrder; m-- > 0;) {
            forward -= reflection[m] * memory[m];
            if (m + 1 < kNoiseOrder) memory[m + 1] = memory[m] + reflection[m] * forward;
        }
        memory[0] = forward;
        sample = static_cast<std::int16_t>(std::clamp(std::round(forward), -32768.0F, 32767.0F));
    }
}

std::int32_t objectBytes() noexcept
{
    return placedSize(sizeof(NoiseObject));
}

bool allowed(std::int32_t sampleRate) noexcept
{
    return sampleRate == 8000 || sampleRate == 16000;
}

} // namespace

} // namespace zsp::voice

using zsp::voice::NoiseObject;
using zsp::voice::placed;

ZspStatus zspvComfortNoiseGetSize(std::int32_t sampleRate, std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;
    if (!zsp::voice::allowed(sampleRate)) return zspStsRangeErr;

    *size = zsp::voice::objectBytes();
    return zspStsNoErr;
}

ZspStatus zspvComfortNoiseInit(void* memory, std::int32_t capacity, std::int32_t sampleRate,
                               ZspvComfortNoise** noise)
{
    if (!memory || !noise) return zspStsNullPtrErr;
    if (capacity < zsp::voice::objectBytes()) return zspStsSizeErr;
    if (!zsp::voice::allowed(sampleRate)) return zspStsRangeErr;

    *placed<NoiseObject>(memory) = NoiseObject{.sampleRate = sampleRate};
    *noise = static_cast<ZspvComfortNoise*>(memory);
    return zspStsNoErr;
}

ZspStatus zspvComfortNoiseCreate(std::int32_t sampleRate, ZspvComfortNoise** noise)
{
    if (!noise) return zspStsNullPtrErr;
    if (!zsp::voice::allowed(sampleRate)) return zspStsRangeErr;

    const auto init = [sampleRate](void* memory, std::int32_t capacity, ZspvComfortNoise** made) {
        return zspvComfortNoiseInit(memory, capacity, sampleRate, made);
    };
    return zsp::voice::createObject(zsp::voice::objectBytes(), init, noise);
}

void zspvComfortNoiseDestroy(ZspvComfortNoise* noise)
{
    std::free(noise);
}

ZspStatus zspvComfortNoiseReset(ZspvComfortNoise* noise)
{
    if (!noise) return zspStsNullPtrErr;

    auto* object = placed<NoiseObject>(noise);
    *object = NoiseObject{.sampleRate = object->sampleRate};
    return zspStsNoErr;
}

ZspStatus zspvComfortNoiseAnalyse(ZspvComfortNoise* noise, const std::int16_t* samples,
                                  std::int32_t count)
{
    if (!noise || !samples) return zspStsNullPtrErr;
    if (count < 80 || count > 960) return zspStsSizeErr;

    auto* object = placed<NoiseObject>(noise);
    const auto block = zsp::voice::analyseNoise({samples, static_cast<std::size_t>(count)});
    const double share = object->analysed ? zsp::voice::kNewShare : 1;
    auto& learnt = object->learnt;
    learnt.power += (block.power - learnt.power) * share;
    for (std::size_t lag = 0; lag < learnt.autocorrelation.size(); ++lag)
        learnt.autocorrelation[lag] +=
            (block.autocorrelation[lag] - learnt.autocorrelation[lag]) * share;
    object->analysed = 1;
    return zspStsNoErr;
}

ZspStatus zspvComfortNoiseWrite(const ZspvComfortNoise* noise, std::int32_t order,
                                std::uint8_t* payload, std::int32_t capacity, std::int32_t* length)
{
    if (!noise || !payload || !length) return zspStsNullPtrErr;
    const bool orderAllowed = order >= 0 && order <= ZSPV_NOISE_MAX_ORDER;
    if (orderAllowed && capacity < order + 1) {
        *length = order + 1;
        return zspStsSizeErr;
    }
    if (!orderAllowed) return capacity < 1 ? zspStsSizeErr : zspStsRangeErr;

    const auto& learnt = placed<NoiseObject>(noise)->learnt;
    const auto reflection = zsp::voice::reflectionOf(learnt);
    payload[0] = zsp::voice::levelOctet(learnt.power);
    for (std::int32_t m = 0; m < order; ++m)
        payload[m + 1] = zsp::voice::reflectionOctet(reflection[static_cast<std::size_t>(m)]);
    *length = order + 1;
    return zspStsNoErr;
}

ZspStatus zspvComfortNoiseRead(ZspvComfortNoise* noise, const std::uint8_t* payload,
                               std::int32_t length)
{
    if (!noise || !payload) return zspStsNullPtrErr;
    if (length < 1) return zspStsSizeErr;

    auto* object = placed<NoiseObject>(noise);
    object->wantedAmplitude = static_cast<float>(std::sqrt(zsp::voice::powerOf(payload[0])));
    object->wanted = {};
    const std::int32_t order = std::min(length - 1, ZSPV_NOISE_MAX_ORDER);
    for (std::int32_t m = 0; m < order; ++m)
        object->wanted[static_cast<std::size_t>(m)] = zsp::voice::reflectionValue(payload[m + 1]);
    return zspStsNoErr;
}

ZspStatus zspvComfortNoiseGenerate(ZspvComfortNoise* noise, std::int16_t* samples,
                                   std::int32_t count)
{
    if (!noise || !samples) return zspStsNullPtrErr;
    if (count < 1) return zspStsSizeErr;

    placed<NoiseObject>(noise)->generate({samples, static_cast<std::size_t>(count)});
    return zspStsNoErr;
}
