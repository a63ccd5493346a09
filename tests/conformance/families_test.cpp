// The checks against vectors themselves: nothing lies there unchecked, and nothing wrong passes.

#include "conformance/families.hpp"

#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;
using namespace zsp::test;
using namespace zsp::conformance;

// The way to mend this: a file conformance/<family>.cpp and its line in families.cpp.
TEST(Conformance, EveryFolderOfVectorsBelongsToAFamily)
{
    std::set<std::string> named, there;
    for (const Family& family : families())
        named.insert(family.folders.begin(), family.folders.end());
    for (const auto& entry : fs::directory_iterator(vectorPath("")))
        if (entry.is_directory()) there.insert(entry.path().filename().string());
    EXPECT_EQ(there, named) << "vectors without a file in conformance/, or the other way round";
}

// Nothing lies there that no check reads, but for what says where it comes from.
TEST(Conformance, EveryFileOfVectorsIsRead)
{
    const Vectors vectors(vectorPath(""));
    for (const Family& family : families())
        checksOf(family, vectors);
    for (const auto& entry : fs::recursive_directory_iterator(vectors.directory())) {
        const fs::path file = fs::relative(entry.path(), vectors.directory());
        if (!entry.is_regular_file() || !file.has_parent_path() || file.extension() == ".md")
            continue;
        EXPECT_TRUE(vectors.seen().contains(file.generic_string())) << file;
    }
}

// One wrong byte at the end of what is wanted is enough, and so is a byte or a file too few.
TEST(Conformance, WhatIsWrongFails)
{
    const std::string copy =
        (fs::temp_directory_path() / ("zsp-conformance-" + std::to_string(std::random_device{}())))
            .string();
    ASSERT_TRUE(fs::create_directory(copy));
    fs::copy(fs::path(vectorPath("")).parent_path(), copy, fs::copy_options::recursive);
    const auto failures = [&copy](const Family& family) {
        std::size_t count = 0;
        for (const Check& check : checksOf(family, Vectors(copy)))
            count += check.fault.empty() ? 0U : 1U;
        return count;
    };
    struct Case {
        const char* family;
        const char* file;
    };
    constexpr Case kCases[] = {
        {"G.711", "g726/nrm_a.sl"},
        {"G.726", "g726/rn16fa.out"},
        {"G.722", "g722/update_1.sub"},
        {"GSM-AMR", "gsmamr/tones.vad2"},
        {"AMR-WB", "amrwb/sid_quant.bin"},
        {"G.729", "g729/lsp.norm.s16"},
        {"G.729", "math/invsqrt.out.s32"},
        {"level control", "alc/levels.states.bin"},
        {"G.723.1", "g723/lost.53dtx.out.pcm"},
        {"G.728", "g728/random.nopf.pcm"},
        {"GSM full rate", "gsmfr/speech.out.pcm"},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.file);
        const fs::path file = fs::path(copy) / c.file;
        const Family& family = *std::ranges::find(families(), std::string(c.family), &Family::name);
        EXPECT_EQ(failures(family), 0u);
        {
            std::fstream spoilt(file, std::ios::in | std::ios::out | std::ios::binary);
            spoilt.seekg(-1, std::ios::end);
            const int byte = spoilt.get();
            spoilt.seekp(-1, std::ios::end);
            spoilt.put(static_cast<char>(byte ^ 1));
        }
        EXPECT_EQ(failures(family), 1u) << "spoilt";
        fs::resize_file(file, fs::file_size(file) - 1);
        EXPECT_GE(failures(family), 1u) << "cut";
        fs::remove(file);
        EXPECT_EQ(failures(family), 1u) << "gone";
        fs::copy_file(vectorPath(c.file), file);
    }
    fs::remove_all(copy);
}

} // namespace
