// A sub-band acoustic and line echo canceller on top of the library's filter bank, adaptation
// controller and disabling-tone detector. The class needs nothing but include/zspsc.h, so that it
// can be lifted out as it is.
//
// One far-end and one microphone frame go in, one frame with the echo removed comes out, delay()
// samples later. Per frame and frequency bin:
//
//   X, Y     sub-band spectra of the far end (times 16) and of the microphone (one frame late, so
//            that the filters also see the far end half a window ahead)
//   Ea, Ef   Y minus the echo estimates of an adaptive and of a fixed filter
//   P[t]     variance expected of tap t's error: it gives every tap its own step, fast after a
//            start and slow once converged, and tells the suppressor how much echo is left
//
// The library's controller keeps the fixed filter at the best taps seen and takes the adaptive one
// back to them when double talk has driven it away.
#pragma once

#include "zspsc.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zsp::host {

struct EchoCancellerOptions {
    int sampleRate = 16000; ///< 8000 or 16000
    int tailMs = 128;       ///< longest echo, 8 to 512 ms
    bool suppressor = true; ///< attenuate what the filters are known to leave
};

/// What one frame did, for reports.
struct EchoCancellerStatus {
    bool farTone = false;     ///< the far end's detector reported the disabling tone in this frame
    bool micTone = false;     ///< the microphone's detector did
    bool bypassed = false;    ///< the output is the microphone's signal
    bool restarted = false;   ///< the filters were cleared in this frame
    float adaptFactor = 1.0F; ///< the controller's verdict, 1 when adaptation does harm
};

class EchoCanceller {
  public:
    /// Options outside their ranges are the caller's fault (asserted).
    explicit EchoCanceller(const EchoCancellerOptions& options);

    /// Samples per frame: 2.5 ms.
    [[nodiscard]] std::size_t hop() const { return hop_; }
    /// Samples by which the output lags behind the microphone: 20 ms.
    [[nodiscard]] std::size_t delay() const { return micDelay_.size(); }
    [[nodiscard]] std::size_t bins() const { return bins_; }

    /// One frame of hop() samples each, on the scale of 16-bit samples. `out` may be either input.
    void process(std::span<const float> far, std::span<const float> mic, std::span<float> out);

    [[nodiscard]] const EchoCancellerStatus& status() const { return status_; }
    /// Per bin the error variance the taps are expected to have, 1 before anything was learnt.
    void uncertainty(std::span<float> perBin) const;

  private:
    using Bytes = std::vector<std::uint8_t>;
    using Row = std::vector<float>;

    /// `count` rows of complex bins in one block, with the table of row pointers the library takes.
    struct Rows {
        Row values;
        std::vector<Zsp32fc*> table;
        void resize(std::size_t count, std::size_t stride);
    };

    void makeBanks();
    void startController();
    bool detectTone(std::span<const float> far, std::span<const float> mic);
    void filter();
    void restartIfDiverged();
    [[nodiscard]] bool echoAddedInMostBins() const;
    bool estimateLost();
    void adapt();
    void mixAndSuppress();
    [[nodiscard]] Zsp32fc* const* history() const { return far_.table.data() + newest_; }

    std::size_t rate_, hop_, bins_, taps_, stride_;
    bool suppressor_;
    EchoCancellerStatus status_;

    Bytes farBank_, micBank_, outBank_, bankWork_;
    Bytes farDetector_, micDetector_, controller_;

    // Rows of `stride_` floats: re, im of bin 0, re, im of bin 1 ..., padded to whole vectors.
    // Real quantities stand twice, so that they line up with the complex ones.
    Rows far_;               // ring of the last taps_ far-end spectra; the table holds it twice
    std::size_t newest_ = 0; // first row of the history in that table
    Rows adaptive_, fixed_;  // taps
    Row variance_;           // P, taps_ rows
    Row initialVariance_;    // P of one bin before anything was learnt, per tap
    Row mic_, micNext_;      // Y and the spectrum that follows it
    Row adaptiveError_, fixedError_, output_;
    Row farPower_;             // sum of |X|^2 over the taps
    Row residual_;             // S, sum of P |X|^2: echo power expected to be left
    Row errorPower_;           // psi, smoothed |Ea|^2
    Row weightA_, weightB_;    // factors of the tap update
    Row forget_;               // q
    std::vector<double> step_; // the controller's step sizes

    float threshold_; // far power over the taps below which a bin teaches nothing
    float restartAlpha_, foundAlpha_, loudestDecay_;
    float fixedSum_ = 0, micSum_ = 0,
          residualSum_ = 0; // powers over all bins, for the restart decision
    float loudest_ = 0;     // micSum_ at its loudest, forgotten within a second or two
    Row crossPower_, echoPower_, micSlowPower_;
    int restartHold_ = 0;

    float mixAlpha_, cautionDecay_;
    Row adaptivePower_, fixedPower_, micPower_; // over 15 ms
    Row share_;                                 // of the adaptive filter in the output
    Row estimatePower_, caution_;               // of the estimated echo; its share surely left
    Row outputPower_, noiseFloor_, gain_;       // of the suppressor

    Row farScaled_, micDelay_;
    std::size_t delayPosition_ = 0;
    int quietFrames_ = 0;
};

} // namespace zsp::host
