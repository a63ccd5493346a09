// The version record, which stays as it is.

#include "zspsc/types.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(Core, VersionRecord)
{
    const ZspLibraryVersion* v = zspscGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v, zspscGetLibVersion());
    EXPECT_EQ(v->major, 8);
    EXPECT_EQ(v->minor, 1);
    EXPECT_EQ(v->update, 1);
    EXPECT_EQ(v->revision, 42291);
    EXPECT_EQ(std::memcmp(v->cpuTag, "l9\0\0", 4), 0);
    EXPECT_STREQ(v->name, "zspSC AVX2 (l9)");
    EXPECT_STREQ(v->versionText, "8.1.1 (r42291)");
    EXPECT_STREQ(v->buildDate, "Apr 10 2014");
}

} // namespace
