// Calls that end with a look at what the callee left behind in the processor: the registers that it
// has to preserve, the upper halves of the vector registers, the control words, the x87 stack and
// the direction flag. Upper halves that stay dirty make the caller's SSE code several times slower.
//
//   const ZspStatus status = checked(zspsSomething)(arguments...);
//   EXPECT_EQ(leftBehind(), "");
//
// One call at a time in the whole program.
#pragma once

#include <string>

namespace zsp::test {

/// Notes where the next call goes; returns the way there.
void* checkedTarget(void* function);

/// A function of the same type that goes to `function` and then looks.
template <typename F>
F* checked(F* function)
{
    return reinterpret_cast<F*>(checkedTarget(reinterpret_cast<void*>(function)));
}

/// Whether the processor tells that upper halves are dirty even when all their bits are zero.
bool seesZeroUpperHalves();

/// What the last checked call left otherwise than a callee may; empty when all is well.
std::string leftBehind();

} // namespace zsp::test
