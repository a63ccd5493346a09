// zsp g726: audio files to G.726 code files and back.

#include "tools/zsp/commands/commands.hpp"

#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/g726_codec.hpp"
#include "tools/zsp/io/progress.hpp"
#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <array>

namespace zsp::host {

namespace {

constexpr std::size_t kBlock = 8000; // a second

void checkLaw(const AudioReader& reader, std::optional<Encoding> law)
{
    if (!law || reader.raw() || reader.encoding() == law) return;
    throw Failure(reader.path(),
                  "holds " + std::string(reader.encoding() ? nameOf(*reader.encoding()) : "other") +
                      " samples, not " + std::string(nameOf(*law)) + " ones");
}

/// The library trusts its code bytes, so they are checked here.
void checkCodes(const std::string& path, std::span<const std::uint8_t> codes, std::uint64_t offset,
                int bits)
{
    const auto wrong = std::find_if(codes.begin(), codes.end(),
                                    [bits](std::uint8_t code) { return code >> bits != 0; });
    if (wrong == codes.end()) return;
    const auto position = offset + static_cast<std::uint64_t>(wrong - codes.begin());
    throw Failure(path, "byte " + std::to_string(position) +
                            format(" is 0x%02x, no code word of %d bits (wrong rate, or a packed "
                                   "file?)",
                                   *wrong, bits));
}

/// Turns code words into samples of the output's kind.
class Sink {
  public:
    Sink(const G726Options& options, Encoding encoding)
        : writer_(options.output, options.container, encoding, 8000),
          decoder_(options.rate, lawOf(encoding)), linear_(encoding == Encoding::linear)
    {
    }

    void decode(std::span<const std::uint8_t> codes)
    {
        words_.resize(codes.size());
        decoder_.decode(codes, words_);
        if (linear_) return writer_.write(words_);
        bytes_.resize(words_.size());
        std::transform(words_.begin(), words_.end(), bytes_.begin(),
                       [](std::int16_t word) { return static_cast<std::uint8_t>(word); });
        writer_.writeCodes(bytes_);
    }

    void commit() { writer_.commit(); }

  private:
    static G726Law lawOf(Encoding encoding)
    {
        if (encoding == Encoding::muLaw) return G726Law::muLaw;
        return encoding == Encoding::aLaw ? G726Law::aLaw : G726Law::linear;
    }

    AudioWriter writer_;
    G726Decoder decoder_;
    bool linear_;
    std::vector<std::int16_t> words_;
    std::vector<std::uint8_t> bytes_;
};

} // namespace

void runG726Encode(const G726Options& options)
{
    AudioReader reader(options.input, options.container,
                       {options.law.value_or(Encoding::linear), 8000});
    requireMono(reader, 8000, "G.726");
    checkLaw(reader, options.law);
    G726Encoder encoder(options.rate);
    Packer packer(options.packing, g726Bits(options.rate));
    OutputFile output(options.output);
    Progress progress("g726 encode", reader.frames());

    std::array<std::int16_t, kBlock> samples;
    std::array<std::uint8_t, kBlock> codes;
    std::vector<std::uint8_t> bytes;
    std::uint64_t done = 0;
    for (std::size_t count = kBlock; count == kBlock;) {
        count = reader.read(samples);
        encoder.encode(std::span(samples).first(count), codes);
        bytes.clear();
        packer.pack(std::span(codes).first(count), bytes);
        if (count < kBlock) packer.finish(bytes);
        output.write(bytes);
        progress.update(done += count);
    }
    output.commit();
}

void runG726Decode(const G726Options& options)
{
    const int bits = g726Bits(options.rate);
    InputFile input(options.input);
    if (input.size() == std::uint64_t{0}) throw Failure(options.input, "is empty");
    Sink sink(options, options.law.value_or(Encoding::linear));
    Unpacker unpacker(options.packing, bits);
    Progress progress("g726 decode", input.size());

    // The last byte of a packed file may be filled up with zeros. From 24 kbit/s on they are told
    // from code words, since no encoder sends 0; therefore the last code words are held back.
    const bool padded = options.packing != Packing::unpacked && options.rate != 16;
    const std::size_t heldBack = padded ? static_cast<std::size_t>(7 / bits) : 0;
    std::array<std::uint8_t, kBlock> block;
    std::vector<std::uint8_t> codes;
    std::uint64_t done = 0;
    for (std::size_t count = kBlock; count == kBlock;) {
        count = input.read(block);
        const auto bytes = std::span(block).first(count);
        if (options.packing == Packing::unpacked) checkCodes(options.input, bytes, done, bits);
        unpacker.unpack(bytes, codes);
        const std::size_t ready = codes.size() - std::min(codes.size(), heldBack);
        sink.decode(std::span(codes).first(ready));
        codes.erase(codes.begin(), codes.begin() + static_cast<std::ptrdiff_t>(ready));
        progress.update(done += count);
    }
    if (done == 0) throw Failure(options.input, "is empty");
    while (!codes.empty() && codes.back() == 0)
        codes.pop_back();
    sink.decode(codes);
    sink.commit();
}

} // namespace zsp::host
