// Pre-processing, pitch search and decision of one frame.

#include "voice/activity/detector.hpp"
#include "zspsc/amrwb/vad.h"
#include "zspsc/correlation.h"
#include "zspsc/gsmamr_vad.h"

#include <algorithm>
#include <cmath>

namespace zsp::voice::activity {

namespace {

constexpr std::array<std::int16_t, 10> kEdgesAmr1 = {0,    250,  500,  750,  1000,
                                                     1500, 2000, 2500, 3000, 4000};
constexpr std::array<std::int16_t, 17> kEdgesAmr2 = {
    94, 219, 344, 469, 594, 719, 844, 1031, 1219, 1406, 1656, 1906, 2219, 2594, 3031, 3469, 3969};
constexpr std::array<std::int16_t, 13> kEdgesAmrWb = {0,    200,  400,  600,  800,  1200, 1600,
                                                      2000, 2400, 3200, 4000, 4800, 6400};

constexpr float kPreEmphasis = 0.68F; // of AMR-WB

/// Levels are amplitudes in option 1 and AMR-WB, energies in option 2.
enum class Scale { amplitude = 20, energy = 10 };

template <typename T>
void toDecibels(std::span<const T> values, Scale scale, std::span<float> out)
{
    std::transform(values.begin(), values.end(), out.begin(), [scale](T value) {
        return static_cast<float>(static_cast<int>(scale) / 10.0 *
                                  (10.0 * std::log10(std::max<double>(value, 1.0))));
    });
}

} // namespace

// The GSM-AMR encoder's input stage cuts below 80 Hz and halves the signal, that of AMR-WB cuts
// below 50 Hz and then emphasises high frequencies.
Detector::Detector(ZspvDetector kind)
    : kind_(kind),
      highPass_(kind == zspvDetectorAmrWb ? HighPass(50, 12800, 1.0) : HighPass(80, 8000, 0.5)),
      pitch_(frameLength(), kind == zspvDetectorAmrWb ? 29 : 18)
{
    for (auto* levels : {amr1_.old_level, amr1_.ave_level, amr1_.bckr_est})
        std::fill_n(levels, 9, std::int16_t{150});
    amr1_.corr_hp_fast = 13106;
}

ZspStatus Detector::start()
{
    return zspsVADInit_AMRWB_16s(&amrWb_);
}

std::span<const std::int16_t> Detector::bandEdges() const
{
    switch (kind_) {
    case zspvDetectorAmr1:
        return kEdgesAmr1;
    case zspvDetectorAmr2:
        return kEdgesAmr2;
    case zspvDetectorAmrWb:
        break;
    }
    return kEdgesAmrWb;
}

void Detector::prepare(In16 frame, Steps& steps)
{
    std::copy_n(&input_[frame.size()], kLookBack, input_.begin());
    std::array<float, kMaxFrame> filtered{};
    std::transform(frame.begin(), frame.end(), filtered.begin(),
                   [this](std::int16_t x) { return static_cast<float>(highPass_(x)); });
    if (kind_ == zspvDetectorAmrWb)
        steps.add(zspsPreemphasize_32f_I(kPreEmphasis, filtered.data(), countOf(frame),
                                         &emphasisMemory_));
    const std::span<const float> ready(filtered.data(), frame.size());
    std::transform(ready.begin(), ready.end(), &input_[kLookBack], [](float x) {
        return static_cast<std::int16_t>(std::lround(std::clamp(x, -32768.0F, 32767.0F)));
    });
}

// The detector's power is that of the samples 5 ms before those of its filter bank.
std::int16_t Detector::detectAmr1(Steps& steps)
{
    std::int16_t flag = 0;
    amr1_.pitch = static_cast<std::int16_t>(amr1_.pitch >> 1 | (pitch_.stable() ? 0x4000 : 0));
    steps.add(
        zspsVAD1_GSMAMR_16s(input_.data(), &amr1_, &flag, pitch_.tone(), pitch_.bestHighPass()));
    toDecibels<std::int16_t>(amr1_.old_level, Scale::amplitude, levels_);
    toDecibels<std::int16_t>(amr1_.bckr_est, Scale::amplitude, noise_);
    return flag;
}

std::int16_t Detector::detectAmr2(Steps& steps)
{
    std::int16_t flag = 0;
    steps.add(zspsVAD2_GSMAMR_16s(&input_[kLookBack], &amr2_, &flag, pitch_.predictable()));
    toDecibels<std::int32_t>(amr2_.ch_enrg, Scale::energy, levels_);
    toDecibels<std::int32_t>(amr2_.ch_noise, Scale::energy, noise_);
    // Energies of the second scaling have five fraction bits less than the noise.
    if (amr2_.shift_state != 0)
        for (float& level : levels_)
            level += static_cast<float>(10.0 * std::log10(32.0));
    return flag;
}

std::int16_t Detector::detectAmrWb(Steps& steps)
{
    std::int16_t flag = 0;
    auto tone = static_cast<std::int16_t>(pitch_.tone());
    steps.add(zspsVAD_AMRWB_16s(&input_[kLookBack], &amrWb_, &tone, &flag));
    toDecibels<std::int16_t>(amrWb_.energy_level, Scale::amplitude, levels_);
    toDecibels<std::int16_t>(amrWb_.bckr_est, Scale::amplitude, noise_);
    return flag;
}

ZspStatus Detector::detect(In16 frame, bool& speech)
{
    Steps steps;
    prepare(frame, steps);
    pitch_.search({&input_[kLookBack], frame.size()}, steps);
    switch (kind_) {
    case zspvDetectorAmr1:
        speech = detectAmr1(steps) != 0;
        break;
    case zspvDetectorAmr2:
        speech = detectAmr2(steps) != 0;
        break;
    case zspvDetectorAmrWb:
        speech = detectAmrWb(steps) != 0;
        break;
    }
    return steps.status();
}

} // namespace zsp::voice::activity
