#include "tools/zsp/io/audio.hpp"

#include "tools/zsp/io/failure.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <samplerate.h>
#include <sndfile.h>
#include <unistd.h>

namespace zsp::host {

namespace {

std::string lowerExtension(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return extension;
}

bool namesRawInput(const std::string& path)
{
    const std::string extension = lowerExtension(path);
    constexpr std::array kRaw = {".raw", ".pcm", ".sln", ".ul", ".al"};
    return std::find(kRaw.begin(), kRaw.end(), extension) != kRaw.end();
}

/// libsndfile's words for what went wrong, without its prefixes.
std::string reasonOf(SNDFILE* file)
{
    std::string text = sf_strerror(file);
    for (const std::string_view prefix : {"System error : ", "Error : "})
        if (text.starts_with(prefix)) text.erase(0, prefix.size());
    while (!text.empty() && (text.back() == '.' || text.back() == '\n'))
        text.pop_back();
    return text;
}

std::uint32_t little32(const std::uint8_t* p)
{
    return p[0] | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16 | std::uint32_t{p[3]} << 24;
}

std::uint32_t big32(const std::uint8_t* p)
{
    return std::uint32_t{p[0]} << 24 | std::uint32_t{p[1]} << 16 | std::uint32_t{p[2]} << 8 | p[3];
}

/// Where a header puts the samples.
struct DataPromise {
    std::uint64_t offset = 0, size = 0;
    std::uint32_t frameSize = 1; // bytes
};

/// Reads the header of a WAV or AU file. libsndfile corrects a size that does not fit the file
/// without a word, so this is looked at separately. Programs that write to pipes leave a size near
/// the largest possible: that is no promise.
std::optional<DataPromise> promiseOf(int descriptor)
{
    constexpr std::uint32_t kUnknown = 0x7fff'f000;
    std::array<std::uint8_t, 24> head{};
    const auto readAt = [descriptor, &head](std::uint64_t offset, std::size_t count) {
        return pread(descriptor, head.data(), count, static_cast<off_t>(offset)) ==
               static_cast<ssize_t>(count);
    };
    const auto promise = [](std::uint64_t offset, std::uint32_t size, std::uint32_t frameSize) {
        return size >= kUnknown ? std::nullopt
                                : std::optional(DataPromise{offset, size, std::max(frameSize, 1u)});
    };

    if (!readAt(0, 12)) return std::nullopt;
    if (std::memcmp(head.data(), ".snd", 4) == 0) {
        const std::uint32_t offset = big32(&head[4]);
        const std::uint32_t size = big32(&head[8]);
        if (!readAt(0, 24)) return std::nullopt;
        constexpr std::array<std::uint32_t, 8> kSampleSize = {1, 1, 1, 2, 3, 4, 4, 8};
        const std::uint32_t encoding = big32(&head[12]); // 27, A-law, has one byte as well
        const std::uint32_t channels = std::clamp(big32(&head[20]), 1u, 1024u);
        return promise(offset, size, kSampleSize[encoding < 8 ? encoding : 0] * channels);
    }
    if (std::memcmp(head.data(), "RIFF", 4) != 0 || std::memcmp(&head[8], "WAVE", 4) != 0)
        return std::nullopt;
    std::uint32_t frameSize = 1;
    for (std::uint64_t offset = 12; readAt(offset, 8);) {
        const std::uint32_t size = little32(&head[4]);
        const bool isFormat = std::memcmp(head.data(), "fmt ", 4) == 0;
        if (std::memcmp(head.data(), "data", 4) == 0) return promise(offset + 8, size, frameSize);
        if (isFormat && readAt(offset + 8, 14)) frameSize = head[12] | head[13] * 256u;
        offset += 8 + std::uint64_t{size} + size % 2;
    }
    return std::nullopt;
}

void checkPromise(const InputFile& input)
{
    const std::optional<DataPromise> promise = promiseOf(input.descriptor());
    if (!promise) return;
    const std::uint64_t held = *input.size() - std::min(promise->offset, *input.size());
    if (promise->size > held)
        throw Failure(input.path(),
                      "truncated: the header promises " + std::to_string(promise->size) +
                          " bytes of samples, the file holds " + std::to_string(held));
    if (promise->size % promise->frameSize != 0)
        throw Failure(input.path(), "corrupt: " + std::to_string(promise->size) +
                                        " bytes of samples are not a whole number of frames of " +
                                        std::to_string(promise->frameSize) + " bytes");
}

int formatOf(Encoding encoding)
{
    switch (encoding) {
    case Encoding::muLaw:
        return SF_FORMAT_ULAW;
    case Encoding::aLaw:
        return SF_FORMAT_ALAW;
    default:
        return SF_FORMAT_PCM_16;
    }
}

} // namespace

std::string_view nameOf(Encoding encoding)
{
    switch (encoding) {
    case Encoding::muLaw:
        return "mu-law";
    case Encoding::aLaw:
        return "A-law";
    default:
        return "16-bit linear";
    }
}

void SndfileCloser::operator()(sf_private_tag* file) const
{
    sf_close(file);
}

AudioReader::AudioReader(const std::string& path, Container container)
    : AudioReader(path, container, Raw{})
{
}

AudioReader::AudioReader(const std::string& path, Container container, Raw raw)
    : path_(path), input_(std::make_unique<InputFile>(path)),
      raw_(container == Container::raw ||
           (container == Container::automatic && namesRawInput(path)))
{
    if (input_->size() == std::uint64_t{0}) throw Failure(path, "is empty");
    SF_INFO info{};
    if (raw_ && raw.encoding == Encoding::linear) {
        rate_ = raw.rate;
        channels_ = 1;
        encoding_ = raw.encoding;
        if (input_->size()) frames_ = *input_->size() / 2;
        return;
    }
    if (raw_) {
        info.format = SF_FORMAT_RAW | formatOf(raw.encoding);
        info.samplerate = raw.rate;
        info.channels = 1;
    } else if (input_->size()) {
        checkPromise(*input_);
    }
    file_.reset(sf_open_fd(input_->descriptor(), SFM_READ, &info, SF_FALSE));
    if (!file_) throw Failure(path, reasonOf(nullptr));
    const int found = info.format & SF_FORMAT_TYPEMASK;
    if (container == Container::wav && found != SF_FORMAT_WAV && found != SF_FORMAT_WAVEX)
        throw Failure(path, "is not a WAV file");
    if (container == Container::au && found != SF_FORMAT_AU)
        throw Failure(path, "is not an AU file");
    rate_ = info.samplerate;
    channels_ = info.channels;
    describe(info.format, info.frames);
}

AudioReader::AudioReader(std::string name, std::span<const std::uint8_t> bytes)
    : path_(std::move(name)), memory_(std::make_unique<Memory>(Memory{bytes}))
{
    SF_VIRTUAL_IO io{};
    io.get_filelen = [](void* user) {
        return static_cast<sf_count_t>(static_cast<Memory*>(user)->bytes.size());
    };
    io.seek = [](sf_count_t offset, int whence, void* user) {
        auto& memory = *static_cast<Memory*>(user);
        const auto size = static_cast<sf_count_t>(memory.bytes.size());
        const auto position = static_cast<sf_count_t>(memory.position);
        const sf_count_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? position : size;
        memory.position = static_cast<std::size_t>(std::clamp(base + offset, sf_count_t{0}, size));
        return static_cast<sf_count_t>(memory.position);
    };
    io.read = [](void* target, sf_count_t count, void* user) {
        auto& memory = *static_cast<Memory*>(user);
        const std::size_t n =
            std::min(static_cast<std::size_t>(count), memory.bytes.size() - memory.position);
        std::memcpy(target, memory.bytes.data() + memory.position, n);
        memory.position += n;
        return static_cast<sf_count_t>(n);
    };
    io.tell = [](void* user) {
        return static_cast<sf_count_t>(static_cast<Memory*>(user)->position);
    };
    SF_INFO info{};
    file_.reset(sf_open_virtual(&io, SFM_READ, &info, memory_.get()));
    if (!file_) throw Failure(path_, reasonOf(nullptr));
    rate_ = info.samplerate;
    channels_ = info.channels;
    describe(info.format, info.frames);
}

void AudioReader::describe(int format, std::int64_t frames)
{
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_16:
        encoding_ = Encoding::linear;
        break;
    case SF_FORMAT_ULAW:
        encoding_ = Encoding::muLaw;
        break;
    case SF_FORMAT_ALAW:
        encoding_ = Encoding::aLaw;
        break;
    case SF_FORMAT_FLOAT:
    case SF_FORMAT_DOUBLE:
    case SF_FORMAT_VORBIS:
        // Full scale is 1 in these, and may be exceeded.
        sf_command(file_.get(), SFC_SET_SCALE_FLOAT_INT_READ, nullptr, SF_TRUE);
        sf_command(file_.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
        break;
    default:
        break;
    }
    if (frames > 0 && frames < std::numeric_limits<std::int32_t>::max())
        frames_ = static_cast<std::uint64_t>(frames);
    if (frames == 0) throw Failure(path_, "holds no samples");
}

// libsndfile would drop half a sample at the end of a pipe without a word.
std::size_t AudioReader::readRawWords(std::span<std::int16_t> samples)
{
    std::vector<std::uint8_t> bytes(2 * samples.size());
    const std::size_t count = input_->read(bytes);
    if (count % 2 != 0) throw Failure(path_, "an odd number of bytes cannot be 16-bit samples");
    framesRead_ += count / 2;
    if (framesRead_ == 0) throw Failure(path_, "is empty");
    for (std::size_t i = 0; i < count / 2; ++i)
        samples[i] = static_cast<std::int16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    return count / 2;
}

std::size_t AudioReader::read(std::span<std::int16_t> samples)
{
    if (raw_ && encoding_ == Encoding::linear) return readRawWords(samples);
    const auto channels = static_cast<std::size_t>(channels_);
    const std::size_t wanted = samples.size() / channels;
    std::size_t done = 0;
    while (done < wanted) { // a pipe may deliver in pieces
        const sf_count_t count = sf_readf_short(file_.get(), samples.data() + done * channels,
                                                static_cast<sf_count_t>(wanted - done));
        if (sf_error(file_.get()) != SF_ERR_NO_ERROR) throw Failure(path_, reasonOf(file_.get()));
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    framesRead_ += done;
    if (done < wanted && frames_ && framesRead_ < *frames_)
        throw Failure(path_, "truncated: the header promises " + std::to_string(*frames_) +
                                 " samples, the input holds " + std::to_string(framesRead_));
    if (done < wanted && framesRead_ == 0) throw Failure(path_, "holds no samples");
    return done * channels;
}

AudioWriter::AudioWriter(const std::string& path, Container container, Encoding encoding, int rate)
    : output_(path)
{
    if (container == Container::automatic) {
        const std::string extension = lowerExtension(path);
        const bool au = path == "-" || extension == ".au" || extension == ".snd";
        container = extension == ".wav" ? Container::wav : au ? Container::au : Container::raw;
    }
    if (container == Container::wav && !output_.seekable())
        throw UsageError("a WAV header cannot be completed on a pipe or device; use AU or raw");
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 1;
    info.format = formatOf(encoding);
    if (container == Container::wav) info.format |= SF_FORMAT_WAV;
    if (container == Container::au) info.format |= SF_FORMAT_AU;
    if (container == Container::raw) info.format |= SF_FORMAT_RAW | SF_ENDIAN_LITTLE;
    file_.reset(sf_open_fd(output_.descriptor(), SFM_WRITE, &info, SF_FALSE));
    if (!file_) throw Failure(path, reasonOf(nullptr));
}

void AudioWriter::checkCount(std::int64_t done, std::size_t wanted)
{
    if (done == static_cast<std::int64_t>(wanted)) return;
    throw Failure(output_.path(), reasonOf(file_.get()));
}

void AudioWriter::write(std::span<const std::int16_t> samples)
{
    checkCount(sf_write_short(file_.get(), samples.data(), static_cast<sf_count_t>(samples.size())),
               samples.size());
}

void AudioWriter::writeCodes(std::span<const std::uint8_t> codes)
{
    checkCount(sf_write_raw(file_.get(), codes.data(), static_cast<sf_count_t>(codes.size())),
               codes.size());
}

void AudioWriter::commit()
{
    file_.reset();
    output_.commit();
}

void requireMono(const AudioReader& reader, int rate, const std::string& coder)
{
    if (reader.rate() != rate)
        throw Failure(reader.path(), "is sampled at " + std::to_string(reader.rate()) + " Hz; " +
                                         coder + " codes " + std::to_string(rate) + " Hz");
    if (reader.channels() != 1)
        throw Failure(reader.path(), "has " + std::to_string(reader.channels()) + " channels; " +
                                         coder + " codes one");
}

Audio readAsStored(AudioReader& reader)
{
    if (reader.channels() != 1)
        throw Failure(reader.path(),
                      "has " + std::to_string(reader.channels()) + " channels; one is needed");
    Audio audio{{}, reader.rate()};
    std::array<std::int16_t, 16384> block;
    std::size_t count = block.size();
    while (count == block.size()) {
        count = reader.read(block);
        audio.samples.insert(audio.samples.end(), block.begin(), block.begin() + count);
    }
    return audio;
}

Audio resampled(const Audio& audio, int rate)
{
    if (audio.rate == rate) return audio;
    const double ratio = static_cast<double>(rate) / audio.rate;
    std::vector<float> in(audio.samples.size());
    src_short_to_float_array(audio.samples.data(), in.data(), static_cast<int>(in.size()));
    std::vector<float> out(
        static_cast<std::size_t>(std::ceil(static_cast<double>(in.size()) * ratio)) + 16);
    SRC_DATA data{};
    data.data_in = in.data();
    data.input_frames = static_cast<long>(in.size());
    data.data_out = out.data();
    data.output_frames = static_cast<long>(out.size());
    data.src_ratio = ratio;
    if (const int error = src_simple(&data, SRC_SINC_MEDIUM_QUALITY, 1))
        throw Failure(std::string("cannot convert from ") + std::to_string(audio.rate) + " to " +
                      std::to_string(rate) + " Hz: " + src_strerror(error));
    Audio result{std::vector<std::int16_t>(static_cast<std::size_t>(data.output_frames_gen)), rate};
    src_float_to_short_array(out.data(), result.samples.data(),
                             static_cast<int>(result.samples.size()));
    return result;
}

Audio readMono(AudioReader& reader)
{
    const auto channels = static_cast<std::size_t>(reader.channels());
    Audio audio{{}, reader.rate()};
    std::vector<std::int16_t> block(4096 * channels);
    std::size_t count = block.size();
    while (count == block.size()) {
        count = reader.read(block);
        for (std::size_t i = 0; i < count; i += channels) {
            int sum = 0;
            for (std::size_t c = 0; c < channels; ++c)
                sum += block[i + c];
            audio.samples.push_back(static_cast<std::int16_t>(sum / reader.channels()));
        }
    }
    if (channels > 1)
        std::fprintf(stderr, "zsp: %s: mixing %zu channels down to one\n", reader.path().c_str(),
                     channels);
    return audio;
}

Audio convertedTo(int rate, const Audio& audio, const std::string& path)
{
    if (audio.rate != rate)
        std::fprintf(stderr, "zsp: %s: converting %d Hz to %d Hz\n", path.c_str(), audio.rate,
                     rate);
    return resampled(audio, rate);
}

void writeWav(const std::string& path, std::span<const std::int16_t> samples, int rate)
{
    AudioWriter writer(path, Container::wav, Encoding::linear, rate);
    writer.write(samples);
    writer.commit();
}

} // namespace zsp::host
