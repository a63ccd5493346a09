// Decoding of the line spectral frequencies of ITU-T G.729, clauses 3.2.4 and 4.1.1, and what
// stands for those of a lost frame, clause 4.4.1.

#include "codecs/g729/decoder/g729_decoder.hpp"
#include "codecs/g729/tables/g729_lsp_tables.hpp"
#include "core/entries.hpp"

namespace zsp::g729 {

void decodeLsf(const LsfIndices& indices, Out<kLsfMemory> memory, Out<kOrder> lsf_Q13) noexcept
{
    const auto predictor = static_cast<std::size_t>(indices.predictor);
    const LsfVector& first = kLspBook1[static_cast<std::size_t>(indices.first)];
    LsfVector v{};
    for (std::size_t j = 0; j < kOrder; ++j) {
        const int second = j < kOrder / 2 ? indices.low : indices.high;
        v[j] = fx::add(first[j], kLspBook2[static_cast<std::size_t>(second)][j]);
    }
    keepApart(v, 10);
    keepApart(v, 5);
    composeLsf(v, kLspPredictor[predictor], kLspPredictorRest[predictor], memory, lsf_Q13);
}

void decodeLsfErased(std::int32_t predictor, In<kOrder> lsf_Q13, Out<kLsfMemory> memory) noexcept
{
    const auto p = static_cast<std::size_t>(predictor);
    LsfVector v{};
    extractTarget(lsf_Q13, kLspPredictor[p], kLspPredictorInverse[p], memory, v);
    codecs::push(memory, v);
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsLSFDecode_G729_16s(std::int32_t predictor, std::int32_t first, std::int32_t low,
                                 std::int32_t high, std::int16_t* memory, std::int16_t* dst)
{
    if (!memory || !dst) return zspStsNullPtrErr;
    if (predictor < 0 || predictor > 1 || first < 0 || first > 127 || low < 0 || low > 31 ||
        high < 0 || high > 31)
        return zspStsCodecRangeErr;

    g729::decodeLsf({predictor, first, low, high}, spanOf<40>(memory), spanOf<10>(dst));
    return zspStsNoErr;
}

ZspStatus zspsLSFDecodeErased_G729_16s(std::int32_t predictor, const std::int16_t* lsf,
                                       std::int16_t* memory)
{
    if (!lsf || !memory) return zspStsNullPtrErr;
    if (predictor < 0 || predictor > 1) return zspStsCodecRangeErr;

    g729::decodeLsfErased(predictor, spanOf<10>(lsf), spanOf<40>(memory));
    return zspStsNoErr;
}

} // namespace zsp::entry
