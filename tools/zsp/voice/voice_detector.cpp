#include "tools/zsp/voice/voice_detector.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/io/failure.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zsp::host {

namespace {

constexpr std::size_t kLookAhead = 40; // of option 1: its power is that of samples 5 ms before

constexpr std::array kEdges1 = {0, 250, 500, 750, 1000, 1500, 2000, 2500, 3000, 4000};
constexpr std::array kEdges2 = {94,   219,  344,  469,  594,  719,  844,  1031, 1219,
                                1406, 1656, 1906, 2219, 2594, 3031, 3469, 3969};
constexpr std::array kEdgesWb = {0,    200,  400,  600,  800,  1200, 1600,
                                 2000, 2400, 3200, 4000, 4800, 6400};

template <typename T>
void toDecibels(std::span<const T> values, double exponent, std::vector<float>& out)
{
    out.resize(values.size());
    std::transform(values.begin(), values.end(), out.begin(), [exponent](T value) {
        return static_cast<float>(exponent * signals::decibels(std::max<double>(value, 1.0)));
    });
}

} // namespace

std::string_view nameOf(DetectorKind kind)
{
    switch (kind) {
    case DetectorKind::amr1:
        return "GSM-AMR option 1";
    case DetectorKind::amr2:
        return "GSM-AMR option 2";
    default:
        return "AMR-WB";
    }
}

VoiceDetector::HighPass::HighPass(double cutoff, double rate, double gain)
{
    // Butterworth, by the bilinear transform.
    const double k = std::tan(std::numbers::pi * cutoff / rate);
    const double norm = 1.0 / (1.0 + std::numbers::sqrt2 * k + k * k);
    gain_ = gain * norm;
    b1_ = -2.0;
    a1_ = 2.0 * (k * k - 1.0) * norm;
    a2_ = (1.0 - std::numbers::sqrt2 * k + k * k) * norm;
}

double VoiceDetector::HighPass::operator()(double x)
{
    const double y = gain_ * (x + b1_ * x1_ + x2_) - a1_ * y1_ - a2_ * y2_;
    x2_ = x1_;
    x1_ = x;
    y2_ = y1_;
    y1_ = y;
    return y;
}

// The GSM-AMR encoder's input stage cuts below 80 Hz and halves the signal, that of AMR-WB cuts
// below 50 Hz and then emphasises high frequencies.
VoiceDetector::VoiceDetector(DetectorKind kind)
    : kind_(kind),
      highPass_(kind == DetectorKind::amrWb ? HighPass(50, 12800, 1.0) : HighPass(80, 8000, 0.5)),
      pitch_(frameLength(), kind == DetectorKind::amrWb ? 29 : 18),
      input_(kLookAhead + frameLength())
{
    for (auto* levels : {vad1_.old_level, vad1_.ave_level, vad1_.bckr_est})
        std::fill_n(levels, 9, std::int16_t{150});
    vad1_.corr_hp_fast = 13106;
    require(zspsVADInit_AMRWB_16s(&vadWb_), "zspsVADInit_AMRWB_16s");
}

std::span<const int> VoiceDetector::bandEdges() const
{
    switch (kind_) {
    case DetectorKind::amr1:
        return kEdges1;
    case DetectorKind::amr2:
        return kEdges2;
    default:
        return kEdgesWb;
    }
}

void VoiceDetector::prepare(std::span<const std::int16_t> frame)
{
    std::copy(input_.end() - kLookAhead, input_.end(), input_.begin());
    std::vector<float> filtered(frame.size());
    std::transform(frame.begin(), frame.end(), filtered.begin(),
                   [this](std::int16_t x) { return static_cast<float>(highPass_(x)); });
    if (kind_ == DetectorKind::amrWb)
        require(zspsPreemphasize_32f_I(0.68F, filtered.data(),
                                       static_cast<std::int32_t>(filtered.size()),
                                       &emphasisMemory_),
                "zspsPreemphasize_32f_I");
    std::transform(filtered.begin(), filtered.end(), input_.begin() + kLookAhead, [](float x) {
        return static_cast<std::int16_t>(std::lround(std::clamp(x, -32768.0F, 32767.0F)));
    });
}

bool VoiceDetector::detect(std::span<const std::int16_t> frame)
{
    prepare(frame);
    const std::int16_t* now = input_.data() + kLookAhead;
    pitch_.search({now, frameLength()});
    std::int16_t flag = 0;
    switch (kind_) {
    case DetectorKind::amr1:
        vad1_.pitch = static_cast<std::int16_t>(vad1_.pitch >> 1 | (pitch_.stable() ? 0x4000 : 0));
        require(
            zspsVAD1_GSMAMR_16s(input_.data(), &vad1_, &flag, pitch_.tone(), pitch_.bestHighPass()),
            "zspsVAD1_GSMAMR_16s");
        toDecibels<std::int16_t>(vad1_.old_level, 2.0, levels_);
        toDecibels<std::int16_t>(vad1_.bckr_est, 2.0, noise_);
        break;
    case DetectorKind::amr2: {
        require(zspsVAD2_GSMAMR_16s(now, &vad2_, &flag, pitch_.predictable()),
                "zspsVAD2_GSMAMR_16s");
        toDecibels<std::int32_t>(vad2_.ch_enrg, 1.0, levels_);
        toDecibels<std::int32_t>(vad2_.ch_noise, 1.0, noise_);
        // Energies of the second scaling have five fraction bits less than the noise.
        if (vad2_.shift_state != 0)
            for (float& level : levels_)
                level += static_cast<float>(signals::decibels(32.0));
        break;
    }
    default: {
        auto tone = static_cast<std::int16_t>(pitch_.tone());
        require(zspsVAD_AMRWB_16s(now, &vadWb_, &tone, &flag), "zspsVAD_AMRWB_16s");
        toDecibels<std::int16_t>(vadWb_.energy_level, 2.0, levels_);
        toDecibels<std::int16_t>(vadWb_.bckr_est, 2.0, noise_);
    }
    }
    return flag != 0;
}

TxType DtxSchedule::next(bool speech)
{
    constexpr std::int16_t kSpeechMode = 7, kDtxMode = 25;
    constexpr int kFirstUpdate = 3, kUpdateInterval = 8; // frames
    std::int16_t mode = kSpeechMode, newSid = 0;
    require(zspsEncDTXHandler_GSMAMR_16s(&hangover_, &elapsed_, &mode, &newSid, speech ? 1 : 0),
            "zspsEncDTXHandler_GSMAMR_16s");
    if (mode != kDtxMode) return last_ = TxType::speech;
    if (last_ == TxType::speech) {
        untilUpdate_ = kFirstUpdate;
        return last_ = TxType::sidFirst;
    }
    if (--untilUpdate_ > 0) return last_ = TxType::noData;
    untilUpdate_ = kUpdateInterval;
    return last_ = TxType::sidUpdate;
}

} // namespace zsp::host
