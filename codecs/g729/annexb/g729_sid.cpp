// Silence descriptors of ITU-T G.729 Annex B: line spectral frequencies in two stages (clause
// B.4.2.2), and a gain of five bits (B.4.2.1).

#include "codecs/g729/annexb/g729_annexb.hpp"
#include "codecs/g729/tables/g729_lsp_tables.hpp"
#include "common/math/log2_pow2.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

namespace {

const LsfVector& firstStage(int index) noexcept
{
    return kLspBook1[kSidFirstStage[static_cast<std::size_t>(index)]];
}

Word secondStage(int index, std::size_t j) noexcept
{
    return kLspBook2[kSidSecondStage[j < kOrder / 2 ? 0 : 1][static_cast<std::size_t>(index)]][j];
}

/// What is left of a target after the first stage.
struct Candidate {
    int predictor, first;
    LsfVector rest;
};

constexpr std::size_t kCandidates = 4;

/// The four best of the first stage over both predictors, the best first.
std::array<Candidate, kCandidates> firstSearch(const std::array<LsfVector, 2>& targets) noexcept
{
    std::array<Word, 64> sums{};
    for (std::size_t i = 0; i < sums.size(); ++i) {
        const LsfVector& target = targets[i / 32];
        const LsfVector& book = firstStage(static_cast<int>(i % 32));
        Long sum = 0;
        for (std::size_t j = 0; j < kOrder; ++j) {
            const Word d = fx::sub(target[j], book[j]);
            sum = fx::l_mac(sum, d, d);
        }
        sums[i] = fx::mult(fx::extract_h(sum), kSidPredictorWeight[i / 32]);
    }
    std::array<Candidate, kCandidates> found{};
    for (Candidate& c : found) {
        const auto best = std::ranges::min_element(sums);
        const auto i = *best < fx::kMax16 ? static_cast<std::size_t>(best - sums.begin()) : 0;
        sums[i] = fx::kMax16;
        c.predictor = static_cast<int>(i / 32);
        c.first = static_cast<int>(i % 32);
        for (std::size_t j = 0; j < kOrder; ++j)
            c.rest[j] = fx::sub(targets[i / 32][j], firstStage(c.first)[j]);
    }
    return found;
}

Word weightedError(const Candidate& c, int second, In<kOrder> weights) noexcept
{
    const LsfVector& rest_Q15 = kSidSum[static_cast<std::size_t>(c.predictor)];
    Long sum = 0;
    for (std::size_t j = 0; j < kOrder; ++j) {
        Word t = fx::extract_h(fx::l_shl(fx::l_mult(rest_Q15[j], rest_Q15[j]), 2));
        t = fx::mult(t, weights[j]);
        const Word u = fx::sub(c.rest[j], secondStage(second, j));
        t = fx::extract_h(fx::l_shl(fx::l_mult(t, u), 3));
        sum = fx::l_mac(sum, t, u);
    }
    return fx::extract_h(sum);
}

} // namespace

void decodeSidLsf(const SidLsf& indices, Out<kLsfMemory> memory, Out<kOrder> lsf_Q13) noexcept
{
    const auto predictor = static_cast<std::size_t>(indices.predictor);
    LsfVector v{};
    for (std::size_t j = 0; j < kOrder; ++j)
        v[j] = fx::add(firstStage(indices.first)[j], secondStage(indices.second, j));
    keepApart(v, 10);
    composeLsf(v, kSidPredictor[predictor], kSidSum[predictor], memory, lsf_Q13);
}

SidLsf quantiseSidLsf(In<kOrder> lsf_Q13, Out<kLsfMemory> memory, Out<kOrder> quantised) noexcept
{
    LsfVector w{}, weights{};
    std::ranges::copy(lsf_Q13, w.begin());
    w[0] = std::max<Word>(w[0], 40);
    for (std::size_t j = 0; j + 1 < kOrder; ++j)
        if (fx::sub(w[j + 1], w[j]) < 642) w[j + 1] = fx::add(w[j], 642);
    w[9] = std::min<Word>(w[9], 25681);
    if (w[9] < w[8]) w[8] = fx::sub(w[9], 321);
    lsfWeights(w, weights);

    std::array<LsfVector, 2> targets{};
    for (std::size_t p = 0; p < 2; ++p)
        extractTarget(w, kSidPredictor[p], kSidSumInverse[p], memory, targets[p]);
    SidLsf best{};
    Word least = fx::kMax16;
    for (const Candidate& c : firstSearch(targets))
        for (int m = 0; m < 16; ++m)
            if (const Word error = weightedError(c, m, weights); error < least) {
                least = error;
                best = {c.predictor, c.first, m};
            }
    decodeSidLsf(best, memory, quantised);
    return best;
}

