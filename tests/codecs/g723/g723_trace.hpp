// Intermediate results of the G.723.1 reference, from tests/vectors/g723/trace.MODE.txt, and what
// the tests of several blocks do with them.
#pragma once

#include "codecs/g723/g723.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/trace.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g723/encoder.h"
#include "zspsc/g723/search.h"

#include <algorithm>
#include <string>
#include <vector>

namespace zsp::test::g723 {

inline const std::vector<std::string> kModes = {"63", "53", "63dtx"};

/// The frames of one side: "encode" or "decode".
inline std::vector<TracedFrame> traced(const std::string& mode, const std::string& side)
{
    return readTrace("g723/trace." + mode + ".txt", side + "_frame",
                     side == "encode" ? "decode_frame" : "encode_frame");
}

/// Calls test(frame, what) for every frame of every mode.
template <typename Test>
void forEachFrame(const std::string& side, Test test)
{
    for (const std::string& mode : kModes) {
        const auto frames = traced(mode, side);
        for (std::size_t n = 0; n < frames.size(); ++n)
            test(frames[n], mode + ", frame " + std::to_string(n));
    }
}

/// An argument of so many words.
inline Argument words(std::size_t count)
{
    return in<std::int16_t>(count);
}

/// The fields of an active frame that an encoder has made.
inline ZspG723Frame fieldsOf(const TracedFrame& t)
{
    ZspG723Frame f{};
    f.type = t.words("frame").size() == 24 ? zspG723Rate63 : zspG723Rate53;
    f.lspIndex = t.value("lsp_index");
    for (std::size_t i = 0; i < 4; ++i) {
        f.lag[i / 2] = t.word("lag", i / 2 * 2);
        f.lagOffset[i] = t.word("lag_offset", i);
        f.acbGain[i] = t.word("acb_gain_index", i);
        f.fcbGain[i] = t.word("fcb_gain_index", i);
        f.train[i] = t.word("train", i);
        f.grid[i] = t.word("grid", i);
        f.position[i] = t.value("pulse_positions", i);
        f.signs[i] = t.word("pulse_signs", i);
    }
    return f;
}

/// Whether an encoder has coded a frame as speech.
inline bool isActive(const TracedFrame& t)
{
    return t.has("taming_errors");
}

/// Words for comparing a fast form with its definition: of any size, at both ends of the range, and
/// smaller and smaller, which is where the fast forms decide for themselves.
inline Words anyWords(Samples& samples, std::size_t count, int round)
{
    if (round % 8 == 0) return samples.words(count);
    if (round % 8 == 1) return samples.extremeWords(count);
    Words words(count);
    for (auto& x : words)
        x = static_cast<std::int16_t>(samples.uniform(-32768, 32767) >> (round % 8));
    return words;
}

/// A valid frame to begin a contract with.
inline Argument frameArgument(std::int32_t type = zspG723Rate63)
{
    ZspG723Frame f{};
    f.type = type;
    f.lag[0] = f.lag[1] = 100;
    std::fill_n(f.lagOffset, 4, std::int16_t{1});
    return buffer(Argument::Kind::input, std::vector<ZspG723Frame>{f});
}

inline Argument asOutput(Argument a)
{
    a.kind = Argument::Kind::output;
    return a;
}

/// The frame with one field changed.
template <typename Field, typename Value>
Argument spoilt(Argument frame, Field ZspG723Frame::*field, Value value, std::size_t index = 0)
{
    ZspG723Frame f;
    std::memcpy(&f, frame.content.data(), sizeof f);
    if constexpr (std::is_array_v<Field>)
        (f.*field)[index] = static_cast<std::remove_extent_t<Field>>(value);
    else
        f.*field = static_cast<Field>(value);
    std::memcpy(frame.content.data(), &f, sizeof f);
    return frame;
}

} // namespace zsp::test::g723
