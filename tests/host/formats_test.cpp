// Kinds of audio files: levels, lengths and containers, in files and pipes.

#include "tests/host/host.hpp"

#include <cmath>
#include <cstring>

namespace zsp::test {

namespace {

using HostFormats = Host;

Bytes floatFile(const std::vector<float>& samples)
{
    Bytes data(4 * samples.size());
    std::memcpy(data.data(), samples.data(), data.size());
    return wavOf(data, {.tag = 3, .bits = 32});
}

/// What zsp reads from a file, as words: through PCMU, which keeps what is a value of its own.
constexpr const char* kThrough = " x.ul && zsp decode x.ul out.raw";

TEST_F(HostFormats, FloatingSamplesKeepTheirLevel)
{
    // Values of mu-law's own, all far below full scale.
    put("quiet.wav",
        floatFile({0, 8.0F / 32768, -16.0F / 32768, 924.0F / 32768, -1052.0F / 32768}));
    ASSERT_EQ(zsp(std::string("encode quiet.wav") + kThrough).text, "");
    EXPECT_EQ(wordsOf(get("out.raw")), Words({0, 8, -16, 924, -1052}));

    put("loud.wav", floatFile({0.5F, 2.0F, -3.0F, 1.0F, -1.0F, std::nanf("")}));
    const Outcome loud = zsp(std::string("encode loud.wav") + kThrough);
    EXPECT_EQ(loud.text, "zsp: loud.wav: 3 samples above full scale are clipped\n");
    EXPECT_EQ(wordsOf(get("out.raw")), Words({16764, 32124, -32124, 32124, -32124, 0}));
}

TEST_F(HostFormats, EveryPlainEncodingOfAWavFile)
{
    const Words wanted = {0, 924, -1052, 16764, -15996}; // mu-law's own
    struct Row {
        std::uint32_t tag, bits;
        int shift;
    };
    for (const Row& row : {Row{1, 8, -8}, {1, 16, 0}, {1, 24, 8}, {1, 32, 16}}) {
        Bytes data;
        for (const std::int16_t x : wanted) {
            const auto wide = static_cast<std::uint32_t>(x) << std::max(row.shift, 0);
            append(data, row.bits == 8 ? static_cast<std::uint32_t>(128 + (x >> 8)) : wide,
                   static_cast<int>(row.bits / 8));
        }
        put("in.wav", wavOf(data, {.tag = row.tag, .bits = row.bits}));
        ASSERT_EQ(zsp(std::string("encode in.wav") + kThrough).text, "") << row.bits;
        const Words got = wordsOf(get("out.raw"));
        ASSERT_EQ(got.size(), wanted.size()) << row.bits;
        if (row.bits > 8) {
            EXPECT_EQ(got, wanted) << row.bits;
        }
        ASSERT_EQ(run("cat in.wav | zsp encode - y.ul").text, "");
        EXPECT_EQ(get("y.ul"), get("x.ul")) << row.bits;
    }
}

// Programs that write to a pipe leave sizes of which none is true.
TEST_F(HostFormats, StreamedLengthsAreReadToTheEnd)
{
    const Words signal = someSignal(5000);
    put("in.wav", wavFile(signal));
    ASSERT_EQ(zsp("encode in.wav wanted.ul").text, "");
    for (const std::uint32_t size : {0u, 0x7fff'f000u, 0x7fff'ffffu, 0xffff'ffffu}) {
        SCOPED_TRACE(size);
        put("open.wav", wavPromising(signal, size));
        EXPECT_EQ(zsp("encode open.wav a.ul").text, "");
        EXPECT_EQ(get("a.ul"), get("wanted.ul"));
        EXPECT_EQ(run("cat open.wav | zsp encode - b.ul").text, "");
        EXPECT_EQ(get("b.ul"), get("wanted.ul"));
    }
    // A true size ends the samples, whatever follows.
    Bytes tail = wavFile(signal);
    append(tail, "LIST");
    append(tail, 4, 4);
    append(tail, "INFO");
    put("tail.wav", tail);
    EXPECT_EQ(run("zsp encode tail.wav a.ul; cat tail.wav | zsp encode - b.ul").text, "");
    EXPECT_EQ(get("a.ul"), get("wanted.ul"));
    EXPECT_EQ(get("b.ul"), get("wanted.ul"));
}

TEST_F(HostFormats, WavOnAPipeIsReadAgain)
{
    const Words signal = someSignal(5000);
    put("in.wav", wavFile(signal));
    ASSERT_EQ(run("zsp encode in.wav a.g726; zsp decode a.g726 out.wav").text, "");
    EXPECT_EQ(run("zsp decode -f wav a.g726 - | cat >piped.wav").text, "");
    const Bytes whole = get("out.wav"), piped = get("piped.wav");
    ASSERT_EQ(piped.size(), whole.size());
    EXPECT_TRUE(std::equal(piped.begin() + 44, piped.end(), whole.begin() + 44));
    EXPECT_EQ(run("cat piped.wav | zsp encode - b.g726; zsp encode out.wav c.g726").text, "");
    EXPECT_EQ(get("b.g726"), get("c.g726"));
}

TEST_F(HostFormats, EveryKindIsWrittenAndReadAgain)
{
    put("in.wav", wavFile(someSignal(8000)));
    ASSERT_EQ(zsp("encode in.wav in.al && zsp decode in.al plain.raw").text, "");
    for (const std::string extension :
         {"wav", "au", "snd", "flac", "aiff", "aif", "caf", "w64", "rf64", "raw", "pcm", "al"}) {
        SCOPED_TRACE(extension);
        EXPECT_EQ(zsp("decode in.al out." + extension).text, "");
        EXPECT_EQ(zsp("encode out." + extension + " again.al").text, "");
        EXPECT_EQ(get("again.al"), get("in.al"));
        // And through pipes, where libsndfile cannot go back to complete a header.
        const std::string kind = extension == "snd"   ? "au"
                                 : extension == "aif" ? "aiff"
                                 : extension == "pcm" ? "raw"
                                                      : extension;
        EXPECT_EQ(
            run("zsp decode -f " + kind + " in.al - | zsp encode -f " + kind + " - piped.al").text,
            "");
        EXPECT_EQ(get("piped.al"), get("in.al"));
    }
    EXPECT_EQ(zsp("decode in.al out.ogg").text, ""); // not the same samples again
    EXPECT_GT(get("out.ogg").size(), 1000u);
    for (const std::string name : {"out.mp4", "out", "out.g722"}) {
        const Outcome outcome = zsp("decode in.al " + name);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_NE(outcome.text.find(".wav .au .flac .aiff"), std::string::npos) << outcome.text;
        EXPECT_FALSE(fs::exists(path(name)));
    }
    EXPECT_EQ(zsp("encode in.wav out.wav -c pcmu").status, 2);
}

} // namespace

} // namespace zsp::test
