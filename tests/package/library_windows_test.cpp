// Reads the DLLs through the Windows loader: exports, stubs, dispatch table, imports, resource.

#include "tests/support/dll.hpp"

#include <cstring>

namespace {

using zsp::test::Dll;

const std::set<std::string> kExports = {
#define ZSP_EXPORT(name) #name,
#define ZSP_EXPORT_AS(name, shared) #name,
#include "core/exports.inc"
};

const std::set<std::string> kVoiceExports = {
#define ZSPV_EXPORT(name) #name,
#include "voice/exports.inc"
};

const std::set<std::string> kCoreExports = {
#define ZSP_EXPORT(name) #name,
#include "companion/exports.inc"
};

TEST(Library, ExportsAreTheList)
{
    EXPECT_EQ(Dll("zspcore.dll").exports(), kCoreExports);
    EXPECT_EQ(Dll("zspsc.dll").exports(), kExports);
    EXPECT_EQ(Dll("zspvoice.dll").exports(), kVoiceExports);
}

TEST(Library, EveryStubIsTenBytesThroughAWritableSlot)
{
    const Dll library("zspsc.dll");
    for (const std::string& name : kExports) {
        SCOPED_TRACE(name);
        unsigned char stub[10];
        const FARPROC function = GetProcAddress(library.module(), name.c_str());
        ASSERT_NE(function, nullptr);
        std::memcpy(stub, reinterpret_cast<const void*>(function), sizeof stub);
        EXPECT_EQ(std::memcmp(stub, "\x4c\x8d\x1d", 3), 0);
        EXPECT_EQ(std::memcmp(stub + 7, "\x41\xff\x23", 3), 0);
        std::int32_t displacement = 0;
        std::memcpy(&displacement, stub + 3, 4);
        const char* slot = reinterpret_cast<const char*>(function) + 7 + displacement;
        MEMORY_BASIC_INFORMATION info{};
        ASSERT_NE(VirtualQuery(slot, &info, sizeof info), 0u);
        EXPECT_TRUE(info.Protect == PAGE_READWRITE || info.Protect == PAGE_WRITECOPY);
    }
}

TEST(Library, ImportsByNameFromTheCompanionAndTheSystemOnly)
{
    const auto imports = Dll("zspsc.dll").imports();
    for (const auto& [dll, names] : imports)
        EXPECT_TRUE(dll == "zspcore.dll" || dll == "KERNEL32.dll" || dll == "msvcrt.dll") << dll;
    EXPECT_EQ(imports.at("zspcore.dll"), kCoreExports);
}

TEST(VoiceLibrary, ImportsTheBlocksAndTheSystemOnly)
{
    for (const auto& [dll, names] : Dll("zspvoice.dll").imports()) {
        EXPECT_TRUE(dll == "zspsc.dll" || dll == "KERNEL32.dll" || dll == "msvcrt.dll") << dll;
        for (const std::string& name : names)
            EXPECT_TRUE(dll != "zspsc.dll" || kExports.count(name)) << name;
    }
}

TEST(Library, VersionResource)
{
    Dll("zspsc.dll").expectVersion(0x00080001, 0x00010000 + 1056, "8.1.1 (r42291)");
    Dll("zspvoice.dll").expectVersion(0x00010000, 0, "1.0.0");
}

TEST(Library, LoadsAndUnloadsManyTimes)
{
    Dll("zspsc.dll").expectReloads(1000);
    Dll("zspvoice.dll").expectReloads(1000);
}

} // namespace
