// Format parameters of two sides: whether they mean the same, and the answer to an offer.
// RFC 4867, clause 8.3 (AMR, AMR-WB); RFC 7261 (silence frames of G.723.1 and G.729).

#include "voice/api/record.hpp"
#include "voice/rtp/fmtp_table.hpp"
#include "zspvoice.h"

#include <algorithm>

namespace zsp::voice {
namespace {

/// A field's value with one form for all that means the same.
std::int32_t meaning(const Parameter& parameter, std::int32_t stored) noexcept
{
    const bool allOfSet = parameter.isSet && stored == (2 << parameter.high) - 1;
    return isDefault(parameter, stored) || allOfSet ? 0 : stored;
}

/// The value in the answer; false if the offer must be refused.
bool answerValue(const Parameter& parameter, std::int32_t offered, std::int32_t own,
                 std::int32_t& answer) noexcept
{
    switch (parameter.rule) {
    case Rule::either:
        answer = std::max(offered, own);
        return true;
    case Rule::offered:
        answer = isDefault(parameter, offered) ? own : offered;
        return !parameter.isSet || offered == 0 || own == 0 || (offered & own) != 0;
    case Rule::repeat:
        answer = offered;
        return true;
    case Rule::own:
        answer = own;
        return true;
    case Rule::notBuilt:
        return isDefault(parameter, offered);
    }
    return false;
}

/// Whether this side wants mode changes in every second frame only and the other cannot keep to it.
bool cannotRestrictPeriod(const ZspvParams& offer, const ZspvParams& own) noexcept
{
    return own.modeChangePeriod == 2 && offer.modeChangePeriod != 2 &&
           offer.modeChangeCapability != 2;
}

} // namespace
} // namespace zsp::voice

ZspStatus zspvFmtpCompare(const char* rtpName, const ZspvParams* a, const ZspvParams* b,
                          int32_t* same)
{
    using namespace zsp::voice;
    if (!rtpName || !a || !b || !same) return zspStsNullPtrErr;
    if (!plausible(*a) || !plausible(*b)) return zspStsSizeErr;

    *same = std::ranges::all_of(parametersOf(rtpName), [a, b](const Parameter& p) {
        return meaning(p, a->*p.field) == meaning(p, b->*p.field);
    });
    return zspStsNoErr;
}

ZspStatus zspvFmtpAnswer(const char* rtpName, const ZspvParams* offer, const ZspvParams* own,
                         ZspvParams* answer)
{
    using namespace zsp::voice;
    if (!rtpName || !offer || !own || !answer) return zspStsNullPtrErr;
    if (!plausible(*offer) || !plausible(*own) || !plausible(*answer)) return zspStsSizeErr;
    const std::span<const Parameter> parameters = parametersOf(rtpName);
    if (!allValid(parameters, *offer) || !allValid(parameters, *own)) return zspStsRangeErr;

    ZspvParams result{};
    result.dtx = own->dtx;
    result.bitRate = own->bitRate;
    for (const Parameter& p : parameters)
        if (!answerValue(p, offer->*p.field, own->*p.field, result.*p.field))
            return zspStsCodecRangeErr;
    if (cannotRestrictPeriod(*offer, *own)) return zspStsCodecRangeErr;

    // Who keeps to every second frame says so.
    if (result.modeChangePeriod == 2) result.modeChangeCapability = 2;
    if (result.noSilenceFrames) result.dtx = 0;
    writeRecord(*answer, result);
    return zspStsNoErr;
}
