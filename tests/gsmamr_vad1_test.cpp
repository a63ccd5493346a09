#include "gsmamr_vad1.hpp"

#include "support/contract.hpp"
#include "support/samples.hpp"
#include "support/vectors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

Vad1State resetState()
{
    Vad1State state{};
    std::ranges::fill(state.old_level, std::int16_t{150});
    std::ranges::fill(state.ave_level, std::int16_t{150});
    std::ranges::fill(state.bckr_est, std::int16_t{150});
    state.corr_hp_fast = 13106;
    return state;
}

/// The record as words, for comparisons that name the first difference.
Words wordsOf(const Vad1State& state)
{
    Words words(sizeof state / 2);
    std::memcpy(words.data(), &state, sizeof state);
    return words;
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsVAD1_GSMAMR_16s), {in<std::int16_t>(200),
                                              state(sizeof(Vad1State),
                                                    [](void* p) {
                                                        const Vad1State fresh = resetState();
                                                        std::memcpy(p, &fresh, sizeof fresh);
                                                    }),
                                              out<std::int16_t>(1), number(0), number(13106)}),
});

constexpr const char* kSignals[] = {
    "extremes",     "music",        "silence_steps",  "speech_babble15",
    "speech_car10", "speech_clean", "speech_pink5",   "speech_loud_clip",
    "speech_quiet", "tones",        "speech_white20",
};

// Flag and whole record after every frame.
TEST(GsmAmrVad1, Vectors)
{
    for (const std::string name : kSignals) {
        const Words pcm = readVector<std::int16_t>("gsmamr/" + name + ".pcm");
        const Words side = readVector<std::int16_t>("gsmamr/" + name + ".side");
        const Words want = readVector<std::int16_t>("gsmamr/" + name + ".vad1");
        const std::size_t frames = want.size() / 59;
        ASSERT_GT(frames, 300u);
        ASSERT_EQ(pcm.size(), 160 * frames + 40);
        ASSERT_EQ(side.size(), 4 * frames);

        Vad1State state = resetState();
        for (std::size_t t = 0; t < frames; ++t) {
            const auto [tone, pitch, bestCorrHp] =
                std::tuple(side[4 * t], side[4 * t + 1], side[4 * t + 2]);
            state.pitch = static_cast<std::int16_t>((state.pitch >> 1) | (pitch ? 0x4000 : 0));
            std::int16_t flag = -1;
            ASSERT_EQ(zspsVAD1_GSMAMR_16s(&pcm[160 * t], &state, &flag, tone, bestCorrHp), 0);

            Words got = wordsOf(state);
            got.insert(got.begin(), flag);
            expectEqual(got, std::span(&want[59 * t], 59), name + ", frame " + std::to_string(t));
            if (HasFatalFailure()) return;
        }
    }
}

} // namespace
