// The public functions of the voice layer keep their contracts, and the families named below have
// one for every function.

#include "tests/support/contract.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

using zsp::test::contracts;

const std::vector<std::string> kExports = {
#define ZSPV_EXPORT(name) #name,
#include "voice/exports.inc"
};

TEST(VoiceContract, EveryRowOfEveryFunction)
{
    for (const auto& contract : contracts())
        contract.run();
}

TEST(VoiceContract, EveryFunctionHasOne)
{
    // What allocates or frees is tested by use; payloads and format parameters check their
    // arguments in tests/voice/rtp.
    constexpr const char* kFamilies[] = {"zspvEncode",       "zspvDecode",  "zspvConceal",
                                         "zspvComfortNoise", "zspvReblock", "zspvEcho",
                                         "zspvActivity"};
    std::set<std::string> present;
    for (const auto& contract : contracts())
        EXPECT_TRUE(present.insert(contract.name()).second) << contract.name() << " twice";
    for (const std::string& name : kExports) {
        const bool named = std::ranges::any_of(
            kFamilies, [&](const char* family) { return name.starts_with(family); });
        if (!named || name.ends_with("Create") || name.ends_with("Destroy")) continue;
        if (name.ends_with("GetCodec")) continue; // returns the record
        EXPECT_TRUE(present.contains(name)) << name;
    }
}

} // namespace
