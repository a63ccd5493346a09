#include "tools/zsp/voice/echo_canceller.hpp"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <numbers>
#include <numeric>

namespace zsp::host {

namespace {

constexpr std::size_t kLane = 8;

// The far end is scaled up so that ordinary speech exceeds the controller's power threshold.
constexpr float kFarScale = 16.0F;
// With it, taps of -24 dB stand for an echo as loud as the far end.
constexpr float kInitialTapEnergy = 1.0F / (kFarScale * kFarScale);
constexpr float kStepSize = 0.8F;
constexpr double kPathDecay = 0.05;  // s, expected time constant of the echo path's amplitude
constexpr double kForgetTime = 10.0; // s, in which converged taps are expected to change
constexpr float kLearnt = 0.4F;      // of what an update would teach if frames were independent
constexpr float kTapEnergyFloor = 4e-10F;
constexpr float kPowerPerBinAndTap = 1e5F; // below it the far end teaches nothing
constexpr float kFaint = 3e-3F;            // -25 dB
constexpr float kCaution = 0.1F;           // of the estimated echo, left after a start
constexpr float kLowestGain = 0.03F;
constexpr float kQuiet = 32768.0F * 5.6234133e-3F; // -45 dB below full scale, rms

/// First-order smoothing factor per frame.
float smoothing(double seconds, std::size_t hop, std::size_t rate)
{
    return static_cast<float>(
        std::exp(-static_cast<double>(hop) / (seconds * static_cast<double>(rate))));
}

/// The last term keeps the sums of digital silence away from denormal numbers, which cost time.
float smooth(float old, float alpha, float fresh)
{
    return alpha * old + (1.0F - alpha) * fresh + 1e-20F;
}

/// Modified Bessel function of order 0, by its power series.
double besselI0(double x)
{
    double term = 1, sum = 1;
    for (int k = 1; term > 1e-12 * sum; ++k) {
        term *= (x / (2 * k)) * (x / (2 * k));
        sum += term;
    }
    return sum;
}

/// A Kaiser-windowed sinc, five transform lengths long, whose squares sum to the hop. Its power
/// response overlaps so that analysis and synthesis pass a signal with an error of -45 dB.
std::vector<float> prototype(std::size_t fftLen, std::size_t hop)
{
    constexpr double kBeta = 5.0, kWidth = 1.159;
    const std::size_t length = 5 * fftLen;
    const double centre = 0.5 * static_cast<double>(length - 1);
    std::vector<double> taps(length);
    for (std::size_t n = 0; n < length; ++n) {
        const double t = static_cast<double>(n) - centre;
        const double x = std::numbers::pi * kWidth * t / static_cast<double>(fftLen);
        const double u = t / centre;
        taps[n] = std::sin(x) / x * besselI0(kBeta * std::sqrt(std::max(0.0, 1 - u * u)));
    }
    const double energy = std::inner_product(taps.begin(), taps.end(), taps.begin(), 0.0);
    const double scale = std::sqrt(static_cast<double>(hop) / energy);
    std::vector<float> window(length);
    std::transform(taps.begin(), taps.end(), window.begin(),
                   [&](double w) { return static_cast<float>(w * scale); });
    return window;
}

float energy(std::span<const float> x)
{
    return std::inner_product(x.begin(), x.end(), x.begin(), 0.0F);
}

float power(const float* bin)
{
    return bin[0] * bin[0] + bin[1] * bin[1];
}

/// The row as the library sees it.
Zsp32fc* spectrum(std::vector<float>& row)
{
    return reinterpret_cast<Zsp32fc*>(row.data());
}

} // namespace

void EchoCanceller::Rows::resize(std::size_t count, std::size_t stride)
{
    values.assign(count * stride, 0.0F);
    table.clear();
    for (std::size_t t = 0; t < count; ++t)
        table.push_back(reinterpret_cast<Zsp32fc*>(values.data() + t * stride));
}

EchoCanceller::EchoCanceller(const EchoCancellerOptions& options)
    : rate_(static_cast<std::size_t>(options.sampleRate)), hop_(rate_ / 400),
      bins_(rate_ == 16000 ? 33 : 17),
      taps_((static_cast<std::size_t>(options.tailMs) * rate_ / 1000 + hop_ - 1) / hop_ + 3),
      stride_((2 * bins_ + kLane - 1) / kLane * kLane), suppressor_(options.suppressor),
      threshold_(kPowerPerBinAndTap * static_cast<float>(bins_ * taps_)),
      restartAlpha_(smoothing(0.060, hop_, rate_)), foundAlpha_(smoothing(0.3, hop_, rate_)),
      loudestDecay_(smoothing(1.0, hop_, rate_)), mixAlpha_(smoothing(0.015, hop_, rate_)),
      cautionDecay_(smoothing(1.5, hop_, rate_))
{
    assert(options.sampleRate == 8000 || options.sampleRate == 16000);
    assert(options.tailMs >= 8 && options.tailMs <= 512);

    makeBanks();

    std::int32_t size = 0;
    zspsToneDetectGetStateSize_EC_32f(options.sampleRate, &size);
    farDetector_.resize(static_cast<std::size_t>(size));
    micDetector_.resize(static_cast<std::size_t>(size));
    zspsToneDetectInit_EC_32f(farDetector_.data(), options.sampleRate);
    zspsToneDetectInit_EC_32f(micDetector_.data(), options.sampleRate);

    far_.resize(taps_, stride_);
    far_.table.resize(2 * taps_);
    std::copy_n(far_.table.begin(), taps_, far_.table.begin() + static_cast<std::ptrdiff_t>(taps_));
    adaptive_.resize(taps_, stride_);
    fixed_.resize(taps_, stride_);
    for (Row* row : {&mic_, &micNext_, &adaptiveError_, &fixedError_, &output_, &farPower_,
                     &residual_, &errorPower_, &weightA_, &weightB_, &forget_})
        row->assign(stride_, 0.0F);
    for (Row* row : {&adaptivePower_, &fixedPower_, &micPower_, &crossPower_, &echoPower_,
                     &micSlowPower_, &share_, &outputPower_, &noiseFloor_, &estimatePower_})
        row->assign(bins_, 0.0F);
    gain_.assign(bins_, 1.0F);
    caution_.assign(bins_, kCaution);
    step_.assign(bins_, 0.0);
    startController();

    // An exponentially decaying path, as rooms have; who asks for a long tail has a live room.
    const double seconds = std::max(kPathDecay, 0.3e-3 * options.tailMs);
    std::vector<double> decay(taps_);
    for (std::size_t t = 0; t < taps_; ++t)
        decay[t] =
            std::exp(-2.0 * static_cast<double>(t * hop_) / (static_cast<double>(rate_) * seconds));
    const double sum = std::accumulate(decay.begin(), decay.end(), 0.0);
    for (double d : decay)
        initialVariance_.push_back(static_cast<float>(d / sum) * kInitialTapEnergy);
    for (float v : initialVariance_)
        variance_.insert(variance_.end(), stride_, v);

    farScaled_.assign(hop_, 0.0F);
}

void EchoCanceller::makeBanks()
{
    const int order = rate_ == 16000 ? 6 : 5;
    const std::size_t fftLen = std::size_t{1} << order;
    const std::vector<float> window = prototype(fftLen, hop_);
    const auto length = static_cast<std::int32_t>(window.size());

    std::int32_t stateSize = 0, initSize = 0, workSize = 0;
    zspsSubbandProcessGetSize_32f(order, length, &stateSize, &initSize, &workSize);
    Bytes init(static_cast<std::size_t>(initSize) + 1);
    bankWork_.resize(static_cast<std::size_t>(workSize));
    for (Bytes* bank : {&farBank_, &micBank_, &outBank_}) {
        bank->resize(static_cast<std::size_t>(stateSize));
        zspsSubbandProcessInit_32f(bank->data(), order, static_cast<std::int32_t>(hop_), length,
                                   window.data(), init.data());
    }
    // A sample leaves the last analysis block at its start, when synthesis puts it out; the
    // microphone waits one frame more.
    micDelay_.assign(window.size() - hop_ + hop_, 0.0F);
}

void EchoCanceller::startController()
{
    const auto bins = static_cast<std::int32_t>(bins_), hop = static_cast<std::int32_t>(hop_);
    const auto taps = static_cast<std::int32_t>(taps_), rate = static_cast<std::int32_t>(rate_);
    std::int32_t size = 0;
    zspsSubbandControllerGetSize_EC_32f(bins, hop, taps, rate, &size);
    controller_.resize(static_cast<std::size_t>(size));
    zspsSubbandControllerInit_EC_32f(controller_.data(), bins, hop, taps, rate);
    // The controller keeps a running sum of the history's power: both start empty.
    std::fill(far_.values.begin(), far_.values.end(), 0.0F);
}

bool EchoCanceller::detectTone(std::span<const float> far, std::span<const float> mic)
{
    const auto length = static_cast<std::int32_t>(hop_);
    std::int32_t farTone = 0, micTone = 0;
    zspsToneDetect_EC_32f(far.data(), length, &farTone, farDetector_.data());
    zspsToneDetect_EC_32f(mic.data(), length, &micTone, micDetector_.data());
    status_.farTone = farTone != 0;
    status_.micTone = micTone != 0;

    if (status_.farTone || status_.micTone) {
        quietFrames_ = 0;
        return true;
    }
    if (!status_.bypassed) return false;
    const float quiet = kQuiet * kQuiet * static_cast<float>(hop_);
    quietFrames_ = energy(far) < quiet && energy(mic) < quiet ? quietFrames_ + 1 : 0;
    return static_cast<std::size_t>(quietFrames_) * hop_ < rate_ * 2 / 5;
}

void EchoCanceller::process(std::span<const float> far, std::span<const float> mic,
                            std::span<float> out)
{
    assert(far.size() == hop_ && mic.size() == hop_ && out.size() == hop_);

    const bool bypass = detectTone(far, mic);
    if (bypass != status_.bypassed) startController();
    status_.bypassed = bypass;
    status_.restarted = false;

    newest_ = (newest_ == 0 ? taps_ : newest_) - 1;
    std::transform(far.begin(), far.end(), farScaled_.begin(),
                   [](float x) { return kFarScale * x; });
    zspsSubbandAnalysis_32f32fc(farScaled_.data(), *history(), farBank_.data(), bankWork_.data());
    std::swap(mic_, micNext_);
    zspsSubbandAnalysis_32f32fc(mic.data(), spectrum(micNext_), micBank_.data(), bankWork_.data());

    const auto wait = std::span(micDelay_).subspan(delayPosition_, hop_);
    if (bypass) {
        std::copy(mic_.begin(), mic_.end(), output_.begin());
    } else {
        filter();
        restartIfDiverged();
        zspsSubbandAPControllerUpdate_EC_32f(history(), spectrum(mic_), step_.data(), kStepSize,
                                             controller_.data());
        adapt();
        zspsSubbandController_EC_32f(spectrum(adaptiveError_), spectrum(fixedError_),
                                     adaptive_.table.data(), fixed_.table.data(),
                                     &status_.adaptFactor, controller_.data());
        mixAndSuppress();
    }
    // The bank runs on during a bypass, so that it is warm afterwards.
    std::array<float, 64> synthesis{};
    zspsSubbandSynthesis_32fc32f(spectrum(output_), synthesis.data(), outBank_.data(),
                                 bankWork_.data());
    std::array<float, 64> fresh{};
    std::copy(mic.begin(), mic.end(), fresh.begin());
    if (bypass)
        std::copy(wait.begin(), wait.end(), out.begin());
    else
        std::copy_n(synthesis.begin(), hop_, out.begin());
    std::copy_n(fresh.begin(), hop_, wait.begin());
    delayPosition_ = (delayPosition_ + hop_) % micDelay_.size();
}

// Both filters' outputs, the history's power and the echo expected to be left, all in one pass over
// the rows. With X = (xr, xi) and a tap w = (wr, wi),
//
//   w X = (wr xr - wi xi, wr xi + wi xr) = w . (xr, xr) + swap(w . (xi, -xi))
//
// so the sums of w . (xr, xr) and w . (xi, xi) need no shuffle of w inside the loop.
void EchoCanceller::filter()
{
    const __m256 sign = _mm256_setr_ps(0.0F, -0.0F, 0.0F, -0.0F, 0.0F, -0.0F, 0.0F, -0.0F);
    Zsp32fc* const* x = history();
    for (std::size_t c = 0; c < stride_; c += kLane) {
        __m256 adaptRe = _mm256_setzero_ps(), adaptIm = adaptRe, fixedRe = adaptRe,
               fixedIm = adaptRe, power = adaptRe, residual = adaptRe;
        const float* wa = adaptive_.values.data() + c;
        const float* wf = fixed_.values.data() + c;
        const float* p = variance_.data() + c;
        for (std::size_t t = 0; t < taps_; ++t) {
            const __m256 far = _mm256_loadu_ps(&x[t]->re + c);
            const __m256 re = _mm256_moveldup_ps(far), im = _mm256_movehdup_ps(far);
            const __m256 a = _mm256_loadu_ps(wa), f = _mm256_loadu_ps(wf);
            adaptRe = _mm256_fmadd_ps(a, re, adaptRe);
            adaptIm = _mm256_fmadd_ps(a, im, adaptIm);
            fixedRe = _mm256_fmadd_ps(f, re, fixedRe);
            fixedIm = _mm256_fmadd_ps(f, im, fixedIm);
            const __m256 square = _mm256_mul_ps(far, far);
            power = _mm256_add_ps(power, square);
            residual = _mm256_fmadd_ps(_mm256_loadu_ps(p), square, residual);
            wa += stride_;
            wf += stride_;
            p += stride_;
        }
        const auto swap = [](__m256 v) { return _mm256_permute_ps(v, 0xB1); };
        const auto error = [&](__m256 reSum, __m256 imSum) {
            const __m256 echo = _mm256_add_ps(reSum, swap(_mm256_xor_ps(imSum, sign)));
            return _mm256_sub_ps(_mm256_loadu_ps(mic_.data() + c), echo);
        };
        _mm256_storeu_ps(adaptiveError_.data() + c, error(adaptRe, adaptIm));
        _mm256_storeu_ps(fixedError_.data() + c, error(fixedRe, fixedIm));
        _mm256_storeu_ps(farPower_.data() + c, _mm256_add_ps(power, swap(power)));
        _mm256_storeu_ps(residual_.data() + c, _mm256_add_ps(residual, swap(residual)));
    }
}

// Near-end speech in opposite phase to the echo makes the sums look like a new path, but only in
// the few bins of its strongest harmonics.
bool EchoCanceller::echoAddedInMostBins() const
{
    std::size_t excited = 0, added = 0;
    for (std::size_t b = 0; b < bins_; ++b) {
        if (farPower_[2 * b] <= threshold_) continue;
        ++excited;
        added += fixedPower_[b] > micPower_[b] ? 1U : 0U;
    }
    return 2 * added > excited;
}

// Whether the fixed filter's echo estimate is no more found in the microphone. The regression of Y
// on the estimate Y - Ef is 1 for the right path, whatever the near end says, and 0 for an estimate
// that has nothing to do with the echo. Each bin counts relative to its power, so that a few strong
// harmonics of a near-end talker, which may have any phase, do not decide. An estimate 17 dB below
// the microphone, as beside a loud near end, tells nothing.
bool EchoCanceller::estimateLost()
{
    float found = 0, estimated = 0, excited = 0;
    for (std::size_t b = 0; b < bins_; ++b) {
        const float* y = &mic_[2 * b];
        const float echo[2] = {y[0] - fixedError_[2 * b], y[1] - fixedError_[2 * b + 1]};
        crossPower_[b] = smooth(crossPower_[b], foundAlpha_, y[0] * echo[0] + y[1] * echo[1]);
        echoPower_[b] = smooth(echoPower_[b], foundAlpha_, power(echo));
        micSlowPower_[b] = smooth(micSlowPower_[b], foundAlpha_, power(y));
        if (farPower_[2 * b] <= threshold_) continue;
        const float weight = 1.0F / (micSlowPower_[b] + echoPower_[b] + 1.0F);
        found += weight * crossPower_[b];
        estimated += weight * echoPower_[b];
        excited += 1.0F;
    }
    return estimated > 0.03F * excited && found < 0.3F * estimated;
}

// A fixed filter that adds echo instead of removing it belongs to a path that is no more: start
// again from nothing, and expect nothing of the taps. Where only its estimate is found no more, as
// when the new echo is much louder than the old one, the taps are kept but learn fast again; during
// double talk that does little harm. Faint moments say nothing: what the taps are wrong by may then
// be louder than the end of an echo.
void EchoCanceller::restartIfDiverged()
{
    fixedSum_ = smooth(fixedSum_, restartAlpha_, energy(fixedError_));
    micSum_ = smooth(micSum_, restartAlpha_, energy(mic_));
    residualSum_ = smooth(residualSum_, restartAlpha_,
                          0.5F * std::accumulate(residual_.begin(), residual_.end(), 0.0F));
    loudest_ = std::max(micSum_, loudest_ * loudestDecay_);
    const bool lost = estimateLost() && fixedSum_ > 2.0F * residualSum_;
    if (restartHold_ > 0) {
        --restartHold_;
        return;
    }
    const bool wrong = fixedSum_ > 1.5F * micSum_ && echoAddedInMostBins();
    if (fixedSum_ <= kFaint * loudest_ || !(wrong || lost)) return;

    restartHold_ = static_cast<int>(rate_ / 5 / hop_);
    const float least = wrong ? 1.0F : 0.3F;
    for (std::size_t i = 0; i < variance_.size(); ++i)
        variance_[i] = std::max(variance_[i], least * initialVariance_[i / stride_]);
    if (wrong) {
        status_.restarted = true;
        for (Rows* rows : {&adaptive_, &fixed_})
            std::fill(rows->values.begin(), rows->values.end(), 0.0F);
        std::fill(caution_.begin(), caution_.end(), kCaution);
        zspsSubbandControllerReset_EC_32f(controller_.data());
    }
    filter();
}

// The tap update, k = P step / (S + psi + 1) with the controller's step for the whole far power:
//
//   wa += k Ea conj(X),   P = (1 - q) (1 - kLearnt k |X|^2) P + q (|wa|^2 + floor)
//
// Ea conj(X) = (er, ei) . (xr, xr) + (ei, -er) . (xi, xi).
void EchoCanceller::adapt()
{
    const float forget =
        static_cast<float>(static_cast<double>(hop_) / (kForgetTime * static_cast<double>(rate_)));
    Row& learning = output_; // free until the mixer fills it
    for (std::size_t b = 0; b < bins_; ++b) {
        const std::size_t i = 2 * b;
        const float e = power(&adaptiveError_[i]);
        errorPower_[b] = smooth(errorPower_[b], e > errorPower_[b] ? 0.85F : 0.95F, e);
        const float k =
            static_cast<float>(step_[b]) * farPower_[i] / (residual_[i] + errorPower_[b] + 1.0F);
        learning[i] = learning[i + 1] = kLearnt * k;
        weightA_[i] = k * adaptiveError_[i];
        weightA_[i + 1] = k * adaptiveError_[i + 1];
        weightB_[i] = k * adaptiveError_[i + 1];
        weightB_[i + 1] = -k * adaptiveError_[i];
        forget_[i] = forget_[i + 1] = farPower_[i] > threshold_ ? forget : 0.0F;
    }

    const __m256 one = _mm256_set1_ps(1.0F), floor = _mm256_set1_ps(kTapEnergyFloor);
    Zsp32fc* const* x = history();
    for (std::size_t c = 0; c < stride_; c += kLane) {
        const __m256 a = _mm256_loadu_ps(weightA_.data() + c);
        const __m256 b = _mm256_loadu_ps(weightB_.data() + c);
        const __m256 rate = _mm256_loadu_ps(learning.data() + c);
        const __m256 q = _mm256_loadu_ps(forget_.data() + c), keep = _mm256_sub_ps(one, q);
        const auto pairSum = [](__m256 v) {
            const __m256 square = _mm256_mul_ps(v, v);
            return _mm256_add_ps(square, _mm256_permute_ps(square, 0xB1));
        };
        float* wa = adaptive_.values.data() + c;
        float* p = variance_.data() + c;
        for (std::size_t t = 0; t < taps_; ++t) {
            const __m256 far = _mm256_loadu_ps(&x[t]->re + c);
            const __m256 direction = _mm256_fmadd_ps(a, _mm256_moveldup_ps(far),
                                                     _mm256_mul_ps(b, _mm256_movehdup_ps(far)));
            const __m256 old = _mm256_loadu_ps(p);
            const __m256 tap = _mm256_fmadd_ps(old, direction, _mm256_loadu_ps(wa));
            _mm256_storeu_ps(wa, tap);
            const __m256 learnt = _mm256_mul_ps(_mm256_mul_ps(rate, old), pairSum(far));
            const __m256 left = _mm256_mul_ps(keep, _mm256_fnmadd_ps(learnt, old, old));
            _mm256_storeu_ps(p, _mm256_fmadd_ps(q, _mm256_add_ps(pairSum(tap), floor), left));
            wa += stride_;
            p += stride_;
        }
    }
}

// Takes the better of both errors bin by bin, and attenuates a bin as far as echo is expected in
// it, but not below the background noise.
void EchoCanceller::mixAndSuppress()
{
    const float growth = 1.0F + static_cast<float>(hop_) / static_cast<float>(rate_);
    for (std::size_t b = 0; b < bins_; ++b) {
        const std::size_t i = 2 * b;
        adaptivePower_[b] = smooth(adaptivePower_[b], mixAlpha_, power(&adaptiveError_[i]));
        fixedPower_[b] = smooth(fixedPower_[b], mixAlpha_, power(&fixedError_[i]));
        micPower_[b] = smooth(micPower_[b], mixAlpha_, power(&mic_[i]));
        const float ratio = adaptivePower_[b] / std::max(fixedPower_[b], 1e-6F);
        share_[b] = smooth(share_[b], 0.7F, std::clamp((0.9F - ratio) / 0.4F, 0.0F, 1.0F));
        // Neither filter may make a bin louder than it came in: then the microphone is better.
        const float errorPower = fixedPower_[b] + share_[b] * (adaptivePower_[b] - fixedPower_[b]);
        const float excess = errorPower / std::max(micPower_[b], 1e-6F);
        const float untouched = std::clamp(excess - 1.0F, 0.0F, 1.0F);
        for (std::size_t part = i; part < i + 2; ++part) {
            const float error =
                fixedError_[part] + share_[b] * (adaptiveError_[part] - fixedError_[part]);
            output_[part] = error + untouched * (mic_[part] - error);
        }

        const float now = power(&output_[i]);
        outputPower_[b] = smooth(outputPower_[b], 0.8F, now);
        noiseFloor_[b] = outputPower_[b] < noiseFloor_[b]
                             ? 0.9F * noiseFloor_[b] + 0.1F * outputPower_[b]
                             : noiseFloor_[b] * growth;
        noiseFloor_[b] = std::max(noiseFloor_[b], 1.0F);
        const float input = std::max(0.3F * now + 0.7F * outputPower_[b], 1e-6F);
        const float audible = std::min(1.0F, std::sqrt(noiseFloor_[b] / input));
        // Voiced speech excites a bin with one frequency at a time, which teaches less than P
        // counts: in the first seconds a share of the estimated echo is left in any case.
        const float echo[2] = {mic_[i] - output_[i], mic_[i + 1] - output_[i + 1]};
        estimatePower_[b] = smooth(estimatePower_[b], 0.8F, power(echo));
        if (farPower_[i] > threshold_) caution_[b] = smooth(caution_[b], cautionDecay_, 0.0F);
        const float left = std::max(residual_[i], caution_[b] * estimatePower_[b]);
        const float doubt = left / input;
        const float gain = std::max({1.0F - 4.0F * doubt * doubt, kLowestGain, audible});
        gain_[b] = gain < gain_[b] ? 0.4F * gain_[b] + 0.6F * gain : 0.5F * (gain_[b] + gain);
        if (suppressor_) {
            output_[i] *= gain_[b];
            output_[i + 1] *= gain_[b];
        }
    }
}

void EchoCanceller::uncertainty(std::span<float> perBin) const
{
    assert(perBin.size() == bins_);
    for (std::size_t b = 0; b < bins_; ++b) {
        float sum = 0;
        for (std::size_t t = 0; t < taps_; ++t)
            sum += variance_[t * stride_ + 2 * b];
        perBin[b] = sum / kInitialTapEnergy;
    }
}

} // namespace zsp::host
