// The echo-path filters of all bins: taps, their expected errors, and the library's controller,
// which keeps the fixed filter at the best taps seen and takes the adaptive one back to them when
// double talk has driven it away.
//
//   x[t]     far-end spectra (times 16), the newest first
//   ea, ef   microphone minus the echo estimates of the adaptive and the fixed filter
//   p[t]     variance expected of tap t's error: it gives every tap its own step, fast after a
//   start
//            and slow once converged, and tells how much echo is left
#pragma once

#include "voice/api/memory.hpp"
#include "voice/api/steps.hpp"
#include "voice/echo/echo_shape.hpp"

namespace zsp::voice::echo {

class Filters {
  public:
    ZspStatus layOut(Memory& memory, const Shape& shape);
    ZspStatus start(const Shape& shape, std::int32_t tailMs);

    /// Starts the controller and the far-end history anew; the taps stay.
    ZspStatus restartController(const Shape& shape);
    /// The row that the next far-end spectrum belongs in; the oldest one is dropped.
    Zsp32fc* nextFar();

    /// Errors, far-end power and expected residual of a microphone's spectrum.
    void filter(Spectrum mic, Steps& steps);
    /// The controller's steps for this frame, and its view of the far end's power.
    void prepareSteps(Spectrum mic, Steps& steps);
    /// Lets the adaptive taps follow their error.
    void adapt(Steps& steps);
    /// Saves or restores taps.
    void control(Steps& steps);

    /// Expects at least this share of the errors before anything was learnt.
    void doubt(float share);
    /// Forgets all taps.
    void clear(Steps& steps);

    [[nodiscard]] Spectrum adaptiveError() const { return adaptiveError_; }
    [[nodiscard]] Spectrum fixedError() const { return fixedError_; }
    /// Sum over the taps of p |x|^2.
    [[nodiscard]] std::span<const float> residual() const { return residual_; }
    /// Sum over the taps of |x|^2.
    [[nodiscard]] std::span<const float> farPower() const { return farPower_; }
    /// Whether the far end is loud enough in a bin to teach anything.
    [[nodiscard]] bool excited(std::size_t bin) const { return farPower_[bin] > threshold_; }
    [[nodiscard]] float adaptFactor() const { return adaptFactor_; }

    /// Per bin the error variance of all taps, 1 before anything was learnt.
    void uncertainty(std::span<float> perBin) const;
    /// Where the energy of the fixed taps has its centre, in frames; negative before there is any.
    [[nodiscard]] double centre() const;

  private:
    /// `count` rows in one block, with the table of pointers that the library takes.
    template <typename T>
    struct Rows {
        std::span<T> values;
        std::span<T*> table;
        void layOut(Memory& memory, std::size_t count, std::size_t length);
        void start(std::size_t length);
    };

    [[nodiscard]] Zsp32fc* const* history() const { return far_.table.data() + newest_; }

    std::size_t bins_, taps_, rowBins_;
    float threshold_, forgetPerFrame_, adaptFactor_ = 1.0F;
    Rows<Zsp32fc> far_; // ring of the last spectra; the table holds it twice
    std::size_t newest_ = 0;
    Rows<Zsp32fc> adaptive_, fixed_;
    Rows<float> variance_;
    std::span<float> initialVariance_; // of one bin before anything was learnt, per tap
    std::span<Zsp32fc> adaptiveError_, fixedError_;
    std::span<float> farPower_, residual_, errorPower_, gain_, forget_;
    std::span<double> step_; // the controller's
    std::span<std::uint8_t> controller_;
};

} // namespace zsp::voice::echo
