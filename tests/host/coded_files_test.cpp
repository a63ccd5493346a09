// Files of coded speech: headers that name the codec, the smallest files, and what is none.

#include "tests/host/host.hpp"

namespace zsp::test {

namespace {

using HostCodedFiles = Host;

// Headers of WAV and AU files name the codec; what they hold is the same raw stream.
TEST_F(HostCodedFiles, HeadersNameTheCodec)
{
    put("in.wav", wavFile(someSignal(16000), 16000));
    struct Row {
        const char* codec;
        const char* rate;
        std::uint32_t wavTag, wavBits, auEncoding, hertz;
    };
    const Row rows[] = {{"pcmu", "64", 7, 8, 1, 8000},        {"pcma", "64", 6, 8, 27, 8000},
                        {"g722", "64", 0x28f, 8, 24, 16000},  {"g726aal2", "16", 0x45, 2, 0, 8000},
                        {"g726aal2", "24", 0x45, 3, 0, 8000}, {"g726aal2", "32", 0x45, 4, 0, 8000},
                        {"g726aal2", "40", 0x45, 5, 0, 8000}, {"g726", "24", 0, 0, 25, 8000},
                        {"g726", "32", 0, 0, 23, 8000},       {"g726", "40", 0, 0, 26, 8000}};
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.codec) + " " + row.rate);
        const std::string options = std::string(" -c ") + row.codec + " -r " + row.rate + " ";
        ASSERT_EQ(zsp("encode" + options + "in.wav raw 2>/dev/null").status, 0);
        ASSERT_EQ(zsp("decode" + options + "raw wanted.wav").text, "");
        const Bytes raw = get("raw");
        if (row.wavTag != 0) {
            put("coded.wav",
                wavOf(raw, {.rate = row.hertz, .tag = row.wavTag, .bits = row.wavBits}));
            ASSERT_EQ(zsp("decode coded.wav got.wav").text, "");
            EXPECT_EQ(get("got.wav"), get("wanted.wav"));
        }
        if (row.auEncoding == 0) continue;
        Bytes au;
        append(au, ".snd");
        for (const std::uint32_t value : {24u, 0xffff'ffffu, row.auEncoding, row.hertz, 1u})
            append(au, __builtin_bswap32(value), 4);
        au.insert(au.end(), raw.begin(), raw.end());
        put("coded.au", au);
        ASSERT_EQ(zsp("decode - got.wav <coded.au").text, "");
        EXPECT_EQ(get("got.wav"), get("wanted.wav"));
        EXPECT_EQ(zsp("decode -c g726-16 coded.au no.wav").status, 1);
    }
}

TEST_F(HostCodedFiles, SmallestFiles)
{
    for (const char* rate : {"16", "24", "32", "40"}) {
        put("one.g726", {0x5a});
        EXPECT_EQ(zsp(std::string("decode -r ") + rate + " one.g726 out.wav").text, "");
        EXPECT_GE(get("out.wav").size(), 46u) << rate;
    }
    put("zero.g726", {0});
    const Outcome outcome = zsp("decode -r 24 zero.g726 no.wav");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.text.find("holds no whole code word"), std::string::npos);
    put("sample.wav", wavFile({1234}));
    EXPECT_EQ(zsp("encode sample.wav one.g726 && zsp decode one.g726 out.wav").text, "");
    EXPECT_EQ(get("out.wav").size(), 46u);
}

TEST_F(HostCodedFiles, WhatIsPlainlyNoCodedSpeechIsRefused)
{
    put("speech.wav", wavFile(someSignal(800)));
    Bytes text;
    append(text, "Dear reader,\nthis is a letter and no coded speech at all.\n");
    put("letter", text);
    Bytes amr;
    append(amr, "#!AMR\n");
    amr.resize(200);
    put("speech.amr", amr);
    ASSERT_EQ(zsp("decode -c pcma speech.wav x.wav").status, 1);
    ASSERT_EQ(zsp("encode speech.wav short.gsm").status, 0);
    Bytes frames = get("short.gsm"); // five
    frames.push_back(0xd0);
    put("short.gsm", frames);
    frames[66] ^= 0x10;
    put("noise.gsm", frames);
    ASSERT_EQ(
        run("zsp alc speech.wav s.flac 2>/dev/null; zsp alc speech.wav s.ogg 2>/dev/null").status,
        0);
    struct Row {
        const char* arguments;
        const char* message;
    };
    const Row rows[] = {{"decode -c g722 speech.wav no.wav", "speech.wav: is a RIFF file"},
                        {"decode -c g722 - no.wav <speech.wav", "is a RIFF file"},
                        {"decode speech.wav no.wav", "is a RIFF file"},
                        {"decode -c g726 s.flac no.wav", "is a FLAC file"},
                        {"decode -c g726 s.ogg no.wav", "is an Ogg file"},
                        {"decode noise.gsm no.wav", "frame 3 is none of GSM"},
                        {"decode short.gsm no.wav", "1 byte left over behind the last whole frame"},
                        {"decode -c g726 letter no.wav", "letter: is text"},
                        {"decode -c g726 speech.amr no.wav", "with a header of its own"}};
    for (const Row& row : rows) {
        const Outcome outcome = zsp(row.arguments);
        EXPECT_EQ(outcome.status, 1) << row.arguments;
        EXPECT_NE(outcome.text.find(row.message), std::string::npos) << outcome.text;
    }
    EXPECT_FALSE(fs::exists(path("no.wav")));
}

} // namespace

} // namespace zsp::test
