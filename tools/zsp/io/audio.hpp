// Audio files of 16-bit samples, read and written block by block.
#pragma once

#include "tools/zsp/io/files.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct sf_private_tag; // libsndfile's SNDFILE

namespace zsp::host {

enum class Container { automatic, wav, au, raw };
enum class Encoding { linear, muLaw, aLaw };

/// "16-bit linear", "mu-law" or "A-law".
std::string_view nameOf(Encoding encoding);

struct SndfileCloser {
    void operator()(sf_private_tag* file) const;
};
using SndfileHandle = std::unique_ptr<sf_private_tag, SndfileCloser>;

/// Samples of any format that libsndfile reads, as 16-bit words. Raw input has no header: the
/// caller says what it holds. Input that ends before its header says so is a Failure.
class AudioReader {
  public:
    struct Raw {
        Encoding encoding = Encoding::linear; ///< linear samples are little-endian words
        int rate = 8000;
    };

    /// With Container::automatic the extensions .raw, .pcm, .sln, .ul and .al mean raw.
    explicit AudioReader(const std::string& path, Container container = Container::automatic);
    AudioReader(const std::string& path, Container container, Raw raw);
    /// Reads a file that is already in memory; `name` appears in messages.
    AudioReader(std::string name, std::span<const std::uint8_t> bytes);

    [[nodiscard]] int rate() const { return rate_; }
    [[nodiscard]] int channels() const { return channels_; }
    [[nodiscard]] bool raw() const { return raw_; }
    /// What the samples are stored as; nothing when neither 16-bit linear nor a G.711 law.
    [[nodiscard]] std::optional<Encoding> encoding() const { return encoding_; }
    /// Frames, one sample per channel each, when the input tells before its end.
    [[nodiscard]] std::optional<std::uint64_t> frames() const { return frames_; }
    [[nodiscard]] const std::string& path() const { return path_; }

    /// Whole frames, as many as there are and `samples` holds; fewer only at the end.
    std::size_t read(std::span<std::int16_t> samples);

  private:
    struct Memory {
        std::span<const std::uint8_t> bytes;
        std::size_t position = 0;
    };

    void describe(int format, std::int64_t frames);
    std::size_t readRawWords(std::span<std::int16_t> samples);

    std::string path_;
    std::unique_ptr<InputFile> input_;
    std::unique_ptr<Memory> memory_;
    SndfileHandle file_;
    int rate_ = 0;
    int channels_ = 0;
    bool raw_ = false;
    std::optional<Encoding> encoding_;
    std::optional<std::uint64_t> frames_;
    std::uint64_t framesRead_ = 0;
};

/// Writes one channel as WAV, AU or without a header. With Container::automatic the extension
/// decides: .wav; .au and .snd; everything else raw; AU on standard output.
class AudioWriter {
  public:
    AudioWriter(const std::string& path, Container container, Encoding encoding, int rate);

    /// Linear samples; compressed by the law of the file when it has one.
    void write(std::span<const std::int16_t> samples);
    /// Code words of the file's law, as they are.
    void writeCodes(std::span<const std::uint8_t> codes);
    /// Completes the header and gives the file its name.
    void commit();

  private:
    void checkCount(std::int64_t done, std::size_t wanted);

    OutputFile output_;
    SndfileHandle file_;
};

/// Throws a Failure unless the input has one channel at `rate`. A coder would process anything else
/// without a complaint, and to no use.
void requireMono(const AudioReader& reader, int rate, const std::string& coder);

/// A whole mono signal in memory.
struct Audio {
    std::vector<std::int16_t> samples;
    int rate = 8000;

    [[nodiscard]] double seconds() const
    {
        return static_cast<double>(samples.size()) / static_cast<double>(rate);
    }
};

/// Reads everything and mixes channels down to one, saying so on standard error.
Audio readMono(AudioReader& reader);

/// As stored: all samples of the one channel at the file's rate; more channels are a Failure.
Audio readAsStored(AudioReader& reader);

/// The same signal at another rate.
Audio resampled(const Audio& audio, int rate);
/// The same, saying so on standard error when the rates differ.
Audio convertedTo(int rate, const Audio& audio, const std::string& path);

void writeWav(const std::string& path, std::span<const std::int16_t> samples, int rate);

} // namespace zsp::host
