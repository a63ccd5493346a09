// GSM: full-rate speech of ETSI GSM 06.10 in 13 kbit/s, frames of 33 octets, with homing frames;
// lost frames are substituted and muted after GSM 06.11.

#include "voice/codec/gsmfr/gsmfr_substitution.hpp"
#include "voice/codec/rows.hpp"
#include "zspsc/gsmfr/frame.h"
#include "zspsc/gsmfr/residual.h"
#include "zspsc/gsmfr/shortterm.h"

#include <algorithm>
#include <array>

namespace zsp::voice {

namespace {

using namespace gsmfr;

constexpr std::size_t kFrame = 160, kSegment = 40, kPast = 120;
constexpr std::array<std::int32_t, 1> kBitRates = {13000};

/// What an encoder in its start state makes of 160 samples of 8, and what a decoder in its start
/// state answers with these. Either coder is in its start state afterwards.
constexpr std::array<std::uint8_t, kFrameBytes> kHomingFrame = {
    0xd2, 0x57, 0x7a, 0x1c, 0xda, 0x50, 0x00, 0x49, 0x24, 0x92, 0x49,
    0x24, 0x50, 0x00, 0x49, 0x24, 0x92, 0x49, 0x24, 0x50, 0x00, 0x49,
    0x24, 0x92, 0x49, 0x24, 0x50, 0x00, 0x49, 0x23, 0x92, 0x49, 0x24};
constexpr std::int16_t kHomingSample = 8;

/// The residual as the decoder reconstructs it: 120 samples of the past, then a frame.
class Residual {
  public:
    explicit Residual(const std::array<std::int16_t, kPast>& past) noexcept
    {
        std::copy(past.begin(), past.end(), samples_.begin());
    }
    std::int16_t* frame() noexcept { return samples_.data() + kPast; }
    std::int16_t* segment(std::size_t j) noexcept { return frame() + j * kSegment; }
    void keep(std::array<std::int16_t, kPast>& past) const noexcept
    {
        std::copy_n(samples_.end() - kPast, kPast, past.begin());
    }

  private:
    std::array<std::int16_t, kPast + kFrame> samples_;
};

/// The last frame's log area ratios as the decoder has them, and what follows from them.
struct Ratios {
    std::array<std::int16_t, kRatios> last;

    std::array<std::int16_t, 4 * kRatios> reflect(const std::int16_t* codes) noexcept
    {
        std::array<std::int16_t, kRatios> now;
        std::array<std::int16_t, 4 * kRatios> coefs;
        zspsLARDequant_GSMFR_16s(codes, now.data());
        zspsLARInterpolateToReflect_GSMFR_16s(last.data(), now.data(), coefs.data());
        last = now;
        return coefs;
    }
};

struct GsmEncoder {
    ZspPreprocessState_GSMFR before;
    Ratios ratios;
    std::array<std::int16_t, kRatios> memory;
    std::array<std::int16_t, kPast> past;

    static std::size_t size(const Codec& /*codec*/) noexcept { return sizeof(GsmEncoder); }

    void start(const Codec& /*codec*/, const Settings& /*settings*/) noexcept { *this = {}; }

    /// The eight codes of the ratios; leaves the short-term residual in place of the samples.
    void shortTerm(std::int16_t* samples, std::int16_t* codes) noexcept
    {
        std::array<std::int32_t, kRatios + 1> lags;
        std::int32_t scale = 0;
        zspsPreprocess_GSMFR_16s(samples, samples, kFrame, &before);
        zspsAutoCorr_GSMFR_16s32s_I(samples, lags.data(), &scale);
        zspsSchur_GSMFR_32s16s(lags.data(), codes);
        zspsReflectToLAR_GSMFR_16s(codes, codes);
        zspsLARQuant_GSMFR_16s(codes, codes);
        zspsShortTermAnalysisFilter_GSMFR_16s(samples, ratios.reflect(codes).data(), samples,
                                              memory.data());
    }

    /// The parameters of a sub-segment; reconstructs its residual at `now`.
    static void longTerm(const std::int16_t* samples, std::int16_t* now,
                         std::int16_t* parameters) noexcept
    {
        std::array<std::int16_t, kSegment> residual;
        std::array<std::int16_t, kPulses> pulses;
        std::int32_t lag = 0, gain = 0, grid = 0, amplitude = 0;
        zspsLTPSearch_GSMFR_16s(samples, now, &lag, &gain);
        zspsLongTermPredict_GSMFR_16s(samples, now, lag, gain, residual.data());
        zspsWeightingFilter_GSMFR_16s(residual.data(), residual.data());
        zspsRPEGridSelect_GSMFR_16s(residual.data(), pulses.data(), &grid);
        zspsAPCMQuant_GSMFR_16s(pulses.data(), parameters + kPulse, &amplitude);
        zspsAPCMDequant_GSMFR_16s(parameters + kPulse, amplitude, pulses.data());
        zspsLongTermSynthesis_GSMFR_16s(pulses.data(), grid, lag, gain, now);
        parameters[kLag] = static_cast<std::int16_t>(lag);
        parameters[kGain] = static_cast<std::int16_t>(gain);
        parameters[kGrid] = static_cast<std::int16_t>(grid);
        parameters[kAmplitude] = static_cast<std::int16_t>(amplitude);
    }

