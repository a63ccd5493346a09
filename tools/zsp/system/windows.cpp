// The system as Windows shows it.

#include "tools/zsp/system/system.hpp"

#include <windows.h>

#include <array>
#include <fcntl.h>
#include <io.h>

namespace zsp::host {

namespace {

std::filesystem::path fileOf(HMODULE module)
{
    std::array<wchar_t, 4096> name{};
    const DWORD length = GetModuleFileNameW(module, name.data(), DWORD{name.size()});
    return std::filesystem::path(name.data(), name.data() + length);
}

} // namespace

std::filesystem::path programFile()
{
    return fileOf(nullptr);
}

std::filesystem::path libraryFileOf(const void* address)
{
    HMODULE module = nullptr;
    const DWORD how =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExA(how, static_cast<const char*>(address), &module)) return {};
    return fileOf(module);
}

void passBytes()
{
    _setmode(0, _O_BINARY);
    _setmode(1, _O_BINARY);
}

} // namespace zsp::host
