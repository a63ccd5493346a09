// The way from the microphone to the line, 10 ms at a time: echo canceller, then level control.
#pragma once

#include "tools/zsp/report/history.hpp"
#include "tools/zsp/voice/level_control.hpp"

#include "zspvoice.h"

#include <cstdint>
#include <functional>
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

/// What happened, in little memory however long it took.
struct SendPathTrace {
    struct Mark {
        double seconds;
        std::string text;
    };
    static constexpr double kFrame = 0.01; // s
    MapHistory uncertaintyDb{1, kFrame};   ///< over the bands: 0 for an unknown echo path
    std::optional<Series> gainDb;          ///< of the level control; none without
    std::vector<Mark> marks;               ///< tones, their end, and restarts
};

class SendPath {
  public:
    explicit SendPath(const SendPathOptions& options);

    [[nodiscard]] std::size_t frame() const { return static_cast<std::size_t>(rate_) / 100; }
    /// Samples by which the output is late.
    [[nodiscard]] std::size_t delay() const { return delay_; }

    /// One frame of 10 ms each; `cancelled` is the output before the level control. Tells whether
    /// nobody but the far end talks.
    bool process(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
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

/// What went in and what came of it, in time with one another: 10 ms, less at the end.
struct SendPathBlock {
    std::span<const std::int16_t> far, mic;
    std::span<const std::int16_t> cancelled; ///< before the level control
    std::span<const std::int16_t> output;
    bool farOnly; ///< nobody but the far end talks
};

/// Fills the samples, as far as there are any, and tells how many there were: fewer only at the
/// end.
using SampleSource = std::function<std::size_t(std::span<std::int16_t>)>;

/// Takes a whole signal through the path, whose first one it is; the blocks are together as long
/// as `mic`. A far end that is shorter is continued with silence.
void streamSendPath(SendPath& path, const SampleSource& far, const SampleSource& mic,
                    const std::function<void(const SendPathBlock&)>& take);

/// The same in memory.
struct SendPathRun {
    std::vector<std::int16_t> cancelled; ///< before the level control
    std::vector<std::int16_t> output;
    SendPathTrace trace;
};
SendPathRun runSendPath(std::span<const std::int16_t> far, std::span<const std::int16_t> mic,
                        const SendPathOptions& options, const std::string& progressLabel);

} // namespace zsp::host
