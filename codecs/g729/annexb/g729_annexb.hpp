// Silence compression of ITU-T G.729 Annex B: activity decision, silence descriptors, comfort
// noise.
#pragma once

#include "codecs/g729/coder/g729_coder.hpp"
#include "codecs/g729/decoder/g729_decoder.hpp"
#include "codecs/g729/tables/g729_annexb_tables.hpp"
#include "zspsc/g729/annexb.h"

namespace zsp::g729 {

/// `x` is the analysis window's 240 samples, `corr` their lag-windowed correlations.
bool detectActivity(std::span<const Word, 240> x, std::span<const Long, kLags> corr, Long exponent,
                    In<kOrder> lsf_Q15, Word reflection_Q15, ZspG729BVadState& s) noexcept;

// Silence descriptors

struct SidLsf {
    int predictor, first, second;
};
void decodeSidLsf(const SidLsf& indices, Out<kLsfMemory> memory, Out<kOrder> lsf_Q13) noexcept;
/// Frequencies need no order; quantised may be the same memory.
SidLsf quantiseSidLsf(In<kOrder> lsf_Q13, Out<kLsfMemory> memory, Out<kOrder> quantised) noexcept;

struct SidGain {
    int index, level; // the level in dB
};
/// Of one or two frames' energies.
SidGain quantiseSidGain(std::span<const Word> energies, std::span<const Word> shifts) noexcept;
/// Of an excitation's energy, which a decoder has kept.
SidGain quantiseKeptSidGain(Word energy, Word shift) noexcept;
SidGain quantiseSidGain(Long energy, int shift) noexcept;

/// The last frames' correlations, before they are lag-windowed.
void updateDtx(std::span<const Long, kTaps> corr, Long exponent, bool active,
               ZspG729BDtxState& s) noexcept;
/// The filter that all of an encoder has found last, with which it goes on where it finds none.
struct StableFilter {
    Out<kTaps> lpc_Q12;
    Out<kOrder> reflection_Q15;
};
/// Whether a descriptor is to be sent; if not, sidLsp and fields stay as they are.
bool encodeDtx(bool annexA, bool afterSpeech, In<kOrder> previousLsp, StableFilter last,
               Out<kLsfMemory> lsfMemory, Out<kOrder> sidLsp, Out<kSidParameters> fields,
               ZspG729BDtxState& s) noexcept;

// Comfort noise

constexpr Word nextNoiseGain(Word gain, Word sidGain) noexcept
{
    return fx::add(fx::mult_r(gain, 28672), fx::mult_r(sidGain, 4096));
}

/// What an encoder's taming has to know of a sub-frame of noise, and the pulses' gain.
struct NoiseShape {
    Word lag, pitchGain_Q14, pulseGain;
};
NoiseShape comfortNoise(Word gain, Word& seed, Out<kPast + kSubframe> excitation) noexcept;

} // namespace zsp::g729