SidGain quantiseSidGain(std::span<const Word> energies, std::span<const Word> shifts) noexcept
{
    const std::size_t count = energies.size();
    int shift = *std::ranges::min_element(shifts) + 16 - kEnergyMargin[count];
    Long sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum = fx::l_add(sum, fx::l_shl(energies[i], shift - shifts[i]));
    return quantiseSidGain(fx::mpy_32_16(sum, kEnergyFactor[count]), shift);
}

SidGain quantiseKeptSidGain(Word energy, Word shift) noexcept
{
    return quantiseSidGain(fx::mpy_32_16(fx::l_shl(energy, shift), kEnergyFactor[0]), 0);
}

SidGain quantiseSidGain(Long energy, int shift) noexcept
{
    const auto [exponent, fraction_Q15] = common::log2(energy);
    const Word log_Q10 =
        fx::add(fx::shl(fx::sat16(exponent - shift), 10), fx::mult_r(fraction_Q15, 1024));
    if (log_Q10 <= -2721) return {0, -12};
    if (log_Q10 > 22111) return {31, 66};
    if (log_Q10 <= 4762) {
        const int index = std::max<int>(fx::mult(fx::add(log_Q10, 3401), 24), 1);
        return {index, 4 * index - 8};
    }
    const int index = std::max((fx::mult(fx::sub(log_Q10, 340), 193) >> 2) - 1, 6);
    return {index, 2 * index + 4};
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsSIDLSFQuant_G729B_16s(const std::int16_t* lsf, std::int16_t* memory,
                                    std::int16_t* dst, std::int16_t* fields)
{
    if (!lsf || !memory || !dst || !fields) return zspStsNullPtrErr;

    const g729::SidLsf s =
        g729::quantiseSidLsf(spanOf<10>(lsf), spanOf<40>(memory), spanOf<10>(dst));
    fields[0] = static_cast<std::int16_t>(s.predictor);
    fields[1] = static_cast<std::int16_t>(s.first);
    fields[2] = static_cast<std::int16_t>(s.second);
    return zspStsNoErr;
}

ZspStatus zspsSIDLSFDecode_G729B_16s(std::int32_t predictor, std::int32_t first,
                                     std::int32_t second, std::int16_t* memory, std::int16_t* dst)
{
    if (!memory || !dst) return zspStsNullPtrErr;
    if (predictor < 0 || predictor > 1 || first < 0 || first > 31 || second < 0 || second > 15)
        return zspStsCodecRangeErr;

    g729::decodeSidLsf({predictor, first, second}, spanOf<40>(memory), spanOf<10>(dst));
    return zspStsNoErr;
}

ZspStatus zspsSIDGainQuant_G729B_16s(const std::int16_t* energies, const std::int16_t* shifts,
                                     std::int32_t count, std::int16_t* index)
{
    if (!energies || !shifts || !index) return zspStsNullPtrErr;
    if (count < 0 || count > 2) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(count);
    const g729::SidGain gain = n == 0 ? g729::quantiseKeptSidGain(*energies, *shifts)
                                      : g729::quantiseSidGain({energies, n}, {shifts, n});
    *index = static_cast<std::int16_t>(gain.index);
    return zspStsNoErr;
}

ZspStatus zspsSIDGainDecode_G729B_16s(std::int32_t index, std::int16_t* gain)
{
    if (!gain) return zspStsNullPtrErr;
    if (index < 0 || index > 31) return zspStsCodecRangeErr;

    *gain = g729::kSidGain[static_cast<std::size_t>(index)];
    return zspStsNoErr;
}

} // namespace zsp::entry
