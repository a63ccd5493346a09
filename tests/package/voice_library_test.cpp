// Reads libzspvoice as a loader would: what it exports, what it imports, what it keeps; and loads
// it as a program does that knows nothing else of ours.

#include "tests/support/shared_object.hpp"
#include "zspvoice.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <set>
#include <string>

namespace {

using namespace zsp::test;

const std::set<std::string> kExports = {
#define ZSPV_EXPORT(name) #name,
#include "voice/exports.inc"
};

TEST(VoiceLibrary, ExportsAreTheListAndTheHeader)
{
    EXPECT_EQ(SharedObject(ZSPVOICE_LIBRARY).exportedNames("ZSPVOICE_1.0"), kExports);
    EXPECT_EQ(declaredNames(ZSPVOICE_HEADER, "ZSPV_API", "zspv"), kExports);
}

TEST(VoiceLibrary, DynamicSection)
{
    const SharedObject library(ZSPVOICE_LIBRARY);
    EXPECT_EQ(library.dynamicStrings(DT_SONAME), std::set<std::string>{"libzspvoice.so.1"});
    EXPECT_EQ(library.dynamicStrings(DT_RUNPATH), std::set<std::string>{"$ORIGIN"});
    const std::set<std::string> needed = library.dynamicStrings(DT_NEEDED);
    EXPECT_TRUE(needed.count("libzspsc.so.8"));
    EXPECT_FALSE(needed.count("libzspcore.so.8"));
}

// The blocks through their public functions alone, memory only where objects are created, nothing
// of the C++ runtime, no lock, no input or output.
TEST(VoiceLibrary, ImportsAreFew)
{
    const std::set<std::string> memory = {
        "memchr",           "memcmp",        "memcpy",         "memmove", "memset", "strlen",
        "__stack_chk_fail", "__assert_fail", "__cxa_finalize", "malloc",  "free"};
    for (const auto& symbol : SharedObject(ZSPVOICE_LIBRARY).imported) {
        const bool block = symbol.name.starts_with("zsps") && symbol.version == "libzspsc.so.8";
        const bool weakHook = ELF64_ST_BIND(symbol.entry.st_info) == STB_WEAK;
        EXPECT_TRUE(block || weakHook || memory.count(symbol.name) || symbol.version == "libm.so.6")
            << symbol.name << " from " << symbol.version;
    }
}

// What stays writable after loading belongs to the C start-up files: a handle and a flag.
TEST(VoiceLibrary, KeepsNothingOutsideOfItsObjects)
{
    EXPECT_LE(SharedObject(ZSPVOICE_LIBRARY).writableBytes(), 32u);
}

// It brings what it needs along, from its own folder, and goes without a trace.
TEST(VoiceLibrary, LoadsAloneAndAgain)
{
    for (int i = 0; i < 100; ++i) {
        void* library = dlopen(ZSPVOICE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        void* symbol = dlsym(library, "zspvGetVersion");
        ASSERT_NE(symbol, nullptr);
        EXPECT_EQ(reinterpret_cast<decltype(&zspvGetVersion)>(symbol)(),
                  ZSPVOICE_VERSION_MAJOR * 10000 + ZSPVOICE_VERSION_MINOR * 100 +
                      ZSPVOICE_VERSION_PATCH);
        ASSERT_EQ(dlclose(library), 0);
        ASSERT_EQ(dlopen(ZSPVOICE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
    }
}

} // namespace
