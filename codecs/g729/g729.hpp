// What the blocks of ITU-T G.729 are written with: sizes of a frame, and the types of vectors.
#pragma once

#include "codecs/shared/celp/arithmetic.hpp"
#include "codecs/shared/celp/filters.hpp"

namespace zsp::g729 {

using celp::In;
using celp::kOrder;
using celp::kTaps;
using celp::Out;
using fx::Long;
using fx::Word;

inline constexpr std::size_t kFrame = 80;
inline constexpr std::size_t kSubframe = 40;
inline constexpr std::size_t kPast = 154; // of the excitation that the longest lag reaches

} // namespace zsp::g729
