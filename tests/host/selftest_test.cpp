// zsp selftest: passes over the vectors, and fails for a spoilt one, an absent one and a library
// that is wrong in one sample.

#include "tests/host/host.hpp"

namespace zsp::test {

namespace {

class HostSelftest : public Host {
  protected:
    /// The installed vectors of some families.
    void copy(std::initializer_list<const char*> folders) const
    {
        for (const char* folder : folders)
            fs::copy(fs::path(ZSP_VECTORS) / folder, path("vectors/") + folder,
                     fs::copy_options::recursive);
    }
    void SetUp() override
    {
        Host::SetUp();
        fs::create_directory(path("vectors"));
    }
};

TEST_F(HostSelftest, AllPassHere)
{
    const Outcome outcome = zsp("selftest --report r.html && zsp selftest --report r.json && "
                                "zsp selftest --report r.txt >out.txt; cat out.txt");
    EXPECT_EQ(outcome.status, 0) << outcome.text;
    EXPECT_EQ(outcome.text.find("FAILED"), std::string::npos) << outcome.text;
    for (const char* line :
         {"\nlibrary    ", "\nprocessor  ", "G.726           82 of  82  bit-exact"})
        EXPECT_NE(("\n" + outcome.text).find(line), std::string::npos) << line << outcome.text;
    EXPECT_EQ(text("r.txt"), text("out.txt"));
    const std::string html = text("r.html");
    EXPECT_NE(html.find("The library gives what all reference vectors want."), std::string::npos);
    EXPECT_EQ(html.find("://"), std::string::npos);
    EXPECT_NE(text("r.json").find("{\"name\": \"G.726\", \"standard\": \"ITU-T G.726\", "
                                  "\"passed\": 82, \"total\": 82,"),
              std::string::npos);
}

TEST_F(HostSelftest, OneWrongWordFails)
{
    copy({"g722", "g729", "math"});
    EXPECT_EQ(zsp("selftest vectors").status, 0) << "families may be absent";
    Bytes spoilt = get("vectors/g722/update_0.sub");
    spoilt[20] ^= 1;
    put("vectors/g722/update_0.sub", spoilt);
    const Outcome outcome = zsp("selftest vectors --report r.html");
    EXPECT_EQ(outcome.status, 1);
    for (const char* words : {"G.722           12 of  13  FAILED",
                              "state-update update_0.sub: update_0.sub: element 10",
                              "level control    0 of   0  no vectors", "zsp: 1 check of 22 failed"})
        EXPECT_NE(outcome.text.find(words), std::string::npos) << words << '\n' << outcome.text;
    EXPECT_NE(text("r.html").find("does NOT give"), std::string::npos);
    EXPECT_NE(text("r.html").find("G.722, state-update update_0.sub"), std::string::npos);
}

TEST_F(HostSelftest, WithoutVectorsItFails)
{
    EXPECT_EQ(zsp("selftest vectors").status, 1);
    EXPECT_EQ(zsp("selftest nowhere").status, 1);
    EXPECT_EQ(zsp("selftest vectors --report r.pdf").status, 2);
    const std::string moved = "LD_LIBRARY_PATH=" + fs::path(ZSP_PROGRAM).parent_path().string() +
                              "/../lib elsewhere/bin/zsp selftest";
    // A program that was moved away from what was installed with it.
    fs::create_directories(path("elsewhere/bin"));
    fs::copy_file(ZSP_PROGRAM, path("elsewhere/bin/zsp"));
    EXPECT_EQ(run(moved).status, 1);
    // With some of the families only, installed vectors are not whole.
    copy({"g722"});
    fs::create_directories(path("elsewhere/share/zspsc"));
    fs::rename(path("vectors"), path("elsewhere/share/zspsc/vectors"));
    const Outcome outcome = run(moved);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.text.find("G.722           13 of  13  bit-exact"), std::string::npos)
        << outcome.text;
    EXPECT_NE(outcome.text.find("level control    0 of   1  FAILED"), std::string::npos);
}

#ifdef ZSP_BROKEN_LIBRARY
TEST_F(HostSelftest, AWrongLibraryFails)
{
    const Outcome outcome = run("LD_PRELOAD=" ZSP_BROKEN_LIBRARY " zsp selftest");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.text.find("G.729            3 of   9  FAILED"), std::string::npos)
        << outcome.text;
    EXPECT_NE(outcome.text.find("element 100 is "), std::string::npos);
}
#endif

} // namespace

} // namespace zsp::test
