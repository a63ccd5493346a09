// Every export keeps its contract, and every export has one.

#include "tests/support/contract.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

using zsp::test::contracts;

const std::vector<std::string> kExports = {
#define ZSP_EXPORT(name) #name,
#define ZSP_EXPORT_AS(name, shared) #name,
#include "core/exports.inc"
};

TEST(Contract, EveryRowOfEveryExport)
{
    for (const auto& contract : contracts())
        contract.run();
}

TEST(Contract, TheOneWithoutArguments)
{
    EXPECT_NE(zsp::test::checked(zspscGetLibVersion)(), nullptr);
    EXPECT_EQ(zsp::test::leftBehind(), "");
}

TEST(Contract, EveryExportHasOne)
{
    std::set<std::string> wanted(kExports.begin(), kExports.end());
    wanted.erase("zspscGetLibVersion"); // takes no arguments and checks none
    std::set<std::string> present;
    for (const auto& contract : contracts())
        EXPECT_TRUE(present.insert(contract.name()).second) << contract.name() << " twice";
    EXPECT_EQ(present, wanted);
}

} // namespace
