// Quadrature-mirror filters of ITU-T G.722, 24 taps h (doubled here) over a line w of the last 24
// samples, the oldest first:
//
//   even = sum of h[2i] w[2i],  odd = sum of h[2i+1] w[2i+1]
//   analysis:   xL = limit((odd + even) >> 15),  xH = limit((odd - even) >> 15)       15 bits
//   synthesis:  w takes in rL + rH, then rL - rH; out = sat16(odd >> 12), sat16(even >> 12)
//
// |even| and |odd| are at most 12964 * 32768, so neither they nor their sum leave 32 bits.

#include "g722_qmf.hpp"

#include "entries.hpp"
#include "fixed_point.hpp"
#include "g722_tables.hpp"

#include <algorithm>
#include <cassert>

namespace zsp::g722 {

namespace {

struct Sums {
    std::int32_t even = 0;
    std::int32_t odd = 0;
};

/// Moves the line on by two samples and filters it.
Sums filter(DelayLine line, std::int16_t earlier, std::int16_t later) noexcept
{
    std::copy(line.begin() + 2, line.end(), line.begin());
    line[22] = earlier;
    line[23] = later;
    Sums sums;
    for (std::size_t i = 0; i < line.size(); i += 2) {
        sums.even += kQmf[i] * line[i];
        sums.odd += kQmf[i + 1] * line[i + 1];
    }
    return sums;
}

std::int16_t limit15(std::int32_t x) noexcept
{
    return static_cast<std::int16_t>(std::clamp(x, -16384, 16383));
}

} // namespace

void analyseScalar(In16 samples, Out16 pairs, DelayLine line) noexcept
{
    assert(samples.size() == pairs.size() && samples.size() % 2 == 0);
    for (std::size_t k = 0; k < samples.size(); k += 2) {
        const Sums sums = filter(line, samples[k], samples[k + 1]);
        pairs[k] = limit15((sums.odd + sums.even) >> 15);
        pairs[k + 1] = limit15((sums.odd - sums.even) >> 15);
    }
}

void synthesiseScalar(In16 pairs, Out16 samples, DelayLine line) noexcept
{
    assert(samples.size() == pairs.size() && samples.size() % 2 == 0);
    for (std::size_t k = 0; k < pairs.size(); k += 2) {
        const std::int16_t rl = pairs[k], rh = pairs[k + 1];
        const Sums sums = filter(line, fx::add(rl, rh), fx::sub(rl, rh));
        samples[k] = fx::sat16(sums.odd >> 12);
        samples[k + 1] = fx::sat16(sums.even >> 12);
    }
}

} // namespace zsp::g722

namespace zsp::entry {

ZspStatus zspsQMFEncode_G722_16s(const std::int16_t* src, std::int16_t* dst, std::int32_t len,
                                 std::int16_t* delayLine)
{
    if (!src || !dst || !delayLine) return zspStsNullPtrErr;
    if (len < 1 || len % 2 != 0) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    g722::analyseScalar({src, n}, {dst, n}, g722::DelayLine{delayLine, 24});
    return zspStsNoErr;
}

ZspStatus zspsQMFDecode_G722_16s(const std::int16_t* src, std::int16_t* dst, std::int32_t len,
                                 std::int16_t* delayLine)
{
    if (!src || !dst || !delayLine) return zspStsNullPtrErr;
    if (len < 1 || len % 2 != 0) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    g722::synthesiseScalar({src, n}, {dst, n}, g722::DelayLine{delayLine, 24});
    return zspStsNoErr;
}

} // namespace zsp::entry
