// zsp encode and zsp decode: what they write is what the libraries compute, for every codec, kind
// of file and order of code words.

#include "tests/host/host.hpp"

#include "zspsc/g722.h"
#include "zspsc/g726.h"
#include "zspvoice.h"

#include <array>

namespace zsp::test {

namespace {

struct Rate {
    int kbit, code, bits;
};
constexpr std::array<Rate, 4> kRates = {{{16, zspG726Rate16, 2},
                                         {24, zspG726Rate24, 3},
                                         {32, zspG726Rate32, 4},
                                         {40, zspG726Rate40, 5}}};

Bytes libraryCodes(const Words& samples, const Rate& rate)
{
    Words uniform;
    for (const std::int16_t x : samples)
        uniform.push_back(static_cast<std::int16_t>(x >> 2));
    Bytes state(88), codes(samples.size());
    EXPECT_EQ(zspsEncodeInit_G726_16s8u(state.data(), rate.code), zspStsNoErr);
    EXPECT_EQ(zspsEncode_G726_16s8u(state.data(), uniform.data(), codes.data(),
                                    static_cast<std::int32_t>(codes.size())),
              zspStsNoErr);
    return codes;
}

Words libraryOutput(const Bytes& codes, const Rate& rate, int law)
{
    Bytes state(92);
    Words out(codes.size());
    EXPECT_EQ(zspsDecodeInit_G726_8u16s(state.data(), rate.code, law), zspStsNoErr);
    EXPECT_EQ(zspsDecode_G726_8u16s(state.data(), codes.data(), out.data(),
                                    static_cast<std::int32_t>(codes.size())),
              zspStsNoErr);
    return out;
}

/// Bit by bit: code word after code word, bits upwards or downwards, into bytes the same way.
Bytes packed(const Bytes& codes, int bits, bool lowFirst)
{
    Bytes bytes((codes.size() * static_cast<std::size_t>(bits) + 7) / 8);
    std::size_t position = 0;
    for (const std::uint8_t code : codes)
        for (int i = 0; i < bits; ++i, ++position) {
            const int from = lowFirst ? i : bits - 1 - i;
            const auto at = static_cast<int>(position % 8);
            if (code >> from & 1)
                bytes[position / 8] |= static_cast<std::uint8_t>(1 << (lowFirst ? at : 7 - at));
        }
    return bytes;
}

using HostCoding = Host;

TEST_F(HostCoding, G726FilesHoldWhatTheLibraryComputes)
{
    const Words signal = someSignal(20003); // not a whole number of blocks or packed groups
    put("in.wav", wavFile(signal));
    for (const Rate& rate : kRates) {
        const Bytes codes = libraryCodes(signal, rate);
        Words wanted = libraryOutput(codes, rate, zspG726LawLinear);
        for (std::int16_t& x : wanted)
            x = static_cast<std::int16_t>(x * 4);
        const std::pair<const char*, Bytes> orders[] = {
            {"-u -c g726", codes},
            {"-c g726", packed(codes, rate.bits, true)},
            {"-c g726aal2", packed(codes, rate.bits, false)}};
        for (const auto& [codec, bytes] : orders) {
            const std::string options = std::string(codec) + " -r " + std::to_string(rate.kbit);
            SCOPED_TRACE(options);
            EXPECT_EQ(zsp("encode " + options + " in.wav codes").text, "");
            EXPECT_EQ(get("codes"), bytes);
            EXPECT_EQ(zsp("decode " + options + " codes out.raw").text, "");
            Bytes got = get("out.raw");
            // At 16 kbit/s the filling of the last byte cannot be told from code words.
            if (rate.kbit == 16) {
                EXPECT_LE(got.size(), 2 * signal.size() + 6);
                got.resize(2 * signal.size());
            }
            EXPECT_EQ(got, littleEndian(wanted));
        }
    }
}

TEST_F(HostCoding, G726DecodesToLawsInEveryContainer)
{
    const Rate& rate = kRates[2];
    const Bytes codes = libraryCodes(someSignal(9000), rate);
    put("codes", codes);
    const std::pair<std::string, int> laws[] = {{"mu", zspG726LawMu}, {"a", zspG726LawA}};
    for (const auto& [law, lawCode] : laws) {
        Bytes wanted;
        for (const std::int16_t word : libraryOutput(codes, rate, lawCode))
            wanted.push_back(static_cast<std::uint8_t>(word));
        const std::string headerless = law == "mu" ? "out.ul" : "out.al";
        ASSERT_EQ(zsp("decode -u -c g726 codes " + headerless).text, "");
        EXPECT_EQ(get(headerless), wanted);
        ASSERT_EQ(zsp("encode -u -c g726 " + headerless + " again.raw").text, "");
        // Whatever the container, encoding it again gives the same code words.
        for (const std::string name : {"out.wav", "out.au", "out.aiff"}) {
            SCOPED_TRACE(law + " " + name);
            ASSERT_EQ(zsp("decode -u -c g726 -l " + law + " codes " + name).text, "");
            const Bytes file = get(name);
            EXPECT_NE(std::search(file.begin(), file.end(), wanted.begin(), wanted.end()),
                      file.end());
            ASSERT_EQ(zsp("encode -u -c g726 " + name + " again").text, "");
            EXPECT_EQ(get("again"), get("again.raw"));
        }
        EXPECT_EQ(zsp("decode -u -c g726 -l " + law + " codes out.flac").status, 2);
    }
}

/// Encoder and decoder of the library, whole signal in one call.
Bytes libraryG722(Words samples, int mode, Words& decoded)
{
    Bytes state(144);
    std::array<std::int16_t, 24> delayLine{};
    const auto length = static_cast<std::int32_t>(samples.size());
    zspsSBADPCMEncodeInit_G722_16s(state.data());
    zspsQMFEncode_G722_16s(samples.data(), samples.data(), length, delayLine.data());
    zspsSBADPCMEncode_G722_16s(samples.data(), samples.data(), length, state.data());
    Bytes bytes;
    for (std::size_t i = 0; i < samples.size(); i += 2)
        bytes.push_back(
            static_cast<std::uint8_t>((samples[i + 1] * 64 + samples[i]) & (mode == 1   ? 0xff
                                                                            : mode == 2 ? 0xfe
                                                                                        : 0xfc)));
    decoded.clear();
    for (const std::uint8_t byte : bytes) {
        decoded.push_back(byte & 63);
        decoded.push_back(byte >> 6);
    }
    delayLine = {};
    zspsSBADPCMDecodeInit_G722_16s(state.data());
    zspsSBADPCMDecode_G722_16s(decoded.data(), decoded.data(), length,
                               static_cast<std::int16_t>(mode), state.data());
    zspsQMFDecode_G722_16s(decoded.data(), decoded.data(), length, delayLine.data());
    return bytes;
}

TEST_F(HostCoding, G722FilesHoldWhatTheLibraryComputes)
{
    Words signal = someSignal(40001); // not whole: the last byte is filled with a zero sample
    put("in.wav", wavFile(signal, 16000));
    signal.push_back(0);
    const std::string rates[] = {"64", "56k", "48000"};
    for (const int mode : {1, 2, 3}) {
        const std::string options = " --rate " + rates[mode - 1] + " ";
        Words decoded;
        const Bytes bytes = libraryG722(signal, mode, decoded);
        ASSERT_EQ(zsp("encode" + options + "in.wav speech.g722").text, "");
        EXPECT_EQ(get("speech.g722"), bytes) << options;
        ASSERT_EQ(zsp("decode -c G722" + options + "- - <speech.g722 >out.au").text, "");
        ASSERT_EQ(zsp("decode" + options + "speech.g722 out.raw").text, "");
        EXPECT_EQ(get("out.raw"), littleEndian(decoded)) << options;
        ASSERT_EQ(zsp("encode -c g722" + options + "- again <out.au").text, "");
        EXPECT_EQ(get("again").size(), bytes.size());
    }
}

// Every row by its RTP name, its family and rate, and what its own functions give.
TEST_F(HostCoding, EveryCodecOfTheTable)
{
    for (int i = 0; i < zspvCodecCount(); ++i) {
        const ZspvCodec& codec = *zspvCodecByIndex(i);
        const Words signal = someSignal(static_cast<std::size_t>(codec.frameSamples) * 101);
        put("in.wav", wavFile(signal, static_cast<std::uint32_t>(codec.sampleRate)));
        for (int r = 0; r < codec.bitRateCount; ++r) {
            SCOPED_TRACE(std::string(codec.rtpName) + " " + std::to_string(codec.bitRates[r]));
            ZspvParams params{};
            params.structSize = sizeof params;
            params.bitRate = codec.bitRates[r];
            ZspvEncoder* encoder = nullptr;
            ZspvDecoder* decoder = nullptr;
            ASSERT_EQ(zspvEncoderCreate(&codec, &params, &encoder), zspStsNoErr);
            ASSERT_EQ(zspvDecoderCreate(&codec, &params, &decoder), zspStsNoErr);
            Bytes coded, frame(static_cast<std::size_t>(codec.maxFrameBytes));
            Words decoded, block(static_cast<std::size_t>(codec.frameSamples));
            for (std::size_t n = 0; n < signal.size(); n += block.size()) {
                std::int32_t length = 0, count = 0;
                ASSERT_EQ(zspvEncode(encoder, signal.data() + n, codec.frameSamples, frame.data(),
                                     codec.maxFrameBytes, &length, nullptr),
                          zspStsNoErr);
                coded.insert(coded.end(), frame.begin(), frame.begin() + length);
                ASSERT_EQ(zspvDecode(decoder, zspvFrameSpeech, frame.data(), length, block.data(),
                                     codec.frameSamples, &count),
                          zspStsNoErr);
                decoded.insert(decoded.end(), block.begin(), block.begin() + count);
            }
            zspvEncoderDestroy(encoder);
            zspvDecoderDestroy(decoder);

            const std::string file = "speech." + std::string(codec.fileExtension);
            const std::string rate = " -r " + std::to_string(codec.bitRates[r]) + " ";
            ASSERT_EQ(zsp("encode -c " + std::string(codec.rtpName) + rate + "in.wav a").text, "");
            EXPECT_EQ(get("a"), coded);
            ASSERT_EQ(zsp("encode" + rate + "in.wav " + file).text, "");
            EXPECT_EQ(get(file), coded);
            ASSERT_EQ(zsp("decode" + rate + file + " out.wav").text, "");
            EXPECT_EQ(get("out.wav"),
                      wavFile(decoded, static_cast<std::uint32_t>(codec.sampleRate)));
        }
    }
}

TEST_F(HostCoding, TheUsualRateIsTheDefault)
{
    put("in.wav", wavFile(someSignal(8000)));
    ASSERT_EQ(zsp("encode in.wav a.g726; zsp encode -r 32 in.wav b.g726").text, "");
    EXPECT_EQ(get("a.g726"), get("b.g726"));
    EXPECT_EQ(get("a.g726").size(), 4000u);
    put("wide.wav", wavFile(someSignal(8000), 16000));
    ASSERT_EQ(zsp("encode wide.wav a.g722; zsp encode -r 64k wide.wav b.g722").text, "");
    EXPECT_EQ(get("a.g722"), get("b.g722"));
}

TEST_F(HostCoding, ThroughPipes)
{
    put("in.wav", wavFile(someSignal(30000)));
    ASSERT_EQ(zsp("encode -c g726 in.wav codes && zsp decode -c g726 codes out.au").text, "");
    ASSERT_EQ(zsp("encode -c g726 - - <in.wav | cat >codes.piped").text, "");
    EXPECT_EQ(get("codes.piped"), get("codes"));
    ASSERT_EQ(zsp("decode -c g726 - - <codes | cat >out.piped").text, "");
    const Bytes piped = get("out.piped"), whole = get("out.au");
    ASSERT_EQ(piped.size(), whole.size());
    EXPECT_TRUE(std::equal(piped.begin() + 24, piped.end(), whole.begin() + 24));
    // A pipe's AU header leaves the length open, and is understood again.
    ASSERT_EQ(zsp("encode -c g726 - again <out.piped").text, "");
    ASSERT_EQ(zsp("encode -c g726 out.au again.file").text, "");
    EXPECT_EQ(get("again"), get("again.file"));
}

TEST_F(HostCoding, OtherSignalsAreConvertedWithAWord)
{
    put("stereo.wav", wavFile(someSignal(32000), 16000, 2));
    const Outcome outcome = zsp("encode stereo.wav out.g726");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.text, "zsp: stereo.wav: mixing 2 channels down to one\n"
                            "zsp: stereo.wav: converting 16000 Hz to 8000 Hz\n");
    EXPECT_EQ(get("out.g726").size(), 4000u);
}

} // namespace

} // namespace zsp::test
