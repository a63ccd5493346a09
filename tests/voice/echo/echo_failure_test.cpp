// A step of the blocks' library that fails inside of the canceller. The definition here stands
// before the library's own one in this program, and passes calls on to it.

#include "tests/voice/echo/echo_call.hpp"
#include "zspsc/ec/bank.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace {

int failuresLeft = 0;

using Synthesis = decltype(&zspsSubbandSynthesis_32fc32f);

} // namespace

extern "C" ZspStatus zspsSubbandSynthesis_32fc32f(const Zsp32fc* src, float* dst, void* state,
                                                  void* workBuf)
{
    static const auto real =
        reinterpret_cast<Synthesis>(dlsym(RTLD_NEXT, "zspsSubbandSynthesis_32fc32f"));
    if (failuresLeft == 0) return real(src, dst, state, workBuf);
    --failuresLeft;
    return zspStsInternalErr;
}

namespace {

using namespace zsp::test;

TEST(EchoFailure, PassesTheMicrophoneAndSaysSo)
{
    const int rate = 16000;
    const Words mic = talk(rate, 2, 1), far = talk(rate, 8, 1);
    const EchoPointer echo = makeEcho(echoConfig(rate));
    Words out(mic.size());
    for (std::size_t n = 0; n < mic.size(); n += 160) {
        failuresLeft = n >= 4800 && n < 9600 ? 4 : 0; // all four steps of the block
        const bool fails = failuresLeft > 0;
        EXPECT_EQ(zspvEchoProcess(echo.get(), &far[n], &mic[n], &out[n], 160),
                  fails ? zspStsInternalErr : zspStsNoErr)
            << n;
        EXPECT_EQ(failuresLeft, 0);
        for (std::size_t i = n; i < n + 160 && fails; ++i)
            ASSERT_EQ(out[i], mic[i - 320]) << i;
    }
}

} // namespace
