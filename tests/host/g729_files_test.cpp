// Files of G.729: every run of the decoder's vectors through the program, an encoder's with pauses,
// and containers that are damaged.

#include "tests/host/host.hpp"

#include <fstream>
#include <sstream>

namespace zsp::test {

namespace {

using HostG729 = Host;

Bytes vectorOf(const std::string& name)
{
    std::ifstream file(ZSP_VECTORS "/g729codec/" + name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(HostG729, EveryDecoderVector)
{
    std::ifstream file(ZSP_VECTORS "/g729codec/decode.runs.txt");
    int runs = 0;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string verb, codec, options, input, output;
        words >> verb >> codec >> options >> input >> output;
        const std::string name = input.ends_with("f") ? "in.g729f" : "in.g729";
        put(name, vectorOf(input));
        ASSERT_EQ(zsp("decode --codec " + codec + " " + name + " out.wav").text, "") << line;
        ASSERT_EQ(get("out.wav"), wavFile(wordsOf(vectorOf(output)))) << line;
        ++runs;
    }
    EXPECT_EQ(runs, 27);
}

TEST_F(HostG729, EncodesRawFramesAndPausesInContainers)
{
    put("in.wav", wavFile(wordsOf(vectorOf("speech_noise.pcm"))));
    ASSERT_EQ(zsp("encode --codec g729a in.wav out.g729").text, "");
    EXPECT_EQ(get("out.g729"), vectorOf("speech_noise.a.g729"));
    ASSERT_EQ(zsp("encode --codec g729 in.wav out").text, "");
    EXPECT_EQ(get("out"), vectorOf("speech_noise.m.g729"));
    ASSERT_EQ(zsp("encode --codec g729a --dtx in.wav out").text, "");
    EXPECT_EQ(get("out"), vectorOf("speech_noise.adtx.g729f"));
    ASSERT_EQ(zsp("encode --codec g729 --dtx in.wav out.g729f").text, "");
    EXPECT_EQ(get("out.g729f"), vectorOf("speech_noise.mdtx.g729f"));
    ASSERT_EQ(zsp("encode in.wav all.g729f").text, ""); // each frame with its length
    EXPECT_EQ(get("all.g729f").size(), 7 + get("out.g729").size() / 10 * 11);
}

TEST_F(HostG729, DamagedFilesAreRefused)
{
    struct Row {
        const char* name;
        Bytes bytes;
        const char* says;
    };
    const Bytes begin = {'#', '!', 'G', '7', '2', '9', '\n'};
    const auto behind = [&begin](const Bytes& rest) {
        Bytes all = begin;
        all.insert(all.end(), rest.begin(), rest.end());
        return all;
    };
    const Row rows[] = {
        {"in.g729f", behind({2, 1, 2, 3}), "frame 2 has the length 3, none of 10, 2, 0 and 255"},
        {"in.g729f", behind({0, 255, 10, 1, 2}), "ends inside of a frame"},
        {"in.g729f", {'#', '!', 'G', '7', '2', '8', '\n', 0}, "does not begin with #!G729"},
        {"in.g729", Bytes(13, 1), "3 bytes left over"},
        {"in.g729", Bytes(11, 1), "1 byte left over"},
    };
    for (const Row& row : rows) {
        put(row.name, row.bytes);
        const Outcome outcome = zsp("decode " + std::string(row.name) + " out.wav");
        EXPECT_NE(outcome.status, 0) << row.says;
        EXPECT_NE(outcome.text.find(row.says), std::string::npos) << outcome.text;
        EXPECT_FALSE(fs::exists(path("out.wav"))) << row.says;
    }
}

} // namespace

} // namespace zsp::test
