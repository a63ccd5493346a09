// Encoder and decoder of ITU-T G.723.1, as their frames pass through the blocks.
#pragma once

#include "voice/codec/codec.hpp"
#include "zspsc/g723/noise.h"

#include <array>

namespace zsp::voice {

inline constexpr std::size_t kG723Frame = 240;
inline constexpr std::size_t kG723Subframe = 60;
inline constexpr std::size_t kG723Past = 145;

using G723Lsp = std::array<std::int16_t, 10>;
using G723Past = std::array<std::int16_t, kG723Past>;

inline constexpr G723Lsp kG723LspMean = {3131,  4721,  7690,  10806, 13872,
                                         16495, 19752, 22260, 25484, 27718};
inline constexpr std::int16_t kG723NoiseSeed = 12345;

/// A pause, which encoder and decoder go through alike.
struct G723Noise {
    G723Lsp lsp;
    std::int16_t sidGain, gain, seed;

    void start() noexcept
    {
        lsp = kG723LspMean;
        sidGain = gain = 0;
        seed = kG723NoiseSeed;
    }
    /// The gain follows the descriptors'; the first frame of a pause has it at once.
    void follow(bool first) noexcept
    {
        gain = first ? sidGain : static_cast<std::int16_t>((7 * gain + sidGain) >> 3);
    }
};

struct G723Encoder {
    ZspG723VadState vad;
    ZspG723SidState sid;
    std::array<std::int32_t, 2> highPass;
    std::array<std::int32_t, 5> taming;
    std::array<std::int16_t, 120> history; // samples in front of the newest frame
    std::array<std::int16_t, 20> weighting;
    std::array<std::int16_t, 165> ringing;
    G723Past weighted, excitation;
    G723Lsp lsp;
    G723Noise noise;
    std::uint16_t sines; // the last 15 sub-frames, and on top whether that is a sine
    bool inPause;

    static std::size_t size(const Codec& codec) noexcept;
    void start(const Codec& codec, const Settings& settings) noexcept;
    Coded encode(const Codec& codec, const Settings& settings, In16 samples, Out8 bytes) noexcept;

  private:
    struct Work;
    void filterInput(Work& w, In16 samples, const Settings& settings) noexcept;
    void analyse(Work& w) noexcept;
    void weight(Work& w) noexcept;
    void encodeSpeech(Work& w) noexcept;
    void encodeSubframe(Work& w, std::size_t i, std::int16_t& budget) noexcept;
    void encodePause(Work& w) noexcept;
};

struct G723Decoder {
    G723Lsp lsp;
    G723Past excitation;
    std::array<std::int16_t, 10> synthesis;
    std::array<std::int16_t, 21> postFilter;
    std::int16_t gainControl;
    G723Noise noise;
    std::int16_t noiseEnergy, noiseShift; // of the last good frame, should no descriptor come
    std::int16_t concealmentLag, concealmentGain, concealmentSeed;
    std::int32_t lost; // frames in a row, 3 at most
    bool inPause;

    static std::size_t size(const Codec& codec) noexcept;
    void start(const Codec& codec, const Settings& settings) noexcept;
    void decode(const Codec& codec, const Settings& settings, ZspvFrameKind kind, In8 bytes,
                Out16 samples) noexcept;

  private:
    using Excitation = std::array<std::int16_t, kG723Frame>;
    using Filters = std::array<std::int16_t, 40>;
    void speech(const ZspG723Frame& frame, bool postFilters, Excitation& out,
                Filters& filters) noexcept;
    void lostSpeech(Excitation& out, Filters& filters) noexcept;
    void pause(const ZspG723Frame& frame, Excitation& out, Filters& filters) noexcept;
    void take(const G723Lsp& next, Filters& filters) noexcept;
};

} // namespace zsp::voice
