// Reads through libsndfile, with our own look at headers whose sizes cannot be trusted.

#include "tools/zsp/io/audio_reader.hpp"

#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <sndfile.h>

namespace zsp::host {

namespace {

/// Whether samples are stored as numbers of which 1 is full scale.
bool isFloating(int format)
{
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_FLOAT:
    case SF_FORMAT_DOUBLE:
    case SF_FORMAT_VORBIS:
    case SF_FORMAT_OPUS:
    case SF_FORMAT_MPEG_LAYER_I:
    case SF_FORMAT_MPEG_LAYER_II:
    case SF_FORMAT_MPEG_LAYER_III:
        return true;
    default:
        return false;
    }
}

/// "is a WAV file, not a FLAC file", as far as libsndfile names them.
std::string kindMismatch(int found, const AudioFormat& wanted)
{
    SF_FORMAT_INFO info{};
    info.format = found & SF_FORMAT_TYPEMASK;
    sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info);
    return std::string("is ") + (info.name ? info.name : "something else") + ", not " + wanted.name;
}

} // namespace

void SndfileCloser::operator()(sf_private_tag* file) const
{
    sf_close(file);
}

std::string sndfileReason(sf_private_tag* file)
{
    std::string text = sf_strerror(file);
    for (const std::string_view prefix : {"System error : ", "Error : "})
        if (text.starts_with(prefix)) text.erase(0, prefix.size());
    while (!text.empty() && (text.back() == '.' || text.back() == '\n'))
        text.pop_back();
    return text;
}

AudioReader::AudioReader(const std::string& path, const AudioFormat* format, int rawRate)
    : input_(path)
{
    const AudioFormat* named = audioFormatByExtension(path);
    open(format ? format : named && named->headerless ? named : nullptr, rawRate);
}

AudioReader::AudioReader(std::string name, std::span<const std::uint8_t> bytes)
    : input_(std::move(name), bytes)
{
    open(nullptr, 0);
}

void AudioReader::open(const AudioFormat* format, int rawRate)
{
    if (input_.peek(1).empty()) throw Failure(path(), "is empty");
    if (format && format->headerless) {
        rate_ = rawRate;
        channels_ = 1;
        return openPlain(format->sndfile, format->encoding == Encoding::linear ? 2 : 1,
                         input_.size());
    }
    const std::optional<SampleHeader> header = sampleHeaderOf(input_);
    if (!header || header->sndfile == 0) return openOther(format);

    if (format && lowerCase(header->container) != format->name)
        throw Failure(path(), std::string("is ") + header->container + ", not " + format->name);
    rate_ = header->rate;
    channels_ = header->channels;
    const std::uint64_t before = header->offset;
    if (header->bytes && input_.size() && before + *header->bytes > *input_.size())
        throw Failure(path(),
                      "truncated: the header promises " + std::to_string(*header->bytes) +
                          " bytes of samples, the file holds " +
                          std::to_string(*input_.size() - std::min(before, *input_.size())));
    if (header->bytes && *header->bytes % header->frameBytes != 0)
        throw Failure(path(), "corrupt: " + std::to_string(*header->bytes) +
                                  " bytes of samples are not a whole number of frames of " +
                                  std::to_string(header->frameBytes) + " bytes");
    if (header->bytes == std::uint64_t{0}) throw Failure(path(), "holds no samples");
    input_.skipSeen(input_.peek(header->offset).size());
    std::optional<std::uint64_t> bytes = header->bytes;
    if (!bytes && input_.size()) bytes = *input_.size() - before;
    openPlain(header->sndfile, header->frameBytes, bytes);
}

