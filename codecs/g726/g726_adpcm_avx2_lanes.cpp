// The constants of the fast coder, in a file of their own so that they stay in memory.

#include "codecs/g726/g726_adpcm_avx2_lanes.hpp"

namespace zsp::g726 {

namespace {

constexpr Lanes all(std::int32_t v) noexcept
{
    return {{v, v, v, v, v, v, v, v}};
}

} // namespace

constexpr std::int32_t kTopBit = 1 << 23;

const Constants kConstants = {
    .one = all(1),
    .negative = all(kNegative),
    .negativeAndOne = all(kNegative | 1),
    .upperHalf = all(-65536),
    .exponent = all(0xff << 23),
    .mantissa = all(31 << 18),
    .topBitAndOne = all(kTopBit | 1),
    .topBitAndRound = all(kTopBit | 48 * 16),
    .products = all(~255),
    .coefficient = all(-4 * 65536),
    .coefficientZero = all(floatingZero(kCoefficientScale)),
    .dqZero = all(floatingZero(kDqScale)),
    .srZero = all(floatingZero(kSrScale)),
    .dqBias = all(fmultBias(kDqScale)),
    .srBias = all(fmultBias(kSrScale)),
    .fraction = all(127),
    .significand = all(128),
    .fourteen = all(14),
    .ugb = all(128 * 65536),
    .middleLane = all(0x07060504),
    .laneStep = all(0x04040404),
    .a1Clip = all(8191 * 65536),
    .a1ClipNegative = all(-8191 * 65536),
    .a2Limit = all(12288 * 65536),
    .a2LimitNegative = all(-12288 * 65536),
    .poleLimit = all(15360 * 65536),
};

} // namespace zsp::g726
