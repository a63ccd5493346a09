// The way from the microphone to the line, 10 ms at a time: echo canceller, then level control.
#pragma once

#include "tools/zsp/voice/level_control.hpp"

#include "zspvoice.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace zsp::host {

/// Settings of the echo canceller; what is left out has the library's default.
struct EchoOptions {
    int sampleRate = 16000;
    int tailMs = 0;
    ZspvSwitch suppressor = zspvDefault;
};

struct SendPathOptions {
    EchoOptions echo;
    bool levelControl = false;
};

/// What happened, one value or row of values per 10 ms.
struct SendPathTrace {
    struct Mark {
        double seconds;
        std::string text;
    };
    std::size_t bins = 0;
    std::vector<float> uncertaintyDb; ///< `bins` values a frame: 0 for an unknown echo path
    std::vector<float> adaptFactor;   ///< the controller's
    std::vector<float> gainDb;        ///< of the level control; empty without
    std::vector<bool> bypassed;       ///< by the disabling tone
    std::vector<bool> farOnly;        ///< nobody but the far end talks
    std::vector<Mark> marks;          ///< tones, their end, and restarts
};

class SendPath {
  public:
    explicit SendPath(const SendPathOptions& options);

    [[nodiscard]] std::size_t frame() const { return static_cast<std::size_t>(rate_) / 100; }
    /// Samples by which the output is late.
    [[nodiscard]] std::size_t delay() const { return delay_; }

    /// One frame of 10 ms each; `cancelled` is the output before the level control.
    void process(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
                 std::span<std::int16_t> cancelled, std::span<std::int16_t> out);

    [[nodiscard]] const SendPathTrace& trace() const { return trace_; }

  private:
    struct Deleter {
        void operator()(ZspvEcho* echo) const { zspvEchoDestroy(echo); }
    };

    void cancel(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
                std::span<std::int16_t> out);
    void mark(const ZspvEchoMetrics& metrics);
    [[nodiscard]] bool onlyFarEndTalks(std::span<const std::int16_t> far);
    void controlLevel(bool farOnly, std::span<std::int16_t> samples);

    int rate_;
    std::unique_ptr<ZspvEcho, Deleter> canceller_;
    std::size_t delay_ = 0;
    std::optional<LevelControl> levelControl_;
    SendPathTrace trace_;
    ZspvEchoMetrics metrics_{}; // after the last frame
    double farPower_ = 0;
};

/// A whole signal; the outputs are as long as `mic` and in time with it. A far end that is shorter
/// is continued with silence.
struct SendPathRun {
    std::vector<std::int16_t> cancelled; ///< before the level control
    std::vector<std::int16_t> output;
    SendPathTrace trace;
};
SendPathRun runSendPath(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
                        const SendPathOptions& options, const std::string& progressLabel);

} // namespace zsp::host
