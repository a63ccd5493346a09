// Reads zspsc.dll through the Windows loader: exports, stubs, dispatch table, imports, resource.

#include <gtest/gtest.h>

#include <windows.h>
#include <winver.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace {

const std::vector<const char*> kExports = {
#define ZSP_EXPORT(name) #name,
#define ZSP_EXPORT_AS(name, shared) #name,
#include "core/exports.inc"
};

class Library : public testing::Test {
  protected:
    Library()
    {
        const auto* dos = at<IMAGE_DOS_HEADER>(0);
        headers_ = at<IMAGE_NT_HEADERS>(static_cast<std::uint32_t>(dos->e_lfanew));
    }
    ~Library() override { FreeLibrary(module_); }

    template <typename T>
    const T* at(std::uint32_t address) const
    {
        return reinterpret_cast<const T*>(reinterpret_cast<const char*>(module_) + address);
    }

    std::uint32_t directory(unsigned index) const
    {
        return headers_->OptionalHeader.DataDirectory[index].VirtualAddress;
    }

    HMODULE module_ = LoadLibraryA("zspsc.dll");
    const IMAGE_NT_HEADERS* headers_ = nullptr;
};

TEST_F(Library, ExportsAreTheList)
{
    const auto* exports = at<IMAGE_EXPORT_DIRECTORY>(directory(IMAGE_DIRECTORY_ENTRY_EXPORT));
    const auto* names = at<std::uint32_t>(exports->AddressOfNames);
    std::set<std::string> exported;
    for (unsigned i = 0; i < exports->NumberOfNames; ++i)
        exported.insert(at<char>(names[i]));
    EXPECT_EQ(exported, std::set<std::string>(kExports.begin(), kExports.end()));
}

TEST_F(Library, EveryStubIsTenBytesThroughAWritableSlot)
{
    for (const char* name : kExports) {
        SCOPED_TRACE(name);
        unsigned char stub[10];
        const FARPROC function = GetProcAddress(module_, name);
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

TEST_F(Library, ImportsByNameFromTheCompanionAndTheSystemOnly)
{
    const std::set<std::string> allowed = {"zspcore.dll", "KERNEL32.dll", "msvcrt.dll"};
    const auto* import = at<IMAGE_IMPORT_DESCRIPTOR>(directory(IMAGE_DIRECTORY_ENTRY_IMPORT));
    std::set<std::string> core;
    for (; import->Name; ++import) {
        const std::string dll = at<char>(import->Name);
        EXPECT_TRUE(allowed.count(dll)) << dll;
        const auto* thunk = at<IMAGE_THUNK_DATA64>(import->OriginalFirstThunk);
        for (; dll == "zspcore.dll" && thunk->u1.AddressOfData; ++thunk) {
            ASSERT_FALSE(IMAGE_SNAP_BY_ORDINAL64(thunk->u1.Ordinal));
            const auto* entry =
                at<IMAGE_IMPORT_BY_NAME>(static_cast<std::uint32_t>(thunk->u1.AddressOfData));
            core.insert(static_cast<const char*>(entry->Name));
        }
    }
    EXPECT_EQ(core, (std::set<std::string>{"zspFree", "zspGetEnabledCpuFeatures",
                                           "zspGetMaxCacheSizeB", "zspMalloc"}));
}

TEST_F(Library, VersionResource)
{
    DWORD unused = 0;
    std::vector<char> resource(GetFileVersionInfoSizeA("zspsc.dll", &unused));
    ASSERT_FALSE(resource.empty());
    ASSERT_TRUE(
        GetFileVersionInfoA("zspsc.dll", 0, static_cast<DWORD>(resource.size()), resource.data()));
    void* value = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueA(resource.data(), "\\", &value, &length));
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
    EXPECT_EQ(fixed->dwFileVersionMS, 0x00080001u);
    EXPECT_EQ(fixed->dwFileVersionLS, 0x00010000u + 1056u);
    ASSERT_TRUE(VerQueryValueA(resource.data(), "\\StringFileInfo\\040904b0\\FileVersion", &value,
                               &length));
    EXPECT_STREQ(static_cast<const char*>(value), "8.1.1 (r42291)");
}

TEST_F(Library, LoadsAndUnloadsManyTimes)
{
    for (int i = 0; i < 1000; ++i) {
        const HMODULE again = LoadLibraryA("zspsc.dll");
        ASSERT_EQ(again, module_);
        ASSERT_TRUE(FreeLibrary(again));
    }
    ASSERT_TRUE(FreeLibrary(module_));
    ASSERT_EQ(GetModuleHandleA("zspsc.dll"), nullptr);
    module_ = LoadLibraryA("zspsc.dll");
    ASSERT_NE(module_, nullptr);
}

} // namespace
