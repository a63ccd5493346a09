#include "amrwb_vad.hpp"

#include "support/contract.hpp"
#include "support/samples.hpp"
#include "support/vectors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

void initialise(void* p)
{
    zspsVADInit_AMRWB_16s(static_cast<VadWbState*>(p));
}

/// The record as words, for comparisons that name the first difference.
Words wordsOf(const VadWbState& state)
{
    Words words(sizeof state / 2);
    std::memcpy(words.data(), &state, sizeof state);
    return words;
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsVADGetSize_AMRWB_16s), {out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsVADInit_AMRWB_16s), {state(sizeof(VadWbState))}),
    Contract(ZSP_NAMED(zspsVAD_AMRWB_16s),
             {in<std::int16_t>(256), state(sizeof(VadWbState), initialise), out<std::int16_t>(1),
              out<std::int16_t>(1)}),
    Contract(ZSP_NAMED(zspsVADGetEnergyLevel_AMRWB_16s),
             {in<std::byte>(sizeof(VadWbState)), out<std::int16_t>(12)}),
});

constexpr const char* kSignals[] = {
    "extremes",     "music",        "silence_steps",    "speech_babble15",
    "speech_clean", "speech_pink5", "speech_loud_clip", "tones",
};

// Flag, tone word and whole record after every frame.
TEST(AmrWbVad, Vectors)
{
    for (const std::string name : kSignals) {
        const Words pcm = readVector<std::int16_t>("amrwb/" + name + ".pcm");
        const Words want = readVector<std::int16_t>("amrwb/" + name + ".vad");
        const std::size_t frames = want.size() / 89;
        ASSERT_GT(frames, 250u);
        ASSERT_EQ(pcm.size(), 256 * frames);

        VadWbState state{};
        zspsVADInit_AMRWB_16s(&state);
        for (std::size_t t = 0; t < frames; ++t) {
            std::int16_t tone = want[89 * t], flag = -1;
            ASSERT_EQ(zspsVAD_AMRWB_16s(&pcm[256 * t], &state, &tone, &flag), 0);

            Words got = wordsOf(state);
            got.insert(got.begin(), {flag, tone});
            expectEqual(got, std::span(&want[89 * t + 1], 88),
                        name + ", frame " + std::to_string(t));
            if (HasFatalFailure()) return;
        }
    }
}

} // namespace