    Coded encode(const Codec& codec, const Settings& settings, In16 samples, Out8 bytes) noexcept
    {
        std::array<std::int16_t, kFrame> signal;
        std::copy(samples.begin(), samples.end(), signal.begin());
        Parameters parameters;
        shortTerm(signal.data(), parameters.data());
        Residual residual(past);
        for (std::size_t j = 0; j < kSegments; ++j)
            longTerm(&signal[j * kSegment], residual.segment(j), segmentOf(parameters, j));
        residual.keep(past);
        zspsPackFrame_GSMFR_16s8u(parameters.data(), bytes.data());

        if (std::all_of(samples.begin(), samples.end(), // of 13 bits
                        [](std::int16_t x) { return (x & ~7) == kHomingSample; }))
            start(codec, settings);
        return {.bytes = kFrameBytes};
    }
};

struct GsmDecoder {
    Ratios ratios;
    std::array<std::int16_t, kRatios> memory;
    std::array<std::int16_t, kPast> past;
    std::int16_t msr;
    std::int16_t lastLag; ///< stands in for lags that no encoder sends
    Substitution substitution;
    bool home; ///< still in the start state

    static std::size_t size(const Codec& /*codec*/) noexcept { return sizeof(GsmDecoder); }

    void start(const Codec& /*codec*/, const Settings& /*settings*/) noexcept
    {
        *this = {};
        lastLag = 40;
        substitution.start();
        home = true;
    }

    void synthesise(const Parameters& parameters, std::int16_t* samples) noexcept
    {
        Residual residual(past);
        for (std::size_t j = 0; j < kSegments; ++j) {
            const std::int16_t* segment = segmentOf(parameters, j);
            std::array<std::int16_t, kPulses> pulses;
            if (segment[kLag] >= 40 && segment[kLag] <= 120) lastLag = segment[kLag];
            zspsAPCMDequant_GSMFR_16s(segment + kPulse, segment[kAmplitude], pulses.data());
            zspsLongTermSynthesis_GSMFR_16s(pulses.data(), segment[kGrid], lastLag, segment[kGain],
                                            residual.segment(j));
        }
        residual.keep(past);
        zspsShortTermSynthesisFilter_GSMFR_16s(
            residual.frame(), ratios.reflect(parameters.data()).data(), samples, memory.data());
        zspsDeemphasis_GSMFR_16s(samples, samples, kFrame, &msr);
    }

    /// A frame with bit errors is a lost one: GSM 06.11 knows no other use of it.
    void decode(const Codec& codec, const Settings& settings, ZspvFrameKind kind, In8 bytes,
                Out16 samples) noexcept
    {
        if (bytes.empty() || kind == zspvFrameSpeechDamaged) {
            home = false;
            return synthesise(substitution.lost(), samples.data());
        }
        const bool homing = std::equal(bytes.begin(), bytes.end(), kHomingFrame.begin());
        if (homing && home) return std::fill(samples.begin(), samples.end(), kHomingSample);

        Parameters parameters;
        zspsUnpackFrame_GSMFR_8u16s(bytes.data(), parameters.data());
        synthesise(parameters, samples.data());
        substitution.received(parameters);
        home = false;
        if (homing) start(codec, settings);
    }
};

Frame look(const Codec& /*codec*/, In8 rest) noexcept
{
    if (rest.size() < kFrameBytes) return {.status = zspStsSizeErr};
    if (rest[0] >> 4 != 0xd) return {.status = zspStsCodecRangeErr};
    return {.bytes = kFrameBytes, .samples = kFrame};
}

} // namespace

constinit const Codec kGsmFullRate = {.info = {.structSize = sizeof(ZspvCodec),
                                               .rtpName = "GSM",
                                               .family = "gsm",
                                               .standard = "ETSI GSM 06.10",
                                               .fileExtension = "gsm",
                                               .defaultFmtp = "",
                                               .payloadType = 3,
                                               .sampleRate = 8000,
                                               .rtpClock = 8000,
                                               .channels = 1,
                                               .frameSamples = kFrame,
                                               .stepSamples = kFrame,
                                               .maxFrameBytes = kFrameBytes,
                                               .lookAhead = 0,
                                               .filterDelay = 0,
                                               .defaultPacketMs = 20,
                                               .flags = zspvCodecConceals,
                                               .bitRateCount = 1,
                                               .bitRates = kBitRates.data()},
                                      .encoder = encoderFunctions<GsmEncoder>(),
                                      .decoder = decoderFunctions<GsmDecoder>(),
                                      .look = look};

} // namespace zsp::voice
