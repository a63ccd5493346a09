// Simulated rooms, hybrids and calls: decaying noise as an impulse response, and what comes of it.

#include "signals/room.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zsp::signals {

double Noise::uniform()
{
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(state_ >> 11) * 0x1p-53;
}

double Noise::gaussian()
{
    double sum = -6;
    for (int i = 0; i < 12; ++i)
        sum += uniform();
    return sum;
}

namespace {

constexpr double kSoundSpeed = 343.0; // m/s

/// Adds an arrival at a fractional position: a Hann-windowed sinc of 32 samples.
void addArrival(std::vector<double>& response, double position, double amplitude)
{
    constexpr int kHalf = 16;
    const auto first = static_cast<long>(std::floor(position)) - kHalf + 1;
    for (long n = first; n < first + 2 * kHalf; ++n) {
        if (n < 0 || n >= static_cast<long>(response.size())) continue;
        const double t = static_cast<double>(n) - position;
        const double x = std::numbers::pi * t;
        const double sinc = std::abs(x) < 1e-9 ? 1.0 : std::sin(x) / x;
        response[static_cast<std::size_t>(n)] +=
            amplitude * sinc * (0.5 + 0.5 * std::cos(x / kHalf));
    }
}

std::vector<float> toFloat(std::span<const double> x)
{
    std::vector<float> result(x.size());
    std::transform(x.begin(), x.end(), result.begin(),
                   [](double v) { return static_cast<float>(v); });
    return result;
}

} // namespace

std::vector<float> roomResponse(const Room& room, int sampleRate, std::size_t length)
{
    // Sabine's absorption, spread evenly over the walls; every reflection loses sqrt(1 - a).
    const Place& s = room.size;
    const double volume = s.x * s.y * s.z, walls = 2 * (s.x * s.y + s.y * s.z + s.x * s.z);
    const double absorption = std::min(0.99, 0.161 * volume / (walls * room.decaySeconds));
    const double reflection = std::sqrt(1 - absorption);

    const double samplesPerMetre = sampleRate / kSoundSpeed;
    const double reach = static_cast<double>(length) / samplesPerMetre;
    std::vector<double> response(length);
    const auto images = [&](double side) { return static_cast<int>(reach / (2 * side)) + 1; };
    const int nx = images(s.x), ny = images(s.y), nz = images(s.z);
    for (int ix = -2 * nx; ix <= 2 * nx; ++ix) {
        for (int iy = -2 * ny; iy <= 2 * ny; ++iy) {
            for (int iz = -2 * nz; iz <= 2 * nz; ++iz) {
                // Image i of a coordinate: odd ones are mirrored, and |i| walls lie between.
                const auto image = [](int i, double side, double at) {
                    return i % 2 == 0 ? i * side + at : (i + 1) * side - at;
                };
                const double distance =
                    std::hypot(image(ix, s.x, room.loudspeaker.x) - room.microphone.x,
                               image(iy, s.y, room.loudspeaker.y) - room.microphone.y,
                               image(iz, s.z, room.loudspeaker.z) - room.microphone.z);
                if (distance > reach) continue;
                const int bounces = std::abs(ix) + std::abs(iy) + std::abs(iz);
                addArrival(response, distance * samplesPerMetre,
                           0.4 * std::pow(reflection, bounces) / std::max(distance, 0.1));
            }
        }
    }
    return toFloat(response);
}

std::vector<float> hybridResponse(int sampleRate, double delayMs, double lengthMs, double lossDb,
                                  std::uint32_t seed)
{
    const double rate = sampleRate;
    const auto delay = static_cast<std::size_t>(delayMs * rate / 1000);
    const auto length = static_cast<std::size_t>(lengthMs * rate / 1000);
    Noise noise(seed);
    std::vector<double> burst(length - std::min(length, delay));
    // Decays by 60 dB over the burst.
    for (std::size_t n = 0; n < burst.size(); ++n)
        burst[n] = noise.gaussian() *
                   std::exp(-6.9 * static_cast<double>(n) / static_cast<double>(burst.size()));
    // The line's band: a zero at 0 Hz and a first-order fall towards half the sampling rate.
    double last = 0, low = 0;
    for (double& v : burst) {
        const double high = v - last + 0.9 * low;
        last = v;
        low = high;
        v = high;
    }
    double energy = 0;
    for (double v : burst)
        energy += v * v;
    const double scale = std::sqrt(std::pow(10.0, -lossDb / 10) / std::max(energy, 1e-12));
    std::vector<double> response(length);
    for (std::size_t n = 0; n < burst.size(); ++n)
        response[delay + n] = scale * burst[n];
    return toFloat(response);
}

namespace {

/// Adds `x` through `path` to out[begin .. end), tap by tap over blocks that stay in the cache.
void convolve(std::span<const float> x, std::span<const float> path, std::size_t begin,
              std::size_t end, std::span<float> out)
{
    constexpr std::size_t kBlock = 2048;
    for (std::size_t first = begin; first < end; first += kBlock) {
        const std::size_t last = std::min(first + kBlock, end);
        for (std::size_t t = 0; t < path.size(); ++t) {
            const float tap = path[t];
            for (std::size_t n = std::max(first, t); n < last; ++n)
                out[n] += tap * x[n - t];
        }
    }
}

std::int16_t toWord(double x)
{
    return static_cast<std::int16_t>(std::clamp(std::nearbyint(x), -32768.0, 32767.0));
}

} // namespace

Call simulateCall(std::span<const std::int16_t> far, std::span<const std::int16_t> near,
                  const CallPlan& plan)
{
    const std::size_t length = far.size();
    std::vector<float> played(length), echo(length);
    std::transform(far.begin(), far.end(), played.begin(), [&](std::int16_t x) {
        return static_cast<float>(
            std::clamp<int>(x, -plan.loudspeakerLimit, plan.loudspeakerLimit));
    });
    const std::size_t change = std::min(plan.changeAt, length);
    convolve(played, plan.path, 0, change, echo);
    convolve(played, plan.pathAfter, change, length, echo);

    Call call;
    call.far.assign(far.begin(), far.end());
    Noise noise(1);
    const double level = 32768 * std::pow(10.0, plan.noiseDbfs / 20);
    for (std::size_t n = 0; n < length; ++n) {
        const double speech = n < near.size() ? near[n] : 0;
        call.near.push_back(toWord(speech + level * noise.gaussian()));
        call.echo.push_back(toWord(echo[n]));
        call.mic.push_back(toWord(call.near[n] + static_cast<double>(echo[n])));
    }
    return call;
}

} // namespace zsp::signals
