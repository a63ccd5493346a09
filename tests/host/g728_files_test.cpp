// Files of G.728: every run of the vectors through the program, and containers that are damaged.

#include "tests/host/host.hpp"

#include <fstream>
#include <sstream>

namespace zsp::test {

namespace {

using HostG728 = Host;

Bytes vectorOf(const std::string& name)
{
    std::ifstream file(ZSP_VECTORS "/g728/" + name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(HostG728, EveryVector)
{
    std::ifstream file(ZSP_VECTORS "/g728/runs.txt");
    int runs = 0;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string verb, filter, input, output;
        words >> verb >> filter >> input >> output;
        if (verb == "encode") {
            put("in.wav", wavFile(wordsOf(vectorOf(input))));
            ASSERT_EQ(zsp("encode --codec g728 in.wav out").text, "") << line;
            ASSERT_EQ(get("out"), vectorOf(output)) << line;
        } else if (verb == "decode") {
            const std::string name = input.ends_with("f") ? "in.g728f" : "in.g728";
            put(name, vectorOf(input));
            ASSERT_EQ(zsp("decode " + name + " out.wav --postfilter " + filter).text, "") << line;
            ASSERT_EQ(get("out.wav"), wavFile(wordsOf(vectorOf(output)))) << line;
        } else {
            continue;
        }
        ++runs;
    }
    EXPECT_EQ(runs, 42);
}

// What encode writes under that name is the raw frames, each behind its length.
TEST_F(HostG728, ContainersHoldTheSameFrames)
{
    put("in.wav", wavFile(someSignal(20 * 1000)));
    ASSERT_EQ(zsp("encode in.wav out.g728 && zsp encode in.wav out.g728f").text, "");
    const Bytes raw = get("out.g728");
    Bytes wanted;
    append(wanted, "#!G728\n");
    for (std::size_t i = 0; i < raw.size(); ++i) {
        if (i % 5 == 0) wanted.push_back(5);
        wanted.push_back(raw[i]);
    }
    EXPECT_EQ(raw.size(), 5000u);
    EXPECT_EQ(get("out.g728f"), wanted);
    ASSERT_EQ(zsp("decode out.g728 a.wav && zsp decode out.g728f b.wav").text, "");
    EXPECT_EQ(get("a.wav"), get("b.wav"));
}

TEST_F(HostG728, DamagedFilesAreRefused)
{
    struct Row {
        const char* options;
        Bytes bytes; // behind "#!G728" and what follows it
        const char* says;
    };
    const Row rows[] = {
        {"", {'\n', 5, 1, 2, 3, 4, 5, 6}, "frame 2 has the length 6, neither 5 nor 255"},
        {"", {'\n', 255, 5, 1, 2, 3, 4}, "ends inside of a frame"},
        {"", {}, "ends inside of a frame"},
        {"", {'F', 5, 1, 2, 3, 4, 5}, "does not begin with #!G728"},
        {"--postfilter off ", {'\n', 5, 1, 2, 3, 4, 5, 255}, "needs --postfilter on"},
    };
    for (const Row& row : rows) {
        Bytes file;
        append(file, "#!G728");
        file.insert(file.end(), row.bytes.begin(), row.bytes.end());
        put("in.g728f", file);
        const Outcome outcome = zsp("decode " + std::string(row.options) + "in.g728f out.wav");
        EXPECT_NE(outcome.status, 0) << row.says;
        EXPECT_NE(outcome.text.find(row.says), std::string::npos) << outcome.text;
        EXPECT_FALSE(fs::exists(path("out.wav"))) << row.says;
    }
    put("in.g728", Bytes(11, 1));
    EXPECT_NE(zsp("decode in.g728 out.wav").status, 0);
    put("in.g722", Bytes(100, 1));
    EXPECT_NE(zsp("decode --postfilter off in.g722 out.wav")
                  .text.find("is for G.723.1, G.728 and G.729, not for G722"),
              std::string::npos);
}

} // namespace

} // namespace zsp::test
