// The table of format parameters: RFC 4856 (G723, G729), RFC 4867, clause 8 (AMR, AMR-WB).

#include "voice/rtp/fmtp_table.hpp"

#include "voice/api/names.hpp"

#include <algorithm>
#include <array>
#include <limits>

namespace zsp::voice {
namespace {

constexpr Word kYesNo[] = {{"yes", 0}, {"no", 1}};
constexpr Word kG723Rates[] = {{"5.3", 5300}, {"6.3", 6300}};

constexpr Parameter kG723[] = {
    {.name = "annexa",
     .field = &ZspvParams::noSilenceFrames,
     .rule = Rule::either,
     .words = kYesNo},
    {.name = "bitrate", .field = &ZspvParams::bitRate, .rule = Rule::offered, .words = kG723Rates},
};

constexpr Parameter kG729[] = {
    {.name = "annexb",
     .field = &ZspvParams::noSilenceFrames,
     .rule = Rule::either,
     .words = kYesNo},
};

constexpr auto amrParameters(std::int32_t highestMode)
{
    using P = ZspvParams;
    constexpr std::int32_t kAny = std::numeric_limits<std::int32_t>::max();
    return std::to_array<Parameter>({
        {.name = "octet-align", .field = &P::octetAlign, .rule = Rule::repeat, .high = 1},
        {.name = "mode-set",
         .field = &P::modeSet,
         .rule = Rule::offered,
         .high = highestMode,
         .isSet = true},
        {.name = "mode-change-period",
         .field = &P::modeChangePeriod,
         .rule = Rule::either,
         .low = 1,
         .high = 2,
         .zeroMeans = 1},
        {.name = "mode-change-capability",
         .field = &P::modeChangeCapability,
         .rule = Rule::own,
         .low = 1,
         .high = 2,
         .zeroMeans = 1},
        {.name = "mode-change-neighbor",
         .field = &P::modeChangeNeighbor,
         .rule = Rule::either,
         .high = 1},
        {.name = "crc", .field = &P::crc, .rule = Rule::notBuilt, .high = 1},
        {.name = "robust-sorting", .field = &P::robustSorting, .rule = Rule::notBuilt, .high = 1},
        {.name = "interleaving",
         .field = &P::interleaving,
         .rule = Rule::notBuilt,
         .low = 1,
         .high = kAny},
        {.name = "max-red",
         .field = &P::maxRed,
         .rule = Rule::own,
         .high = 65535,
         .zeroIsMinus = true},
        {.name = "channels",
         .field = &P::channels,
         .rule = Rule::notBuilt,
         .low = 1,
         .high = 6,
         .zeroMeans = 1},
    });
}

constexpr auto kAmr = amrParameters(7);
constexpr auto kAmrWb = amrParameters(8);

constexpr struct {
    std::string_view name;
    std::span<const Parameter> parameters;
} kNames[] = {{"G723", kG723}, {"G729", kG729}, {"AMR", kAmr}, {"AMR-WB", kAmrWb}};

bool valid(const Parameter& parameter, std::int32_t stored) noexcept
{
    if (isDefault(parameter, stored)) return true;
    if (!parameter.words.empty())
        return std::ranges::any_of(parameter.words,
                                   [stored](const Word& w) { return w.stored == stored; });
    if (parameter.isSet) return stored >> (parameter.high + 1) == 0; // negative: -1
    if (parameter.zeroIsMinus && stored == -1) return true;
    return stored >= parameter.low && stored <= parameter.high;
}

} // namespace

std::span<const Parameter> parametersOf(std::string_view rtpName) noexcept
{
    for (const auto& entry : kNames)
        if (sameName(entry.name, rtpName)) return entry.parameters;
    return {};
}

bool allValid(std::span<const Parameter> parameters, const ZspvParams& params) noexcept
{
    return std::ranges::all_of(parameters,
                               [&params](const Parameter& p) { return valid(p, params.*p.field); });
}

} // namespace zsp::voice
