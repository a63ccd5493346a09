// A sub-band acoustic and line echo canceller on top of the library's filter bank, filters,
// adaptation controller and disabling-tone detector.
//
// One far-end and one microphone frame of 2.5 ms go in, one frame with the echo removed comes out,
// delay() samples later. Samples are on the scale of 16-bit ones.
#pragma once

#include "voice/echo/delay_line.hpp"
#include "voice/echo/meter.hpp"
#include "voice/echo/subband/banks.hpp"
#include "voice/echo/subband/divergence.hpp"
#include "voice/echo/subband/filters.hpp"
#include "voice/echo/subband/mixer.hpp"
#include "voice/echo/subband/suppressor.hpp"
#include "voice/echo/tone_bypass.hpp"

namespace zsp::voice::echo {

inline constexpr std::size_t kMaxHop = 40;

struct CancellerSettings {
    std::int32_t sampleRate;
    std::int32_t tailMs;
    bool suppressor;
    bool toneBypass;
    std::int32_t delayMs; // of the far end; negative: of the microphone
};

class Canceller {
  public:
    static constexpr std::int32_t kLongestDelayMs = 500, kLongestLeadMs = 50;

    explicit Canceller(const CancellerSettings& settings)
        : shape_(settings.sampleRate, settings.tailMs), settings_(settings)
    {
    }
    ZspStatus layOut(Memory& memory);
    ZspStatus start();

    /// One frame of hop() samples each; `out` may be either input. When a step fails, the output is
    /// the microphone's signal.
    ZspStatus process(std::span<const float> far, std::span<const float> mic, std::span<float> out);

    void setDelay(std::int32_t delayMs);
    void setSuppressor(bool on) { settings_.suppressor = on; }

    [[nodiscard]] const CancellerSettings& settings() const { return settings_; }
    [[nodiscard]] std::size_t hop() const { return shape_.hop; }
    [[nodiscard]] std::size_t rate() const { return shape_.rate; }
    [[nodiscard]] std::size_t bins() const { return shape_.bins; }
    [[nodiscard]] std::size_t delay() const;
    [[nodiscard]] const Filters& filters() const { return filters_; }
    [[nodiscard]] const Meter& meter() const { return meter_; }
    [[nodiscard]] bool bypassed() const { return tones_.active(); }
    [[nodiscard]] std::int64_t restarts() const { return restarts_; }
    /// Where the echo path has its centre behind the far end's delay, in ms.
    [[nodiscard]] double pathDelayMs() const;

  private:
    void cancel(Steps& steps);
    void learn(Steps& steps);

    Shape shape_;
    CancellerSettings settings_;
    DelayLine farDelay_, micDelay_, wait_;
    ToneBypass tones_;
    Banks banks_;
    Filters filters_;
    Divergence divergence_;
    Mixer mixer_;
    Suppressor suppressor_;
    Meter meter_;
    std::span<Zsp32fc> mic_, micNext_; // the spectrum in work, and the one that follows it
    std::span<Zsp32fc> output_;
    std::size_t settling_ = 0; // frames
    std::int64_t restarts_ = 0;
};

} // namespace zsp::voice::echo
