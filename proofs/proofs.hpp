// What a proof is written with. It is an ordinary function over the library's own sources; run.sh
// has it translated to C for cbmc, and runs it with random values as well.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

/// Any value.
std::int16_t nondet_i16();
std::int32_t nondet_i32();
std::uint8_t nondet_u8();
/// Any value from `least` to `most`.
std::int32_t between(std::int32_t least, std::int32_t most);

/// Restricts what follows to the inputs for which this holds.
void assume(bool what);
/// A claim about all inputs.
void prove(bool claim);
/// A result, for the comparison of a run of the C with a run of the library.
void observe(std::uint32_t value);
}

namespace zsp::proofs {

inline std::int16_t wordBetween(int least, int most)
{
    return static_cast<std::int16_t>(between(least, most));
}

} // namespace zsp::proofs

/// A proof of this name.
#define PROOF(name) extern "C" void prove_##name()
