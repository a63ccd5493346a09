// What every block of G.728 gives inside of a whole coder, held against the reference's traces.

#include "voice/codec/g728/g728_decoder.hpp"
#include "voice/codec/g728/g728_encoder.hpp"

#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <span>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using namespace zsp::voice;
using zsp::test::readVector;
using Values = std::vector<std::int64_t>;
using Results = std::map<std::string, Values>; // by name
using Frame = std::vector<Results>;            // of the frame itself, then of each vector

/// Signals, which the traces print with their oldest sample first.
const std::set<std::string> kSignals = {
    "speech",   "zero_input_weighted", "speech_weighted", "weighting_memory", "decoded",
    "residual", "decimated",           "output",          "excitation_past"};
/// Numbers of the reference that the blocks keep to themselves.
const std::set<std::string> kInner = {"target",        "target_correlated", "postfiltered",
                                      "erasure_delay", "shape_index",       "gain_index"};

/// Writes down what the blocks give.
struct Recorder {
    static inline Frame frame{1};

    template <typename Words>
    static void show(const char* name, const Words& words)
    {
        Values values;
        if constexpr (std::is_integral_v<Words>)
            values = {words};
        else
            values.assign(words.begin(), words.end());
        if (values.size() == 6 || values.size() == 2) { // block floating point: the Q comes first
            std::rotate(values.begin(), values.end() - 1, values.end());
            std::reverse(values.begin() + 1, values.end());
        }
        if (kSignals.count(name)) std::reverse(values.begin(), values.end());
        if (std::string(name) == "count")
            frame.emplace_back();
        else
            frame.back()[name] = values;
    }
};

/// Frames of a trace by their numbers.
std::map<int, Frame> readTrace(const std::string& name)
{
    std::map<int, Frame> frames;
    std::ifstream file(zsp::test::vectorPath("g728/" + name));
    Frame* frame = nullptr;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string what, count;
        words >> what >> count;
        const Values values{std::istream_iterator<std::int64_t>(words), {}};
        if (what == "frame")
            (frame = &frames[std::stoi(count)])->resize(1);
        else if (what == "count")
            frame->emplace_back();
        else
            frame->back()[what] = values;
    }
    return frames;
}

/// Compares a frame; gives the number of compared results.
int compare(const Frame& want, const std::string& what)
{
    int compared = 0;
    EXPECT_EQ(Recorder::frame.size(), want.size()) << what;
    for (std::size_t i = 0; i < want.size(); ++i)
        for (const auto& [name, values] : want[i]) {
            if (kInner.count(name)) continue;
            EXPECT_EQ(Recorder::frame[i][name], values)
                << what << ", vector " << int(i) - 1 << ": " << name;
            ++compared;
        }
    return compared;
}

/// Whether a frame has left the trace, which makes all that follows differ too.
bool isOff()
{
    return testing::Test::HasFailure();
}

TEST(G728Trace, Encoder)
{
    const auto samples = readVector<std::int16_t>("g728/speech.pcm");
    const auto bytes = readVector<std::uint8_t>("g728/speech.g728");
    auto want = readTrace("trace_encoder.txt");
    want.merge(readTrace("trace_encoder_start.txt"));
    G728Encoder<Recorder> encoder;
    encoder.start();
    int compared = 0;
    for (int n = 0; n < 72 && !isOff(); ++n) {
        Recorder::frame.assign(1, {});
        std::array<std::uint8_t, 5> got;
        encoder.encode(std::span(samples).subspan(20 * static_cast<std::size_t>(n)).first<20>(),
                       got);
        const std::string what = "frame " + std::to_string(n);
        if (want.count(n)) compared += compare(want[n], what);
        ASSERT_TRUE(std::equal(got.begin(), got.end(), bytes.begin() + 5 * n)) << what;
    }
    EXPECT_EQ(compared, 1050);
}

struct Traced {
    const char *trace, *coded;
    int compared;
};

TEST(G728Trace, Decoder)
{
    for (const Traced& run : {Traced{"trace_decoder.txt", "speech.g728", 840},
                              {"trace_erasure_voiced.txt", "speech_erased.g728f", 1288},
                              {"trace_erasure_unvoiced.txt", "noise_erased.g728f", 686}}) {
        const std::string file = std::string("g728/") + run.coded;
        const auto bytes = readVector<std::uint8_t>(file);
        const bool isContainer = file.back() == 'f';
        auto want = readTrace(run.trace);
        G728Decoder<Recorder> decoder;
        decoder.start();
        int compared = 0, n = 0;
        for (std::size_t at = isContainer ? 7 : 0; at < bytes.size() && n <= want.rbegin()->first;
             ++n) {
            const std::size_t length = isContainer && bytes[at++] == 255 ? 0 : 5;
            Recorder::frame.assign(1, {});
            std::array<std::int16_t, 20> samples;
            decoder.decode(std::span(bytes).subspan(at, length), true, samples);
            at += length;
            if (want.count(n))
                compared += compare(want[n], run.trace + (", frame " + std::to_string(n)));
            if (isOff()) return; // everything behind differs too
        }
        EXPECT_EQ(compared, run.compared) << run.trace;
    }
}

} // namespace
