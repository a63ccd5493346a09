// Format parameters as text and as records: what is read, what is written, what is answered.

#include "tests/support/samples.hpp"
#include "zspvoice.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using zsp::test::Samples;

ZspvParams make(void (*set)(ZspvParams&) = [](ZspvParams&) {})
{
    ZspvParams p{};
    p.structSize = sizeof p;
    set(p);
    return p;
}

/// What a record is written as; the status where it is not.
std::string print(const char* name, const ZspvParams& params)
{
    std::vector<char> text(200);
    std::int32_t length = -1;
    const ZspStatus status = zspvFmtpPrint(name, &params, text.data(), 200, &length);
    if (status != zspStsNoErr) return "status " + std::to_string(status);
    EXPECT_EQ(static_cast<std::size_t>(length), std::strlen(text.data()));
    return text.data();
}

struct ParseRow {
    const char* name;
    const char* text;
    const char* want; // as printed again, or null for zspStsRangeErr
};

// What real offers look like, and what they should not.
constexpr ParseRow kParse[] = {
    {"G729", "", ""},
    {"G729", nullptr, ""},
    {"G729", "annexb=no", "annexb=no"},
    {"g729", " ;; AnnexB = NO\r\n", "annexb=no"},
    {"G729", "annexb=no;annexb=yes", ""},
    {"G729", "annexb=yes;annexb=no;", "annexb=no"},
    {"G729", "annexa=no", ""},
    {"G729", "annexb", nullptr},
    {"G729", "annexb=", nullptr},
    {"G729", "annexb=maybe", nullptr},
    {"G729", "annexb=no=yes", nullptr},
    {"G723", "annexa=no; bitrate=6.3", "annexa=no; bitrate=6.3"},
    {"G723", "bitrate=5.3", "bitrate=5.3"},
    {"G723", "bitrate=8", nullptr},
    {"PCMU", "anything=goes; annexb=no", ""},
    {"EVS", "br=5.9-24.4", ""},
    {"AMR", "octet-align=1", "octet-align=1"},
    {"AMR", "octet-align=0;maxptime=20;hf-only;=5;=", ""},
    {"AMR", "\toctet-align\t=\t1\t", "octet-align=1"},
    {"AMR", "octet-align=2", nullptr},
    {"AMR", "octet-align=+1", nullptr},
    {"AMR", "octet-align=-0", nullptr},
    {"AMR", "octet-align=1 1", nullptr},
    {"AMR", "octet-align=4294967297", nullptr},
    {"AMR", "octet-align=18446744073709551617", nullptr},
    {"AMR", "mode-set=0, 2,4 ,7", "mode-set=0,2,4,7"},
    {"AMR", "mode-set=7,0,7", "mode-set=0,7"},
    {"AMR", "mode-set=1; mode-set=2", "mode-set=2"},
    {"AMR", "mode-set=8", nullptr},
    {"AMR-WB", "MODE-SET=8", "mode-set=8"},
    {"AMR-WB", "mode-set=9", nullptr},
    {"AMR", "mode-set=", nullptr},
    {"AMR", "mode-set=0,", nullptr},
    {"AMR", "mode-set=,0", nullptr},
    {"AMR", "mode-set=0,,2", nullptr},
    {"AMR", "mode-set=0 2", nullptr},
    {"AMR", "mode-change-period=1; mode-change-capability=2; mode-change-neighbor=1",
     "mode-change-capability=2; mode-change-neighbor=1"},
    {"AMR", "mode-change-period=2", "mode-change-period=2"},
    {"AMR", "mode-change-period=0", nullptr},
    {"AMR", "crc=1", "octet-align=1; crc=1"},
    {"AMR", "robust-sorting=1;octet-align=0", "octet-align=1; robust-sorting=1"},
    {"AMR-WB", "interleaving=30", "octet-align=1; interleaving=30"},
    {"AMR-WB", "interleaving=0", nullptr},
    {"AMR-WB", "interleaving=2147483647", "octet-align=1; interleaving=2147483647"},
    {"AMR-WB", "interleaving=2147483648", nullptr},
    {"AMR", "max-red=0", "max-red=0"},
    {"AMR", "max-red=0220", "max-red=220"},
    {"AMR", "max-red=65536", nullptr},
    {"AMR", "max-red=:", nullptr},
    {"AMR", "channels=1", ""},
    {"AMR", "channels=6", "channels=6"},
    {"AMR", "channels=7", nullptr},
};

TEST(Fmtp, ReadsWhatPeersWrite)
{
    for (const ParseRow& row : kParse) {
        SCOPED_TRACE(std::string(row.name) + ": " + (row.text ? row.text : "(null)"));
        ZspvParams params;
        std::memset(&params, 0x55, sizeof params);
        params.structSize = sizeof params;
        const ZspvParams before = params;
        if (!row.want) {
            EXPECT_EQ(zspvFmtpParse(row.name, row.text, &params), zspStsRangeErr);
            EXPECT_EQ(std::memcmp(&params, &before, sizeof params), 0);
            continue;
        }
        ASSERT_EQ(zspvFmtpParse(row.name, row.text, &params), zspStsNoErr);
        EXPECT_EQ(print(row.name, params), row.want);
    }
}

