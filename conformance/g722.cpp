// G.722: the filters and the sub-band coder over the runs of g722/runs.txt.

#include "zspsc/g722.h"
#include "conformance/families.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>

namespace zsp::conformance {

namespace {

using Run = std::vector<std::string>; // operation, argument, input, wanted output
using Block = std::function<ZspStatus(const std::int16_t*, std::int16_t*, std::int32_t)>;

/// A signal through a block function; every other block is given in place.
Words through(const Block& block, const Words& input, Split split)
{
    Words output = input;
    Cuts cuts(split, input.size(), 2);
    bool inPlace = false;
    for (std::size_t i = 0, n = cuts.next(); n > 0; i += n, n = cuts.next()) {
        require(block((inPlace ? output : input).data() + i, output.data() + i,
                      static_cast<std::int32_t>(n)),
                "a block");
        inPlace = !inPlace && split != Split::none;
    }
    return output;
}

/// A state of the coder at an odd address, and the coder's functions on it.
struct Coder {
    StateBuffer state;

    explicit Coder(bool encoder, Split split = Split::none)
        : state(sizeOf(encoder), split == Split::shortest ? 7 : 1)
    {
        require((encoder ? zspsSBADPCMEncodeInit_G722_16s
                         : zspsSBADPCMDecodeInit_G722_16s)(state.data()),
                "the initialisation");
    }
    static std::int32_t sizeOf(bool encoder)
    {
        std::int32_t size = 0;
        require((encoder ? zspsSBADPCMEncodeStateSize_G722_16s
                         : zspsSBADPCMDecodeStateSize_G722_16s)(&size),
                "the state's size");
        return size;
    }
    Block encoder()
    {
        return [this](const std::int16_t* src, std::int16_t* dst, std::int32_t len) {
            return zspsSBADPCMEncode_G722_16s(src, dst, len, state.data());
        };
    }
    Block decoder(int mode)
    {
        return [this, mode](const std::int16_t* src, std::int16_t* dst, std::int32_t len) {
            return zspsSBADPCMDecode_G722_16s(src, dst, len, static_cast<std::int16_t>(mode),
                                              state.data());
        };
    }
};

Words filtered(const Words& input, bool analysis, Split split)
{
    std::array<std::int16_t, 24> line{};
    const auto filter = analysis ? zspsQMFEncode_G722_16s : zspsQMFDecode_G722_16s;
    return through([&line, filter](const std::int16_t* src, std::int16_t* dst,
                                   std::int32_t len) { return filter(src, dst, len, line.data()); },
                   input, split);
}

Words result(const Run& run, const Words& input, Split split)
{
    if (run[0] == "qmf-encode" || run[0] == "qmf-decode")
        return filtered(input, run[0] == "qmf-encode", split);
    Coder coder(run[0] == "sb-encode", split);
    int mode = 0;
    if (run[0] == "sb-encode") return through(coder.encoder(), input, split);
    if (run[0] != "sb-decode" || std::sscanf(run[1].c_str(), "%d", &mode) != 1)
        throw Fault("no operation " + run[0] + " " + run[1]);
    return through(coder.decoder(mode), input, split);
}

/// A decoder takes the first input in mode 1, then comes the update, then the second input.
void checkStateUpdate(const Vectors& vectors, const Run& run)
{
    int low[2], x, reset;
    const auto comma = run[2].find(',');
    if (std::sscanf(run[1].c_str(), "%d,%d,%d,%d", &low[0], &low[1], &x, &reset) != 4 ||
        comma == std::string::npos)
        throw Fault("no state update " + run[1] + " " + run[2]);
    const Words before = vectors.words("g722/" + run[2].substr(0, comma));
    const Words after = vectors.words("g722/" + run[2].substr(comma + 1));

    Coder coder(false);
    through(coder.decoder(1), before, Split::none);
    const std::int16_t last[] = {static_cast<std::int16_t>(low[0]),
                                 static_cast<std::int16_t>(low[1])};
    require(zspsSBADPCMDecodeStateUpdate_G722_16s(last, static_cast<std::int16_t>(x), reset,
                                                  coder.state.data()),
            "the update");
    requireEqual(through(coder.decoder(1), after, Split::none), vectors.words("g722/" + run[3]),
                 run[3]);
}

void checkRun(const Vectors& vectors, const Run& run)
{
    const Words input = vectors.words("g722/" + run[2]);
    const Words want = vectors.words("g722/" + run[3]);
    if (input.size() % 2 != 0) throw Fault(run[2] + " holds half a pair");
    for (const Split split : kSplits)
        requireEqual(result(run, input, split), want, run[3]);
}

} // namespace

void checkG722(const Vectors& vectors, Checks& checks)
{
    for (const Run& run : vectors.runs("g722/runs.txt")) {
        if (run.size() != 4) throw Fault("g722/runs.txt: a line that has not four words");
        checks.add(run[0] + " " + run[3], [&] {
            if (run[0] == "state-update")
                checkStateUpdate(vectors, run);
            else
                checkRun(vectors, run);
        });
    }
}

} // namespace zsp::conformance
