// The table of codecs: facts of RFC 3551, and what must hold among the numbers of every row.

#include "zspvoice.h"

#include "voice/codec/codec.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <vector>

namespace {

std::vector<const ZspvCodec*> allCodecs()
{
    std::vector<const ZspvCodec*> all;
    for (std::int32_t i = 0; i < zspvCodecCount(); ++i)
        all.push_back(zspvCodecByIndex(i));
    return all;
}

TEST(CodecTable, FactsOfRfc3551)
{
    struct Fact {
        const char* name;
        int payloadType, sampleRate, rtpClock, bitRate, stepSamples, stepBytes;
    };
    for (const Fact& f : {Fact{"PCMU", 0, 8000, 8000, 64000, 1, 1},
                          {"PCMA", 8, 8000, 8000, 64000, 1, 1},
                          {"G722", 9, 16000, 8000, 64000, 2, 1},
                          {"G728", 15, 8000, 8000, 16000, 20, 5},
                          {"GSM", 3, 8000, 8000, 13000, 160, 33},
                          {"G723", 4, 8000, 8000, 6300, 240, 24},
                          {"G726-16", -1, 8000, 8000, 16000, 4, 1},
                          {"G726-24", -1, 8000, 8000, 24000, 8, 3},
                          {"G726-32", -1, 8000, 8000, 32000, 2, 1},
                          {"G726-40", -1, 8000, 8000, 40000, 8, 5},
                          {"G729", 18, 8000, 8000, 8000, 80, 10},
                          {"AAL2-G726-16", -1, 8000, 8000, 16000, 4, 1},
                          {"AAL2-G726-24", -1, 8000, 8000, 24000, 8, 3},
                          {"AAL2-G726-32", -1, 8000, 8000, 32000, 2, 1},
                          {"AAL2-G726-40", -1, 8000, 8000, 40000, 8, 5}}) {
        const ZspvCodec* c = zspvCodecByName(f.name, 8000);
        ASSERT_NE(c, nullptr) << f.name;
        EXPECT_EQ(c->payloadType, f.payloadType) << f.name;
        EXPECT_EQ(c->sampleRate, f.sampleRate) << f.name;
        EXPECT_EQ(c->rtpClock, f.rtpClock) << f.name;
        EXPECT_EQ(c->bitRates[0], f.bitRate) << f.name;
        EXPECT_EQ(c->stepSamples, f.stepSamples) << f.name;
        EXPECT_EQ(zsp::voice::stepBytes(*c), f.stepBytes) << f.name;
        if (f.payloadType >= 0) {
            EXPECT_EQ(zspvCodecByPayloadType(f.payloadType), c);
        }
    }
}

TEST(CodecTable, NumbersOfARowAgree)
{
    std::set<std::string> names;
    for (const ZspvCodec* c : allCodecs()) {
        SCOPED_TRACE(c->rtpName);
        EXPECT_TRUE(names.insert(c->rtpName).second) << "twice";
        EXPECT_EQ(c->structSize, static_cast<int>(sizeof *c));
        EXPECT_EQ(c->frameSamples % c->stepSamples, 0);
        EXPECT_EQ(c->maxFrameBytes * c->stepSamples % c->frameSamples, 0)
            << "steps of whole octets";
        EXPECT_EQ(c->defaultPacketMs * c->sampleRate / 1000 % c->frameSamples, 0);
        EXPECT_EQ(zspvCodecTicks(c, c->sampleRate), c->rtpClock);
        ASSERT_GE(c->bitRateCount, 1);
        const int fastest = *std::max_element(c->bitRates, c->bitRates + c->bitRateCount);
        const std::int64_t bits = std::int64_t{fastest} * c->frameSamples / c->sampleRate;
        EXPECT_EQ(c->maxFrameBytes, (bits + 7) / 8);
        for (const char* text : {c->family, c->standard, c->fileExtension, c->defaultFmtp})
            EXPECT_NE(text, nullptr);
    }
}

TEST(CodecTable, IsFoundByNameInAnyCase)
{
    for (const ZspvCodec* c : allCodecs()) {
        std::string name = c->rtpName;
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char x) { return static_cast<char>(std::tolower(x)); });
        EXPECT_EQ(zspvCodecByName(name.c_str(), c->rtpClock), c);
        EXPECT_EQ(zspvCodecByName(name.c_str(), 0), c);
        EXPECT_EQ(zspvCodecByName(name.c_str(), c->rtpClock + 1), nullptr);
        EXPECT_EQ(zspvCodecByName((name + "x").c_str(), 0), nullptr);
        EXPECT_NE(zspvCodecByName(name.substr(0, name.size() - 1).c_str(), 0), c);
    }
    EXPECT_EQ(zspvCodecByName("", 0), nullptr);
    EXPECT_EQ(zspvCodecByName(nullptr, 0), nullptr);
    EXPECT_EQ(zspvCodecByPayloadType(-1), nullptr) << "no row of a dynamic type";
    EXPECT_EQ(zspvCodecByPayloadType(2), nullptr) << "withdrawn";
    EXPECT_EQ(zspvCodecByIndex(-1), nullptr);
    EXPECT_EQ(zspvCodecByIndex(zspvCodecCount()), nullptr);
}

TEST(CodecTable, TicksOfManySamplesDoNotOverflow)
{
    const ZspvCodec* g722 = zspvCodecByName("G722", 8000);
    EXPECT_EQ(zspvCodecTicks(g722, 320), 160);
    EXPECT_EQ(zspvCodecTicks(g722, INT64_MAX), INT64_MAX / 2);
    EXPECT_EQ(zspvCodecTicks(zspvCodecByName("PCMU", 8000), INT64_MAX), INT64_MAX);
    EXPECT_EQ(zspvCodecTicks(g722, -1), -1);
    EXPECT_EQ(zspvCodecTicks(nullptr, 1), -1);
}

TEST(CodecTable, KnowsItsOwnRowsOnly)
{
    const ZspvCodec copy = *zspvCodecByIndex(0);
    EXPECT_EQ(zsp::voice::findCodec(&copy), nullptr);
    for (const ZspvCodec* c : allCodecs()) {
        ASSERT_NE(zsp::voice::findCodec(c), nullptr);
        EXPECT_EQ(&zsp::voice::findCodec(c)->info, c);
    }
}

} // namespace
