// The DTX handler of GSM-AMR and its histories: vectors, and the cases they do not reach.

#include "tests/support/contract.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/gsmamr_vad.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsEncDTXHandler_GSMAMR_16s),
             {out<std::int16_t>(1), out<std::int16_t>(1), out<std::int16_t>(1),
              out<std::int16_t>(1), number(1)}),
    Contract(ZSP_NAMED(zspsEncDTXBuffer_GSMAMR_16s),
             {in<std::int16_t>(160), in<std::int16_t>(10), out<std::int16_t>(1),
              out<std::int16_t>(80), out<std::int16_t>(8)}),
    Contract(ZSP_NAMED(zspsDecDTXBuffer_GSMAMR_16s),
             {in<std::int16_t>(160), in<std::int16_t>(10), out<std::int16_t>(1),
              out<std::int16_t>(80), out<std::int16_t>(8)}),
});

TEST(GsmAmrDtx, HandlerVector)
{
    expectConforms("GSM-AMR", 1, "DTX handler");
}

struct HandlerCase {
    std::array<std::int16_t, 3> before; // hangover, elapsed, flag
    std::array<std::int16_t, 4> after;  // hangover, elapsed, mode, new SID
    const char* why;
};

constexpr HandlerCase kHandlerCases[] = {
    {{3, 32767, -1}, {7, 32767, 4, 0}, "any flag but 0 is speech; elapsed stops"},
    {{0, 32767, 0}, {0, 0, 25, 1}, "no hangover left"},
    {{1, 28, 0}, {0, 29, 25, 0}, "29 + 0: no hangover after a recent update"},
    {{1, 29, 0}, {0, 30, 4, 0}, "30 + 0: hangover"},
    {{7, 22, 0}, {6, 23, 25, 0}, "23 + 6, the hangover after its decrement"},
    {{7, 32766, 0}, {6, 32767, 4, 0}, "the sum saturates"},
};

TEST(GsmAmrDtx, HandlerCases)
{
    for (const HandlerCase& c : kHandlerCases) {
        auto [hangover, elapsed, flag] = c.before;
        std::int16_t mode = 4, newSid = -1;
        zspsEncDTXHandler_GSMAMR_16s(&hangover, &elapsed, &mode, &newSid, flag);
        expectEqual(std::array{hangover, elapsed, mode, newSid}, c.after, c.why);
    }
}

TEST(GsmAmrDtx, BufferVector)
{
    expectConforms("GSM-AMR", 1, "DTX buffers");
}

struct EnergyCase {
    std::int16_t sample;  // in all places
    std::int16_t decoder; // log energy
};

// 1024 * log2 of the squared sample, short of the 0.65 that the offset rounds off.
constexpr EnergyCase kEnergyCases[] = {{0, -8521}, {1, 0}, {256, 16384}, {-32768, 23222}};

TEST(GsmAmrDtx, BufferEnergy)
{
    for (const EnergyCase& c : kEnergyCases) {
        const Words speech(160, c.sample), lsp(10);
        Words lspHistory(80), enc(8), dec(8);
        std::int16_t encIndex = 7, decIndex = 7;
        zspsEncDTXBuffer_GSMAMR_16s(speech.data(), lsp.data(), &encIndex, lspHistory.data(),
                                    enc.data());
        zspsDecDTXBuffer_GSMAMR_16s(speech.data(), lsp.data(), &decIndex, lspHistory.data(),
                                    dec.data());
        EXPECT_EQ(encIndex, 0);
        EXPECT_EQ(decIndex, 0);
        EXPECT_EQ(dec[0], c.decoder) << c.sample;
        EXPECT_EQ(enc[0], c.decoder >> 1) << c.sample;
    }
}

} // namespace
