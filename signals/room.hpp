// Simulated echo paths and calls: what a canceller meets, with the truth beside it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zsp::signals {

/// Deterministic noise, the same everywhere.
class Noise {
  public:
    explicit Noise(std::uint32_t seed) : state_(seed * 2654435761U + 1U) {}
    double uniform();  ///< in 0..1
    double gaussian(); ///< mean 0, variance 1

  private:
    std::uint64_t state_;
};

struct Place {
    double x, y, z; ///< metres
};

/// A box-shaped room with a loudspeaker and a microphone in it.
struct Room {
    Place size{5.0, 4.0, 2.8};
    Place loudspeaker{2.1, 1.6, 1.1};
    Place microphone{2.6, 1.9, 1.0};
    double decaySeconds = 0.2; ///< reverberation time (60 dB)
};

/// Impulse response of a room by the image method, of `length` samples.
std::vector<float> roomResponse(const Room& room, int sampleRate, std::size_t length);

/// Impulse response of a telephone hybrid behind a trunk: a flat delay, then a short dispersive
/// burst limited to the telephone band, with an energy of -lossDb.
std::vector<float> hybridResponse(int sampleRate, double delayMs, double lengthMs, double lossDb,
                                  std::uint32_t seed);

/// A simulated call. The microphone, or the line, hears the echo of the far end and the near end;
/// the noise counts as near end.
struct CallPlan {
    std::vector<float> path{};       ///< impulse response of the echo path
    std::vector<float> pathAfter{};  ///< the one from changeAt on
    std::size_t changeAt = SIZE_MAX; ///< sample; SIZE_MAX for no change
    double noiseDbfs = -150;         ///< white background noise at the microphone
    int loudspeakerLimit = 32767;    ///< the loudspeaker's amplifier clips here
};

struct Call {
    std::vector<std::int16_t> far, near, echo, mic;
};

/// `near` is continued with silence, or cut, to the length of `far`.
Call simulateCall(std::span<const std::int16_t> far, std::span<const std::int16_t> near,
                  const CallPlan& plan);

} // namespace zsp::signals
