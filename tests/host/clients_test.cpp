// SoX and FFmpeg as clients: what they write zsp reads, and the other way round, in files and
// pipes.

#include "tests/host/host.hpp"

namespace zsp::test {

namespace {

class HostClients : public Host {
  protected:
    void SetUp() override
    {
        Host::SetUp();
        if (shell("sox --version").status != 0 || shell("ffmpeg -version").status != 0)
            GTEST_SKIP() << "SoX and FFmpeg are not installed";
        put("in.wav", wavFile(someSignal(16000)));
        ASSERT_EQ(zsp("encode in.wav wanted.al && zsp decode wanted.al wanted.raw").text, "");
        ASSERT_EQ(zsp("decode wanted.al plain.wav").text, ""); // A-law's values: every way is exact
    }

    static constexpr const char* kFfmpeg = "ffmpeg -loglevel error -y ";
};

TEST_F(HostClients, ZspReadsWhatTheyWrite)
{
    const std::string ffmpeg = kFfmpeg;
    const std::vector<std::string> writers = {
        "sox -D plain.wav x.wav; zsp encode x.wav x.al",
        "sox -D plain.wav -e float x.wav; zsp encode x.wav x.al",
        "sox -D plain.wav -b 24 x.wav; zsp encode x.wav x.al",
        "sox -D plain.wav x.flac; zsp encode x.flac x.al",
        "sox -D plain.wav x.aiff; zsp encode x.aiff x.al",
        "sox -D plain.wav x.au; zsp encode x.au x.al",
        "sox -D plain.wav -e a-law x.wav; zsp encode x.wav x.al",
        "sox -D plain.wav -t wav - | zsp encode - x.al",
        "sox -D plain.wav -t wav - | cat >x.wav; zsp encode x.wav x.al",
        "sox -D plain.wav -e float -t wav - | zsp encode - x.al",
        "sox -D plain.wav -t au - | zsp encode - x.al",
        "sox -D plain.wav -t flac - | zsp encode - x.al",
        "sox -D plain.wav -t raw - | zsp encode -f raw - x.al",
        ffmpeg + "-i plain.wav x.wav; zsp encode x.wav x.al",
        ffmpeg + "-i plain.wav -c:a pcm_f32le x.wav; zsp encode x.wav x.al",
        ffmpeg + "-i plain.wav -c:a pcm_f64le x.wav; zsp encode x.wav x.al",
        ffmpeg + "-i plain.wav x.flac; zsp encode x.flac x.al",
        ffmpeg + "-i plain.wav x.caf; zsp encode x.caf x.al",
        ffmpeg + "-i plain.wav -f wav - | zsp encode - x.al",
        ffmpeg + "-i plain.wav -f wav - | cat >x.wav; zsp encode x.wav x.al",
        ffmpeg + "-i plain.wav -f wav -c:a pcm_f32le - | zsp encode - x.al",
        ffmpeg + "-i plain.wav -f w64 - | zsp encode - x.al",
        ffmpeg + "-i plain.wav -f au - | zsp encode - x.al",
    };
    for (const std::string& writer : writers) {
        fs::remove(path("x.al"));
        EXPECT_EQ(run(writer + "; rm -f x.wav").text, "") << writer;
        EXPECT_EQ(get("x.al"), get("wanted.al")) << writer;
    }
}

TEST_F(HostClients, TheyReadWhatZspWrites)
{
    const std::string ffmpeg = kFfmpeg;
    const std::string toRaw = " -t raw -e signed -b 16 x.raw";
    const std::vector<std::string> readers = {
        "zsp decode wanted.al x.wav; sox x.wav" + toRaw,
        "zsp decode wanted.al x.flac; sox x.flac" + toRaw,
        "zsp decode wanted.al x.aiff; sox x.aiff" + toRaw,
        "zsp decode wanted.al x.au; sox x.au" + toRaw,
        "zsp decode -l a wanted.al x.wav; sox x.wav" + toRaw,
        "zsp decode wanted.al - | sox -t au -" + toRaw,
        "zsp decode -f wav wanted.al - | sox -t wav -" + toRaw,
        "zsp decode -f flac wanted.al - | sox -t flac -" + toRaw,
        "zsp decode -f wav -l a wanted.al - | sox -t wav -" + toRaw,
        "zsp decode wanted.al x.caf; " + ffmpeg + "-i x.caf -f s16le x.raw",
        "zsp decode wanted.al x.w64; " + ffmpeg + "-i x.w64 -f s16le x.raw",
        "zsp decode wanted.al x.rf64; " + ffmpeg + "-i x.rf64 -f s16le x.raw",
        "zsp decode -f wav wanted.al - | " + ffmpeg + "-i - -f s16le x.raw 2>/dev/null",
        "zsp decode wanted.al - | " + ffmpeg + "-i - -f s16le x.raw",
    };
    for (const std::string& reader : readers) {
        fs::remove(path("x.raw"));
        EXPECT_EQ(run(reader).text, "") << reader;
        EXPECT_EQ(get("x.raw"), get("wanted.raw")) << reader;
    }
}

// Coded speech itself, where they know the codec: the same bytes, or near the same sound.
TEST_F(HostClients, CodedSpeechIsTheSameForThem)
{
    const std::string ffmpeg = kFfmpeg;
    ASSERT_EQ(run("zsp encode plain.wav y.ul; zsp decode y.ul y.wav; sox -D y.wav x.ul; cmp x.ul "
                  "y.ul")
                  .text,
              "");
    ASSERT_EQ(
        run(ffmpeg + "-f alaw -ar 8000 -i wanted.al -f s16le x.raw; cmp x.raw wanted.raw").text,
        "");
    // GSM: SoX has the same bits both ways, FFmpeg a decoder that does not saturate.
    EXPECT_EQ(run("zsp encode plain.wav y.gsm; sox -D plain.wav x.gsm; cmp x.gsm y.gsm; "
                  "zsp decode x.gsm y.raw; sox x.gsm -t raw x.raw; cmp x.raw y.raw; " +
                  ffmpeg + "-i y.gsm theirs.wav; zsp decode y.gsm y.wav; " + ffmpeg +
                  "-i y.wav ours.wav")
                  .text,
              "");
    EXPECT_EQ(get("theirs.wav").size(), get("ours.wav").size());
    // The same in pairs of frames, in a WAV file, which they fill up with silence.
    EXPECT_EQ(run("sox -D plain.wav -e gsm-full-rate x.wav; zsp decode x.wav y.raw; "
                  "sox x.wav -t raw x.raw; cmp -n $(stat -c %s x.raw) x.raw y.raw; "
                  "head -c -3 x.wav | zsp decode - y.raw 2>&1 | grep -c 'left over'")
                  .text,
              "1\n");
    // Written, the blocks are the same, whether frames or pairs are whole or not; SoX counts a byte
    // that only makes the length even, and both read either file.
    EXPECT_EQ(run("for s in 100 1600 1760 1900; do sox -D plain.wav x.wav trim 0 ${s}s; "
                  "zsp encode --codec gsm x.wav y.wav; zsp encode -c gsm - v.wav <x.wav; "
                  "sox -D x.wav -e gsm-full-rate z.wav; cmp y.wav v.wav; cmp -i 60 y.wav z.wav; "
                  "zsp decode y.wav y.raw; zsp decode z.wav z.raw; cmp y.raw z.raw; "
                  "[ $(soxi -s y.wav) = $(soxi -s z.wav) ]; echo $?; sox y.wav -t raw x.raw; cmp "
                  "-n $(stat -c %s x.raw) x.raw y.raw; "
                  "done; " +
                  ffmpeg + "-i y.wav v.wav; zsp encode -c gsm x.wav /dev/stdout | wc -c")
                  .text,
              "0\n0\n0\n0\n396\n");
    // G.723.1: FFmpeg hears the same at both rates.
    for (const std::string rate : {"6.3", "5.3"})
        EXPECT_EQ(run("zsp encode --rate " + rate + " plain.wav y.g723; zsp decode y.g723 y.raw; " +
                      ffmpeg + "-f g723_1 -i y.g723 -f s16le x.raw; cmp x.raw y.raw")
                      .text,
                  "");
    // FFmpeg's WAV and AU files of coded speech are decoded without a word about the codec.
    for (const std::string coder :
         {"-ar 8000 -c:a pcm_mulaw x.wav", "-ar 8000 -c:a pcm_alaw x.au",
          "-ar 16000 -c:a g722 x.wav", "-ar 8000 -c:a g726 -b:a 32k x.wav",
          "-ar 8000 -c:a g726 -b:a 24k x.wav"}) {
        const std::string file = coder.substr(coder.size() - 5);
        ASSERT_EQ(run(ffmpeg + "-i plain.wav " + coder + "; " + ffmpeg + "-i " + file +
                      " -ar 8000 theirs.wav; zsp decode " + file + " y.wav; " + ffmpeg +
                      "-i y.wav -ar 8000 ours.wav")
                      .text,
                  "")
            << coder;
        const Words theirs = wordsOf(get("theirs.wav"), 78), ours = wordsOf(get("ours.wav"), 78);
        double power = 0, error = 0;
        for (std::size_t i = 0; i < std::min(theirs.size(), ours.size()); ++i) {
            power += 1.0 * theirs[i] * theirs[i];
            error += 1.0 * (theirs[i] - ours[i]) * (theirs[i] - ours[i]);
        }
        EXPECT_LT(error, 0.01 * power) << coder;
    }
}

} // namespace

} // namespace zsp::test
