// What the bits of a frame of ITU-T G.729 say: fields (Table 8 and Annex B, Table B.2), lags
// (clauses 3.7.2 and 4.1.3), and gains (3.9 and 4.1.5), also where the bits are lost (4.4.2).

#include "codecs/g729/decoder/g729_decoder.hpp"
#include "codecs/g729/tables/g729_gain_tables.hpp"
#include "codecs/shared/bits.hpp"
#include "codecs/shared/words.hpp"
#include "common/math/log2_pow2.hpp"
#include "core/entries.hpp"

#include <numeric>

namespace zsp::g729 {

namespace {

constexpr std::array<int, kParameters> kSpeechBits = {8, 10, 8, 1, 13, 4, 7, 5, 13, 4, 7};
constexpr std::array<int, kSidParameters> kSidBits = {1, 5, 4, 5};
static_assert(std::accumulate(kSpeechBits.begin(), kSpeechBits.end(), 0) == 80);

std::span<const int> bitsOf(std::size_t bytes) noexcept
{
    return bytes == kSidBytes ? std::span<const int>(kSidBits) : std::span<const int>(kSpeechBits);
}

} // namespace

bool fieldsFit(std::span<const Word> fields, std::size_t bytes) noexcept
{
    const auto bits = bitsOf(bytes);
    for (std::size_t i = 0; i < bits.size(); ++i)
        if (fields[i] < 0 || fields[i] >> bits[i] != 0) return false;
    return true;
}

void packFields(std::span<const Word> fields, std::span<std::uint8_t> bytes) noexcept
{
    codecs::BitWriter<codecs::BitOrder::highestFirst> writer(bytes);
    const auto bits = bitsOf(bytes.size());
    for (std::size_t i = 0; i < bits.size(); ++i)
        writer.put(fields[i], bits[i]);
    writer.finish();
}

void unpackFields(std::span<const std::uint8_t> bytes, Out<kParameters> fields) noexcept
{
    std::ranges::fill(fields, Word{0});
    codecs::BitReader<codecs::BitOrder::highestFirst> reader(bytes);
    const auto bits = bitsOf(bytes.size());
    for (std::size_t i = 0; i < bits.size(); ++i)
        fields[i] = reader.takeWord(bits[i]);
}

Lag firstLag(int index) noexcept
{
    if (index >= 197) return {static_cast<Word>(index - 112), 0};
    const int whole = (index + 2) / 3 + 19;
    return {static_cast<Word>(whole), static_cast<Word>(index - 3 * whole + 58)};
}

Lag secondLag(int index, Word first) noexcept
{
    const int least = std::clamp(first - 5, 20, 134);
    const int whole = (index + 2) / 3 - 1;
    return {static_cast<Word>(whole + least), static_cast<Word>(index - 2 - 3 * whole)};
}

PredictedGain predictCodeGain(In<kSubframe> code, In<4> past) noexcept
{
    const auto [exponent, fraction_Q15] = common::log2(celp::energy(code));
    Long sum = fx::mpy_32_16(fx::SplitLong{exponent, fraction_Q15}, -24660);
    sum = fx::l_shl(fx::l_mac(sum, 32588, 32), 10);
    for (std::size_t i = 0; i < past.size(); ++i)
        sum = fx::l_mac(sum, kGainPrediction[i], past[i]);
    const auto [e, m] = fx::l_extract(fx::l_mult(fx::extract_h(sum), 5439) >> 8);
    return {fx::extract_l(common::pow2(14, m)), fx::sub(14, e)};
}

void updateGainMemory(Long correction_Q13, Out<4> past) noexcept
{
    const auto [e, m] = common::log2(correction_Q13);
    const Long log_Q16 = celp::l_comp({fx::sub(e, 13), m});
    codecs::push(past, fx::mult(fx::extract_h(fx::l_shl(log_Q16, 13)), 24660));
}

Gains decodeGains(int index, In<kSubframe> code, Out<4> past) noexcept
{
    const GainPair& a =
        kGainBook1[static_cast<std::size_t>(kGainEntry1[static_cast<std::size_t>(index >> 4)])];
    const GainPair& b =
        kGainBook2[static_cast<std::size_t>(kGainEntry2[static_cast<std::size_t>(index & 15)])];
    const PredictedGain predicted = predictCodeGain(code, past);
    const Long correction_Q13 = a.code_Q13 + b.code_Q13;
    const Long product = fx::l_mult(fx::extract_l(correction_Q13 >> 1), predicted.mantissa);
    updateGainMemory(correction_Q13, past);
    return {fx::add(a.pitch_Q14, b.pitch_Q14), fx::extract_h(fx::l_shl(product, 4 - predicted.q))};
}

void fadeGains(Gains& gains, Out<4> past) noexcept
{
    gains.pitch_Q14 = std::min<Word>(fx::mult(gains.pitch_Q14, 29491), 29491);
    gains.code_Q1 = fx::mult(gains.code_Q1, 32111);
    const int mean = std::accumulate(past.begin(), past.end(), 0) >> 2;
    codecs::push(past, static_cast<Word>(std::max(mean - 4096, -14336)));
}

} // namespace zsp::g729

