// Brings signals to one channel, a rate and 16 bits.

#include "tools/zsp/io/audio.hpp"

#include "tools/zsp/io/audio_writer.hpp"
#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <samplerate.h>

namespace zsp::host {

void RateConverter::Closer::operator()(SRC_STATE_tag* state) const
{
    src_delete(state);
}

RateConverter::RateConverter(int from, int to) : from_(from), to_(to)
{
    if (from == to) return;
    int error = 0;
    state_.reset(src_new(SRC_SINC_MEDIUM_QUALITY, 1, &error));
    if (!state_ || !src_is_valid_ratio(static_cast<double>(to) / from))
        throw Failure(format("cannot convert from %d to %d Hz", from, to));
}

void RateConverter::convert(std::span<const std::int16_t> samples, bool last,
                            std::vector<std::int16_t>& out)
{
    if (!state_) {
        out.insert(out.end(), samples.begin(), samples.end());
        return;
    }
    in_.resize(samples.size());
    src_short_to_float_array(samples.data(), in_.data(), static_cast<int>(in_.size()));
    out_.resize(8192);
    SRC_DATA data{};
    data.data_in = in_.data();
    data.input_frames = static_cast<long>(in_.size());
    data.data_out = out_.data();
    data.output_frames = static_cast<long>(out_.size());
    data.src_ratio = static_cast<double>(to_) / from_;
    data.end_of_input = last ? 1 : 0;
    do {
        if (const int error = src_process(state_.get(), &data))
            throw Failure(
                format("cannot convert from %d to %d Hz: %s", from_, to_, src_strerror(error)));
        const auto made = static_cast<std::size_t>(data.output_frames_gen);
        out.resize(out.size() + made);
        src_float_to_short_array(out_.data(), out.data() + out.size() - made,
                                 static_cast<int>(made));
        data.data_in += data.input_frames_used;
        data.input_frames -= data.input_frames_used;
    } while (data.input_frames > 0 || data.output_frames_gen > 0);
}

VoiceInput::VoiceInput(AudioReader& reader, int rate)
    : reader_(reader), rate_(rate ? rate : reader.rate()), converter_(reader.rate(), rate_),
      block_(4096 * static_cast<std::size_t>(reader.channels()))
{
    const std::string path = reader.path() == "-" ? "standard input" : reader.path();
    if (reader.channels() > 1)
        std::fprintf(stderr, "zsp: %s: mixing %d channels down to one\n", path.c_str(),
                     reader.channels());
    if (reader.rate() != rate_)
        std::fprintf(stderr, "zsp: %s: converting %d Hz to %d Hz\n", path.c_str(), reader.rate(),
                     rate_);
}

std::optional<std::uint64_t> VoiceInput::total() const
{
    if (!reader_.frames()) return std::nullopt;
    return *reader_.frames() * static_cast<std::uint64_t>(rate_) /
           static_cast<std::uint64_t>(reader_.rate());
}

void VoiceInput::fill()
{
    const auto channels = static_cast<std::size_t>(reader_.channels());
    const std::size_t count = reader_.read(block_);
    ended_ = count < block_.size();
    mixed_.clear();
    for (std::size_t i = 0; i < count; i += channels) {
        int sum = 0;
        for (std::size_t c = 0; c < channels; ++c)
            sum += block_[i + c];
        mixed_.push_back(static_cast<std::int16_t>(sum / reader_.channels()));
    }
    ready_.clear();
    position_ = 0;
    converter_.convert(mixed_, ended_, ready_);
}

std::size_t VoiceInput::read(std::span<std::int16_t> samples)
{
    std::size_t done = 0;
    while (done < samples.size()) {
        if (position_ == ready_.size()) {
            if (ended_) break;
            fill();
            continue;
        }
        const std::size_t count = std::min(samples.size() - done, ready_.size() - position_);
        std::copy_n(ready_.begin() + static_cast<std::ptrdiff_t>(position_), count,
                    samples.begin() + static_cast<std::ptrdiff_t>(done));
        position_ += count;
        done += count;
    }
    return done;
}

int voiceRate(int fileRate)
{
    return fileRate <= 8000 ? 8000 : 16000;
}

Audio readMono(AudioReader& reader, int rate)
{
    VoiceInput input(reader, rate);
    Audio audio{{}, input.rate()};
    std::array<std::int16_t, 16384> block;
    for (std::size_t count = block.size(); count == block.size();) {
        count = input.read(block);
        audio.samples.insert(audio.samples.end(), block.begin(), block.begin() + count);
    }
    return audio;
}

Audio resampled(const Audio& audio, int rate)
{
    Audio result{{}, rate};
    RateConverter(audio.rate, rate).convert(audio.samples, true, result.samples);
    return result;
}

void writeWav(const std::string& path, std::span<const std::int16_t> samples, int rate)
{
    AudioWriter writer(path, audioFormatByName("wav"), Encoding::linear, rate);
    writer.write(samples);
    writer.commit();
}

} // namespace zsp::host
