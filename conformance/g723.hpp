// An encoder and a decoder after ITU-T G.723.1, made of the blocks of zspsc/g723*.h, which show
// what each block gives.
#pragma once

#include "conformance/vectors.hpp"
#include "zspsc/g723/decoder.h"
#include "zspsc/g723/noise.h"

#include <array>
#include <functional>

namespace zsp::conformance::g723 {

inline constexpr std::size_t kFrame = 240, kSub = 60, kPast = 145;

/// What sees a block's result under its name in the traces.
using Probe = std::function<void(const char* name, std::span<const std::int32_t> result)>;

/// What encoder and decoder keep alike.
struct Common {
    Common();

    Probe probe;
    Words lsp, sidLsp, excitation = Words(kPast);
    bool inPause = false;

  protected:
    template <typename T>
    void show(const char* name, const T* values, std::size_t count) const
    {
        if (probe) probe(name, std::vector<std::int32_t>(values, values + count));
    }
    template <typename T>
    void show(const char* name, T value) const
    {
        show(name, &value, 1);
    }
    /// A frame of comfort noise; the fields that were drawn stay in `f`.
    Words comfortNoise(ZspG723Frame& f);
    /// Goes over to other spectral pairs: the coefficients of four sub-frames.
    Words interpolate(const Words& next);

    std::int16_t sidGain_ = 0, gain_ = 0, seed_ = 12345;
};

struct Encoder : Common {
    explicit Encoder(std::int32_t type);

    bool dtx = false, highPass = true;

    std::vector<std::uint8_t> encode(const std::int16_t* samples);

  private:
    void analyse(const std::int16_t* samples);
    void weight();
    void speech(ZspG723Frame& f);
    void subframe(ZspG723Frame& f, std::size_t i, const Words& lpc, std::int16_t& budget);
    void pause(ZspG723Frame& f);

    std::int32_t type_;
    std::int32_t memory_[2] = {};
    std::array<std::int32_t, 5> errors_ = {4, 4, 4, 4, 4};
    ZspG723VadState vad_;
    ZspG723SidState sid_;
    Words input_ = Words(360), lpc_ = Words(40), coefs_ = Words(80), next_ = Words(10);
    Words weighting_ = Words(20), ringing_ = Words(165), target_ = Words(kFrame);
    Words weighted_ = Words(kPast + kFrame), normalised_ = Words(kPast + kFrame);
    std::array<std::int16_t, 2> openLoop_{};
    std::array<std::int16_t, 4> harmonicLag_{}, harmonicGain_{};
    std::uint16_t sines_ = 0;
};

struct Decoder : Common {
    bool postFilters = true;

    Words decode(const std::uint8_t* bytes, std::size_t length);

  private:
    Words speech(const ZspG723Frame& f, Words& lpc);
    Words lost(Words& lpc);

    Words synthesis_ = Words(10), postFilter_ = Words(21);
    std::int16_t control_ = 4096, energy_ = 0, shift_ = 0;
    std::int16_t lag_ = 0, amplitude_ = 0, noise_ = 0;
    std::int32_t lost_ = 0;
};

} // namespace zsp::conformance::g723