namespace zsp::entry {

namespace {

bool isFrameLength(std::int32_t len)
{
    return len == static_cast<std::int32_t>(g729::kSpeechBytes) ||
           len == static_cast<std::int32_t>(g729::kSidBytes);
}

} // namespace

ZspStatus zspsPackFrame_G729_16s8u(const std::int16_t* src, std::uint8_t* dst, std::int32_t len)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (!isFrameLength(len)) return zspStsSizeErr;
    const auto bytes = static_cast<std::size_t>(len);
    const In16 fields(src, bytes == g729::kSidBytes ? g729::kSidParameters : g729::kParameters);
    if (!g729::fieldsFit(fields, bytes)) return zspStsCodecRangeErr;

    g729::packFields(fields, {dst, bytes});
    return zspStsNoErr;
}

ZspStatus zspsUnpackFrame_G729_8u16s(const std::uint8_t* src, std::int32_t len, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (!isFrameLength(len)) return zspStsSizeErr;

    g729::unpackFields({src, static_cast<std::size_t>(len)}, spanOf<g729::kParameters>(dst));
    return zspStsNoErr;
}

ZspStatus zspsDecodePitchLag_G729_16s(std::int32_t index, std::int32_t subframe,
                                      std::int32_t firstLag, std::int16_t* lag,
                                      std::int16_t* fraction)
{
    if (!lag || !fraction) return zspStsNullPtrErr;
    if (subframe < 0 || subframe > 1) return zspStsRangeErr;
    if (index < 0 || index > (subframe == 0 ? 255 : 31)) return zspStsCodecRangeErr;
    if (subframe == 1 && (firstLag < g729::kLowestLag || firstLag > g729::kHighestLag))
        return zspStsCodecRangeErr;

    const g729::Lag found = subframe == 0
                                ? g729::firstLag(index)
                                : g729::secondLag(index, static_cast<std::int16_t>(firstLag));
    *lag = found.whole;
    *fraction = found.thirds;
    return zspStsNoErr;
}

ZspStatus zspsGainDecode_G729_16s(std::int32_t index, const std::int16_t* code, std::int16_t* past,
                                  std::int16_t* pitchGain, std::int16_t* codeGain)
{
    if (!code || !past || !pitchGain || !codeGain) return zspStsNullPtrErr;
    if (index < 0 || index > 127) return zspStsCodecRangeErr;

    const g729::Gains gains = g729::decodeGains(index, spanOf<40>(code), spanOf<4>(past));
    *pitchGain = gains.pitch_Q14;
    *codeGain = gains.code_Q1;
    return zspStsNoErr;
}

ZspStatus zspsGainDecodeErased_G729_16s_I(std::int16_t* past, std::int16_t* pitchGain,
                                          std::int16_t* codeGain)
{
    if (!past || !pitchGain || !codeGain) return zspStsNullPtrErr;

    g729::Gains gains{*pitchGain, *codeGain};
    g729::fadeGains(gains, spanOf<4>(past));
    *pitchGain = gains.pitch_Q14;
    *codeGain = gains.code_Q1;
    return zspStsNoErr;
}

} // namespace zsp::entry
