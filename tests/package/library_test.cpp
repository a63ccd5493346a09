// Reads the built library as a loader would: what it exports, how the stubs look, where the
// dispatch table lies, what it imports.

#include "tests/support/shared_object.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using namespace zsp::test;

const std::set<std::string> kExports = {
#define ZSP_EXPORT(name) #name,
#define ZSP_EXPORT_AS(name, shared) #name,
#include "core/exports.inc"
};

TEST(Library, ExportsAreTheListAndTheHeader)
{
    EXPECT_EQ(SharedObject(ZSPSC_LIBRARY).exportedNames("ZSPSC_8.1"), kExports);
    EXPECT_EQ(declaredNames(ZSPSC_HEADER, "ZSPSC_API", "zsps"), kExports);
}

TEST(Library, EveryStubIsTenBytesThroughAWritableSlot)
{
    const SharedObject library(ZSPSC_LIBRARY);
    const std::set<Elf64_Addr> relocated = library.relativeRelocations();
    std::set<Elf64_Addr> slots;
    for (const auto& symbol : library.exported) {
        SCOPED_TRACE(symbol.name);
        EXPECT_EQ(ELF64_ST_TYPE(symbol.entry.st_info), STT_FUNC);
        ASSERT_EQ(symbol.entry.st_size, 10u);
        const Elf64_Addr address = symbol.entry.st_value;
        const std::size_t offset = library.offsetOf(address);
        // lea r11, [rip + disp32]; jmp [r11]
        EXPECT_EQ(library.at<std::uint16_t>(offset), 0x8d4c);
        EXPECT_EQ(library.at<std::uint8_t>(offset + 2), 0x1d);
        EXPECT_EQ(library.at<std::uint16_t>(offset + 7), 0xff41);
        EXPECT_EQ(library.at<std::uint8_t>(offset + 9), 0x23);

        const auto displacement = library.at<std::int32_t>(offset + 3);
        const Elf64_Addr slot = address + 7 + static_cast<Elf64_Addr>(std::int64_t{displacement});
        EXPECT_TRUE(slots.insert(slot).second) << "two exports share a slot";
        Elf64_Word flags = 0;
        library.offsetOf(slot, &flags);
        EXPECT_EQ(flags & (PF_W | PF_X), unsigned{PF_W});
        EXPECT_FALSE(library.insideRelro(slot));
        EXPECT_TRUE(relocated.count(slot)) << "the slot is not filled statically";
    }
    EXPECT_EQ(slots.size(), kExports.size());
}

TEST(Library, DynamicSection)
{
    const SharedObject library(ZSPSC_LIBRARY);
    EXPECT_EQ(library.dynamicStrings(DT_SONAME), std::set<std::string>{"libzspsc.so.8"});
    EXPECT_EQ(library.dynamicStrings(DT_RUNPATH), std::set<std::string>{"$ORIGIN"});
    EXPECT_TRUE(library.dynamicStrings(DT_NEEDED).count("libzspcore.so.8"));
    for (const Elf64_Phdr& p : library.segments) {
        if (p.p_type != PT_GNU_STACK) continue;
        EXPECT_EQ(p.p_flags & PF_X, 0u);
    }
}

TEST(Library, CompanionExportsItsListUnderAVersion)
{
    const SharedObject companion(ZSPCORE_LIBRARY);
    const std::set<std::string> list = {
#define ZSP_EXPORT(name) #name,
#include "companion/exports.inc"
    };
    EXPECT_EQ(companion.exportedNames("ZSPCORE_8.1"), list);
    EXPECT_EQ(companion.dynamicStrings(DT_SONAME), std::set<std::string>{"libzspcore.so.8"});
}

TEST(Library, EachBindsWhenItIsLoaded)
{
    for (const char* path : {ZSPSC_LIBRARY, ZSPVOICE_LIBRARY, ZSPCORE_LIBRARY})
        EXPECT_TRUE(SharedObject(path).bindsNow()) << path;
}

// Nothing of the C++ runtime, no allocation, no lock, no input or output: only the companion's four
// functions, mathematics and memory moves, and the weak hooks of the C start-up files.
TEST(Library, ImportsAreFew)
{
    const std::set<std::string> core = {"zspFree", "zspGetEnabledCpuFeatures",
                                        "zspGetMaxCacheSizeB", "zspMalloc"};
    const std::set<std::string> memory = {"memcpy",        "memmove",          "memset",
                                          "memcmp",        "__stack_chk_fail", "__assert_fail",
                                          "__cxa_finalize"};
    const SharedObject library(ZSPSC_LIBRARY);
    std::set<std::string> coreSeen;
    for (const auto& symbol : library.imported) {
        if (core.count(symbol.name)) {
            coreSeen.insert(symbol.name);
            continue;
        }
        const bool weakHook = ELF64_ST_BIND(symbol.entry.st_info) == STB_WEAK;
        EXPECT_TRUE(weakHook || memory.count(symbol.name) || symbol.version == "libm.so.6")
            << symbol.name << " from " << symbol.version;
    }
    EXPECT_EQ(coreSeen, core);
}

} // namespace
