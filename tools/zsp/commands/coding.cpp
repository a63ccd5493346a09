// zsp encode and zsp decode: audio files to coded speech and back.

#include "tools/zsp/cli/values.hpp"
#include "tools/zsp/codec/coded_file.hpp"
#include "tools/zsp/codec/coder.hpp"
#include "tools/zsp/codec/frame_container.hpp"
#include "tools/zsp/codec/g726_words.hpp"
#include "tools/zsp/codec/gsm_pairs.hpp"
#include "tools/zsp/codec/packing.hpp"
#include "tools/zsp/commands/coding_options.hpp"
#include "tools/zsp/commands/commands.hpp"
#include "tools/zsp/io/audio.hpp"
#include "tools/zsp/io/audio_writer.hpp"
#include "tools/zsp/io/progress.hpp"

#include <algorithm>
#include <memory>

namespace zsp::host {

namespace {

void encode(const CodingOptions& options, const Files& files)
{
    requireDistinct(files.inputs, {&files.output, 1});
    CodecSetting setting = encoderSetting(options, codecToWrite(options.wish, files.output));
    const ContainerKind* container = containerToWrite(setting, files.output);
    setting.contained = container != nullptr;
    const int bits = wordBits(options, setting);
    const int rate = setting.codec->sampleRate;
    AudioReader reader(files.inputs[0], options.format, rate);
    VoiceInput input(reader, rate);
    SpeechEncoder encoder(setting);
    Unpacker unpacker(highBitsFirst(*setting.codec) ? Packing::aal2 : Packing::rfc3551, bits);
    OutputFile output(files.output);
    Progress progress("encode", input.total());

    std::optional<GsmPairWriter> pairs;
    if (isGsmPairFile(*setting.codec, files.output)) pairs.emplace(output);
    std::vector<std::int16_t> samples(static_cast<std::size_t>(rate)); // a second
    std::vector<std::uint8_t> bytes, words;
    std::uint64_t done = 0, written = 0;
    for (std::size_t count = samples.size(); count == samples.size();) {
        count = input.read(samples);
        bytes.clear();
        encoder.encode(std::span(samples).first(count), bytes);
        if (count < samples.size()) encoder.finish(bytes);
        if (container && done == 0)
            bytes.insert(bytes.begin(), container->beginning.begin(), container->beginning.end());
        progress.update(done += count);
        if (pairs) {
            pairs->write(bytes);
            continue;
        }
        if (!options.unpacked) {
            output.write(bytes);
            continue;
        }
        words.clear();
        unpacker.unpack(bytes, words);
        words.resize(std::min<std::uint64_t>(words.size(), done - written));
        output.write(words);
        written += words.size();
    }
    if (pairs) {
        bytes.clear();
        if (pairs->hasHalf()) encoder.encode(std::vector<std::int16_t>(160), bytes);
        pairs->write(bytes);
        pairs->finish(done);
    }
    output.commit();
}

/// Turns coded bytes into samples of the output's kind.
class Sink {
  public:
    Sink(const CodingOptions& options, const CodedInput& input, const std::string& path)
        : setting_(decoderSetting(options, input.setting())), bits_(wordBits(options, setting_)),
          writer_(path, options.format, options.law, setting_.codec->sampleRate),
          law_(writer_.encoding()), unpacked_(options.unpacked),
          byWords_(bits_ > 0 && (options.unpacked || law_ != Encoding::linear)),
          unpacker_(packingOf(options, setting_), bits_), decoder_(setting_)
    {
        if (byWords_) wordDecoder_.emplace(bits_, law_);
        if (const ContainerKind* kind = containerToRead(setting_, input.path()))
            container_.emplace(*kind, input.path());
    }

    void decode(std::span<const std::uint8_t> bytes)
    {
        if (container_) {
            using Frame = ContainerReader::Frame;
            container_->take(bytes, [this](Frame what, std::span<const std::uint8_t> frame) {
                if (what == Frame::present) return decoder_.decodeFrame(frame, samples_);
                if (!setting_.postFilter && isFamily(setting_, "g728"))
                    throw Failure("a frame is lost, and concealment needs --postfilter on");
                decoder_.conceal(what == Frame::lost ? zspvFrameLost : zspvFrameNoData, samples_);
            });
            return flush();
        }
        if (!byWords_) {
            decoder_.decode(bytes, samples_);
            return flush();
        }
        // What may be filling at the end waits for it.
        unpacker_.unpack(bytes, words_);
        const std::size_t held = unpacked_ ? 0 : static_cast<std::size_t>(7 / bits_);
        const std::size_t ready = words_.size() - std::min(words_.size(), held);
        wordDecoder_->decode(std::span(words_).first(ready), samples_);
        words_.erase(words_.begin(), words_.begin() + static_cast<std::ptrdiff_t>(ready));
        flush();
    }

