// The fixed codebook at 6.3 kbit/s of ITU-T G.723.1, clause 2.15: five or six pulses of one size on
// the even or the odd places, alone or as trains with the pitch. For each grid and each of four
// sizes pulses are placed one after the other where the remaining correlation is largest.

#include "codecs/g723/g723_multipulse.hpp"
#include "codecs/g723/g723.hpp"
#include "codecs/g723/g723_vectors.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <cassert>

namespace zsp::g723 {

PulseProblem pulseProblem(In<kSubframe> target, In<kSubframe> response, std::size_t count,
                          std::size_t period) noexcept
{
    PulseProblem p{.target = {}, .response = {}, .corr = {}, .cross = {}, .count = count};
    std::ranges::copy(target, p.target.begin());
    std::ranges::copy(response, p.response.begin());
    repeatPulses(p.response, period);

    std::array<Word, kSubframe> halves{};
    for (std::size_t i = 0; i < kSubframe; ++i)
        halves[i] = static_cast<Word>(p.response[i] >> 1);
    const Long own = energy(halves);
    const int shift = fx::norm_l(own);
    p.corr[0] = fx::round_fx(fx::l_shl(own, shift));
    for (std::size_t i = 1; i < kSubframe; ++i)
        p.corr[i] =
            fx::round_fx(fx::l_shl(dot(std::span(halves).subspan(i), halves.data()), shift));
    for (std::size_t i = 0; i < kSubframe; ++i)
        p.cross[i] = fx::l_shl(dot(target.subspan(i), p.response.data()), shift - 4);
    return p;
}

PulseStart pulseStart(const PulseProblem& p, std::size_t grid) noexcept
{
    PulseStart start{.place = grid, .gain = 22};
    Long most = 0;
    for (std::size_t i = grid; i < kSubframe; i += 2) {
        const Long size = fx::l_abs(p.cross[i]);
        if (size < most) continue;
        most = size; // the last of equals
        start.place = i;
    }
    Long best = 1 << 30;
    for (std::size_t i = 22; i >= 2; --i) {
        const Long distance = fx::l_abs(fx::l_sub(fx::l_mult(kFixedGain[i], p.corr[0]), most));
        if (distance >= best) continue;
        best = distance;
        start.gain = i;
    }
    return start;
}

Pulses placePulsesScalar(const PulseProblem& p, std::size_t first, Word amplitude) noexcept
{
    Pulses pulses{};
    std::array<Long, kSubframe> left = p.cross;
    std::array<bool, kSubframe> taken{};
    const auto put = [&](std::size_t i, std::size_t place) {
        pulses.places[i] = static_cast<Word>(place);
        pulses.amplitudes[i] = left[place] >= 0 ? amplitude : static_cast<Word>(-amplitude);
        taken[place] = true;
    };
    put(0, first);
    for (std::size_t n = 1; n < p.count; ++n) {
        const auto last = static_cast<std::size_t>(pulses.places[n - 1]);
        const Word size = pulses.amplitudes[n - 1];
        Long most = -1;
        std::size_t chosen = 0;
        for (std::size_t l = first % 2; l < kSubframe; l += 2) {
            if (taken[l]) continue;
            left[l] = fx::l_msu(left[l], size, p.corr[l > last ? l - last : last - l]);
            const Long found = fx::l_abs(left[l]);
            if (found <= most) continue;
            most = found; // the first of equals
            chosen = l;
        }
        put(n, chosen);
    }
    return pulses;
}

Long pulseMeasureScalar(const PulseProblem& p, const Pulses& pulses) noexcept
{
    std::array<Word, kSubframe> vector{};
    for (std::size_t i = 0; i < p.count; ++i)
        vector[static_cast<std::size_t>(pulses.places[i])] = pulses.amplitudes[i];
    Long measure = 0;
    for (std::size_t l = 0; l < kSubframe; ++l) {
        Long sum = 0;
        for (std::size_t j = 0; j <= l; ++j)
            sum = fx::l_mac(sum, vector[j], p.response[l - j]);
        const Word y = fx::extract_h(fx::l_shl(sum, 2));
        measure = fx::l_mac(measure, p.target[l], y);
        measure = fx::l_sub(measure, fx::l_mult(y, y) >> 1);
    }
    return measure;
}

namespace {

/// The best pulses so far.
struct Choice {
    Long measure = -(1 << 30);
    std::size_t grid = 0, gain = 0;
    bool train = false;
    Pulses pulses{};
};

void tryPulses(const PulseProblem& p, bool train, Choice& best) noexcept
{
    for (std::size_t grid = 0; grid < 2; ++grid) {
        const PulseStart start = pulseStart(p, grid);
        for (std::size_t gain = start.gain - 2; gain <= start.gain + 1; ++gain) {
            const Pulses pulses = placePulsesScalar(p, start.place, kFixedGain[gain]);
            const Long measure = pulseMeasureScalar(p, pulses);
            if (measure > best.measure) best = {measure, grid, gain, train, pulses};
        }
    }
}

} // namespace

void multiPulseSearch(In<kSubframe> target, In<kSubframe> response, std::size_t subframe,
                      ZspG723Frame& f) noexcept
{
    const auto count = static_cast<std::size_t>(kPulseCount[subframe]);
    const auto lag = static_cast<std::size_t>(f.lag[subframe / 2]);
    Choice best;
    tryPulses(pulseProblem(target, response, count, kSubframe), false, best);
    if (lag < 58) tryPulses(pulseProblem(target, response, count, lag), true, best);

    std::array<Word, kSubframe> vector{};
    for (std::size_t i = 0; i < count; ++i)
        vector[static_cast<std::size_t>(best.pulses.places[i])] = best.pulses.amplitudes[i];
    std::int32_t code = 0, signs = 0;
    std::size_t j = 6 - count;
    for (std::size_t i = 0; i < 30 && j < 6; ++i) {
        const Word pulse = vector[best.grid + 2 * i];
        if (pulse == 0) {
            code += kCombinatorial[j][i];
            continue;
        }
        signs = 2 * signs + (pulse < 0 ? 1 : 0);
        ++j;
    }
    f.position[subframe] = code;
    f.signs[subframe] = static_cast<Word>(signs);
    f.grid[subframe] = static_cast<Word>(best.grid);
    f.fcbGain[subframe] = static_cast<Word>(best.gain);
    f.train[subframe] = best.train ? 1 : 0;
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsMPMLQSearch_G723_16s(const std::int16_t* target, const std::int16_t* response,
                                   std::int32_t subframe, ZspG723Frame* frame)
{
    if (!target || !response || !frame) return zspStsNullPtrErr;
    if (subframe < 0 || subframe > 3) return zspStsCodecRangeErr;
    const auto i = static_cast<std::size_t>(subframe);
    auto f = readRecord<ZspG723Frame>(frame);
    if (f.lag[i / 2] < g723::kLowestLag || f.lag[i / 2] > 141) return zspStsCodecRangeErr;

    g723::multiPulseSearch(spanOf<60>(target), spanOf<60>(response), i, f);
    placeRecord(frame, f);
    return zspStsNoErr;
}

} // namespace zsp::entry
