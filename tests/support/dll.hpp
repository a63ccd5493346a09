// A DLL as the Windows loader shows it.
#pragma once

#include <gtest/gtest.h>

#include <windows.h>
#include <winver.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace zsp::test {

class Dll {
  public:
    explicit Dll(const char* name) : name_(name), module_(LoadLibraryA(name))
    {
        const auto* dos = at<IMAGE_DOS_HEADER>(0);
        headers_ = at<IMAGE_NT_HEADERS>(static_cast<std::uint32_t>(dos->e_lfanew));
    }
    ~Dll() { FreeLibrary(module_); }

    Dll(const Dll&) = delete;
    Dll& operator=(const Dll&) = delete;

    HMODULE module() const { return module_; }

    std::set<std::string> exports() const
    {
        const auto* table = at<IMAGE_EXPORT_DIRECTORY>(directory(IMAGE_DIRECTORY_ENTRY_EXPORT));
        const auto* names = at<std::uint32_t>(table->AddressOfNames);
        std::set<std::string> found;
        for (unsigned i = 0; i < table->NumberOfNames; ++i)
            found.insert(at<char>(names[i]));
        return found;
    }

    /// Names of the functions that are imported, all of them by name, by their DLL.
    std::map<std::string, std::set<std::string>> imports() const
    {
        std::map<std::string, std::set<std::string>> found;
        const auto* import = at<IMAGE_IMPORT_DESCRIPTOR>(directory(IMAGE_DIRECTORY_ENTRY_IMPORT));
        for (; import->Name; ++import) {
            std::set<std::string>& names = found[at<char>(import->Name)];
            const auto* thunk = at<IMAGE_THUNK_DATA64>(import->OriginalFirstThunk);
            for (; thunk->u1.AddressOfData; ++thunk) {
                EXPECT_FALSE(IMAGE_SNAP_BY_ORDINAL64(thunk->u1.Ordinal));
                const auto* entry =
                    at<IMAGE_IMPORT_BY_NAME>(static_cast<std::uint32_t>(thunk->u1.AddressOfData));
                names.insert(static_cast<const char*>(entry->Name));
            }
        }
        return found;
    }

    /// The version resource's numbers, and its text.
    void expectVersion(std::uint32_t high, std::uint32_t low, const char* text) const
    {
        DWORD unused = 0;
        std::vector<char> resource(GetFileVersionInfoSizeA(name_, &unused));
        ASSERT_FALSE(resource.empty());
        ASSERT_TRUE(
            GetFileVersionInfoA(name_, 0, static_cast<DWORD>(resource.size()), resource.data()));
        void* value = nullptr;
        UINT length = 0;
        ASSERT_TRUE(VerQueryValueA(resource.data(), "\\", &value, &length));
        const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
        EXPECT_EQ(fixed->dwFileVersionMS, high);
        EXPECT_EQ(fixed->dwFileVersionLS, low);
        ASSERT_TRUE(VerQueryValueA(resource.data(), "\\StringFileInfo\\040904b0\\FileVersion",
                                   &value, &length));
        EXPECT_STREQ(static_cast<const char*>(value), text);
    }

    /// Loading and unloading it again and again ends with it gone, and it comes back.
    void expectReloads(int times)
    {
        for (int i = 0; i < times; ++i) {
            const HMODULE again = LoadLibraryA(name_);
            ASSERT_EQ(again, module_);
            ASSERT_TRUE(FreeLibrary(again));
        }
        ASSERT_TRUE(FreeLibrary(module_));
        ASSERT_EQ(GetModuleHandleA(name_), nullptr);
        module_ = LoadLibraryA(name_);
        ASSERT_NE(module_, nullptr);
    }

  private:
    template <typename T>
    const T* at(std::uint32_t address) const
    {
        return reinterpret_cast<const T*>(reinterpret_cast<const char*>(module_) + address);
    }

    std::uint32_t directory(unsigned index) const
    {
        return headers_->OptionalHeader.DataDirectory[index].VirtualAddress;
    }

    const char* name_;
    HMODULE module_;
    const IMAGE_NT_HEADERS* headers_ = nullptr;
};

} // namespace zsp::test
