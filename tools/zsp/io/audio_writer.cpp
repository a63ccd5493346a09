// Writes through libsndfile, and WAV and AU to pipes by itself.

#include "tools/zsp/io/audio_writer.hpp"

#include "tools/zsp/io/failure.hpp"

#include <algorithm>
#include <array>
#include <sndfile.h>
#include <unistd.h>
#include <utility>

namespace zsp::host {

namespace {

const AudioFormat& formatFor(const std::string& path, const AudioFormat* format)
{
    if (format) return *format;
    if (path == "-" || path.starts_with("/dev/")) return *audioFormatByName("au");
    format = audioFormatByExtension(path);
    if (format) return *format;
    const std::string extension = lowerExtension(path);
    throw UsageError(path + ": " +
                     (extension.empty() ? "has no extension that tells the kind of audio file"
                                        : extension + " is no extension of an audio file") +
                     "; there are " + audioFormatExtensions() + ", or name the kind with --format");
}

/// By the encoding, in its order.
template <typename T>
T byEncoding(Encoding encoding, const std::array<T, 3>& values)
{
    return values[static_cast<std::size_t>(encoding)];
}

constexpr std::array kMinor = {SF_FORMAT_PCM_16, SF_FORMAT_ULAW, SF_FORMAT_ALAW};

} // namespace

AudioWriter::AudioWriter(const std::string& path, const AudioFormat* wanted,
                         std::optional<Encoding> encoding, int rate)
    : output_(path), stream_{.output = &output_}
{
    const AudioFormat& format = formatFor(path, wanted);
    encoding_ = encoding.value_or(format.encoding);
    const int minor = byEncoding<int>(encoding_, {kMinor[0], kMinor[1], kMinor[2]});
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 1;
    info.format = format.sndfile;
    if (encoding_ != Encoding::linear || format.headerless)
        info.format = (format.sndfile & ~SF_FORMAT_SUBMASK) | minor;
    if (!sf_format_check(&info))
        throw UsageError(path + ": " + format.name + " holds no " + std::string(nameOf(encoding_)) +
                         " samples at " + std::to_string(rate) + " Hz");

    const int container = format.sndfile & SF_FORMAT_TYPEMASK;
    if (container == SF_FORMAT_AU) {
        au_ = true;
        output_.write(auHeader(byEncoding<std::uint32_t>(encoding_, {3, 1, 27}), rate));
        openStream(minor | SF_ENDIAN_BIG, rate);
    } else if (container == SF_FORMAT_WAV && !output_.seekable()) {
        const int bits = encoding_ == Encoding::linear ? 16 : 8;
        output_.write(wavHeader(byEncoding<std::uint32_t>(encoding_, {1, 7, 6}), rate, bits));
        openStream(minor | SF_ENDIAN_LITTLE, rate);
    } else if (container == SF_FORMAT_RAW) {
        openStream(minor | SF_ENDIAN_LITTLE, rate);
    } else {
        openFile(info.format, rate);
    }
}

AudioWriter::~AudioWriter()
{
    if (spool_ >= 0) close(spool_);
}

void AudioWriter::openStream(int minor, int rate)
{
    SF_VIRTUAL_IO io{};
    io.get_filelen = [](void* user) {
        return static_cast<sf_count_t>(static_cast<Stream*>(user)->bytes);
    };
    io.tell = io.get_filelen;
    io.seek = [](sf_count_t, int, void* user) {
        return static_cast<sf_count_t>(static_cast<Stream*>(user)->bytes);
    };
    io.write = [](const void* bytes, sf_count_t count, void* user) -> sf_count_t {
        auto& stream = *static_cast<Stream*>(user);
        try {
            stream.output->write(
                {static_cast<const std::uint8_t*>(bytes), static_cast<std::size_t>(count)});
        } catch (...) {
            stream.fault = std::current_exception();
            return 0;
        }
        stream.bytes += static_cast<std::uint64_t>(count);
        return count;
    };
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 1;
    info.format = SF_FORMAT_RAW | minor;
    file_.reset(sf_open_virtual(&io, SFM_WRITE, &info, &stream_));
    if (!file_) throw Failure(output_.path(), sndfileReason(nullptr));
}

void AudioWriter::openFile(int format, int rate)
{
    if (!output_.seekable()) spool_ = unnamedFile();
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 1;
    info.format = format;
    file_.reset(
        sf_open_fd(spool_ >= 0 ? spool_ : output_.descriptor(), SFM_WRITE, &info, SF_FALSE));
    if (!file_) throw Failure(output_.path(), sndfileReason(nullptr));
}

void AudioWriter::checkCount(std::int64_t done, std::size_t wanted)
{
    if (stream_.fault) std::rethrow_exception(stream_.fault);
    if (done == static_cast<std::int64_t>(wanted)) return;
    throw Failure(output_.path(), sndfileReason(file_.get()));
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

/// The length, now that it is known; of what does not fit 32 bits it stays open.
void AudioWriter::completeAuHeader()
{
    if (!output_.seekable() || stream_.bytes >= 0xffff'ffff) return;
    const auto size = static_cast<std::uint32_t>(stream_.bytes);
    const std::uint32_t swapped = __builtin_bswap32(size);
    constexpr int kPlace = 8;
    if (lseek(output_.descriptor(), kPlace, SEEK_SET) != kPlace ||
        ::write(output_.descriptor(), &swapped, sizeof swapped) != sizeof swapped)
        failWithErrno(output_.path());
}

void AudioWriter::commit()
{
    file_.reset();
    if (au_) completeAuHeader();
    if (spool_ >= 0) {
        std::array<std::uint8_t, 65536> block;
        lseek(spool_, 0, SEEK_SET);
        for (std::ptrdiff_t count = 0; (count = read(spool_, block.data(), block.size())) > 0;)
            output_.write(std::span(block).first(static_cast<std::size_t>(count)));
        close(std::exchange(spool_, -1));
    }
    output_.commit();
}

} // namespace zsp::host
