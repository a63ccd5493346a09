// Parses and makes the headers.

#include "tools/zsp/io/sample_header.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <sndfile.h>

namespace zsp::host {

namespace {

using Bytes = std::span<const std::uint8_t>;

// Sizes from here on are those of programs that write to a pipe: SoX writes this one, others the
// largest there is.
constexpr std::uint32_t kUnknown = 0x7fff'f000;
constexpr std::size_t kLargestHeader = std::size_t{1} << 24;

std::uint32_t little(Bytes bytes, std::size_t at, int count)
{
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i)
        value |= std::uint32_t{bytes[at + static_cast<std::size_t>(i)]} << 8 * i;
    return value;
}

std::uint32_t big32(Bytes bytes, std::size_t at)
{
    return __builtin_bswap32(little(bytes, at, 4));
}

bool has(Bytes bytes, std::size_t at, const char* name)
{
    return bytes.size() >= at + 4 && std::memcmp(bytes.data() + at, name, 4) == 0;
}

int wavSndfile(std::uint32_t tag, int bits)
{
    constexpr std::array<int, 5> kWords = {0, SF_FORMAT_PCM_U8, SF_FORMAT_PCM_16, SF_FORMAT_PCM_24,
                                           SF_FORMAT_PCM_32};
    int minor = 0;
    if (tag == 1 && bits % 8 == 0 && bits <= 32) minor = kWords[static_cast<std::size_t>(bits / 8)];
    if (tag == 3 && bits == 32) minor = SF_FORMAT_FLOAT;
    if (tag == 3 && bits == 64) minor = SF_FORMAT_DOUBLE;
    if (tag == 6 && bits == 8) minor = SF_FORMAT_ALAW;
    if (tag == 7 && bits == 8) minor = SF_FORMAT_ULAW;
    return minor ? minor | SF_ENDIAN_LITTLE : 0;
}

/// `held` is what there is behind the header, where that is known.
std::optional<std::uint64_t> sizeOfSamples(std::uint32_t promised,
                                           std::optional<std::uint64_t> held)
{
    if (promised != 0 && promised < kUnknown) return promised;
    if (promised != 0 && held && promised <= *held) return promised;
    return std::nullopt;
}

std::optional<std::uint64_t> behind(const InputFile& input, std::uint64_t offset)
{
    if (!input.size()) return std::nullopt;
    return *input.size() - std::min(*input.size(), offset);
}

std::optional<SampleHeader> auHeaderOf(InputFile& input)
{
    const Bytes head = input.peek(24);
    if (head.size() < 24) return std::nullopt;
    struct Kind {
        int bits, sndfile;
    };
    constexpr std::array<Kind, 8> kKinds = {{{0, 0},
                                             {8, SF_FORMAT_ULAW},
                                             {8, SF_FORMAT_PCM_S8},
                                             {16, SF_FORMAT_PCM_16},
                                             {24, SF_FORMAT_PCM_24},
                                             {32, SF_FORMAT_PCM_32},
                                             {32, SF_FORMAT_FLOAT},
                                             {64, SF_FORMAT_DOUBLE}}};
    constexpr std::uint32_t kALaw = 27;
    const std::uint32_t offset = big32(head, 4), encoding = big32(head, 12);
    const std::uint32_t rate = big32(head, 16), channels = big32(head, 20);
    const Kind kind = encoding == kALaw ? Kind{8, SF_FORMAT_ALAW}
                                        : kKinds[encoding < kKinds.size() ? encoding : 0];
    if (offset < 24 || offset > kLargestHeader || rate - 1 >= 1u << 24 || channels - 1 >= 1024)
        return std::nullopt;
    return SampleHeader{.container = "AU",
                        .offset = offset,
                        .tag = encoding,
                        .rate = static_cast<int>(rate),
                        .channels = static_cast<int>(channels),
                        .bits = kind.bits,
                        .frameBytes =
                            std::max(channels * static_cast<std::uint32_t>(kind.bits) / 8, 1u),
                        .sndfile = kind.sndfile ? kind.sndfile | SF_ENDIAN_BIG : 0,
                        .bytes = sizeOfSamples(big32(head, 8), behind(input, offset))};
}

std::optional<SampleHeader> wavHeaderOf(InputFile& input)
{
    std::optional<SampleHeader> header;
    for (std::size_t at = 12; at < kLargestHeader;) {
        const Bytes head = input.peek(at + 8 + 40);
        if (head.size() < at + 8) break;
        const std::uint32_t size = little(head, at + 4, 4);
        if (has(head, at, "data")) {
            if (!header) break;
            header->offset = at + 8;
            header->bytes = sizeOfSamples(size, behind(input, at + 8));
            const bool closed =
                input.size() && std::uint64_t{little(head, 4, 4)} + 8 == *input.size();
            if (size == 0 && closed) header->bytes = 0; // not left open, but empty
            return header;
        }
        if (has(head, at, "fmt ") && size >= 16 && head.size() >= at + 8 + 16) {
            std::uint32_t tag = little(head, at + 8, 2);
            constexpr std::uint32_t kExtensible = 0xfffe;
            if (tag == kExtensible && size >= 40 && head.size() >= at + 48)
                tag = little(head, at + 32, 2);
            const std::uint32_t channels = little(head, at + 10, 2);
            const std::uint32_t rate = little(head, at + 12, 4);
            const std::uint32_t frameBytes = little(head, at + 20, 2);
            const auto bits = static_cast<int>(little(head, at + 22, 2));
            if (channels - 1 >= 1024 || rate - 1 >= 1u << 24) break;
            header = SampleHeader{.container = "WAV",
                                  .offset = 0,
                                  .tag = tag,
                                  .rate = static_cast<int>(rate),
                                  .channels = static_cast<int>(channels),
                                  .bits = bits,
                                  .frameBytes = std::max(frameBytes, 1u),
                                  .sndfile = wavSndfile(tag, bits),
                                  .bytes = std::nullopt};
            if (frameBytes * 8 != channels * static_cast<std::uint32_t>(bits)) header->sndfile = 0;
        }
        at += 8 + std::size_t{size} + size % 2;
    }
    return std::nullopt;
}

} // namespace

