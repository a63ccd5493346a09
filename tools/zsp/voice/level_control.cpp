// Calls of the level control, and its gain and levels in decibels.

#include "tools/zsp/voice/level_control.hpp"

#include "signals/measure.hpp"
#include "tools/zsp/io/failure.hpp"
#include "zspsc/alc_g169.h"

#include <algorithm>
#include <array>

namespace zsp::host {

namespace {

/// A mean magnitude or root mean square of samples in dBFS.
double amplitudeDb(float amplitude)
{
    return std::max(2 * signals::decibels(amplitude, 32768.0), -90.0);
}

} // namespace

LevelControl::LevelControl()
{
    require(zspsALCInit_G169_16s(&state_), "zspsALCInit_G169_16s");
}

void LevelControl::setMaxGain(double db)
{
    require(zspsALCSetGain_G169_16s(static_cast<float>(db), &state_), "zspsALCSetGain_G169_16s");
    // The library lowers a gain that is too large only while somebody talks.
    state_.targetGain = std::min(state_.targetGain, state_.maxGain);
}

void LevelControl::setLevels(double targetDb, double peakDb)
{
    require(
        zspsALCSetLevel_G169_16s(static_cast<float>(targetDb), static_cast<float>(peakDb), &state_),
        "zspsALCSetLevel_G169_16s");
}

void LevelControl::process(std::span<const std::int16_t> in, std::span<std::int16_t> out)
{
    if (in.empty()) return;
    require(zspsALC_G169_16s(in.data(), out.data(), static_cast<std::int32_t>(in.size()), &state_),
            "zspsALC_G169_16s");
}

LevelTrack levelAll(LevelControl& control, std::span<std::int16_t> samples, int rate)
{
    // 20 ms per value, in whole blocks.
    const std::size_t step =
        std::max<std::size_t>(static_cast<std::size_t>(rate) / 400, 1) * LevelControl::kBlock;
    LevelTrack track;
    track.interval = static_cast<double>(step) / rate;
    std::vector<std::int16_t> block;
    for (std::size_t at = 0; at < samples.size(); at += step) {
        const auto part = samples.subspan(at, std::min(step, samples.size() - at));
        block.assign(part.begin(), part.end());
        track.inputDb.push_back(std::max(signals::levelDbfs(block), -90.0));
        block.resize((block.size() + LevelControl::kBlock - 1) / LevelControl::kBlock *
                     LevelControl::kBlock);
        control.process(block, block);
        std::copy_n(block.begin(), part.size(), part.begin());
        const ZspAlcState_G169& state = control.state();
        track.gainDb.push_back(std::max(2 * signals::decibels(state.gain), -40.0));
        track.speechDb.push_back(amplitudeDb(state.rmsLevel));
        track.noiseDb.push_back(amplitudeDb(state.noiseLevel));
    }
    return track;
}

} // namespace zsp::host
