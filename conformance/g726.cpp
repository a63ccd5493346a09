// G.726: the runs of g726/runs.txt, which are the sequences of the Recommendation and speech.

#include "zspsc/g726.h"
#include "conformance/families.hpp"

#include <algorithm>
#include <array>

namespace zsp::conformance {

namespace {

// operation, rate, law, file that makes the coder ready or "-", input, wanted output
using Run = std::vector<std::string>;

struct Name {
    const char* text;
    std::int32_t value;
};
constexpr Name kRates[] = {
    {"16", zspG726Rate16}, {"24", zspG726Rate24}, {"32", zspG726Rate32}, {"40", zspG726Rate40}};
constexpr Name kLaws[] = {
    {"mulaw", zspG726LawMu}, {"alaw", zspG726LawA}, {"linear", zspG726LawLinear}};

std::int32_t valueOf(std::span<const Name> names, const std::string& text)
{
    for (const Name& name : names)
        if (text == name.text) return name.value;
    throw Fault("g726/runs.txt: no rate or law " + text);
}

/// A coder as a caller has it, its state at an odd address.
struct Encoder {
    using In = std::int16_t;
    using Out = std::uint8_t;
    static constexpr auto kSize = zspsEncodeGetStateSize_G726_16s8u;
    static constexpr auto kCode = zspsEncode_G726_16s8u;
    static ZspStatus init(void* state, const Run& run)
    {
        return zspsEncodeInit_G726_16s8u(state, valueOf(kRates, run[1]));
    }
};

struct Decoder {
    using In = std::uint8_t;
    using Out = std::int16_t;
    static constexpr auto kSize = zspsDecodeGetStateSize_G726_8u16s;
    static constexpr auto kCode = zspsDecode_G726_8u16s;
    static ZspStatus init(void* state, const Run& run)
    {
        return zspsDecodeInit_G726_8u16s(state, valueOf(kRates, run[1]), valueOf(kLaws, run[2]));
    }
};

template <typename Coder>
std::vector<typename Coder::Out> coded(StateBuffer& state,
                                       const std::vector<typename Coder::In>& in, Split split)
{
    std::vector<typename Coder::Out> out(in.size());
    Cuts cuts(split, in.size(), 1);
    for (std::size_t i = 0, n = cuts.next(); n > 0; i += n, n = cuts.next())
        require(Coder::kCode(state.data(), &in[i], &out[i], static_cast<std::int32_t>(n)),
                "a block");
    return out;
}

template <typename Coder, typename Expected>
void checkRun(const Vectors& vectors, const Run& run)
{
    using In = typename Coder::In;
    const auto initialise = run[3] == "-" ? std::vector<In>{} : vectors.read<In>("g726/" + run[3]);
    const auto input = vectors.read<In>("g726/" + run[4]);
    const auto wanted = vectors.read<Expected>("g726/" + run[5]);

    std::int32_t size = 0;
    require(Coder::kSize(&size), "the state's size");
    StateBuffer ready(size, 1);
    require(Coder::init(ready.data(), run), "the initialisation");
    coded<Coder>(ready, initialise, Split::blocks);
    for (const Split split : kSplits) {
        StateBuffer state = ready; // a bytewise copy of a state goes on alike
        requireEqual(coded<Coder>(state, input, split), wanted, run[5]);
    }
}

} // namespace

void checkG726(const Vectors& vectors, Checks& checks)
{
    for (const Run& run : vectors.runs("g726/runs.txt")) {
        if (run.size() != 6) throw Fault("g726/runs.txt: a line that has not six words");
        checks.add(run[0] + " " + run[1] + " kbit/s, " + run[5], [&] {
            if (run[0] == "encode")
                checkRun<Encoder, std::uint8_t>(vectors, run);
            else if (run[2] == "linear")
                checkRun<Decoder, std::int16_t>(vectors, run);
            else
                checkRun<Decoder, std::uint8_t>(vectors, run);
        });
    }
}

} // namespace zsp::conformance
