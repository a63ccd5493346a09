// Files of G.723.1: filters that are left out, and headers of WAV files.

#include "tests/host/host.hpp"

#include <fstream>

namespace zsp::test {

namespace {

using HostG723 = Host;

Bytes vectorOf(const std::string& name)
{
    std::ifstream file(ZSP_VECTORS "/g723/" + name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(HostG723, FiltersAreOnUnlessLeftOut)
{
    put("in.wav", wavFile(wordsOf(vectorOf("speech.pcm"))));
    for (const auto& [option, wanted] :
         {std::pair{"", "63"}, {"--highpass on ", "63"}, {"--highpass=off ", "63nohp"}}) {
        ASSERT_EQ(zsp("encode " + std::string(option) + "in.wav out.g723").text, "");
        EXPECT_EQ(get("out.g723"), vectorOf("speech." + std::string(wanted) + ".g723")) << option;
    }
    put("in.g723", vectorOf("speech.63.g723"));
    for (const auto& [option, wanted] :
         {std::pair{"", "63"}, {"--postfilter on ", "63"}, {"--postfilter off ", "63.nopf"}}) {
        ASSERT_EQ(zsp("decode " + std::string(option) + "in.g723 out.wav").text, "");
        const Words samples = wordsOf(vectorOf("speech." + std::string(wanted) + ".out.pcm"));
        Words heard = wordsOf(get("out.wav"), 44);
        ASSERT_GE(heard.size(), samples.size());
        heard.resize(samples.size());
        EXPECT_EQ(heard, samples) << option;
    }
}

TEST_F(HostG723, HeadersOfWavFilesNameIt)
{
    const Bytes frames = vectorOf("mixed.rates.g723");
    put("in.g723", frames);
    put("in.wav", wavOf(frames, {.tag = 0x42, .bits = 0}));
    ASSERT_EQ(zsp("decode in.g723 wanted.wav && zsp decode in.wav got.wav").text, "");
    EXPECT_EQ(get("got.wav"), get("wanted.wav"));
}

} // namespace

} // namespace zsp::test