// The text ends where its zero is, in a block of exactly its size; whatever stands in it, the
// record is a valid one or stays as it was.
TEST(Fmtp, HostileTextsAreReadWithinTheirBounds)
{
    const char* const pieces[] = {"mode-set", "octet-align", "annexb", "bitrate",  "max-red", "=",
                                  ";",        ",",           " ",      "\t",       "0",       "7",
                                  "99999999", "yes",         "no",     "\x80\xFF", "crc",     "1"};
    Samples random(11);
    int read = 0;
    for (int round = 0; round < 20'000; ++round) {
        std::string text;
        for (int i = random.below(12); i > 0; --i)
            text += pieces[random.below(std::size(pieces))];
        if (round % 1000 == 0) text.append(1'000'000, ';');
        const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1);
        const char* const names[] = {"AMR", "AMR-WB", "G729", "G723"};
        const char* name = names[random.below(4)];
        ZspvParams params = make(), again = make();
        if (zspvFmtpParse(name, exact.data(), &params) != zspStsNoErr) continue;
        ++read;
        const std::string printed = print(name, params);
        std::int32_t same = 0;
        ASSERT_EQ(zspvFmtpParse(name, printed.c_str(), &again), zspStsNoErr) << text;
        ASSERT_EQ(zspvFmtpCompare(name, &params, &again, &same), zspStsNoErr);
        ASSERT_EQ(same, 1) << text << " became " << printed;
    }
    EXPECT_GT(read, 1000);
}

TEST(Fmtp, PrintsIntoWhatThereIs)
{
    const ZspvParams params = make([](ZspvParams& p) { p.octetAlign = 1; });
    const std::string want = "octet-align=1";
    const auto size = static_cast<std::int32_t>(want.size());
    for (std::int32_t capacity = 0; capacity <= size + 1; ++capacity) {
        std::vector<char> text(static_cast<std::size_t>(capacity), '#');
        std::int32_t length = -1;
        char none = '#';
        const ZspStatus status =
            zspvFmtpPrint("AMR", &params, capacity ? text.data() : &none, capacity, &length);
        EXPECT_EQ(status, capacity > size ? zspStsNoErr : zspStsSizeErr);
        EXPECT_EQ(length, size);
        if (capacity <= size)
            EXPECT_EQ(text, std::vector<char>(text.size(), '#'));
        else
            EXPECT_EQ(text.data(), want);
    }
    EXPECT_EQ(print("AMR", make([](ZspvParams& p) { p.modeSet = 0x100; })), "status -7");
    EXPECT_EQ(print("AMR", make([](ZspvParams& p) { p.modeSet = -1; })), "status -7");
    EXPECT_EQ(print("AMR", make([](ZspvParams& p) { p.maxRed = -2; })), "status -7");
    EXPECT_EQ(print("G723", make([](ZspvParams& p) { p.bitRate = 6400; })), "status -7");
    EXPECT_EQ(print("PCMU", make([](ZspvParams& p) { p.bitRate = 64000; })), "");
}

struct PairRow {
    const char* name;
    const char* first;
    const char* second;
    const char* want;
};

TEST(Fmtp, ComparesMeaningsNotTexts)
{
    constexpr PairRow kRows[] = {
        {"AMR", "", "octet-align=0; channels=1; mode-change-period=1", "same"},
        {"AMR", "", "mode-set=0,1,2,3,4,5,6,7", "same"},
        {"AMR-WB", "", "mode-set=0,1,2,3,4,5,6,7", "other"},
        {"AMR", "octet-align=1", "", "other"},
        {"AMR", "max-red=0", "", "other"},
        {"G729", "annexb=yes", "", "same"},
        {"G729", "annexb=no", "", "other"},
        {"G723", "bitrate=5.3", "", "other"},
    };
    for (const PairRow& row : kRows) {
        ZspvParams a = make(), b = make();
        std::int32_t same = -1;
        ASSERT_EQ(zspvFmtpParse(row.name, row.first, &a), zspStsNoErr);
        ASSERT_EQ(zspvFmtpParse(row.name, row.second, &b), zspStsNoErr);
        a.dtx = 1; // a matter of one side
        ASSERT_EQ(zspvFmtpCompare(row.name, &a, &b, &same), zspStsNoErr);
        EXPECT_STREQ(same == 1 ? "same" : "other", row.want) << row.first << " | " << row.second;
        ASSERT_EQ(zspvFmtpCompare(row.name, &b, &a, &same), zspStsNoErr);
        EXPECT_STREQ(same == 1 ? "same" : "other", row.want) << row.second << " | " << row.first;
    }
}

