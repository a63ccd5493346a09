// Audio files of any kind that libsndfile knows, read block by block as 16-bit words.
#pragma once

#include "tools/zsp/io/audio_format.hpp"
#include "tools/zsp/io/files.hpp"
#include "tools/zsp/io/sample_header.hpp"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct sf_private_tag; // libsndfile's SNDFILE

namespace zsp::host {

struct SndfileCloser {
    void operator()(sf_private_tag* file) const;
};
using SndfileHandle = std::unique_ptr<sf_private_tag, SndfileCloser>;
/// libsndfile's words for what went wrong, without its prefixes.
std::string sndfileReason(sf_private_tag* file);

/// Samples of files, pipes and memory. Floating-point samples keep their level, 1 being full scale;
/// what is louder is clipped, and standard error told. Input that ends before its header says so is
/// a Failure. Raw input has no header: its kind says what it holds.
class AudioReader {
  public:
    /// Without a format the header tells, and for raw input the name. `rawRate` is that of files
    /// without a header.
    explicit AudioReader(const std::string& path, const AudioFormat* format = nullptr,
                         int rawRate = 8000);
    /// Reads a file that is already in memory; `name` appears in messages.
    AudioReader(std::string name, std::span<const std::uint8_t> bytes);

    [[nodiscard]] int rate() const { return rate_; }
    [[nodiscard]] int channels() const { return channels_; }
    /// Frames, one sample per channel each, when the input tells before its end.
    [[nodiscard]] std::optional<std::uint64_t> frames() const { return frames_; }
    [[nodiscard]] const std::string& path() const { return input_.path(); }

    /// Whole frames, as many as there are and `samples` holds; fewer only at the end.
    std::size_t read(std::span<std::int16_t> samples);

  private:
    /// What libsndfile reads: samples without a header, from where the input stands.
    struct Stream {
        InputFile* input;
        std::optional<std::uint64_t> left; // bytes of samples, where known
        std::uint64_t given = 0;
        std::exception_ptr fault{}; // of a read, which must not pass through libsndfile
    };

    void open(const AudioFormat* format, int rawRate);
    void openPlain(int sndfile, std::uint32_t frameBytes, std::optional<std::uint64_t> bytes);
    void openOther(const AudioFormat* format);
    std::size_t readFrames(std::span<std::int16_t> samples);
    void checkEnd();

    InputFile input_;
    std::unique_ptr<Stream> stream_;
    SndfileHandle file_;
    int rate_ = 0, channels_ = 0;
    std::uint32_t frameBytes_ = 0; // of a Stream
    bool floating_ = false;
    std::vector<float> floats_;
    std::optional<std::uint64_t> frames_;
    std::uint64_t framesRead_ = 0, clipped_ = 0;
};

} // namespace zsp::host
