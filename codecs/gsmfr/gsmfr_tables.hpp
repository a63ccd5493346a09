// Constants and tables of GSM full rate: ETSI GSM 06.10 (EN 300 961, 3GPP TS 46.010).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zsp::gsmfr {

inline constexpr std::size_t kFrame = 160;     ///< samples of a frame
inline constexpr std::size_t kSegment = 40;    ///< samples of a sub-segment
inline constexpr std::size_t kOrder = 8;       ///< reflection coefficients
inline constexpr std::size_t kPulses = 13;     ///< pulses of a sub-segment
inline constexpr std::size_t kParameters = 76; ///< of a frame
inline constexpr std::size_t kFrameBytes = 33;
inline constexpr int kMinLag = 40;
inline constexpr int kMaxLag = 120;
inline constexpr std::size_t kPast = kMaxLag; ///< residual samples that prediction looks back at

/// Pole of the offset compensation, 0.999, and factor of the pre- and de-emphasis, 0.86; Q15.
/// Clauses 5.2.2 and 5.2.3.
inline constexpr std::int16_t kAlpha_Q15 = 32735;
inline constexpr std::int16_t kBeta_Q15 = 28180;

/// Quantisation of the log area ratios, table 5.1: slope A in Q10, offset B in Q9, and the limits
/// MIC and MAC of the integer code before MIC is subtracted.
inline constexpr std::array<std::int16_t, kOrder> kLarA = {20480, 20480, 20480, 20480,
                                                           13964, 15360, 8534,  9036};
inline constexpr std::array<std::int16_t, kOrder> kLarB = {0,  0,     2048, -2560,
                                                           94, -1792, -341, -1144};
inline constexpr std::array<std::int16_t, kOrder> kLarMic = {-32, -32, -16, -16, -8, -8, -4, -4};
inline constexpr std::array<std::int16_t, kOrder> kLarMac = {31, 31, 15, 15, 7, 7, 3, 3};

/// Reciprocals of the slopes, table 5.2: 8 * 32768 / slope.
inline constexpr std::array<std::int16_t, kOrder> kLarInvA = {13107, 13107, 13107, 13107,
                                                              19223, 17476, 31454, 29708};

/// Decision levels of the long-term gain, table 5.3a; the fourth is never compared. Q15
inline constexpr std::array<std::int16_t, 3> kGainDecision_Q15 = {6554, 16384, 26214};
/// Its values, table 5.3b. Q15
inline constexpr std::array<std::int16_t, 4> kGain_Q15 = {3277, 11469, 21299, 32767};

/// The weighting filter's impulse response, table 5.4, with a zero behind. It is symmetric. Q13
inline constexpr std::array<std::int16_t, 12> kWeighting_Q13 = {-134, -374, 0, 2054, 5741, 8192,
                                                                5741, 2054, 0, -374, -134, 0};

/// Normalised inverse mantissas for coding, table 5.5, and mantissas for decoding, table 5.6. Q15
inline constexpr std::array<std::int16_t, 8> kInverseMantissa_Q15 = {29128, 26215, 23832, 21846,
                                                                     20165, 18725, 17476, 16384};
inline constexpr std::array<std::int16_t, 8> kMantissa_Q15 = {18431, 20479, 22527, 24575,
                                                              26623, 28671, 30719, 32767};

/// Bits of the log area ratios and of a sub-segment's parameters, table 1.1: lag, gain, grid,
/// block amplitude, pulses.
inline constexpr std::array<int, kOrder> kLarBits = {6, 6, 5, 5, 4, 4, 3, 3};
inline constexpr std::array<int, 4 + kPulses> kSegmentBits = {7, 2, 2, 6, 3, 3, 3, 3, 3,
                                                              3, 3, 3, 3, 3, 3, 3, 3};

/// The first four bits of a stored frame: RFC 3551, section 4.5.8.
inline constexpr std::uint8_t kSignature = 0xd;

/// Where the coefficients interpolated with the last frame's change, table 3.2: samples 0 to 12, 13
/// to 26, 27 to 39 and 40 to 159 of a frame have a set of reflection coefficients each.
inline constexpr std::size_t kSets = 4;
inline constexpr std::array<std::size_t, kSets + 1> kSetStart = {0, 13, 27, 40, kFrame};

} // namespace zsp::gsmfr
