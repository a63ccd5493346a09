// The rule of the level control: from the levels of a block to the gain.
#pragma once

#include "alc/alc_g169.hpp"

namespace zsp::alc {

/// The record that Init writes.
State initialState() noexcept;

/// One block: every field of the state but the settings.
void update(State& s, const BlockLevels& block) noexcept;

} // namespace zsp::alc
