// The HTML reports: complete in themselves, with sounds to hear, and true to what was done.

#include "tests/host/host.hpp"

namespace zsp::test {

namespace {

class HostReports : public Host {
  protected:
    /// One file without anything from elsewhere, and no figure that is none.
    void expectSound(const std::string& html) const
    {
        EXPECT_TRUE(html.starts_with("<!doctype html>"));
        EXPECT_TRUE(html.ends_with("</html>\n"));
        EXPECT_EQ(html.find("://"), std::string::npos) << "the report needs no network";
        EXPECT_NE(html.find("<audio "), std::string::npos);
        for (const char* text : {" nan", ">nan", "\"nan", "nan\"", "inf\"", ">-0.0"})
            EXPECT_EQ(html.find(text), std::string::npos) << text;
    }
};

TEST_F(HostReports, AlcNamesItsSettings)
{
    put("in.wav", wavFile(someSignal(24000)));
    fs::create_directory(path("reports"));
    ASSERT_EQ(zsp("alc --target 21.5 --peak 3.5 --max-gain 7.5 in.wav 'a b.wav' "
                  "--report reports/r.html")
                  .status,
              0);
    const std::string html = text("reports/r.html");
    expectSound(html);
    for (const char* figure :
         {"<b>-21.5 dBFS</b><span>target</span>", "<b>-3.5 dBFS</b><span>peak</span>",
          "<b>7.5 dB</b><span>largest gain</span>", ">target</span>", "follows the syllables",
          "src=\"../in.wav\"", "src=\"../a%20b.wav\""})
        EXPECT_NE(html.find(figure), std::string::npos) << figure;
    // Sounds that a browser cannot play from a file are in the report.
    ASSERT_EQ(zsp("alc - out.raw --report r.html <in.wav").status, 0);
    const std::string alone = text("r.html");
    expectSound(alone);
    EXPECT_EQ(alone.find(".raw\""), std::string::npos);
    EXPECT_NE(alone.find("src=\"data:audio/wav;base64,UklGR"), std::string::npos);
}

TEST_F(HostReports, AecNamesTheSuppressorAndCountsWhatItDidNotRemove)
{
    const Words far = someSignal(8000 * 6), unrelated = someSignal(8000 * 6 + 777);
    put("far.wav", wavFile(far));
    Words mic(far.size());
    for (std::size_t i = 200; i < mic.size(); ++i)
        mic[i] = static_cast<std::int16_t>(far[i - 200] / 4);
    put("mic.wav", wavFile(mic));
    for (const std::string state : {"on", "off"}) {
        ASSERT_EQ(zsp("aec far.wav mic.wav out.wav --report r.html --suppressor " + state).status,
                  0);
        const std::string html = text("r.html");
        expectSound(html);
        EXPECT_NE(html.find("suppressor " + state), std::string::npos);
    }
}

TEST_F(HostReports, VadShowsWhatItHeard)
{
    put("in.wav", wavFile(someSignal(24000)));
    ASSERT_EQ(zsp("vad in.wav --report r.html >/dev/null").status, 0);
    const std::string html = text("r.html");
    expectSound(html);
    EXPECT_NE(html.find("src=\"in.wav\""), std::string::npos);
}

TEST_F(HostReports, DemoOnOwnSpeechInAnotherFormat)
{
    put("stereo.wav", wavFile(someSignal(64000), 16000, 2));
    const Outcome outcome = zsp("demo - new/dir <stereo.wav");
    EXPECT_EQ(outcome.status, 0) << outcome.text;
    for (const char* text : {"mixing 2 channels", "2.0 s at 8 kHz", "2.0 s at 16 kHz"})
        EXPECT_NE(outcome.text.find(text), std::string::npos) << outcome.text;
    for (const char* name :
         {"new/dir/g726-16.wav", "new/dir/g726-40.wav", "new/dir/gsm-13.wav", "new/dir/g728-16.wav",
          "new/dir/g7231-5.3.wav", "new/dir/g7231-6.3.wav", "new/dir/g729a.wav",
          "new/dir/g729a-dtx.wav", "new/dir/g729a-dtx-lost.wav"})
        EXPECT_EQ(get(name).size(), 44 + 2 * 16000u);
    for (const char* name : {"new/dir/g722-48.wav", "new/dir/g722-64.wav"})
        EXPECT_EQ(get(name).size(), 44 + 2 * 32000u);
    expectSound(text("new/dir/report.html"));
    // A little silence: no figure makes sense, but nothing breaks.
    put("silence.wav", wavFile(Words(100)));
    const Outcome silence = zsp("demo silence.wav -o silence");
    EXPECT_EQ(silence.status, 0) << silence.text;
    EXPECT_EQ(silence.text.find("nan"), std::string::npos) << silence.text;
    expectSound(text("silence/report.html"));
}

} // namespace

} // namespace zsp::test
