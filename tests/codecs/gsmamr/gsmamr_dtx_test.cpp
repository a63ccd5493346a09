// The DTX handler of GSM-AMR and its histories: vectors, and the cases they do not reach.

#include "tests/support/contract.hpp"
#include "tests/support/vectors.hpp"

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

// Hangover and elapsed count carry on from record to record. The middle record sets them afresh.
TEST(GsmAmrDtx, HandlerVector)
{
    const Words words = readVector<std::int16_t>("gsmamr/dtx_handler.bin");
    ASSERT_EQ(words.size(), 3000u * 8);
    std::int16_t hangover = words[1], elapsed = words[2];
    for (std::size_t i = 0; i < words.size() / 8; ++i) {
        const std::int16_t* r = &words[8 * i];
        if (i == words.size() / 16) {
            hangover = r[1];
            elapsed = r[2];
        }
        ASSERT_EQ(hangover, r[1]) << "record " << i;
        ASSERT_EQ(elapsed, r[2]) << "record " << i;

        std::int16_t mode = r[3], newSid = -1;
        zspsEncDTXHandler_GSMAMR_16s(&hangover, &elapsed, &mode, &newSid, r[0]);
        expectEqual(std::array{hangover, elapsed, mode, newSid}, std::array{r[4], r[5], r[6], r[7]},
                    "record " + std::to_string(i));
    }
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

// The whole histories: the newest entry is written, the others are kept.
TEST(GsmAmrDtx, BufferVector)
{
    const Words words = readVector<std::int16_t>("gsmamr/dtx_buffer.bin");
    constexpr std::size_t kRecord = 160 + 10 + 2;
    ASSERT_EQ(words.size(), 200u * kRecord);

    std::int16_t encIndex = 0, decIndex = 0;
    Words encLsp(80, 111), decLsp(80, 111), wantLsp(80, 111);
    Words encEnergy(8, 222), decEnergy(8, 222), wantEnergy(8, 222);
    for (std::size_t i = 0; i < words.size() / kRecord; ++i) {
        const std::int16_t *speech = &words[i * kRecord], *lsp = speech + 160, *want = lsp + 10;
        zspsEncDTXBuffer_GSMAMR_16s(speech, lsp, &encIndex, encLsp.data(), encEnergy.data());
        zspsDecDTXBuffer_GSMAMR_16s(speech, lsp, &decIndex, decLsp.data(), decEnergy.data());

        ASSERT_EQ(encIndex, want[0]) << "record " << i;
        ASSERT_EQ(decIndex, want[0]) << "record " << i;
        const auto at = static_cast<std::size_t>(want[0]);
        std::copy(lsp, lsp + 10, &wantLsp[at * 10]);
        wantEnergy[at] = want[1];
        expectEqual(encLsp, wantLsp, "encoder's LSPs, record " + std::to_string(i));
        expectEqual(decLsp, wantLsp, "decoder's LSPs, record " + std::to_string(i));
        expectEqual(encEnergy, wantEnergy, "energies, record " + std::to_string(i));
        EXPECT_EQ(decEnergy[at] >> 1, want[1]) << "record " << i;
    }
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
