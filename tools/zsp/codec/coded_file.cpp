// Reads and writes coded files, and refuses what is plainly none.

#include "tools/zsp/codec/coded_file.hpp"

#include "tools/zsp/codec/frame_container.hpp"
#include "tools/zsp/codec/gsm_pairs.hpp"
#include "tools/zsp/io/audio_format.hpp"
#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/sample_header.hpp"
#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <array>
#include <string_view>

namespace zsp::host {

namespace {

/// Format tags of WAV files and encodings of AU files that stand for a codec of ours.
struct CodedKind {
    std::string_view container;
    std::uint32_t tag;
    int bits; // of a sample in the header, 0 for any
    const char* rtpName;
};
constexpr std::uint32_t kGsmPairs = 0x31; // two frames together
constexpr std::array kCodedKinds = std::to_array<CodedKind>({
    {"WAV", 6, 0, "PCMA"},
    {"WAV", 7, 0, "PCMU"},
    {"WAV", 0x45, 2, "AAL2-G726-16"}, // as FFmpeg writes them
    {"WAV", 0x45, 3, "AAL2-G726-24"},
    {"WAV", 0x45, 4, "AAL2-G726-32"},
    {"WAV", 0x45, 5, "AAL2-G726-40"},
    {"WAV", kGsmPairs, 0, "GSM"},
    {"WAV", 0x42, 0, "G723"},
    {"WAV", 0x28f, 0, "G722"},
    {"AU", 1, 0, "PCMU"},
    {"AU", 23, 0, "G726-32"},
    {"AU", 24, 0, "G722"},
    {"AU", 25, 0, "G726-24"},
    {"AU", 26, 0, "G726-40"},
    {"AU", 27, 0, "PCMA"},
});

struct Magic {
    std::string_view bytes;
    const char* name;
};
constexpr std::array kOthers = std::to_array<Magic>({
    {"RIFF", "a RIFF file"},
    {"RIFX", "a RIFF file"},
    {"RF64", "an RF64 file"},
    {"riff", "a W64 file"},
    {".snd", "an AU file"},
    {"FORM", "an AIFF file"},
    {"caff", "a CAF file"},
    {"fLaC", "a FLAC file"},
    {"OggS", "an Ogg file"},
    {"ID3", "an MP3 file"},
    {"#!", "a file with a header of its own"},
    {"\x7f"
     "ELF",
     "a program"},
    {"<!", "text"},
});

/// Letters and lines, which no coder writes for long.
bool isText(std::span<const std::uint8_t> head)
{
    const auto printable = [](std::uint8_t c) {
        return (c >= 32 && c < 127) || c == '\n' || c == '\r' || c == '\t';
    };
    return head.size() >= 16 && std::all_of(head.begin(), head.end(), printable) &&
           std::find(head.begin(), head.end(), '\n') != head.end();
}

std::vector<const ZspvCodec*> rowsFor(const CodecWish& wish, const std::string& path)
{
    if (!wish.name.empty()) {
        std::vector<const ZspvCodec*> rows = codecsNamed(wish.name);
        if (rows.empty())
            throw UsageError("--codec: " + wish.name + " is none of " + familyNames());
        return rows;
    }
    std::vector<const ZspvCodec*> rows = codecsByExtension(path);
    if (!rows.empty()) return rows;
    const std::string extension = lowerExtension(path);
    throw UsageError((path == "-" ? "standard input or output" : path) +
                     (extension.empty() ? " tells no codec by an extension"
                                        : ": " + extension + " is the extension of no codec") +
                     "; name one with --codec: " + familyNames());
}

/// What the name says beside the codec: g729a is Annex A of G.729, g729 and none the main body.
CodecSetting wished(const CodecWish& wish, CodecSetting setting)
{
    setting.annexA = isAnnexA(wish.name);
    return setting;
}

} // namespace

CodecSetting codecToWrite(const CodecWish& wish, const std::string& path)
{
    const auto rows = rowsFor(wish, path);
    const AudioFormat* audio = audioFormatByExtension(path);
    if (audio && !audio->headerless && !isGsmPairFile(*rows[0], path))
        throw UsageError(path + ": " + lowerExtension(path) +
                         " is for audio files; coded speech has no header, ." +
                         rows[0]->fileExtension + " is its extension");
    return wished(wish, withRate(rows, wish.bitRate));
}

CodedInput::CodedInput(const std::string& path, const CodecWish& wish)
    : file_(path), left_(file_.size()), setting_(fromHeader(wish))
{
}

CodecSetting CodedInput::fromHeader(const CodecWish& wish)
{
    if (file_.peek(1).empty()) throw Failure(path(), "is empty");
    const std::optional<SampleHeader> header = sampleHeaderOf(file_);
    const auto kind =
        std::find_if(kCodedKinds.begin(), kCodedKinds.end(), [&header](const CodedKind& known) {
            return header && header->container == known.container && header->tag == known.tag &&
                   (known.bits == 0 || known.bits == header->bits);
        });
    const ZspvCodec* codec =
        kind == kCodedKinds.end() ? nullptr : zspvCodecByName(kind->rtpName, 0);
    if (!codec) {
        refuseOthers();
        return wished(wish, withRate(rowsFor(wish, path()), wish.bitRate));
    }
    if (header->channels != 1)
        throw Failure(path(), "has " + std::to_string(header->channels) + " channels, not one");
    const std::vector<const ZspvCodec*> wished =
        wish.name.empty() ? std::vector{codec} : rowsFor(wish, path());
    if (std::find(wished.begin(), wished.end(), codec) == wished.end())
        throw Failure(path(),
                      std::string("holds ") + codec->rtpName + " by its header, not " + wish.name);
    file_.skipSeen(file_.peek(header->offset).size());
    if (left_) left_ = *left_ - std::min<std::uint64_t>(*left_, header->offset);
    if (header->bytes) {
        if (left_ && *left_ < *header->bytes)
            throw Failure(path(), "truncated: the header promises " +
                                      std::to_string(*header->bytes) + " bytes, the file holds " +
                                      std::to_string(*left_));
        left_ = header->bytes;
    }
    gsmPairs_ = kind->tag == kGsmPairs;
    return withRate({codec}, wish.bitRate);
}

void CodedInput::refuseOthers()
{
    const auto head = file_.peek(256);
    const std::string_view bytes(reinterpret_cast<const char*>(head.data()), head.size());
    for (const Magic& other : kOthers)
        if (bytes.starts_with(other.bytes) && !containerByName(path()))
            throw Failure(path(), std::string("is ") + other.name + ", not coded speech");
    if (isText(head)) throw Failure(path(), "is text, not coded speech");
}

std::size_t CodedInput::readFile(std::span<std::uint8_t> bytes)
{
    if (left_ && bytes.size() > *left_) bytes = bytes.first(static_cast<std::size_t>(*left_));
    const std::size_t count = file_.read(bytes);
    if (left_) *left_ -= count;
    return count;
}

std::size_t CodedInput::read(std::span<std::uint8_t> bytes)
{
    if (!gsmPairs_) return readFile(bytes);
    while (frames_.size() < bytes.size()) {
        std::array<std::uint8_t, kGsmPair> pair{};
        const std::size_t count = readFile(pair);
        const bool isFilling = count == 1 && pair[0] == 0; // SoX counts what makes a length even
        if (count == 0 || isFilling) break;
        if (count < pair.size())
            throw Failure(path(), countOf(count, "byte") +
                                      " left over behind the last whole pair of frames");
        const auto two = gsmFrames(pair);
        frames_.insert(frames_.end(), two.begin(), two.end());
    }
    const std::size_t count = std::min(frames_.size(), bytes.size());
    std::copy_n(frames_.begin(), count, bytes.begin());
    frames_.erase(frames_.begin(), frames_.begin() + static_cast<std::ptrdiff_t>(count));
    return count;
}

} // namespace zsp::host
