// zsp g722: audio files to G.722 byte streams and back.

#include "tools/zsp/commands/commands.hpp"

#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/g722_codec.hpp"
#include "tools/zsp/io/progress.hpp"

#include <array>

namespace zsp::host {

namespace {

constexpr std::size_t kBlock = 16000; // a second, and even

} // namespace

void runG722Encode(const G722Options& options)
{
    AudioReader reader(options.input, options.container, {Encoding::linear, 16000});
    requireMono(reader, 16000, "G.722");
    G722Encoder encoder(options.mode);
    OutputFile output(options.output);
    Progress progress("g722 encode", reader.frames());

    std::array<std::int16_t, kBlock> samples;
    std::array<std::uint8_t, kBlock / 2> bytes;
    std::uint64_t done = 0;
    for (std::size_t count = kBlock; count == kBlock;) {
        count = reader.read(samples);
        std::size_t even = count;
        if (even % 2 != 0) samples[even++] = 0; // the last byte needs a second sample
        encoder.encode(std::span(samples).first(even), bytes);
        output.write(std::span(bytes).first(even / 2));
        progress.update(done += count);
    }
    output.commit();
}

void runG722Decode(const G722Options& options)
{
    InputFile input(options.input);
    if (input.size() == std::uint64_t{0}) throw Failure(options.input, "is empty");
    G722Decoder decoder(options.mode);
    AudioWriter writer(options.output, options.container, Encoding::linear, 16000);
    Progress progress("g722 decode", input.size());

    std::array<std::uint8_t, kBlock / 2> bytes;
    std::array<std::int16_t, kBlock> samples;
    std::uint64_t done = 0;
    for (std::size_t count = bytes.size(); count == bytes.size();) {
        count = input.read(bytes);
        decoder.decode(std::span(bytes).first(count), samples);
        writer.write(std::span(samples).first(2 * count));
        progress.update(done += count);
    }
    if (done == 0) throw Failure(options.input, "is empty");
    writer.commit();
}

} // namespace zsp::host