// To libsndfile these are headerless samples, of which it need not know how many there are.
void AudioReader::openPlain(int sndfile, std::uint32_t frameBytes,
                            std::optional<std::uint64_t> bytes)
{
    SF_VIRTUAL_IO io{};
    io.get_filelen = [](void*) { return std::numeric_limits<sf_count_t>::max() / 2; };
    io.seek = [](sf_count_t, int, void* user) {
        return static_cast<sf_count_t>(static_cast<Stream*>(user)->given);
    };
    io.tell = [](void* user) { return static_cast<sf_count_t>(static_cast<Stream*>(user)->given); };
    io.read = [](void* target, sf_count_t count, void* user) {
        auto& stream = *static_cast<Stream*>(user);
        auto wanted = static_cast<std::uint64_t>(count);
        if (stream.left) wanted = std::min(wanted, *stream.left);
        std::size_t got = 0;
        try {
            got = stream.input->read({static_cast<std::uint8_t*>(target), wanted});
        } catch (...) {
            stream.fault = std::current_exception();
        }
        stream.given += got;
        if (stream.left) *stream.left -= got;
        return static_cast<sf_count_t>(got);
    };
    SF_INFO info{};
    info.format = SF_FORMAT_RAW | sndfile;
    info.samplerate = rate_;
    info.channels = channels_;
    stream_ = std::make_unique<Stream>(Stream{.input = &input_, .left = bytes});
    file_.reset(sf_open_virtual(&io, SFM_READ, &info, stream_.get()));
    if (!file_) throw Failure(path(), sndfileReason(nullptr));
    frameBytes_ = frameBytes;
    floating_ = isFloating(sndfile);
    if (bytes) frames_ = *bytes / frameBytes;
}

void AudioReader::openOther(const AudioFormat* format)
{
    SF_INFO info{};
    file_.reset(sf_open_fd(input_.seekableDescriptor(), SFM_READ, &info, SF_FALSE));
    if (!file_) throw Failure(path(), sndfileReason(nullptr));
    if (format && (info.format & SF_FORMAT_TYPEMASK) != (format->sndfile & SF_FORMAT_TYPEMASK))
        throw Failure(path(), kindMismatch(info.format, *format));
    rate_ = info.samplerate;
    channels_ = info.channels;
    floating_ = isFloating(info.format);
    if (info.frames == 0) throw Failure(path(), "holds no samples");
    if (info.frames > 0 && info.frames < std::numeric_limits<std::int32_t>::max())
        frames_ = static_cast<std::uint64_t>(info.frames);
}

/// One call of libsndfile's.
std::size_t AudioReader::readFrames(std::span<std::int16_t> samples)
{
    const auto channels = static_cast<std::size_t>(channels_);
    const auto wanted = static_cast<sf_count_t>(samples.size() / channels);
    if (!floating_) {
        const sf_count_t count = sf_readf_short(file_.get(), samples.data(), wanted);
        return static_cast<std::size_t>(std::max(count, sf_count_t{0}));
    }
    floats_.resize(samples.size());
    const sf_count_t got = sf_readf_float(file_.get(), floats_.data(), wanted);
    const auto count = static_cast<std::size_t>(std::max(got, sf_count_t{0}));
    for (std::size_t i = 0; i < count * channels; ++i) {
        const float scaled = floats_[i] * 32768.0F;
        const float limited = std::clamp(scaled, -32768.0F, 32767.0F);
        const bool fits = scaled >= -32768.5F && scaled <= 32768.0F; // 1 itself is no fault
        if (!fits) ++clipped_;
        samples[i] =
            std::isnan(scaled) ? std::int16_t{0} : static_cast<std::int16_t>(std::lrintf(limited));
    }
    return count;
}

std::size_t AudioReader::read(std::span<std::int16_t> samples)
{
    const auto channels = static_cast<std::size_t>(channels_);
    const std::size_t wanted = samples.size() / channels;
    std::size_t done = 0;
    while (done < wanted) { // a pipe may deliver in pieces
        const std::size_t count = readFrames(samples.subspan(done * channels));
        if (stream_ && stream_->fault) std::rethrow_exception(stream_->fault);
        if (sf_error(file_.get()) != SF_ERR_NO_ERROR)
            throw Failure(path(), sndfileReason(file_.get()));
        if (count == 0) break;
        done += count;
    }
    framesRead_ += done;
    if (done < wanted) checkEnd();
    return done * channels;
}

void AudioReader::checkEnd()
{
    if (frames_ && framesRead_ < *frames_)
        throw Failure(path(), "truncated: the header promises " + std::to_string(*frames_) +
                                  " samples, the input holds " + std::to_string(framesRead_));
    const std::uint64_t rest = stream_ ? stream_->given % frameBytes_ : 0;
    if (rest != 0)
        throw Failure(path(), countOf(rest, "byte") + " left over behind the last whole sample");
    if (framesRead_ == 0) throw Failure(path(), "holds no samples");
    if (clipped_ > 0)
        std::fprintf(stderr, "zsp: %s: %llu samples above full scale are clipped\n", path().c_str(),
                     static_cast<unsigned long long>(clipped_));
    clipped_ = 0;
}

} // namespace zsp::host
