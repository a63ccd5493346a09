// The bundled recording, for tests of what a listener gets.
#pragma once

#include <cstdint>
#include <vector>

namespace zsp::test {

using Words = std::vector<std::int16_t>;

/// 24.5 s of telephone speech at 8 or 16 kHz.
const Words& speech(int rate);

/// `seconds` of speech after `pause` seconds of silence, from second `from` of the recording, which
/// goes round.
Words talk(int rate, double from, double seconds, double pause = 0);

} // namespace zsp::test
