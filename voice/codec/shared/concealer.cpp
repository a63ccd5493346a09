// Concealment by repetition of pitch waveforms.

#include "voice/codec/shared/concealer.hpp"
#include "zspsc/correlation.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace zsp::voice {

namespace {

// In samples at 8 kHz.
constexpr std::int32_t kFrame = 80;       // 10 ms
constexpr std::int32_t kMinPeriod = 40;   // 5 ms
constexpr std::int32_t kMaxPeriod = 120;  // 15 ms
constexpr std::int32_t kCorrelated = 160; // 20 ms, for the search over all periods
constexpr std::int32_t kNewest = 40;      // 5 ms, for the search around the period found
constexpr std::int32_t kSilentAfter = 6;  // frames
constexpr float kAttenuation = 0.2F;      // per frame

std::int16_t toSample(float x) noexcept
{
    return static_cast<std::int16_t>(std::clamp(x + (x < 0 ? -0.5F : 0.5F), -32768.0F, 32767.0F));
}

/// The lag with the largest normalised correlation of the `length` samples before `end`; the
/// longest one where no correlation is positive, as in silence.
std::int32_t bestLag(const std::int16_t* end, std::int32_t length, std::int32_t shortest,
                     std::int32_t longest) noexcept
{
    const std::int16_t* current = end - length;
    const auto square = [current](std::int32_t i) { return current[i] * current[i]; };
    std::int64_t energy = 0; // of the samples that the lag correlates with
    for (std::int32_t i = 0; i < length; ++i)
        energy += square(i - longest);

    std::int32_t best = longest;
    double bestScore = 0;
    for (std::int32_t lag = longest; lag >= shortest; --lag) {
        std::int32_t correlation = 0, found = 0; // 0 for a negative one
        zspsAutoCorrLagMax_Fwd_16s(current, length, lag, lag, &correlation, &found);
        const double score = energy > 0 ? static_cast<double>(correlation) * correlation /
                                              static_cast<double>(energy)
                                        : 0;
        if (score > bestScore) {
            bestScore = score;
            best = lag;
        }
        energy += square(length - lag) - square(-lag); // the window moves on by one
    }
    return best;
}

/// Amplitude at the beginning of a gap's frame; the next frame's is that at its end.
float amplitude(std::int32_t frame) noexcept
{
    if (frame == 0) return 1;
    return std::max(1 - kAttenuation * static_cast<float>(frame - 1), 0.0F);
}

} // namespace

void Concealer::start(std::int32_t sampleRate) noexcept
{
    *this = Concealer{};
    scale_ = sampleRate / 8000;
}

In16 Concealer::last(std::size_t count) const noexcept
{
    assert(count <= historySize());
    return {history_.data() + historySize() - count, count};
}

void Concealer::remember(In16 samples) noexcept
{
    const std::size_t size = historySize();
    const std::size_t count = std::min(samples.size(), size);
    std::memmove(history_.data(), history_.data() + count, (size - count) * sizeof(std::int16_t));
    const In16 newest = samples.last(count);
    std::copy(newest.begin(), newest.end(), history_.data() + size - count);
}

/// The period of the newest samples, in two steps.
void Concealer::findPeriod() noexcept
{
    // Four bits of headroom: no value is beyond 2048, and 320 * 2048^2 < 2^31.
    std::array<std::int16_t, kMaxHistory> scaled;
    const std::int32_t size = 390 * scale_;
    std::int32_t headroom = 4;
    zspsAutoScale_16s(source_.data(), scaled.data(), size, &headroom);
    const std::int16_t* end = scaled.data() + size;

    const std::int32_t shortest = kMinPeriod * scale_;
    const std::int32_t longest = kMaxPeriod * scale_;
    const std::int32_t coarse = bestLag(end, kCorrelated * scale_, shortest, longest);
    const std::int32_t reach = coarse / 8;
    period_ = bestLag(end, kNewest * scale_, std::max(coarse - reach, shortest),
                      std::min(coarse + reach, longest));
}

