// Where detector 1 of GSM-AMR begins, for the checks and the tests.
#pragma once

#include "zspsc/gsmamr_vad.h"

#include <algorithm>
#include <cstdint>

namespace zsp::conformance {

/// The record as 3GPP TS 26.094 resets it.
inline ZspVad1State resetVad1()
{
    ZspVad1State state{};
    std::ranges::fill(state.old_level, std::int16_t{150});
    std::ranges::fill(state.ave_level, std::int16_t{150});
    std::ranges::fill(state.bckr_est, std::int16_t{150});
    state.corr_hp_fast = 13106;
    return state;
}

} // namespace zsp::conformance
