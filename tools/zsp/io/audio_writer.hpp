// Audio files of one channel, written block by block.
#pragma once

#include "tools/zsp/io/audio_reader.hpp"

#include <cstdint>
#include <exception>
#include <optional>
#include <span>
#include <string>

namespace zsp::host {

/// Writes any kind of file that libsndfile writes, on pipes too.
class AudioWriter {
  public:
    /// Without a format the extension decides, AU on standard output; another extension is a
    /// UsageError. Without an encoding the samples are linear, but in files without a header that
    /// are named for a law.
    AudioWriter(const std::string& path, const AudioFormat* wanted,
                std::optional<Encoding> encoding, int rate);
    ~AudioWriter();
    AudioWriter(const AudioWriter&) = delete;
    AudioWriter& operator=(const AudioWriter&) = delete;

    [[nodiscard]] Encoding encoding() const { return encoding_; }

    /// Linear samples; compressed by the law of the file when it has one.
    void write(std::span<const std::int16_t> samples);
    /// Code words of the file's law, as they are.
    void writeCodes(std::span<const std::uint8_t> codes);
    /// Completes the header and gives the file its name.
    void commit();

  private:
    /// What libsndfile writes to when it has no header to go back to.
    struct Stream {
        OutputFile* output;
        std::uint64_t bytes = 0;
        std::exception_ptr fault{}; // of a write, which must not pass through libsndfile
    };

    void openStream(int minor, int rate);
    void openFile(int format, int rate);
    void completeAuHeader();
    void checkCount(std::int64_t done, std::size_t wanted);

    OutputFile output_;
    Encoding encoding_ = Encoding::linear;
    Stream stream_;
    SndfileHandle file_;
    int spool_ = -1; // the file on its way to a pipe, where its header is completed at the end
    bool au_ = false;
};

} // namespace zsp::host
