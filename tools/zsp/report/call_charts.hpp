// Charts of an echo canceller's work, all with the same time axis.
#pragma once

#include "tools/zsp/report/chart.hpp"
#include "tools/zsp/report/report.hpp"
#include "tools/zsp/voice/send_path.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zsp::host {

struct CallCharts {
    int rate = 8000;
    std::span<const std::int16_t> far, mic, out;
    const SendPathTrace* trace = nullptr;
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

} // namespace zsp::host
