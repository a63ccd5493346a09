// Voice signals: one channel of 16-bit words, whole in memory or block by block.
#pragma once

#include "tools/zsp/io/audio_reader.hpp"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

struct SRC_STATE_tag; // libsamplerate's SRC_STATE

namespace zsp::host {

/// A whole mono signal in memory.
struct Audio {
    std::vector<std::int16_t> samples;
    int rate = 8000;

    [[nodiscard]] double seconds() const
    {
        return static_cast<double>(samples.size()) / static_cast<double>(rate);
    }
};

/// Converts a signal to another rate, block by block.
class RateConverter {
  public:
    RateConverter(int from, int to);
    /// Appends what `samples` give; `last` with the last of them, which gives the rest.
    void convert(std::span<const std::int16_t> samples, bool last, std::vector<std::int16_t>& out);

  private:
    struct Closer {
        void operator()(SRC_STATE_tag* state) const;
    };
    int from_, to_;
    std::unique_ptr<SRC_STATE_tag, Closer> state_; // none when the rates are equal
    std::vector<float> in_, out_;
};

/// A file's signal as one channel at a rate that is wanted: channels are mixed down and the rate is
/// converted where they differ, and standard error is told.
class VoiceInput {
  public:
    /// `rate` 0 is the file's own.
    VoiceInput(AudioReader& reader, int rate);

    [[nodiscard]] int rate() const { return rate_; }
    /// Samples to come, when the input tells; not exact when the rate is converted.
    [[nodiscard]] std::optional<std::uint64_t> total() const;
    /// As many as there are and `samples` holds; fewer only at the end.
    std::size_t read(std::span<std::int16_t> samples);

  private:
    void fill();

    AudioReader& reader_;
    int rate_;
    RateConverter converter_;
    std::vector<std::int16_t> block_, mixed_, ready_;
    std::size_t position_ = 0; // in ready_
    bool ended_ = false;
};

/// The rate at which a voice function works on a file: 8000 Hz for files at up to that, else 16000.
int voiceRate(int fileRate);

/// Everything, as VoiceInput reads it.
Audio readMono(AudioReader& reader, int rate = 0);
/// The same signal at another rate.
Audio resampled(const Audio& audio, int rate);

void writeWav(const std::string& path, std::span<const std::int16_t> samples, int rate);

} // namespace zsp::host