    void finish(const std::string& path)
    {
        if (byWords_) {
            if (!unpacked_) dropFilling(words_, bits_);
            wordDecoder_->decode(words_, samples_);
        } else if (const std::size_t rest = decoder_.finish(samples_)) {
            throw Failure(path, countOf(rest, "byte") +
                                    " left over behind the last whole frame of " +
                                    countOf(stepBytes(*setting_.codec), "byte") + "; is this " +
                                    setting_.codec->rtpName + "?");
        }
        if (container_) container_->finish();
        flush();
        if (written_ == 0) throw Failure(path, "holds no whole code word");
        writer_.commit();
    }

  private:
    void flush()
    {
        if (byWords_ && law_ != Encoding::linear) {
            codes_.assign(samples_.begin(), samples_.end());
            writer_.writeCodes(codes_);
        } else {
            writer_.write(samples_);
        }
        written_ += samples_.size();
        samples_.clear();
    }

    CodecSetting setting_;
    int bits_;
    AudioWriter writer_;
    Encoding law_;
    bool unpacked_, byWords_;
    Unpacker unpacker_;
    SpeechDecoder decoder_;
    std::optional<G726WordDecoder> wordDecoder_;
    std::optional<ContainerReader> container_;
    std::vector<std::uint8_t> words_, codes_;
    std::vector<std::int16_t> samples_;
    std::uint64_t written_ = 0;
};

void decode(const CodingOptions& options, const Files& files)
{
    requireDistinct(files.inputs, {&files.output, 1});
    CodedInput input(files.inputs[0], options.wish);
    Sink sink(options, input, files.output);
    Progress progress("decode", input.size());

    std::vector<std::uint8_t> bytes(8000);
    std::uint64_t done = 0;
    for (std::size_t count = bytes.size(); count == bytes.size();) {
        count = input.read(bytes);
        const auto block = std::span<const std::uint8_t>(bytes).first(count);
        if (options.unpacked) checkWords(input.path(), block, done, g726Bits(input.setting()));
        sink.decode(block);
        progress.update(done += count);
    }
    sink.finish(input.path());
}

auto takeOnOff(std::optional<bool>& into)
{
    return takeChoice<std::optional<bool>>({{"on", true}, {"off", false}}, into);
}

Command codingCommand(void (*run)(const CodingOptions&, const Files&),
                      const std::shared_ptr<CodingOptions>& options)
{
    return {.name = {},
            .summary = {},
            .options = codingOptions(options),
            .run = [options, run](const Files& files) {
                requireProcessor();
                run(*options, files);
            }};
}

} // namespace

Command encodeCommand()
{
    const auto options = std::make_shared<CodingOptions>();
    Command command = codingCommand(encode, options);
    command.options.push_back({"--dtx", 'd', "",
                               "Silence compression, of codecs that have it: G.723.1, G.729",
                               takeSwitch(options->dtx)});
    command.options.push_back({"--highpass", 0, "on|off",
                               "G.723.1: the filter at the encoder's start (default: on)",
                               takeOnOff(options->highPass)});
    command.name = "encode";
    command.summary = "Code an audio file with one of the codecs that zsp codecs lists";
    command.files = {{"IN"},
                     "OUT",
                     "IN is any audio file, - for standard input; it is mixed down to one channel "
                     "and converted to the codec's sampling rate where that is needed. OUT is a "
                     "file of coded speech without a header, - for standard output; a .wav file "
                     "with --codec gsm holds pairs of frames."};
    command.examples = "  zsp encode speech.wav speech.g722\n"
                       "  zsp encode --rate 24 speech.wav speech.g726\n"
                       "  sox speech.flac -t wav - | zsp encode --codec pcma - speech.al\n";
    return command;
}

Command decodeCommand()
{
    const auto options = std::make_shared<CodingOptions>();
    Command command = codingCommand(decode, options);
    command.name = "decode";
    command.summary = "Decode a file of coded speech to an audio file";
    command.files = {{"IN"},
                     "OUT",
                     "IN is a file of coded speech, - for standard input: raw frames, or a WAV or "
                     "AU file of a codec in the list. OUT is an audio file whose extension tells "
                     "its kind (" +
                         audioFormatExtensions() + "), - for standard output, which is AU."};
    command.options.push_back(
        {"--law", 'l', "linear|mu|a",
         "Samples to write (default: linear); G.726 decodes to them itself",
         takeChoice<std::optional<Encoding>>(
             {{"linear", Encoding::linear}, {"mu", Encoding::muLaw}, {"a", Encoding::aLaw}},
             options->law)});
    command.options.push_back({"--postfilter", 0, "on|off",
                               "G.723.1, G.728, G.729: the filter at the decoder's end (default: "
                               "on); "
                               "lost frames of G.728 need it",
                               takeOnOff(options->postFilter)});
    command.examples = "  zsp decode speech.g722 speech.wav\n"
                       "  zsp decode --rate 24 speech.g726 speech.flac\n"
                       "  zsp decode --codec g722 - - <speech.raw | play -t au -\n";
    return command;
}

} // namespace zsp::host