/// Makes the last quarter of a period lead to the first sample of the repeated waveform: an overlap
/// with the samples before that first one.
void Concealer::joinEnds() noexcept
{
    const std::int16_t* end = source_.data() + historySize() - overlap_;
    const std::int16_t* before = end - periods_ * period_;
    for (std::int32_t i = 0; i < overlap_; ++i) {
        const float w = static_cast<float>(i + 1) / static_cast<float>(overlap_ + 1);
        end_[static_cast<std::size_t>(i)] = (1 - w) * end[i] + w * before[i];
    }
}

/// A sample of the waveform that is repeated.
float Concealer::repeated(std::int32_t offset) const noexcept
{
    const std::int32_t length = periods_ * period_;
    const std::int32_t place = offset % length;
    if (place >= length - overlap_)
        return end_[static_cast<std::size_t>(place - (length - overlap_))];
    return source_[historySize() - static_cast<std::size_t>(length - place)];
}

void Concealer::beginGap() noexcept
{
    source_ = history_;
    findPeriod();
    overlap_ = period_ / 4;
    periods_ = 1;
    offset_ = 0;
    joinEnds();
    const std::size_t size = historySize();
    step_ = static_cast<float>(source_[size - 1]) -
            static_cast<float>(source_[size - 1 - static_cast<std::size_t>(period_)]);
}

void Concealer::gap(Out16 samples) noexcept
{
    const std::int32_t frame = kFrame * scale_;
    assert(countOf(samples) == frame);
    if (erased_ >= kSilentAfter) {
        std::fill(samples.begin(), samples.end(), std::int16_t{0});
    } else {
        // What the waveform repeated so far goes on with, to change over from.
        std::array<float, kMaxOverlap> before{};
        std::int32_t changing = 0;
        if (erased_ == 0) {
            beginGap();
        } else if (erased_ < 3) {
            changing = overlap_;
            for (std::int32_t i = 0; i < changing; ++i)
                before[static_cast<std::size_t>(i)] = repeated(offset_ + i);
            ++periods_;
            joinEnds();
            offset_ %= period_; // in the oldest of the periods
        }

        const float from = amplitude(erased_);
        const float slope = (amplitude(erased_ + 1) - from) / static_cast<float>(frame);
        const float share = 1 / static_cast<float>(overlap_ + 1);
        for (std::int32_t i = 0; i < frame; ++i) {
            float x = repeated(offset_ + i);
            const float w = static_cast<float>(i + 1) * share;
            if (i < changing) x = (1 - w) * before[static_cast<std::size_t>(i)] + w * x;
            if (erased_ == 0 && i < overlap_) x += step_ * (1 - w);
            samples[static_cast<std::size_t>(i)] =
                toSample(x * (from + slope * static_cast<float>(i)));
        }
        offset_ += frame;
    }
    // The counter stops where the rest of the gap is alike.
    erased_ = std::min(erased_ + 1, kSilentAfter + 1);
    fade_ = overlap_;
    fading_ = fade_;
    fadeFrom_ = amplitude(erased_);
    remember(samples);
}

void Concealer::lookAhead(Out16 samples) const noexcept
{
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = toSample(fadeFrom_ * repeated(offset_ + static_cast<std::int32_t>(i)));
}

void Concealer::good(Out16 samples) noexcept
{
    const std::int32_t count = std::min(fading_, countOf(samples));
    for (std::int32_t i = 0; i < count; ++i) {
        const std::int32_t at = fade_ - fading_ + i;
        const float w = static_cast<float>(at + 1) / static_cast<float>(fade_ + 1);
        std::int16_t& sample = samples[static_cast<std::size_t>(i)];
        sample = toSample((1 - w) * fadeFrom_ * repeated(offset_ + at) + w * sample);
    }
    fading_ -= count;
    erased_ = 0;
    remember(samples);
}

} // namespace zsp::voice