std::optional<SampleHeader> sampleHeaderOf(InputFile& input)
{
    const Bytes head = input.peek(12);
    if (has(head, 0, ".snd")) return auHeaderOf(input);
    if (has(head, 0, "RIFF") && has(head, 8, "WAVE")) return wavHeaderOf(input);
    return std::nullopt;
}

std::string wavHeader(std::uint32_t tag, int rate, int bits, std::optional<std::uint32_t> dataBytes)
{
    std::string header;
    const auto text = [&header](const char* name) { header += name; };
    const auto word = [&header](std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i)
            header += static_cast<char>(value >> 8 * i);
    };
    const auto bytes = static_cast<std::uint32_t>(bits / 8),
               hertz = static_cast<std::uint32_t>(rate);
    text("RIFF");
    word(dataBytes.value_or(kUnknown) + 36, 4);
    text("WAVE");
    text("fmt ");
    word(16, 4);
    word(tag, 2);
    word(1, 2);
    word(hertz, 4);
    word(hertz * bytes, 4);
    word(bytes, 2);
    word(static_cast<std::uint32_t>(bits), 2);
    text("data");
    word(dataBytes.value_or(kUnknown), 4);
    return header;
}

std::string auHeader(std::uint32_t encoding, int rate, std::optional<std::uint32_t> dataBytes)
{
    constexpr std::uint32_t kSize = 32;
    std::string header = ".snd";
    for (const std::uint32_t value : {kSize, dataBytes.value_or(0xffff'ffff), encoding,
                                      static_cast<std::uint32_t>(rate), 1u, 0u, 0u})
        for (int shift = 24; shift >= 0; shift -= 8)
            header += static_cast<char>(value >> shift);
    return header;
}

} // namespace zsp::host
