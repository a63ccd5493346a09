// Format parameters of the RTP encoding names that have any, as data: what may be written, how it
// is stored, and how an answer follows from an offer.
#pragma once

#include "zspvoice.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace zsp::voice {

/// A value that is a word.
struct Word {
    std::string_view text;
    std::int32_t stored;
};

/// How the value of an answer follows from those of the offer and of this side.
enum class Rule {
    either,  // the restriction holds if one of both wants it: the larger value
    offered, // the offer's value; this side's only if the offer leaves it open
    repeat,  // the offer's value, also where that is the default
    own,     // each side declares for itself
    notBuilt // an offer with anything but the default is refused
};

/// One parameter. 0 in the field means its default, and so does `zeroMeans`.
struct Parameter {
    std::string_view name;
    std::int32_t ZspvParams::*field;
    Rule rule;
    std::span<const Word> words = {}; // what may be written, unless it is a number
    std::int32_t low = 0, high = 0;   // range of a number, or of each number of a set
    std::int32_t zeroMeans = 0;
    bool isSet = false;       // numbers with commas between them, stored as bits
    bool zeroIsMinus = false; // a written 0 differs from the default: stored as -1
};

/// The parameters of an encoding name, in the order in which they are written; letter case does not
/// matter. None for names without.
std::span<const Parameter> parametersOf(std::string_view rtpName) noexcept;

/// Whether a field's value is the default's.
constexpr bool isDefault(const Parameter& parameter, std::int32_t stored) noexcept
{
    return stored == 0 || stored == parameter.zeroMeans;
}

/// Whether the parameters that a name has are all within their ranges.
bool allValid(std::span<const Parameter> parameters, const ZspvParams& params) noexcept;

} // namespace zsp::voice
