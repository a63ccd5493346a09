// The high-pass filter of second order that the AMR encoders have in front.
#pragma once

#include <cmath>
#include <numbers>

namespace zsp::voice::activity {

class HighPass {
  public:
    /// A Butterworth filter by the bilinear transform.
    HighPass(double cutoff, double rate, double gain)
    {
        const double k = std::tan(std::numbers::pi * cutoff / rate);
        const double norm = 1.0 / (1.0 + std::numbers::sqrt2 * k + k * k);
        gain_ = gain * norm;
        a1_ = 2.0 * (k * k - 1.0) * norm;
        a2_ = (1.0 - std::numbers::sqrt2 * k + k * k) * norm;
    }

    double operator()(double x)
    {
        const double y = gain_ * (x - 2.0 * x1_ + x2_) - a1_ * y1_ - a2_ * y2_;
        x2_ = x1_;
        x1_ = x;
        y2_ = y1_;
        y1_ = y;
        return y;
    }

  private:
    double gain_, a1_, a2_;
    double x1_ = 0, x2_ = 0, y1_ = 0, y2_ = 0;
};

} // namespace zsp::voice::activity