// Offer, own wishes, answer; null where the payload type is to be refused.
TEST(Fmtp, AnswersOffers)
{
    constexpr PairRow kRows[] = {
        {"G729", "annexb=no", "", "annexb=no"},
        {"G729", "", "annexb=no", "annexb=no"},
        {"G729", "annexb=yes", "", ""},
        {"G723", "annexa=no; bitrate=5.3", "bitrate=6.3", "annexa=no; bitrate=5.3"},
        {"G723", "", "annexa=no; bitrate=6.3", "annexa=no; bitrate=6.3"},
        {"AMR", "octet-align=1", "", "octet-align=1"},
        {"AMR", "", "octet-align=1", ""},
        {"AMR", "mode-set=0,2,4,7", "", "mode-set=0,2,4,7"},
        {"AMR", "mode-set=0,2,4,7", "mode-set=7", "mode-set=0,2,4,7"},
        {"AMR", "mode-set=0,1,2,3,4,5,6,7", "mode-set=7", "mode-set=0,1,2,3,4,5,6,7"},
        {"AMR", "", "mode-set=7", "mode-set=7"},
        {"AMR", "mode-set=0,2", "mode-set=1,7", nullptr},
        {"AMR", "crc=1", "", nullptr},
        {"AMR", "robust-sorting=1", "", nullptr},
        {"AMR", "interleaving=4", "", nullptr},
        {"AMR", "channels=2", "", nullptr},
        {"AMR", "channels=1", "", ""},
        {"AMR", "mode-change-period=2; mode-change-neighbor=1", "",
         "mode-change-period=2; mode-change-capability=2; mode-change-neighbor=1"},
        {"AMR", "mode-change-capability=2", "mode-change-period=2",
         "mode-change-period=2; mode-change-capability=2"},
        {"AMR", "", "mode-change-period=2", nullptr},
        {"AMR", "max-red=220", "max-red=0", "max-red=0"},
        {"PCMU", "octet-align=1", "", ""},
    };
    for (const PairRow& row : kRows) {
        SCOPED_TRACE(std::string(row.first) + " | " + row.second);
        ZspvParams offer = make(), own = make(), answer = make();
        ASSERT_EQ(zspvFmtpParse(row.name, row.first, &offer), zspStsNoErr);
        ASSERT_EQ(zspvFmtpParse(row.name, row.second, &own), zspStsNoErr);
        own.dtx = 1;
        if (!row.want) {
            EXPECT_EQ(zspvFmtpAnswer(row.name, &offer, &own, &answer), zspStsCodecRangeErr);
            EXPECT_EQ(answer.dtx, 0);
            continue;
        }
        ASSERT_EQ(zspvFmtpAnswer(row.name, &offer, &own, &answer), zspStsNoErr);
        EXPECT_EQ(print(row.name, answer), row.want);
        EXPECT_EQ(answer.dtx, answer.noSilenceFrames ? 0 : 1);
    }
}

TEST(Fmtp, ChecksItsArguments)
{
    ZspvParams good = make(), longer = make(), shorter = make(), wild = make();
    longer.structSize += 4;
    shorter.structSize = offsetof(ZspvParams, noHighPass) - 4; // than the first version
    wild.structSize = 1 << 20;
    ZspvParams wrong = make([](ZspvParams& p) { p.crc = 2; });
    char text[8] = "#";
    std::int32_t count = -1;
    EXPECT_EQ(zspvFmtpParse(nullptr, "", &good), zspStsNullPtrErr);
    EXPECT_EQ(zspvFmtpParse("AMR", "", nullptr), zspStsNullPtrErr);
    EXPECT_EQ(zspvFmtpParse("AMR", "crc=9", &shorter), zspStsSizeErr);
    EXPECT_EQ(zspvFmtpParse("AMR", "", &wild), zspStsSizeErr);
    EXPECT_EQ(zspvFmtpParse("AMR", "crc=1", &longer), zspStsNoErr);
    EXPECT_EQ(longer.structSize, make().structSize + 4);
    EXPECT_EQ(zspvFmtpPrint("AMR", nullptr, text, 8, &count), zspStsNullPtrErr);
    EXPECT_EQ(zspvFmtpPrint("AMR", &good, nullptr, 8, &count), zspStsNullPtrErr);
    EXPECT_EQ(zspvFmtpPrint("AMR", &good, text, 8, nullptr), zspStsNullPtrErr);
    EXPECT_EQ(zspvFmtpPrint("AMR", &shorter, text, 8, &count), zspStsSizeErr);
    EXPECT_EQ(zspvFmtpPrint("AMR", &wrong, text, 0, &count), zspStsRangeErr);
    EXPECT_EQ(zspvFmtpCompare("AMR", &good, nullptr, &count), zspStsNullPtrErr);
    EXPECT_EQ(zspvFmtpCompare("AMR", &good, &shorter, &count), zspStsSizeErr);
    EXPECT_EQ(zspvFmtpAnswer("AMR", &good, &good, nullptr), zspStsNullPtrErr);
    EXPECT_EQ(zspvFmtpAnswer("AMR", &good, &wild, &good), zspStsSizeErr);
    EXPECT_EQ(zspvFmtpAnswer("AMR", &good, &wrong, &good), zspStsRangeErr);
    EXPECT_EQ(zspvFmtpAnswer("AMR", &wrong, &good, &good), zspStsRangeErr);
    EXPECT_EQ(count, -1);
    EXPECT_STREQ(text, "#");
}

} // namespace
