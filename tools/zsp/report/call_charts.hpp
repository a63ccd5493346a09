// Charts of an echo canceller's work, all with the same time axis.
#pragma once

#include "tools/zsp/report/chart.hpp"
#include "tools/zsp/report/report.hpp"
#include "tools/zsp/voice/send_path.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace zsp::host {

/// What the charts show of a signal.
class SignalHistory {
  public:
    explicit SignalHistory(int rate) : rate_(rate), envelope_(rate), spectrogram_(rate) {}
    SignalHistory(std::span<const std::int16_t> samples, int rate) : SignalHistory(rate)
    {
        add(samples);
    }

    void add(std::span<const std::int16_t> samples);
    [[nodiscard]] double levelDbfs() const;
    [[nodiscard]] double seconds() const { return static_cast<double>(samples_) / rate_; }
    [[nodiscard]] const Envelope& envelope() const { return envelope_; }
    [[nodiscard]] const Spectrogram& spectrogram() const { return spectrogram_; }

  private:
    int rate_;
    std::uint64_t samples_ = 0;
    double power_ = 0; // times samples
    Envelope envelope_;
    Spectrogram spectrogram_;
};

struct CallCharts {
    int rate = 8000;
    SignalHistory far, mic, out;
    const SendPathTrace& trace;
    std::vector<Point> echoLoss; ///< dB over seconds
    std::string echoLossNote;
    std::vector<SendPathTrace::Mark> events{}; ///< of the call itself, beside the trace's
    struct Range {
        double start, end;
    };
    std::vector<Range> nearTalks{}; ///< shaded where known

    /// Waveforms, spectrograms, echo loss, adaptation, gain.
    void addTo(Report& report) const;

  private:
    void addMarks(Chart& chart) const;
};

/// 10 log10 of `echo` over `left` per 100 ms, where the echo is above -60 dBFS.
std::vector<Point> echoLossOverTime(std::span<const std::int16_t> echo,
                                    std::span<const std::int16_t> left, int rate);

/// Microphone over output per 100 ms, where only the far end talks: without knowing the echo
/// itself, that is the loss one can measure.
class MeasuredLoss {
  public:
    explicit MeasuredLoss(int rate) : rate_(rate) {}

    void add(const SendPathBlock& block);
    [[nodiscard]] std::vector<Point> points() const { return series_.points(); }
    [[nodiscard]] std::optional<double> mean() const;

  private:
    int rate_;
    std::uint64_t start_ = 0; // of the 100 ms at work, in samples
    std::vector<std::int16_t> mic_, cancelled_;
    std::vector<bool> farOnly_;
    Series series_{0.1};
    double sum_ = 0;
    std::uint64_t count_ = 0;
};

} // namespace zsp::host
